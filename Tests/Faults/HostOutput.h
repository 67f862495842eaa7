// The host's standard output in a file: no pipe that fills up while nobody reads, and what a killed
// host has printed is not lost.
#pragma once

#include <filesystem>
#include <set>
#include <string>

#include "EndToEnd/RunProgram.h"

namespace tallowbrook {

// The sessions that the lines of an output call finished, as often as they do. The sessions of
// these tests run in directories of the same name.
std::multiset<std::string> toldIn(const std::string& output);

// The ids of the sessions in what `tallowbrook sessions --json` printed.
std::multiset<std::string> sessionsListed(const std::string& output);

class HostOutput {
 public:
    explicit HostOutput(std::filesystem::path file);

    // The same call with its output going here, behind what is there already. This outlives it.
    ProgramCall takenFrom(ProgramCall call) const;

    std::string text() const;
    std::multiset<std::string> told() const { return toldIn(text()); }

 private:
    std::filesystem::path file_;
};

}  // namespace tallowbrook
