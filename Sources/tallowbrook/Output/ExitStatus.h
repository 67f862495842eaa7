// The exit statuses that scripts can rely on.
#pragma once

namespace tallowbrook::host::ExitStatus {

inline constexpr int done = 0;
inline constexpr int failed = 1;      // the reason is on standard error
inline constexpr int wrongUsage = 2;  // nothing was done
// Not as wished, and the output says why: something that was looked at is not in order, the user
// said no to a change, or `focus` did something else that helps.
inline constexpr int notInOrder = 3;
// Agents are set up and all else is in order, but no host runs: what they report is told to nobody.
inline constexpr int noHost = 4;
// `wait` ends with `done` for a turn that was completed, and with one of these for all else.
inline constexpr int needsUser = 5;
inline constexpr int notFinished = 6;  // failed, interrupted, or ended in the middle
inline constexpr int timedOut = 124;   // as timeout(1) has it

}  // namespace tallowbrook::host::ExitStatus
