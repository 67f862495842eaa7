// Waiting for what another process does.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <functional>

namespace tallowbrook {

// Looks again and again; what does not come within a minute fails the test.
inline void waitUntil(const std::function<bool()>& hasCome) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes{1};
    while (!hasCome()) {
        if (std::chrono::steady_clock::now() > deadline) {
            ADD_FAILURE() << "what the test waits for does not come";
            return;
        }
        usleep(2000);
    }
}

}  // namespace tallowbrook
