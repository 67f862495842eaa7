#include "Channels/TerminalQuery.h"

#include <poll.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <utility>

namespace tallowbrook::host {
namespace {

using std::chrono::steady_clock;

// Also across the world by ssh.
constexpr std::chrono::milliseconds patience{1000};
// Somebody leans on a key.
constexpr std::size_t mostReceived = 4096;

// With that signal blocked, the modes can be set from the terminal's background too, where it would
// stop the process.
bool setModes(int descriptor, const termios& modes) {
    sigset_t background;
    sigset_t former;
    sigemptyset(&background);
    sigaddset(&background, SIGTTOU);
    if (pthread_sigmask(SIG_BLOCK, &background, &former) != 0) return false;
    int result = -1;
    while ((result = tcsetattr(descriptor, TCSANOW, &modes)) != 0 && errno == EINTR) continue;
    pthread_sigmask(SIG_SETMASK, &former, nullptr);
    return result == 0;
}

termios quiet(termios modes) {
    modes.c_lflag &= ~static_cast<tcflag_t>(ECHO | ICANON);
    modes.c_cc[VMIN] = 1;
    modes.c_cc[VTIME] = 0;
    // By these keys the process would stop or die with the modes as they are here; the one that
    // interrupts is a request to end.
    modes.c_cc[VSUSP] = _POSIX_VDISABLE;
    modes.c_cc[VQUIT] = _POSIX_VDISABLE;
    return modes;
}

}  // namespace

std::optional<TerminalQuery> TerminalQuery::begin(int descriptor) {
    termios former{};
    if (tcgetattr(descriptor, &former) != 0) return std::nullopt;
    TerminalQuery begun{descriptor, former};
    if (!setModes(descriptor, quiet(former))) return std::nullopt;
    const auto size = static_cast<ssize_t>(TerminalNotes::query.size());
    if (write(descriptor, TerminalNotes::query.data(), TerminalNotes::query.size()) != size)
        return std::nullopt;
    return begun;
}

TerminalQuery::TerminalQuery(int descriptor, const termios& former)
    : descriptor_{descriptor}, former_{former}, deadline_{steady_clock::now() + patience} {}

TerminalQuery::TerminalQuery(TerminalQuery&& other) noexcept
    : descriptor_{std::exchange(other.descriptor_, -1)},
      former_{other.former_},
      deadline_{other.deadline_},
      received_{std::move(other.received_)} {}

TerminalQuery::~TerminalQuery() {
    if (descriptor_ >= 0) setModes(descriptor_, former_);
}

PollInterest TerminalQuery::interest() const { return {descriptor_, POLLIN, deadline_}; }

std::optional<TerminalNotes::Answer> TerminalQuery::proceed() {
    std::array<char, 512> buffer;
    const ssize_t count = read(descriptor_, buffer.data(), buffer.size());
    if (count > 0) received_.append(buffer.data(), static_cast<std::size_t>(count));
    const bool isOver = count == 0 || (count < 0 && errno != EAGAIN && errno != EINTR) ||
                        steady_clock::now() >= deadline_ || received_.size() > mostReceived;
    const auto answer = TerminalNotes::answerIn(received_);
    if (!answer.isComplete && !isOver) return std::nullopt;
    return answer;
}

}  // namespace tallowbrook::host
