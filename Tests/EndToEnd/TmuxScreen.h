// A real terminal with a real screen: a tmux server of the test's own.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "Support/BuildPaths.h"
#include "Support/WaitUntil.h"
#include "TestHome.h"

namespace tallowbrook {

class TmuxScreen {
 public:
    explicit TmuxScreen(TestHome& home) : home_{home} {
        home.environment["TMUX_TMPDIR"] = home.directory.path;
        home.environment["TMUX"] = std::nullopt;
        home.environment["LC_ALL"] = "C.UTF-8";
        home.environment["NO_COLOR"] = std::nullopt;
    }
    ~TmuxScreen() { tmux({"kill-server"}); }
    TmuxScreen(const TmuxScreen&) = delete;
    TmuxScreen& operator=(const TmuxScreen&) = delete;

    static bool isInstalled() { return access(program, X_OK) == 0; }

    // Runs a line of shell on a screen of this size.
    void start(const std::string& line, int columns = 80, int rows = 24) const {
        ASSERT_EQ(tmux({"-f", "/dev/null", "new-session", "-d", "-s", "test", "-x",
                        std::to_string(columns), "-y", std::to_string(rows), line})
                      .status,
                  0);
    }

    // "tallowbrook watch", as a word of shell.
    std::string watch(const std::string& options = "") const {
        return std::string{BuildPaths::host} + " watch --home '" + home_.paths.home.string() +
               "' " + options;
    }
    // The same with words before and behind it, and a terminal that stays.
    std::string watchBetweenWords(const std::string& options = "") const {
        return "echo before; " + watch(options) + "; echo ended $?; exec sleep 1000";
    }

    // By their names in tmux, such as "j" and "Escape".
    void press(std::vector<std::string> keys) const {
        keys.insert(keys.begin(), {"send-keys", "-t", "test"});
        EXPECT_EQ(tmux(std::move(keys)).status, 0);
    }
    // As a terminal that tells pasted text from keys (bracketed paste).
    void paste(const std::string& text) const {
        tmux({"set-buffer", text});
        tmux({"paste-buffer", "-p", "-t", "test"});
    }
    // The terminal is gone, as when its window is closed.
    void kill() const { tmux({"kill-server"}); }
    void resize(int columns, int rows) const {
        tmux({"resize-window", "-t", "test", "-x", std::to_string(columns), "-y",
              std::to_string(rows)});
    }

    // What is on it, a line each; with the sequences of its styles where `styled`.
    std::string text(bool styled = false) const {
        std::vector<std::string> words{"capture-pane", "-p", "-t", "test"};
        if (styled) words.emplace_back("-e");
        return tmux(std::move(words)).output;
    }
    bool shows(const std::string& part) const { return text().contains(part); }
    void waitFor(const std::string& part) const {
        waitUntil([&] { return shows(part); });
        EXPECT_TRUE(shows(part)) << text();
    }
    void waitForNo(const std::string& part) const {
        waitUntil([&] { return !shows(part); });
        EXPECT_FALSE(shows(part)) << text();
    }

    // Answers of tmux about it, such as "#{cursor_flag}".
    std::string ask(const std::string& format) const {
        return tmux({"display-message", "-p", "-t", "test", format}).output;
    }

 private:
    static constexpr const char* program = "/usr/bin/tmux";

    ProgramResult tmux(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), "-u");
        return run({.program = program,
                    .arguments = std::move(arguments),
                    .environment = home_.environment});
    }

    TestHome& home_;
};

}  // namespace tallowbrook
