#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>

#include "EditorWindowProgram.h"
#include "SetupHome.h"
#include "Support/WaitUntil.h"
#include "Terminal/EditorBridge.h"

namespace tallowbrook {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

struct EditorExtension : testing::Test {
    // With the standard home, since the extension knows no other.
    SetupHome home;

    void SetUp() override {
        if (const auto obstacle = EditorWindowProgram::obstacle(); !obstacle.empty())
            GTEST_SKIP() << obstacle;
        ASSERT_TRUE(TallowbrookPaths::ensureDirectory(home.paths.home));
    }

    std::vector<EditorWindow> windows() const {
        return EditorBridge::windows(home.paths.editorsDirectory());
    }

    void waitForShells(const std::vector<pid_t>& shells) const {
        waitUntil([&] {
            const auto found = windows();
            return !found.empty() && found.front().shellPids == shells;
        });
    }
};

TEST_F(EditorExtension, publishesAWindowThatTheLibraryReads) {
    const EditorWindowProgram window{home.environment, {4242, 4243}};
    waitForShells({4242, 4243});
    EXPECT_EQ(windows().front().appName, "Visual Studio Code");
    EXPECT_THAT(windows().front().folders, ElementsAre(std::filesystem::current_path().string()));
    for (const auto& file : std::filesystem::directory_iterator{home.paths.editorsDirectory()})
        EXPECT_EQ(file.status().permissions() & std::filesystem::perms{0077},
                  std::filesystem::perms::none)
            << file.path();
}

TEST_F(EditorExtension, showsTheTerminalThatTheLibraryAsksFor) {
    EditorWindowProgram window{home.environment, {4242, 4243}};
    waitForShells({4242, 4243});
    const auto request =
        EditorBridge::requestTerminal(4243, home.paths.editorRequestsDirectory(), currentInstant());
    ASSERT_TRUE(request);
    EXPECT_TRUE(window.program.waitForOutput("shown 4243\n"));
    EXPECT_FALSE(std::filesystem::exists(*request));
}

TEST_F(EditorExtension, leavesARequestForAShellThatItDoesNotHave) {
    EditorWindowProgram window{home.environment, {4242}};
    waitForShells({4242});
    const auto& requests = home.paths.editorRequestsDirectory();
    const auto foreign = EditorBridge::requestTerminal(4243, requests, currentInstant());
    ASSERT_TRUE(foreign);
    ASSERT_TRUE(EditorBridge::requestTerminal(4242, requests, currentInstant()));
    EXPECT_TRUE(window.program.waitForOutput("shown 4242\n"));
    EXPECT_TRUE(std::filesystem::exists(*foreign));
}

TEST_F(EditorExtension, isNotAskedAnyMoreWhenItsWindowWasKilled) {
    EditorWindowProgram window{home.environment, {4242}};
    waitForShells({4242});
    window.program.send(SIGKILL);
    window.program.wait();
    EXPECT_TRUE(windows().empty());
}

}  // namespace
}  // namespace tallowbrook
