#include "Commands/LiveWatch.h"

#include <fmt/core.h>

#include <chrono>
#include <utility>

#include "Commands/ExplainCommand.h"
#include "Commands/HostChannels.h"
#include "Commands/MuteCommand.h"
#include "Commands/PauseCommand.h"
#include "Commands/SessionChoice.h"
#include "Loop/EndRequest.h"
#include "Notifications/Calendar.h"
#include "Output/ExitStatus.h"
#include "Output/StandardStreams.h"
#include "Output/TimeText.h"
#include "Setup/ProgramLocation.h"
#include "Store/DatabaseFailure.h"
#include "Store/Settings.h"

namespace tallowbrook::host {
namespace {

// Several programs are asked, each for 5 s at most.
constexpr std::chrono::seconds longestFocus{30};

// When quiet hours begin or end, by the minutes of the local day.
Instant nextBorder(const QuietHours& hours, Instant now, const Calendar& calendar) {
    constexpr std::int64_t minutesOfDay = 24 * 60;
    const auto time = calendar.localTime(now);
    const std::int64_t minute = time.hour * 60 + time.minute;
    const auto until = [minute](std::int64_t border) {
        const auto left = (border - minute + minutesOfDay) % minutesOfDay;
        return left > 0 ? left : minutesOfDay;
    };
    return std::chrono::floor<std::chrono::minutes>(now) +
           std::chrono::minutes{std::min(until(hours.startMinute), until(hours.endMinute))};
}

std::string withoutProgramName(std::string text) {
    constexpr std::string_view name = "tallowbrook: ";
    if (text.starts_with(name)) text.erase(0, name.size());
    while (text.ends_with('\n')) text.pop_back();
    return text;
}

}  // namespace

LiveWatch::LiveWatch(TallowbrookPaths paths, Database& database, OpenTerminal terminal,
                     TerminalText text, Troubles::Say log, const std::optional<std::string>& exec)
    : paths_{std::move(paths)},
      database_{database},
      log_{std::move(log)},
      lines_{std::make_shared<ScreenLines>(
          [this](const NotificationContent& content) { tell(content); },
          [this] { return host_.leads(); })},
      view_{std::move(terminal), std::move(text), [this] { return read(); }, actions()},
      host_{paths_, database_, channels(exec),
            [this](const std::string& sentence) { say(sentence); },
            [this](const std::string& session) {
                showClicked(session, paths_, programs_,
                            [this](const std::string& sentence) { say(sentence); });
            }} {
    view_.whenShown = [this] { lines_->isShown(); };
}

int LiveWatch::run() {
    if (auto tried = host_.tryToLead(); !tried)
        return StandardStreams::fail(
            "The lock of this home cannot be taken: " + tried.error().description() + ".");
    // Signals are received before the first pass, so that nothing slips through in between.
    const auto endRequest = EndRequest::receive();
    const auto signals = TerminalSignals::receive();
    if (!endRequest || !signals)
        return StandardStreams::fail(
            "Signals cannot be received: " +
            (endRequest ? signals.error() : endRequest.error()).description() + ".");
    // First, so that a request to end comes before all else.
    const auto ending = loop_.attach(endRequest->source(loop_));
    host_.attachTo(loop_, [this] { lookAgain(); });
    host_.pass();
    view_.attachTo(loop_, *signals);
    loop_.run();
    return ExitStatus::done;
}

std::vector<Channel> LiveWatch::channels(const std::optional<std::string>& exec) {
    // The view reads the keys, and would take the terminal's answers for some.
    auto all = otherChannels(
        paths_, database_, exec, [this](const std::string& sentence) { say(sentence); }, false);
    all.insert(all.begin(), makeLinesChannel(lines_));
    return all;
}

ViewActions LiveWatch::actions() {
    return {
        .focus = [this](const ListedSession& session) { focus(session); },
        .explain = [this](const ListedSession& session) { return explain(session); },
        .setPaused = [this](bool isPaused) { setPaused(isPaused); },
        .mute = [this](const ListedSession& session) { mute(session); },
    };
}

void LiveWatch::say(const std::string& sentence) {
    log_(sentence);
    lastTrouble_ = sentence;
    view_.tell(TimeText::timeOfDay(currentInstant()) + "  " + sentence, false);
}

void LiveWatch::tell(const NotificationContent& content) {
    auto line = notificationLine(content, currentInstant());
    line.pop_back();  // the line feed
    view_.tell(std::move(line), content.playSound);
}

void LiveWatch::lookAgain() {
    Seen seen{{}, host_.leads(), host_.hasTroubles()};
    const bool isRead = withDatabase([&] { seen.mark = database_.mark(); });
    if (!isRead || seen != seen_) view_.refresh();
}

ViewContent LiveWatch::read() {
    const Instant now = currentInstant();
    withDatabase([&] {
        // The mark first: what changes meanwhile must look like news afterwards.
        seen_ = {database_.mark(), host_.leads(), host_.hasTroubles()};
        list_ = recentSessions(database_, now);
        preferences_ = Settings{database_}.preferences().asOf(now).notifications;
    });
    return {list_, hostState(preferences_, now)};
}

HostState LiveWatch::hostState(const NotificationPreferences& preferences, Instant now) {
    HostState state{
        .leads = host_.leads(),
        .since = since_,
        .channels = {"here"},
        .trouble = host_.hasTroubles() ? lastTrouble_ : databaseTrouble_,
        .isOff = !preferences.enabled,
        .isPaused = preferences.paused,
    };
    const auto& hours = preferences.quietHours;
    const auto calendar = Calendar::current();
    if (!hours.enabled) return state;
    state.nextChange = nextBorder(hours, now, calendar);
    if (hours.contains(now, calendar))
        state.quietUntil = fmt::format("{:02}:{:02}", hours.endMinute / 60, hours.endMinute % 60);
    return state;
}

void LiveWatch::setPaused(bool isPaused) {
    const bool isSet = withDatabase([&] { setPause(database_, isPaused, std::nullopt); });
    if (isSet && !isPaused) view_.report("You are told again.");
    if (!isSet) view_.report(databaseTrouble_);
}

void LiveWatch::mute(const ListedSession& session) {
    const Mute wanted{MuteScope::session, session.snapshot.id(), std::nullopt};
    bool isMuted = false;
    const bool isSet = withDatabase([&] {
        changeMutes(database_, currentInstant(), [&](Mutes& mutes) {
            isMuted = !mutes.silence(session.snapshot);
            if (isMuted)
                mutes.add(wanted);
            else
                std::erase_if(mutes.all,
                              [&](const Mute& mute) { return mute.isOf(session.snapshot); });
        });
    });
    if (!isSet) view_.report(databaseTrouble_);
    if (isSet)
        view_.report(isMuted ? session.name + " is muted; m tells of it again."
                             : "You are told of " + session.name + " again.");
}

// By a process of its own, since it may take seconds.
void LiveWatch::focus(const ListedSession& session) {
    if (programs_.isAnyRunning()) {
        view_.report("Still at work for the session before.");
        return;
    }
    view_.report("Looking for its window …");
    const auto program = runningProgram();
    const auto ended = [this](int, const std::string& output) {
        const auto text = withoutProgramName(output);
        view_.report(text.empty() ? "The window could not be looked for." : text);
    };
    if (!program ||
        !programs_.run(program->string(),
                       {"--home", paths_.home.string(), "focus", "--", session.snapshot.id()},
                       longestFocus, ended, ChildPrograms::Kept::outputAndErrors))
        view_.report("The window could not be looked for: no program can be started.");
}

std::string LiveWatch::explain(const ListedSession& session) {
    std::string text;
    if (!withDatabase([&] { text = explanationOf(session, database_, currentInstant()); }))
        return databaseTrouble_;
    return text;
}

bool LiveWatch::withDatabase(const std::function<void()>& action) {
    try {
        action();
        databaseTrouble_.clear();
        return true;
    } catch (const SQLite::Exception& error) {
        databaseTrouble_ = databaseFailure(paths_.databaseFile(), error).text();
        return false;
    }
}

}  // namespace tallowbrook::host
