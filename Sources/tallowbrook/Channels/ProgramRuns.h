// Other programs, run beside a poll loop that never waits for them: what each is given, what it
// prints, how it ends, and that it ends at all.
//
// A program leads a process group of its own, so that all that it has started ends with it. What it
// leaves behind when it exits in time is its own affair. Used by one thread.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <expected>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "Loop/PollLoop.h"
#include "System/ExitWatch.h"
#include "System/FileDescriptor.h"
#include "System/FileError.h"

namespace tallowbrook::host {

struct ProgramRequest {
    std::string path;  // of the executable
    std::vector<std::string> arguments;
    std::string input = {};  // what it finds on its standard input
    // Until then it must have exited: it is asked to end by SIGTERM, and killed a second later.
    std::optional<std::chrono::milliseconds> timeout;
    // What it prints on standard output is wanted. It is read once the program has exited: one that
    // prints more than a pipe holds (16 KiB at least) waits, until its time is up.
    bool keepsOutput = false;
};

struct ProgramEnd {
    enum class Way {
        exited,
        signalled,
        timedOut,  // or was asked to end by `ProgramRuns::end`
    };
    std::int64_t number = 0;  // of the run
    Way way = Way::exited;
    int status = 0;  // the exit status, or the signal's number
    std::string output = {};
    bool operator==(const ProgramEnd&) const = default;
};

class ProgramRuns {
 public:
    ProgramRuns() = default;
    // Asks all that still runs to end, and does not wait for that.
    ~ProgramRuns();
    ProgramRuns(const ProgramRuns&) = delete;
    ProgramRuns& operator=(const ProgramRuns&) = delete;

    // Returns once the program runs. `number` is that of no run whose end was not taken. Fails
    // where the system cannot start it; then there is no end to come. The standard error of the
    // program goes nowhere.
    [[nodiscard]] std::expected<void, FileError> start(std::int64_t number,
                                                       const ProgramRequest& request);

    // Asks the program to end, by SIGTERM and a second later by SIGKILL. Its end comes as any does.
    // Does nothing for a run that is over.
    void end(std::int64_t number);

    bool isAnyRunning() const { return !runs_.empty(); }

    // The programs that have ended since the last call.
    std::vector<ProgramEnd> takeEnded();

    // The exit of any, and the time at which one is up.
    PollInterest interest() const;
    void proceed();

 private:
    enum class Stage { runs, askedToEnd, killed };
    struct Run {
        pid_t pid = -1;
        FileDescriptor output;
        std::optional<MonotonicTime> deadline;  // of this stage
        Stage stage = Stage::runs;
        bool isWatched = false;
    };

    bool reap(std::int64_t number, const Run& run);
    static void hasten(Run& run);

    ExitWatch watch_;
    std::map<std::int64_t, Run> runs_;
    std::vector<ProgramEnd> ended_;
};

}  // namespace tallowbrook::host
