// A umask that holds for as long as this value lives.
#pragma once

#include <sys/stat.h>

namespace tallowbrook {

class FileModeMask {
 public:
    explicit FileModeMask(mode_t mask) : former_{umask(mask)} {}
    ~FileModeMask() { umask(former_); }
    FileModeMask(const FileModeMask&) = delete;
    FileModeMask& operator=(const FileModeMask&) = delete;

 private:
    mode_t former_;
};

// The permission bits of a file or directory; all ones when there is none.
inline mode_t modeOf(const char* path) {
    struct stat status{};
    if (stat(path, &status) != 0) return static_cast<mode_t>(-1);
    return static_cast<mode_t>(status.st_mode & 07777);
}

}  // namespace tallowbrook
