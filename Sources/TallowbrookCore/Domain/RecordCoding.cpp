#include "Domain/RecordCoding.h"

#include <algorithm>
#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <boost/json/value_from.hpp>
#include <cmath>
#include <utility>

namespace tallowbrook {

namespace {

std::optional<std::string> asText(const boost::json::value& value) {
    const auto* string = value.if_string();
    if (string == nullptr) return std::nullopt;
    return std::string{string->data(), string->size()};
}

std::optional<std::int32_t> asInteger32(const boost::json::value& value) {
    const auto* integer = value.if_int64();
    if (integer == nullptr || !std::in_range<std::int32_t>(*integer)) return std::nullopt;
    return static_cast<std::int32_t>(*integer);
}

}  // namespace

void RecordEncoder::encodeRaw(std::string_view key, std::string_view json) {
    const std::size_t begin = values_.size();
    values_.append(json);
    members_.push_back({key, begin, values_.size()});
}

void RecordEncoder::encode(std::string_view key, std::string_view value) {
    encodeRaw(key, boost::json::serialize(boost::json::string_view{value}));
}

void RecordEncoder::encode(std::string_view key, std::int64_t value) {
    encodeRaw(key, std::to_string(value));
}

void RecordEncoder::encode(std::string_view key, double value) {
    // Within this range every whole number is exact, and reads better without an exponent.
    constexpr double exactRange = 9007199254740992.0;
    if (std::trunc(value) == value && std::abs(value) < exactRange)
        return encode(key, static_cast<std::int64_t>(value));
    encodeRaw(key, boost::json::serialize(boost::json::value(value)));
}

void RecordEncoder::encode(std::string_view key, bool value) {
    encodeRaw(key, value ? "true" : "false");
}

void RecordEncoder::encode(std::string_view key, Instant value) {
    encode(key, std::string_view{EventDate::text(value)});
}

void RecordEncoder::encode(std::string_view key, const RecordEncoder& nested) {
    encodeRaw(key, nested.text());
}

void RecordEncoder::encode(std::string_view key, const std::vector<std::string>& values) {
    encodeRaw(key, boost::json::serialize(boost::json::value_from(values)));
}

void RecordEncoder::encode(std::string_view key, const std::vector<std::int32_t>& values) {
    encodeRaw(key, boost::json::serialize(boost::json::value_from(values)));
}

std::string RecordEncoder::text() const {
    // Readers compare lines byte for byte, whatever order the fields were encoded in.
    auto sorted = members_;
    std::ranges::sort(sorted, {}, &Member::key);
    std::string text;
    text.reserve(values_.size() + 24 * sorted.size() + 2);
    text = "{";
    for (const auto& [key, begin, end] : sorted) {
        if (text.size() > 1) text += ',';
        text.append("\"").append(key).append("\":").append(values_, begin, end - begin);
    }
    text += '}';
    return text;
}

std::expected<RecordDecoder, DecodingError> RecordDecoder::parse(std::string_view text) {
    boost::json::error_code error;
    boost::json::value value = boost::json::parse(boost::json::string_view{text}, error);
    if (error) return std::unexpected(DecodingError{"invalid JSON"});
    if (!value.is_object()) return std::unexpected(DecodingError{"not a JSON object"});
    RecordDecoder decoder;
    decoder.object_ = std::move(value.get_object());
    return decoder;
}

bool RecordDecoder::has(std::string_view key) const {
    const auto* value = object_.if_contains(key);
    return value != nullptr && !value->is_null();
}

const boost::json::value* RecordDecoder::find(std::string_view key) {
    const auto* value = object_.if_contains(key);
    if (value == nullptr) fail(key, "is missing");
    return value;
}

void RecordDecoder::fail(std::string_view key, std::string_view rule) {
    // The first failure is the cause; the empty values it leaves behind bring on further ones.
    if (!failure_) failure_ = DecodingError{std::string{key} + " " + std::string{rule}};
}

void RecordDecoder::adopt(const RecordDecoder& nested) {
    if (!failure_) failure_ = nested.failure_;
}

std::string RecordDecoder::text(std::string_view key) {
    const auto* value = find(key);
    if (value == nullptr) return {};
    if (auto string = asText(*value)) return std::move(*string);
    fail(key, "is not a string");
    return {};
}

std::int64_t RecordDecoder::integer(std::string_view key) {
    const auto* value = find(key);
    if (value == nullptr) return 0;
    if (const auto* integer = value->if_int64()) return *integer;
    fail(key, "is not a signed 64-bit integer");
    return 0;
}

std::int32_t RecordDecoder::integer32(std::string_view key) {
    const auto* value = find(key);
    if (value == nullptr) return 0;
    if (const auto integer = asInteger32(*value)) return *integer;
    fail(key, "is not a signed 32-bit integer");
    return 0;
}

double RecordDecoder::number(std::string_view key) {
    const auto* value = find(key);
    if (value == nullptr) return 0;
    // A writer gives a whole number without a fraction, so integers count as doubles, too.
    boost::json::error_code error;
    const auto number = value->to_number<double>(error);
    if (!error && std::isfinite(number)) return number;
    fail(key, "is not a finite number");
    return 0;
}

bool RecordDecoder::boolean(std::string_view key) {
    const auto* value = find(key);
    if (value == nullptr) return false;
    if (const auto* boolean = value->if_bool()) return *boolean;
    fail(key, "is not a boolean");
    return false;
}

Instant RecordDecoder::date(std::string_view key) {
    const std::string string = text(key);
    if (failure_) return {};
    if (const auto instant = EventDate::parse(string)) return *instant;
    if (!failure_) failure_ = DecodingError{"Invalid ISO 8601 date"};
    return {};
}

RecordDecoder RecordDecoder::record(std::string_view key) {
    RecordDecoder nested;
    const auto* value = find(key);
    if (value == nullptr) return nested;
    if (const auto* object = value->if_object())
        nested.object_ = *object;
    else
        fail(key, "is not an object");
    return nested;
}

template <typename Element>
std::vector<Element> RecordDecoder::elements(
    std::string_view key, std::optional<Element> (*read)(const boost::json::value&),
    std::string_view rule) {
    const auto* value = find(key);
    if (value == nullptr) return {};
    std::vector<Element> found;
    const auto* array = value->if_array();
    if (array != nullptr)
        for (const auto& item : *array)
            if (auto element = read(item)) found.push_back(std::move(*element));
    if (array != nullptr && found.size() == array->size()) return found;
    fail(key, rule);
    return {};
}

std::vector<std::string> RecordDecoder::texts(std::string_view key) {
    return elements(key, asText, "is not an array of strings");
}

std::vector<std::int32_t> RecordDecoder::integers32(std::string_view key) {
    return elements(key, asInteger32, "is not an array of signed 32-bit integers");
}

}  // namespace tallowbrook
