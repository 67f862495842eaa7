#include "Commands/WatchCommand.h"

#include <memory>

#include "Channels/LinesChannel.h"
#include "Commands/CommandLine.h"
#include "Commands/DatabaseDoor.h"
#include "Commands/SessionChoice.h"
#include "Diagnostics/DiagnosticLog.h"
#include "Loop/EndRequest.h"
#include "Output/ExitStatus.h"
#include "Output/StandardStreams.h"
#include "Watch/Host.h"

namespace tallowbrook::host {
namespace {

constexpr std::int64_t maxLogBytes = 262144;

Troubles::Say toUserAndLog(const TallowbrookPaths& paths) {
    return [log = DiagnosticLog{paths.appLogFile(), maxLogBytes}](const std::string& sentence) {
        StandardStreams::complain(sentence);
        log.append("watch: " + sentence, currentInstant());
    };
}

int showSessions(Database& database) {
    const Instant now = currentInstant();
    return StandardStreams::showAsResult(recentSessions(database, now).table(now));
}

int watchOn(const TallowbrookPaths& paths, Database& database, WatchMode mode) {
    PollLoop loop;
    Host host{paths, database, {makeLinesChannel()}, toUserAndLog(paths)};
    if (auto tried = host.tryToLead(); !tried)
        return StandardStreams::fail(
            "The lock of this home cannot be taken: " + tried.error().description() + ".");
    if (!host.leads())
        StandardStreams::complain(
            "Another host watches this home already. This one only shows what that one stores.");
    // Signals are received before the first pass, so that nothing slips through in between.
    const auto endRequest = EndRequest::receive();
    if (!endRequest)
        return StandardStreams::fail(
            "Signals cannot be received: " + endRequest.error().description() + ".");
    // First, so that a request to end comes before all else.
    const auto ending = loop.attach(endRequest->source(loop));
    host.attachTo(loop);

    const bool passed = host.pass();
    const int shown = showSessions(database);
    if (mode == WatchMode::once) return passed ? shown : ExitStatus::failed;
    loop.run();
    return ExitStatus::done;
}

}  // namespace

int watch(const TallowbrookPaths& paths, WatchMode mode) {
    return withDatabase(paths, [&](Database& database) { return watchOn(paths, database, mode); });
}

void addWatchCommand(CommandLine& line) {
    const auto once = std::make_shared<bool>(false);
    auto words = line.add("watch", "Read what the agents report and tell the user",
                          [once](const TallowbrookPaths& paths) {
                              return watch(paths, *once ? WatchMode::once : WatchMode::stay);
                          });
    words.addFlag("--once", *once, "Read what is there, list the sessions, and end");
}

}  // namespace tallowbrook::host
