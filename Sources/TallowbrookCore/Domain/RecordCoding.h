// JSON text (RFC 8259) of plain records: members named after the fields, absent optional fields
// left out, dates in the event date format.
//
// Values are used by one thread at a time.
#pragma once

#include <boost/json/object.hpp>
#include <cstdint>
#include <expected>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Domain/EnumNames.h"
#include "Domain/Instant.h"

namespace tallowbrook {

struct DecodingError {
    std::string description;  // names members and rules, never quotes the text that was read
    bool operator==(const DecodingError&) const = default;
};

// Collects the members of one JSON object, in any order.
class RecordEncoder {
 public:
    void encode(std::string_view key, std::string_view value);
    void encode(std::string_view key, const char* value) { encode(key, std::string_view{value}); }
    void encode(std::string_view key, std::int64_t value);
    void encode(std::string_view key, int value) { encode(key, std::int64_t{value}); }
    void encode(std::string_view key, double value);  // a finite one
    void encode(std::string_view key, bool value);
    void encode(std::string_view key, Instant value);
    void encode(std::string_view key, const RecordEncoder& nested);
    void encode(std::string_view key, const std::vector<std::string>& values);
    void encode(std::string_view key, const std::vector<std::int32_t>& values);

    // A value that is JSON text already, such as another record's `text`.
    void encodeRaw(std::string_view key, std::string_view json);

    template <typename Enum>
        requires std::is_enum_v<Enum>
    void encode(std::string_view key, Enum value) {
        encode(key, rawValue(value));
    }

    template <typename Value>
    void encode(std::string_view key, const std::optional<Value>& value) {
        if (value) encode(key, *value);
    }

    // The object in compact form, keys ascending, slashes as they are.
    std::string text() const;

 private:
    struct Member {
        std::string_view key;
        std::size_t begin;  // of its value in `values_`
        std::size_t end;
    };

    std::vector<Member> members_;
    std::string values_;  // all values as JSON text, one behind the other
};

// Reads the members of one JSON object. A member that is missing or of another type gives an empty
// value and is remembered: read every field first, then ask for `failure`.
class RecordDecoder {
 public:
    // Fails when the text is no JSON object.
    static std::expected<RecordDecoder, DecodingError> parse(std::string_view text);

    std::string text(std::string_view key);
    std::int64_t integer(std::string_view key);
    std::int32_t integer32(std::string_view key);
    double number(std::string_view key);
    bool boolean(std::string_view key);
    Instant date(std::string_view key);
    RecordDecoder record(std::string_view key);  // its failures stay with it: see `adopt`
    std::vector<std::string> texts(std::string_view key);
    std::vector<std::int32_t> integers32(std::string_view key);

    template <typename Enum>
    Enum enumeration(std::string_view key) {
        const auto value = fromRawValue<Enum>(text(key));
        if (!value) fail(key, "is none of the known values");
        return value.value_or(Enum{});
    }

    // Whether the member is there and not null, which both mean that the field is absent.
    bool has(std::string_view key) const;

    // Reads an optional field with one of the operations above:
    // `optional("cwd", &RecordDecoder::text)`.
    template <typename Value>
    std::optional<Value> optional(std::string_view key,
                                  Value (RecordDecoder::*read)(std::string_view)) {
        if (!has(key)) return std::nullopt;
        return (this->*read)(key);
    }

    // Takes over the failure of a nested decoder.
    void adopt(const RecordDecoder& nested);

    // The first violation met; absent when there was none.
    const std::optional<DecodingError>& failure() const { return failure_; }

 private:
    template <typename Element>
    std::vector<Element> elements(std::string_view key,
                                  std::optional<Element> (*read)(const boost::json::value&),
                                  std::string_view rule);

    const boost::json::value* find(std::string_view key);
    void fail(std::string_view key, std::string_view rule);

    boost::json::object object_;
    std::optional<DecodingError> failure_;
};

}  // namespace tallowbrook
