// What tmux does with the output of a pane: whether it hands sequences through, and to which
// terminals. Found out by tmux's own command, in 3.3 and later.
//
// Pure functions; safe from any thread.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Channels/ProgramRuns.h"

namespace tallowbrook::host {

struct TmuxWindow {
    bool letsThrough = false;  // now: what is hidden is heard by nobody, unless tmux was told so
    // Of the clients that show its session: the name of each, then what it calls itself.
    std::vector<std::string> terminals;
    bool operator==(const TmuxWindow&) const = default;

    // To be run: asks about a pane such as %3.
    static ProgramRequest question(const std::string& tmux, const std::string& pane);
    // Absent where tmux has given no answer.
    static std::optional<TmuxWindow> of(const ProgramEnd& answer);
};

}  // namespace tallowbrook::host
