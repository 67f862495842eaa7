#include "Terminal/TerminalLocation.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace tallowbrook {
namespace {

constexpr std::string_view terminalPrefix = "tty";
constexpr std::size_t minNameBytes = 4;
constexpr std::size_t maxNameBytes = 16;

bool isPlain(char letter) {
    return (letter >= 'a' && letter <= 'z') || (letter >= '0' && letter <= '9');
}

}  // namespace

std::optional<std::string> ControllingTerminal::deviceName(pid_t startingAt, int ancestorLimit,
                                                           const Lookup& lookup) {
    if (ancestorLimit < 0) {
        std::fputs("tallowbrook: the count of ancestors must not be negative\n", stderr);
        std::abort();
    }
    // Agents often start their hooks in a session of its own, without a terminal; the agent itself,
    // some ancestors up, has one.
    pid_t current = startingAt;
    for (int steps = 0; current >= 2; ++steps) {
        const auto record = lookup.process(current);
        if (!record) return std::nullopt;
        if (record->device) {
            // A terminal with a refused name is still this process's own: an ancestor's would be
            // wrong.
            if (const auto name = lookup.deviceName(*record->device)) return sanitize(name);
        }
        if (steps == ancestorLimit) return std::nullopt;
        current = record->parentPID;
    }
    return std::nullopt;
}

std::optional<std::string> ControllingTerminal::sanitize(std::optional<std::string_view> name) {
    if (!name || !name->starts_with(terminalPrefix)) return std::nullopt;
    if (name->size() < minNameBytes || name->size() > maxNameBytes) return std::nullopt;
    if (!std::ranges::all_of(name->substr(terminalPrefix.size()), isPlain)) return std::nullopt;
    return std::string{*name};
}

}  // namespace tallowbrook
