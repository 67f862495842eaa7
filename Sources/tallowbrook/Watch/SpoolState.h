// What a glance at the spool tells without opening anything in it.
#pragma once

#include <cstdint>
#include <filesystem>

#include "EventBridge/TallowbrookPaths.h"

namespace tallowbrook::host {

// Two that differ mean that something was written, renamed or removed in between.
struct SpoolState {
    std::filesystem::file_time_type directoryChangedAt{};
    std::filesystem::file_time_type activeFileChangedAt{};
    std::uintmax_t activeFileBytes = 0;
    bool operator==(const SpoolState&) const = default;

    // What is not there, or cannot be looked at, counts as unchanged.
    static SpoolState of(const TallowbrookPaths& paths);
};

}  // namespace tallowbrook::host
