#include "Watch/Interpretation.h"

#include <chrono>

#include "Domain/AgentProfile.h"
#include "Lists/UnfinishedEnd.h"
#include "Preferences/HostSettings.h"

namespace tallowbrook::host {
namespace {

bool asksForPermission(const AgentEvent& event) {
    return event.category == EventCategory::attentionRequested &&
           event.attention == AttentionKind::permission;
}

std::optional<Asking> askedBy(const SessionSnapshot& session) {
    if (session.status != SessionStatus::needsAttention) return std::nullopt;
    return AgentProfile::of(session.key.provider).asking(session.statusDetail.toolName);
}

bool isQuestion(const AgentEvent& event, const std::optional<SessionSnapshot>& session) {
    if (!asksForPermission(event)) return false;
    if (event.detail.toolName)
        return AgentProfile::of(event.provider).asking(event.detail.toolName).has_value();
    // The agent names no tool when it reminds of the dialog that is open.
    return session && askedBy(*session);
}

bool strays(const AgentEvent& event, const std::optional<SessionSnapshot>& session) {
    return event.cwd && session && session->cwd && event.cwd != session->cwd &&
           event.category != EventCategory::sessionStarted;
}

// Codex has one reason for all ends, and so has a pane of Claude Code that was closed. What tells a
// terminal that was left or closed is that it is gone by then.
bool isLeft(const AgentEvent& event, const SessionSnapshot& session) {
    return AgentProfile::of(event.provider).isLeaving(event.detail.endReason) ||
           (session.tty && !event.tty);
}

bool endsUnfinished(const AgentEvent& event, const std::optional<SessionSnapshot>& session) {
    if (event.category != EventCategory::sessionEnded || !session || session->sessionEnded)
        return false;
    const bool isInATurn = session->status == SessionStatus::working ||
                           session->status == SessionStatus::needsAttention;
    return isInATurn && !isLeft(event, *session);
}

}  // namespace

std::optional<AgentEvent> interpreted(const AgentEvent& event,
                                      const std::optional<SessionSnapshot>& session) {
    const bool asks = isQuestion(event, session);
    const bool isElsewhere = strays(event, session);
    const bool isUnfinished = endsUnfinished(event, session);
    // Most events mean what they say, and are not copied.
    if (!asks && !isElsewhere && !isUnfinished) return std::nullopt;
    AgentEvent meant = event;
    if (asks) meant.attention = AttentionKind::input;
    if (isElsewhere) meant.cwd = session->cwd;
    if (isUnfinished) meant.category = EventCategory::turnFailed;
    return meant;
}

void settle(SessionSnapshot& session, const AgentEvent& event, const AgentEvent& meant,
            EventEffect effect) {
    if (event.category == EventCategory::sessionEnded &&
        meant.category == EventCategory::turnFailed && effect == EventEffect::applied) {
        markUnfinishedEnd(session, event);
        return;
    }
    if (event.category == EventCategory::turnFailed && endedWithoutFinishing(session) &&
        Seconds{std::chrono::abs(event.observedAt - session.statusSince)} <= duplicateWindow) {
        session.statusEventType = event.eventType;
        session.statusCategory = event.category;
        session.statusDetail = event.detail;
    }
}

void wordWithName(NotificationContent& content, const SessionSnapshot& session,
                  const std::string& name) {
    // The texts of all kinds begin with the project.
    const auto label = session.projectLabel();
    if (content.body.starts_with(label)) content.body.replace(0, label.size(), name);
}

void wordAsMeant(NotificationContent& content, const AgentEvent& event,
                 const SessionSnapshot& session, const std::string& name) {
    wordWithName(content, session, name);
    const auto& profile = AgentProfile::of(event.provider);
    const std::string prefix = event.origin == EventOrigin::test ? "Test: " : "";
    if (content.kind == NotificationKind::failure && endedWithoutFinishing(session)) {
        content.title = prefix + std::string{profile.displayName} + " ended without finishing";
        content.body = name + " — the session ended in the middle of a turn.";
        return;
    }
    if (content.kind != NotificationKind::attention) return;
    const auto asks = profile.asking(event.detail.toolName);
    if (!asks) return;
    content.title =
        prefix + std::string{profile.displayName} +
        (*asks == Asking::question ? " has a question" : " asks you to approve its plan");
    content.body = name + " — waiting for your answer.";
}

}  // namespace tallowbrook::host
