#include "Domain/UUID.h"

#include <boost/uuid/random_generator.hpp>

#include "Text/Hex.h"

namespace tallowbrook {
namespace {

constexpr std::size_t textLength = 36;

constexpr bool isHyphenPosition(std::size_t i) { return i == 8 || i == 13 || i == 18 || i == 23; }

}  // namespace

std::string UUIDText::text(const UUID& uuid) {
    std::string text;
    text.reserve(textLength);
    for (const std::uint8_t byte : uuid) {
        if (isHyphenPosition(text.size())) text += '-';
        Hex::append(text, byte, Hex::upperDigits);
    }
    return text;
}

std::optional<UUID> UUIDText::parse(std::string_view text) {
    if (text.size() != textLength) return std::nullopt;
    UUID uuid{};
    auto byte = uuid.begin();
    for (std::size_t i = 0; i < textLength;) {
        if (isHyphenPosition(i)) {
            if (text[i++] != '-') return std::nullopt;
            continue;
        }
        const auto high = Hex::value(text[i]);
        const auto low = Hex::value(text[i + 1]);
        if (!high || !low) return std::nullopt;
        *byte++ = static_cast<std::uint8_t>(*high << 4 | *low);
        i += 2;
    }
    return uuid;
}

std::expected<UUID, FileError> randomUUID() {
    // Nothing may throw across our headers, and Boost does so where there are no random bytes.
    try {
        return boost::uuids::random_generator{}();
    } catch (const boost::uuids::entropy_error& error) {
        return std::unexpected(FileError{"random", static_cast<int>(error.errcode())});
    }
}

}  // namespace tallowbrook
