// Random digits for the names of files that must not meet.
//
// Safe from any thread.
#pragma once

#include <expected>
#include <string>

#include "System/FileError.h"

namespace tallowbrook {

// 32 bits from the system's secure random source, getentropy(3), in lower-case hexadecimal without
// leading zeros. Fails with the step "random" when the system gives none.
[[nodiscard]] std::expected<std::string, FileError> randomHex32();

}  // namespace tallowbrook
