#include "Channels/ProgramText.h"

#include "Channels/NotificationText.h"
#include "Text/Digits.h"

namespace tallowbrook::host {
namespace {

constexpr std::string_view zeroWidthSpace = "\xE2\x80\x8B";

bool isLetter(char c) {
    constexpr unsigned char firstBeyondASCII = 0x80;
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
           static_cast<unsigned char>(c) >= firstBeyondASCII;
}

}  // namespace

std::string ProgramText::argument(std::string_view text) {
    auto plain = NotificationText::plain(text, NotificationText::maxBodyLength);
    if (!plain.empty() && !isLetter(plain[0]) && !isDigit(plain[0]))
        plain.insert(0, zeroWidthSpace);
    return plain;
}

std::string ProgramText::quoted(std::string_view word) {
    std::string text{"'"};
    for (const char c : word)
        if (c == '\'')
            text += "'\\''";
        else
            text += c;
    return text + "'";
}

}  // namespace tallowbrook::host
