// A real terminal for a test to put processes on.
#pragma once

#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <string>
#include <string_view>

namespace tallowbrook {

// Makes the terminal at `path` the calling process's own, at the head of a new session. The
// process must not lead a group yet, and no other session may have the terminal.
inline bool takeTerminal(const std::string& path) {
    if (setsid() < 0) return false;
    const int file = open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK);
    return file >= 0 && ioctl(file, TIOCSCTTY, 0) == 0;
}

// Lasts as long as this value.
class PseudoTerminal {
 public:
    PseudoTerminal() : primary(posix_openpt(O_RDWR | O_NOCTTY)) {
        if (primary < 0 || grantpt(primary) != 0 || unlockpt(primary) != 0) return;
        const char* name = ptsname(primary);
        struct stat status{};
        if (name == nullptr || stat(name, &status) != 0) return;
        path = name;
        device = status.st_rdev;
    }
    ~PseudoTerminal() { close(primary); }

    PseudoTerminal(const PseudoTerminal&) = delete;
    PseudoTerminal& operator=(const PseudoTerminal&) = delete;

    // As if the user had typed it.
    bool type(std::string_view text) const {
        return write(primary, text.data(), text.size()) == static_cast<ssize_t>(text.size());
    }

    // What programs have written that was not read yet; empty where there is nothing.
    std::string read() const {
        std::string text;
        std::array<char, 65536> buffer;
        pollfd reader{primary, POLLIN, 0};
        while (poll(&reader, 1, 10) > 0) {
            const ssize_t count = ::read(primary, buffer.data(), buffer.size());
            if (count <= 0) break;
            text.append(buffer.data(), static_cast<std::size_t>(count));
        }
        return text;
    }

    std::string path;  // of the side that programs run on; empty when the system gave none
    dev_t device = 0;

 private:
    int primary;
};

}  // namespace tallowbrook
