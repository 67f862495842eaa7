#include "Focus/TabFocus.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "Focus/FakeFocusOperations.h"
#include "Support/FileContents.h"
#include "Support/TemporaryDirectory.h"

namespace tallowbrook::host {
namespace {

using testing::Contains;
using testing::HasSubstr;
using enum FocusOutcome::Result;

struct FocusByDevice : testing::Test {
    TemporaryDirectory directory;
    TallowbrookPaths paths{directory.path};
    FakeMachine machine;

    FocusOutcome focus(const std::string& deviceName = "ttys003") {
        const auto operations = machine.operations();
        return TabFocus{paths, operations}.focus(deviceName);
    }

    // Process 700 hosts the terminal and is the application with this bundle identifier.
    void hostBy(const std::string& bundle, const std::string& deviceName = "ttys003") {
        machine.chains[deviceName] = {{800, "login"}, {700, "app"}};
        machine.answers["/usr/bin/lsappinfo find pid=800"] = "\n";
        machine.answers["/usr/bin/lsappinfo find pid=700"] = "ASN:0x0-0x1:\n";
        machine.answers["/usr/bin/lsappinfo info -only bundleid ASN:0x0-0x1:"] =
            "\"CFBundleIdentifier\"=\"" + bundle + "\"\n";
    }

    void answerScript(TerminalApp app, const std::string& answer,
                      const std::string& deviceName = "ttys003") {
        machine.answers["/usr/bin/osascript -e " + focusScript(app, deviceName).value()] = answer;
    }
};

TEST_F(FocusByDevice, asksTheApplicationThatOwnsIt) {
    hostBy("com.apple.Terminal");
    answerScript(TerminalApp::terminal, "found\n");
    EXPECT_EQ(focus(), FocusOutcome::focused("Terminal was brought to the front."));
}

TEST_F(FocusByDevice, bringsTheApplicationForwardWhereTheTabIsMissing) {
    hostBy("com.googlecode.iterm2");
    answerScript(TerminalApp::iTerm2, "missing\n");
    machine.answers["/usr/bin/open -b com.googlecode.iterm2"] = "";
    EXPECT_EQ(focus(), FocusOutcome::instead(
                           "iTerm2 has no tab with the session's terminal; iTerm2 itself was "
                           "brought to the front."));
}

TEST_F(FocusByDevice, saysWhenTheApplicationMayNotBeControlled) {
    hostBy("com.mitchellh.ghostty");
    const auto outcome = focus();
    EXPECT_EQ(outcome.result, nothing);
    EXPECT_THAT(outcome.sentence.text(), HasSubstr("may not allow it to be controlled"));
}

TEST_F(FocusByDevice, triesEveryApplicationThatRunsWhereNoOwnerIsKnown) {
    machine.answers["/usr/bin/lsappinfo find bundleid=com.googlecode.iterm2"] = "ASN:0x0-0x1:\n";
    answerScript(TerminalApp::iTerm2, "missing\n");
    answerScript(TerminalApp::terminal, "found\n");  // not running, so not asked
    machine.answers["/usr/bin/lsappinfo find bundleid=com.mitchellh.ghostty"] = "ASN:0x0-0x2:\n";
    answerScript(TerminalApp::ghostty, "found\n");
    EXPECT_EQ(focus(), FocusOutcome::focused("Ghostty was brought to the front."));
}

TEST_F(FocusByDevice, saysWhenNoApplicationHasIt) { EXPECT_EQ(focus().result, nothing); }

TEST_F(FocusByDevice, runsNoScriptForANameThatIsNoTerminal) {
    hostBy("com.apple.Terminal", "tty\"x");
    EXPECT_EQ(focus("tty\"x").result, nothing);
    EXPECT_THAT(machine.ran, testing::Not(Contains(HasSubstr("osascript"))));
}

TEST_F(FocusByDevice, selectsTheTmuxPaneAndThenTheTerminalThatShowsIt) {
    machine.chains["ttys009"] = {{900, "tmux"}};
    machine.programs = {"tmux"};
    machine.answers[tmuxPanes] = "%0 $1 /dev/ttys008 /tmp\n%1 $1 /dev/ttys009 /Users/x/my proj\n";
    machine.answers[tmuxSelection("%1")] = "";
    machine.answers[tmuxClients] = "$1 /dev/ttys003\n";
    hostBy("com.apple.Terminal");
    answerScript(TerminalApp::terminal, "found\n");
    EXPECT_EQ(
        focus("ttys009"),
        FocusOutcome::focused("The tmux pane %1 was selected. Terminal was brought to the front."));
}

TEST_F(FocusByDevice, saysHowToAttachWhereNobodyShowsTheTmuxSession) {
    machine.chains["ttys009"] = {{900, "tmux"}};
    machine.programs = {"tmux"};
    machine.answers[tmuxPanes] = "%1 $1 /dev/ttys009 /tmp\n";
    machine.answers[tmuxSelection("%1")] = "";
    machine.answers[tmuxClients] = "";
    const auto outcome = focus("ttys009");
    EXPECT_EQ(outcome.result, instead);
    EXPECT_THAT(outcome.sentence.text(), HasSubstr("tmux attach -t '$1'"));
}

struct FocusInEditor : FocusByDevice {
    FocusInEditor() {
        hostBy("com.microsoft.VSCode");
        machine.processes["ttys003"] = {{850, 700}, {860, 850}};
        writeContents(paths.editorsDirectory() / "window-1.json",
                      R"({"hostPid":)" + std::to_string(getpid()) +
                          R"(,"appName":"Visual Studio Code","folders":["/Users/x/proj"],)"
                          R"("shellPids":[850]})");
    }
};

TEST_F(FocusInEditor, asksTheExtensionForTheShell) {
    EXPECT_EQ(focus(), FocusOutcome::focused(
                           "Visual Studio Code was asked to show the session's terminal."));
    EXPECT_EQ(machine.takenRequests, std::vector<std::string>{"{\"shellPid\":850}"});
}

TEST_F(FocusInEditor, opensTheFolderWhereNobodyTakesTheRequest) {
    machine.takesRequests = false;
    machine.answers["/usr/bin/open -b com.microsoft.VSCode /Users/x/proj"] = "";
    const auto outcome = focus();
    EXPECT_EQ(outcome.result, instead);
    EXPECT_THAT(outcome.sentence.text(), HasSubstr("/Users/x/proj was opened in it instead"));
    EXPECT_TRUE(std::filesystem::is_empty(paths.editorRequestsDirectory())) << "it may act later";
}

// The record is a file that anything of the user's may have written.
TEST_F(FocusInEditor, opensNothingThatIsNoAbsolutePath) {
    machine.takesRequests = false;
    for (const std::string target :
         {"--new-window", "https://example.org", "proj", "", "file:///Users/x/proj"}) {
        writeContents(paths.editorsDirectory() / "window-1.json",
                      R"({"hostPid":)" + std::to_string(getpid()) + R"(,"workspace":")" + target +
                          R"(","appName":"Cursor","folders":[],"shellPids":[850]})");
        machine.answers["/usr/bin/open -b com.microsoft.VSCode " + target] = "";
        EXPECT_EQ(focus().result, nothing) << target;
    }
}

TEST_F(FocusInEditor, withoutAWindowRecordPointsToTheExtension) {
    std::filesystem::remove_all(paths.editorsDirectory());
    machine.answers["/usr/bin/open -b com.microsoft.VSCode"] = "";
    const auto outcome = focus();
    EXPECT_EQ(outcome.result, instead);
    EXPECT_THAT(outcome.sentence.text(), HasSubstr("vscode:extension/tallowbrook.tallowbrook"));
}

}  // namespace
}  // namespace tallowbrook::host
