// inotify(7) for the folders and pidfd_open(2) for the processes, behind one epoll(7) descriptor.
#include <sys/epoll.h>
#include <sys/inotify.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <map>

#include "System/FileDescriptor.h"
#include "Watch/EvidenceWatch.h"
#include "Watch/ProcessStart.h"

namespace tallowbrook::host {
namespace {

// A lock is given back when its file is closed, with its process at the latest. The reading of what
// is watched, which the host does itself, is not among these.
constexpr std::uint32_t watchedChanges = IN_MODIFY | IN_CLOSE_WRITE | IN_CREATE | IN_DELETE |
                                         IN_MOVED_FROM | IN_MOVED_TO | IN_DELETE_SELF |
                                         IN_MOVE_SELF | IN_ONLYDIR;

// The C library's own has no C linkage for C++ in all of its versions.
FileDescriptor openProcess(pid_t pid) {
    return FileDescriptor{static_cast<int>(syscall(SYS_pidfd_open, pid, 0))};
}

struct WatchedProcess {
    ProcessIdentity identity;
    FileDescriptor descriptor;
};

}  // namespace

struct EvidenceWatch::State {
    FileDescriptor events;  // of epoll
    FileDescriptor inotify;
    std::map<NotePlace, int> places;  // with the watch of each
    std::vector<WatchedProcess> processes;
    bool lostSome = false;

    bool add(const FileDescriptor& descriptor) const {
        epoll_event event{};
        event.events = EPOLLIN;
        event.data.fd = descriptor.number();
        return epoll_ctl(events.number(), EPOLL_CTL_ADD, descriptor.number(), &event) == 0;
    }

    bool watchPlace(const NotePlace& place) {
        if (places.contains(place)) return false;
        const int watch =
            inotify_add_watch(inotify.number(), place.directory.c_str(), watchedChanges);
        if (watch < 0) return false;
        places.emplace(place, watch);
        return true;
    }

    bool watchProcess(const ProcessIdentity& identity) {
        if (std::ranges::find(processes, identity, &WatchedProcess::identity) != processes.end())
            return false;
        WatchedProcess process{identity, openProcess(identity.pid)};
        // Gone since it was looked at, or another one by now: that is to be seen.
        if (!process.descriptor.isOpen()) return errno == ESRCH;
        if (!isAlive(identity)) return true;
        if (!add(process.descriptor)) return false;
        processes.push_back(std::move(process));
        return true;
    }

    void leave(const std::vector<NotePlace>& wanted) {
        std::erase_if(places, [&](const auto& entry) {
            const auto& [place, watch] = entry;
            if (std::ranges::find(wanted, place) != wanted.end()) return false;
            const bool isShared = std::ranges::any_of(
                wanted, [&](const NotePlace& other) { return other.directory == place.directory; });
            if (!isShared) inotify_rm_watch(inotify.number(), watch);
            return true;
        });
    }

    bool isWatched(const inotify_event& event, const char* name) const {
        if ((event.mask & IN_Q_OVERFLOW) != 0) return true;
        return std::ranges::any_of(places, [&](const auto& entry) {
            return entry.second == event.wd &&
                   (event.len == 0 ||
                    std::strncmp(name, entry.first.prefix.c_str(), entry.first.prefix.size()) == 0);
        });
    }

    // A folder that was moved away or deleted is watched again where it is back.
    void takeLoss(const inotify_event& event) {
        if ((event.mask & (IN_DELETE_SELF | IN_MOVE_SELF | IN_IGNORED)) == 0) return;
        if ((event.mask & IN_MOVE_SELF) != 0) inotify_rm_watch(inotify.number(), event.wd);
        std::erase_if(places, [&](const auto& entry) { return entry.second == event.wd; });
    }

    bool consumeNotes() {
        bool happened = false;
        alignas(inotify_event) std::array<char, 4096> buffer{};
        ssize_t length = 0;
        while ((length = read(inotify.number(), buffer.data(), buffer.size())) > 0) {
            for (ssize_t position = 0; position < length;) {
                inotify_event event{};
                const char* start = buffer.data() + position;
                std::memcpy(&event, start, sizeof event);
                happened = isWatched(event, start + sizeof event) || happened;
                takeLoss(event);
                position += static_cast<ssize_t>(sizeof event + event.len);
            }
        }
        return happened;
    }

    bool consumeEnds() {
        std::array<epoll_event, 16> ready{};
        const int count = epoll_wait(events.number(), ready.data(), ready.size(), 0);
        bool happened = false;
        for (int i = 0; i < count; ++i)
            happened = std::erase_if(processes,
                                     [&](const WatchedProcess& process) {
                                         return process.descriptor.number() ==
                                                ready[static_cast<std::size_t>(i)].data.fd;
                                     }) > 0 ||
                       happened;
        return happened;
    }
};

std::expected<EvidenceWatch, FileError> EvidenceWatch::start() {
    auto state = std::make_unique<State>();
    state->events = FileDescriptor{epoll_create1(EPOLL_CLOEXEC)};
    if (!state->events.isOpen()) return std::unexpected(FileError{"epoll_create1", errno});
    state->inotify = FileDescriptor{inotify_init1(IN_NONBLOCK | IN_CLOEXEC)};
    if (!state->inotify.isOpen()) return std::unexpected(FileError{"inotify_init1", errno});
    if (!state->add(state->inotify)) return std::unexpected(FileError{"epoll_ctl", errno});
    return EvidenceWatch{std::move(state)};
}

bool EvidenceWatch::watch(const std::vector<NotePlace>& places,
                          const std::vector<ProcessIdentity>& processes) {
    state_->leave(places);
    // Closing its descriptor takes a process out of epoll's list.
    std::erase_if(state_->processes, [&](const WatchedProcess& process) {
        return std::ranges::find(processes, process.identity) == processes.end();
    });
    bool isNew = false;
    for (const auto& place : places) isNew = state_->watchPlace(place) || isNew;
    for (const auto& process : processes) isNew = state_->watchProcess(process) || isNew;
    return isNew;
}

int EvidenceWatch::fileDescriptor() const { return state_->events.number(); }

bool EvidenceWatch::consume() {
    const bool ended = state_->consumeEnds();
    return state_->consumeNotes() || ended;
}

EvidenceWatch::EvidenceWatch(std::unique_ptr<State> state) : state_{std::move(state)} {}
EvidenceWatch::EvidenceWatch(EvidenceWatch&&) noexcept = default;
EvidenceWatch& EvidenceWatch::operator=(EvidenceWatch&&) noexcept = default;
EvidenceWatch::~EvidenceWatch() = default;

}  // namespace tallowbrook::host
