#include "Commands/WatchCommand.h"

#include <unistd.h>

#include <csignal>
#include <memory>

#include "Channels/ChannelLadder.h"
#include "Channels/ExecChannel.h"
#include "Channels/LinesChannel.h"
#include "Channels/ProgramText.h"
#include "Commands/CommandLine.h"
#include "Commands/DatabaseDoor.h"
#include "Commands/Greeting.h"
#include "Commands/SessionChoice.h"
#include "Diagnostics/DiagnosticLog.h"
#include "Loop/ChildPrograms.h"
#include "Loop/EndRequest.h"
#include "Output/ExitStatus.h"
#include "Output/StandardStreams.h"
#include "Preferences/Muting.h"
#include "Setup/Agents.h"
#include "Setup/ProgramLocation.h"
#include "Setup/ReportingHome.h"
#include "Store/Settings.h"
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

std::string greetingOf(const TallowbrookPaths& paths, Database& database) {
    const Instant now = currentInstant();
    const auto muted =
        Muting::of(Settings{database}.preferences(), now, Calendar::current()).sentencesNow();
    if (!agentsReportTo(paths)) return greetingOfAnotherHome(muted, now);
    const auto helper =
        IntegrationSetup::helperStatus(paths.installedHelper(), bundledHelper().value_or(""));
    std::vector<GreetedAgent> agents;
    for (const auto& agent : allAgents())
        agents.push_back({agent.provider, AgentHealth::of(agent, paths, helper).state()});
    return greeting(agents, muted, now);
}

// How a program that is no host brings a session to the front.
std::string focusCommand(const TallowbrookPaths& paths, const std::string& sessionStorageID) {
    const auto program = runningProgram();
    if (!program) return {};
    const auto id = sessionStorageID.substr(sessionStorageID.find('|') + 1);
    return ProgramText::quoted(program->string()) + " --home " +
           ProgramText::quoted(paths.home.string()) + " focus -- " + ProgramText::quoted(id);
}

// All but the lines, which every host has.
std::vector<Channel> otherChannels(const TallowbrookPaths& paths, Database& database,
                                   const std::optional<std::string>& exec,
                                   const Troubles::Say& say) {
    const SayWhy sayWhy = [say](const Sentence& sentence) { say(sentence.text()); };
    auto channels = makeLadder({.say = sayWhy, .focusCommand = [paths](const std::string& session) {
                                    return focusCommand(paths, session);
                                }});
    channels.push_back(makeExecChannel(
        {.command = [&database,
                     exec] { return exec ? *exec : Settings{database}.preferences().host.exec; },
         .say = sayWhy}));
    return channels;
}

int watchOn(const TallowbrookPaths& paths, Database& database, WatchMode mode,
            const std::optional<std::string>& exec) {
    PollLoop loop;
    const bool stays = mode == WatchMode::stay;
    const auto output = std::make_shared<PatientOutput>();
    const auto say = toUserAndLog(paths, mode);
    // One look shows the lines, and is over before another channel could answer.
    auto channels = stays ? otherChannels(paths, database, exec, say) : std::vector<Channel>{};
    channels.insert(channels.begin(), stays ? makeLinesChannel(output) : makeLinesChannel());
    ChildPrograms programs{loop};
    Host host{paths,
              database,
              std::move(channels),
              say,
              [&](const std::string& session) { showClicked(session, paths, programs, say); },
              stays ? EventSource::asksAgainLater : EventSource::asksUntilItKnows};
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
    if (stays) host.attachTo(loop);

    // A script reads of one pass what it tells and the list, and no more.
    if (stays) {
        // The list will say where this cannot be written.
        [[maybe_unused]] const auto greeted = output->write(greetingOf(paths, database));
    } else if (isatty(STDOUT_FILENO) == 1) {
        StandardStreams::mention(greetingOf(paths, database));
    }
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

int watch(const TallowbrookPaths& paths, WatchMode mode, const std::optional<std::string>& exec) {
    if (exec && mode == WatchMode::once)
        return StandardStreams::fail("A host that looks once runs no program (--exec).",
                                     ExitStatus::wrongUsage);
    // A reader that has gone is then an ordinary write error, which can be said.
    std::signal(SIGPIPE, SIG_IGN);
    return withDatabase(paths,
                        [&](Database& database) { return watchOn(paths, database, mode, exec); });
}

void addWatchCommand(CommandLine& line) {
    const auto once = std::make_shared<bool>(false);
    const auto exec = std::make_shared<std::optional<std::string>>();
    auto words = line.add("watch", "Read what the agents report and tell the user",
                          [once, exec](const TallowbrookPaths& paths) {
                              return watch(paths, *once ? WatchMode::once : WatchMode::stay, *exec);
                          });
    words.addOption("--exec", "COMMAND", *exec,
                    "Run this for each notification, which it reads as JSON");
    words.addFlag("--once", *once, "Read what is there, list the sessions, and end");
}

}  // namespace tallowbrook::host
