// How long the database may wait for locks that other processes hold.
//
// SQLite waits in many places, and bounds each of its waits by itself: some by the busy timeout,
// some by a number of tries that no setting reaches, and where one meets the other they add up. But
// all of them sleep through SQLite's interface to the system (https://www.sqlite.org/vfs.html). A
// connection that is opened with this one has a common measure of sleep; once it is used up, every
// wait goes through the tries it has left at once, and ends.
#pragma once

#include <chrono>

namespace tallowbrook::host::LockPatience {

// What a new measure holds; SQLite's busy timeout is to be the same.
inline constexpr std::chrono::milliseconds whole{5000};

// The name of the interface, for the opening of a connection; empty where SQLite cannot be used.
const char* vfsName();

// A new measure for what comes, of all connections of the process. One thread.
void renew();

// Sleeps from the measure; false without a sleep when that is used up.
bool sleep(std::chrono::milliseconds duration);

}  // namespace tallowbrook::host::LockPatience
