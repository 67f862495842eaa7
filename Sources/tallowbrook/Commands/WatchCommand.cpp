#include "Commands/WatchCommand.h"

#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Channels/LinesChannel.h"
#include "Commands/CommandLine.h"
#include "Commands/DatabaseDoor.h"
#include "Commands/Greeting.h"
#include "Commands/HostChannels.h"
#include "Commands/LiveWatch.h"
#include "Commands/SessionChoice.h"
#include "Diagnostics/DiagnosticLog.h"
#include "Lists/WatchEvents.h"
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

std::string jsonLineOf(const NotificationContent& content) {
    return notificationEvent(content, currentInstant());
}

// The table that precedes the lines, or a session object for each session that has changed.
class SessionOutput {
 public:
    SessionOutput(Database& database, std::shared_ptr<PatientOutput> output, WatchOutput form,
                  Troubles::Say say)
        : database_{database}, output_{std::move(output)}, form_{form}, say_{std::move(say)} {}

    void begin() { form_ == WatchOutput::json ? writeChanges() : write(sessionTable(database_)); }

    // Only what has changed since the last call that found the output ready to take it.
    void writeChanges() {
        if (form_ != WatchOutput::json || output_->isBehind()) return;
        try {
            const auto mark = database_.mark();
            const Instant now = currentInstant();
            if (mark == seen_ && now < nextChange_) return;
            const auto list = recentSessions(database_, now);
            seen_ = mark;
            nextChange_ = Instant::max();
            for (const auto& session : list.sessions)
                if (const auto next = nextStatusChange(session))
                    nextChange_ = std::min(nextChange_, *next);
            if (const auto lines = events_.changes(list, now); !lines.empty()) write(lines);
        } catch (const SQLite::Exception&) {
            // The next pass says it; until then nothing is known to have changed.
            seen_.reset();
        }
    }

 private:
    void write(const std::string& text) {
        if (const auto shown = output_->write(text); !shown)
            say_("Standard output cannot be written: " + shown.error().description() + ".");
    }

    Database& database_;
    std::shared_ptr<PatientOutput> output_;
    WatchOutput form_;
    Troubles::Say say_;
    SessionEvents events_;
    std::optional<Database::Mark> seen_;
    Instant nextChange_{};  // of a status, though nothing is heard
};

int watchByLines(const TallowbrookPaths& paths, Database& database, const WatchOptions& options) {
    PollLoop loop;
    const bool stays = options.mode == WatchMode::stay;
    const auto output = std::make_shared<PatientOutput>();
    const auto say = toUserAndLog(paths, options.mode);
    const LineOf lineOf = options.output == WatchOutput::json ? jsonLineOf : LineOf{};
    // One look shows the lines, and is over before another channel could answer.
    auto channels =
        stays ? otherChannels(paths, database, options.exec, say, true) : std::vector<Channel>{};
    channels.insert(channels.begin(),
                    stays ? makeLinesChannel(output, lineOf) : makeLinesChannel());
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
    SessionOutput sessions{database, output, options.output, say};
    if (stays) host.attachTo(loop, [&sessions] { sessions.writeChanges(); });

    // A script reads of one pass what it tells and the list, and no more.
    if (stays && options.output != WatchOutput::json) {
        // The list will say where this cannot be written.
        [[maybe_unused]] const auto greeted = output->write(greetingOf(paths, database));
    } else if (!stays && isatty(STDOUT_FILENO) == 1) {
        StandardStreams::mention(greetingOf(paths, database));
    }
    const bool passed = host.pass();
    if (!stays) {
        const int shown = StandardStreams::showAsResult(sessionTable(database));
        return passed ? shown : ExitStatus::failed;
    }
    const bool wasBehind = output->isBehind();
    sessions.begin();
    // What was to be told before the list may have been settled with it.
    if (wasBehind && !output->isBehind()) host.pass();
    loop.run();
    return ExitStatus::done;
}

struct Screen {
    OpenTerminal terminal;
    TerminalText text;
};

// Absent where lines serve better: in a pipe, in the background, on a terminal that can do no more.
std::optional<Screen> screenFor(const WatchOptions& options) {
    if (options.mode == WatchMode::once || options.output != WatchOutput::view) return std::nullopt;
    auto terminal = OpenTerminal::open();
    if (!terminal) return std::nullopt;
    auto text = TerminalText::of(terminal->descriptor(), wantsColours(options.colours));
    if (!text) {
        // A terminal that calls itself dumb is one on purpose.
        const char* name = std::getenv("TERM");
        if (name == nullptr || std::string_view{name} != "dumb")
            StandardStreams::complain(
                text.error().followedBy("Lines are printed in place of the live view."));
        return std::nullopt;
    }
    return Screen{std::move(*terminal), std::move(*text)};
}

int watchOn(const TallowbrookPaths& paths, Database& database, const WatchOptions& options) {
    auto screen = screenFor(options);
    if (!screen) return watchByLines(paths, database, options);
    const auto log =
        [log = DiagnosticLog{paths.appLogFile(), maxLogBytes}](const std::string& sentence) {
            log.append("watch: " + sentence, currentInstant());
        };
    return LiveWatch{paths, database,    std::move(screen->terminal), std::move(screen->text),
                     log,   options.exec}
        .run();
}

}  // namespace

int watch(const TallowbrookPaths& paths, const WatchOptions& options) {
    if (options.exec && options.mode == WatchMode::once)
        return StandardStreams::fail("A host that looks once runs no program (--exec).",
                                     ExitStatus::wrongUsage);
    // A reader that has gone is then an ordinary write error, which can be said.
    std::signal(SIGPIPE, SIG_IGN);
    return withDatabase(paths,
                        [&](Database& database) { return watchOn(paths, database, options); });
}

void addWatchCommand(CommandLine& line) {
    struct Words {
        bool once = false;
        bool plain = false;
        bool json = false;
        std::vector<std::string> colours;
        std::optional<std::string> exec;
    };
    const auto given = std::make_shared<Words>();
    auto words = line.add(
        "watch", "Read what the agents report and tell the user",
        [given](const TallowbrookPaths& paths) {
            const auto output = given->json    ? WatchOutput::json
                                : given->plain ? WatchOutput::lines
                                               : WatchOutput::view;
            return watch(paths,
                         {.mode = given->once ? WatchMode::once : WatchMode::stay,
                          .output = output,
                          .colours = given->colours.empty() ? ColourChoice::automatic
                                                            : colourChoice(given->colours.back()),
                          .exec = given->exec});
        },
        "At a terminal it shows a live view of the sessions; ? in it lists the keys.");
    words.addOption("--exec", "COMMAND", given->exec,
                    "Run this for each notification, which it reads as JSON");
    words.addFlag("--once", given->once, "Read what is there, list the sessions, and end");
    words.addFlag("--plain", given->plain, "A line for each notification, at a terminal too");
    words.addFlag("--json", given->json, "JSON objects: notifications, changed sessions", "--once");
    words.addChoices("--color", {"auto", "always", "never"}, given->colours,
                     "Colours in the view; auto: unless NO_COLOR is set");
}

}  // namespace tallowbrook::host
