// Runs a program for a caller who cannot wait for one that does not end.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Integrations/ProcessRunner.h"

namespace tallowbrook::host {

// Runs the executable as `ProcessRunner::run` does, and gives what that gives, but bounds the whole
// run: a program that has not closed its output and exited within `timeout` is asked to end by
// SIGTERM, killed a second later, and the result is absent. Blocks no longer than that. Any thread.
std::optional<ProcessRunner::Result> runBounded(const std::string& executablePath,
                                                const std::vector<std::string>& arguments,
                                                Seconds timeout, std::int64_t maxOutputBytes);

}  // namespace tallowbrook::host
