// The helper's command line: tallowbrook-hook [options] <source> [payload]
#pragma once

#include <filesystem>
#include <optional>
#include <string_view>
#include <vector>

#include "Domain/AgentEvent.h"

namespace tallowbrook::hook {

struct Arguments {
    EventOrigin origin = EventOrigin::live;     // "--test" makes it `test`
    std::optional<std::filesystem::path> home;  // "--home DIR"; the last one counts
    bool wantsVersion = false;                  // "--version"; words behind it are not looked at
    std::vector<std::string_view> positional;   // every other word, unknown options too
};

// Reads the words from left to right; there are no errors. "--home" takes the next word whatever it
// is, and is ignored as the last one. The result refers to `argv`.
Arguments parseArguments(int argc, const char* const* argv);

}  // namespace tallowbrook::hook
