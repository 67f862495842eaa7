// Tells through the terminal that the host runs on: by the terminal's own notifications, which also
// reach the desktop at the other end of ssh, else by its bell and its title.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "Channels/Channel.h"

namespace tallowbrook::host {

// The name under which the outbox keeps what this channel has to tell.
inline constexpr std::string_view terminalChannelName = "terminal";

// The terminal that a host runs on.
struct TerminalSeat {
    std::string devicePath;  // such as /dev/pts/3; empty: none
    // Whether the host may write there unasked: from the background it could be stopped for it.
    std::function<bool(int descriptor)> isInForeground;
    // Nothing else reads what the terminal sends, so that a question to it can be answered.
    bool mayBeAsked = true;

    // That of the standard streams.
    static TerminalSeat ofThisProcess(bool mayBeAsked = true);
};

// What the terminal takes is found out when there is something to tell, by a question to it, or, in
// tmux, to tmux, each time anew, since a session is shown now here, now there. Beside that it goes
// by the environment: TERM, TERM_PROGRAM, LC_TERMINAL, KITTY_WINDOW_ID, TMUX_PANE.
Channel makeTerminalChannel(TerminalSeat seat = TerminalSeat::ofThisProcess());

}  // namespace tallowbrook::host
