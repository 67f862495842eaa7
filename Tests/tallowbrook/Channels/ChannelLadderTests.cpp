#include "Channels/ChannelLadder.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "FakeChannel.h"

namespace tallowbrook::host {
namespace {

using Names = std::vector<std::string>;

struct Choosing : testing::Test {
    FakeChannel lines;
    FakeChannel desktop;
    FakeChannel terminal;

    std::vector<Channel> channels() const {
        desktop.state->isRung = terminal.state->isRung = true;
        return {lines.channel("lines"), desktop.channel("desktop"), terminal.channel("terminal")};
    }

    Names chosen(const ChannelChoice& choice) const { return chosenChannels(choice, channels()); }
};

TEST_F(Choosing, takesTheFirstRungThatIsUsableAndEveryChannelThatIsNone) {
    EXPECT_EQ(chosen({}), (Names{"lines", "desktop"}));
    desktop.state->isUsable = false;
    EXPECT_EQ(chosen({}), (Names{"lines", "terminal"}));
    terminal.state->isUsable = false;
    EXPECT_EQ(chosen({}), Names{"lines"});
}

TEST_F(Choosing, takesEveryUsableRungThatTheUserNames) {
    EXPECT_EQ(chosen({{"terminal", "desktop"}}), (Names{"lines", "desktop", "terminal"}));
    EXPECT_EQ(chosen({{"terminal"}}), (Names{"lines", "terminal"}));
    EXPECT_EQ(chosen({{"lines"}}), Names{"lines"});
    desktop.state->isUsable = false;
    EXPECT_EQ(chosen({{"desktop"}}), Names{"lines"});
}

TEST_F(Choosing, leavesAloneWhatTheUserHasRuledOut) {
    prepareChannels({{"terminal"}}, channels());
    EXPECT_EQ(desktop.state->prepared, 0);
    EXPECT_EQ(terminal.state->prepared, 1);
    prepareChannels({}, channels());
    EXPECT_EQ(desktop.state->prepared, 1);
}

TEST_F(Choosing, saysWhyAChannelIsUsedOrNot) {
    terminal.state->isUsable = false;
    const auto reasons = [this](const ChannelChoice& choice) {
        std::string text;
        for (const auto& [name, isChosen, reason] : channelReports(choice, channels()))
            text += name + (isChosen ? " yes, " : " no, ") + reason + "\n";
        return text;
    };
    EXPECT_EQ(reasons({}),
              "lines yes, as the test wants it\n"
              "desktop yes, as the test wants it\n"
              "terminal no, as the test wants it\n");
    terminal.state->isUsable = true;
    EXPECT_EQ(reasons({}),
              "lines yes, as the test wants it\n"
              "desktop yes, as the test wants it\n"
              "terminal no, a better channel is used\n");
    EXPECT_EQ(reasons({{"lines"}}),
              "lines yes, as the test wants it\n"
              "desktop no, not among the channels that you chose\n"
              "terminal no, not among the channels that you chose\n");
}

TEST(ChannelLadder, hasChannelsOfTheNamesThatCanBeChosen) {
    for (const auto& [name, make] : channelLadder()) {
        EXPECT_NE(std::ranges::find(channelNames, name), channelNames.end()) << name;
        const auto channel = make({});
        EXPECT_EQ(channel.name, name);
        EXPECT_TRUE(channel.isRung) << name;
    }
}

}  // namespace
}  // namespace tallowbrook::host
