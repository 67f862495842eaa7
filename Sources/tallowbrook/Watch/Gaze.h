// What the user looks at right now, as far as tmux can tell: the panes that are shown by a terminal
// that has the focus and in which a key was pressed lately.
//
// tmux is asked beside the poll loop, and its answer is waited for half a second at most. Where it
// is not known what the user looks at, it is nothing. Used by one thread.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Channels/ProgramRuns.h"
#include "Domain/Instant.h"
#include "Loop/PollLoop.h"
#include "SessionState/SessionSnapshot.h"

namespace tallowbrook::host {

class Gaze {
 public:
    // Forgets the last answer and asks anew. Does nothing while an answer is awaited.
    void ask();
    bool isAwaited() const;

    // By the last answer. A session goes by its terminal device, else by its working directory
    // where no other pane has that one too.
    bool isOn(const SessionSnapshot& session) const;

    // Wakes the loop when the answer has come, or will not.
    PollSource source();

 private:
    struct Pane {
        std::string devicePath;
        std::string directory;
    };

    void take(const ProgramEnd& end, Instant now);
    void takeLine(std::string_view line, Instant now);

    ProgramRuns runs_;
    std::int64_t question_ = 0;                // the number of its run
    std::optional<MonotonicTime> awaitedFor_;  // absent: no answer is awaited
    std::vector<Pane> seen_;
    std::vector<Pane> all_;
};

}  // namespace tallowbrook::host
