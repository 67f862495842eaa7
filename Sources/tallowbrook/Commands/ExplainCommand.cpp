#include "Commands/ExplainCommand.h"

#include <memory>

#include <fmt/core.h>

#include "Commands/CommandLine.h"
#include "Commands/DatabaseDoor.h"
#include "Commands/SessionChoice.h"
#include "Lists/Timeline.h"
#include "Output/ExitStatus.h"
#include "Output/PrintableText.h"
#include "Output/StandardStreams.h"
#include "Output/TimeText.h"
#include "Preferences/HostSettings.h"
#include "Store/SessionStore.h"

namespace tallowbrook::host {
namespace {

// What fits on a screen together with the explanation.
constexpr int shownEvents = 10;

}  // namespace

std::string explanationOf(const SessionSnapshot& session, Database& database, Instant now) {
    const auto formatTime = [now](Instant time) { return TimeText::shortTime(time, now); };
    auto text = fmt::format(
        "{}, {}, session {}\n{}\n", PrintableText::printable(session.projectLabel()),
        displayName(session.key.provider), PrintableText::printable(session.key.sessionID),
        PrintableText::printable(session.explanation(now, staleAfter, formatTime)));
    const auto events = SessionStore{database}.latestEvents(session.key, shownEvents);
    text += fmt::format("\nThe last {} of {} events:\n", events.size(), session.eventCount);
    for (const auto& [event, effect] : events) text += timelineRow(event, effect, now);
    return text;
}

int explain(const TallowbrookPaths& paths, const std::string& session) {
    return withExistingDatabase(paths, [&](Database& database) {
        const Instant now = currentInstant();
        const auto chosen = chooseSession(database, session, now);
        if (!chosen) return StandardStreams::fail(chosen.error(), ExitStatus::wrongUsage);
        return StandardStreams::showAsResult(explanationOf(chosen->snapshot, database, now));
    });
}

void addExplainCommand(CommandLine& line) {
    const auto session = std::make_shared<std::string>();
    auto words =
        line.add("explain", "Tell why a session has its status, and its last events",
                 [session](const TallowbrookPaths& paths) { return explain(paths, *session); });
    addSessionOperand(words, *session);
}

}  // namespace tallowbrook::host
