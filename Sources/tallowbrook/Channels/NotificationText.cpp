#include "Channels/NotificationText.h"

#include <utf8proc.h>

#include <optional>

namespace tallowbrook::host {
namespace {

constexpr std::string_view ellipsis = "…";

// A user-perceived character may hold any number of marks. One with hundreds is no text but an
// attempt to paint over what stands around it.
constexpr std::size_t maxBytesOfCharacter = 64;

bool isShown(utf8proc_int32_t codePoint) {
    const auto category = utf8proc_category(codePoint);
    const bool joins = codePoint == 0x200C || codePoint == 0x200D;  // parts of words and emoji
    return joins || (category != UTF8PROC_CATEGORY_CC && category != UTF8PROC_CATEGORY_CF &&
                     category != UTF8PROC_CATEGORY_ZL && category != UTF8PROC_CATEGORY_ZP);
}

bool isLineEnd(utf8proc_int32_t codePoint) {
    return codePoint == '\n' || codePoint == '\t' || codePoint == 0x2028 || codePoint == 0x2029;
}

}  // namespace

std::string NotificationText::plain(std::string_view text, std::size_t maxLength) {
    std::string result;
    std::size_t length = 0;         // in user-perceived characters
    std::size_t lastCharacter = 0;  // where it begins
    std::size_t cut = 0;            // where an ellipsis may stand
    std::optional<utf8proc_int32_t> previous;
    utf8proc_int32_t state = 0;
    while (!text.empty()) {
        utf8proc_int32_t codePoint = -1;
        const auto size = utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(text.data()),
                                           static_cast<utf8proc_ssize_t>(text.size()), &codePoint);
        const auto bytes = text.substr(0, size < 1 ? 1 : static_cast<std::size_t>(size));
        text.remove_prefix(bytes.size());
        if (size < 1) continue;
        const bool endsLine = isLineEnd(codePoint);
        if (!endsLine && !isShown(codePoint)) continue;
        if (endsLine) codePoint = ' ';
        if (!previous || utf8proc_grapheme_break_stateful(*previous, codePoint, &state)) {
            if (length == maxLength) return result.substr(0, cut).append(ellipsis);
            ++length;
            lastCharacter = result.size();
            if (length == maxLength) cut = lastCharacter;
        }
        previous = codePoint;
        if (result.size() - lastCharacter + bytes.size() > maxBytesOfCharacter) continue;
        if (endsLine)
            result += ' ';
        else
            result.append(bytes);
    }
    return result;
}

std::string NotificationText::escapedMarkup(std::string_view text) {
    std::string escaped;
    for (const char c : text) switch (c) {
            case '&':
                escaped += "&amp;";
                break;
            case '<':
                escaped += "&lt;";
                break;
            case '>':
                escaped += "&gt;";
                break;
            default:
                escaped += c;
        }
    return escaped;
}

}  // namespace tallowbrook::host
