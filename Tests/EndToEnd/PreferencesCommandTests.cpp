#include <gtest/gtest.h>

#include "TestHome.h"

namespace tallowbrook {
namespace {

bool contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

TEST(Preferences, areShownAndChanged) {
    const TestHome home;
    const ProgramResult shown = home.host({"preferences"});
    EXPECT_EQ(shown.status, 0);
    EXPECT_EQ(shown.errors, "");
    EXPECT_TRUE(contains(shown.output, "notifyOnCompletion   on ")) << shown.output;

    const ProgramResult changed = home.host({"preferences", "notifyOnCompletion", "off"});
    EXPECT_EQ(changed.status, 0);
    EXPECT_TRUE(contains(changed.output, "notifyOnCompletion   off")) << changed.output;
    EXPECT_EQ(home.host({"preferences"}), changed);
}

TEST(Preferences, decideWhatIsTold) {
    const TestHome home;
    EXPECT_EQ(home.host({"preferences", "notifyOnCompletion", "off"}).status, 0);
    home.claude("Stop", "S1");
    home.claude("PermissionRequest", "S2");
    const ProgramResult result = home.host({"watch", "--once"});
    EXPECT_FALSE(contains(result.output, "finished")) << result.output;
    EXPECT_TRUE(contains(result.output, "needs permission: proj")) << result.output;
    EXPECT_EQ(home.rows("events"), 2);
}

TEST(Preferences, areTakenUpByAHostThatWatches) {
    const TestHome home;
    RunningProgram host{home.hostCall({"watch"})};
    ASSERT_TRUE(host.waitForOutput("No sessions to show."));
    EXPECT_EQ(home.host({"preferences", "notifyOnCompletion", "off"}).status, 0);
    home.claude("Stop", "S1");
    home.claude("PermissionRequest", "S2");
    EXPECT_TRUE(host.waitForOutput("needs permission: proj"));
    EXPECT_FALSE(contains(host.output(), "finished")) << host.output();
}

TEST(Preferences, thatAreWrongChangeNothing) {
    const TestHome home;
    const ProgramResult before = home.host({"preferences"});
    EXPECT_EQ(home.host({"preferences", "enabled", "maybe"}),
              (ProgramResult{.status = 2,
                             .errors = "tallowbrook: \"maybe\" is no value for enabled. Nothing "
                                       "was changed.\n"}));
    EXPECT_EQ(home.host({"preferences", "volume", "on"}),
              (ProgramResult{.status = 2,
                             .errors = "tallowbrook: There is no preference named \"volume\". "
                                       "Nothing was changed.\n"}));
    EXPECT_EQ(home.host({"preferences", "enabled"}).status, 2);
    EXPECT_EQ(home.host({"preferences", "enabled", "on", "off"}).status, 2);
    EXPECT_EQ(home.host({"preferences"}), before);
}

}  // namespace
}  // namespace tallowbrook
