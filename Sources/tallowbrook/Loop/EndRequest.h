// The signals that ask the host to end, as a source of the poll loop.
#pragma once

#include <expected>

#include "Loop/PollLoop.h"
#include "System/FileDescriptor.h"
#include "System/FileError.h"

namespace tallowbrook::host {

class EndRequest {
 public:
    // From here on SIGINT, SIGTERM and SIGHUP end no process but the loop that the source is
    // attached to; one that is ignored, as under nohup(1), stays so. One value a process, which
    // lives as long as the process. Fails with the system call that did.
    [[nodiscard]] static std::expected<EndRequest, FileError> receive();

    // Requests the loop's end. A request that came before is not lost. The value and the loop must
    // outlive the source.
    PollSource source(PollLoop& loop) const;

 private:
    explicit EndRequest(FileDescriptor requests) : requests_{std::move(requests)} {}

    FileDescriptor requests_;
};

}  // namespace tallowbrook::host
