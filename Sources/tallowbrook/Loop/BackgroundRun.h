// A program that runs beside the loop: what it prints comes back once it has ended.
//
// Used by one thread.
#pragma once

#include <sys/types.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "Loop/PollLoop.h"
#include "System/FileDescriptor.h"

namespace tallowbrook::host {

class BackgroundRun {
 public:
    // All that the program printed, on standard error too, up to 64 KiB; absent where it could not
    // be run, and where it has not ended within the time, for which it was killed.
    using Done = std::function<void(std::optional<std::string> output)>;

    // Starts the executable. `done` is called once, from the loop, or at once where the program
    // cannot be started. The loop must outlive the run.
    BackgroundRun(PollLoop& loop, const std::string& executable,
                  const std::vector<std::string>& arguments, std::chrono::seconds atMost,
                  Done done);
    BackgroundRun(const BackgroundRun&) = delete;
    BackgroundRun& operator=(const BackgroundRun&) = delete;
    // A program that still runs is killed; `done` is not called then.
    ~BackgroundRun();

    bool isRunning() const { return child_ > 0; }

 private:
    PollInterest interest() const;
    void proceed();
    void readOn();
    void end(bool inTime);

    pid_t child_ = -1;
    FileDescriptor output_;
    std::string text_;
    MonotonicTime deadline_;
    Done done_;
    PollLoop::Attachment attachment_;
};

}  // namespace tallowbrook::host
