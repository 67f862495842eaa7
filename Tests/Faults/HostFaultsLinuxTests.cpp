// `watch --once` while its system calls fail, fail for ever, or are its last.
//
// Left out is what comes before the host first looks at its home: the work of the system's loader
// and of the C++ library.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <iterator>

#include "Domain/EventCoding.h"
#include "EndToEnd/TestHome.h"
#include "EventBridge/SpoolDrainer.h"
#include "HostOutput.h"
#include "SpoolContents.h"
#include "StoredState.h"
#include "StraceLinux.h"
#include "Support/FileContents.h"

namespace tallowbrook {
namespace {

using Sessions = std::multiset<std::string>;

const std::string kill = "signal=KILL";

AgentEvent finishedTurn(const std::string& session) {
    AgentEvent event = currentEvent(session);
    event.cwd = "/work/" + session;
    return event;
}

void writeSegment(const TestHome& home, const std::string& file,
                  const std::vector<AgentEvent>& events) {
    const auto path = home.paths.spoolDirectory() / file;
    std::string lines;
    for (const auto& event : events) lines += EventCoding::encodeLine(event);
    writeContents(path, lines);
    permissions(path, std::filesystem::perms{0600});
}

void makeDirectories(const TestHome& home) {
    for (const auto& directory : {home.paths.home, home.paths.spoolDirectory()}) {
        create_directories(directory);
        permissions(directory, std::filesystem::perms{0700});
    }
}

// A spool such as helpers leave it that ran without a host: nothing else is there yet.
void prepareFirstRun(const TestHome& home) {
    makeDirectories(home);
    writeSegment(home, "overflow-1-1-A.jsonl", {finishedTurn("moved-1"), finishedTurn("moved-2")});
    writeSegment(home, "events.jsonl", {finishedTurn("active-1"), finishedTurn("active-2")});
}

// What a host left that was killed between storing a segment and removing it: its log is not yet
// merged into the database, one notification is told, and one could not be told.
void prepareAfterACrash(const TestHome& home) {
    makeDirectories(home);
    writeSegment(home, "events.jsonl", {finishedTurn("told-before")});
    EXPECT_EQ(home.host({"watch", "--once"}).status, 0);
    const AgentEvent untold = finishedTurn("untold");
    writeSegment(home, "events.jsonl", {untold});
    ProgramCall call = home.hostCall({"watch"});
    call.prepare = [] { dup2(open("/dev/full", O_WRONLY | O_CLOEXEC), STDOUT_FILENO); };
    RunningProgram host{call};
    while (SpoolDrainer{home.paths}.pendingSegmentCount() > 0) usleep(1000);
    host.send(SIGKILL);
    EXPECT_EQ(host.wait().status, -1);
    writeSegment(home, "ingest-1-1-A.jsonl", {untold, finishedTurn("claimed")});
    writeSegment(home, "overflow-2-1-A.jsonl", {finishedTurn("moved")});
    writeSegment(home, "events.jsonl", {finishedTurn("active-1"), finishedTurn("active-2")});
}

Sessions without(const Sessions& all, const Sessions& some) {
    Sessions rest;
    std::ranges::set_difference(all, some, std::inserter(rest, rest.end()));
    return rest;
}

class HostFaultsTest : public testing::Test {
 protected:
    using Preparation = void (*)(const TestHome&);

    void SetUp() override {
        if (const auto reason = Strace::reasonToSkip()) GTEST_SKIP() << *reason;
    }

    // A new home that equals the prepared one.
    void copyTemplate(const TestHome& home) const {
        std::filesystem::copy(prepared.paths.home, home.paths.home,
                              std::filesystem::copy_options::recursive);
    }

    static ProgramCall callOn(const TestHome& home) { return home.hostCall({"watch", "--once"}); }

    // From the first look at the home on.
    std::vector<SystemCall> ownCalls() const {
        const TestHome home;
        copyTemplate(home);
        auto calls = Strace::callsOf(callOn(home));
        const auto first = std::find_if(calls.begin() + 1, calls.end(), [&](const auto& call) {
            return call.text.find(home.paths.home.string()) != std::string::npos;
        });
        calls.erase(calls.begin(), first);
        return calls;
    }

    void failCallsFrom(Preparation prepare) {
        prepare(prepared);
        everything = StoredState::of(prepared.paths).events;
        for (const auto& session : SpoolContents::of(prepared.paths).sessions())
            if (!everything.contains(session)) everything.insert(session);
        toldBefore = StoredState::of(prepared.paths).toldSessions();

        const auto calls = ownCalls();
        ASSERT_GT(calls.size(), 100U) << "the trace shows too little";
        for (const auto& call : calls) {
            const auto errors = fittingErrors(call.name);
            for (const auto& error : errors)
                runWith({call.name, call.occurrence, error, false}, call);
            if (!errors.empty()) runWith({call.name, call.occurrence, errors[0], true}, call);
            runWith({call.name, call.occurrence, kill, false}, call);
        }
        std::cout << calls.size() << " calls, " << runs << " runs\n";
    }

    void runWith(const Fault& fault, const SystemCall& call) {
        SCOPED_TRACE(fault.text() + " at " + call.text);
        ++runs;
        const TestHome home;
        copyTemplate(home);
        const FaultyRun faulty = Strace::runWith(fault, callOn(home));
        EXPECT_TRUE(faulty.wasInjected);
        if (fault.effect != kill) expectGoodEnd(faulty.result);

        const StoredState between = StoredState::of(home.paths);
        EXPECT_TRUE(between.isSound);
        expectNothingLost(home, between);
        if (faulty.result.status == 0) {
            EXPECT_EQ(between.events, everything) << "not all is stored, but the status is 0";
        }
        const Sessions newlyTold = without(between.toldSessions(), toldBefore);
        EXPECT_TRUE(std::ranges::includes(toldIn(faulty.result.output), newlyTold))
            << "recorded as told, but never told";
        expectGoodNextRun(home, between);
    }

    static void expectGoodEnd(const ProgramResult& result) {
        EXPECT_TRUE(result.status == 0 || result.status == 1) << result.status;
        if (result.status == 1) {
            EXPECT_TRUE(result.errors.starts_with("tallowbrook: ")) << result.errors;
        }
    }

    void expectNothingLost(const TestHome& home, const StoredState& state) const {
        Sessions left = state.events;
        left.merge(SpoolContents::of(home.paths).sessions());
        EXPECT_TRUE(std::ranges::includes(left, everything)) << testing::PrintToString(left);
    }

    void expectGoodNextRun(const TestHome& home, const StoredState& between) const {
        const ProgramResult next = home.host({"watch", "--once"});
        EXPECT_EQ(next.status, 0);
        EXPECT_EQ(next.errors, "");
        const StoredState state = StoredState::of(home.paths);
        EXPECT_TRUE(state.isSound);
        EXPECT_EQ(state.events, everything) << "each event stored once";
        EXPECT_EQ(state.toldSessions(), everything);
        EXPECT_EQ(toldIn(next.output), without(everything, between.toldSessions()))
            << "told again what was recorded as told, or not told what was not";
        EXPECT_EQ(SpoolDrainer{home.paths}.pendingSegmentCount(), 0);
        EXPECT_TRUE(isSpoolFree(home.paths));
        expectOwnerOnlyModes(home.paths);
    }

    TestHome prepared;
    Sessions everything;
    Sessions toldBefore;
    int runs = 0;
};

TEST_F(HostFaultsTest, noFailingCallOfTheFirstRunDoesHarm) { failCallsFrom(prepareFirstRun); }

TEST_F(HostFaultsTest, noFailingCallOfTheRunAfterACrashDoesHarm) {
    failCallsFrom(prepareAfterACrash);
}

}  // namespace
}  // namespace tallowbrook
