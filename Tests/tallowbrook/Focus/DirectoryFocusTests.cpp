#include "Focus/DirectoryFocus.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "Focus/FakeFocusOperations.h"
#include "Support/FileContents.h"
#include "Support/TemporaryDirectory.h"

namespace tallowbrook::host {
namespace {

using testing::HasSubstr;
using enum FocusOutcome::Result;

struct FocusByDirectory : testing::Test {
    TemporaryDirectory directory;
    TallowbrookPaths paths{directory.path};
    FakeMachine machine;
    std::string agentDevicePath;
    std::map<std::string, std::vector<pid_t>> families;
    std::vector<std::string> opened;

    FocusByDirectory() { machine.programs = {"tmux"}; }

    FocusOutcome focus(const std::string& place = "/src/proj") {
        const auto operations = machine.operations();
        const auto open = [this](const EditorWindow& window, const std::string& target) {
            opened.push_back(window.appName + " " + target);
            return true;
        };
        return DirectoryFocus{
            operations, EditorFocus{paths, operations, open},
            [this](const std::string& devicePath) { return devicePath == agentDevicePath; },
            [this](const std::string& project) { return families[project]; }}
            .focus(place);
    }

    void addWindow(const std::string& name, const std::string& folder, pid_t shell) {
        writeContents(paths.editorsDirectory() / ("window-" + name + ".json"),
                      R"({"hostPid":)" + std::to_string(getpid()) + R"(,"appName":")" + name +
                          R"(","folders":[")" + folder + R"("],"shellPids":[)" +
                          std::to_string(shell) + "]}");
    }
};

TEST_F(FocusByDirectory, selectsTheOnePaneThatWorksThere) {
    machine.answers[tmuxPanes] = "%0 $0 /dev/pts/1 /src\n%1 $0 /dev/pts/2 /src/proj\n";
    machine.answers[tmuxSelection("%1")] = "";
    machine.answers[tmuxClients] = "$0 /dev/pts/0\n";
    EXPECT_EQ(focus(), FocusOutcome::focused("The tmux pane %1 was selected."));
}

TEST_F(FocusByDirectory, switchesAClientOfAnotherSessionToThePane) {
    machine.answers[tmuxPanes] = "%1 $1 /dev/pts/2 /src/proj\n";
    machine.answers[tmuxSelection("%1")] = "";
    machine.answers[tmuxClients] = "$0 /dev/pts/0\n";
    machine.answers["/bin/tmux -u switch-client -c /dev/pts/0 -t %1"] = "";
    EXPECT_EQ(focus().result, focused);
}

TEST_F(FocusByDirectory, ofSeveralPanesTakesTheOneWithTheAgent) {
    machine.answers[tmuxPanes] = "%0 $0 /dev/pts/1 /src/proj\n%1 $0 /dev/pts/2 /src/proj\n";
    machine.answers[tmuxSelection("%1")] = "";
    machine.answers[tmuxClients] = "$0 /dev/pts/0\n";
    agentDevicePath = "/dev/pts/2";
    EXPECT_EQ(focus(), FocusOutcome::focused("The tmux pane %1 was selected."));
}

TEST_F(FocusByDirectory, choosesNoneOfSeveral) {
    machine.answers[tmuxPanes] = "%0 $0 /dev/pts/1 /src/proj\n%1 $0 /dev/pts/2 /src/proj\n";
    EXPECT_EQ(focus(), FocusOutcome::nothing(
                           "2 tmux panes and editor windows work in /src/proj; none was chosen."));
}

TEST_F(FocusByDirectory, countsAPaneOnceThatSeveralSessionsShare) {
    machine.answers[tmuxPanes] = "%1 $0 /dev/pts/2 /src/proj\n%1 $1 /dev/pts/2 /src/proj\n";
    machine.answers[tmuxSelection("%1")] = "";
    machine.answers[tmuxClients] = "$0 /dev/pts/0\n";
    EXPECT_EQ(focus(), FocusOutcome::focused("The tmux pane %1 was selected."));
}

TEST_F(FocusByDirectory, saysWhenNothingWorksThere) {
    machine.answers[tmuxPanes] = "%0 $0 /dev/pts/1 /src\n";
    EXPECT_EQ(focus(),
              FocusOutcome::nothing("No tmux pane and no editor window works in /src/proj."));
    machine.programs.clear();
    EXPECT_EQ(focus().result, nothing);
}

TEST_F(FocusByDirectory, asksTheEditorWhoseShellIsThere) {
    addWindow("Cursor", "/src/other", 850);
    addWindow("VSCodium", "/src/proj", 900);
    machine.directories[850] = "/src/proj";
    EXPECT_EQ(focus(), FocusOutcome::focused("Cursor was asked to show the session's terminal."));
    EXPECT_EQ(machine.takenRequests, std::vector<std::string>{"{\"shellPid\":850}"});
}

TEST_F(FocusByDirectory, ofSeveralShellsThereAsksForTheOneWithTheAgent) {
    addWindow("Cursor", "/src/proj", 850);
    addWindow("VSCodium", "/src/proj", 900);
    machine.directories[850] = "/src/proj";
    families["/src/proj"] = {901, 900, 12};
    EXPECT_EQ(focus(), FocusOutcome::focused("VSCodium was asked to show the session's terminal."));
    EXPECT_EQ(machine.takenRequests, std::vector<std::string>{"{\"shellPid\":900}"});
}

TEST_F(FocusByDirectory, choosesNoneOfSeveralShellsWithAnAgent) {
    addWindow("Cursor", "/src/proj", 850);
    addWindow("VSCodium", "/src/proj", 900);
    families["/src/proj"] = {901, 900, 851, 850};
    EXPECT_EQ(focus().result, nothing);
    EXPECT_TRUE(machine.takenRequests.empty());
}

TEST_F(FocusByDirectory, opensTheEditorWhoseFolderHoldsIt) {
    addWindow("Cursor", "/src", 850);
    const auto outcome = focus();
    EXPECT_EQ(outcome.result, instead);
    EXPECT_EQ(opened, std::vector<std::string>{"Cursor /src"});
}

TEST_F(FocusByDirectory, takesNoFolderForOneThatItsNameBeginsWith) {
    addWindow("Cursor", "/src/pro", 850);
    EXPECT_EQ(focus().result, nothing);
}

TEST(EditorNamed, isFoundByWhatTheEditorCallsItself) {
    EXPECT_EQ(editorNamed("Visual Studio Code").name, "VS Code");
    EXPECT_EQ(editorNamed("Visual Studio Code - Insiders").name, "VS Code Insiders");
    EXPECT_EQ(editorNamed("Cursor").name, "Cursor");
    EXPECT_EQ(editorNamed("VSCodium").name, "VSCodium");
    EXPECT_EQ(editorNamed("something").name, "VS Code");
}

}  // namespace
}  // namespace tallowbrook::host
