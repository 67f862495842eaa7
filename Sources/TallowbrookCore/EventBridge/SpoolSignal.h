// The wake-up that a writer sends to the readers of the spool. It carries no data and reaches every
// observer of the same user, whatever home it watches; several posts may arrive as one.
#pragma once

#include <expected>
#include <memory>
#include <string_view>

#include "System/FileError.h"

namespace tallowbrook::SpoolSignal {

inline constexpr std::string_view name = "com.tallowbrook.spool.changed";

// Fire and forget: never blocks, never fails. Any thread.
void post();

// Receives posts for as long as it lives. Used by one thread at a time.
class Observer {
 public:
    // Fails with the system call that did; a reader then relies on its timer alone.
    [[nodiscard]] static std::expected<Observer, FileError> start();

    Observer(Observer&&) noexcept;
    Observer& operator=(Observer&&) noexcept;
    ~Observer();

    // Readable (poll(2)) when something may have been posted since the last `consume`. A reader
    // that asks before each sleep also hears again when what it observes was lost and is back.
    int fileDescriptor() const;

    // Takes all that has arrived; tells whether a post was among it. Does not block.
    bool consume();

 private:
    struct State;  // one per system
    explicit Observer(std::unique_ptr<State> state);

    std::unique_ptr<State> state_;
};

}  // namespace tallowbrook::SpoolSignal
