#include "Channels/TerminalNotes.h"

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <utility>

#include "Channels/NotificationText.h"
#include "Text/Hex.h"

namespace tallowbrook::host {
namespace {

constexpr std::string_view stringTerminator = "\x1b\\";

// Beginnings of what terminals call themselves, in TERM or otherwise, in lower case.
constexpr std::array known{
    std::pair{std::string_view{"xterm-kitty"}, TerminalProtocol::osc99},
    std::pair{std::string_view{"kitty"}, TerminalProtocol::osc99},
    std::pair{std::string_view{"foot"}, TerminalProtocol::osc777},
    std::pair{std::string_view{"xterm-ghostty"}, TerminalProtocol::osc777},
    std::pair{std::string_view{"ghostty"}, TerminalProtocol::osc777},
    std::pair{std::string_view{"wezterm"}, TerminalProtocol::osc777},
    std::pair{std::string_view{"rxvt-unicode"}, TerminalProtocol::osc777},
    std::pair{std::string_view{"warpterminal"}, TerminalProtocol::osc777},
    std::pair{std::string_view{"iterm"}, TerminalProtocol::osc9},
    std::pair{std::string_view{"linux"}, TerminalProtocol::bell},
    std::pair{std::string_view{"dumb"}, TerminalProtocol::bell},
};

std::string lowerCase(std::string_view text) {
    std::string result{text};
    for (char& letter : result)
        letter = static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
    return result;
}

std::string command(std::string_view words) {
    return fmt::format("\x1b]{}{}", words, stringTerminator);
}

// Identifiers hold letters, digits, and few marks: of those, a plus stands for what does not fit.
std::string identifier(std::string_view sessionStorageID) {
    constexpr std::string_view marks = "_-.";
    std::string text{"tallowbrook."};
    for (const char c : sessionStorageID) {
        if (std::isalnum(static_cast<unsigned char>(c)) != 0 || marks.contains(c)) {
            text += c;
            continue;
        }
        text += '+';
        Hex::append(text, static_cast<std::uint8_t>(c), Hex::lowerDigits);
    }
    return text;
}

std::string inOSC99(const NotificationContent& content, const std::string& title,
                    const std::string& body) {
    const auto id = identifier(content.sessionStorageID);
    const std::string_view sound = content.playSound ? "" : ":s=silent";
    return command(fmt::format("99;i={}:d=0:p=title;{}", id, title)) +
           command(fmt::format("99;i={}:d=1:p=body{};{}", id, sound, body));
}

}  // namespace

TerminalProtocol TerminalNotes::protocolOf(std::string_view name) {
    const auto sought = lowerCase(name);
    for (const auto& [beginning, protocol] : known)
        if (sought.starts_with(beginning)) return protocol;
    return sought.empty() ? TerminalProtocol::bell : TerminalProtocol::bellAndTitle;
}

std::string_view TerminalNotes::describe(TerminalProtocol protocol) {
    switch (protocol) {
        case TerminalProtocol::osc99:
            return "its own notifications (OSC 99)";
        case TerminalProtocol::osc777:
            return "its own notifications (OSC 777)";
        case TerminalProtocol::osc9:
            return "its own notifications (OSC 9)";
        case TerminalProtocol::bellAndTitle:
            return "its bell and its title";
        case TerminalProtocol::bell:
            break;
    }
    return "its bell";
}

std::string TerminalNotes::told(TerminalProtocol protocol, const NotificationContent& content) {
    auto title = NotificationText::plain(content.title, NotificationText::maxTitleLength);
    const auto body = NotificationText::plain(content.body, NotificationText::maxBodyLength);
    const std::string bell = content.playSound ? "\a" : "";
    switch (protocol) {
        case TerminalProtocol::osc99:
            return inOSC99(content, title, body);
        case TerminalProtocol::osc777:
            // There a semicolon ends the title.
            std::ranges::replace(title, ';', ',');
            return command(fmt::format("777;notify;{};{}", title, body));
        case TerminalProtocol::osc9:
            return command(fmt::format("9;{}: {}", title, body));
        case TerminalProtocol::bellAndTitle:
            return command(fmt::format("2;{}: {}", title, body)) + bell;
        case TerminalProtocol::bell:
            break;
    }
    return std::string{bell};
}

std::string TerminalNotes::withdrawn(TerminalProtocol protocol, std::string_view sessionStorageID) {
    if (protocol != TerminalProtocol::osc99) return {};
    return command(fmt::format("99;i={}:p=close;", identifier(sessionStorageID)));
}

std::string TerminalNotes::throughTmux(std::string_view sequence) {
    std::string text{"\x1bPtmux;"};
    for (const char c : sequence) {
        if (c == '\x1b') text += c;
        text += c;
    }
    return text.append(stringTerminator);
}

TerminalNotes::Answer TerminalNotes::answerIn(std::string_view received) {
    // "\x1b[?62;4c", the primary device attributes; keys that were pressed meanwhile look
    // otherwise.
    const auto attributes = received.find("\x1b[?");
    return {.isComplete = attributes != std::string_view::npos &&
                          received.find('c', attributes) != std::string_view::npos,
            .hasOSC99 = received.contains("\x1b]99;i=tallowbrook:p=?")};
}

}  // namespace tallowbrook::host
