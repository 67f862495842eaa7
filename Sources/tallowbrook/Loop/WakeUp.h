// What a host sleeps on between two passes: the spool's signal, the request to end, and a timer as
// the safety net for signals that do not arrive.
#pragma once

#include <chrono>
#include <expected>
#include <optional>

#include "EventBridge/SpoolSignal.h"
#include "System/FileDescriptor.h"

namespace tallowbrook::host {

class WakeUp {
 public:
    enum class Reason { posted, timer, endRequested };

    // From here on SIGINT, SIGTERM and SIGHUP no longer end the process but the next `wait`; one
    // that is ignored, as under nohup(1), stays so. One value a process. Without a working spool
    // signal the timer alone wakes.
    [[nodiscard]] static std::expected<WakeUp, FileError> start();

    // Sleeps for at most `timeout`.
    Reason wait(std::chrono::milliseconds timeout);

 private:
    WakeUp() = default;

    FileDescriptor endRequests_;
    std::optional<SpoolSignal::Observer> observer_;
};

}  // namespace tallowbrook::host
