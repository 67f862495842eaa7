// Programs that run beside the poll loop: it goes on meanwhile, and hears of their end.
//
// Used by one thread.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <expected>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "Loop/PollLoop.h"
#include "System/FileDescriptor.h"

namespace tallowbrook::host {

class ChildPrograms {
 public:
    // The exit code, or the number of the signal that ended it, and the front of what it printed, 4
    // KiB at most.
    using Ended = std::function<void(int status, const std::string& output)>;

    // The loop must outlive this value.
    explicit ChildPrograms(PollLoop& loop) : loop_{loop} {}
    // What runs still goes on by itself; nobody hears of its end.
    ~ChildPrograms() = default;
    ChildPrograms(const ChildPrograms&) = delete;
    ChildPrograms& operator=(const ChildPrograms&) = delete;

    enum class Kept { output, outputAndErrors };

    // Starts the executable at this path as `ProcessLaunch::start` does, but that its standard
    // error is kept too where that is asked for. One that has not closed its output and exited
    // within `limit` is killed. Fails with an error number.
    [[nodiscard]] std::expected<void, int> run(const std::string& executablePath,
                                               const std::vector<std::string>& arguments,
                                               std::chrono::milliseconds limit, Ended ended,
                                               Kept kept = Kept::output);

    bool isAnyRunning() const { return !children_.empty(); }

 private:
    struct Child {
        pid_t process = -1;
        FileDescriptor output;
        std::string text;
        MonotonicTime killedAt{};
        MonotonicTime nextLook{};  // for its exit, once its output has ended
        bool wasKilled = false;
        Ended ended;
        PollLoop::Attachment attachment;
    };

    static PollInterest interest(const Child& child);
    void proceed(pid_t process);

    PollLoop& loop_;
    std::map<pid_t, Child> children_;
};

}  // namespace tallowbrook::host
