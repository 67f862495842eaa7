// `watch --once` while its system calls fail, fail for ever, or are its last.
//
// There are hundreds, most of them the database's. All of them are tried with a kill. For the
// errors those on the spool are chosen, and of each name a few that are evenly spread; where
// TALLOWBROOK_EVERY_FAULT is set, all. Left out is what comes before the host first looks at its
// home: the work of the system's loader and of the C++ library.
//
// Once one of its locks fails, the database waits and tries again for seconds. So fcntl(2) has a
// test of its own, in which the hosts wait side by side.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <memory>

#include "HostPromises.h"
#include "StraceLinux.h"

namespace tallowbrook {
namespace {

const std::string kill = "signal=KILL";

constexpr std::size_t chosenOfAName = 5;

bool isLockCall(const SystemCall& call) { return call.name == "fcntl"; }

bool isDatabaseLock(const SystemCall& call) {
    return call.text.find("F_SETLK") != std::string::npos;
}

bool isOnTheSpool(const SystemCall& call) { return call.text.find("/spool") != std::string::npos; }

bool everyFaultIsWanted() { return std::getenv("TALLOWBROOK_EVERY_FAULT") != nullptr; }

class HostFaultsTest : public testing::TestWithParam<Preparation> {
 protected:
    void SetUp() override {
        if (const auto reason = Strace::reasonToSkip()) GTEST_SKIP() << *reason;
        GetParam().apply(prepared);
        promises = HostPromises::of(prepared);
    }

    void TearDown() override { std::cout << runs << " runs\n"; }

    static ProgramCall callOn(const TestHome& home) { return home.hostCall({"watch", "--once"}); }

    // From the first look at the home on.
    std::vector<SystemCall> ownCalls() const {
        const TestHome home;
        copyHome(prepared, home);
        auto calls = Strace::callsOf(callOn(home));
        EXPECT_GT(calls.size(), 100U) << "the trace shows too little";
        if (calls.empty()) return calls;
        const auto first = std::find_if(calls.begin() + 1, calls.end(), [&](const auto& call) {
            return call.text.find(home.paths.home.string()) != std::string::npos;
        });
        calls.erase(calls.begin(), first);
        return calls;
    }

    std::vector<SystemCall> chosenCalls() const {
        auto calls = ownCalls();
        std::erase_if(calls, isLockCall);
        if (everyFaultIsWanted()) return calls;
        return evenlySpread(calls, chosenOfAName, isOnTheSpool);
    }

    void runWith(const Fault& fault, const SystemCall& call) {
        SCOPED_TRACE(fault.text() + " at " + call.text);
        ++runs;
        const TestHome home;
        copyHome(prepared, home);
        expectPromisesKept(home, fault, Strace::runWith(fault, callOn(home)));
    }

    void expectPromisesKept(const TestHome& home, const Fault& fault,
                            const FaultyRun& faulty) const {
        EXPECT_TRUE(faulty.wasInjected);
        if (fault.effect != kill) promises.expectHonestStatus(home, faulty.result);
        // A sentence is written as well.
        if (fault.call != "write") HostPromises::expectSentence(faulty.result);
        promises.expectNothingLost(home, faulty.result);
        promises.expectGoodNextRun(home);
    }

    // A host under a fault that is not waited for yet.
    struct Attempt {
        Attempt(const HostFaultsTest& test, Fault which, const SystemCall& call)
            : fault{std::move(which)}, at{call.text} {
            copyHome(test.prepared, home);
            host.emplace(callOn(home), fault);
        }

        Fault fault;
        std::string at;
        TestHome home;
        std::optional<FaultyProgram> host;
    };

    void start(std::vector<std::unique_ptr<Attempt>>& attempts, const Fault& fault,
               const SystemCall& call) {
        ++runs;
        attempts.push_back(std::make_unique<Attempt>(*this, fault, call));
    }

    TestHome prepared;
    HostPromises promises;
    int runs = 0;
};

TEST_P(HostFaultsTest, aCallThatFailsOnceDoesNoHarm) {
    for (const auto& call : chosenCalls())
        for (const auto& error : fittingErrors(call.name))
            runWith({call.name, call.occurrence, error, false}, call);
}

TEST_P(HostFaultsTest, aCallThatFailsForEverDoesNoHarm) {
    for (const auto& call : chosenCalls())
        if (const auto errors = fittingErrors(call.name); !errors.empty())
            runWith({call.name, call.occurrence, errors[0], true}, call);
}

// What the database's locks may cost: five seconds until it is open, and as much for the first use
// that fails.
void expectBoundedWait(const FaultyRun& faulty) {
    const bool isOpen = faulty.result.errors.find("cannot be opened") == std::string::npos;
    // The spool's lock is waited for as well.
    constexpr double patience = 5.0;
    constexpr double spoolPatience = 0.5;
    EXPECT_LE(faulty.sleptSeconds, (isOpen ? 2 * patience : patience) + spoolPatience);
}

TEST_P(HostFaultsTest, aLockThatFailsDoesNoHarmAndIsNotWaitedForAgainAndAgain) {
    auto calls = ownCalls();
    std::erase_if(calls, std::not_fn(isLockCall));
    ASSERT_TRUE(std::ranges::any_of(calls, isDatabaseLock));
    std::vector<std::unique_ptr<Attempt>> attempts;
    for (const auto& call : evenlySpread(calls, chosenOfAName, std::not_fn(isDatabaseLock))) {
        const auto errors = fittingErrors(call.name);
        for (const auto& error : errors)
            start(attempts, {call.name, call.occurrence, error, false}, call);
        start(attempts, {call.name, call.occurrence, errors[0], true}, call);
    }
    for (const auto& attempt : attempts) {
        SCOPED_TRACE(attempt->fault.text() + " at " + attempt->at);
        const FaultyRun faulty = attempt->host->wait();
        expectBoundedWait(faulty);
        expectPromisesKept(attempt->home, attempt->fault, faulty);
    }
}

TEST_P(HostFaultsTest, aKillAtACallDoesNoHarm) {
    for (const auto& call : ownCalls()) runWith({call.name, call.occurrence, kill, false}, call);
}

INSTANTIATE_TEST_SUITE_P(, HostFaultsTest, testing::ValuesIn(preparations),
                         [](const auto& test) { return test.param.name; });

}  // namespace
}  // namespace tallowbrook
