#include "HostPromises.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <iterator>
#include <vector>

#include "Domain/EventCoding.h"
#include "EventBridge/SpoolDrainer.h"
#include "HostOutput.h"
#include "SpoolContents.h"
#include "Support/FileContents.h"
#include "Support/WaitUntil.h"

namespace tallowbrook {
namespace {

using Sessions = std::multiset<std::string>;

void writeSegment(const TestHome& home, const std::string& file,
                  const std::vector<AgentEvent>& events) {
    std::string lines;
    for (const auto& event : events) lines += EventCoding::encodeLine(event);
    const auto path = home.paths.spoolDirectory() / file;
    writeContents(path, lines);
    permissions(path, std::filesystem::perms{0600});
}

void makeDirectories(const TestHome& home) {
    for (const auto& directory : {home.paths.home, home.paths.spoolDirectory()}) {
        create_directories(directory);
        permissions(directory, std::filesystem::perms{0700});
    }
}

Sessions without(const Sessions& all, const Sessions& some) {
    Sessions rest;
    std::ranges::set_difference(all, some, std::inserter(rest, rest.end()));
    return rest;
}

}  // namespace

AgentEvent finishedTurn(const std::string& session) {
    AgentEvent event = currentEvent(session);
    event.cwd = "/proj/" + session;
    event.observedAt += std::chrono::days{1};
    return event;
}

void prepareFirstRun(const TestHome& home) {
    makeDirectories(home);
    writeSegment(home, "overflow-1-1-A.jsonl", {finishedTurn("moved-1"), finishedTurn("moved-2")});
    writeSegment(home, "events.jsonl", {finishedTurn("active-1"), finishedTurn("active-2")});
}

void prepareRunAfterACrash(const TestHome& home) {
    makeDirectories(home);
    writeSegment(home, "events.jsonl", {finishedTurn("told")});
    EXPECT_EQ(home.host({"watch", "--once"}).status, 0);

    const AgentEvent untold = finishedTurn("untold");
    writeSegment(home, "events.jsonl", {untold});
    ProgramCall call = home.hostCall({"watch"});
    call.prepare = [] { dup2(open("/dev/full", O_WRONLY | O_CLOEXEC), STDOUT_FILENO); };
    RunningProgram host{call};
    waitUntil([&] { return SpoolDrainer{home.paths}.pendingSegmentCount() == 0; });
    host.send(SIGKILL);
    EXPECT_EQ(host.wait().status, -1);

    writeSegment(home, "ingest-1-1-A.jsonl", {untold, finishedTurn("claimed")});
    writeSegment(home, "overflow-2-1-A.jsonl", {finishedTurn("moved")});
    writeSegment(home, "events.jsonl", {finishedTurn("active-1"), finishedTurn("active-2")});
}

void PrintTo(const Preparation& preparation, std::ostream* stream) { *stream << preparation.name; }

void copyHome(const TestHome& from, const TestHome& to) {
    std::filesystem::copy(from.paths.home, to.paths.home, std::filesystem::copy_options::recursive);
}

HostPromises HostPromises::of(const TestHome& home) {
    const StoredState state = StoredState::of(home.paths);
    HostPromises promises{state.events, state.toldSessions()};
    for (const auto& session : SpoolContents::of(home.paths).sessions())
        if (!promises.everything.contains(session)) promises.everything.insert(session);
    return promises;
}

void HostPromises::expectHonestStatus(const TestHome& home, const ProgramResult& result) const {
    const bool onlyLooked =
        result.errors.find("Another host watches this home already.") != std::string::npos;
    // A lock that cannot be looked at is taken for another host's; a host that looks on can fail.
    if (result.status != 0) {
        EXPECT_EQ(result.status, 1);
        return;
    }
    if (onlyLooked) return;
    const StoredState state = StoredState::of(home.paths);
    EXPECT_EQ(state.events, everything) << "not all is stored, but the status is 0";
    EXPECT_EQ(state.toldSessions(), everything) << "not all is told, but the status is 0";
}

void HostPromises::expectSentence(const ProgramResult& result) {
    if (result.status != 1) return;
    EXPECT_TRUE(result.errors.starts_with("tallowbrook: ")) << result.errors;
    EXPECT_TRUE(result.errors.ends_with(".\n")) << result.errors;
}

void HostPromises::expectNothingLost(const TestHome& home, const ProgramResult& result) const {
    const StoredState state = StoredState::of(home.paths);
    EXPECT_TRUE(state.isSound);
    Sessions left = state.events;
    left.merge(SpoolContents::of(home.paths).sessions());
    EXPECT_TRUE(std::ranges::includes(left, everything)) << testing::PrintToString(left);
    const Sessions newlyTold = without(state.toldSessions(), toldBefore);
    EXPECT_TRUE(std::ranges::includes(toldIn(result.output), newlyTold))
        << "recorded as told, but never told";
}

void HostPromises::expectGoodNextRun(const TestHome& home) const {
    const Sessions told = StoredState::of(home.paths).toldSessions();
    const ProgramResult next = home.host({"watch", "--once"});
    EXPECT_EQ(next.status, 0);
    EXPECT_EQ(next.errors, "");
    EXPECT_EQ(toldIn(next.output), without(everything, told))
        << "told again what was recorded as told, or not told what was not";
    const StoredState state = StoredState::of(home.paths);
    EXPECT_TRUE(state.isSound);
    EXPECT_EQ(state.events, everything) << "not each event stored once";
    EXPECT_EQ(state.toldSessions(), everything);
    EXPECT_EQ(SpoolDrainer{home.paths}.pendingSegmentCount(), 0);
    EXPECT_TRUE(isSpoolFree(home.paths));
    expectOwnerOnlyModes(home.paths);
}

}  // namespace tallowbrook
