#include "Commands/FocusCommand.h"

#include <memory>

#include <fmt/core.h>

#include <algorithm>

#include "Commands/CommandLine.h"
#include "Commands/DatabaseDoor.h"
#include "Commands/SessionChoice.h"
#include "Commands/UpToDateDatabase.h"
#include "Focus/SessionFocus.h"
#include "Output/ExitStatus.h"
#include "Output/PrintableText.h"
#include "Output/StandardStreams.h"
#include "Store/Settings.h"

namespace tallowbrook::host {
namespace {

int exitStatus(FocusOutcome::Result result) {
    switch (result) {
        case FocusOutcome::Result::focused:
            return ExitStatus::done;
        case FocusOutcome::Result::instead:
            return ExitStatus::notInOrder;
        case FocusOutcome::Result::nothing:
            break;
    }
    return ExitStatus::failed;
}

int focusOne(const SessionSnapshot& session, const TallowbrookPaths& paths) {
    const auto outcome = focusSession(session, paths);
    const int status = exitStatus(outcome.result);
    // Standard output says what was done, standard error why nothing was.
    if (status == ExitStatus::failed) return StandardStreams::fail(outcome.sentence);
    const int shown =
        StandardStreams::showAsResult(PrintableText::printable(outcome.sentence.text()) + "\n");
    return shown == ExitStatus::done ? status : shown;
}

}  // namespace

int focus(const TallowbrookPaths& paths, const std::string& session) {
    return withExistingDatabase(paths, [&](Database& database) {
        const auto chosen = chooseSession(database, session, currentInstant());
        if (!chosen) return StandardStreams::fail(chosen.error(), ExitStatus::wrongUsage);
        return focusOne(chosen->snapshot, paths);
    });
}

int focusNext(const TallowbrookPaths& paths) {
    return withUpToDateSessions(paths, [&](Database& database) {
        const Instant now = currentInstant();
        // Only sessions that a list shows by default: one that has waited for days was given up.
        auto list = recentSessions(database, now);
        std::erase_if(list.sessions, [](const ListedSession& session) {
            return session.status != SessionStatus::needsAttention;
        });
        std::vector<std::string> waiting;
        waiting.reserve(list.sessions.size());
        for (const auto& session : list.sessions) waiting.push_back(session.snapshot.id());

        Settings settings{database};
        auto cycle = settings.waitingCycle();
        const auto id = cycle.next(waiting, now);
        // Before focusing, which may take seconds: a second call meanwhile goes on from here.
        if (!database.isReadOnly()) settings.setWaitingCycle(cycle);
        if (!id) return StandardStreams::showAsResult("No session waits for you.\n");
        const auto place = std::ranges::find(waiting, *id) - waiting.begin();
        const auto& session = list.sessions[static_cast<std::size_t>(place)];
        StandardStreams::mention(fmt::format("{} of {}: {}\n", place + 1, waiting.size(),
                                             PrintableText::printable(session.name)));
        return focusOne(session.snapshot, paths);
    });
}

void addFocusCommands(CommandLine& line) {
    const std::string help =
        "3: the window itself was not found, but something that helps was done instead.";
    const auto session = std::make_shared<std::string>();
    auto words = line.add(
        "focus", "Bring the window of a session to the front",
        [session](const TallowbrookPaths& paths) { return focus(paths, *session); }, help);
    addSessionOperand(words, *session);
    line.add("next", "Focus the next session that waits for you", focusNext, help);
}

}  // namespace tallowbrook::host
