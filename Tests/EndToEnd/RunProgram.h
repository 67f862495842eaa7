// A built program, driven from outside: its command line, its standard streams, its environment and
// its signals. It runs in a session of its own, without a terminal, as agents start their hooks.
//
// For tests with one thread: the child is a fork of the test.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "System/FileDescriptor.h"

namespace tallowbrook {

using Environment = std::map<std::string, std::optional<std::string>>;

struct ProgramCall {
    std::string program;
    std::vector<std::string> arguments;
    std::string input = {};
    bool inputStaysOpen = false;            // the program sees no end of its standard input
    Environment environment = {};           // over the test's own; an absent value unsets
    std::filesystem::path directory = {};   // to run in; empty: the test's own
    std::function<void()> prepare = [] {};  // runs in the child before it becomes the program
};

struct ProgramResult {
    int status = -1;  // -1 when a signal ended it
    std::string output = {};
    std::string errors = {};
    std::size_t unreadInput = 0;  // bytes of its standard input that it left alone
    bool operator==(const ProgramResult&) const = default;
};

void PrintTo(const ProgramResult& result, std::ostream* stream);

// Ended with status 0, printed nothing and read its standard input to the end.
inline const ProgramResult quiet{.status = 0};

class RunningProgram {
 public:
    explicit RunningProgram(const ProgramCall& call);
    // A program that was not waited for is killed.
    ~RunningProgram();
    RunningProgram(const RunningProgram&) = delete;
    RunningProgram& operator=(const RunningProgram&) = delete;

    // Wait until it has printed `text`; false when it ended without. A program that does neither
    // for a minute fails the test and is killed.
    bool waitForOutput(std::string_view text);
    bool waitForErrors(std::string_view text);
    // The same for anything more on its standard output.
    bool waitForMoreOutput();

    // What it has printed so far.
    const std::string& output() const { return result_.output; }

    void send(int signal) const;

    // Waits for its end.
    ProgramResult wait();

 private:
    void exchange(const std::function<bool()>& isEnough);
    void writeInput();
    static void readInto(std::string& text, FileDescriptor& stream);
    std::size_t unreadInput() const;
    bool isReaped() const { return pid_ < 0; }

    pid_t pid_ = -1;
    std::string input_;
    std::size_t written_ = 0;
    bool inputStaysOpen_ = false;
    FileDescriptor inputReader_;  // kept, to see what the program left in the pipe
    FileDescriptor inputWriter_;
    FileDescriptor outputReader_;
    FileDescriptor errorsReader_;
    ProgramResult result_;
};

// Runs a program to its end.
inline ProgramResult run(const ProgramCall& call) { return RunningProgram{call}.wait(); }

}  // namespace tallowbrook
