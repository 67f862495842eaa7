// A host that is killed again and again, at random moments, while helpers go on writing.
//
// TALLOWBROOK_CRASH_SEED repeats a run as far as the machine allows; TALLOWBROOK_CRASH_LIVES makes
// it longer.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <iostream>
#include <map>
#include <memory>
#include <random>

#include "EndToEnd/TestHome.h"
#include "EventBridge/SpoolDrainer.h"
#include "HostOutput.h"
#include "HostPromises.h"
#include "RefusedEvents.h"
#include "SpoolContents.h"
#include "StoredState.h"
#include "Support/ChildProcess.h"
#include "Support/FileContents.h"
#include "Support/WaitUntil.h"
#include "TestBuild.h"

namespace tallowbrook {
namespace {

constexpr int writerCount = 2;
constexpr unsigned defaultLives = isSanitized ? 30 : 250;

unsigned numberFrom(const char* variable, unsigned standard) {
    const char* text = std::getenv(variable);
    return text == nullptr ? standard : static_cast<unsigned>(std::strtoul(text, nullptr, 10));
}

// One run of the host, from its start to its end.
struct Life {
    Instant start;
    Instant end;
    std::multiset<std::string> told;
};

class HostCrashTest : public testing::Test {
 protected:
    void startWriters() {
        for (int writer = 0; writer < writerCount; ++writer)
            writers.push_back(std::make_unique<ChildProcess>([this, writer] {
                int count = 0;
                while (!exists(stop)) {
                    const auto session = sessionOf(writer, count);
                    const auto call = home.hookCall(
                        {"claude-code"}, R"({"session_id":")" + session + R"(","cwd":"/proj/)" +
                                             session + R"(","hook_event_name":"Stop"})");
                    if (run(call) != quiet) return std::string{"a helper was not quiet"};
                    ++count;
                    usleep(3000);
                }
                return std::to_string(count);
            }));
    }

    static std::string sessionOf(int writer, int number) {
        return "writer-" + std::to_string(writer) + "-" + std::to_string(number);
    }

    // Gives the sessions of all that was written.
    std::multiset<std::string> stopWriters() {
        writeContents(stop, "");
        std::multiset<std::string> sent;
        for (int writer = 0; writer < writerCount; ++writer) {
            const std::string count = writers[static_cast<std::size_t>(writer)]->result().value_or(
                "a writer ended by itself");
            EXPECT_EQ(count.find_first_not_of("0123456789"), std::string::npos) << count;
            for (int number = 0; number < std::atoi(count.c_str()); ++number)
                sent.insert(sessionOf(writer, number));
        }
        return sent;
    }

    // Every other host is killed soon after its start, the others soon after they begin to tell.
    void liveAndDie(std::mt19937& random) {
        const auto number = lives.size();
        const HostOutput output{home.directory.path / ("life-" + std::to_string(number))};
        const Instant start = currentInstant();
        RunningProgram host{output.takenFrom(home.hostCall({"watch"}))};
        if (number % 2 == 0) waitUntil([&] { return !output.told().empty(); });
        usleep(std::uniform_int_distribution<useconds_t>{0, 30'000}(random));
        host.send(SIGKILL);
        EXPECT_EQ(host.wait().status, -1);
        lives.push_back({start, currentInstant(), output.told()});
    }

    void liveOnce() {
        const Instant start = currentInstant();
        const ProgramResult last = home.host({"watch", "--once"});
        EXPECT_EQ(last.status, 0);
        EXPECT_EQ(last.errors, "");
        lives.push_back({start, currentInstant(), toldIn(last.output)});
    }

    // A notification may be told by several hosts that were killed before they could record it. The
    // one that recorded it told it once, and no later one did.
    void expectToldAtMostOnceAfterTheRecord(const StoredState& state) const {
        for (const auto& [session, at] : state.told) {
            SCOPED_TRACE(session);
            std::size_t recorder = lives.size();
            for (std::size_t i = 0; i < lives.size(); ++i)
                if (lives[i].start <= at && at <= lives[i].end) recorder = i;
            ASSERT_LT(recorder, lives.size()) << "recorded by none of the hosts";
            EXPECT_EQ(lives[recorder].told.count(session), 1U);
            for (std::size_t i = 0; i < recorder; ++i)
                EXPECT_LE(lives[i].told.count(session), 1U) << "twice by one host";
            for (std::size_t i = recorder + 1; i < lives.size(); ++i)
                EXPECT_EQ(lives[i].told.count(session), 0U) << "again, after it was recorded";
        }
    }

    void reportOn(const StoredState& state) const {
        std::size_t told = 0;
        std::size_t busy = 0;
        for (const auto& life : lives) {
            told += life.told.size();
            busy += life.told.empty() ? 0 : 1;
        }
        std::cout << lives.size() - 1 << " hosts killed, " << busy << " of all told something; "
                  << state.events.size() << " events stored, " << told - state.told.size()
                  << " told again before they were recorded\n";
        EXPECT_GT(busy, lives.size() / 4) << "too few came far enough to prove anything";
    }

    TestHome home;
    std::filesystem::path stop = home.directory.path / "stop";
    std::vector<std::unique_ptr<ChildProcess>> writers;
    std::vector<Life> lives;
};

TEST_F(HostCrashTest, losesNoEventAndTellsNoneAgainThatIsRecordedAsTold) {
    const unsigned seed = numberFrom("TALLOWBROOK_CRASH_SEED", std::random_device{}());
    std::cout << "TALLOWBROOK_CRASH_SEED=" << seed << '\n';
    std::mt19937 random{seed};

    startWriters();
    for (unsigned count = numberFrom("TALLOWBROOK_CRASH_LIVES", defaultLives); count > 0; --count)
        liveAndDie(random);
    const auto sent = stopWriters();
    liveOnce();

    const StoredState state = StoredState::of(home.paths);
    EXPECT_TRUE(state.isSound);
    EXPECT_TRUE(std::ranges::includes(sent, state.events)) << "stored twice, or never sent";
    EXPECT_EQ(state.events.size() + refusedEvents(home), sent.size()) << "an event is lost";
    EXPECT_EQ(state.toldSessions(), state.events);
    EXPECT_EQ(SpoolDrainer{home.paths}.pendingSegmentCount(), 0);
    expectOwnerOnlyModes(home.paths);
    expectToldAtMostOnceAfterTheRecord(state);
    reportOn(state);
}

}  // namespace
}  // namespace tallowbrook
