#include "Watch/HostLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <string>
#include <thread>

#include "System/FileContents.h"
#include "System/LockFile.h"
#include "Text/Digits.h"
#include "Text/TakeUntil.h"

namespace tallowbrook::host {
namespace {

constexpr int maxTries = 10;
constexpr std::chrono::milliseconds pause{5};
constexpr std::size_t maxSignature = 256;

}  // namespace

std::filesystem::path HostLock::file(const TallowbrookPaths& paths) {
    return paths.home / "host.lock";
}

std::expected<std::optional<HostLock>, FileError> HostLock::tryAcquire(
    const TallowbrookPaths& paths) {
    if (auto made = TallowbrookPaths::ensureDirectory(paths.home); !made)
        return std::unexpected(made.error());
    auto descriptor = LockFile::open(file(paths));
    for (int tries = 0; descriptor; ++tries) {
        const bool isLocked = flock(descriptor->number(), LOCK_EX | LOCK_NB) == 0;
        if (!isLocked && errno != EWOULDBLOCK && errno != EINTR)
            return std::unexpected(FileError{"flock", errno});
        if (isLocked) {
            const auto place = LockFile::placeOf(*descriptor, file(paths));
            if (!place) return std::unexpected(place.error());
            if (*place == LockFile::Place::kept) {
                HostLock lock{std::move(*descriptor)};
                lock.write("");  // the name of an earlier holder
                return lock;
            }
        }
        if (tries + 1 == maxTries) return std::nullopt;
        if (isLocked)
            // Another host would lock the file that is in place by now.
            descriptor = LockFile::open(file(paths));
        else
            std::this_thread::sleep_for(pause);
    }
    return std::unexpected(descriptor.error());
}

bool HostLock::isInPlace(const TallowbrookPaths& paths) const {
    struct stat own{};
    struct stat found{};
    return fstat(file_.number(), &own) == 0 && stat(file(paths).c_str(), &found) == 0 &&
           own.st_dev == found.st_dev && own.st_ino == found.st_ino;
}

void HostLock::write(std::string_view text) const {
    if (ftruncate(file_.number(), 0) != 0 || text.empty()) return;
    [[maybe_unused]] const auto written = pwrite(file_.number(), text.data(), text.size(), 0);
}

void HostLock::sign(Instant now) const {
    write(std::to_string(getpid()) + " " + EventDate::text(now) + "\n");
}

std::optional<HostHolder> HostLock::holder(const TallowbrookPaths& paths) {
    for (int tries = 0; isHeld(paths); ++tries) {
        const auto text = FileContents::read(file(paths), maxSignature).value_or("");
        std::string_view rest = text;
        const auto pid = parseNumber<pid_t>(takeUntil(rest, ' '));
        const auto since = EventDate::parse(takeUntil(rest, '\n'));
        if (pid && since) return HostHolder{pid, since};
        if (tries + 1 == maxTries) return HostHolder{};
        std::this_thread::sleep_for(pause);
    }
    return std::nullopt;
}

bool HostLock::isHeld(const TallowbrookPaths& paths) {
    const FileDescriptor descriptor{open(file(paths).c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)};
    // A shared lock, given back at once, cannot be mistaken for a host by anybody who looks, too.
    return descriptor.isOpen() && flock(descriptor.number(), LOCK_SH | LOCK_NB) != 0 &&
           errno == EWOULDBLOCK;
}

}  // namespace tallowbrook::host
