// `watch --json`: what programs are given.
#include <gtest/gtest.h>

#include <boost/json/parse.hpp>
#include <csignal>

#include "TestHome.h"

namespace tallowbrook {
namespace {

std::vector<boost::json::object> objects(const std::string& lines) {
    std::vector<boost::json::object> parsed;
    std::size_t begin = 0;
    for (std::size_t end; (end = lines.find('\n', begin)) != std::string::npos; begin = end + 1)
        parsed.push_back(boost::json::parse(lines.substr(begin, end - begin)).as_object());
    EXPECT_EQ(begin, lines.size());
    return parsed;
}

TEST(WatchJSON, isAnObjectForEachNotificationAndEachChangeOfASession) {
    const TestHome home;
    home.claude("UserPromptSubmit");
    RunningProgram host{home.hostCall({"watch", "--json"})};
    ASSERT_TRUE(host.waitForOutput("\"working\""));
    home.claude("PermissionRequest");
    ASSERT_TRUE(host.waitForOutput("\"status\":\"needsAttention\""));
    host.send(SIGTERM);
    const auto result = host.wait();
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");

    const auto lines = objects(result.output);
    ASSERT_EQ(lines.size(), 3U) << result.output;
    for (const auto& line : lines) EXPECT_EQ(line.at("schema"), 1);
    EXPECT_EQ(lines[0].at("event"), "session");
    EXPECT_EQ(lines[0].at("status"), "working");
    EXPECT_EQ(lines[1].at("event"), "notification");
    EXPECT_EQ(lines[1].at("kind"), "attention");
    EXPECT_EQ(lines[1].at("session"), "claudeCode|S1");
    EXPECT_EQ(lines[2].at("event"), "session");
    EXPECT_EQ(lines[2].at("id"), "claudeCode|S1");
    EXPECT_EQ(lines[2].at("status"), "needsAttention");
}

TEST(WatchJSON, ofAnOnlookerIsTheSame) {
    const TestHome home;
    RunningProgram leader{home.hostCall({"watch"})};
    ASSERT_TRUE(leader.waitForOutput("No sessions"));
    RunningProgram onlooker{home.hostCall({"watch", "--json"})};
    ASSERT_TRUE(onlooker.waitForErrors("Another host watches this home already"));
    home.claude("PermissionRequest");
    EXPECT_TRUE(onlooker.waitForOutput("\"event\":\"notification\""));
    EXPECT_TRUE(onlooker.waitForOutput("\"event\":\"session\""));
}

TEST(WatchJSON, isRefusedTogetherWithOnePass) {
    const TestHome home;
    EXPECT_EQ(home.host({"watch", "--once", "--json"}).status, 2);
}

}  // namespace
}  // namespace tallowbrook
