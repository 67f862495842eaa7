// `watch` at a terminal, as its user sees it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>

#include "TmuxScreen.h"

namespace tallowbrook {
namespace {

using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;

const std::string empty = "No session waits for you";
const std::string oneWaits = "1 session waits for you";

struct View : testing::Test {
    TestHome home;
    TmuxScreen screen{home};

    void SetUp() override {
        if (!TmuxScreen::isInstalled()) GTEST_SKIP() << "tmux is not installed";
    }
    void startWith(const std::vector<std::pair<std::string, std::string>>& events,
                   const std::string& options = "") {
        for (const auto& [session, event] : events) home.claude(event, session);
        screen.start(screen.watchBetweenWords(options));
        screen.waitFor("? keys");
    }
    std::string preference(const std::string& name) const {
        const auto all = home.host({"preferences"}).output;
        const auto at = all.find(name + " ");
        return at == std::string::npos ? "" : all.substr(at, all.find('\n', at) - at);
    }
};

TEST_F(View, showsWhatHappensAsItHappens) {
    startWith({});
    EXPECT_TRUE(screen.shows(empty));
    home.claude("PermissionRequest");
    screen.waitFor(oneWaits);
    EXPECT_THAT(screen.text(), ContainsRegex("› ● proj +needs permission +Bash +<1 min +Claude"));
    screen.waitFor("Claude Code needs permission: proj");
    home.claude("Stop");
    screen.waitFor(empty);
    EXPECT_THAT(screen.text(), ContainsRegex("› ✓ proj +completed"));
    home.claude("SessionEnd");
    screen.waitFor("1 ended (z shows)");
}

TEST_F(View, leavesTheTerminalAsItWas) {
    startWith({});
    EXPECT_FALSE(screen.shows("before")) << "it has a screen of its own";
    EXPECT_EQ(screen.ask("#{alternate_on} #{cursor_flag}"), "1 0\n");
    screen.press({"q"});
    screen.waitFor("Quit, and be told nothing more?");
    screen.press({"q"});
    screen.waitFor("ended 0");
    EXPECT_TRUE(screen.shows("before\n"));
    EXPECT_EQ(screen.ask("#{alternate_on} #{cursor_flag} #{wrap_flag} #{keypad_cursor_flag}"),
              "0 1 1 0\n");
    screen.press({"seen"});
    screen.waitFor("seen");
}

TEST_F(View, endsAtOnceWithCtrlC) {
    startWith({});
    screen.press({"C-c"});
    waitUntil([&] { return screen.ask("#{alternate_on}") == "0\n"; });
    screen.waitFor("before");
}

TEST_F(View, doesWhatItsKeysSay) {
    startWith({{"S1", "PermissionRequest"}, {"S2", "Stop"}});
    screen.waitFor(oneWaits);
    screen.press({"Down"});
    screen.waitFor("› ✓ proj");
    screen.press({"n"});
    screen.waitFor("› ● proj");
    screen.press({"e"});
    screen.waitFor("A permission request for Bash was observed");
    screen.press({"Escape"});
    screen.waitForNo("A permission request");
    screen.press({"?"});
    screen.waitFor("bring the session's window to the front");
    screen.press({"q"});
    screen.waitForNo("bring the session's window");
    EXPECT_FALSE(screen.shows("Quit,"));
    screen.press({"/", "complet"});
    screen.waitFor("Only with: complet");
    screen.waitForNo("needs permission  ");
    screen.press({"Escape"});
    screen.waitFor("needs permission  ");
    screen.press({"d"});
    screen.waitFor("1 hidden (z shows)");
}

TEST_F(View, pausesAndGoesOn) {
    startWith({});
    screen.press({"p"});
    screen.waitFor("Paused: you are told nothing");
    EXPECT_THAT(preference("paused"), HasSubstr(" on"));
    home.claude("PermissionRequest");
    screen.waitFor(oneWaits);
    EXPECT_FALSE(screen.shows("Claude Code needs permission: proj"));
    screen.press({"p"});
    screen.waitForNo("Paused");
    EXPECT_THAT(preference("paused"), HasSubstr(" off"));
}

TEST_F(View, showsAPauseThatAnotherProgramMakes) {
    startWith({});
    ASSERT_EQ(home.host({"preferences", "paused", "on"}).status, 0);
    screen.waitFor("Paused: you are told nothing");
}

TEST_F(View, saysWhyAWindowCannotBeFocused) {
    home.environment["PATH"] = "/nowhere";
    startWith({{"S1", "PermissionRequest"}});
    screen.press({"Enter"});
    screen.waitFor("/Users/x/proj.");
    EXPECT_FALSE(screen.shows("tallowbrook:"));
}

TEST_F(View, followsTheSizeOfItsTerminal) {
    startWith({{"S1", "PermissionRequest"}});
    for (const auto& [columns, rows, part] : {std::tuple{40, 12, "watching since"},
                                              {20, 5, "1 waiting\n"},
                                              {200, 50, "/Users/x/proj"},
                                              {400, 3, "1 session waits"},
                                              {80, 24, "watching since"}}) {
        screen.resize(columns, rows);
        if (columns != 40) screen.waitFor(part);
        screen.waitFor("? keys");
        EXPECT_TRUE(screen.shows("● proj")) << screen.text();
    }
}

TEST_F(View, goesOnAfterCtrlZ) {
    screen.start("exec bash --norc --noprofile -i");
    screen.press({screen.watch(), "Enter"});
    screen.waitFor("? keys");
    screen.press({"C-z"});
    screen.waitFor("Stopped");
    EXPECT_EQ(screen.ask("#{alternate_on} #{cursor_flag}"), "0 1\n");
    home.claude("PermissionRequest");
    screen.press({"fg", "Enter"});
    screen.waitFor(oneWaits);
    EXPECT_EQ(screen.ask("#{alternate_on}"), "1\n");
}

TEST_F(View, letsItsHostWorkInTheBackgroundAndComesBack) {
    screen.start("exec bash --norc --noprofile -i");
    screen.press({screen.watch(), "Enter"});
    screen.waitFor("? keys");
    screen.press({"C-z"});
    screen.waitFor("Stopped");
    screen.press({"bg", "Enter"});
    home.claude("PermissionRequest");
    waitUntil([&] { return home.rows("events") == 1; });
    EXPECT_EQ(screen.ask("#{alternate_on}"), "0\n");
    screen.press({"fg", "Enter"});
    screen.waitFor(oneWaits);
}

TEST_F(View, looksOnWhereAnotherHostTellsAndTakesOver) {
    RunningProgram first{home.hostCall({"watch"})};
    ASSERT_TRUE(first.waitForOutput("No sessions"));
    startWith({});
    screen.waitFor("Another host tells; this view looks on.");
    home.claude("PermissionRequest");
    screen.waitFor(oneWaits);
    screen.waitFor("Claude Code needs permission: proj");
    EXPECT_EQ(home.rows("notifications"), 1);
    first.send(SIGTERM);
    EXPECT_EQ(first.wait().status, 0);
    screen.waitForNo("this view looks on");
    home.claude("Stop");
    screen.waitFor("Claude Code finished: proj");
}

TEST_F(View, showsTroubleForAsLongAsItLasts) {
    const auto segment = home.paths.spoolDirectory() / "ingest-1-1-A.jsonl";
    create_directories(segment);
    startWith({});
    screen.waitFor("ingest-1-1-A.jsonl");
    std::filesystem::remove(segment);
    home.claude("Stop");
    screen.waitFor("Claude Code finished");
    EXPECT_THAT(screen.text(), Not(ContainsRegex("^[^\n]*\n[^\n]*ingest-1-1")));
}

TEST_F(View, keepsToASCIIWhereTheLocaleHasNothingElse) {
    home.environment["LC_ALL"] = "C";
    startWith({{"S1", "PermissionRequest"}});
    EXPECT_THAT(screen.text(), ContainsRegex("> ! proj +needs permission"));
    EXPECT_FALSE(screen.shows("●"));
}

TEST_F(View, showsNoColoursWhereNoneAreWanted) {
    startWith({{"S1", "PermissionRequest"}, {"S2", "PermissionRequest"}});
    EXPECT_THAT(screen.text(true), ContainsRegex("\x1B\\[[0-9;]*35m"));
    screen.press({"q", "q"});
    screen.waitFor("ended 0");
    for (const auto& [variable, options] :
         {std::pair{"NO_COLOR=1 ", ""}, {"", "--color=never"}, {"TERM=vt100 ", ""}}) {
        TestHome own;
        TmuxScreen plain{own};
        own.claude("PermissionRequest", "S1");
        own.claude("PermissionRequest", "S2");
        plain.start(variable + plain.watch(options));
        plain.waitFor("2 sessions wait");
        EXPECT_THAT(plain.text(true), Not(ContainsRegex("\x1B\\[[0-9;]*35m"))) << variable;
    }
}

TEST_F(View, givesWayToLinesWhereItCannotBe) {
    for (const auto& [before, options] :
         {std::pair{"TERM=dumb ", ""}, {"TERM=no-such-terminal ", ""}, {"", "--plain"}}) {
        TestHome own;
        TmuxScreen plain{own};
        plain.start(before + plain.watch(options));
        plain.waitFor("No sessions to show.");
        EXPECT_EQ(plain.shows("no-such-terminal"), std::string{before}.contains("no-such"));
        own.claude("PermissionRequest", "S1");
        plain.waitFor("Claude Code needs permission: proj");
        EXPECT_EQ(plain.ask("#{alternate_on}"), "0\n");
    }
}

TEST_F(View, takesNoKeysFromAPastedText) {
    startWith({{"S1", "PermissionRequest"}, {"S2", "Stop"}});
    screen.paste("p");
    screen.press({"Down"});
    screen.waitFor("› ✓ proj");
    EXPECT_FALSE(screen.shows("Paused"));
    screen.press({"/"});
    screen.waitFor("Only with:");
    screen.paste("permission\n");
    screen.waitFor("Only with: permission");
    screen.waitForNo("✓ proj");
}

TEST_F(View, endsWithItsTerminal) {
    screen.start("exec " + screen.watch());
    screen.waitFor("? keys");
    screen.kill();
    // The lock is free again: another host leads at once.
    RunningProgram next{home.hostCall({"watch"})};
    ASSERT_TRUE(next.waitForOutput("No sessions"));
    home.claude("Stop");
    EXPECT_TRUE(next.waitForOutput("Claude Code finished: proj"));
}

}  // namespace
}  // namespace tallowbrook
