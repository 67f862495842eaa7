// Starts programs and takes their time, from the start to the end that the parent sees.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <vector>

namespace tallowbrook::bench {

struct Program {
    std::vector<std::string> arguments;  // the first one is the program's path
    std::filesystem::path standardInput = "/dev/null";
    std::filesystem::path standardOutput = {};  // empty: that of the benchmark
};

// Ends the benchmark with a message when the program cannot be started.
pid_t start(const Program& program);

// Microseconds from before the start until the process has been waited for. Ends the benchmark when
// the program does not exit with 0.
double timeRun(const Program& program);

// A directory for this run's files, removed at its end.
class ScratchDirectory {
 public:
    ScratchDirectory();
    ~ScratchDirectory();
    ScratchDirectory(const ScratchDirectory&) = delete;
    ScratchDirectory& operator=(const ScratchDirectory&) = delete;

    std::filesystem::path path;
};

}  // namespace tallowbrook::bench
