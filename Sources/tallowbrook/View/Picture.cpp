#include "View/Picture.h"

#include <algorithm>
#include <array>

#include "Output/PrintableText.h"

namespace tallowbrook::host {
namespace {

constexpr std::array symbols{
    Symbols::waiting, Symbols::failed,    Symbols::working,  Symbols::stale, Symbols::interrupted,
    Symbols::unknown, Symbols::completed, Symbols::selected, Symbols::rule,  Symbols::above,
    Symbols::below,   Symbol{"…", '~'},   Symbol{"—", '-'}};

bool continuesCharacter(char byte) { return (static_cast<unsigned char>(byte) & 0xC0) == 0x80; }

}  // namespace

std::string Picture::text() const {
    std::string text;
    for (const auto& line : lines) {
        std::string row;
        for (const auto& span : line) {
            const auto used = PrintableText::width(row);
            row.append(span.column > used ? span.column - used : 0, ' ');
            row += span.text;
        }
        row.erase(row.find_last_not_of(' ') + 1);
        text += row + "\n";
    }
    return text;
}

std::string withoutUnicode(std::string_view text) {
    std::string plain;
    while (!text.empty()) {
        std::size_t length = 1;
        while (length < text.size() && continuesCharacter(text[length])) ++length;
        const auto character = text.substr(0, length);
        text.remove_prefix(length);
        const auto* symbol = std::ranges::find(symbols, character, &Symbol::text);
        if (symbol != symbols.end())
            plain += symbol->plain;
        else if (length == 1 && static_cast<unsigned char>(character.front()) < 0x80)
            plain += character;
        else
            plain.append(PrintableText::width(character), '?');
    }
    return plain;
}

}  // namespace tallowbrook::host
