// A Darwin notification, see notify(3).
#include <fcntl.h>
#include <notify.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "EventBridge/SpoolSignal.h"

namespace tallowbrook::SpoolSignal {

void post() { notify_post(std::string{name}.c_str()); }

struct Observer::State {
    int descriptor = -1;
    int token = -1;

    // Closes the descriptor, too.
    ~State() { notify_cancel(token); }
};

std::expected<Observer, FileError> Observer::start() {
    int descriptor = -1;
    int token = -1;
    if (notify_register_file_descriptor(std::string{name}.c_str(), &descriptor, 0, &token) !=
        NOTIFY_STATUS_OK)
        return std::unexpected(FileError{"notify_register_file_descriptor", EIO});
    auto state = std::make_unique<State>();
    state->descriptor = descriptor;
    state->token = token;
    const int flags = fcntl(descriptor, F_GETFL);
    if (flags < 0 || fcntl(descriptor, F_SETFL, flags | O_NONBLOCK) < 0)
        return std::unexpected(FileError{"fcntl", errno});
    return Observer{std::move(state)};
}

int Observer::fileDescriptor() const { return state_->descriptor; }

bool Observer::consume() {
    bool posted = false;
    int token = 0;
    // Each post writes the token of its registration, an int in network byte order.
    while (read(state_->descriptor, &token, sizeof token) == sizeof token) posted = true;
    return posted;
}

Observer::Observer(std::unique_ptr<State> state) : state_{std::move(state)} {}
Observer::Observer(Observer&&) noexcept = default;
Observer& Observer::operator=(Observer&&) noexcept = default;
Observer::~Observer() = default;

}  // namespace tallowbrook::SpoolSignal
