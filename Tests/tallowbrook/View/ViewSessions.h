// Sessions for the live view to show.
#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "Support/SampleEvents.h"
#include "View/ViewContent.h"

namespace tallowbrook::host {

inline const Instant viewTime = sampleTime + std::chrono::hours{1};

// Has had its status for so many minutes.
inline SessionSnapshot viewSession(const std::string& project, SessionStatus status,
                                   int minutes = 5) {
    AgentEvent event = minimalEvent();
    event.observedAt = viewTime - std::chrono::minutes{minutes};
    event.cwd = "/Users/x/" + project;
    auto session = SessionSnapshot::initial({Provider::claudeCode, "id-" + project}, event);
    session.status = status;
    if (status == SessionStatus::needsAttention) {
        session.attention = AttentionKind::permission;
        session.statusDetail.toolName = "Bash";
    }
    return session;
}

inline SessionSnapshot endedSession(const std::string& project) {
    auto session = viewSession(project, SessionStatus::completed);
    session.sessionEnded = true;
    session.endedAt = session.statusSince;
    return session;
}

inline ViewContent viewContent(std::vector<SessionSnapshot> sessions) {
    ViewContent content;
    content.list = SessionList::make(std::move(sessions), ListScope::recent, viewTime);
    content.host.since = viewTime;
    return content;
}

}  // namespace tallowbrook::host
