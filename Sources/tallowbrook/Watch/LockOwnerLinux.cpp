#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <string>
#include <string_view>

#include "System/DirectoryListing.h"
#include "Text/Digits.h"
#include "Text/TakeUntil.h"
#include "Watch/LockOwner.h"

namespace tallowbrook::host {
namespace {

struct HeldLock {
    pid_t pid = 0;
    ino_t inode = 0;
};

std::string_view takeField(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    return takeUntil(text, ' ');
}

// A line of proc(5)'s locks: "1: FLOCK  ADVISORY  WRITE 4242 08:01:1234567 0 EOF". Absent for other
// kinds of locks, and for a process that waits, which has "->" before the kind.
std::optional<HeldLock> parseLock(std::string_view line) {
    std::array<std::string_view, 6> fields;
    for (auto& field : fields) field = takeField(line);
    if (fields[1] != "FLOCK") return std::nullopt;
    const auto pid = parseNumber<pid_t>(fields[4]);
    const auto inode = parseNumber<ino_t>(fields[5].substr(fields[5].rfind(':') + 1));
    if (!pid || !inode) return std::nullopt;
    return HeldLock{*pid, *inode};
}

// The device in the list of locks is the file system's own, which stat(2) does not always tell.
bool hasOpen(pid_t pid, const struct stat& file) {
    const auto descriptors = listDirectory("/proc/" + std::to_string(pid) + "/fd");
    return std::ranges::any_of(descriptors, [&](const std::filesystem::path& descriptor) {
        struct stat status{};
        return stat(descriptor.c_str(), &status) == 0 && status.st_dev == file.st_dev &&
               status.st_ino == file.st_ino;
    });
}

}  // namespace

std::optional<pid_t> lockOwner(const std::filesystem::path& file) {
    struct stat status{};
    if (stat(file.c_str(), &status) != 0) return std::nullopt;
    std::ifstream locks{"/proc/locks"};
    for (std::string line; std::getline(locks, line);) {
        const auto lock = parseLock(line);
        if (lock && lock->inode == status.st_ino && hasOpen(lock->pid, status)) return lock->pid;
    }
    return std::nullopt;
}

}  // namespace tallowbrook::host
