// Lets the host look at its sessions' agents when there is something new about them.
//
// Used by one thread.
#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "Loop/PollLoop.h"
#include "Watch/EvidenceWatch.h"

namespace tallowbrook::host {

class EvidenceAlarm {
 public:
    EvidenceAlarm();

    // What is watched from here on. Something that was not watched before makes for a look.
    void watch(const std::vector<NotePlace>& places, const std::vector<ProcessIdentity>& processes);

    // Calls `look` soon after something happened. Both must outlive the source.
    PollSource source(std::function<void()> look);

 private:
    PollInterest interest() const;
    bool isDue();
    void ring();

    std::optional<EvidenceWatch> watch_;  // absent where the system refuses one
    std::optional<MonotonicTime> dueAt_;  // of the next look
    MonotonicTime lookedAt_{};
};

}  // namespace tallowbrook::host
