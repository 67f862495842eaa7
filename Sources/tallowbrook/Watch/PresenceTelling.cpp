#include "Watch/PresenceTelling.h"

#include <variant>

#include "Notifications/NotificationPolicy.h"
#include "Watch/Presence.h"

namespace tallowbrook::host {

void PresenceTelling::tell(const SessionSnapshot& session, const AgentPresence& presence,
                           Outbox& outbox, Instant now) const {
    const auto shown = shownAs(session, presence);
    if (waits(session) && !waits(shown)) outbox.dropWaiting(session.id());
    if (presence.state == AgentState::failed && shown.status != session.status)
        tellFailure(session, shown, outbox, now);
}

void PresenceTelling::tellFailure(const SessionSnapshot& session, const SessionSnapshot& shown,
                                  Outbox& outbox, Instant now) const {
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
    const auto decision = NotificationPolicy::decide(
        event, result, preferences, now, calendar,
        [&](const std::string& key) { return outbox.lastDelivered(key); });
    if (const auto* deliver = std::get_if<NotificationDecision::Deliver>(&decision.outcome))
        outbox.add(deliver->content, event.observedAt, now, channels);
}

}  // namespace tallowbrook::host
