// A child process that runs a piece of a test: to be another process, or to give up what a process
// cannot get back, such as its user or its limits.
#pragma once

#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <functional>
#include <optional>
#include <string>

namespace tallowbrook {

class ChildProcess {
 public:
    // The child runs `body`, reports the text that it gives back, and ends. Assertions inside
    // `body` would be lost: let it return what there is to compare.
    explicit ChildProcess(const std::function<std::string()>& body) {
        std::array<int, 2> reports{};
        if (pipe(reports.data()) != 0) return;
        pid = fork();
        if (pid == 0) {
            close(reports[0]);
            run(body, reports[1]);
        }
        close(reports[1]);
        reports_ = reports[0];
    }

    // A child that was not waited for is killed.
    ~ChildProcess() {
        kill();
        wait();
        if (reports_ >= 0) close(reports_);
    }
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    // Waits for the child's end. Absent when it ended in any way but by giving back a text.
    std::optional<std::string> result() {
        std::string text;
        std::array<char, 4096> buffer{};
        ssize_t length = 0;
        while ((length = read(reports_, buffer.data(), buffer.size())) > 0)
            text.append(buffer.data(), static_cast<std::size_t>(length));
        const int status = wait();
        if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) return std::nullopt;
        return text;
    }

    // Whether the child has reported or ended. Does not wait.
    bool hasEnded() const {
        pollfd report{reports_, POLLIN, 0};
        return poll(&report, 1, 0) != 0;
    }

    // Ends the child at once, as SIGKILL does.
    void kill() const {
        if (pid > 0) ::kill(pid, SIGKILL);
    }

    pid_t pid = -1;  // -1 once it was waited for

 private:
    // An exception must not unwind into the test that the child is a copy of.
    [[noreturn]] static void run(const std::function<std::string()>& body, int reports) noexcept {
        // A test that is killed itself must leave no child behind for long.
        alarm(120);
        const std::string text = body();
        for (std::size_t sent = 0; sent < text.size();) {
            const ssize_t length = write(reports, text.data() + sent, text.size() - sent);
            if (length < 0) _exit(1);
            sent += static_cast<std::size_t>(length);
        }
        _exit(0);
    }

    int wait() {
        int status = -1;
        if (pid > 0)
            while (waitpid(pid, &status, 0) < 0 && errno == EINTR) continue;
        pid = -1;
        return status;
    }

    int reports_ = -1;
};

// Runs `body` in a child and waits for it.
inline std::optional<std::string> inChildProcess(const std::function<std::string()>& body) {
    return ChildProcess{body}.result();
}

}  // namespace tallowbrook
