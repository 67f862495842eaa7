#include "Watch/Interpretation.h"

#include "Domain/AgentProfile.h"

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

}  // namespace

std::optional<AgentEvent> interpreted(const AgentEvent& event,
                                      const std::optional<SessionSnapshot>& session) {
    const bool asks = isQuestion(event, session);
    const bool isElsewhere = strays(event, session);
    // Most events mean what they say, and are not copied.
    if (!asks && !isElsewhere) return std::nullopt;
    AgentEvent meant = event;
    if (asks) meant.attention = AttentionKind::input;
    if (isElsewhere) meant.cwd = session->cwd;
    return meant;
}

void wordAsMeant(NotificationContent& content, const AgentEvent& event,
                 const SessionSnapshot& session) {
    if (content.kind != NotificationKind::attention) return;
    const auto& profile = AgentProfile::of(event.provider);
    const auto asks = profile.asking(event.detail.toolName);
    if (!asks) return;
    const std::string prefix = event.origin == EventOrigin::test ? "Test: " : "";
    content.title =
        prefix + std::string{profile.displayName} +
        (*asks == Asking::question ? " has a question" : " asks you to approve its plan");
    content.body = session.projectLabel() + " — waiting for your answer.";
}

}  // namespace tallowbrook::host
