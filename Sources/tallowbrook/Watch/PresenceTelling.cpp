#include "Watch/PresenceTelling.h"

#include <variant>

#include "Notifications/NotificationPolicy.h"
#include "Store/Outbox.h"
#include "Watch/Interpretation.h"
#include "Watch/Presence.h"
#include "Watch/SessionMarking.h"

namespace tallowbrook::host {

void PresenceTelling::tell(const SessionSnapshot& session, const AgentPresence& presence,
                           Database& database, Instant now) const {
    const auto shown = shownAs(session, presence);
    if (waits(session) && !waits(shown)) Outbox{database}.dropWaiting(session.id());
    if (presence.state == AgentState::failed && shown.status != session.status)
        tellFailure(session, shown, database, now);
}

void PresenceTelling::tellFailure(const SessionSnapshot& session, const SessionSnapshot& shown,
                                  Database& database, Instant now) const {
    const auto id = randomUUID();
    if (!id) return;
    // Stands in for the event that the agent has not sent.
    AgentEvent event;
    event.id = *id;
    event.provider = session.key.provider;
    event.origin = session.origin;
    event.category = EventCategory::turnFailed;
    event.observedAt = shown.statusSince;
    const ReductionResult result{EventEffect::applied, session, shown};
    Outbox outbox{database};
    const auto decision = NotificationPolicy::decide(
        event, result, preferences, now, calendar,
        [&](const std::string& key) { return outbox.lastDelivered(key); });
    if (const auto* held = std::get_if<NotificationDecision::Suppressed>(&decision.outcome))
        outbox.noteUntold({held->content.eventID,
                           held->content.sessionStorageID,
                           untoldReason(held->reason),
                           now,
                           {}});
    if (const auto* deliver = std::get_if<NotificationDecision::Deliver>(&decision.outcome)) {
        auto content = deliver->content;
        wordWithName(content, shown, SessionMarking{database, now}.nameOf(shown));
        outbox.add(content, event.observedAt, now, channels);
    }
}

}  // namespace tallowbrook::host
