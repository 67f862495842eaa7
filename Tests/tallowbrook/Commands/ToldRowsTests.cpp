#include "Commands/ToldRows.h"

#include <gtest/gtest.h>

#include "DatabaseAtHome.h"
#include "Output/TimeText.h"

namespace tallowbrook::host {
namespace {

using std::chrono::minutes;

struct ToldRowsOfASession : testing::Test {
    DatabaseAtHome home;
    Database database = home.open();
    Outbox outbox{database};
    std::string time = TimeText::shortTime(sampleTime, sampleTime);

    // A notification that these channels are to tell; gives its number.
    std::int64_t add(std::uint8_t number, const std::vector<std::string>& channels,
                     const std::string& title = "Claude Code finished") {
        auto content = numberedContent(number);
        content.title = title;
        outbox.add(content, sampleTime + minutes{number}, sampleTime, channels);
        return number;
    }

    std::string at(int minute) const {
        return TimeText::shortTime(sampleTime + minutes{minute}, sampleTime);
    }

    static std::string row(std::string time, std::string news, const std::string& outcome) {
        time.resize(15, ' ');
        news.resize(30, ' ');
        return time + news + outcome + "\n";
    }

    std::string rows(std::size_t atMost = 8) {
        return toldRows({.notifications = outbox.latestOf("claudeCode|S1", 8),
                         .untold = outbox.untold("claudeCode|S1"),
                         .events = {}},
                        Provider::claudeCode, sampleTime, atMost);
    }
};

TEST_F(ToldRowsOfASession, sayWhatEachChannelHasComeTo) {
    add(1, {"a", "b", "c", "d"});
    outbox.markTold(1, "a", sampleTime);
    outbox.postpone(1, "b", sampleTime);
    outbox.markRefused(1, "c");
    outbox.markBegun(1, "d");
    EXPECT_EQ(rows(), row(at(1), "finished", "told at " + time + " (a)") +
                          row("", "", "still to be told, 1 attempt failed") + row("", "", "(b)") +
                          row("", "", "refused (c)") + row("", "", "begun, no answer yet (d)"));
}

TEST_F(ToldRowsOfASession, sayWhereNoChannelWasUsableOrItWasTooOld) {
    add(1, {});
    add(2, {"lines"}, "Test: Claude Code turn failed");
    outbox.dropOlderThan(sampleTime + minutes{3});
    EXPECT_EQ(rows(), row(at(1), "finished", "not told: no channel was usable") +
                          row(at(2), "Test: turn failed", "not told: too old by then (lines)"));
}

TEST_F(ToldRowsOfASession, giveTheReasonOfWhatWasGivenUpOnce) {
    add(1, {"lines"});
    outbox.dropOlderThan(sampleTime + minutes{2});
    outbox.noteUntold({.eventID = numberedID(1),
                       .session = "claudeCode|S1",
                       .reason = UntoldReason::folded,
                       .at = sampleTime,
                       .turn = std::nullopt});
    EXPECT_EQ(rows(), row(time, "", "not told: it was over before it") +
                          row("", "", "could be told"));
}

TEST_F(ToldRowsOfASession, areThoseOfNoOtherAndTheLatest) {
    EXPECT_EQ(rows(), "");
    for (const std::uint8_t number : {std::uint8_t{1}, std::uint8_t{2}, std::uint8_t{3}})
        outbox.markTold(add(number, lines), "lines", sampleTime);
    auto other = numberedContent(4);
    other.sessionStorageID = "claudeCode|S1|x";
    other.dedupeKey = "claudeCode|S1|x|completion";
    outbox.add(other, sampleTime, sampleTime, lines);
    EXPECT_EQ(rows(2).substr(0, at(2).size()), at(2));
    EXPECT_EQ(outbox.latestOf("claudeCode|S1", 8).size(), 3U);
}

}  // namespace
}  // namespace tallowbrook::host
