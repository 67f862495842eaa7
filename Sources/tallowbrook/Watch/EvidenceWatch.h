// Wakes when an agent notes something or ends, by the system's own means: nothing is looked at
// while nothing happens.
//
// Used by one thread. One implementation per system.
#pragma once

#include <expected>
#include <memory>
#include <vector>

#include "System/FileError.h"
#include "Watch/AgentNotes.h"

namespace tallowbrook::host {

class EvidenceWatch {
 public:
    // Fails with the system call that did.
    [[nodiscard]] static std::expected<EvidenceWatch, FileError> start();

    EvidenceWatch(EvidenceWatch&&) noexcept;
    EvidenceWatch& operator=(EvidenceWatch&&) noexcept;
    ~EvidenceWatch();

    // Watches these from here on and nothing else. What is not there, or cannot be watched, is left
    // out. True when something is newly watched, so that what changed just before was missed.
    bool watch(const std::vector<NotePlace>& places, const std::vector<ProcessIdentity>& processes);

    // Readable (poll(2)) when something may have happened since the last `consume`.
    int fileDescriptor() const;

    // Takes all that has arrived; tells whether something that is watched was among it. Does not
    // block.
    bool consume();

 private:
    struct State;  // one per system
    explicit EvidenceWatch(std::unique_ptr<State> state);

    std::unique_ptr<State> state_;
};

}  // namespace tallowbrook::host
