// Standard output for a host that must not wait for its reader: a terminal that was stopped, or a
// pipe that is full, takes what is written when it can.
//
// Used by one thread.
#pragma once

#include <expected>
#include <functional>
#include <string>
#include <string_view>

#include "Loop/PollLoop.h"
#include "System/FileError.h"

namespace tallowbrook::host {

class PatientOutput {
 public:
    // Writes what standard output takes now, and keeps the rest. Fails where it will not take it at
    // all; what was kept is then forgotten.
    [[nodiscard]] std::expected<void, FileError> write(std::string_view text);
    [[nodiscard]] std::expected<void, FileError> writeOn();

    // Whether something is still to be written, by `writeOn`.
    bool isBehind() const { return !left_.empty(); }

    // While it is behind: that standard output takes something.
    PollInterest interest() const;

    // Is told whenever nothing is left: whether all was written, or standard output would not take
    // it. Also from within `write`.
    std::function<void(bool written)> whenSettled = [](bool) {};

 private:
    std::string left_;
};

}  // namespace tallowbrook::host
