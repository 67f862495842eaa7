// The members of an agent's payload that any of its dialects gives a meaning to.
#pragma once

#include <array>
#include <expected>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "Domain/EnumNames.h"

namespace tallowbrook {

enum class PayloadField {
    sessionID,
    turnID,
    cwd,
    hookEventName,
    source,
    toolName,
    notificationType,
    error,
    reason,
    notifyThreadID,
    notifyTurnID,
    notifyType,
};
inline constexpr std::array payloadFieldNames{
    std::pair{PayloadField::sessionID, std::string_view{"session_id"}},
    std::pair{PayloadField::turnID, std::string_view{"turn_id"}},
    std::pair{PayloadField::cwd, std::string_view{"cwd"}},
    std::pair{PayloadField::hookEventName, std::string_view{"hook_event_name"}},
    std::pair{PayloadField::source, std::string_view{"source"}},
    std::pair{PayloadField::toolName, std::string_view{"tool_name"}},
    std::pair{PayloadField::notificationType, std::string_view{"notification_type"}},
    std::pair{PayloadField::error, std::string_view{"error"}},
    std::pair{PayloadField::reason, std::string_view{"reason"}},
    std::pair{PayloadField::notifyThreadID, std::string_view{"thread-id"}},
    std::pair{PayloadField::notifyTurnID, std::string_view{"turn-id"}},
    std::pair{PayloadField::notifyType, std::string_view{"type"}},
};
constexpr const auto& namesOf(PayloadField) { return payloadFieldNames; }

// The texts of those members, as they stand in the payload. A member that is missing, is no JSON
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
// lose an event over text that nobody reads: a byte-order mark is skipped, of a key that comes
// twice the last one counts, and a string may hold invalid UTF-8 or a lone surrogate, a number any
// exponent. At most 1024 nested levels; deeper ones are `invalidJSON`.
std::expected<PayloadFields, PayloadSyntaxError> readPayloadFields(std::string_view payload);

}  // namespace tallowbrook
