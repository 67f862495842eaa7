// A home whose database holds years of work, for measuring what a large store costs.
#pragma once

#include <filesystem>

#include "EventBridge/TallowbrookPaths.h"

namespace tallowbrook::bench {

inline constexpr int largeStoreSessions = 20'000;
inline constexpr int largeStoreEvents = 5'000'000;

// A home in `cache` with that many sessions and events, 40 of the sessions heard of just now and
// all others days ago. Made once, which takes a minute or two and 2.5 GB, and again after a change
// of the schema. Ends the program with a message where that fails.
TallowbrookPaths largeStore(const std::filesystem::path& cache);

}  // namespace tallowbrook::bench
