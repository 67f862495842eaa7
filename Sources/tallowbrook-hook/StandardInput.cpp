#include "StandardInput.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>

namespace tallowbrook::hook {
namespace {

// An agent may hand over a descriptor that does not block. False where it cannot be waited for.
bool waitForInput() {
    pollfd input{STDIN_FILENO, POLLIN, 0};
    return poll(&input, 1, -1) >= 0 || errno == EINTR;
}

}  // namespace

StandardInput readStandardInput(std::size_t limit) {
    // One buffer for all: memory that no byte reaches is never touched, so its size costs nothing.
    // The one byte more tells an input of `limit` bytes from a longer one.
    const std::size_t capacity = limit + 1;
    StandardInput input{std::make_unique_for_overwrite<char[]>(capacity)};
    while (true) {
        if (input.size == capacity) {
            // What follows is read and dropped.
            input.truncated = true;
            input.size = 0;
        }
        const ssize_t count =
            read(STDIN_FILENO, input.buffer.get() + input.size, capacity - input.size);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0 && errno == EAGAIN && waitForInput()) continue;
        if (count <= 0) break;
        input.size += static_cast<std::size_t>(count);
    }
    input.truncated = input.truncated || input.size > limit;
    return input;
}

}  // namespace tallowbrook::hook
