// `watch` in a pane of a real tmux, which is shown on a terminal of the test's.
#include <SQLiteCpp/Database.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <optional>

#include "Support/BuildPaths.h"
#include "Support/PseudoTerminal.h"
#include "Support/WaitUntil.h"
#include "TestHome.h"

namespace tallowbrook {
namespace {

using testing::HasSubstr;

struct InTmux : testing::Test {
    TestHome home;
    std::string tmux = "/usr/bin/tmux";
    PseudoTerminal terminal;
    std::optional<RunningProgram> client;
    std::string written;

    void SetUp() override {
        if (access(tmux.c_str(), X_OK) != 0) GTEST_SKIP() << "tmux is not installed";
        for (const char* name : {"TMUX", "TMUX_PANE", "STY", "TERM_PROGRAM", "LC_TERMINAL",
                                 "KITTY_WINDOW_ID", "DBUS_SESSION_BUS_ADDRESS"})
            home.environment[name] = std::nullopt;
        home.environment["TMUX_TMPDIR"] = home.directory.path;
        home.environment["PATH"] = "/usr/bin:/bin";
        home.environment["TERM"] = "rxvt-unicode-256color";
        EXPECT_EQ(home.host({"preferences", "channels", "terminal"}).status, 0);
        std::filesystem::create_directory(home.directory.path / "proj");
        ASSERT_EQ(runTmux({"-f", "/dev/null", "new-session", "-d", "-s", "main", "-c",
                           home.directory.path / "proj", "sleep 1000"})
                      .status,
                  0);
        for (const char* option : {"focus-events", "allow-passthrough"})
            ASSERT_EQ(runTmux({"set", "-g", option, "on"}).status, 0);
        attach();
    }
    void TearDown() override { runTmux({"kill-server"}); }

    ProgramResult runTmux(std::vector<std::string> arguments) const {
        return run(
            {.program = tmux, .arguments = std::move(arguments), .environment = home.environment});
    }

    void attach() {
        client.emplace(ProgramCall{.program = tmux,
                                   .arguments = {"attach", "-t", "main"},
                                   .environment = home.environment,
                                   .prepare = [path = terminal.path] {
                                       const int file = open(path.c_str(), O_RDWR);
                                       ioctl(file, TIOCSCTTY, 0);
                                       for (const int stream :
                                            {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
                                           dup2(file, stream);
                                   }});
        waitUntil([&] {
            written += terminal.read();
            return runTmux({"list-clients", "-F", "#{client_termname} #{client_flags}"}).output ==
                   "rxvt-unicode-256color attached,focused,UTF-8\n";
        });
    }

    // The host in a window of its own, which is the one that is shown.
    void startHost() {
        ASSERT_EQ(
            runTmux({"new-window", BuildPaths::host, "watch", "--plain", "--home", home.paths.home}).status,
            0);
        waitUntil([&] {
            return runTmux({"capture-pane", "-p", "-t", "main:1"})
                .output.contains("No sessions to show.");
        });
    }

    void addEvent() const {
        AgentEvent event = currentEvent("S1");
        event.cwd = home.directory.path / "proj";
        event.category = EventCategory::attentionRequested;
        event.attention = AttentionKind::permission;
        home.spool(event);
    }

    std::string untoldReasons() const {
        return SQLite::Database{home.paths.databaseFile().string(), SQLite::OPEN_READONLY, 5000}
            .execAndGet("SELECT coalesce(group_concat(reason), '') FROM untold")
            .getString();
    }

    void awaitWritten(const std::string& text) {
        waitUntil([&] { return (written += terminal.read()).contains(text); });
        EXPECT_THAT(written, HasSubstr(text));
    }
};

TEST_F(InTmux, whatIsToldComesThroughToItsTerminal) {
    startHost();
    addEvent();
    awaitWritten("\x1b]777;notify;Claude Code needs permission;proj — waiting for approval.\x1b\\");
}

TEST_F(InTmux, nothingIsToldOfThePaneThatTheUserLooksAt) {
    startHost();
    ASSERT_EQ(runTmux({"select-window", "-t", "main:0"}).status, 0);
    addEvent();
    waitUntil([&] { return untoldReasons() == "lookedAt"; });
    EXPECT_EQ(home.rows("deliveries WHERE state = 'told'"), 0);
}

TEST_F(InTmux, whatTheUserHasTurnedAwayFromIsTold) {
    startHost();
    ASSERT_EQ(runTmux({"select-window", "-t", "main:0"}).status, 0);
    EXPECT_TRUE(terminal.type("\x1b[O"));
    waitUntil([&] {
        return runTmux({"list-clients", "-F", "#{client_flags}"}).output == "attached,UTF-8\n";
    });
    addEvent();
    waitUntil([&] { return home.rows("deliveries WHERE state = 'told'") > 0; });
    EXPECT_EQ(untoldReasons(), "");
}

}  // namespace
}  // namespace tallowbrook
