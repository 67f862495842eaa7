#include "Commands/WaitCommand.h"

#include <fmt/core.h>
#include <poll.h>

#include <algorithm>
#include <map>
#include <memory>
#include <set>
#include <utility>

#include "Commands/CommandLine.h"
#include "Commands/SessionChoice.h"
#include "Commands/UpToDateDatabase.h"
#include "EventBridge/SpoolSignal.h"
#include "Lists/SessionWords.h"
#include "Lists/UnfinishedEnd.h"
#include "Loop/PollLoop.h"
#include "Output/ExitStatus.h"
#include "Output/PrintableText.h"
#include "Output/StandardStreams.h"
#include "Text/Digits.h"
#include "Watch/HostLock.h"
#include "Watch/SpoolIntake.h"
#include "Watch/SpoolState.h"

namespace tallowbrook::host {
namespace {

using std::chrono::steady_clock;

// No signal says that a host has stored what a signal announced.
constexpr std::chrono::milliseconds storeLook{500};
// Agents that are interrupted or killed send no event, and without a host nobody notes it.
constexpr std::chrono::seconds agentsLook{2};

// The exit status that the session's state is worth; absent while it is on its way.
std::optional<int> outcomeOf(const ListedSession& session) {
    const auto stored = session.snapshot.status;
    const bool wasAtIt =
        stored == SessionStatus::working || stored == SessionStatus::needsAttention;
    const bool isGone = session.presence && session.presence->state == AgentState::gone;
    if ((wasAtIt && isGone) || endedWithoutFinishing(session.snapshot))
        return ExitStatus::notFinished;
    switch (session.status) {
        case SessionStatus::needsAttention:
            return ExitStatus::needsUser;
        case SessionStatus::completed:
            return ExitStatus::done;
        case SessionStatus::failed:
        case SessionStatus::interrupted:
            return ExitStatus::notFinished;
        default:
            return std::nullopt;
    }
}

// Used by one thread.
class Wait {
 public:
    Wait(const TallowbrookPaths& paths, Database& database, std::optional<std::string> session)
        : paths_{paths}, database_{database}, session_{std::move(session)} {}

    int run(std::optional<Seconds> timeout) {
        // Before the first look: what is written meanwhile must look like news afterwards.
        auto signal = SpoolSignal::Observer::start();
        const auto begin = steady_clock::now();
        if (judge(Look::first)) return *status_;

        PollLoop loop;
        const auto look = [&] {
            if (hasNews() && judge(Look::further)) loop.requestEnd();
        };
        std::vector<PollLoop::Attachment> attachments;
        if (signal)
            attachments.push_back(loop.attach({
                .interest =
                    [&] { return PollInterest{signal->fileDescriptor(), POLLIN, std::nullopt}; },
                .proceed =
                    [&](short) {
                        if (signal->consume()) look();
                    },
            }));
        attachments.push_back(loop.attach({
            .interest = [&] { return PollInterest{-1, 0, nextLook_}; },
            .proceed =
                [&](short) {
                    nextLook_ = steady_clock::now() + storeLook;
                    look();
                },
        }));
        if (timeout) {
            const auto end = begin + std::chrono::ceil<steady_clock::duration>(*timeout);
            attachments.push_back(loop.attach({
                .interest = [end] { return PollInterest{-1, 0, end}; },
                .proceed = [&](short) { loop.requestEnd(); },
            }));
        }
        loop.run();
        if (status_) return *status_;
        return StandardStreams::fail(
            fmt::format("Nothing has happened within {} s.", timeout->count()),
            ExitStatus::timedOut);
    }

 private:
    enum class Look { first, further };

    bool hasNews() {
        database_.requireToBeInPlace();
        if (const auto spool = SpoolState::of(paths_); spool != seenSpool_) {
            seenSpool_ = spool;
            if (!HostLock::isHeld(paths_)) {
                takeIn();
                return true;
            }
        }
        const auto version = database_.dataVersion();
        const bool isDue = steady_clock::now() >= agentsDue_;
        return std::exchange(seenVersion_, version) != version || isDue;
    }

    void takeIn() {
        for (const auto& trouble : takeInUnlessWatched(paths_, database_).troubles)
            if (said_.insert(trouble.text()).second) StandardStreams::complain(trouble);
    }

    // True when there is an outcome, which has been said.
    bool judge(Look look) {
        agentsDue_ = steady_clock::now() + agentsLook;
        const Instant now = currentInstant();
        const auto list =
            listedSessions(database_, session_ ? ListScope::all : ListScope::recent, now);
        for (const auto& session : list.sessions) {
            if (session_ && session.snapshot.id() != *session_) continue;
            const auto outcome = outcomeOf(session);
            if (!outcome) continue;
            const auto since = shownAs(session.snapshot, session.presence).statusSince;
            const bool isOld = look == Look::first
                                   ? old_.emplace(session.snapshot.id(), since).second
                                   : isKnown(session.snapshot.id(), since);
            if (!session_ && isOld && *outcome != ExitStatus::needsUser) continue;
            return tell(session, *outcome);
        }
        return false;
    }

    bool isKnown(const std::string& id, Instant since) const {
        const auto known = old_.find(id);
        return known != old_.end() && known->second == since;
    }

    bool tell(const ListedSession& session, int outcome) {
        const int shown = StandardStreams::showAsResult(
            PrintableText::printable(session.name + ": " +
                                     statusPhrase(session, currentInstant())) +
            "\n");
        status_ = shown == ExitStatus::done ? outcome : shown;
        return true;
    }

    const TallowbrookPaths& paths_;
    Database& database_;
    std::optional<std::string> session_;  // by storage id; absent: any
    std::map<std::string, Instant> old_;  // what had its outcome before, and since when
    std::set<std::string> said_;
    std::optional<int> status_;
    SpoolState seenSpool_;
    std::int64_t seenVersion_ = 0;
    steady_clock::time_point nextLook_ = steady_clock::now();
    steady_clock::time_point agentsDue_{};
};

std::expected<std::optional<Seconds>, Sentence> timeoutOf(const std::optional<std::string>& word) {
    constexpr int aYear = 31'536'000;
    if (!word) return std::nullopt;
    const auto seconds = parseNumber<int>(*word);
    if (!seconds || *seconds < 0 || *seconds > aYear)
        return std::unexpected(
            Sentence{fmt::format("\"{}\" is no number of seconds for --timeout", *word)});
    return Seconds{*seconds};
}

}  // namespace

int waitForSession(const TallowbrookPaths& paths, const std::optional<std::string>& session,
                   std::optional<Seconds> timeout) {
    return withUpToDateSessions(paths, [&](Database& database) {
        std::optional<std::string> id;
        if (session) {
            const auto chosen = chooseSession(database, *session, currentInstant());
            if (!chosen) return StandardStreams::fail(chosen.error(), ExitStatus::wrongUsage);
            id = chosen->snapshot.id();
        }
        return Wait{paths, database, std::move(id)}.run(timeout);
    });
}

void addWaitCommand(CommandLine& line) {
    struct Words {
        std::optional<std::string> session;
        std::optional<std::string> timeout;
    };
    const auto given = std::make_shared<Words>();
    auto words = line.add(
        "wait", "Wait until a session needs you or is done",
        [given](const TallowbrookPaths& paths) {
            const auto timeout = timeoutOf(given->timeout);
            if (!timeout) return StandardStreams::fail(timeout.error(), ExitStatus::wrongUsage);
            return waitForSession(paths, given->session, *timeout);
        },
        "0: its turn was completed.\n"
        "5: it needs you.\n"
        "6: it failed, was interrupted or has ended in the middle.\n"
        "124: the time is over.\n"
        "\nExamples:\n"
        "  tallowbrook wait                 any session, from here on\n"
        "  tallowbrook wait docs-site && make deploy\n"
        "  tallowbrook wait 2 --timeout 600");
    words.addOptionalOperand("SESSION", given->session,
                             "Its number, the beginning of its id, or its project; without, any");
    words.addOption("--timeout", "SECONDS", given->timeout, "How long to wait at most");
}

}  // namespace tallowbrook::host
