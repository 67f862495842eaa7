#include "Watch/Host.h"

#include <poll.h>

#include <algorithm>
#include <utility>

#include "Focus/EditorShells.h"

namespace tallowbrook::host {
namespace {

using std::chrono::steady_clock;

constexpr std::chrono::milliseconds leadersLook{2000};
// No signal says that another host has stored what a signal announced.
constexpr std::chrono::milliseconds onlookersLook{500};

StateFile::ShellOf editorShells(const TallowbrookPaths& paths) {
    return [paths, operations = FocusOperations::live()](
               const SessionSnapshot& session) -> std::optional<pid_t> {
        const auto windows = EditorBridge::windows(paths.editorsDirectory());
        const auto owner = editorShellOf(session, windows, operations);
        if (!owner) return std::nullopt;
        return owner->shellPid;
    };
}

}  // namespace

Host::Host(TallowbrookPaths paths, Database& database, std::vector<Channel> channels,
           Troubles::Say say, std::function<void(const std::string&)> clicked, int asksForSpool)
    : paths_{std::move(paths)},
      database_{database},
      channels_{std::move(channels)},
      troubles_{std::move(say), paths_.databaseFile()},
      refused_{paths_},
      watcher_{database,
               {EventSource::spool({paths_}, asksForSpool)},
               channels_,
               troubles_,
               {.now = currentInstant,
                .calendar = Calendar::current,
                .news = [this] { return refused_.takeNews(database_, currentInstant()); },
                .hasWaitedSince =
                    [this](const SessionKey& session, Instant since) {
                        return agents_.hasWaitedSince(session, since);
                    },
                .followAgents =
                    [this](Instant now, const PresenceNews& news) {
                        agentsOutlook_ = agents_.follow(database_, now, news);
                        return agentsOutlook_;
                    },
                .clicked = std::move(clicked),
                .looking = {.ask =
                                [this] {
                                    if (isAttached_) gaze_.ask();
                                },
                            .isAwaited = [this] { return gaze_.isAwaited(); },
                            .isOn =
                                [this](const SessionSnapshot& session) {
                                    return gaze_.isOn(session);
                                }}}},
      onlooker_{database, channels_.front(), troubles_,
                [this] { return refused_.newsOfAnotherHost(database_, currentInstant()); }},
      state_{paths_, editorShells(paths_)} {}

Host::~Host() {
    // Nobody keeps it right from here on.
    if (leads()) state_.remove();
}

std::expected<void, FileError> Host::tryToLead() {
    auto lock = HostLock::tryAcquire(paths_);
    if (!lock) return std::unexpected(lock.error());
    lock_ = std::move(*lock);
    if (lock_) lock_->sign(currentInstant());
    return {};
}

// False when what is gone could not be replaced.
bool Host::keepHome() {
    const bool lockIsInPlace = !lock_ || lock_->isInPlace(paths_);
    if (lockIsInPlace && database_.isInPlace()) return true;
    return troubles_.during([&] {
        if (!lockIsInPlace) {
            // Another host may have come to the new home before.
            lock_.reset();
            if (auto tried = tryToLead(); !tried)
                troubles_.add(
                    "The lock of this home cannot be taken: " + tried.error().description() + ".");
        }
        if (database_.isInPlace()) return;
        if (auto reopened = database_.reopen(paths_); !reopened) {
            troubles_.add(reopened.error().text());
            return;
        }
        onlooker_.beginAnew();
        troubles_.sayOnce("The database " + paths_.databaseFile().string() +
                          " was removed or replaced while it was in use; this host goes on with "
                          "the one that is there now.");
    });
}

bool Host::pass() {
    nextLook_ = steady_clock::now() + (leads() ? leadersLook : onlookersLook);
    if (!keepHome()) return false;
    if (!leads()) {
        // Its last words may have come before its end was seen.
        const bool ended = !HostLock::isHeld(paths_) && tryToLead() && leads();
        const bool shown = onlooker_.pass();
        if (!ended) return shown;
        troubles_.sayOnce("The other host has ended; this one takes over.");
        watcher_.takeOver();
    }
    // Before the pass: what is written meanwhile must look like news afterwards.
    seenSpool_ = SpoolState::of(paths_);
    return lead();
}

bool Host::lead() {
    const bool done = watcher_.pass();
    alarm_.watch(agentsOutlook_.places, agentsOutlook_.processes);
    // A database that has failed is not waited for a second time: the next pass tells what there
    // is.
    if (done) state_.update(database_, currentInstant());
    return done;
}

void Host::attachTo(PollLoop& loop, std::function<void()> afterwards) {
    isAttached_ = true;
    afterwards_ = std::move(afterwards);
    // Without a working signal the clock alone wakes.
    if (auto observer = SpoolSignal::Observer::start()) {
        signal_ = std::move(*observer);
        attachments_.push_back(loop.attach({
            .interest =
                [this] { return PollInterest{signal_->fileDescriptor(), POLLIN, std::nullopt}; },
            .proceed =
                [this](short) {
                    // Of the other files in the signal's directory nothing is asked.
                    if (!signal_->consume() || !leads()) return;
                    pass();
                    afterwards_();
                },
        }));
    }
    attachments_.push_back(loop.attach({
        .interest = [this] { return clockInterest(); },
        .proceed =
            [this](short) {
                lookAround();
                afterwards_();
            },
    }));
    attachments_.push_back(loop.attach(alarm_.source([this] {
        if (leads()) pass();
        afterwards_();
    })));
    // What has come of a delivery is to be written down, and what waited for an answer is to be
    // told.
    const auto attach = [&](const PollSource& source) {
        attachments_.push_back(loop.attach(
            {.interest = source.interest, .proceed = [this, proceed = source.proceed](short ready) {
                 proceed(ready);
                 pass();
                 afterwards_();
             }}));
    };
    for (const auto& channel : channels_)
        if (channel.source) attach(*channel.source);
    attach(gaze_.source());
}

PollInterest Host::clockInterest() const {
    auto deadline = nextLook_;
    if (const auto due = leads() ? watcher_.nextDue() : std::nullopt)
        deadline = std::min(deadline, steady_clock::now() + (*due - currentInstant()));
    return {-1, 0, deadline};
}

void Host::lookAround() {
    const auto now = currentInstant();
    // What is due by the old time of day would wait for as long as the clock was set back.
    const bool wasSetBack = now < std::exchange(seenClock_, now);
    const auto due = watcher_.nextDue();
    const bool isDue = due && *due <= now;
    if (!leads() || isDue || wasSetBack || refused_.mayHaveNews() || state_.mayHaveNews() ||
        SpoolState::of(paths_) != seenSpool_) {
        pass();
        return;
    }
    nextLook_ = steady_clock::now() + leadersLook;
}

}  // namespace tallowbrook::host
