#include "System/RandomHex.h"

#include <sys/random.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <cstdint>

namespace tallowbrook {

std::expected<std::string, FileError> randomHex32() {
    std::uint32_t number = 0;
    if (getentropy(&number, sizeof number) != 0) return std::unexpected(FileError{"random", errno});
    // to_chars knows no locale and no stream, which the helper would pay for at every start.
    std::array<char, 2 * sizeof number> digits{};
    const auto result = std::to_chars(digits.data(), digits.data() + digits.size(), number, 16);
    return std::string{digits.data(), result.ptr};
}

}  // namespace tallowbrook
