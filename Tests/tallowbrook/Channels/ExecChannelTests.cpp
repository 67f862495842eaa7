#include "Channels/ExecChannel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <boost/json/parse.hpp>
#include <sstream>

#include "ChannelLoop.h"
#include "Support/FileContents.h"
#include "Support/RepeatedText.h"
#include "Support/TemporaryDirectory.h"

namespace tallowbrook::host {
namespace {

using Kind = ChannelEvent::Kind;
using Events = std::vector<ChannelEvent>;
using Texts = std::vector<std::string>;

// The channel, with programs of the test's in a directory of its own.
struct Exec : testing::Test {
    TemporaryDirectory directory;
    std::string command;
    Texts said;
    std::chrono::milliseconds timeout = std::chrono::minutes{1};

    std::string file(const std::string& name) const { return directory.path / name; }

    Channel channel() {
        return makeExecChannel(
            {.command = [this] { return command; },
             .say = [this](const Sentence& sentence) { said.push_back(sentence.text()); },
             .timeout = timeout});
    }

    // What becomes of these deliveries, numbered from 1.
    Events tell(const std::vector<NotificationContent>& contents) {
        const auto channel = this->channel();
        for (std::size_t i = 0; i < contents.size(); ++i)
            channel.begin({static_cast<std::int64_t>(i + 1), contents[i]});
        return eventsOf(channel, contents.size());
    }

    static NotificationContent content(const std::string& body = "proj — waiting.") {
        return {.kind = NotificationKind::attention,
                .title = "Claude Code needs permission",
                .body = body,
                .sessionStorageID = "claudeCode|S1",
                .eventID = {},
                .dedupeKey = "claudeCode|S1|attention",
                .playSound = true};
    }
};

TEST_F(Exec, givesTheProgramTheNotificationAsJSON) {
    command = "cat > " + file("heard");
    EXPECT_EQ(tell({content()}), (Events{{Kind::handedOver, 1}}));
    const auto text = contentsOf(file("heard"));
    EXPECT_EQ(std::ranges::count(text, '\n'), 1);
    auto heard = boost::json::parse(text).as_object();
    EXPECT_TRUE(heard["at"].is_string());
    heard.erase("at");
    EXPECT_EQ(heard, boost::json::parse(
                         R"({"schema":1,"id":1,"kind":"attention","sound":true,)"
                         R"("title":"Claude Code needs permission","body":"proj — waiting.",)"
                         R"("session":"claudeCode|S1"})"));
    EXPECT_TRUE(said.empty());
}

TEST_F(Exec, keepsEveryTextWhole) {
    command = "cat > " + file("heard");
    for (const auto& body :
         {std::string{"<b>&amp;\"'`$(reboot)\\"}, std::string{"😀\x1b]0;x\x07\r\n\t"},
          std::string("a\0b", 3), repeated("0123456789", 1024)}) {
        EXPECT_EQ(tell({content(body)}), (Events{{Kind::handedOver, 1}}));
        const auto heard = boost::json::parse(contentsOf(file("heard")));
        EXPECT_EQ(heard.at("body").as_string(), body);
    }
}

TEST_F(Exec, runsOneProgramAtATimeInTheOrderOfTheNotifications) {
    command = "mkdir " + file("lock") + " || exit 9; cat >> " + file("heard") +
              "; sleep 0.02; rmdir " + file("lock");
    EXPECT_EQ(tell({content("1"), content("2"), content("3")}),
              (Events{{Kind::handedOver, 1}, {Kind::handedOver, 2}, {Kind::handedOver, 3}}));
    std::string order;
    std::istringstream lines{contentsOf(file("heard"))};
    for (std::string line; std::getline(lines, line);)
        order += boost::json::parse(line).at("body").as_string();
    EXPECT_EQ(order, "123");
}

TEST_F(Exec, doesNotRepeatWhatFailedForGood) {
    command = "exit 3";
    EXPECT_EQ(tell({content()}), (Events{{Kind::refused, 1}}));
    EXPECT_EQ(said, Texts{"The program of the preference exec could not tell you: it ended with "
                          "status 3."});
}

TEST_F(Exec, triesAgainWhereTheProgramAsksForIt) {
    command = "exit 75";
    EXPECT_EQ(tell({content()}), (Events{{Kind::failed, 1}}));
}

TEST_F(Exec, saysWhyOnceForAsLongAsItLasts) {
    command = "/nowhere/push";
    EXPECT_EQ(tell({content(), content(), content()}),
              (Events{{Kind::refused, 1}, {Kind::refused, 2}, {Kind::refused, 3}}));
    EXPECT_EQ(said, Texts{"The program of the preference exec could not tell you: it was not found "
                          "(status 127)."});
}

TEST_F(Exec, endsAProgramThatHangs) {
    timeout = std::chrono::milliseconds{100};
    command = "sleep 1000";
    EXPECT_EQ(tell({content()}), (Events{{Kind::refused, 1}}));
    EXPECT_EQ(said, Texts{"The program of the preference exec could not tell you: it did not end "
                          "in time."});
}

TEST_F(Exec, isHarmedByNoProgram) {
    for (const auto& [what, becomes] :
         {std::pair{"exit 0", Kind::handedOver},                     // leaves its input alone
          std::pair{"head -c 1000000 /dev/zero", Kind::handedOver},  // floods its output
          std::pair{"exec >&- 2>&- <&-", Kind::handedOver},
          std::pair{"kill -KILL $$", Kind::refused},
          std::pair{"sleep 3 & exit 0", Kind::handedOver}}) {
        command = what;
        EXPECT_EQ(tell({content(repeated("x", 10240))}), (Events{{becomes, 1}})) << what;
    }
}

TEST_F(Exec, isNotUsableWithoutACommand) {
    EXPECT_FALSE(channel().state().isUsable);
    EXPECT_EQ(tell({content()}), (Events{{Kind::refused, 1}}));
    command = "true";
    EXPECT_TRUE(channel().state().isUsable);
    EXPECT_EQ(channel().state().reason, "runs true");
}

}  // namespace
}  // namespace tallowbrook::host
