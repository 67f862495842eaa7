// What keeps an agent from running the hooks that are in its file.
//
// An agent can be told to run no hooks, by its user or by those who manage the machine, and one
// asks its user to trust new hooks first. It says nothing of the hooks that it skips, so to the
// user they look like a setup that does not work.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "Setup/Agents.h"

namespace tallowbrook::host {

struct HookObstacle {
    enum class Kind {
        switchedOff,  // for all hooks, also those to come
        untrusted,    // ours, until the user has looked at them
    };

    Kind kind;
    std::string reason;  // a clause: "\"disableAllHooks\" is true in /home/u/.claude/settings.json"
    std::string cure;    // what to do, likewise: "take it out there"

    std::string text() const;  // both, "…; …"
    // Whether a setup can be said to work only when this is out of the way.
    bool isSwitchedOff() const { return kind == Kind::switchedOff; }
    bool operator==(const HookObstacle&) const = default;
};

// Where those who manage the machine put settings that a user cannot change; directories.
struct ManagedSettings {
    std::filesystem::path claudeCode;
    std::filesystem::path codex;

    static ManagedSettings ofThisSystem();
};

// Reads the agent's configuration beside its hooks, which may be missing or odd: what it cannot
// read keeps nothing from running. Only what holds for every project is looked at.
std::optional<HookObstacle> hookObstacle(
    const Agent& agent, const ManagedSettings& managed = ManagedSettings::ofThisSystem());

}  // namespace tallowbrook::host
