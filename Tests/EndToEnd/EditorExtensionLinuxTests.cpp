#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "EditorWindowProgram.h"
#include "SetupHome.h"
#include "Support/WaitUntil.h"
#include "Terminal/EditorBridge.h"

namespace tallowbrook {
namespace {

using testing::HasSubstr;
using testing::Not;

// A shell that says who it is and then waits, as one does in an editor's terminal.
struct Shell {
    explicit Shell(const std::filesystem::path& directory, const std::string& script = "read line")
        : program{{.program = "/bin/sh",
                   .arguments = {"-c", "echo $$; " + script},
                   .inputStaysOpen = true,
                   .directory = directory}} {
        EXPECT_TRUE(program.waitForOutput("\n"));
        pid = std::stoi(program.output());
    }
    RunningProgram program;
    pid_t pid = 0;
};

struct FocusInEditor : testing::Test {
    // An agent is a program of its name; this one ends with its standard input.
    SetupHome home;
    std::filesystem::path project = home.directory.path / "project";

    void SetUp() override {
        if (const auto obstacle = EditorWindowProgram::obstacle(); !obstacle.empty())
            GTEST_SKIP() << obstacle;
        home.environment["PATH"] = "/nowhere";  // no tmux of the machine's own
        std::filesystem::create_directory(project);
        AgentEvent event = currentEvent("S1");
        event.cwd = project;
        std::filesystem::create_directories(home.paths.spoolDirectory());
        home.spool(event);
        ASSERT_EQ(run(home.plainHostCall({"watch", "--once"})).status, 0);
    }

    void waitForShells(std::size_t count) const {
        waitUntil([&] {
            const auto found = EditorBridge::windows(home.paths.editorsDirectory());
            return !found.empty() && found.front().shellPids.size() == count;
        });
    }

    void expectThatFocusShows(EditorWindowProgram& window, const Shell& shell) const {
        const auto result = run(home.plainHostCall({"focus", "S1"}));
        EXPECT_EQ(result.status, 0) << result.errors;
        EXPECT_THAT(result.output, HasSubstr("was asked to show the session's terminal"));
        EXPECT_TRUE(window.program.waitForOutput("shown " + std::to_string(shell.pid) + "\n"));
    }
};

TEST_F(FocusInEditor, showsTheTerminalWhoseShellIsInTheSessionsDirectory) {
    const Shell elsewhere{home.directory.path};
    const Shell shell{project};
    EditorWindowProgram window{home.environment, {elsewhere.pid, shell.pid}};
    waitForShells(2);
    expectThatFocusShows(window, shell);
}

TEST_F(FocusInEditor, ofSeveralTerminalsThereShowsTheOneWithTheAgent) {
    std::filesystem::copy_file("/bin/cat", home.directory.path / "claude");
    const Shell beside{project};
    const Shell shell{project, (home.directory.path / "claude").string() + "; read line"};
    EditorWindowProgram window{home.environment, {beside.pid, shell.pid}};
    waitForShells(2);
    expectThatFocusShows(window, shell);
}

TEST_F(FocusInEditor, findsTheAgentWhereItsShellHasStayedElsewhere) {
    std::filesystem::copy_file("/bin/cat", home.directory.path / "claude");
    const Shell shell{home.directory.path, "(cd " + project.string() + " && ../claude); read line"};
    EditorWindowProgram window{home.environment, {shell.pid}};
    waitForShells(1);
    expectThatFocusShows(window, shell);
}

TEST_F(FocusInEditor, isToldToTheEditorAlsoWhereItsWindowOpensLater) {
    const Shell shell{project};
    AgentEvent event = currentEvent("S1");
    event.cwd = project;
    event.category = EventCategory::attentionRequested;
    event.attention = AttentionKind::permission;
    home.spool(event);
    RunningProgram host{home.plainHostCall({"watch"})};
    const auto file = home.paths.home / "state.json";
    waitUntil([&] { return std::filesystem::exists(file); });
    EXPECT_THAT(contentsOf(file), Not(HasSubstr("shellPid")));
    EditorWindowProgram window{home.environment, {shell.pid}};
    waitUntil(
        [&] { return contentsOf(file).contains("\"shellPid\":" + std::to_string(shell.pid)); });
}

TEST_F(FocusInEditor, isMissedByTheReportWhereSessionsRunWithoutTheExtension) {
    std::filesystem::copy_file("/bin/cat", home.directory.path / "claude");
    // An editor by its name alone: a shell whose child is the agent.
    std::filesystem::copy_file("/bin/sh", home.directory.path / "cursor");
    RunningProgram cursor{{.program = home.directory.path / "cursor",
                           .arguments = {"-c", "echo up; ../claude; :"},
                           .inputStaysOpen = true,
                           .directory = project}};
    ASSERT_TRUE(cursor.waitForOutput("up\n"));
    const auto expected = "Cursor: extension missing, sessions in it · see setup --editors\n";
    waitUntil([&] { return run(home.plainHostCall({"doctor"})).output.contains(expected); });
    std::filesystem::create_directories(home.user / ".cursor" / "extensions" /
                                        "tallowbrook.tallowbrook-0.1.0");
    EXPECT_THAT(run(home.plainHostCall({"doctor"})).output,
                HasSubstr("Cursor: extension installed\n"));
}

}  // namespace
}  // namespace tallowbrook
