#include "View/TerminalSignals.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <utility>

#include "System/ProcessLaunch.h"

namespace tallowbrook::host {
namespace {

// The writing end of a pipe, which takes a letter for each signal.
volatile std::sig_atomic_t signalPipe = -1;

constexpr char resizedLetter = 'w';
constexpr char stopLetter = 'z';
constexpr char continuedLetter = 'c';

extern "C" void noteSignal(int signal) {
    const int savedError = errno;
    const char letter = signal == SIGWINCH  ? resizedLetter
                        : signal == SIGTSTP ? stopLetter
                                            : continuedLetter;
    // A pipe that is full holds such letters enough.
    [[maybe_unused]] const ssize_t written = write(signalPipe, &letter, 1);
    errno = savedError;
}

bool note(int signal) {
    struct sigaction action{};
    if (sigaction(signal, nullptr, &action) != 0) return false;
    if (action.sa_handler == SIG_IGN) return true;
    action = {};
    action.sa_handler = noteSignal;
    return sigaction(signal, &action, nullptr) == 0;
}

bool neverWaits(int descriptor) {
    const int flags = fcntl(descriptor, F_GETFL);
    return flags >= 0 && fcntl(descriptor, F_SETFL, flags | O_NONBLOCK) == 0;
}

}  // namespace

std::expected<TerminalSignals, FileError> TerminalSignals::receive() {
    auto pipe = ProcessLaunch::makePipe();
    if (!pipe) return std::unexpected(FileError{"pipe", errno});
    if (!neverWaits(pipe->reader.number()) || !neverWaits(pipe->writer.number()))
        return std::unexpected(FileError{"fcntl", errno});
    // The handlers may run until the end of the process, so this end is never closed.
    static FileDescriptor writer;
    writer = std::move(pipe->writer);
    signalPipe = writer.number();
    for (const int signal : {SIGWINCH, SIGTSTP, SIGCONT})
        if (!note(signal)) return std::unexpected(FileError{"sigaction", errno});
    return TerminalSignals{std::move(pipe->reader)};
}

PollSource TerminalSignals::source(Handlers handlers) const {
    return {
        .interest = [this] { return PollInterest{signals_.number(), POLLIN, std::nullopt}; },
        .proceed =
            [this, handlers = std::move(handlers)](short) {
                std::array<char, 64> letters;
                const ssize_t count = read(signals_.number(), letters.data(), letters.size());
                for (ssize_t i = 0; i < count; ++i) {
                    const char letter = letters[static_cast<std::size_t>(i)];
                    if (letter == resizedLetter) handlers.resized();
                    if (letter == stopLetter) handlers.stopRequested();
                    if (letter == continuedLetter) handlers.continued();
                }
            },
    };
}

void TerminalSignals::stopHere() {
    struct sigaction stops{};
    struct sigaction former{};
    stops.sa_handler = SIG_DFL;
    sigaction(SIGTSTP, &stops, &former);
    raise(SIGTSTP);
    sigaction(SIGTSTP, &former, nullptr);
}

}  // namespace tallowbrook::host
