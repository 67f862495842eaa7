#include "Text/UTF8.h"

namespace tallowbrook {
namespace {

struct Sequence {
    std::size_t byteCount;
    bool isValid;
};

// The character at the front of `text`, or the bytes that one replacement character stands for.
Sequence firstSequence(std::string_view text) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char lead = byte(0);
    if (lead < 0x80) return {1, true};
    if (lead < 0xC2 || lead > 0xF4) return {1, false};

    // Four leads narrow the second byte: no overlong form, no surrogate, nothing above U+10FFFF.
    unsigned char lowest = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    unsigned char highest = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    const std::size_t wanted = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    std::size_t length = 1;
    while (length < wanted && length < text.size() && byte(length) >= lowest &&
           byte(length) <= highest) {
        ++length;
        lowest = 0x80;
        highest = 0xBF;
    }
    return {length, length == wanted};
}

// How many bytes at the front are whole, valid characters.
std::size_t validPrefix(std::string_view text) {
    std::size_t length = 0;
    while (length < text.size()) {
        const Sequence sequence = firstSequence(text.substr(length));
        if (!sequence.isValid) break;
        length += sequence.byteCount;
    }
    return length;
}

}  // namespace

bool UTF8::isValid(std::string_view bytes) { return validPrefix(bytes) == bytes.size(); }

std::string UTF8::replacingInvalid(std::string_view bytes) {
    std::string text;
    while (true) {
        const auto length = validPrefix(bytes);
        text += bytes.substr(0, length);
        bytes.remove_prefix(length);
        if (bytes.empty()) return text;
        text += "\uFFFD";
        bytes.remove_prefix(firstSequence(bytes).byteCount);
    }
}

}  // namespace tallowbrook
