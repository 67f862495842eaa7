// A file named after the signal, in a directory that only the user can write to. A post touches it;
// an observer watches the directory with inotify(7), so that the file may come and go.
#include <fcntl.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>

#include "EventBridge/SpoolSignal.h"
#include "EventBridge/TallowbrookPaths.h"
#include "System/FileDescriptor.h"

namespace tallowbrook::SpoolSignal {
namespace {

// Whether the user owns the directory itself, not a link that leads somewhere else.
bool isOwnDirectory(const std::string& path) {
    struct stat status{};
    return lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode) &&
           status.st_uid == geteuid();
}

// In the order of preference: what the session names, what the system makes for a logged-in user,
// and a directory of our own. Absent when the last one is not to be trusted.
std::optional<std::string> signalDirectory() {
    if (const char* runtime = std::getenv("XDG_RUNTIME_DIR");
        runtime != nullptr && runtime[0] == '/')
        return runtime;
    const std::string user = std::to_string(geteuid());
    if (std::string runtime = "/run/user/" + user; isOwnDirectory(runtime)) return runtime;
    std::string own = "/tmp/tallowbrook-" + user;
    if (!TallowbrookPaths::ensureDirectory(own) || !isOwnDirectory(own)) return std::nullopt;
    return own;
}

std::string signalFile(const std::string& directory) { return directory + "/" + std::string{name}; }

// Creates the file where it is missing; opening it to write is seen by an observer, too.
bool touch(const std::string& file) {
    return FileDescriptor{
        open(file.c_str(), O_WRONLY | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0600)}
        .isOpen();
}

constexpr std::uint32_t watchedChanges =
    IN_ATTRIB | IN_CLOSE_WRITE | IN_CREATE | IN_MOVED_TO | IN_MOVE_SELF | IN_ONLYDIR;

}  // namespace

void post() {
    const auto directory = signalDirectory();
    if (!directory) return;
    const std::string file = signalFile(*directory);
    if (utimensat(AT_FDCWD, file.c_str(), nullptr, AT_SYMLINK_NOFOLLOW) == 0) return;
    if (touch(file)) return;
    // Somebody else's file in the user's own directory, left by a run as another user.
    if (errno == EACCES && unlink(file.c_str()) == 0) touch(file);
}

struct Observer::State {
    FileDescriptor inotify;
    int watch = -1;

    // Watches the directory, again where it was replaced meanwhile.
    bool watchDirectory() {
        const auto directory = signalDirectory();
        if (!directory) {
            errno = ENOTDIR;
            return false;
        }
        watch = inotify_add_watch(inotify.number(), directory->c_str(), watchedChanges);
        return watch >= 0;
    }

    // A directory that was moved away is watched on until it is let go.
    void takeLoss(const inotify_event& event) {
        if (event.wd != watch || (event.mask & (IN_IGNORED | IN_MOVE_SELF)) == 0) return;
        if ((event.mask & IN_MOVE_SELF) != 0) inotify_rm_watch(inotify.number(), watch);
        watch = -1;
    }
};

std::expected<Observer, FileError> Observer::start() {
    auto state = std::make_unique<State>();
    state->inotify = FileDescriptor{inotify_init1(IN_NONBLOCK | IN_CLOEXEC)};
    if (!state->inotify.isOpen()) return std::unexpected(FileError{"inotify_init1", errno});
    if (!state->watchDirectory()) return std::unexpected(FileError{"inotify_add_watch", errno});
    return Observer{std::move(state)};
}

int Observer::fileDescriptor() const {
    // What was posted before the new watch is not known: our own post has the reader look once.
    if (state_->watch < 0 && state_->watchDirectory()) post();
    return state_->inotify.number();
}

bool Observer::consume() {
    bool posted = false;
    alignas(inotify_event) std::array<char, 4096> buffer{};
    ssize_t length = 0;
    while ((length = read(state_->inotify.number(), buffer.data(), buffer.size())) > 0) {
        for (ssize_t position = 0; position < length;) {
            inotify_event event{};
            const char* start = buffer.data() + position;
            // The kernel pads names, but promises no alignment to the compiler.
            std::memcpy(&event, start, sizeof event);
            // A queue that overflowed may have lost a post.
            if ((event.mask & IN_Q_OVERFLOW) != 0 ||
                (event.len > 0 && name == start + sizeof event))
                posted = true;
            state_->takeLoss(event);
            position += static_cast<ssize_t>(sizeof event + event.len);
        }
    }
    // The directory was lost. What was posted before the new watch is not known: look once.
    if (state_->watch < 0) posted = state_->watchDirectory() || posted;
    return posted;
}

Observer::Observer(std::unique_ptr<State> state) : state_{std::move(state)} {}
Observer::Observer(Observer&&) noexcept = default;
Observer& Observer::operator=(Observer&&) noexcept = default;
Observer::~Observer() = default;

}  // namespace tallowbrook::SpoolSignal
