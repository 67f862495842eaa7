#include "EventIngestion/PayloadFields.h"

#include "Domain/JSONRepair.h"
#include "Domain/StreamingJSON.h"

namespace tallowbrook {
namespace {

// The parser recurses; a payload nested without end must not take the helper's stack.
constexpr std::size_t maxNesting = 1024;

// The longest text that any rule of the sanitizer accepts; of a longer one nothing is copied.
constexpr std::size_t longestUsefulText = 1024;

// Keeps the strings at the top level of the payload whose keys are known.
class PayloadHandler : public StreamingJSONHandler {
 public:
    PayloadFields fields;
    bool isObject = false;

    bool on_object_begin(ErrorCode&) {
        if (level_ == 0) isObject = true;
        return enterNested();
    }
    bool on_object_end(std::size_t, ErrorCode&) { return leaveNested(); }
    bool on_array_begin(ErrorCode&) { return enterNested(); }
    bool on_array_end(std::size_t, ErrorCode&) { return leaveNested(); }

    bool on_key_part(std::string_view part, std::size_t, ErrorCode&) {
        if (level_ == 1) key_.add(part);
        return true;
    }

    bool on_key(std::string_view lastPart, std::size_t, ErrorCode&) {
        if (level_ != 1) return true;
        field_ = fromRawValue<PayloadField>(key_.finish(lastPart));
        // Of a key that comes twice the last one counts, even where its value is no string.
        if (field_) fields[*field_].reset();
        return true;
    }

    bool on_string_part(std::string_view part, std::size_t total, ErrorCode&) {
        if (level_ == 1 && field_ && total <= longestUsefulText) text_.add(part);
        return true;
    }

    bool on_string(std::string_view lastPart, std::size_t total, ErrorCode&) {
        if (level_ != 1 || !field_) return true;
        const std::string_view text = text_.finish(lastPart);
        if (total <= longestUsefulText) fields[*field_].emplace(text);
        return true;
    }

 private:
    bool enterNested() {
        ++level_;
        return true;
    }
    bool leaveNested() {
        --level_;
        return true;
    }

    std::size_t level_ = 0;
    std::optional<PayloadField> field_;  // of the member whose value comes next
    PartedText key_;
    PartedText text_;
};

std::expected<PayloadFields, PayloadSyntaxError> parse(std::string_view text) {
    boost::json::parse_options options;
    options.max_depth = maxNesting;
    // Agents cut texts, also inside a character. `FieldSanitizer` checks what is kept.
    options.allow_invalid_utf8 = true;
    boost::json::basic_parser<PayloadHandler> parser{options};
    if (!parseWhole(parser, text)) return std::unexpected(PayloadSyntaxError::invalidJSON);
    if (!parser.handler().isObject) return std::unexpected(PayloadSyntaxError::notAnObject);
    return std::move(parser.handler().fields);
}

}  // namespace

std::expected<PayloadFields, PayloadSyntaxError> readPayloadFields(std::string_view payload) {
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    if (payload.starts_with(byteOrderMark)) payload.remove_prefix(byteOrderMark.size());

    // The repair copies the payload, up to a megabyte, so it is made for those alone that need it.
    auto fields = parse(payload);
    if (fields || fields.error() == PayloadSyntaxError::notAnObject) return fields;
    if (const auto repaired = JSONRepair::forPayload(payload)) return parse(*repaired);
    return fields;
}

}  // namespace tallowbrook
