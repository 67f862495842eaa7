#include "Commands/ExplainCommand.h"

#include <fmt/core.h>

#include "Commands/SessionChoice.h"
#include "Commands/StoreCommand.h"
#include "Lists/Timeline.h"
#include "Output/ExitStatus.h"
#include "Output/TerminalOutput.h"
#include "Output/TerminalText.h"
#include "Preferences/HostSettings.h"

namespace tallowbrook::host {
namespace {

constexpr int shownEvents = 10;

std::string explanationOf(const SessionSnapshot& session, EventStore& store, Instant now) {
    const auto formatTime = [now](Instant time) { return TerminalText::shortTime(time, now); };
    auto text = fmt::format(
        "{}, {}, session {}\n{}\n", TerminalText::printable(session.projectLabel()),
        displayName(session.key.provider), TerminalText::printable(session.key.sessionID),
        TerminalText::printable(session.explanation(now, staleAfter, formatTime)));
    const auto events = store.latestEvents(session.key, shownEvents);
    text += fmt::format("\nThe last {} of {} events:\n", events.size(), session.eventCount);
    for (const auto& [event, effect] : events) text += timelineRow(event, effect, now);
    return text;
}

}  // namespace

int explain(const TallowbrookPaths& paths, const std::string& session) {
    return withExistingStore(paths, [&](EventStore& store) {
        const Instant now = currentInstant();
        const auto chosen = chooseSession(store, session, now);
        if (!chosen) return TerminalOutput::fail(chosen.error(), ExitStatus::wrongUsage);
        return TerminalOutput::showAsResult(explanationOf(chosen->snapshot, store, now));
    });
}

}  // namespace tallowbrook::host
