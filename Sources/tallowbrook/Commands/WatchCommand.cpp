#include "Commands/WatchCommand.h"

#include <csignal>
#include <memory>

#include "Channels/ChannelLadder.h"
#include "Channels/LinesChannel.h"
#include "Commands/CommandLine.h"
#include "Commands/DatabaseDoor.h"
#include "Commands/SessionChoice.h"
#include "Diagnostics/DiagnosticLog.h"
#include "Loop/ChildPrograms.h"
#include "Loop/EndRequest.h"
#include "Output/ExitStatus.h"
#include "Output/StandardStreams.h"
#include "Setup/ProgramLocation.h"
#include "Watch/Host.h"

namespace tallowbrook::host {
namespace {

constexpr std::int64_t maxLogBytes = 262144;
// Each of the programs that it asks is bounded by less.
constexpr std::chrono::seconds timeToFocus{60};

Troubles::Say toUserAndLog(const TallowbrookPaths& paths, WatchMode mode) {
    return
        [mode, log = DiagnosticLog{paths.appLogFile(), maxLogBytes}](const std::string& sentence) {
            // A terminal that was stopped must not stop a host that stays.
            if (mode == WatchMode::once)
                StandardStreams::complain(sentence);
            else
                StandardStreams::complainUnlessStalled(sentence);
            log.append("watch: " + sentence, currentInstant());
        };
}

// In a program of its own, since finding a window may take seconds.
void showClicked(const std::string& session, const TallowbrookPaths& paths, ChildPrograms& programs,
                 const Troubles::Say& say) {
    std::vector<std::string> words{"--home", paths.home.string()};
    // What tells of several sessions leads to the first that waits.
    if (session.empty())
        words.emplace_back("next");
    else
        words.insert(words.end(), {"focus", session});
    const auto ended = [say](int status, const std::string& output) {
        if (status == ExitStatus::done) return;
        say("The window behind the clicked notification was not found. " +
            (status == ExitStatus::notInOrder ? output.substr(0, output.find_last_not_of('\n') + 1)
                                              : std::string{"\"tallowbrook focus\" says why."}));
    };
    const auto program = runningProgram();
    if (!program || !programs.run(program->string(), words, timeToFocus, ended))
        say("A click on a notification could not be followed: no program can be started.");
}

std::string sessionTable(Database& database) {
    const Instant now = currentInstant();
    return recentSessions(database, now).table(now);
}

int watchOn(const TallowbrookPaths& paths, Database& database, WatchMode mode) {
    PollLoop loop;
    const bool stays = mode == WatchMode::stay;
    const auto output = std::make_shared<PatientOutput>();
    const auto say = toUserAndLog(paths, mode);
    // Who looks once sees the lines, and is gone before another channel could answer.
    auto channels = stays ? makeLadder() : std::vector<Channel>{};
    channels.insert(channels.begin(), stays ? makeLinesChannel(output) : makeLinesChannel());
    ChildPrograms programs{loop};
    Host host{paths, database, std::move(channels), say,
              [&](const std::string& session) { showClicked(session, paths, programs, say); }};
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
    const auto table = sessionTable(database);
    if (!stays) {
        const int shown = StandardStreams::showAsResult(table);
        return passed ? shown : ExitStatus::failed;
    }
    const bool wasBehind = output->isBehind();
    if (const auto shown = output->write(table); !shown)
        say("Standard output cannot be written: " + shown.error().description() + ".");
    // What was to be told before the list may have been settled with it.
    if (wasBehind && !output->isBehind()) host.pass();
    loop.run();
    return ExitStatus::done;
}

}  // namespace

int watch(const TallowbrookPaths& paths, WatchMode mode) {
    // A reader that has gone is then an ordinary write error, which can be said.
    std::signal(SIGPIPE, SIG_IGN);
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
