#include "Channels/LinesChannel.h"

#include <fmt/core.h>
#include <unistd.h>

#include <chrono>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "Output/PrintableText.h"
#include "Output/StandardStreams.h"
#include "Output/TimeText.h"

namespace tallowbrook::host {
namespace {

using Kind = ChannelEvent::Kind;

ChannelState stateOfLines() { return {.reason = "printed where tallowbrook watch runs"}; }

std::string lineOf(const NotificationContent& content) {
    const bool rings = content.playSound && isatty(STDOUT_FILENO) == 1;
    return notificationLine(content, currentInstant()) + (rings ? "\a" : "");
}

// The deliveries of a channel that waits for nothing.
struct PatientLines {
    std::shared_ptr<PatientOutput> output;
    LineOf line;
    std::optional<std::int64_t> underWay;
    std::vector<ChannelEvent> events;

    void begin(const Delivery& delivery) {
        // More would pile up here and grow stale, where the outbox lets them go.
        if (underWay) {
            events.push_back({Kind::failed, delivery.number});
            return;
        }
        underWay = delivery.number;
        // What comes of it is settled by the output.
        [[maybe_unused]] const auto written = output->write(line(delivery.content));
    }

    // Also what others write there settles the line before it.
    void settle(bool written) {
        if (!underWay) return;
        events.push_back({written ? Kind::handedOver : Kind::failed, *underWay});
        underWay.reset();
    }
};

}  // namespace

Channel makeLinesChannel() {
    const auto events = std::make_shared<std::vector<ChannelEvent>>();
    return {
        .name = std::string{linesChannelName},
        .state = stateOfLines,
        .begin =
            [events](const Delivery& delivery) {
                const auto shown = StandardStreams::show(lineOf(delivery.content));
                events->push_back({shown ? Kind::handedOver : Kind::failed, delivery.number});
            },
        .withdraw = [](const std::string&) {},
        .takeEvents = [events] { return std::exchange(*events, {}); },
        .source = std::nullopt,
    };
}

void ScreenLines::isShown() {
    for (const auto number : std::exchange(underWay, {}))
        events.push_back({Kind::handedOver, number});
    hasNews = !events.empty();
}

Channel makeLinesChannel(const std::shared_ptr<ScreenLines>& screen) {
    return {
        .name = std::string{linesChannelName},
        .state = stateOfLines,
        .begin =
            [screen](const Delivery& delivery) {
                screen->show(delivery.content);
                if (screen->counts()) screen->underWay.push_back(delivery.number);
            },
        .withdraw = [](const std::string&) {},
        .takeEvents = [screen] { return std::exchange(screen->events, {}); },
        .source = PollSource{.interest =
                                 [screen] {
                                     if (!screen->hasNews) return PollInterest{};
                                     return PollInterest{-1, 0, std::chrono::steady_clock::now()};
                                 },
                             .proceed = [screen](short) { screen->hasNews = false; }},
    };
}

Channel makeLinesChannel(const std::shared_ptr<PatientOutput>& output, LineOf line) {
    const auto lines = std::make_shared<PatientLines>(output, line ? std::move(line) : lineOf);
    output->whenSettled = [lines = std::weak_ptr{lines}](bool written) {
        if (const auto living = lines.lock()) living->settle(written);
    };
    return {
        .name = std::string{linesChannelName},
        .state = stateOfLines,
        .begin = [lines](const Delivery& delivery) { lines->begin(delivery); },
        .withdraw = [](const std::string&) {},
        .takeEvents = [lines] { return std::exchange(lines->events, {}); },
        .source = PollSource{.interest = [lines] { return lines->output->interest(); },
                             .proceed =
                                 [lines](short) {
                                     [[maybe_unused]] const auto written = lines->output->writeOn();
                                 }},
    };
}

std::string notificationLine(const NotificationContent& content, Instant now) {
    return fmt::format("{}  {}: {}\n", TimeText::timeOfDay(now),
                       PrintableText::printable(content.title),
                       PrintableText::printable(content.body));
}

}  // namespace tallowbrook::host
