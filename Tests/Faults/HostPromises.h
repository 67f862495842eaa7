// What the host promises whatever happens to it, checked from outside: no event is lost, each is
// stored once, and what is recorded as told was told and is not told again.
//
// All events of these tests end the turn of a session of their own, which runs in a directory of
// the same name, so that the host's output shows which one it tells of.
#pragma once

#include <array>
#include <ostream>
#include <set>
#include <string>

#include "Domain/AgentEvent.h"
#include "EndToEnd/TestHome.h"
#include "StoredState.h"

namespace tallowbrook {

// Observed a day from now, so that it never gets too old to be told, however slow the test is.
AgentEvent finishedTurn(const std::string& session);

// A spool such as helpers leave it that ran without a host: nothing else is there yet.
void prepareFirstRun(const TestHome& home);

// What a host left that was killed between storing a segment and removing it: its log is not yet
// merged into the database, one notification is told, and one could not be told.
void prepareRunAfterACrash(const TestHome& home);

// What a host finds on its home when it starts, as the parameter of a test.
struct Preparation {
    const char* name;
    void (*apply)(const TestHome& home);
};
inline constexpr std::array preparations{
    Preparation{"ofTheFirstRun", prepareFirstRun},
    Preparation{"ofTheRunAfterACrash", prepareRunAfterACrash},
};
void PrintTo(const Preparation& preparation, std::ostream* stream);

// A new home that equals a prepared one.
void copyHome(const TestHome& from, const TestHome& to);

struct HostPromises {
    std::multiset<std::string> everything;  // the session of each event, stored or in the spool
    std::multiset<std::string> toldBefore;

    static HostPromises of(const TestHome& home);

    // Of a `watch --once` that was in trouble but not killed: the status is 0 only when all is
    // done, else it is 1 and a sentence says why.
    void expectHonestStatus(const TestHome& home, const ProgramResult& result) const;
    static void expectSentence(const ProgramResult& result);

    // Also of one that was killed.
    void expectNothingLost(const TestHome& home, const ProgramResult& result) const;

    // Runs the next `watch --once`, which nothing troubles.
    void expectGoodNextRun(const TestHome& home) const;
};

}  // namespace tallowbrook
