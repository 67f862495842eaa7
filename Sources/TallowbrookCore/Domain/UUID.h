// Universally unique identifiers (RFC 9562) and their text.
//
// Pure but for `randomUUID`, which asks the system's secure random source; safe from any thread.
#pragma once

#include <boost/uuid/uuid.hpp>
#include <expected>
#include <optional>
#include <string>
#include <string_view>

#include "System/FileError.h"

namespace tallowbrook {

using UUID = boost::uuids::uuid;

namespace UUIDText {

// Upper-case hexadecimal digits in the 36-character form with hyphens.
std::string text(const UUID& uuid);

// Reads that form, with digits in either case. Absent for any other text.
std::optional<UUID> parse(std::string_view text);

}  // namespace UUIDText

// A version 4 identifier. Fails with step "random" when the system gives no random bytes.
[[nodiscard]] std::expected<UUID, FileError> randomUUID();

}  // namespace tallowbrook
