// `tallowbrook status`: how things stand, in a glance. Cheap enough for a prompt and for bars that
// ask every few seconds.
#pragma once

#include <optional>
#include <string>

#include "EventBridge/TallowbrookPaths.h"

namespace tallowbrook::host {

class CommandLine;

// What `--short` and `--format` take; `StatusReport` says what each gives.
struct StatusForm {
    bool isShort = false;
    std::optional<std::string> format;  // "tmux", "waybar", "xbar", "json", or a template
};

// From the store alone: reads no spool, asks no agent, starts no program, and makes no database.
// Gives the exit status: 0, 1 when the database cannot be read, 2 for a format that there is not.
int showStatus(const TallowbrookPaths& paths, const StatusForm& form);

// For a command line without a command: the same, and what to do from there.
int showStatusAndHints(const TallowbrookPaths& paths);

// Adds the command to the command line.
void addStatusCommand(CommandLine& line);

}  // namespace tallowbrook::host
