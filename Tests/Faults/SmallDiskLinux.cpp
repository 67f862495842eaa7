#include "SmallDiskLinux.h"

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "Support/ChildProcess.h"

namespace tallowbrook {
namespace {

// From then on mounts of this process stay among itself and its children.
bool separateMounts() {
    return unshare(CLONE_NEWNS) == 0 &&
           mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

bool mountMemory(const std::filesystem::path& directory, std::size_t bytes, unsigned long flags) {
    const std::string options = "mode=0700,size=" + std::to_string(bytes);
    return mount("tallowbrook-test", directory.c_str(), "tmpfs", flags, options.c_str()) == 0;
}

}  // namespace

std::optional<std::string> SmallDisk::reasonToSkip() {
    if (geteuid() != 0) return "only root may mount a small disk";
    // In a child with mounts of its own, which go with it.
    const auto seen = inChildProcess([]() -> std::string {
        if (separateMounts() && mountMemory("/tmp", 8192, 0)) return "works";
        return std::strerror(errno);
    });
    if (seen == "works") return std::nullopt;
    return "no small disk may be mounted here: " + seen.value_or("the attempt failed");
}

SmallDisk::SmallDisk(std::filesystem::path directory, std::size_t bytes)
    : directory_{std::move(directory)} {
    static const bool areSeparate = separateMounts();
    create_directories(directory_);
    if (!areSeparate || !mountMemory(directory_, bytes, 0))
        ADD_FAILURE() << "no small disk: " << std::strerror(errno);
}

SmallDisk::~SmallDisk() { umount2(directory_.c_str(), MNT_DETACH); }

void SmallDisk::resize(std::size_t bytes) const {
    if (!mountMemory(directory_, bytes, MS_REMOUNT))
        ADD_FAILURE() << "the small disk cannot change its size: " << std::strerror(errno);
}

std::size_t SmallDisk::used() const {
    const auto space = std::filesystem::space(directory_);
    return space.capacity - space.free;
}

}  // namespace tallowbrook
