// The helper while each of its system calls fails, fails for ever, or is its last.
//
// Left out is what the C library does before `main`: there the helper is not yet in charge, and a
// library that gets no memory for itself ends the process on its own.
#include <gtest/gtest.h>

#include <sys/resource.h>

#include <algorithm>
#include <iostream>
#include <memory>

#include "EndToEnd/TestHome.h"
#include "SpoolContents.h"
#include "StraceLinux.h"
#include "Support/FileContents.h"
#include "Support/SampleEvents.h"

namespace tallowbrook {
namespace {

const std::string kill = "signal=KILL";

// What a helper is about to do.
struct Road {
    std::function<void(const TestHome&)> prepare;
    std::string payload;
    std::string landmark;  // a call that only this road has
};

void spoolSession(const TestHome& home, const std::string& file, const std::string& session) {
    AgentEvent event = currentEvent(session);
    writeContents(home.paths.spoolDirectory() / file, EventCoding::encodeLine(event));
    permissions(home.paths.spoolDirectory() / file, std::filesystem::perms{0600});
}

// As the helper itself would have made them.
void makeDirectories(const TestHome& home) {
    for (const auto& directory :
         {home.paths.home, home.paths.spoolDirectory(), home.paths.logsDirectory()}) {
        create_directories(directory);
        permissions(directory, std::filesystem::perms{0700});
    }
}

const Road firstEvent{[](const TestHome&) {}, claudePayload("Stop", "victim"), "mkdir"};

const Road oneMoreEvent{[](const TestHome& home) {
                            makeDirectories(home);
                            spoolSession(home, "events.jsonl", "earlier");
                        },
                        claudePayload("Stop", "victim"), "flock"};

// The spool is full, and there are as many segments as are kept: the oldest has to go.
const Road fullSpool{[](const TestHome& home) {
                         makeDirectories(home);
                         spoolSession(home, "overflow-1-1-A.jsonl", "oldest");
                         for (int i = 2; i <= 8; ++i)
                             spoolSession(home, "overflow-" + std::to_string(i) + "-1-A.jsonl",
                                          "older-" + std::to_string(i));
                         spoolSession(home, "events.jsonl", "earlier");
                         // Blanks are quickly read, and there are many readings to come.
                         std::string line = EventCoding::encodeLine(minimalEvent());
                         const auto taken = line.size() + file_size(home.paths.activeSpoolFile());
                         line.insert(1, 2'097'152 - 100 - taken, ' ');
                         home.spool(line);
                     },
                     claudePayload("Stop", "victim"), "getdents64"};

// Nothing can be recorded but why, and the log is so long that it is moved aside.
const Road failure{[](const TestHome& home) {
                       makeDirectories(home);
                       spoolSession(home, "events.jsonl", "earlier");
                       writeContents(home.paths.helperLogFile(), std::string(262'145, 'x') + "\n");
                       permissions(home.paths.helperLogFile(), std::filesystem::perms{0600});
                   },
                   "this is no JSON", "rename"};

class HelperFaultsTest : public testing::Test {
 protected:
    void SetUp() override {
        if (const auto reason = Strace::reasonToSkip()) GTEST_SKIP() << *reason;
    }

    static ProgramCall callOn(const TestHome& home, const Road& road) {
        return home.hookCall({"claude-code"}, road.payload);
    }

    // From the helper's first step on: the watchdog.
    static std::vector<SystemCall> ownCalls(const Road& road) {
        const TestHome home;
        road.prepare(home);
        auto calls = Strace::callsOf(callOn(home, road));
        const auto first = std::ranges::find_if(calls, [](const SystemCall& call) {
            return call.text.starts_with("rt_sigaction(SIGALRM");
        });
        calls.erase(calls.begin(), first);
        return calls;
    }

    void failEveryCall(const Road& road) {
        const auto calls = ownCalls(road);
        ASSERT_NE(std::ranges::find(calls, road.landmark, &SystemCall::name), calls.end())
            << "the helper went another way";
        for (const auto& call : calls) {
            for (const auto& error : fittingErrors(call.name)) {
                failOnce(road, {call.name, call.occurrence, error, false}, call);
                // Most calls would be repeated until the watchdog ends them, which takes seconds.
                if (error != "error=EINTR")
                    failFromHereOn(road, {call.name, call.occurrence, error, true}, call);
            }
            endAt(road, {call.name, call.occurrence, kill, false}, call);
        }
        std::cout << calls.size() << " calls, " << runs << " runs\n";
    }

    // One failing call costs at most the event, and then the log says why.
    void failOnce(const Road& road, const Fault& fault, const SystemCall& call) {
        SCOPED_TRACE(fault.text() + " at " + call.text);
        const TestHome home;
        runQuietly(home, road, fault);
        const auto recorded = SpoolContents::of(home.paths).sessions().count("victim");
        if (road.payload != failure.payload) {
            EXPECT_EQ(recorded + home.logged().size(), 1U) << "neither stored nor logged, or both";
        }
        if (road.payload != failure.payload && isTriedAgain(fault)) {
            EXPECT_EQ(recorded, 1U) << "an interruption or another's lock costs nothing";
        }
        expectUnharmed(home);
    }

    static bool isTriedAgain(const Fault& fault) {
        return (fault.effect == "error=EINTR" && fault.call != "openat") ||
               (fault.effect == "error=EAGAIN" && fault.call == "flock");
    }

    void failFromHereOn(const Road& road, const Fault& fault, const SystemCall& call) {
        SCOPED_TRACE(fault.text() + " at " + call.text);
        const TestHome home;
        runQuietly(home, road, fault);
        expectUnharmed(home);
    }

    void endAt(const Road& road, const Fault& fault, const SystemCall& call) {
        SCOPED_TRACE(fault.text() + " at " + call.text);
        const TestHome home;
        runFaulty(home, road, fault);
        expectUnharmed(home);
    }

    void runQuietly(const TestHome& home, const Road& road, const Fault& fault) {
        EXPECT_EQ(runFaulty(home, road, fault).status, 0);
    }

    ProgramResult runFaulty(const TestHome& home, const Road& road, const Fault& fault) {
        ++runs;
        road.prepare(home);
        before = SpoolContents::of(home.paths).sessions();
        const FaultyRun faulty = Strace::runWith(fault, callOn(home, road));
        EXPECT_TRUE(faulty.wasInjected);
        EXPECT_EQ(faulty.result.output, "");
        EXPECT_EQ(faulty.result.errors, "");
        return faulty.result;
    }

    // No event of others is lost or damaged, and the next helper finds nothing in its way.
    void expectUnharmed(const TestHome& home) {
        EXPECT_TRUE(isSpoolFree(home.paths));
        expectOwnerOnlyModes(home.paths);
        expectEarlierEvents(SpoolContents::of(home.paths));
        home.claude("Stop", "next");
        const auto contents = SpoolContents::of(home.paths);
        expectEarlierEvents(contents);
        EXPECT_EQ(contents.sessions().count("next"), 1U);
        EXPECT_LE(contents.sessions().count("victim"), 1U);
    }

    void expectEarlierEvents(const SpoolContents& contents) const {
        EXPECT_EQ(contents.invalidLines, std::vector<std::string>{});
        EXPECT_EQ(contents.tornEnds, std::vector<std::string>{});
        auto kept = before;
        kept.erase("oldest");
        EXPECT_TRUE(std::ranges::includes(contents.sessions(), kept));
    }

    int runs = 0;
    std::multiset<std::string> before;
};

TEST_F(HelperFaultsTest, noFailingCallOfTheFirstEventDoesHarm) { failEveryCall(firstEvent); }

TEST_F(HelperFaultsTest, noFailingCallOfOneMoreEventDoesHarm) { failEveryCall(oneMoreEvent); }

TEST_F(HelperFaultsTest, noFailingCallWhileAFullSpoolIsMovedAsideDoesHarm) {
    failEveryCall(fullSpool);
}

TEST_F(HelperFaultsTest, noFailingCallWhileAFailureIsLoggedDoesHarm) { failEveryCall(failure); }

TEST_F(HelperFaultsTest, theWatchdogEndsACallThatIsInterruptedForEver) {
    const auto calls = ownCalls(oneMoreEvent);
    struct Attempt {
        TestHome home;
        std::optional<FaultyProgram> helper;
    };
    std::vector<std::unique_ptr<Attempt>> attempts;
    for (const char* name : {"read", "getrandom", "write"}) {
        const auto first = std::ranges::find(calls, name, &SystemCall::name);
        ASSERT_NE(first, calls.end()) << name;
        attempts.push_back(std::make_unique<Attempt>());
        const TestHome& home = attempts.back()->home;
        const Fault fault{name, first->occurrence, "error=EINTR", true};
        attempts.back()->helper.emplace(callOn(home, oneMoreEvent), fault);
    }
    for (const auto& attempt : attempts) {
        // It would never end by itself.
        const ProgramResult result = attempt->helper->wait().result;
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.output + result.errors, "");
        EXPECT_EQ(attempt->home.logged(), std::vector<std::string>{});
        expectUnharmed(attempt->home);
    }
}

// A short write that cannot be taken back, be it that the call fails or that the helper is killed.
TEST_F(HelperFaultsTest, aTornLineThatStaysCostsTheNextEventAtMost) {
    for (const auto& effect : {std::string{"error=EIO"}, kill}) {
        SCOPED_TRACE(effect);
        const TestHome home;
        makeDirectories(home);
        spoolSession(home, "events.jsonl", "earlier");
        home.spool(EventCoding::encodeLine(eventWithLineOf(16'000)));
        ProgramCall call = callOn(home, oneMoreEvent);
        // Enough for a piece of the line, and for what strace writes.
        const auto limit = file_size(home.paths.activeSpoolFile()) + 100;
        call.prepare = [limit] {
            const rlimit sizes{limit, limit};
            setrlimit(RLIMIT_FSIZE, &sizes);
        };
        const FaultyRun faulty = Strace::runWith({"truncate", 1, effect, false}, call);
        EXPECT_TRUE(faulty.wasInjected);
        EXPECT_EQ(faulty.result.output + faulty.result.errors, "");
        EXPECT_EQ(SpoolContents::of(home.paths).tornEnds.size(), 1U);

        home.claude("Stop", "glued");
        home.claude("Stop", "next");
        const auto contents = SpoolContents::of(home.paths);
        EXPECT_EQ(contents.sessions().count("earlier"), 1U);
        EXPECT_EQ(contents.sessions().count("next"), 1U);
        EXPECT_EQ(contents.invalidLines.size(), 1U);
        EXPECT_EQ(contents.tornEnds, std::vector<std::string>{});
    }
}

}  // namespace
}  // namespace tallowbrook
