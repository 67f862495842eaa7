// The signals by which a terminal and its shell speak to a program on it, as a source of the poll
// loop: another size (SIGWINCH), Ctrl-Z (SIGTSTP), and going on afterwards (SIGCONT).
#pragma once

#include <expected>
#include <functional>

#include "Loop/PollLoop.h"
#include "System/FileDescriptor.h"
#include "System/FileError.h"

namespace tallowbrook::host {

class TerminalSignals {
 public:
    // From here on Ctrl-Z stops the process only through `stopHere`. One value a process, which
    // lives as long as the process. Fails with the system call that did.
    [[nodiscard]] static std::expected<TerminalSignals, FileError> receive();

    struct Handlers {
        std::function<void()> resized;
        std::function<void()> stopRequested;
        std::function<void()> continued;
    };
    // The value must outlive the source.
    PollSource source(Handlers handlers) const;

    // Stops this process as Ctrl-Z does, and returns when it goes on.
    static void stopHere();

 private:
    explicit TerminalSignals(FileDescriptor signals) : signals_{std::move(signals)} {}

    FileDescriptor signals_;
};

}  // namespace tallowbrook::host
