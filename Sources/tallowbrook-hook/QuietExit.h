// What keeps the helper from ever disturbing the agent that runs it, whatever happens.
#pragma once

#include <string>

namespace tallowbrook::hook {

inline constexpr unsigned watchdogSeconds = 3;

// Ends the process with status 0 when `seconds` have passed.
void armWatchdog(unsigned seconds);

// Makes a vanished reader and a file size limit ordinary write errors, and an exception that is not
// caught an exit with status 0.
void ignoreDeadlySignals();

// The name of the type that is being thrown, without its namespace, such as bad_alloc. Called
// inside a catch block. Never the text of the error, which could hold what the agent sent.
std::string currentExceptionTypeName();

}  // namespace tallowbrook::hook
