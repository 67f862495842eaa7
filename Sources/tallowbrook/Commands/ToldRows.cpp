#include "Commands/ToldRows.h"

#include <fmt/core.h>

#include <algorithm>
#include <tuple>

#include "Output/PrintableText.h"
#include "Output/TimeText.h"
#include "Text/TakeUntil.h"

namespace tallowbrook::host {
namespace {

// Wide enough for "asks you to approve its plan".
constexpr std::size_t newsColumns = 28;
// What is left of 80 columns, behind the time.
constexpr std::size_t outcomeColumns = 35;

struct News {
    Instant time{};
    std::string title;
    std::vector<std::string> outcomes;
};

// The title without the agent's name, which stands above all rows.
std::string shortTitle(std::string title, Provider provider) {
    const auto name = std::string{displayName(provider)} + " ";
    if (const auto at = title.find(name); at != std::string::npos) title.erase(at, name.size());
    return title;
}

// What an event would have been told as.
std::string_view titleOf(const AgentEvent& event) {
    switch (event.category) {
        case EventCategory::turnCompleted:
            return "finished";
        case EventCategory::turnFailed:
            return "turn failed";
        case EventCategory::attentionRequested:
            return event.attention == AttentionKind::input ? "needs your input"
                                                           : "needs permission";
        default:
            return event.eventType;
    }
}

std::string attemptsOf(int attempts) {
    if (attempts == 0) return "is still to be told";
    if (attempts == 1) return "still to be told, 1 attempt failed";
    return fmt::format("still to be told, {} attempts failed", attempts);
}

std::string outcomeOf(const DeliveryRecord& delivery, Instant now) {
    switch (delivery.state) {
        case DeliveryState::pending:
            return attemptsOf(delivery.attempts);
        case DeliveryState::begun:
            return "begun, no answer yet";
        case DeliveryState::told:
            return "told at " + TimeText::shortTime(delivery.toldAt.value_or(now), now);
        case DeliveryState::refused:
            return "refused";
        case DeliveryState::dropped:
            return "not told: too old by then";
        case DeliveryState::folded:
            break;
    }
    return "not told: it was over";
}

News newsOf(const NotificationRecord& record, Provider provider, Instant now) {
    const auto& [notification, deliveries] = record;
    News news{notification.observedAt, shortTitle(notification.content.title, provider), {}};
    for (const auto& delivery : deliveries)
        news.outcomes.push_back(fmt::format("{} ({})", outcomeOf(delivery, now), delivery.channel));
    if (deliveries.empty()) news.outcomes.emplace_back("not told: no channel was usable");
    return news;
}

News newsOf(const Untold& untold, const std::vector<StoredEvent>& events) {
    News news{untold.at, "", {"not told: " + untold.words()}};
    const auto about = std::ranges::find(events, untold.eventID,
                                         [](const StoredEvent& stored) { return stored.event.id; });
    if (about == events.end()) return news;
    news.time = about->event.observedAt;
    news.title = titleOf(about->event);
    return news;
}

std::string rowsOf(const News& news, Instant now) {
    auto time = TimeText::shortTime(news.time, now);
    auto title = PrintableText::printable(news.title);
    std::string text;
    for (const auto& outcome : news.outcomes) {
        const auto lines =
            PrintableText::wrapped(PrintableText::printable(outcome), outcomeColumns);
        for (std::string_view rest = lines; !rest.empty();) {
            text += fmt::format("{:<13}  {}  {}\n", time, PrintableText::padded(title, newsColumns),
                                takeUntil(rest, '\n'));
            time.clear();
            title.clear();
        }
    }
    return text;
}

}  // namespace

std::string toldRows(const Telling& telling, Provider provider, Instant now, std::size_t atMost) {
    std::vector<News> all;
    for (const auto& record : telling.notifications) {
        const auto isItsEvent = [&](const Untold& untold) {
            return untold.eventID == record.notification.content.eventID;
        };
        const bool isTold = std::ranges::any_of(
            record.deliveries,
            [](const DeliveryRecord& delivery) { return delivery.state == DeliveryState::told; });
        // What was decided, and given up later, has its reason among the untold.
        if (isTold || std::ranges::none_of(telling.untold, isItsEvent))
            all.push_back(newsOf(record, provider, now));
    }
    for (const auto& untold : telling.untold) all.push_back(newsOf(untold, telling.events));
    // The titles order what came at once, so that two calls never differ.
    std::ranges::sort(all, {}, [](const News& news) { return std::tie(news.time, news.title); });
    if (all.size() > atMost)
        all.erase(all.begin(), all.end() - static_cast<std::ptrdiff_t>(atMost));
    std::string text;
    for (const auto& news : all) text += rowsOf(news, now);
    return text;
}

}  // namespace tallowbrook::host
