#include "View/OpenTerminal.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>

namespace tallowbrook::host {
namespace {

using std::chrono::steady_clock;

// What a signal handler needs to restore the terminal: it may allocate nothing.
struct Rescue {
    volatile std::sig_atomic_t terminal = -1;
    termios modes{};
    std::array<char, 512> text{};
    std::size_t length = 0;
};
Rescue rescue;

// Signals that end a process that does nothing about them, but for those that ask it to end in
// order (`EndRequest`).
constexpr std::array deadlySignals{SIGABRT, SIGSEGV, SIGBUS,  SIGFPE,  SIGILL,  SIGTRAP,   SIGSYS,
                                   SIGQUIT, SIGALRM, SIGUSR1, SIGUSR2, SIGXCPU, SIGVTALRM, SIGPROF};
std::array<struct sigaction, deadlySignals.size()> formerActions{};

// Not while a signal stops processes that change a terminal of another job (POSIX tcsetattr(3)).
void setModes(int terminal, const termios& modes) {
    sigset_t background;
    sigset_t former;
    sigemptyset(&background);
    sigaddset(&background, SIGTTOU);
    pthread_sigmask(SIG_BLOCK, &background, &former);
    // Without waiting for output, which the terminal may never take.
    tcsetattr(terminal, TCSANOW, &modes);
    pthread_sigmask(SIG_SETMASK, &former, nullptr);
}

// Only calls that a handler may make (signal-safety(7)).
extern "C" void restoreAndDie(int signal) {
    const int terminal = rescue.terminal;
    rescue.terminal = -1;
    if (terminal >= 0) {
        // CAN ends a sequence of which only the front was written (ECMA-48).
        [[maybe_unused]] ssize_t written = ::write(terminal, "\x18", 1);
        written = ::write(terminal, rescue.text.data(), rescue.length);
        setModes(terminal, rescue.modes);
    }
    for (std::size_t i = 0; i < deadlySignals.size(); ++i)
        if (deadlySignals[i] == signal) sigaction(signal, &formerActions[i], nullptr);
    raise(signal);
}

void catchDeadlySignals() {
    struct sigaction action{};
    action.sa_handler = restoreAndDie;
    for (std::size_t i = 0; i < deadlySignals.size(); ++i) {
        sigaction(deadlySignals[i], nullptr, &formerActions[i]);
        if (formerActions[i].sa_handler != SIG_IGN) sigaction(deadlySignals[i], &action, nullptr);
    }
}

void releaseDeadlySignals() {
    for (std::size_t i = 0; i < deadlySignals.size(); ++i)
        sigaction(deadlySignals[i], &formerActions[i], nullptr);
}

// Some systems cannot wait for the device of that name, though they open it.
bool canBeWaitedFor(const FileDescriptor& file) {
    pollfd asked{file.number(), POLLIN | POLLOUT, 0};
    return poll(&asked, 1, 0) >= 0 && (asked.revents & POLLNVAL) == 0;
}

FileDescriptor openAgain() {
    std::array<char, 256> name{};
    const bool isNamed = ttyname_r(STDOUT_FILENO, name.data(), name.size()) == 0;
    // The second finds the terminal of a user who became another one and may not open the first.
    for (const char* path : {isNamed ? name.data() : "/dev/tty", "/dev/tty"}) {
        FileDescriptor file{::open(path, O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC)};
        if (file.isOpen() && canBeWaitedFor(file)) return file;
    }
    return {};
}

}  // namespace

std::expected<OpenTerminal, Sentence> OpenTerminal::open() {
    if (isatty(STDIN_FILENO) != 1 || isatty(STDOUT_FILENO) != 1)
        return std::unexpected(Sentence{"Standard input or output is no terminal"});
    OpenTerminal terminal{openAgain()};
    if (!terminal.terminal_.isOpen())
        return std::unexpected(Sentence{"This terminal cannot be opened"});
    if (!terminal.isForeground())
        return std::unexpected(Sentence{"This program runs in the background"});
    return terminal;
}

OpenTerminal::~OpenTerminal() { leave(); }

ScreenSize OpenTerminal::size() const {
    winsize size{};
    // A terminal that does not know its size tells 0.
    if (ioctl(descriptor(), TIOCGWINSZ, &size) != 0 || size.ws_col == 0 || size.ws_row == 0)
        return {};
    return {size.ws_col, size.ws_row};
}

bool OpenTerminal::isForeground() const { return tcgetpgrp(descriptor()) == getpgrp(); }

bool OpenTerminal::enter(const std::string& enterText, const std::string& leaveText) {
    if (tcgetattr(descriptor(), &before_) != 0) return false;
    termios modes = before_;
    modes.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
    modes.c_cc[VMIN] = 1;
    modes.c_cc[VTIME] = 0;
    // A slip beside Ctrl-Z must not end the host with a dump of its memory.
    modes.c_cc[VQUIT] = _POSIX_VDISABLE;

    leaveText_ = leaveText;
    rescue.modes = before_;
    rescue.length = std::min(leaveText.size(), rescue.text.size());
    std::ranges::copy(leaveText.substr(0, rescue.length), rescue.text.begin());
    rescue.terminal = descriptor();
    catchDeadlySignals();
    setModes(descriptor(), modes);
    isEntered_ = true;
    return write(enterText);
}

void OpenTerminal::leave() {
    if (!isEntered_) return;
    // A terminal that the user has halted (Ctrl-S) would show nothing of it.
    if (isBehind()) tcflow(descriptor(), TCOON);
    if (write(leaveText_)) {
        const auto deadline = steady_clock::now() + std::chrono::milliseconds{200};
        while (isBehind() && steady_clock::now() < deadline) {
            pollfd writer{descriptor(), POLLOUT, 0};
            constexpr int pause = 20;
            poll(&writer, 1, pause);
            if (!writeOn()) break;
        }
    }
    setModes(descriptor(), before_);
    abandon();
}

void OpenTerminal::abandon() {
    if (!isEntered_) return;
    isEntered_ = false;
    left_.clear();
    rescue.terminal = -1;
    releaseDeadlySignals();
}

bool OpenTerminal::write(std::string_view text) {
    left_ += text;
    return writeOn();
}

bool OpenTerminal::writeOn() {
    while (isBehind()) {
        const ssize_t count = ::write(descriptor(), left_.data(), left_.size());
        if (count > 0) {
            left_.erase(0, static_cast<std::size_t>(count));
            continue;
        }
        if (count < 0 && errno == EINTR) continue;
        if (count == 0 || errno == EAGAIN) return true;
        left_.clear();
        return false;
    }
    return true;
}

std::optional<std::string> OpenTerminal::read() const {
    std::array<char, 4096> buffer;
    const ssize_t count = ::read(descriptor(), buffer.data(), buffer.size());
    if (count > 0) return std::string{buffer.data(), static_cast<std::size_t>(count)};
    if (count < 0 && (errno == EAGAIN || errno == EINTR)) return std::string{};
    return std::nullopt;
}

}  // namespace tallowbrook::host
