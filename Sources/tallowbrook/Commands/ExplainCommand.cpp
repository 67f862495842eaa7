#include "Commands/ExplainCommand.h"

#include <memory>

#include <fmt/core.h>

#include "Commands/CommandLine.h"
#include "Commands/SessionChoice.h"
#include "Commands/ToldRows.h"
#include "Commands/UpToDateDatabase.h"
#include "Lists/Timeline.h"
#include "Lists/UnfinishedEnd.h"
#include "Output/ExitStatus.h"
#include "Output/PrintableText.h"
#include "Output/StandardStreams.h"
#include "Output/TimeText.h"
#include "Store/Outbox.h"
#include "Store/SessionMarks.h"
#include "Store/SessionStore.h"

namespace tallowbrook::host {
namespace {

// What fits on a screen together with the explanation.
constexpr int shownEvents = 10;
constexpr int shownNews = 8;
// Among which what was not told is looked for.
constexpr int knownEvents = 500;

// "docs-site #2, Claude Code, on main, since 14:05, session 4b0f6a1e"
std::string headline(const ListedSession& listed, Database& database, const std::string& since) {
    const auto& session = listed.snapshot;
    const auto mark = SessionMarks{database}.mark(session.id());
    const auto branch = mark && mark->branch ? ", on " + *mark->branch : std::string{};
    return PrintableText::printable(fmt::format("{}, {}{}, since {}, session {}", listed.name,
                                                displayName(session.key.provider), branch, since,
                                                session.key.sessionID)) +
           "\n";
}

}  // namespace

std::string explanationOf(const ListedSession& listed, Database& database, Instant now) {
    const auto& session = listed.snapshot;
    auto text = headline(listed, database, TimeText::shortTime(session.firstSeenAt, now)) +
                PrintableText::wrapped(PrintableText::printable(listed.explanation(now))) + "\n";
    const auto events = SessionStore{database}.latestEvents(session.key, shownEvents);
    text += fmt::format("\nThe last {} of {} events:\n", events.size(), session.eventCount);
    for (const auto& [event, effect] : events) text += timelineRow(event, effect, now);
    Outbox outbox{database};
    const auto told =
        toldRows({.notifications = outbox.latestOf(session.id(), shownNews),
                  .untold = outbox.untold(session.id()),
                  .events = SessionStore{database}.latestEvents(session.key, knownEvents)},
                 session.key.provider, now, shownNews);
    if (told.empty()) return text + "\nNothing of it was to be told so far.\n";
    return text + "\nWhat was told of it:\n" + told;
}

int explain(const TallowbrookPaths& paths, const std::string& session) {
    return withUpToDateSessions(paths, [&](Database& database) {
        const Instant now = currentInstant();
        const auto chosen = chooseSession(database, session, now);
        if (!chosen) return StandardStreams::fail(chosen.error(), ExitStatus::wrongUsage);
        return StandardStreams::showAsResult(explanationOf(*chosen, database, now));
    });
}

void addExplainCommand(CommandLine& line) {
    const auto session = std::make_shared<std::string>();
    auto words =
        line.add("explain", "Tell why a session has its status, its last events, and what was told",
                 [session](const TallowbrookPaths& paths) { return explain(paths, *session); });
    addSessionOperand(words, *session);
}

}  // namespace tallowbrook::host
