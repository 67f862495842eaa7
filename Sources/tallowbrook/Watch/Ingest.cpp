#include "Watch/Ingest.h"

#include <algorithm>
#include <map>
#include <unordered_map>

#include "Preferences/HostSettings.h"

namespace tallowbrook::host {
namespace {

// The sessions of one segment: each is read once, when its first event comes, and written once.
class SessionCache {
 public:
    struct Entry {
        std::optional<std::int64_t> number;  // absent until the session is in the store
        std::optional<SessionSnapshot> snapshot;
    };

    explicit SessionCache(EventStore& store) : store_{store} {}

    Entry& entry(const SessionKey& key) {
        const auto [found, isNew] = entries_.try_emplace(key);
        if (isNew) {
            if (auto stored = store_.session(key))
                found->second = {stored->number, std::move(stored->snapshot)};
        }
        return found->second;
    }

    void writeBack() {
        for (auto& [key, entry] : entries_)
            if (entry.number && entry.snapshot)
                store_.updateSession(*entry.number, *entry.snapshot);
    }

 private:
    EventStore& store_;
    std::unordered_map<SessionKey, Entry> entries_;
};

class SegmentIngest {
 public:
    SegmentIngest(const Ingest& settings, EventStore& store, Instant now)
        : settings_{settings}, store_{store}, now_{now}, sessions_{store} {}

    // Tells whether the event was new.
    bool add(const AgentEvent& event, std::string_view line) {
        if (!event.sessionID) {
            noteLive(event);
            return store_.addEvent(event, line, std::nullopt, EventEffect::noSession);
        }
        auto& session = sessions_.entry({event.provider, *event.sessionID});
        auto result = reducer_.reduce(std::move(session.snapshot), event);
        if (!session.number) session.number = store_.addSession(*result.current);
        if (!store_.addEvent(event, line, session.number, result.effect)) {
            session.snapshot = std::move(result.previous);
            return false;
        }
        decide(event, result);
        noteLive(event);
        session.snapshot = std::move(result.current);
        return true;
    }

    void finish() {
        sessions_.writeBack();
        for (const auto& [provider, observedAt] : newestLive_) {
            const auto stored = store_.integrationHealth(provider);
            auto record = stored;
            record.noteLiveEvent(observedAt);
            if (record != stored) store_.setIntegrationHealth(provider, record);
        }
    }

 private:
    void decide(const AgentEvent& event, const ReductionResult& result) {
        if (result.current->key.isSetupCheck()) return;
        const auto decision = NotificationPolicy::decide(
            event, result, settings_.preferences, now_, settings_.calendar,
            [this](const std::string& key) { return store_.lastDelivered(key); });
        if (const auto* deliver = std::get_if<NotificationDecision::Deliver>(&decision.outcome))
            store_.addNotification(deliver->content, event.observedAt, now_);
    }

    void noteLive(const AgentEvent& event) {
        if (event.origin != EventOrigin::live) return;
        auto& newest = newestLive_.try_emplace(event.provider, event.observedAt).first->second;
        newest = std::max(newest, event.observedAt);
    }

    const Ingest& settings_;
    EventStore& store_;
    Instant now_;
    SessionReducer reducer_{duplicateWindow};
    SessionCache sessions_;
    std::map<Provider, Instant> newestLive_;
};

std::string describe(const SpoolAccessError& error) {
    if (const auto* spool = std::get_if<SpoolError>(&error)) return spool->diagnosticCode();
    return std::get<FileError>(error).description();
}

}  // namespace

IngestReport Ingest::run(EventStore& store, Instant now) const {
    IngestReport report;
    const auto files = drainer.claimPendingFiles();
    if (!files) {
        report.troubles.push_back("The spool could not be claimed: " + describe(files.error()) +
                                  ". Its events are kept.");
        return report;
    }
    for (const auto& file : *files) {
        auto transaction = store.beginWriting();
        SegmentIngest segment{*this, store, now};
        IngestReport counted;
        const auto invalidLines =
            SpoolDrainer::forEachEvent(file, [&](const AgentEvent& event, std::string_view line) {
                ++(segment.add(event, line) ? counted.stored : counted.seenBefore);
            });
        if (!invalidLines) {
            report.troubles.push_back("The spool segment " + file.filename().string() +
                                      " could not be read: " + invalidLines.error().description() +
                                      ". It is kept.");
            continue;
        }
        segment.finish();
        transaction.commit();
        SpoolDrainer::remove(file);

        report.stored += counted.stored;
        report.seenBefore += counted.seenBefore;
        report.invalidLines += *invalidLines;
    }
    return report;
}

}  // namespace tallowbrook::host
