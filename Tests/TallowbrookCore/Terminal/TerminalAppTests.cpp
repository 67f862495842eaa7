#include "Terminal/TerminalApp.h"

#include <gtest/gtest.h>

#include <vector>

namespace tallowbrook {
namespace {

struct Line {
    std::size_t indent;
    const char* text;
};

std::string joined(const std::vector<Line>& lines) {
    std::string script;
    for (const auto& [indent, text] : lines) {
        if (!script.empty()) script += '\n';
        script += std::string(indent, ' ') + text;
    }
    return script;
}

TEST(TerminalApp, isRecognizedByExactlyItsBundleIdentifier) {
    EXPECT_EQ(terminalAppOf("com.googlecode.iterm2"), TerminalApp::iTerm2);
    EXPECT_EQ(terminalAppOf("com.apple.Terminal"), TerminalApp::terminal);
    EXPECT_EQ(terminalAppOf("com.mitchellh.ghostty"), TerminalApp::ghostty);
    for (const char* identifier : {"com.apple.terminal", "com.apple.Terminal ", "com.apple.Termina",
                                   "com.apple.Terminal2", "com.microsoft.VSCode", "terminal", ""})
        EXPECT_EQ(terminalAppOf(identifier), std::nullopt) << identifier;
    EXPECT_EQ(displayName(TerminalApp::terminal), "Terminal");
}

TEST(FocusScript, ofITerm2WalksEverySessionOfEveryTab) {
    EXPECT_EQ(focusScript(TerminalApp::iTerm2, "ttys003"),
              joined({
                  {0, "with timeout of 3 seconds"},
                  {4, "tell application id \"com.googlecode.iterm2\""},
                  {8, "repeat with w in windows"},
                  {12, "repeat with t in tabs of w"},
                  {16, "repeat with s in sessions of t"},
                  {20, "if tty of s is \"/dev/ttys003\" then"},
                  {24, "select w"},
                  {24, "select t"},
                  {24, "select s"},
                  {24, "activate"},
                  {24, "return \"found\""},
                  {20, "end if"},
                  {16, "end repeat"},
                  {12, "end repeat"},
                  {8, "end repeat"},
                  {4, "end tell"},
                  {0, "end timeout"},
                  {0, "return \"missing\""},
              }));
}

TEST(FocusScript, ofTerminalSkipsWindowsThatRefuseTheQuestion) {
    EXPECT_EQ(focusScript(TerminalApp::terminal, "ttys003"),
              joined({
                  {0, "with timeout of 3 seconds"},
                  {4, "tell application id \"com.apple.Terminal\""},
                  {8, "repeat with w in windows"},
                  {12, "try"},
                  {16, "repeat with t in tabs of w"},
                  {20, "if tty of t is \"/dev/ttys003\" then"},
                  {24, "if miniaturized of w then set miniaturized of w to false"},
                  {24, "set selected tab of w to t"},
                  {24, "set index of w to 1"},
                  {24, "activate"},
                  {24, "return \"found\""},
                  {20, "end if"},
                  {16, "end repeat"},
                  {12, "end try"},
                  {8, "end repeat"},
                  {4, "end tell"},
                  {0, "end timeout"},
                  {0, "return \"missing\""},
              }));
}

TEST(FocusScript, ofGhosttyWalksItsTerminals) {
    EXPECT_EQ(focusScript(TerminalApp::ghostty, "ttys003"),
              joined({
                  {0, "with timeout of 3 seconds"},
                  {4, "tell application id \"com.mitchellh.ghostty\""},
                  {8, "repeat with t in terminals"},
                  {12, "if tty of t is \"/dev/ttys003\" then"},
                  {16, "focus t"},
                  {16, "activate"},
                  {16, "return \"found\""},
                  {12, "end if"},
                  {8, "end repeat"},
                  {4, "end tell"},
                  {0, "end timeout"},
                  {0, "return \"missing\""},
              }));
}

TEST(FocusScript, isAbsentForANameThatIsNoPlainTerminal) {
    for (const TerminalApp app : allCases<TerminalApp>())
        for (const char* name : {"ttys003\"", "ttys\\003", "tty/../x", "/dev/ttys003", "tty s003",
                                 "ttyS0", "tty", "ttys003\n", ""})
            EXPECT_EQ(focusScript(app, name), std::nullopt) << rawValue(app) << " " << name;
}

}  // namespace
}  // namespace tallowbrook
