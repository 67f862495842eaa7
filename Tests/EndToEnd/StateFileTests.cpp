#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include "Support/FileContents.h"
#include "Support/WaitUntil.h"
#include "TestHome.h"

namespace tallowbrook {
namespace {

using testing::HasSubstr;

struct StateFileOfAHost : testing::Test {
    TestHome home;
    std::filesystem::path file = home.paths.home / "state.json";

    bool says(const std::string& text) const {
        return std::filesystem::exists(file) && contentsOf(file).contains(text);
    }
};

TEST_F(StateFileOfAHost, isThereWhileItWatchesAndGoneAfterwards) {
    home.claude("PermissionRequest", "S1");
    RunningProgram host{home.hostCall({"watch"})};
    waitUntil([&] { return says("\"id\":\"claudeCode|S1\""); });
    EXPECT_THAT(contentsOf(file), HasSubstr("\"reason\":\"permission\""));
    home.claude("PostToolUse", "S1");
    waitUntil([&] { return says("\"waiting\":[],\"working\":1"); });
    host.send(SIGTERM);
    EXPECT_EQ(host.wait().status, 0);
    EXPECT_FALSE(std::filesystem::exists(file));
}

TEST_F(StateFileOfAHost, thatWasKilledIsReplacedByTheNext) {
    home.claude("PermissionRequest", "S1");
    {
        RunningProgram host{home.hostCall({"watch"})};
        waitUntil([&] { return says("S1"); });
        host.send(SIGKILL);
        host.wait();
    }
    const auto left = contentsOf(file);
    RunningProgram host{home.hostCall({"watch"})};
    waitUntil([&] { return says("S1") && contentsOf(file) != left; });
}

TEST_F(StateFileOfAHost, isLeftAloneByOneThatLooksOn) {
    RunningProgram leader{home.hostCall({"watch"})};
    waitUntil([&] { return says("\"waiting\":[]"); });
    const auto written = contentsOf(file);
    EXPECT_EQ(home.host({"watch", "--once"}).status, 0);
    EXPECT_EQ(contentsOf(file), written);
}

TEST_F(StateFileOfAHost, thatCannotBeWrittenDoesNotDisturbIt) {
    std::filesystem::create_directories(file / "something");
    home.claude("PermissionRequest", "S1");
    const auto result = home.host({"watch", "--once"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(home.rows("sessions"), 1);
}

}  // namespace
}  // namespace tallowbrook
