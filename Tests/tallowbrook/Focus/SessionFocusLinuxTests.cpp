#include <gtest/gtest.h>
#include <unistd.h>

#include "Focus/FakeFocusOperations.h"
#include "Focus/SessionFocus.h"
#include "Support/FileContents.h"
#include "Support/SampleEvents.h"
#include "Support/TemporaryDirectory.h"

namespace tallowbrook::host {
namespace {

TEST(FocusOnLinux, opensAFolderByAURLWhateverItIsCalled) {
    struct Row {
        std::string folder;
        std::string path;
    };
    for (const auto& [folder, path] : {
             Row{"/src/Proj-1_a.b~", "/src/Proj-1_a.b~"},
             Row{"/src/c#", "/src/c%23"},
             Row{"/src/50% a?", "/src/50%25%20a%3F"},
             Row{"/src/\u00FC", "/src/%C3%BC"},
         }) {
        const TemporaryDirectory directory;
        const TallowbrookPaths paths{directory.path};
        writeContents(paths.editorsDirectory() / "window-1.json",
                      R"({"hostPid":)" + std::to_string(getpid()) +
                          R"(,"appName":"Cursor","folders":[")" + folder + R"("],"shellPids":[]})");
        FakeMachine machine;
        machine.programs = {"xdg-open"};
        const auto line = "/bin/xdg-open cursor://file" + path;
        machine.answers[line] = "";
        AgentEvent event = minimalEvent();
        event.cwd = folder;
        const auto session = SessionSnapshot::initial({Provider::claudeCode, "S1"}, event);
        EXPECT_EQ(focusSession(session, paths, machine.operations()).result,
                  FocusOutcome::Result::instead);
        EXPECT_EQ(machine.ran, std::vector<std::string>{line});
    }
}

}  // namespace
}  // namespace tallowbrook::host
