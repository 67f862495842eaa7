// Many writing processes at once, and drainers that claim what they write meanwhile.
#include <gtest/gtest.h>
#include <unistd.h>

#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "EventBridge/SpoolDrainer.h"
#include "EventBridge/SpoolWriter.h"
#include "Support/ChildProcess.h"
#include "Support/FileContents.h"
#include "Support/Outcome.h"
#include "Support/SampleEvents.h"
#include "Support/TemporaryDirectory.h"

namespace tallowbrook {
namespace {

constexpr int writerCount = 6;
constexpr int eventsPerWriter = 150;
constexpr Seconds aMinute{60};

// The event of one writer with this number; its length differs from those beside it.
AgentEvent eventOf(int writer, int number) {
    AgentEvent event = fullEvent();
    event.sessionID = std::to_string(writer);
    event.turnID = std::to_string(number);
    event.cwd = "/" + std::string(static_cast<std::size_t>(number * 37 % 2000),
                                  static_cast<char>('a' + writer));
    return event;
}

class SpoolConcurrencyTest : public testing::Test {
 protected:
    SpoolConcurrencyTest() {
        // Small enough for many rotations, and none may cost a segment.
        configuration.maxActiveFileBytes = 32 * 1024;
        configuration.maxOverflowFiles = 1'000'000;
        configuration.lockTimeout = aMinute;
    }

    void startWriters() {
        for (int writer = 0; writer < writerCount; ++writer)
            writers.push_back(
                std::make_unique<ChildProcess>([this, writer] { return writeAll(writer); }));
    }

    std::string writeAll(int writer) const {
        for (int number = 0; number < eventsPerWriter; ++number) {
            const auto outcome =
                outcomeOf(SpoolWriter{paths, configuration}.append(eventOf(writer, number)));
            if (outcome != "ok") return outcome;
        }
        return "ok";
    }

    bool isWriting() const {
        for (const auto& writer : writers)
            if (!writer->hasEnded()) return true;
        return false;
    }

    void expectWritersSucceeded() const {
        for (const auto& writer : writers) EXPECT_EQ(writer->result(), "ok");
    }

    // Notes what a segment holds; each event must be whole and new.
    void take(const std::filesystem::path& file) {
        const auto result = SpoolDrainer::readEvents(file);
        ASSERT_TRUE(result) << file;
        EXPECT_EQ(result->invalidLineCount, 0) << "a torn line in " << file;
        for (const AgentEvent& event : result->events) {
            const int writer = std::stoi(event.sessionID.value());
            const int number = std::stoi(event.turnID.value());
            EXPECT_EQ(event, eventOf(writer, number));
            EXPECT_TRUE(taken.emplace(writer, number).second)
                << "event " << number << " of writer " << writer << " came twice";
        }
    }

    void takeAll() {
        const auto files = SpoolDrainer{paths, aMinute}.claimPendingFiles();
        ASSERT_EQ(outcomeOf(files), "ok");
        for (const auto& file : *files) {
            take(file);
            SpoolDrainer::remove(file);
        }
    }

    TemporaryDirectory temporary;
    TallowbrookPaths paths{temporary.path / "home"};
    SpoolConfiguration configuration;
    std::vector<std::unique_ptr<ChildProcess>> writers;
    std::set<std::pair<int, int>> taken;
};

TEST_F(SpoolConcurrencyTest, noEventIsLostTornOrTakenTwiceByAClaimingDrainer) {
    startWriters();
    while (isWriting() && !HasFatalFailure()) takeAll();
    expectWritersSucceeded();
    takeAll();
    EXPECT_EQ(taken.size(), static_cast<std::size_t>(writerCount * eventsPerWriter));
}

TEST_F(SpoolConcurrencyTest, aKilledWriterCostsNoOtherEvent) {
    startWriters();
    for (int i = 0; i < 20; ++i) {
        // Dies at an arbitrary point of an endless row of appends.
        ChildProcess victim{[this]() -> std::string {
            while (true)
                if (!SpoolWriter{paths, configuration}.append(eventOf(writerCount, 1)))
                    return "failed";
        }};
        usleep(static_cast<useconds_t>(1000 + 700 * i));
    }
    expectWritersSucceeded();
    const auto files = SpoolDrainer{paths, aMinute}.claimPendingFiles();
    ASSERT_EQ(outcomeOf(files), "ok");
    std::int64_t invalidLines = 0;
    for (const auto& file : *files) {
        const auto result = SpoolDrainer::readEvents(file);
        ASSERT_TRUE(result);
        invalidLines += result->invalidLineCount;
        for (const AgentEvent& event : result->events)
            taken.emplace(std::stoi(event.sessionID.value()), std::stoi(event.turnID.value()));
    }
    taken.erase({writerCount, 1});
    // A line is one write, which the system does not break off for a signal; were it torn all the
    // same, it may take the event behind it along.
    EXPECT_GE(static_cast<std::int64_t>(taken.size()) + invalidLines,
              writerCount * eventsPerWriter);
    EXPECT_LE(invalidLines, 20);
}

}  // namespace
}  // namespace tallowbrook
