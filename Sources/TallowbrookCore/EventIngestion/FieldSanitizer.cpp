#include "EventIngestion/FieldSanitizer.h"

#include <utf8proc.h>

#include <algorithm>
#include <string_view>

namespace tallowbrook {
namespace {

bool isTokenCharacter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' ||
           c == '.' || c == ':' || c == '_';
}

bool isControlCharacter(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x20 || byte == 0x7F;
}

bool isValidUTF8(std::string_view text) {
    const auto* bytes = reinterpret_cast<const utf8proc_uint8_t*>(text.data());
    auto remaining = static_cast<utf8proc_ssize_t>(text.size());
    while (remaining > 0) {
        utf8proc_int32_t codePoint = 0;
        const auto length = utf8proc_iterate(bytes, remaining, &codePoint);
        if (length < 1) return false;
        bytes += length;
        remaining -= length;
    }
    return true;
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
    if (std::ranges::any_of(*text, isControlCharacter) || !isValidUTF8(*text)) return std::nullopt;
    std::string path = *text;
    while (path.size() >= 2 && path.ends_with('/')) path.pop_back();
    return path;
}

}  // namespace tallowbrook
