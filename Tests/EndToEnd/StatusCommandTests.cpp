#include <gtest/gtest.h>

#include <boost/json/parse.hpp>

#include "TestHome.h"

namespace tallowbrook {
namespace {

ProgramResult printing(std::string output) { return {.status = 0, .output = std::move(output)}; }

// One session that waits and one that works, both taken in.
void makeSessions(const TestHome& home) {
    home.claude("PermissionRequest", "asking");
    home.claude("UserPromptSubmit", "busy");
    EXPECT_EQ(home.host({"watch", "--once"}).status, 0);
}

TEST(Status, tellsWhoWaitsAndWhoWorks) {
    const TestHome home;
    makeSessions(home);
    const auto shown = home.host({"status"});
    EXPECT_EQ(shown.status, 0);
    EXPECT_EQ(shown.output,
              "1 session waits for you, 1 works.\n"
              "  1  proj #1                      needs permission (Bash), <1 min\n"
              "No host runs, so nobody is told: \"tallowbrook watch\" is one.\n");
    EXPECT_EQ(home.host({"status", "--short"}), printing("1 waiting, 1 working\n"));
}

TEST(Status, ofAHomeWithoutADatabaseIsThatNothingWaitsAndNothingIsMade) {
    const TestHome home;
    EXPECT_EQ(home.host({"status", "--short"}), printing("nothing waiting\n"));
    EXPECT_EQ(home.host({"status"}),
              printing("No session waits for you.\n"
                       "No host runs, so nobody is told: \"tallowbrook watch\" is one.\n"));
    EXPECT_FALSE(exists(home.paths.home));
}

TEST(Status, leavesTheSpoolAloneAndSaysSo) {
    const TestHome home;
    makeSessions(home);
    home.claude("Stop", "busy");
    EXPECT_EQ(home.host({"status", "--short"}), printing("1 waiting, 1 working\n"));
    EXPECT_NE(home.host({"status"}).output.find("Newer events are not counted"), std::string::npos);
    EXPECT_EQ(home.spooled().size(), 1U);
}

TEST(Status, isGivenInTheFormThatABarTakes) {
    const TestHome home;
    makeSessions(home);
    EXPECT_EQ(home.host({"status", "--format", "tmux"}),
              printing("#[fg=magenta]1 waiting: proj ##1#[default], "
                       "#[fg=cyan]1 working#[default]\n"));
    EXPECT_EQ(home.host({"status", "--format", "{waiting}/{working}/{failed} {project}"}),
              printing("1/1/0 proj #1\n"));

    const auto waybar = boost::json::parse(home.host({"status", "--format", "waybar"}).output);
    EXPECT_EQ(waybar.at("text").as_string(), "1 waiting, 1 working");
    EXPECT_EQ(waybar.at("tooltip").as_string(),
              "proj #1: needs permission (Bash), &lt;1 min\nproj #2: working, &lt;1 min");
    EXPECT_EQ(waybar.at("class").as_string(), "waiting");

    const auto json = boost::json::parse(home.host({"status", "--format", "json"}).output);
    EXPECT_EQ(json.at("schema").as_int64(), 1);
    EXPECT_EQ(json.at("waiting").as_int64(), 1);
    EXPECT_FALSE(json.at("hostRuns").as_bool());
}

TEST(Status, asAMenuLeadsToTheSessionThatIsClicked) {
    const TestHome home;
    makeSessions(home);
    const auto menu = home.host({"status", "--format", "xbar"}).output;
    EXPECT_EQ(menu.substr(0, menu.find('\n')), "1 waiting, 1 working");
    EXPECT_NE(menu.find("\n---\nneeds permission (Bash), <1 min · proj #1 | bash=\""),
              std::string::npos)
        << menu;
    EXPECT_NE(menu.find("param1=\"--home\" param2=\"" + home.paths.home.string() +
                        "\" param3=\"focus\" param4=\"asking\" terminal=false"),
              std::string::npos)
        << menu;
}

TEST(Status, showsNoBarAnythingOfASessionThatPosesAsSomethingElse) {
    const TestHome home;
    AgentEvent event = currentEvent("asking\" bash=\"evil");
    event.eventType = "PermissionRequest";
    event.category = EventCategory::attentionRequested;
    event.attention = AttentionKind::permission;
    event.cwd = "/Users/x/#(evil) <b>a|b";
    home.spool(event);
    EXPECT_EQ(home.host({"watch", "--once"}).status, 0);
    EXPECT_NE(home.host({"status", "--format", "tmux"}).output.find("##(evil) <b>a|b"),
              std::string::npos);
    const auto waybar = home.host({"status", "--format", "waybar"}).output;
    EXPECT_NE(waybar.find("#(evil) &lt;b&gt;a|b"), std::string::npos) << waybar;
    const auto menu = home.host({"status", "--format", "xbar"}).output;
    EXPECT_NE(menu.find("#(evil) <b>a¦b | emojize=false"), std::string::npos) << menu;
    EXPECT_EQ(menu.find("bash="), std::string::npos) << menu;
}

TEST(Status, refusesAFormatThatThereIsNot) {
    const TestHome home;
    for (const auto& [format, reason] :
         {std::pair{"polybar", "There is no format \"polybar\""},
          std::pair{"{sessions}", "{sessions}"}, std::pair{"{waiting", "no end"}}) {
        const auto refused = home.host({"status", "--format", format});
        EXPECT_EQ(refused.status, 2) << format;
        EXPECT_EQ(refused.output, "") << format;
        EXPECT_NE(refused.errors.find(reason), std::string::npos) << refused.errors;
    }
}

}  // namespace
}  // namespace tallowbrook
