#include "Watch/Ingest.h"

#include <fmt/core.h>

#include <algorithm>
#include <chrono>
#include <map>
#include <unordered_map>

#include "Domain/AgentProfile.h"
#include "Store/Outbox.h"
#include "Store/SessionStore.h"
#include "Store/Settings.h"
#include "Watch/ClockStep.h"
#include "Watch/Interpretation.h"
#include "Watch/OpenNotifications.h"
#include "Watch/SessionMarking.h"

namespace tallowbrook::host {
namespace {

// Hooks that were heard less long before are at work still. It is short, since the sessions of an
// agent that has lost its hooks are known by its notify program alone.
constexpr Seconds hooksAreAtWorkFor{60 * 60.0};

// The sessions of one segment: each is read once, when its first event comes, and written once.
class SessionCache {
 public:
    struct Entry {
        std::optional<std::int64_t> number;  // absent until the session is in the store
        std::optional<SessionSnapshot> snapshot;
        std::optional<Instant> turnBeganAt;
    };

    explicit SessionCache(Database& database) : store_{database} {}

    Entry& entry(const SessionKey& key) {
        const auto [found, isNew] = entries_.try_emplace(key);
        if (isNew) {
            if (auto stored = store_.session(key))
                found->second = {stored->number, std::move(stored->snapshot), stored->turnBeganAt};
        }
        return found->second;
    }

    void writeBack() {
        for (auto& [key, entry] : entries_)
            if (entry.number && entry.snapshot)
                store_.updateSession(*entry.number, *entry.snapshot, entry.turnBeganAt);
    }

 private:
    SessionStore store_;
    std::unordered_map<SessionKey, Entry> entries_;
};

class BatchIngest {
 public:
    BatchIngest(const Ingest& settings, Database& database, Instant now)
        : settings_{settings},
          store_{database},
          outbox_{database},
          stored_{database},
          now_{now},
          sessions_{database},
          open_{outbox_, now},
          marking_{database, now} {}

    void add(const AgentEvent& event, std::string_view line) {
        const auto seen = asOfNow(event, now_);
        ++(isNew(event, seen ? *seen : event, line) ? report.stored : report.seenBefore);
    }

    void finish() {
        sessions_.writeBack();
        for (const auto& [provider, observedAt] : newestLive_) {
            const auto stored = stored_.integrationHealth(provider);
            auto record = stored;
            record.noteLiveEvent(observedAt);
            if (record != stored) stored_.setIntegrationHealth(provider, record);
        }
        for (const auto& [provider, heardAt] : hooksHeard_)
            if (heardAt) stored_.setHookHeardAt(provider, *heardAt);
    }

    IngestReport report;

 private:
    // Stores the event as it is; `timed` is the one that all else goes by.
    bool isNew(const AgentEvent& event, const AgentEvent& timed, std::string_view line) {
        if (!event.sessionID) {
            noteLive(timed);
            return store_.addEvent(event, line, std::nullopt, EventEffect::noSession);
        }
        auto& session = sessions_.entry({event.provider, *event.sessionID});
        if (!session.number && isUnseenThread(timed)) {
            noteLive(timed);
            return store_.addEvent(event, line, std::nullopt, EventEffect::noSession);
        }
        const auto meant = interpreted(timed, session.snapshot);
        const auto beside = besideTheWait(meant ? *meant : timed, session.snapshot);
        const AgentEvent& seen = beside ? *beside : meant ? *meant : timed;
        auto result = reducer_.reduce(std::move(session.snapshot), seen);
        // Before it is known whether the event is new: its row refers to the session's. An event
        // that is there already has made its session when it first came.
        if (!session.number) session.number = store_.addSession(*result.current);
        if (!store_.addEvent(event, line, session.number, result.effect)) {
            session.snapshot = std::move(result.previous);
            return false;
        }
        settle(*result.current, timed, seen, result.effect);
        marking_.note(*result.current, seen);
        decide(seen, result, session.turnBeganAt);
        followTurn(seen, result.effect, session.turnBeganAt);
        noteLive(seen);
        if (isFarAhead(event, now_)) forgetOrder(*result.current);
        session.snapshot = std::move(result.current);
        return true;
    }

    // After a turn's end nothing is known of what comes without a prompt.
    static void followTurn(const AgentEvent& event, EventEffect effect,
                           std::optional<Instant>& began) {
        if (effect != EventEffect::applied && effect != EventEffect::confirmed) return;
        switch (event.category) {
            case EventCategory::promptSubmitted:
                began = event.observedAt;
                break;
            case EventCategory::turnCompleted:
            case EventCategory::turnFailed:
            case EventCategory::turnInterrupted:
            case EventCategory::sessionEnded:
                began.reset();
                break;
            default:
                break;
        }
    }

    // The length of the turn that the event ends, if it is too short to tell of.
    std::optional<Seconds> shortTurn(const AgentEvent& event, std::optional<Instant> began) const {
        if (event.category != EventCategory::turnCompleted || !began) return std::nullopt;
        const Seconds took = event.observedAt - *began;
        // One that ended before it began has seen the clock set back.
        if (took < Seconds{0} || took >= settings_.completionAfter) return std::nullopt;
        return took;
    }

    // An activity while the agent still waits is another one's, which works beside it: it answers
    // nothing. Absent where the event is none.
    std::optional<AgentEvent> besideTheWait(const AgentEvent& event,
                                            const std::optional<SessionSnapshot>& session) const {
        if (event.category != EventCategory::activity || !session ||
            session->status != SessionStatus::needsAttention ||
            !settings_.hasWaitedSince(session->key, event.observedAt))
            return std::nullopt;
        AgentEvent seen = event;
        seen.category = EventCategory::informational;
        return seen;
    }

    void decide(const AgentEvent& event, const ReductionResult& result,
                std::optional<Instant> turnBeganAt) {
        if (result.current->key.isSetupCheck()) return;
        if (result.effect == EventEffect::applied && result.statusChanged())
            open_.followStatus(*result.current);
        const auto decision = NotificationPolicy::decide(
            event, result, settings_.preferences, now_, settings_.calendar,
            [&](const std::string& key) { return lastDelivered(key, event); });
        const auto took = shortTurn(event, turnBeganAt);
        if (const auto* held = std::get_if<NotificationDecision::Suppressed>(&decision.outcome)) {
            const bool isUnwanted = held->reason == NotificationSuppression::disabled ||
                                    held->reason == NotificationSuppression::kindDisabled;
            if (took && !isUnwanted)
                noteShort(held->content, *took);
            else
                noteSuppressed(*held);
        } else if (const auto* deliver =
                       std::get_if<NotificationDecision::Deliver>(&decision.outcome)) {
            if (took)
                noteShort(deliver->content, *took);
            else
                tell(deliver->content, event, *result.current);
        }
    }

    void tell(NotificationContent content, const AgentEvent& event,
              const SessionSnapshot& session) {
        wordAsMeant(content, event, session, marking_.nameOf(session));
        open_.add(outbox_.add(content, event.observedAt, now_, settings_.channels), content);
    }

    void noteShort(const NotificationContent& content, Seconds took) {
        outbox_.noteUntold(
            {content.eventID, content.sessionStorageID, UntoldReason::shortTurn, now_, took});
    }

    void noteSuppressed(const NotificationDecision::Suppressed& held) {
        const auto& [reason, content] = held;
        outbox_.noteUntold(
            {content.eventID, content.sessionStorageID, untoldReason(reason), now_, {}});
        if (reason == NotificationSuppression::staleBacklog)
            report.missedSessions.insert(content.sessionStorageID);
    }

    // An agent has threads of its own, which its notify program reports as if the user had begun
    // them. Hooks that are at work report every session of the user's before.
    bool isUnseenThread(const AgentEvent& event) {
        if (event.channel != EventChannel::notify) return false;
        const auto heard = hookHeardAt(event.provider);
        return heard && Seconds{std::chrono::abs(event.observedAt - *heard)} <= hooksAreAtWorkFor;
    }

    std::optional<Instant>& hookHeardAt(Provider provider) {
        const auto [found, isNew] = hooksHeard_.try_emplace(provider);
        if (isNew) found->second = stored_.hookHeardAt(provider);
        return found->second;
    }

    std::optional<Instant> lastDelivered(const std::string& key, const AgentEvent& event) {
        // How far an event and what the agent notes with it come apart.
        constexpr std::chrono::seconds timeToNote{1};
        const auto time = outbox_.lastDelivered(key);
        // The agent waits since then: a reminder of the dialog that was told.
        if (time && event.category == EventCategory::attentionRequested &&
            event.observedAt > *time + timeToNote &&
            settings_.hasWaitedSince({event.provider, *event.sessionID}, *time + timeToNote))
            return now_;
        // By a clock that was set back since, which says nothing about how long ago that is.
        return time && *time > now_ ? std::nullopt : time;
    }

    void noteLive(const AgentEvent& event) {
        if (event.origin != EventOrigin::live) return;
        auto& newest = newestLive_.try_emplace(event.provider, event.observedAt).first->second;
        newest = std::max(newest, event.observedAt);
        // Of an agent that has no other way there is nothing to tell apart.
        if (event.channel == EventChannel::hook &&
            AgentProfile::of(event.provider).sources.size() > 1) {
            auto& heard = hookHeardAt(event.provider);
            // By a clock that was set back since, it would hold for as long.
            if (heard && *heard > now_) heard.reset();
            heard = heard ? std::max(*heard, event.observedAt) : event.observedAt;
        }
    }

    const Ingest& settings_;
    SessionStore store_;
    Outbox outbox_;
    Settings stored_;
    Instant now_;
    SessionReducer reducer_{duplicateWindow};
    SessionCache sessions_;
    OpenNotifications open_;
    SessionMarking marking_;
    std::map<Provider, Instant> newestLive_;
    std::map<Provider, std::optional<Instant>> hooksHeard_;
};

void add(IngestReport& sum, IngestReport part) {
    sum.stored += part.stored;
    sum.seenBefore += part.seenBefore;
    sum.missedSessions.merge(part.missedSessions);
}

}  // namespace

std::optional<Sentence> IngestReport::skippedLines() const {
    if (invalidLines == 0) return std::nullopt;
    if (invalidLines == 1) return Sentence{"One line of the spool held no event and was skipped"};
    return Sentence{
        fmt::format("{} lines of the spool held no event and were skipped", invalidLines)};
}

IngestReport Ingest::run(const EventSource& source, Database& database, Instant now) const {
    IngestReport report;
    bringSessionsBack(database, now);
    const auto claim = source.claim();
    for (const auto& trouble : claim.troubles) report.troubles.push_back(trouble.text());
    for (const auto& batch : claim.batches) {
        auto transaction = database.beginWriting();
        BatchIngest ingest{*this, database, now};
        const auto invalidLines = batch.forEachEvent(
            [&](const AgentEvent& event, std::string_view line) { ingest.add(event, line); });
        if (!invalidLines) {
            report.troubles.push_back("The " + batch.name + " could not be read: " +
                                      invalidLines.error().description() + ". It is kept.");
            continue;
        }
        ingest.finish();
        transaction.commit();
        // Only now: until the commit the batch is the one place where its events are, and also
        // after a commit to a file that lost its name.
        database.requireToBeInPlace();
        batch.remove();
        add(report, std::move(ingest.report));
        report.invalidLines += *invalidLines;
    }
    return report;
}

}  // namespace tallowbrook::host
