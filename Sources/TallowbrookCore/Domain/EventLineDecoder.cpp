// The reading half of the line coding. Segments hold thousands of lines, so a line is read in one
// pass into its record, without a tree in between.
#include <array>
#include <cmath>
#include <cstdint>
#include <set>
#include <vector>

#include "Domain/EventCoding.h"
#include "Domain/JSONRepair.h"
#include "Domain/StreamingJSON.h"

namespace tallowbrook {
namespace {

enum class Field {
    schema,
    id,
    provider,
    channel,
    origin,
    eventType,
    category,
    attention,
    sessionID,
    turnID,
    observedAt,
    cwd,
    tty,
    detail,
    adapterVersion,
    notificationType,
    toolName,
    sessionSource,
    endReason,
    errorType,
    unknown,
};

enum class Presence { required, optional };

struct FieldRule {
    std::string_view key;
    Field field;
    Presence presence;
};

constexpr std::array eventFields{
    FieldRule{"schema", Field::schema, Presence::required},
    FieldRule{"id", Field::id, Presence::required},
    FieldRule{"provider", Field::provider, Presence::required},
    FieldRule{"channel", Field::channel, Presence::required},
    FieldRule{"origin", Field::origin, Presence::required},
    FieldRule{"eventType", Field::eventType, Presence::required},
    FieldRule{"category", Field::category, Presence::required},
    FieldRule{"attention", Field::attention, Presence::optional},
    FieldRule{"sessionID", Field::sessionID, Presence::optional},
    FieldRule{"turnID", Field::turnID, Presence::optional},
    FieldRule{"observedAt", Field::observedAt, Presence::required},
    FieldRule{"cwd", Field::cwd, Presence::optional},
    FieldRule{"tty", Field::tty, Presence::optional},
    FieldRule{"detail", Field::detail, Presence::required},
    FieldRule{"adapterVersion", Field::adapterVersion, Presence::required},
};

constexpr std::array detailFields{
    FieldRule{"notificationType", Field::notificationType, Presence::optional},
    FieldRule{"toolName", Field::toolName, Presence::optional},
    FieldRule{"sessionSource", Field::sessionSource, Presence::optional},
    FieldRule{"endReason", Field::endReason, Presence::optional},
    FieldRule{"errorType", Field::errorType, Presence::optional},
};

constexpr std::uint32_t bit(Field field) {
    return std::uint32_t{1} << static_cast<unsigned>(field);
}

constexpr std::uint32_t bitsOf(Presence presence) {
    std::uint32_t bits = 0;
    for (const auto* table = eventFields.begin(); table != eventFields.end(); ++table)
        if (table->presence == presence) bits |= bit(table->field);
    for (const auto& rule : detailFields)
        if (rule.presence == presence) bits |= bit(rule.field);
    return bits;
}
constexpr std::uint32_t requiredFields = bitsOf(Presence::required);
constexpr std::uint32_t optionalFields = bitsOf(Presence::optional);

template <std::size_t size>
Field fieldNamed(std::string_view key, const std::array<FieldRule, size>& rules) {
    for (const auto& rule : rules)
        if (rule.key == key) return rule.field;
    return Field::unknown;
}

template <typename Enum>
bool store(std::string_view text, Enum& target) {
    const auto value = fromRawValue<Enum>(text);
    if (value) target = *value;
    return value.has_value();
}

// Follows the parser through the event (level 1), its detail (level 2) and whatever unknown keys
// hold, of which nothing is kept but the key names that must not come twice.
class LineHandler : public StreamingJSONHandler {
 public:
    AgentEvent event;

    bool complete() const { return (seen_ & requiredFields) == requiredFields; }
    bool dateFailed() const { return dateFailed_; }

    bool on_object_begin(ErrorCode& error) {
        if (level_ == 1 && field_ == Field::detail)
            inDetail_ = true;
        else if (level_ > 0 && field_ != Field::unknown)
            return refuse(error);
        ++level_;
        otherKeys_.emplace_back();
        field_ = Field::unknown;
        return true;
    }

    bool on_object_end(std::size_t, ErrorCode&) {
        --level_;
        if (level_ == 1) inDetail_ = false;
        otherKeys_.pop_back();
        field_ = Field::unknown;
        return true;
    }

    bool on_array_begin(ErrorCode& error) {
        // Members of objects inside an array have a level of their own, so none is taken for a
        // field.
        if (level_ == 0 || field_ != Field::unknown) return refuse(error);
        ++level_;
        otherKeys_.emplace_back();
        return true;
    }

    bool on_array_end(std::size_t, ErrorCode&) {
        --level_;
        otherKeys_.pop_back();
        return true;
    }

    bool on_key_part(std::string_view part, std::size_t, ErrorCode&) {
        key_.add(part);
        return true;
    }

    bool on_key(std::string_view lastPart, std::size_t, ErrorCode& error) {
        const std::string_view key = key_.finish(lastPart);
        field_ = level_ == 1                ? fieldNamed(key, eventFields)
                 : level_ == 2 && inDetail_ ? fieldNamed(key, detailFields)
                                            : Field::unknown;
        // Of a key that comes twice the reader and the writer might mean different values.
        const bool isNew = field_ == Field::unknown ? otherKeys_.back().emplace(key).second
                                                    : (seen_ & bit(field_)) == 0;
        if (!isNew) return refuse(error);
        if (field_ != Field::unknown) seen_ |= bit(field_);
        return true;
    }

    bool on_string_part(std::string_view part, std::size_t, ErrorCode&) {
        if (field_ != Field::unknown) text_.add(part);
        return true;
    }

    bool on_string(std::string_view lastPart, std::size_t, ErrorCode& error) {
        if (level_ == 0) return refuse(error);
        if (field_ == Field::unknown) return true;
        return storeText(text_.finish(lastPart)) || refuse(error);
    }

    bool on_int64(std::int64_t value, std::string_view, ErrorCode& error) {
        if (field_ == Field::unknown) return true;
        if (field_ != Field::schema) return refuse(error);
        event.schema = value;
        return true;
    }

    // Comes only for what is beyond a signed integer.
    bool on_uint64(std::uint64_t, std::string_view, ErrorCode& error) { return onlyUnknown(error); }

    bool on_double(double value, std::string_view, ErrorCode& error) {
        if (!std::isfinite(value)) return refuse(error);
        return onlyUnknown(error);
    }

    bool on_bool(bool, ErrorCode& error) { return onlyUnknown(error); }

    bool on_null(ErrorCode& error) {
        if (field_ != Field::unknown && (optionalFields & bit(field_)) != 0) return true;
        return onlyUnknown(error);
    }

 private:
    bool onlyUnknown(ErrorCode& error) const { return field_ == Field::unknown || refuse(error); }

    bool storeText(std::string_view text) {
        switch (field_) {
            case Field::id:
                if (const auto id = UUIDText::parse(text)) return event.id = *id, true;
                return false;
            case Field::observedAt:
                if (const auto date = EventDate::parse(text)) return event.observedAt = *date, true;
                dateFailed_ = true;
                return false;
            case Field::provider:
                return store(text, event.provider);
            case Field::channel:
                return store(text, event.channel);
            case Field::origin:
                return store(text, event.origin);
            case Field::category:
                return store(text, event.category);
            case Field::attention:
                return store(text, event.attention.emplace());
            case Field::eventType:
                return event.eventType = text, true;
            case Field::adapterVersion:
                return event.adapterVersion = text, true;
            case Field::sessionID:
                return event.sessionID = text, true;
            case Field::turnID:
                return event.turnID = text, true;
            case Field::cwd:
                return event.cwd = text, true;
            case Field::tty:
                return event.tty = text, true;
            case Field::notificationType:
                return event.detail.notificationType = text, true;
            case Field::toolName:
                return event.detail.toolName = text, true;
            case Field::sessionSource:
                return event.detail.sessionSource = text, true;
            case Field::endReason:
                return event.detail.endReason = text, true;
            case Field::errorType:
                return event.detail.errorType = text, true;
            case Field::schema:
            case Field::detail:
            case Field::unknown:
                return false;
        }
        return false;
    }

    std::size_t level_ = 0;
    bool inDetail_ = false;
    bool dateFailed_ = false;
    Field field_ = Field::unknown;
    std::uint32_t seen_ = 0;
    std::vector<std::set<std::string, std::less<>>> otherKeys_;  // one set per open level
    PartedText key_;
    PartedText text_;
};

struct Outcome {
    bool parsed = false;
    LineHandler handler;
};

Outcome parse(std::string_view line) {
    boost::json::basic_parser<LineHandler> parser{boost::json::parse_options{}};
    const bool parsed = parseWhole(parser, line);
    return {parsed, std::move(parser.handler())};
}

}  // namespace

std::expected<AgentEvent, DecodingError> EventCoding::decodeLine(std::string_view line) {
    // The library takes some numbers for errors that are none. Lines with such numbers are rare, so
    // only a line that failed is looked through for them.
    auto outcome = parse(line);
    if (!outcome.parsed)
        if (const auto repaired = JSONRepair::forEventLine(line)) outcome = parse(*repaired);
    if (outcome.handler.dateFailed())
        return std::unexpected(DecodingError{"Invalid ISO 8601 date"});
    if (!outcome.parsed || !outcome.handler.complete())
        return std::unexpected(DecodingError{"invalid event line"});
    return std::move(outcome.handler.event);
}

}  // namespace tallowbrook
