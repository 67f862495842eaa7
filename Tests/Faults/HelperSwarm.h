// Many helpers that start at the same moment. Each waits in a process of its own, its payload ready
// on its standard input, until all are let go.
//
// For tests with one thread: each child is a fork of the test.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "EndToEnd/TestHome.h"
#include "System/FileDescriptor.h"

namespace tallowbrook {

class HelperSwarm {
 public:
    // `home` outlives this.
    explicit HelperSwarm(const TestHome& home);
    // Helpers that were not waited for are killed.
    ~HelperSwarm();
    HelperSwarm(const HelperSwarm&) = delete;
    HelperSwarm& operator=(const HelperSwarm&) = delete;

    // Puts one more helper at the start. False when the system has no room for another process.
    bool add(const std::string& payload);

    void letGo();

    // Collects those that have ended; tells whether any is left. Does not wait.
    bool isRunning();

    // Waits for all.
    void wait();

    // How many ended in any way but with status 0.
    int failures = 0;
    // All that the helpers have printed on either stream.
    std::string printed() const;

 private:
    [[noreturn]] void become(const ProgramCall& call, int input) const noexcept;

    const TestHome& home_;
    std::string output_;
    FileDescriptor gateReader_;
    FileDescriptor gateWriter_;
    std::vector<pid_t> running_;
};

}  // namespace tallowbrook
