// Very many helpers at once, on one spool.
//
// A machine that does not let the holder of the spool's lock run for half a second makes others
// give up, which they log. So every event has to be taken once or be refused in the log, and some
// crowd has to come through whole.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <set>

#include "EndToEnd/TestHome.h"
#include "EventBridge/SpoolDrainer.h"
#include "EventBridge/SpoolFileName.h"
#include "HelperSwarm.h"
#include "HostOutput.h"
#include "RefusedEvents.h"
#include "SpoolContents.h"
#include "StoredState.h"
#include "Support/SampleEvents.h"
#include "Support/WaitUntil.h"
#include "TestBuild.h"

namespace tallowbrook {
namespace {

constexpr int helperCount = isSanitized ? 100 : 1000;
constexpr int enoughClaims = 3;
constexpr int mostSwarms = 20;
constexpr int rounds = 8;  // no more than a spool keeps overflow segments
constexpr int helpersOfARound = isSanitized ? 20 : 100;
constexpr const char* noRoom = "the system has no room for so many processes";

class HelperLoadTest : public testing::Test {
 protected:
    // The session's own directory shows whether its parts stayed together.
    static std::string payloadOf(const std::string& session) {
        return R"({"session_id":")" + session + R"(","cwd":"/proj/)" + session +
               R"(","hook_event_name":"Stop"})";
    }

    // Each with a session of its own. False when there is no room for them.
    bool addHelpers(HelperSwarm& swarm, int count) {
        for (int i = 0; i < count; ++i) {
            const std::string session = "session-" + std::to_string(sent.size());
            if (!swarm.add(payloadOf(session))) return false;
            sent.insert(session);
        }
        return true;
    }

    void takeAll() {
        const SpoolDrainer drainer{home.paths, Seconds{60}};
        const auto files = drainer.claimPendingFiles();
        ASSERT_TRUE(files);
        claims += files->empty() ? 0 : 1;
        for (const auto& file : *files) {
            const auto read = SpoolDrainer::readEvents(file);
            ASSERT_TRUE(read) << file;
            EXPECT_EQ(read->invalidLineCount, 0) << "a torn line in " << file;
            for (const auto& event : read->events) note(event);
            SpoolDrainer::remove(file);
        }
    }

    void note(const AgentEvent& event) {
        if (!event.sessionID) {
            ++fillers;
            return;
        }
        EXPECT_EQ(event.cwd, "/proj/" + *event.sessionID);
        taken.insert(*event.sessionID);
    }

    // Leaves room for a few events, so that only some of many helpers come before the rotation.
    void fillAlmostToTheCap() {
        constexpr std::size_t room = 2000;
        constexpr std::size_t fillerSize = 16'000;
        const auto& file = home.paths.activeSpoolFile();
        std::size_t left = 2'097'152 - room;
        left -= exists(file) ? file_size(file) : 0;
        std::string lines;
        for (; left >= 2 * fillerSize; left -= fillerSize) addFiller(lines, fillerSize);
        addFiller(lines, left / 2);
        addFiller(lines, left - left / 2);
        home.spool(lines);
    }

    void addFiller(std::string& lines, std::size_t size) {
        lines += EventCoding::encodeLine(eventWithLineOf(size));
        ++sentFillers;
    }

    std::size_t refused() const { return refusedEvents(home); }

    void expectAllTakenOrRefused() const {
        EXPECT_TRUE(std::ranges::includes(sent, taken)) << "an event came twice, or was never sent";
        EXPECT_EQ(taken.size() + refused(), sent.size());
        EXPECT_EQ(fillers, sentFillers);
    }

    TestHome home;
    std::multiset<std::string> sent;
    std::multiset<std::string> taken;
    int sentFillers = 0;
    int fillers = 0;
    int claims = 0;  // that brought something
};

TEST_F(HelperLoadTest, ofHelpersAtOnceADrainerGetsEveryEventOnceAndWhole) {
    // Among so many a drainer may get the lock once or twice only, which proves little.
    int claimsMeanwhile = 0;
    int wholeSwarms = 0;
    const auto isEnough = [&] { return claimsMeanwhile >= enoughClaims && wholeSwarms > 0; };
    for (int swarms = 0; !isEnough() && swarms < mostSwarms; ++swarms) {
        HelperSwarm swarm{home};
        const std::size_t refusedBefore = refused();
        if (!addHelpers(swarm, helperCount)) GTEST_SKIP() << noRoom;
        swarm.letGo();
        const int before = claims;
        while (swarm.isRunning() && !HasFatalFailure()) takeAll();
        claimsMeanwhile += claims - before;
        takeAll();
        EXPECT_EQ(swarm.failures, 0);
        EXPECT_EQ(swarm.printed(), "");
        expectAllTakenOrRefused();
        if (refused() == refusedBefore) ++wholeSwarms;
    }
    EXPECT_GE(claimsMeanwhile, enoughClaims);
    EXPECT_GT(wholeSwarms, 0) << "every crowd of " << helperCount << " lost an event";
    EXPECT_EQ(SpoolDrainer{home.paths}.pendingSegmentCount(), 0);
    expectOwnerOnlyModes(home.paths);
}

TEST_F(HelperLoadTest, aFullSpoolIsMovedAsideOnceHoweverManyHelpersFindItFull) {
    for (int round = 1; round <= rounds; ++round) {
        HelperSwarm swarm{home};
        fillAlmostToTheCap();
        if (!addHelpers(swarm, helpersOfARound)) GTEST_SKIP() << noRoom;
        swarm.letGo();
        swarm.wait();
        EXPECT_EQ(swarm.failures, 0);
        EXPECT_EQ(swarm.printed(), "");
        const auto segments = SpoolFileName::pendingFiles(home.paths.spoolDirectory());
        EXPECT_EQ(segments.size(), static_cast<std::size_t>(round));
        for (const auto& segment : segments) {
            EXPECT_EQ(segment.prefix, SpoolFileName::Prefix::overflow);
            EXPECT_LE(file_size(segment.url), 2'097'152U);
        }
    }
    takeAll();
    expectAllTakenOrRefused();
}

TEST_F(HelperLoadTest, aFullSpoolIsMovedAsideOrClaimedButNothingIsLost) {
    for (int round = 1; round <= rounds; ++round) {
        HelperSwarm swarm{home};
        fillAlmostToTheCap();
        if (!addHelpers(swarm, helpersOfARound)) GTEST_SKIP() << noRoom;
        swarm.letGo();
        // Sooner or later in each round, so that either side comes first in some.
        usleep(static_cast<useconds_t>(round * 1000));
        while (swarm.isRunning() && !HasFatalFailure()) takeAll();
        EXPECT_EQ(swarm.failures, 0);
        EXPECT_EQ(swarm.printed(), "");
    }
    takeAll();
    expectAllTakenOrRefused();
}

TEST_F(HelperLoadTest, ofHelpersAtOnceAHostStoresAndTellsEveryEventOnce) {
    HostOutput output{home.directory.path / "told"};
    RunningProgram host{output.takenFrom(home.hostCall({"watch"}))};
    waitUntil([&] { return output.text().find("No sessions to show.") != std::string::npos; });

    HelperSwarm swarm{home};
    if (!addHelpers(swarm, helperCount)) GTEST_SKIP() << noRoom;
    swarm.letGo();
    swarm.wait();
    EXPECT_EQ(swarm.failures, 0);
    EXPECT_EQ(swarm.printed(), "");
    waitUntil([&] { return output.told().size() + refused() >= sent.size(); });

    const auto told = output.told();
    EXPECT_TRUE(std::ranges::includes(sent, told)) << "an event was told twice, or was never sent";
    const ProgramResult listed = home.host({"sessions", "--json", "--all"});
    EXPECT_EQ(listed.status, 0);
    EXPECT_EQ(listed.errors, "");
    EXPECT_EQ(sessionsListed(listed.output), told);
    host.send(SIGTERM);
    const ProgramResult result = host.wait();
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(output.told(), told);
    EXPECT_EQ(told.size() + refused(), sent.size());
    EXPECT_EQ(StoredState::of(home.paths).events, told);
    EXPECT_EQ(SpoolDrainer{home.paths}.pendingSegmentCount(), 0);
}

}  // namespace
}  // namespace tallowbrook
