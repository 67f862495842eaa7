#include "Terminal/ProcessTable.h"

#include <sys/stat.h>

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

}  // namespace

std::string ProcessTable::decodeCommandName(std::string_view buffer) {
    buffer = buffer.substr(0, maxCommandNameBytes);
    buffer = buffer.substr(0, buffer.find('\0'));
    std::string name;
    while (!buffer.empty()) {
        const Sequence sequence = firstSequence(buffer);
        name += sequence.isValid ? buffer.substr(0, sequence.byteCount) : "\uFFFD";
        buffer.remove_prefix(sequence.byteCount);
    }
    return name;
}

std::optional<dev_t> ProcessTable::terminalDevice(const std::string& name) {
    struct stat status{};
    if (stat(("/dev/" + name).c_str(), &status) != 0) return std::nullopt;
    return status.st_rdev;
}

}  // namespace tallowbrook
