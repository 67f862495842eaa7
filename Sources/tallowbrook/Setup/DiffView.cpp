#include "Setup/DiffView.h"

#include <unistd.h>

#include <cstdlib>

#include "Output/PrintableText.h"
#include "Text/TakeUntil.h"

namespace tallowbrook::host {
namespace {

// The escape sequences of ECMA-48, Select Graphic Rendition.
constexpr std::string_view plain = "\x1B[0m";
constexpr std::string_view bold = "\x1B[1m";
constexpr std::string_view red = "\x1B[31m";
constexpr std::string_view green = "\x1B[32m";
constexpr std::string_view cyan = "\x1B[36m";

std::string_view colourOf(std::string_view line, bool isHeader) {
    if (isHeader) return bold;
    if (line.starts_with("@@")) return cyan;
    if (line.starts_with('+')) return green;
    if (line.starts_with('-')) return red;
    return {};
}

// Tabs only indent, and a review of a file full of replaced ones is hard to read.
std::string printableButTabs(std::string_view line) {
    std::string text;
    while (true) {
        const auto tab = line.find('\t');
        text += PrintableText::printable(line.substr(0, tab));
        if (tab == std::string_view::npos) return text;
        text += '\t';
        line.remove_prefix(tab + 1);
    }
}

}  // namespace

Colour colourOfStandardOutput() {
    const char* noColour = std::getenv("NO_COLOR");
    const char* terminal = std::getenv("TERM");
    const bool isRefused = noColour != nullptr && *noColour != '\0';
    const bool isCapable = terminal != nullptr && std::string_view{terminal} != "dumb";
    return isatty(STDOUT_FILENO) == 1 && isCapable && !isRefused ? Colour::on : Colour::off;
}

std::string showDiff(std::string_view diff, Colour colour) {
    // Counted, since a removed or added line may look like a heading too.
    constexpr int headerLines = 2;
    std::string text;
    for (int number = 0; !diff.empty(); ++number) {
        auto line = takeUntil(diff, '\n');
        // In a file of such line ends a mark on every line would hide the change. Right before the
        // line feed it moves no cursor that would not move anyway.
        const bool endsInReturn = line.ends_with('\r');
        if (endsInReturn) line.remove_suffix(1);
        const auto start =
            colour == Colour::on ? colourOf(line, number < headerLines) : std::string_view{};
        text += start;
        text += printableButTabs(line);
        if (!start.empty()) text += plain;
        text += endsInReturn ? "\r\n" : "\n";
    }
    return text;
}

}  // namespace tallowbrook::host
