#include "Lists/Timeline.h"

#include <fmt/core.h>

#include "Output/PrintableText.h"
#include "Output/TimeText.h"

namespace tallowbrook::host {
namespace {

// The one detail of the event that tells most.
std::string detailOf(const EventDetail& detail) {
    for (const auto* part : {&detail.toolName, &detail.notificationType, &detail.sessionSource,
                             &detail.endReason, &detail.errorType})
        if (*part) return **part;
    return {};
}

std::string_view effectText(EventEffect effect) {
    switch (effect) {
        case EventEffect::applied:
            return "changed the status";
        case EventEffect::confirmed:
            return "confirmed it";
        case EventEffect::ignored:
            return "says nothing about it";
        case EventEffect::duplicate:
            return "came twice";
        case EventEffect::outOfOrder:
            return "came too late";
        case EventEffect::noSession:
            break;
    }
    return "names no session";
}

}  // namespace

std::string timelineRow(const AgentEvent& event, EventEffect effect, Instant now) {
    // Wide enough for "31 Dec 23:59"; an event of another year makes its row wider.
    return fmt::format("{:<13}  {}  {}  {}\n", TimeText::shortTime(event.observedAt, now),
                       PrintableText::padded(PrintableText::printable(event.eventType), 20),
                       PrintableText::padded(PrintableText::printable(detailOf(event.detail)), 20),
                       effectText(effect));
}

}  // namespace tallowbrook::host
