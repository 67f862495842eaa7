// `watch --once` while its system calls fail, fail for ever, or are its last.
//
// There are hundreds, most of them the database's. All of them are tried with a kill. For the
// errors those on the spool are chosen, and of each name the first, the middle and the last one;
// where TALLOWBROOK_EVERY_FAULT is set, all. Left out is what comes before the host first looks at
// its home: the work of the system's loader and of the C++ library.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>

#include "HostPromises.h"
#include "StraceLinux.h"

namespace tallowbrook {
namespace {

const std::string kill = "signal=KILL";

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
        const auto calls = ownCalls();
        if (everyFaultIsWanted()) return calls;
        auto chosen = firstMiddleAndLast(calls, [](const SystemCall& call) {
            return call.text.find("/spool") != std::string::npos;
        });
        std::cout << "of " << calls.size() << " calls:";
        for (const auto& call : chosen) std::cout << ' ' << call.name << '#' << call.occurrence;
        std::cout << '\n';
        return chosen;
    }

    void runWith(const Fault& fault, const SystemCall& call) {
        SCOPED_TRACE(fault.text() + " at " + call.text);
        ++runs;
        const TestHome home;
        copyHome(prepared, home);
        const FaultyRun faulty = Strace::runWith(fault, callOn(home));
        EXPECT_TRUE(faulty.wasInjected);
        if (fault.effect != kill) promises.expectHonestStatus(home, faulty.result);
        // A sentence is written as well.
        if (fault.call != "write") HostPromises::expectSentence(faulty.result);
        promises.expectNothingLost(home, faulty.result);
        promises.expectGoodNextRun(home);
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
    for (const auto& call : chosenCalls()) {
        // The database tries its own locks again and again, for longer than is worth waiting here.
        if (call.name == "fcntl" && call.occurrence > 1 && !everyFaultIsWanted()) continue;
        if (const auto errors = fittingErrors(call.name); !errors.empty())
            runWith({call.name, call.occurrence, errors[0], true}, call);
    }
}

TEST_P(HostFaultsTest, aKillAtACallDoesNoHarm) {
    for (const auto& call : ownCalls()) runWith({call.name, call.occurrence, kill, false}, call);
}

INSTANTIATE_TEST_SUITE_P(, HostFaultsTest, testing::ValuesIn(preparations),
                         [](const auto& test) { return test.param.name; });

}  // namespace
}  // namespace tallowbrook
