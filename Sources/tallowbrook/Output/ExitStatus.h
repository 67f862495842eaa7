// The exit statuses that scripts can rely on.
#pragma once

namespace tallowbrook::host::ExitStatus {

inline constexpr int done = 0;
inline constexpr int failed = 1;      // the reason is on standard error
inline constexpr int wrongUsage = 2;  // nothing was done
// The user said no to a change, something that was looked at is not in order, or `focus` did
// something else that helps.
inline constexpr int notInOrder = 3;
// All else is in order, but no host runs: what the agents report is told to nobody.
inline constexpr int noHost = 4;

}  // namespace tallowbrook::host::ExitStatus
