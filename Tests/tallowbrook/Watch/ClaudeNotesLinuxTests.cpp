// Records as Claude Code 2.1.197 writes them, of processes that are really there.
#include "Watch/ClaudeNotes.h"

#include <fmt/core.h>
#include <gtest/gtest.h>

#include <fstream>

#include "Support/ChildProcess.h"
#include "Support/SampleEvents.h"
#include "Support/TemporaryDirectory.h"
#include "Watch/ProcessStart.h"

namespace tallowbrook::host {
namespace {

constexpr std::int64_t stamp = 1794713455123;

std::string recordOf(pid_t pid, std::int64_t start, const std::string& status) {
    return fmt::format(
        R"({{"pid":{},"sessionId":"S1","cwd":"/Users/x/proj","startedAt":{},"procStart":"{}",)"
        R"("version":"2.1.197","peerProtocol":1,"kind":"interactive","entrypoint":"cli",)"
        R"("name":"my secret plan","status":"{}","updatedAt":{},"statusUpdatedAt":{}}})",
        pid, stamp - 1000, start, status, stamp + 5, stamp);
}

struct ClaudeRecords : testing::Test {
    TemporaryDirectory config;
    pid_t pid = getpid();
    std::int64_t start = *processStart(getpid());

    void write(const std::string& text, const std::string& name = "4242.json") const {
        create_directories(config.path / "sessions");
        std::ofstream{config.path / "sessions" / name} << text;
    }
    std::optional<SessionNotes> read() const {
        const auto notes = ClaudeNotes::in(config.path).read({"S1"});
        const auto found = notes.find("S1");
        return found == notes.end() ? std::nullopt : std::optional{found->second};
    }
    std::optional<AgentState> stateAt(const std::string& status) const {
        write(recordOf(pid, start, status));
        const auto notes = read();
        if (!notes || !notes->state) return std::nullopt;
        return notes->state->state;
    }
};

TEST_F(ClaudeRecords, tellWhatALivingProcessIsAt) {
    EXPECT_EQ(stateAt("busy"), AgentState::working);
    EXPECT_EQ(stateAt("waiting"), AgentState::waiting);
    EXPECT_EQ(stateAt("idle"), AgentState::idle);
    EXPECT_EQ(stateAt("shell"), AgentState::idle);
    EXPECT_EQ(read()->state->since, sampleTime);
    EXPECT_EQ(read()->process, (ProcessIdentity{pid, start}));
}

TEST_F(ClaudeRecords, withAStatusOfAnotherVersionTellOfTheProcessAlone) {
    EXPECT_EQ(stateAt("dreaming"), std::nullopt);
    EXPECT_TRUE(read()->processLives);
}

TEST_F(ClaudeRecords, ofAProcessWithAnotherStartAreNotBelieved) {
    write(recordOf(pid, start + 1, "busy"));
    ASSERT_TRUE(read());
    EXPECT_FALSE(read()->processLives);
    EXPECT_EQ(read()->state, std::nullopt);
}

TEST_F(ClaudeRecords, ofAProcessThatWasKilledAreNotBelieved) {
    ChildProcess agent{[] {
        pause();
        return std::string{};
    }};
    const auto killed = agent.pid;
    write(recordOf(killed, *processStart(killed), "waiting"));
    EXPECT_TRUE(read()->processLives);
    agent.kill();
    // Also before its parent has waited for it.
    while (processStart(killed)) usleep(1000);
    EXPECT_FALSE(read()->processLives);
    EXPECT_EQ(read()->process->pid, killed);
}

TEST_F(ClaudeRecords, ofALivingProcessWinOverWhatAKilledOneLeft) {
    write(recordOf(pid, start, "busy"), "1.json");
    for (const char* left : {"2.json", "9.json"}) write(recordOf(pid, start + 1, "waiting"), left);
    EXPECT_TRUE(read()->processLives);
}

TEST_F(ClaudeRecords, thatAreTornOrStrangeSayNothing) {
    EXPECT_EQ(read(), std::nullopt) << "no folder";
    const auto whole = recordOf(pid, start, "idle");
    for (std::size_t length = 0; length < whole.size(); ++length) {
        write(whole.substr(0, length));
        EXPECT_EQ(read(), std::nullopt) << length;
    }
    for (const char* strange :
         {"[]", "null", R"({"sessionId":"S1"})", R"({"pid":"1","sessionId":"S1"})",
          R"({"pid":99999999999,"sessionId":"S1","status":7})",
          R"({"pid":1.5,"sessionId":"S1"})"}) {
        write(strange);
        EXPECT_EQ(read(), std::nullopt) << strange;
    }
    write(whole + std::string(100000, ' '));
    EXPECT_EQ(read(), std::nullopt) << "far too long";
    write(whole, "notes.json");
    std::filesystem::remove(config.path / "sessions" / "4242.json");
    EXPECT_EQ(read(), std::nullopt) << "not named after a process";
}

TEST_F(ClaudeRecords, ofOtherSessionsAndWithDeeperMembersAreTakenApart) {
    write(R"({"pid":1,"sessionId":"S2"})", "1.json");
    EXPECT_EQ(read(), std::nullopt);
    write(fmt::format(R"({{"later":{{"status":"busy","pid":1,"sessionId":"S2"}},"pid":{},)"
                      R"("sessionId":"S1","status":"idle","procStart":{},"statusUpdatedAt":{}}})",
                      pid, start, stamp));
    EXPECT_EQ(read()->state->state, AgentState::idle);
}

TEST_F(ClaudeRecords, sayNothingOfTheTurnBehindAMenuOfTheUsers) {
    auto text = recordOf(pid, start, "waiting");
    text.insert(1, R"("waitingFor":"dialog open",)");
    write(text);
    EXPECT_TRUE(read()->processLives);
    EXPECT_EQ(read()->state, std::nullopt);
}

TEST(ClaudeRecord, keepsNoOtherMember) {
    const auto record = ClaudeNotes::parse(recordOf(7, 99, "busy"));
    EXPECT_EQ(record, (ClaudeNotes::Record{.pid = 7,
                                           .start = "99",
                                           .startedAt = sampleTime - std::chrono::seconds{1},
                                           .sessionID = "S1",
                                           .status = "busy",
                                           .waitingFor = "",
                                           .statusSince = sampleTime}));
}

}  // namespace
}  // namespace tallowbrook::host
