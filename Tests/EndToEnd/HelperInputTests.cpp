#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <memory>

#include "Support/FileContents.h"
#include "TestHome.h"

namespace tallowbrook {
namespace {

using Messages = std::vector<std::string>;

constexpr std::size_t limit = 1048576;

TEST(HelperInput, ofTheLimitIsTaken) {
    const TestHome home;
    EXPECT_EQ(home.hook({"claude-code"}, claudePayloadOf(limit)), quiet);
    const auto events = home.spooled();
    ASSERT_EQ(events.size(), 1U);
    EXPECT_EQ(events[0].sessionID, "S1");
    EXPECT_EQ(home.logged(), Messages{});
}

TEST(HelperInput, overTheLimitIsDroppedAndStillReadToItsEnd) {
    for (const std::size_t size : {limit + 1, limit + 65536, std::size_t{5'000'000}})
        for (const std::string source : {"claude-code", "codex"}) {
            const TestHome home;
            EXPECT_EQ(home.hook({source}, claudePayloadOf(size)), quiet) << size;
            EXPECT_EQ(home.logged(), Messages{"helper: " + source +
                                              " payload exceeded 1048576 bytes; event dropped"});
            EXPECT_FALSE(exists(home.paths.spoolDirectory()));
        }
}

TEST(HelperInput, isOnlyJudgedByItsWholeLength) {
    // The first mebibyte alone would be a payload.
    const TestHome home;
    EXPECT_EQ(home.hook({"claude-code"}, claudePayloadOf(limit - 1) + "\n\n"), quiet);
    EXPECT_EQ(home.logged(),
              Messages{"helper: claude-code payload exceeded 1048576 bytes; event dropped"});
}

TEST(HelperInput, mayComeFromAFile) {
    const TestHome home;
    const auto file = home.directory.path / "payload.json";
    writeContents(file, claudePayload("Stop") + "\n");
    ProgramCall call = home.hookCall({"claude-code"});
    call.prepare = [file] { dup2(open(file.c_str(), O_RDONLY), STDIN_FILENO); };
    EXPECT_EQ(run(call), quiet);
    EXPECT_EQ(home.spooled().size(), 1U);
}

TEST(HelperInput, thatCannotBeReadCountsAsEmpty) {
    struct Row {
        const char* why;
        std::function<void()> prepare;
    };
    for (const auto& [why, prepare] : {
             Row{"closed", [] { close(STDIN_FILENO); }},
             Row{"a directory", [] { dup2(open("/", O_RDONLY), STDIN_FILENO); }},
             Row{"only for writing", [] { dup2(open("/dev/null", O_WRONLY), STDIN_FILENO); }},
         }) {
        const TestHome home;
        ProgramCall call = home.hookCall({"claude-code"});
        call.prepare = prepare;
        EXPECT_EQ(run(call), quiet) << why;
        EXPECT_EQ(home.logged(),
                  Messages{"helper: claude-code normalization failed: empty-payload"})
            << why;
    }
}

TEST(HelperInput, isRecordedAlsoWithAllStandardStreamsClosed) {
    const TestHome home;
    ProgramCall call = home.hookCall({"codex-notify", R"({"type":"agent-turn-complete"})"});
    call.prepare = [] {
        for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) close(stream);
    };
    EXPECT_EQ(run(call), quiet);
    EXPECT_EQ(home.spooled().size(), 1U);
    EXPECT_EQ(home.logged(), Messages{});
}

TEST(HelperInput, becomesAnEventOfNow) {
    const TestHome home;
    const Instant before = currentInstant();
    home.claude("Stop");
    home.claude("Stop");
    const Instant after = currentInstant();

    const auto events = home.spooled();
    ASSERT_EQ(events.size(), 2U);
    EXPECT_NE(events[0].id, events[1].id);
    for (const auto& event : events) {
        EXPECT_EQ(event.id.version(), UUID::version_random_number_based);
        // The line keeps milliseconds.
        EXPECT_GE(event.observedAt, std::chrono::floor<std::chrono::milliseconds>(before));
        EXPECT_LE(event.observedAt, after);
    }
}

TEST(HelperInput, ofManyHelpersAtOnceIsAllRecorded) {
    const TestHome home;
    constexpr int count = 24;
    std::vector<std::unique_ptr<RunningProgram>> helpers;
    for (int i = 0; i < count; ++i)
        helpers.push_back(std::make_unique<RunningProgram>(
            home.hookCall({"claude-code"}, claudePayload("Stop", "S" + std::to_string(i)))));
    for (const auto& helper : helpers) EXPECT_EQ(helper->wait(), quiet);

    std::vector<std::string> sessions;
    for (const auto& event : home.spooled()) sessions.push_back(event.sessionID.value_or("none"));
    std::vector<std::string> expected;
    for (int i = 0; i < count; ++i) expected.push_back("S" + std::to_string(i));
    std::ranges::sort(sessions);
    std::ranges::sort(expected);
    EXPECT_EQ(sessions, expected);
    EXPECT_EQ(home.logged(), Messages{});
}

}  // namespace
}  // namespace tallowbrook
