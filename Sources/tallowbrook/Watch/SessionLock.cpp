#include "Watch/SessionLock.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>

#include "System/FileDescriptor.h"

namespace tallowbrook::host {

SessionLock probeLock(const std::filesystem::path& file) {
    const FileDescriptor opened{open(file.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)};
    if (!opened.isOpen()) return errno == ENOENT ? SessionLock::missing : SessionLock::unknown;
    if (flock(opened.number(), LOCK_EX | LOCK_NB) == 0) return SessionLock::isFree;
    return errno == EWOULDBLOCK ? SessionLock::held : SessionLock::unknown;
}

}  // namespace tallowbrook::host
