// Sessions for tests to reduce, show and code.
#pragma once

#include <chrono>

#include "SessionState/SessionSnapshot.h"
#include "Support/SampleEvents.h"

namespace tallowbrook {

inline Instant after(double seconds) {
    return sampleTime + std::chrono::round<std::chrono::microseconds>(Seconds{seconds});
}

// Nothing that may be absent is there.
inline SessionSnapshot minimalSnapshot() {
    SessionSnapshot session;
    session.key = {Provider::claudeCode, "S1"};
    session.statusEventType = "Stop";
    session.statusCategory = EventCategory::turnCompleted;
    session.statusSince = session.firstSeenAt = session.lastSeenAt = sampleTime;
    session.lastEventType = "Stop";
    return session;
}

// Everything that may be absent is there, and every value differs from its default and from the
// others of its type.
inline SessionSnapshot fullSnapshot() {
    SessionSnapshot session;
    session.key = {Provider::codexCLI, "session-1"};
    session.origin = EventOrigin::demo;
    session.status = SessionStatus::needsAttention;
    session.attention = AttentionKind::input;
    session.statusEventType = "Notification";
    session.statusCategory = EventCategory::attentionRequested;
    session.statusDetail = {"idle_prompt", "Bash", "startup", "other", "server_error"};
    session.statusSince = after(40);
    session.firstSeenAt = after(10);
    session.lastSeenAt = after(60);
    session.lastAppliedAt = after(50);
    session.lastEventType = "PostToolUse";
    session.cwd = "/Users/x/proj";
    session.tty = "ttys003";
    session.sessionEnded = true;
    session.endedAt = after(30);
    session.endReason = "logout";
    session.promptCount = 7;
    session.lastCompletedTurnID = "turn:1";
    session.lastSignature = "hook|PostToolUse|activity|||||||";
    session.lastSignatureAt = after(55);
    session.eventCount = 42;
    return session;
}

}  // namespace tallowbrook
