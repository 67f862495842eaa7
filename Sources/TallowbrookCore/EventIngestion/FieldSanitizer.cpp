#include "EventIngestion/FieldSanitizer.h"

#include <algorithm>
#include <string_view>

#include "Text/UTF8.h"

namespace tallowbrook {
namespace {

// Not isalnum(3), which goes by the locale.
bool isTokenCharacter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' ||
           c == '.' || c == ':' || c == '_';
}

bool isControlCharacter(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x20 || byte == 0x7F;
}

}  // namespace

std::optional<std::string> FieldSanitizer::token(const std::optional<std::string>& text,
                                                 std::size_t maxLength) {
    if (!text || text->empty() || text->size() > maxLength) return std::nullopt;
    if (!std::ranges::all_of(*text, isTokenCharacter)) return std::nullopt;
    return text;
}

std::optional<std::string> FieldSanitizer::identifier(const std::optional<std::string>& text,
                                                      std::size_t maxLength) {
    return token(text, maxLength);
}

std::optional<std::string> FieldSanitizer::path(const std::optional<std::string>& text,
                                                std::size_t maxLength) {
    if (!text || !text->starts_with('/') || text->size() > maxLength) return std::nullopt;
    if (std::ranges::any_of(*text, isControlCharacter) || !UTF8::isValid(*text))
        return std::nullopt;
    std::string path = *text;
    // One directory, one name: sessions are found by it.
    while (path.size() >= 2 && path.ends_with('/')) path.pop_back();
    return path;
}

}  // namespace tallowbrook
