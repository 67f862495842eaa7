#include "Output/PrintableText.h"

#include <fmt/core.h>
#include <utf8proc.h>

#include <algorithm>

#include "Text/TakeUntil.h"
#include "Text/UTF16.h"

namespace tallowbrook::host {
namespace {

constexpr std::string_view replacement = "\xEF\xBF\xBD";

struct Piece {
    std::string_view bytes;
    utf8proc_int32_t codePoint = -1;  // negative for a byte that is no UTF-8
};

Piece firstPiece(std::string_view text) {
    utf8proc_int32_t codePoint = -1;
    const auto length = utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(text.data()),
                                         static_cast<utf8proc_ssize_t>(text.size()), &codePoint);
    if (length < 1) return {text.substr(0, 1)};
    return {text.substr(0, static_cast<std::size_t>(length)), codePoint};
}

bool isHarmless(utf8proc_int32_t codePoint) {
    if (codePoint < 0) return false;
    const auto category = utf8proc_category(codePoint);
    const bool joins = codePoint == 0x200C || codePoint == 0x200D;  // parts of words and emoji
    return joins || (category != UTF8PROC_CATEGORY_CC && category != UTF8PROC_CATEGORY_CF &&
                     category != UTF8PROC_CATEGORY_ZL && category != UTF8PROC_CATEGORY_ZP);
}

// The JSON escape of a character, of one beyond U+FFFF as a surrogate pair.
std::string escaped(utf8proc_int32_t codePoint) {
    const auto value = static_cast<std::uint32_t>(codePoint);
    if (value < UTF16::firstBeyondOneUnit) return fmt::format("\\u{:04x}", value);
    const auto [high, low] = UTF16::surrogatePair(value);
    return fmt::format("\\u{:04x}\\u{:04x}", high, low);
}

std::size_t columnsOf(utf8proc_int32_t codePoint) {
    return static_cast<std::size_t>(std::max(0, utf8proc_charwidth(codePoint)));
}

std::size_t columnsOf(std::string_view text) {
    std::size_t columns = 0;
    while (!text.empty()) {
        const Piece piece = firstPiece(text);
        columns += columnsOf(piece.codePoint);
        text.remove_prefix(piece.bytes.size());
    }
    return columns;
}

}  // namespace

std::string PrintableText::printable(std::string_view text) {
    std::string result;
    for (std::string_view rest = text; !rest.empty();) {
        const Piece piece = firstPiece(rest);
        result.append(isHarmless(piece.codePoint) ? piece.bytes : replacement);
        rest.remove_prefix(piece.bytes.size());
    }
    return result;
}

std::string PrintableText::printableLines(std::string_view text) {
    std::string result;
    while (true) {
        const auto end = text.find('\n');
        result += printable(text.substr(0, end));
        if (end == std::string_view::npos) return result;
        result += '\n';
        text.remove_prefix(end + 1);
    }
}

std::string PrintableText::printableJSON(std::string_view json) {
    std::string result;
    for (std::string_view rest = json; !rest.empty();) {
        const Piece piece = firstPiece(rest);
        // Below a blank there is only the layout: within strings those are escaped already.
        if (isHarmless(piece.codePoint) || piece.codePoint < ' ')
            result.append(piece.bytes);
        else
            result.append(escaped(piece.codePoint));
        rest.remove_prefix(piece.bytes.size());
    }
    return result;
}

std::string PrintableText::wrapped(std::string_view text, std::size_t columns) {
    std::string result;
    std::size_t used = 0;
    while (!text.empty()) {
        const auto word = takeUntil(text, ' ');
        const auto width = columnsOf(word);
        const bool fits = used + 1 + width <= columns;
        if (!result.empty()) result += fits ? ' ' : '\n';
        used = result.empty() || !fits ? width : used + 1 + width;
        result += word;
    }
    return result;
}

std::string PrintableText::padded(std::string_view text, std::size_t columns) {
    if (columns == 0) return {};
    std::string result;
    std::string shortened;  // what fits in front of an ellipsis
    std::size_t used = 0;
    for (std::string_view rest = text; !rest.empty();) {
        const Piece piece = firstPiece(rest);
        const std::size_t width = columnsOf(piece.codePoint);
        if (used + width > columns) {
            const std::size_t shortColumns = columns - 1;
            return padded(shortened, shortColumns) + "…";
        }
        used += width;
        result.append(piece.bytes);
        if (used + 1 <= columns) shortened = result;
        rest.remove_prefix(piece.bytes.size());
    }
    return result.append(columns - used, ' ');
}

}  // namespace tallowbrook::host
