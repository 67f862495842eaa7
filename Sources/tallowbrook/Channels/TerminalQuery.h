// The question to a terminal what it can do, while others go on to write to it.
//
// For as long as its answer is awaited, what the terminal sends is neither shown nor taken as a
// line; its modes are as before once the value goes. Used by one thread.
#pragma once

#include <termios.h>

#include <optional>
#include <string>

#include "Channels/TerminalNotes.h"
#include "Loop/PollLoop.h"

namespace tallowbrook::host {

class TerminalQuery {
 public:
    // Asks the terminal behind this descriptor, which must never wait and outlive the value. The
    // process must be in the terminal's foreground. Absent where the terminal's modes cannot be
    // changed, or it takes nothing now.
    static std::optional<TerminalQuery> begin(int descriptor);
    ~TerminalQuery();
    TerminalQuery(TerminalQuery&& other) noexcept;
    TerminalQuery& operator=(TerminalQuery&&) = delete;

    // Something from the terminal, or the time at which no answer is to be expected any more.
    PollInterest interest() const;

    // What the terminal can; absent while an answer may still come.
    std::optional<TerminalNotes::Answer> proceed();

 private:
    TerminalQuery(int descriptor, const termios& former);

    int descriptor_;  // negative once the value was moved from
    termios former_;
    MonotonicTime deadline_;
    std::string received_;
};

}  // namespace tallowbrook::host
