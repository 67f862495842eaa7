#include <gtest/gtest.h>

#include <array>

#include "TestHome.h"

namespace tallowbrook {
namespace {

bool contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

TEST(Preferences, areShownAndChanged) {
    const TestHome home;
    const std::string before =
        "enabled              on           notifications at all\n"
        "paused               off          hold them back for now\n"
        "notifyOnAttention    on           when a session needs permission or input\n"
        "notifyOnCompletion   on           when a turn completes\n"
        "notifyOnFailure      on           when a turn fails\n"
        "quietHours           off          tell nothing in these hours, such as 22:00-07:00\n"
        "dedupeInterval       1            seconds in which the same is told once\n"
        "maxEventAge          600          seconds after which an event is too old to tell\n"
        "playSound            on           with a sound\n"
        "completionAfter      20           seconds from which on a turn is told as finished\n"
        "reminderInterval     10           minutes of waiting after which you are reminded: off, "
        "5, 10, 15 or 30\n"
        "channels             auto         where you are told: auto, or such as desktop,lines\n"
        "exec                 off          run this command too, with the notification as JSON\n"
        "tellWhileLooking     off          also of a session that you look at\n";
    EXPECT_EQ(home.host({"preferences"}), (ProgramResult{.status = 0, .output = before}));

    auto after = before;
    for (const auto& [name, former, value] :
         {std::array{"quietHours", "off        ", "22:15-06:45"},
          std::array{"reminderInterval", "10", "30"}, std::array{"playSound", "on ", "off"}}) {
        const auto place = after.find(former, after.find(name));
        after.replace(place, std::string{former}.size(), value);
        const auto changed = home.host({"preferences", name, value});
        EXPECT_EQ(changed.status, 0);
        // Quiet hours are told of in other words while they last.
        EXPECT_EQ(changed.output.substr(0, after.size()), after);
        EXPECT_EQ(home.host({"preferences"}), changed);
    }
}

TEST(Preferences, thatMuteSaySo) {
    const TestHome home;
    const auto said = [&](const std::string& name, const std::string& value) {
        const auto result = home.host({"preferences", name, value});
        EXPECT_EQ(result.status, 0);
        const auto& output = result.output;
        // Behind the last row.
        return output.substr(output.find("that you look at\n") + 17);
    };
    EXPECT_EQ(said("paused", "on"),
              "Nothing is told, as \"paused\" is on (tallowbrook preferences paused off).\n");
    EXPECT_EQ(said("paused", "off"), "");
    EXPECT_EQ(said("notifyOnCompletion", "off"), "Not told: completed turns.\n");
    EXPECT_EQ(home.host({"preferences"}).output.substr(0, 8), "enabled ");
}

TEST(Preferences, thatWouldMuteEverythingUnnoticedAreRefused) {
    const TestHome home;
    EXPECT_EQ(home.host({"preferences", "maxEventAge", "0"}),
              (ProgramResult{.status = 2,
                             .errors = "tallowbrook: With maxEventAge 0 nothing would ever be "
                                       "told, since every event is older by the time it comes. "
                                       "\"enabled off\" switches notifications off. Nothing was "
                                       "changed.\n"}));
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
