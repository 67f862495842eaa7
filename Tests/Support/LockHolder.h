// Another process that holds the lock of a file, see flock(2).
#pragma once

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <memory>
#include <string>

#include "Support/ChildProcess.h"

namespace tallowbrook {

class LockHolder {
 public:
    // Returns once the other process has the lock. `holds` tells whether it got it.
    explicit LockHolder(const std::filesystem::path& file) {
        if (pipe(ready_.data()) != 0 || pipe(release_.data()) != 0) return;
        child_ = std::make_unique<ChildProcess>([&] { return hold(file); });
        close(ready_[1]);
        char byte = 0;
        holds = read(ready_[0], &byte, 1) == 1;
    }
    ~LockHolder() {
        child_.reset();
        for (const int end : {ready_[0], release_[0], release_[1]}) close(end);
    }
    LockHolder(const LockHolder&) = delete;
    LockHolder& operator=(const LockHolder&) = delete;

    // Asks the other process to give the lock back. It takes its time, so that whoever comes now
    // has to wait.
    void releaseSoon() {
        const char byte = 'r';
        holds = write(release_[1], &byte, 1) != 1;
    }

    // Ends the other process without a chance to unlock, and returns once it is gone.
    void kill() { child_.reset(); }

    pid_t pid() const { return child_ ? child_->pid : -1; }

    bool holds = false;

 private:
    std::string hold(const std::filesystem::path& file) const {
        close(ready_[0]);
        const int opened = open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
        char byte = 'h';
        if (flock(opened, LOCK_EX) != 0 || write(ready_[1], &byte, 1) != 1) return "no lock";
        if (read(release_[0], &byte, 1) != 1) return "not asked";
        usleep(50'000);
        flock(opened, LOCK_UN);
        return "released";
    }

    std::array<int, 2> ready_{-1, -1};
    std::array<int, 2> release_{-1, -1};
    std::unique_ptr<ChildProcess> child_;
};

}  // namespace tallowbrook
