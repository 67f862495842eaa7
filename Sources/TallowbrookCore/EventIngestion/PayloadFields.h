// The texts that an agent's payload holds under the keys of `PayloadField`.
//
// Plain values and a pure function; safe from any thread.
#pragma once

#include <array>
#include <expected>
#include <optional>
#include <string>
#include <string_view>

#include "Domain/PayloadField.h"

namespace tallowbrook {

// The texts as they stand in the payload. A member that is missing, is no JSON
// string, or is longer than any rule accepts is absent.
class PayloadFields {
 public:
    std::optional<std::string>& operator[](PayloadField field) {
        return texts_[static_cast<std::size_t>(field)];
    }
    const std::optional<std::string>& operator[](PayloadField field) const {
        return texts_[static_cast<std::size_t>(field)];
    }
    bool operator==(const PayloadFields&) const = default;

 private:
    std::array<std::optional<std::string>, payloadFieldNames.size()> texts_;
};

enum class PayloadSyntaxError { invalidJSON, notAnObject };

// Reads a JSON text (RFC 8259) in one pass without building a tree. Lenient where strictness would
// lose an event over text that the helper does not read: a byte-order mark is skipped, of a key
// that comes twice the last one counts, and a string may hold invalid UTF-8 or a lone surrogate, a
// number any exponent. At most 1024 nested levels; deeper ones are `invalidJSON`.
std::expected<PayloadFields, PayloadSyntaxError> readPayloadFields(std::string_view payload);

}  // namespace tallowbrook
