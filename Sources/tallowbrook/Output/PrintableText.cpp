#include "Output/PrintableText.h"

#include <fmt/core.h>
#include <utf8proc.h>

#include <algorithm>

#include "Text/UTF16.h"

namespace tallowbrook::host {
namespace {

constexpr std::string_view ellipsis = "…";
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
    for (const auto& line : wrappedLines(text, columns))
        result += (result.empty() ? "" : "\n") + line;
    return result;
}

std::size_t PrintableText::width(std::string_view text) {
    std::size_t columns = 0;
    for (std::string_view rest = text; !rest.empty();) {
        const Piece piece = firstPiece(rest);
        columns += columnsOf(piece.codePoint);
        rest.remove_prefix(piece.bytes.size());
    }
    return columns;
}

std::string PrintableText::shortened(std::string_view text, std::size_t columns) {
    if (columns == 0) return {};
    std::string result;
    std::string beforeEllipsis;  // what fits in front of it
    std::size_t used = 0;
    for (std::string_view rest = text; !rest.empty();) {
        const Piece piece = firstPiece(rest);
        used += columnsOf(piece.codePoint);
        if (used > columns) return beforeEllipsis.append(ellipsis);
        result.append(piece.bytes);
        if (used < columns) beforeEllipsis = result;
        rest.remove_prefix(piece.bytes.size());
    }
    return result;
}

std::string PrintableText::padded(std::string_view text, std::size_t columns) {
    auto result = shortened(text, columns);
    if (result.empty()) return std::string(columns, ' ');
    // The ellipsis stands in the last column, though half a character may fit before it.
    const auto blanksAt = result == text ? result.size() : result.size() - ellipsis.size();
    return result.insert(blanksAt, columns - width(result), ' ');
}

std::vector<std::string> PrintableText::wrappedLines(std::string_view text, std::size_t columns,
                                                     std::size_t indent) {
    columns = std::max<std::size_t>(columns, 1);
    // What leaves hardly any room for words is no indent.
    if (indent * 2 > columns) indent = 0;
    std::vector<std::string> lines;
    std::string line;
    while (!text.empty()) {
        const std::size_t room = columns - (lines.empty() ? 0 : indent);
        if (width(text) <= room) {
            line = text;
            text = {};
        } else {
            std::size_t end = 0;    // behind what fits
            std::size_t blank = 0;  // behind the last word that fits
            for (std::size_t used = 0; end < text.size();) {
                const Piece piece = firstPiece(text.substr(end));
                used += columnsOf(piece.codePoint);
                if (piece.bytes == " " && end > 0) blank = end;
                if (used > room && end > 0) break;
                end += piece.bytes.size();
            }
            // A word that is longer than a line is cut.
            line = text.substr(0, blank > 0 ? blank : end);
            text.remove_prefix(line.size());
            text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
        }
        lines.push_back(lines.empty() ? line : std::string(indent, ' ') + line);
    }
    if (lines.empty()) lines.emplace_back();
    return lines;
}

}  // namespace tallowbrook::host
