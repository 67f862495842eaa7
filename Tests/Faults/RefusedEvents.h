// What helpers log that could not get the spool's lock in time, because a machine that is too busy
// did not let its holder run.
#pragma once

#include <gmock/gmock.h>

#include "EndToEnd/TestHome.h"

namespace tallowbrook {

// How many helpers said that they gave up; none may have said anything else.
inline std::size_t refusedEvents(const TestHome& home) {
    const auto lines = home.logged();
    EXPECT_THAT(lines, testing::Each("helper: claude-code spool write failed: lock-timeout"));
    return lines.size();
}

}  // namespace tallowbrook
