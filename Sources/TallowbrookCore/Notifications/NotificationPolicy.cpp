#include "Notifications/NotificationPolicy.h"

namespace tallowbrook {

namespace {

// What the event tells the user about a session that it changed; absent: nothing.
std::optional<NotificationKind> kindOf(const AgentEvent& event, const ReductionResult& result) {
    if (result.effect != EventEffect::applied || !result.statusChanged()) return std::nullopt;
    // The setup's own trial tells the user by itself.
    if (result.current->key.isSetupCheck()) return std::nullopt;

    // The status alone would not do: a session that ends is completed too, which is no news.
    const SessionStatus status = result.current->status;
    if (event.category == EventCategory::turnFailed && status == SessionStatus::failed)
        return NotificationKind::failure;
    if (event.category == EventCategory::turnCompleted && status == SessionStatus::completed)
        return NotificationKind::completion;
    if (event.category == EventCategory::attentionRequested &&
        status == SessionStatus::needsAttention)
        return NotificationKind::attention;
    return std::nullopt;
}

bool isSwitchedOn(NotificationKind kind, const NotificationPreferences& preferences) {
    switch (kind) {
        case NotificationKind::failure:
            return preferences.notifyOnFailure;
        case NotificationKind::completion:
            return preferences.notifyOnCompletion;
        case NotificationKind::attention:
        case NotificationKind::reminder:
            break;
    }
    return preferences.notifyOnAttention;
}

struct Wording {
    const char* title;  // behind the agent's name
    std::string body;   // behind the project's
};

Wording attentionWording(const SessionSnapshot& session, const AgentEvent& event) {
    if (session.attention == AttentionKind::input)
        return {" needs your input", " — waiting for your response."};
    const std::string use = event.detail.toolName ? " to use " + *event.detail.toolName : "";
    return {" needs permission", " — waiting for approval" + use + "."};
}

Wording wordingOf(NotificationKind kind, const SessionSnapshot& session, const AgentEvent& event) {
    switch (kind) {
        case NotificationKind::attention:
            return attentionWording(session, event);
        case NotificationKind::failure:
            return {" turn failed",
                    " — " + event.detail.errorType.value_or("error reported") + "."};
        case NotificationKind::completion:
            return {" finished", " — turn completed."};
        case NotificationKind::reminder:
            break;
    }
    return {" is still waiting", "."};
}

}  // namespace

NotificationContent NotificationPolicy::makeContent(NotificationKind kind,
                                                    const SessionSnapshot& session,
                                                    const AgentEvent& event, bool playSound) {
    const Wording wording = wordingOf(kind, session, event);
    const std::string prefix = event.origin == EventOrigin::test ? "Test: " : "";
    const std::string agent{displayName(session.key.provider)};
    const std::string storageID = session.key.storageID();
    return {
        .kind = kind,
        .title = prefix + agent + wording.title,
        .body = session.projectLabel() + wording.body,
        .sessionStorageID = storageID,
        .eventID = event.id,
        .dedupeKey = storageID + "|" + std::string{rawValue(kind)},
        .playSound = playSound,
    };
}

NotificationDecision NotificationPolicy::decide(const AgentEvent& event,
                                                const ReductionResult& result,
                                                const NotificationPreferences& preferences,
                                                Instant now, const Calendar& calendar,
                                                const LastDelivered& lastDelivered) {
    const auto kind = kindOf(event, result);
    if (!kind) return NotificationDecision::notApplicable();

    NotificationContent content = makeContent(*kind, *result.current, event, preferences.playSound);
    const auto suppressed = [&](NotificationSuppression reason) {
        return NotificationDecision::suppressed(reason, std::move(content));
    };
    if (!preferences.enabled) return suppressed(NotificationSuppression::disabled);
    if (preferences.paused) return suppressed(NotificationSuppression::paused);
    if (!isSwitchedOn(*kind, preferences)) return suppressed(NotificationSuppression::kindDisabled);
    if (Seconds{now - event.observedAt} > preferences.maxEventAge)
        return suppressed(NotificationSuppression::staleBacklog);
    if (preferences.quietHours.contains(now, calendar))
        return suppressed(NotificationSuppression::quietHours);

    // Last, since the host has to look this up in its store.
    const auto last = lastDelivered(content.dedupeKey);
    if (last && Seconds{now - *last} < preferences.dedupeInterval)
        return suppressed(NotificationSuppression::duplicate);
    return NotificationDecision::deliver(std::move(content));
}

}  // namespace tallowbrook
