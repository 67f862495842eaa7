#include "Channels/PatientOutput.h"

#include <limits.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "Output/StandardStreams.h"

namespace tallowbrook::host {
namespace {

// How much can be written without waiting where poll(2) says that there is room: the descriptor
// itself may be shared with other programs and so must not be changed to never wait.
std::size_t safeLength() {
    constexpr std::size_t ofTerminal = 128;
    return isatty(STDOUT_FILENO) == 1 ? ofTerminal : PIPE_BUF;
}

}  // namespace

std::expected<void, FileError> PatientOutput::write(std::string_view text) {
    left_ += text;
    return writeOn();
}

std::expected<void, FileError> PatientOutput::writeOn() {
    const auto most = safeLength();
    while (isBehind() && StandardStreams::takesMore(STDOUT_FILENO)) {
        const ssize_t count = ::write(STDOUT_FILENO, left_.data(), std::min(left_.size(), most));
        if (count >= 0) {
            left_.erase(0, static_cast<std::size_t>(count));
            continue;
        }
        if (errno == EINTR) continue;
        if (errno == EAGAIN) break;
        const FileError error{"write", errno};
        left_.clear();
        whenSettled(false);
        return std::unexpected(error);
    }
    if (!isBehind()) whenSettled(true);
    return {};
}

PollInterest PatientOutput::interest() const {
    if (!isBehind()) return {};
    return {STDOUT_FILENO, POLLOUT, std::nullopt};
}

}  // namespace tallowbrook::host
