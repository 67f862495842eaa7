#include "Loop/BackgroundRun.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <utility>

#include "System/ProcessLaunch.h"

namespace tallowbrook::host {
namespace {

using std::chrono::steady_clock;

// Between the end of a program's output and its exit lies next to nothing.
constexpr std::chrono::milliseconds betweenLooksForExit{5};
constexpr std::size_t mostOutput = 65536;

}  // namespace

BackgroundRun::BackgroundRun(PollLoop& loop, const std::string& executable,
                             const std::vector<std::string>& arguments, std::chrono::seconds atMost,
                             Done done)
    : deadline_{steady_clock::now() + atMost}, done_{std::move(done)} {
    // A shell, since a started program has no standard error else. It takes the words as they are,
    // and becomes the program.
    std::vector<std::string> words{"-c", "exec \"$@\" 2>&1", "sh", executable};
    words.insert(words.end(), arguments.begin(), arguments.end());
    auto pipe = ProcessLaunch::makePipe();
    const auto child =
        pipe ? ProcessLaunch::start("/bin/sh", words, pipe->writer) : std::unexpected(EMFILE);
    if (!child) {
        done_(std::nullopt);
        return;
    }
    child_ = *child;
    output_ = std::move(pipe->reader);
    attachment_ = loop.attach({
        .interest = [this] { return interest(); },
        .proceed = [this](short) { proceed(); },
    });
}

BackgroundRun::~BackgroundRun() {
    if (!isRunning()) return;
    kill(child_, SIGKILL);
    while (waitpid(child_, nullptr, 0) < 0 && errno == EINTR) continue;
}

PollInterest BackgroundRun::interest() const {
    if (!isRunning()) return {};
    if (!output_.isOpen()) return {-1, 0, steady_clock::now() + betweenLooksForExit};
    return {output_.number(), POLLIN, deadline_};
}

void BackgroundRun::proceed() {
    if (!isRunning()) return;
    if (steady_clock::now() >= deadline_) {
        kill(child_, SIGKILL);
        while (waitpid(child_, nullptr, 0) < 0 && errno == EINTR) continue;
        end(false);
    } else if (output_.isOpen()) {
        readOn();
    } else if (waitpid(child_, nullptr, WNOHANG) != 0) {
        end(true);
    }
}

void BackgroundRun::readOn() {
    std::array<char, 4096> buffer;
    const ssize_t count = read(output_.number(), buffer.data(), buffer.size());
    if (count < 0 && errno == EINTR) return;
    if (count <= 0)
        output_ = FileDescriptor{};
    else if (text_.size() < mostOutput)
        text_.append(buffer.data(), static_cast<std::size_t>(count));
}

void BackgroundRun::end(bool inTime) {
    child_ = -1;
    // Of its own, since the caller may let this value go.
    const auto done = std::move(done_);
    done(inTime ? std::optional{std::move(text_)} : std::nullopt);
}

}  // namespace tallowbrook::host
