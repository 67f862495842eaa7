#include "DirectoryFocus.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "FakeFocusOperations.h"
#include "Support/FileContents.h"
#include "Support/TemporaryDirectory.h"

namespace tallowbrook::host {
namespace {

using testing::HasSubstr;
using enum FocusOutcome::Result;

const std::string listPanes =
    "/bin/tmux -u list-panes -a -F #{pane_id} #{session_id} #{pane_tty} #{pane_current_path}";
const std::string listClients = "/bin/tmux -u list-clients -F #{session_id} #{client_tty}";

std::string selection(const std::string& pane) {
    return "/bin/tmux -u select-window -t " + pane + " ; select-pane -t " + pane;
}

struct FocusByDirectory : testing::Test {
    TemporaryDirectory directory;
    TallowbrookPaths paths{directory.path};
    FakeMachine machine;
    std::string agentTerminal;
    std::vector<std::string> opened;

    FocusByDirectory() { machine.programs = {"tmux"}; }

    FocusOutcome focus(const std::string& place = "/src/proj") {
        const auto operations = machine.operations();
        const auto open = [this](const EditorWindow& window, const std::string& target) {
            opened.push_back(window.appName + " " + target);
            return true;
        };
        return DirectoryFocus{operations, EditorFocus{paths, operations, open},
                              [this](const std::string& tty) { return tty == agentTerminal; }}
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
    machine.answers[listPanes] = "%0 $0 /dev/pts/1 /src\n%1 $0 /dev/pts/2 /src/proj\n";
    machine.answers[selection("%1")] = "";
    machine.answers[listClients] = "$0 /dev/pts/0\n";
    EXPECT_EQ(focus(), FocusOutcome::focused("The tmux pane %1 was selected."));
}

TEST_F(FocusByDirectory, switchesAClientOfAnotherSessionToThePane) {
    machine.answers[listPanes] = "%1 $1 /dev/pts/2 /src/proj\n";
    machine.answers[selection("%1")] = "";
    machine.answers[listClients] = "$0 /dev/pts/0\n";
    machine.answers["/bin/tmux -u switch-client -c /dev/pts/0 -t %1"] = "";
    EXPECT_EQ(focus().result, focused);
}

TEST_F(FocusByDirectory, ofSeveralPanesTakesTheOneWithTheAgent) {
    machine.answers[listPanes] = "%0 $0 /dev/pts/1 /src/proj\n%1 $0 /dev/pts/2 /src/proj\n";
    machine.answers[selection("%1")] = "";
    machine.answers[listClients] = "$0 /dev/pts/0\n";
    agentTerminal = "/dev/pts/2";
    EXPECT_EQ(focus(), FocusOutcome::focused("The tmux pane %1 was selected."));
}

TEST_F(FocusByDirectory, choosesNoneOfSeveral) {
    machine.answers[listPanes] = "%0 $0 /dev/pts/1 /src/proj\n%1 $0 /dev/pts/2 /src/proj\n";
    EXPECT_EQ(focus(), FocusOutcome::nothing(
                           "2 tmux panes and editor windows work in /src/proj; none was chosen."));
}

TEST_F(FocusByDirectory, saysWhenNothingWorksThere) {
    machine.answers[listPanes] = "%0 $0 /dev/pts/1 /src\n";
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
