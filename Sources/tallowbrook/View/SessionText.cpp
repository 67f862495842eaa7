#include "View/SessionText.h"

namespace tallowbrook::host {
std::string agentText(const ListedSession& session) {
    return std::string{displayName(session.snapshot.key.provider)};
}

bool hasEnded(const ListedSession& session) {
    return session.status == SessionStatus::completed && session.snapshot.sessionEnded;
}

Symbol symbolOf(SessionStatus status) {
    switch (status) {
        case SessionStatus::needsAttention:
            return Symbols::waiting;
        case SessionStatus::failed:
            return Symbols::failed;
        case SessionStatus::working:
            return Symbols::working;
        case SessionStatus::stale:
            return Symbols::stale;
        case SessionStatus::interrupted:
            return Symbols::interrupted;
        case SessionStatus::completed:
            return Symbols::completed;
        case SessionStatus::unknown:
            break;
    }
    return Symbols::unknown;
}

Style styleOf(SessionStatus status) {
    switch (status) {
        case SessionStatus::needsAttention:
            return {.colour = Colour::magenta, .bold = true};
        case SessionStatus::failed:
            return {.colour = Colour::red, .bold = true};
        case SessionStatus::working:
            return {.colour = Colour::cyan};
        case SessionStatus::completed:
            return {.colour = Colour::green};
        case SessionStatus::stale:
        case SessionStatus::interrupted:
        case SessionStatus::unknown:
            break;
    }
    return {};
}

}  // namespace tallowbrook::host
