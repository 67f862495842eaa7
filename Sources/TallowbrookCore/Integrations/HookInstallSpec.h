// What is to be installed into an agent's configuration file: which events run the helper, and how.
//
// Plain values; safe from any thread.
#pragma once

#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "Domain/AgentEvent.h"

namespace tallowbrook {

struct HookCommand {
    struct Exec {  // run without a shell; "command" and "args" in the file
        std::string path;
        std::vector<std::string> arguments;
        bool operator==(const Exec&) const = default;
    };
    struct Shell {  // one line for the user's shell; "command" in the file
        std::string line;
        bool operator==(const Shell&) const = default;
    };
    std::variant<Exec, Shell> form;
    bool operator==(const HookCommand&) const = default;

    static HookCommand exec(std::string path, std::vector<std::string> arguments);
    static HookCommand shell(std::string line);

    // What stands as "command" in the file.
    const std::string& text() const;
};

struct HookInstallSpec {
    Provider provider = Provider::claudeCode;
    std::vector<std::string> events;
    HookCommand command;
    int timeoutSeconds = 0;
    std::set<std::string> eventsWithoutTimeout;
    bool operator==(const HookInstallSpec&) const = default;

    // As the agent's row in `AgentProfile` says. `helperPath` is absolute and may hold any byte.
    static HookInstallSpec of(Provider provider, std::string_view helperPath);
    static HookInstallSpec claudeCode(std::string_view helperPath);
    static HookInstallSpec codex(std::string_view helperPath);

    // The program that the command runs. Absent for a shell line that does not begin with a word in
    // single quotes.
    std::optional<std::string> executablePath() const;
};

// The helper's first argument in the hooks of this agent.
std::string_view hookSourceWord(Provider provider);

// The first word of a shell line (POSIX shell, section Quoting) that begins with a single quote,
// with each '\'' in it turned back into one quote. Absent when the line begins otherwise or the
// quote is never closed.
std::optional<std::string> leadingSingleQuotedWord(std::string_view line);

}  // namespace tallowbrook
