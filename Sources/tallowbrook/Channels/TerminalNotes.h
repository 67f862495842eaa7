// Notifications in the words of terminals: the operating system commands (OSC, ECMA-48) that
// terminals across ssh, too, turn into notifications of the desktop that they stand on.
//
// Pure functions; safe from any thread.
#pragma once

#include <string>
#include <string_view>

#include "Notifications/NotificationPolicy.h"

namespace tallowbrook::host {

enum class TerminalProtocol {
    osc99,   // kitty's desktop notifications: with an identifier, so replaced and closed
    osc777,  // rxvt-unicode's: a title and a body
    osc9,    // iTerm2's: one text
    bellAndTitle,
    bell,  // of a terminal that could print what it does not know
};

namespace TerminalNotes {

// What a terminal takes that calls itself so: by the value of TERM, or by a program's name and
// version such as "WezTerm 20240203". `bellAndTitle` for an unknown name.
TerminalProtocol protocolOf(std::string_view name);

// "its own notifications (OSC 99)", for a sentence to the user.
std::string_view describe(TerminalProtocol protocol);

// Texts lose whatever is no printable character, and are cut where they are long.
std::string told(TerminalProtocol protocol, const NotificationContent& content);

// Closes the notification of a session; empty where the protocol cannot.
std::string withdrawn(TerminalProtocol protocol, std::string_view sessionStorageID);

// Keeps the window's title for later, and puts it back.
inline constexpr std::string_view keepTitle = "\x1b[22;2t";
inline constexpr std::string_view putTitleBack = "\x1b[23;2t";

// As tmux hands it through to the terminal that it is shown on.
std::string throughTmux(std::string_view sequence);

// Asks whether the terminal has kitty's protocol, and then for what every terminal answers, so that
// a terminal without it is known by its answer too.
inline constexpr std::string_view query = "\x1b]99;i=tallowbrook:p=?\x1b\\\x1b[c";

struct Answer {
    bool isComplete = false;  // nothing more will come
    bool hasOSC99 = false;
    bool operator==(const Answer&) const = default;
};
// `received`: all that the terminal has sent since the query, and keys among it.
Answer answerIn(std::string_view received);

}  // namespace TerminalNotes
}  // namespace tallowbrook::host
