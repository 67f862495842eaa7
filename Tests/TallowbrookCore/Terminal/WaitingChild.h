// A child process that stands still for a test to look at, and is gone when this value is.
#pragma once

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <functional>
#include <optional>
#include <string>

namespace tallowbrook {

// A child that `prepare` runs in reports one line on standard output, then waits for the end of
// its standard input; so does a program that `prepare` turns it into.
class WaitingChild {
 public:
    // Returns once the child has reported. The report is what `prepare` gave back, or the line
    // its program wrote; absent when preparing failed.
    explicit WaitingChild(const std::function<std::optional<std::string>()>& prepare) {
        std::array<int, 2> reports{};
        std::array<int, 2> holds{};
        if (pipe(reports.data()) != 0 || pipe(holds.data()) != 0) return;
        hold = holds[1];
        pid = fork();
        if (pid == 0) {
            dup2(holds[0], STDIN_FILENO);
            dup2(reports[1], STDOUT_FILENO);
            for (const int file : {holds[0], holds[1], reports[0], reports[1]}) close(file);
            live(prepare);
        }
        close(holds[0]);
        close(reports[1]);
        report = readLine(reports[0]);
        close(reports[0]);
    }

    ~WaitingChild() {
        close(hold);
        if (pid <= 0) return;
        kill(pid, SIGKILL);
        waitpid(pid, nullptr, 0);
    }

    WaitingChild(const WaitingChild&) = delete;
    WaitingChild& operator=(const WaitingChild&) = delete;

    // For a further process that `prepare` starts: ends when this value does.
    [[noreturn]] static void standStill() {
        char byte = 0;
        while (read(STDIN_FILENO, &byte, 1) > 0) continue;
        _exit(0);
    }

    pid_t pid = -1;
    std::optional<std::string> report;

 private:
    [[noreturn]] static void live(const std::function<std::optional<std::string>()>& prepare) {
        const auto line = prepare();
        if (!line) _exit(1);
        const std::string text = *line + '\n';
        if (write(STDOUT_FILENO, text.data(), text.size()) < 0) _exit(1);
        standStill();
    }

    static std::optional<std::string> readLine(int file) {
        std::string line;
        for (char byte = 0; read(file, &byte, 1) == 1; line += byte)
            if (byte == '\n') return line;
        return std::nullopt;
    }

    int hold = -1;
};

}  // namespace tallowbrook
