#include "View/TerminalText.h"

// The headers of curses define short words as macros: they come last.
#include <curses.h>
#include <term.h>

#include <langinfo.h>
#include <locale.h>

#include <array>
#include <cstdlib>
#include <string_view>

namespace tallowbrook::host {
namespace {

// Of terminfo(5); absent where the terminal has none.
const char* capability(const char* name) {
    const char* text = tigetstr(name);
    constexpr std::intptr_t noString = -1;
    return reinterpret_cast<std::intptr_t>(text) == noString ? nullptr : text;
}

std::string collected;
extern "C" int collect(int byte) {
    collected += static_cast<char>(byte);
    return byte;
}

// With the pauses that slow terminals ask for, as bytes.
std::string put(const char* text) {
    if (text == nullptr) return {};
    collected.clear();
    tputs(text, 1, collect);
    return collected;
}

std::string textOf(const char* name) { return put(capability(name)); }

std::string textOf(const char* name, std::size_t first, std::size_t second = 0) {
    const char* text = capability(name);
    if (text == nullptr) return {};
    // tparm(3) takes what it does not change as changeable, and in old versions a fixed number of
    // arguments.
    return put(tparm(const_cast<char*>(text), static_cast<long>(first), static_cast<long>(second),
                     0L, 0L, 0L, 0L, 0L, 0L, 0L));
}

struct KeyCapability {
    const char* name;
    Key key;
};

constexpr std::array keyCapabilities{
    KeyCapability{"kcuu1", Keys::up},   KeyCapability{"kcud1", Keys::down},
    KeyCapability{"kpp", Keys::pageUp}, KeyCapability{"knp", Keys::pageDown},
    KeyCapability{"khome", Keys::home}, KeyCapability{"kend", Keys::end},
    KeyCapability{"kent", Keys::enter},
};

// Terminals send these whatever their description says: some know of no keypad mode.
const KeySequences commonSequences{
    {"\x1B[A", Keys::up},
    {"\x1B[B", Keys::down},
    {"\x1BOA", Keys::up},
    {"\x1BOB", Keys::down},
    {"\x1B[5~", Keys::pageUp},
    {"\x1B[6~", Keys::pageDown},
    {"\x1B[H", Keys::home},
    {"\x1B[F", Keys::end},
    {"\x1BOH", Keys::home},
    {"\x1BOF", Keys::end},
    {"\x1B[1~", Keys::home},
    {"\x1B[4~", Keys::end},
    {"\x1B[200~", Keys::pasteBegins},
    {"\x1B[201~", Keys::pasteEnds},
};

KeySequences keysOfTerminal() {
    KeySequences keys;
    for (const auto& [name, key] : keyCapabilities)
        // Keys of a single byte need no telling apart.
        if (const char* text = capability(name); text != nullptr && text[0] == '\x1B')
            keys.emplace_back(text, key);
    keys.insert(keys.end(), commonSequences.begin(), commonSequences.end());
    return keys;
}

bool localeHasUnicode() {
    setlocale(LC_CTYPE, "");
    return std::string_view{nl_langinfo(CODESET)} == "UTF-8";
}

// So that a pasted text does not act as keys. Terminals without it pass over this.
constexpr const char* bracketedPaste = "\x1B[?2004h";
constexpr const char* plainPaste = "\x1B[?2004l";

constexpr std::array colourNumbers{
    std::pair{Colour::red, COLOR_RED}, std::pair{Colour::green, COLOR_GREEN},
    std::pair{Colour::magenta, COLOR_MAGENTA}, std::pair{Colour::cyan, COLOR_CYAN}};

}  // namespace

std::expected<TerminalText, Sentence> TerminalText::of(int descriptor, bool withColours) {
    int found = 0;
    const auto cannot = [](const char* what) {
        const char* name = std::getenv("TERM");
        return std::unexpected(Sentence{std::string{"The terminal \""} +
                                        (name != nullptr ? name : "") + "\" (TERM) " + what});
    };
    if (setupterm(nullptr, descriptor, &found) != OK)
        return cannot("is not described on this machine");
    if (textOf("cup", 1, 1).empty() || textOf("clear").empty() || textOf("el").empty())
        return cannot("cannot move its cursor");

    TerminalText text;
    text.clear = textOf("clear");
    text.clearLine = textOf("el");
    text.moveTo = [](std::size_t row, std::size_t column) { return textOf("cup", row, column); };
    text.hideCursor = textOf("civis");
    text.showCursor = textOf("cnorm");
    text.ring = textOf("bel");
    text.normal = textOf("sgr0");
    text.bold = textOf("bold");
    text.dim = textOf("dim");
    text.reverse = textOf("rev");
    constexpr int fewestColours = 8;
    if (withColours && tigetnum("colors") >= fewestColours)
        for (const auto& [colour, number] : colourNumbers)
            text.colours[colour] = textOf("setaf", static_cast<std::size_t>(number));

    const auto ownScreen = textOf("smcup");
    text.enter = ownScreen + textOf("smkx") + textOf("rmam") + text.hideCursor;
    text.leave = text.normal + text.showCursor + textOf("smam") + textOf("rmkx");
    if (ownScreen.starts_with('\x1B')) {
        text.enter += bracketedPaste;
        text.leave += plainPaste;
    }
    // What has no screen of its own must not go on in the middle of ours.
    text.leave += ownScreen.empty() ? text.clear : textOf("rmcup");
    text.hasUnicode = localeHasUnicode();
    text.keys = keysOfTerminal();
    return text;
}

}  // namespace tallowbrook::host
