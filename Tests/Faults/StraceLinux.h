// Faults of a real program's system calls, by strace(1): the kernel is never asked, and the program
// sees the error; or the program is killed at the door of the call.
#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "EndToEnd/RunProgram.h"
#include "Support/TemporaryDirectory.h"

namespace tallowbrook {

// One call that a program made.
struct SystemCall {
    std::string name;
    int occurrence = 0;  // among its calls of this name, from 1
    std::string text;    // with arguments and result
};

struct Fault {
    std::string call;      // the name
    int occurrence = 1;    // from 1
    std::string effect;    // "error=EIO", "retval=0", "signal=KILL"
    bool forEver = false;  // also every later call of this name

    // As strace takes it.
    std::string text() const;
};

// What comes of a run with a fault.
struct FaultyRun {
    ProgramResult result;
    bool wasInjected = false;  // the run met the fault, where and as often as it should
    double sleptSeconds = 0;   // what it asked for in all
};

namespace Strace {

inline constexpr const char* program = "/usr/bin/strace";

// Why a test that needs it must be skipped; absent where it works.
std::optional<std::string> reasonToSkip();

// All calls of a run, in order; the first is the execve(2).
std::vector<SystemCall> callsOf(const ProgramCall& call);

// The whole of a trace in a file of strace's.
std::vector<SystemCall> parse(std::string_view trace);

FaultyRun runWith(const Fault& fault, const ProgramCall& call);

}  // namespace Strace

// A run with a fault that goes on while the test does something else.
class FaultyProgram {
 public:
    FaultyProgram(const ProgramCall& call, Fault fault);

    // Waits for its end.
    FaultyRun wait();

 private:
    Fault fault_;
    TemporaryDirectory directory_;
    std::filesystem::path traceFile_ = directory_.path / "trace";
    RunningProgram program_;
};

// A choice: of each name at most `ofAName` calls, the first and the last among them, and those that
// are important.
std::vector<SystemCall> evenlySpread(
    const std::vector<SystemCall>& calls, std::size_t ofAName,
    const std::function<bool(const SystemCall& call)>& isImportant);

// The faults that a call of this name can really meet, the likeliest first. Empty for those that
// cannot fail, such as getpid(2).
std::vector<std::string> fittingErrors(const std::string& call);

}  // namespace tallowbrook
