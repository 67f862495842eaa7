#include "Terminal/TerminalApp.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace tallowbrook {
namespace {

using testing::ElementsAre;

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

TEST(TerminalApp, listsItsRawTextsInOrder) {
    std::vector<std::string_view> texts;
    for (const TerminalApp app : allCases<TerminalApp>()) {
        EXPECT_EQ(static_cast<std::size_t>(app), texts.size());
        EXPECT_EQ(fromRawValue<TerminalApp>(rawValue(app)), app);
        texts.push_back(rawValue(app));
    }
    EXPECT_THAT(texts, ElementsAre("iTerm2", "terminal", "ghostty"));
    for (const char* text : {"", "Terminal", "iterm2", "ghostty ", "com.apple.Terminal"})
        EXPECT_EQ(fromRawValue<TerminalApp>(text), std::nullopt) << text;
}

TEST(TerminalApp, hasABundleIdentifierAndADisplayName) {
    EXPECT_EQ(bundleIdentifier(TerminalApp::iTerm2), "com.googlecode.iterm2");
    EXPECT_EQ(bundleIdentifier(TerminalApp::terminal), "com.apple.Terminal");
    EXPECT_EQ(bundleIdentifier(TerminalApp::ghostty), "com.mitchellh.ghostty");
    EXPECT_EQ(displayName(TerminalApp::iTerm2), "iTerm2");
    EXPECT_EQ(displayName(TerminalApp::terminal), "Terminal");
    EXPECT_EQ(displayName(TerminalApp::ghostty), "Ghostty");
}

TEST(TerminalApp, isRecognizedByExactlyItsBundleIdentifier) {
    for (const TerminalApp app : allCases<TerminalApp>())
        EXPECT_EQ(terminalAppOf(bundleIdentifier(app)), app);
    for (const char* identifier :
         {"com.apple.terminal", "COM.APPLE.TERMINAL", "com.googlecode.iTerm2",
          "com.apple.Terminal ", "com.apple.Termina", "com.apple.Terminal2", "com.microsoft.VSCode",
          "terminal", ""})
        EXPECT_EQ(terminalAppOf(identifier), std::nullopt) << identifier;
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

TEST(FocusScript, differsBetweenTerminalsOnlyInThePath) {
    for (const TerminalApp app : allCases<TerminalApp>()) {
        std::string expected = focusScript(app, "ttys003").value_or("");
        const std::string path = "/dev/ttys003";
        const auto at = expected.find(path);
        ASSERT_NE(at, std::string::npos);
        expected.replace(at, path.size(), "/dev/tty1234567890abc");
        EXPECT_EQ(focusScript(app, "tty1234567890abc"), expected);
        EXPECT_EQ(expected.find("ttys003"), std::string::npos);
    }
}

TEST(FocusScript, isAbsentForANameThatIsNoPlainTerminal) {
    using namespace std::string_view_literals;
    for (const TerminalApp app : allCases<TerminalApp>())
        for (const auto name :
             {"ttys003\""sv, "ttys\\003"sv, "tty/../x"sv, "pts/3"sv, "/dev/ttys003"sv, "tty s003"sv,
              "ttyS0"sv, "TTYS003"sv, "tty"sv, "tty1234567890abcd"sv, "ttys003\n"sv, "ttys\0003"sv,
              "tty\u00E9"sv, "console"sv, ""sv})
            EXPECT_EQ(focusScript(app, name), std::nullopt) << rawValue(app) << " " << name;
}

}  // namespace
}  // namespace tallowbrook
