#include "View/Frame.h"

namespace tallowbrook::host {
namespace {

std::string styleText(const Style& style, const TerminalText& terminal) {
    std::string text = terminal.normal;
    if (const auto colour = terminal.colours.find(style.colour); colour != terminal.colours.end())
        text += colour->second;
    if (style.bold) text += terminal.bold;
    if (style.dim) text += terminal.dim;
    if (style.reverse) text += terminal.reverse;
    return text;
}

std::string lineText(std::size_t row, const PictureLine& line, const TerminalText& terminal) {
    std::string text = terminal.moveTo(row, 0) + terminal.normal + terminal.clearLine;
    for (const auto& span : line) {
        // Each at its own place, since terminals differ in how wide some characters are.
        if (span.column > 0) text += terminal.moveTo(row, span.column);
        text += styleText(span.style, terminal);
        text += terminal.hasUnicode ? span.text : withoutUnicode(span.text);
    }
    return text;
}

}  // namespace

std::string frame(const Picture* before, const Picture& after, const TerminalText& terminal) {
    if (before != nullptr && *before == after) return {};
    const bool isNew = before == nullptr || before->size != after.size;
    std::string text = terminal.hideCursor;
    if (isNew) text += terminal.normal + terminal.clear;
    for (std::size_t row = 0; row < after.lines.size(); ++row)
        if (isNew ? !after.lines[row].empty() : after.lines[row] != before->lines[row])
            text += lineText(row, after.lines[row], terminal);
    text += terminal.normal;
    if (after.cursor) text += terminal.moveTo(after.cursorRow, *after.cursor) + terminal.showCursor;
    return text;
}

}  // namespace tallowbrook::host
