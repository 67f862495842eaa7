// kqueue(2): EVFILT_VNODE for the folders and the files in them, EVFILT_PROC for the processes. A
// lock that is given back is no event here; its session is looked at with the next one.
#include <fcntl.h>
#include <sys/event.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <map>

#include "System/DirectoryListing.h"
#include "System/FileDescriptor.h"
#include "Watch/EvidenceWatch.h"
#include "Watch/ProcessStart.h"

namespace tallowbrook::host {
namespace {

constexpr std::uint32_t watchedChanges =
    NOTE_WRITE | NOTE_EXTEND | NOTE_DELETE | NOTE_RENAME | NOTE_REVOKE;

}  // namespace

struct EvidenceWatch::State {
    FileDescriptor queue;
    std::map<std::filesystem::path, FileDescriptor> files;  // the folders, too
    std::vector<ProcessIdentity> processes;

    bool add(std::uintptr_t identity, std::int16_t filter, std::uint32_t changes) const {
        struct kevent event{};
        EV_SET(&event, identity, filter, EV_ADD | EV_CLEAR, changes, 0, nullptr);
        return kevent(queue.number(), &event, 1, nullptr, 0, nullptr) == 0;
    }

    bool watchFile(const std::filesystem::path& path) {
        if (files.contains(path)) return false;
        FileDescriptor file{open(path.c_str(), O_EVTONLY | O_CLOEXEC)};
        if (!file.isOpen() ||
            !add(static_cast<std::uintptr_t>(file.number()), EVFILT_VNODE, watchedChanges))
            return false;
        files.emplace(path, std::move(file));
        return true;
    }

    bool watchProcess(const ProcessIdentity& identity) {
        if (std::ranges::find(processes, identity) != processes.end()) return false;
        const bool added = add(static_cast<std::uintptr_t>(identity.pid), EVFILT_PROC, NOTE_EXIT);
        // Gone since it was looked at, or another one by now: that is to be seen.
        if (!added) return errno == ESRCH;
        processes.push_back(identity);
        return true;
    }

    // A file that has lost its name, or got another, is watched again under its name.
    void take(const struct kevent& event) {
        if (event.filter == EVFILT_PROC) {
            std::erase_if(processes, [&](const ProcessIdentity& process) {
                return static_cast<std::uintptr_t>(process.pid) == event.ident;
            });
            return;
        }
        if ((event.fflags & (NOTE_DELETE | NOTE_RENAME | NOTE_REVOKE)) == 0) return;
        std::erase_if(files, [&](const auto& entry) {
            return static_cast<std::uintptr_t>(entry.second.number()) == event.ident;
        });
    }
};

std::expected<EvidenceWatch, FileError> EvidenceWatch::start() {
    auto state = std::make_unique<State>();
    state->queue = FileDescriptor{kqueue()};
    if (!state->queue.isOpen() || fcntl(state->queue.number(), F_SETFD, FD_CLOEXEC) != 0)
        return std::unexpected(FileError{"kqueue", errno});
    return EvidenceWatch{std::move(state)};
}

bool EvidenceWatch::watch(const std::vector<NotePlace>& places,
                          const std::vector<ProcessIdentity>& processes) {
    std::vector<std::filesystem::path> wanted;
    for (const auto& place : places) {
        wanted.push_back(place.directory);
        for (const auto& file : listDirectory(place.directory))
            if (file.filename().string().starts_with(place.prefix)) wanted.push_back(file);
    }
    // Closing its descriptor takes a file out of the queue.
    std::erase_if(state_->files, [&](const auto& entry) {
        return std::ranges::find(wanted, entry.first) == wanted.end();
    });
    std::erase_if(state_->processes, [&](const ProcessIdentity& process) {
        return std::ranges::find(processes, process) == processes.end();
    });
    bool isNew = false;
    for (const auto& path : wanted) isNew = state_->watchFile(path) || isNew;
    for (const auto& process : processes) isNew = state_->watchProcess(process) || isNew;
    return isNew;
}

int EvidenceWatch::fileDescriptor() const { return state_->queue.number(); }

bool EvidenceWatch::consume() {
    std::array<struct kevent, 16> events{};
    const timespec atOnce{};
    bool happened = false;
    int count = 0;
    while ((count = kevent(state_->queue.number(), nullptr, 0, events.data(),
                           static_cast<int>(events.size()), &atOnce)) > 0)
        for (int i = 0; i < count; ++i) {
            state_->take(events[static_cast<std::size_t>(i)]);
            happened = true;
        }
    return happened;
}

EvidenceWatch::EvidenceWatch(std::unique_ptr<State> state) : state_{std::move(state)} {}
EvidenceWatch::EvidenceWatch(EvidenceWatch&&) noexcept = default;
EvidenceWatch& EvidenceWatch::operator=(EvidenceWatch&&) noexcept = default;
EvidenceWatch::~EvidenceWatch() = default;

}  // namespace tallowbrook::host
