// Runs a short-lived program and collects what it prints.
//
// Built so that a program that hangs, waits for input or floods its output can neither hold up nor
// exhaust its caller. Any thread; calls that run at once share nothing. The environment is read:
// not while another thread changes it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Domain/Instant.h"

namespace tallowbrook::ProcessRunner {

struct Result {
    std::int32_t status = 0;  // the exit code, or the number of the signal that ended the program
    std::string output;       // its standard output in UTF-8; each invalid piece is a U+FFFD
    bool operator==(const Result&) const = default;
};

// Runs the executable at exactly this path, without a shell and without a search along PATH. The
// program inherits the environment and the working directory. Its standard input is empty, its
// standard error goes nowhere, no other open file reaches it, and its signals are at their
// defaults.
//
// The whole output is read, its first `maxOutputBytes` bytes are kept (none when negative).
//
// Absent when the program could not be started, or has not closed its standard output within
// `timeout`: it is then asked to end by SIGTERM, and given one second to close its output. Blocks
// no longer than that, but a program that closes its output in time is waited for until it exits.
//
// Nothing of a program that was given up stays behind: it is reaped in the background when it
// exits, however late. That, and every exit status, needs a caller who leaves SIGCHLD alone and
// waits for no children but its own; where other code has reaped the program, the result is absent.
std::optional<Result> run(const std::string& executablePath,
                          const std::vector<std::string>& arguments, Seconds timeout,
                          std::int64_t maxOutputBytes);

}  // namespace tallowbrook::ProcessRunner
