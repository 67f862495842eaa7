#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "Support/WaitUntil.h"
#include "TestHome.h"

namespace tallowbrook {
namespace {

using testing::HasSubstr;

// A tmux server of the test's own.
struct FocusInTmux : testing::Test {
    TestHome home;
    std::string tmux = "/usr/bin/tmux";

    void SetUp() override {
        if (access(tmux.c_str(), X_OK) != 0) GTEST_SKIP() << "tmux is not installed";
        home.environment["TMUX_TMPDIR"] = home.directory.path;
        home.environment["TMUX"] = std::nullopt;
        home.environment["PATH"] = "/usr/bin:/bin";
        for (const std::string project : {"one", "two"})
            std::filesystem::create_directory(home.directory.path / project);
        ASSERT_EQ(runTmux({"-f", "/dev/null", "new-session", "-d", "-s", "main", "-c",
                           home.directory.path / "one", "sleep 100"})
                      .status,
                  0);
        ASSERT_EQ(runTmux({"new-window", "-c", home.directory.path / "two", "sleep 100"}).status,
                  0);
        ASSERT_EQ(runTmux({"select-window", "-t", "main:0"}).status, 0);
        waitForPanes({"one", "two"});
    }
    void TearDown() override { runTmux({"kill-server"}); }

    ProgramResult runTmux(std::vector<std::string> arguments) const {
        return run(
            {.program = tmux, .arguments = std::move(arguments), .environment = home.environment});
    }

    // A pane is there before its program has gone to its directory.
    void waitForPanes(const std::vector<std::string>& projects) const {
        std::string expected;
        for (const auto& project : projects)
            expected += (home.directory.path / project).string() + "\n";
        waitUntil([&] {
            return runTmux({"list-panes", "-a", "-F", "#{pane_current_path}"}).output == expected;
        });
    }

    void addSession(const std::string& session, const std::string& project) const {
        AgentEvent event = currentEvent(session);
        event.cwd = home.directory.path / project;
        home.spool(event);
        EXPECT_EQ(home.host({"watch", "--once"}).status, 0);
    }

    std::string currentWindow() const {
        return runTmux({"display-message", "-p", "-t", "main:", "#{pane_current_path}"}).output;
    }
};

TEST_F(FocusInTmux, selectsThePaneOfTheSessionsDirectory) {
    addSession("S2", "two");
    const auto result = home.host({"focus", "S2"});
    EXPECT_EQ(result.status, 3) << result.errors;
    EXPECT_THAT(result.output, HasSubstr("was selected, but no terminal shows it"));
    EXPECT_EQ(currentWindow(), (home.directory.path / "two").string() + "\n");
}

TEST_F(FocusInTmux, choosesTheOnePaneThatTwoSessionsShare) {
    ASSERT_EQ(runTmux({"new-session", "-d", "-t", "main", "-s", "second"}).status, 0);
    waitForPanes({"one", "two", "one", "two"});
    addSession("S2", "two");
    const auto result = home.host({"focus", "S2"});
    EXPECT_EQ(result.status, 3) << result.errors;
    EXPECT_THAT(result.output, HasSubstr("was selected, but no terminal shows it"));
}

TEST_F(FocusInTmux, failsWhereNoPaneFitsAndWhereSeveralDo) {
    ASSERT_EQ(runTmux({"new-window", "-c", home.directory.path / "two", "sleep 100"}).status, 0);
    waitForPanes({"one", "two", "two"});
    addSession("S2", "two");
    addSession("S3", "three");
    const auto several = home.host({"focus", "S2"});
    EXPECT_EQ(several.status, 1);
    EXPECT_THAT(several.errors, HasSubstr("none was chosen"));
    const auto none = home.host({"focus", "S3"});
    EXPECT_EQ(none.status, 1);
    EXPECT_THAT(none.errors, HasSubstr("No tmux pane and no editor window works in"));
}

}  // namespace
}  // namespace tallowbrook
