// How things stand, in a glance: for people, and for the bars of terminals and desktops.
//
// Pure functions; safe from any thread, while none changes the environment, which holds the time
// zone. What came from files is made safe for what shows the text.
#pragma once

#include <expected>
#include <string>
#include <string_view>
#include <vector>

#include "Lists/SessionList.h"

namespace tallowbrook::host {

struct StatusReport {
    SessionList list;
    bool isWatched = false;  // a host runs
    bool hasUnread = false;  // the spool holds events that are not counted
    Instant now{};

    std::size_t count(SessionStatus status) const;

    // "2 sessions wait for you, 5 work.", the first of those that wait, and what makes this less
    // than all. At most 80 columns, a line feed at the end of each line.
    std::string lines() const;

    // "2 waiting, 5 working", with what failed behind it; "nothing waiting" where nothing does any
    // of these. Without a line feed.
    std::string shortText() const;

    // The same in the manner of tmux's status line (styles as `#[...]`, `#` doubled). Only what
    // came from sessions is doubled.
    std::string tmux() const;

    // One JSON object (RFC 8259) as Waybar's custom modules read it: "text" and "tooltip", both
    // with Pango's markup escaped, and "class", which is "waiting", "failed", "working" or "idle".
    std::string waybar() const;

    // A menu as xbar and SwiftBar read it. A click on a session runs the command with the session's
    // id behind; without a command, and for an id that could be read as more than one word,
    // nothing happens on a click.
    std::string xbar(const std::vector<std::string>& focusCommand) const;

    // A JSON object (RFC 8259): "schema" 1, "waiting", "working", "failed", "hostRuns", and
    // "project", the name of the first session that waits, where one does.
    std::string json() const;

    // The template with "{waiting}", "{working}", "{failed}" and "{project}" filled in. Fails for
    // any other name in braces.
    [[nodiscard]] std::expected<std::string, Sentence> filled(std::string_view pattern) const;

 private:
    // Of the first session that waits; empty where none does.
    std::string project() const;
};

}  // namespace tallowbrook::host
