// The terminal that the live view has taken over, for a host that must never wait for it.
//
// Used by one thread. One value a process at a time.
#pragma once

#include <termios.h>

#include <expected>
#include <optional>
#include <string>
#include <string_view>

#include "Output/Sentence.h"
#include "System/FileDescriptor.h"
#include "View/Picture.h"

namespace tallowbrook::host {

class OpenTerminal {
 public:
    // The terminal on which this process has standard input and output, opened once more: what
    // makes this descriptor never wait (O_NONBLOCK) must not touch those that are shared with the
    // shell. Fails where those are no terminal, where it belongs to another job of the shell, and
    // where the system does not let it be opened or waited for.
    [[nodiscard]] static std::expected<OpenTerminal, Sentence> open();

    OpenTerminal(OpenTerminal&&) = default;
    OpenTerminal& operator=(OpenTerminal&&) = delete;
    // Leaves it.
    ~OpenTerminal();

    int descriptor() const { return terminal_.number(); }
    ScreenSize size() const;
    // Whether the shell lets this process read it and change its modes.
    bool isForeground() const;

    // Keys come one by one from here on, unseen, and `enterText` is written. However the process
    // ends, but for SIGKILL, `leaveText` is written and the modes are restored before. False where
    // the modes cannot be changed.
    bool enter(const std::string& enterText, const std::string& leaveText);
    // Back to as it was. What was not written yet is dropped; a terminal that takes nothing is
    // given a fifth of a second for the rest. Does nothing unless entered.
    void leave();
    // For a process that has lost it to its shell: leaves it without a touch. Does nothing unless
    // entered.
    void abandon();
    bool isEntered() const { return isEntered_; }

    // Writes what the terminal takes now, and keeps the rest for `writeOn`. False once the terminal
    // is gone.
    bool write(std::string_view text);
    bool writeOn();
    bool isBehind() const { return !left_.empty(); }

    // What was typed; empty where nothing was. Absent once the terminal is gone.
    std::optional<std::string> read() const;

 private:
    explicit OpenTerminal(FileDescriptor terminal) : terminal_{std::move(terminal)} {}

    FileDescriptor terminal_;
    termios before_{};
    std::string leaveText_;
    std::string left_;
    bool isEntered_ = false;
};

}  // namespace tallowbrook::host
