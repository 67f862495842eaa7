#include "Channels/ProgramTeller.h"

#include <fmt/core.h>

#include <utility>

namespace tallowbrook::host {
namespace {

using Kind = ChannelEvent::Kind;

constexpr int triedAgain = 75;  // EX_TEMPFAIL
constexpr int notFound = 127;   // of a shell

std::string wordsFor(const ProgramEnd& end) {
    switch (end.way) {
        case ProgramEnd::Way::timedOut:
            return "it did not end in time";
        case ProgramEnd::Way::signalled:
            return fmt::format("signal {} ended it", end.status);
        case ProgramEnd::Way::exited:
            break;
    }
    if (end.status == notFound) return "it was not found (status 127)";
    return fmt::format("it ended with status {}", end.status);
}

}  // namespace

void ProgramTeller::tell(std::int64_t delivery, ProgramRequest request) {
    waiting_.push_back({delivery, std::move(request), [](const auto&) {}});
    startNext();
}

void ProgramTeller::run(ProgramRequest request,
                        std::function<void(const ProgramEnd& end)> answered) {
    waiting_.push_back({0, std::move(request), std::move(answered)});
    startNext();
}

void ProgramTeller::refuse(std::int64_t delivery, const std::string& reason) {
    settle(delivery, Kind::refused, reason);
}

std::vector<ChannelEvent> ProgramTeller::takeEvents() { return std::exchange(events_, {}); }

void ProgramTeller::proceed() {
    runs_.proceed();
    for (const auto& end : runs_.takeEnded()) take(end);
    startNext();
}

void ProgramTeller::startNext() {
    while (!waiting_.empty() && !runs_.isAnyRunning()) {
        current_ = std::move(waiting_.front());
        waiting_.pop_front();
        // Another try may find room in the table of processes.
        if (const auto started = runs_.start(current_.delivery, current_.request); !started)
            settle(current_.delivery, Kind::failed, started.error().description());
    }
}

void ProgramTeller::take(const ProgramEnd& end) {
    current_.answered(end);
    const bool hasExited = end.way == ProgramEnd::Way::exited;
    if (hasExited && end.status == 0)
        settle(end.number, Kind::handedOver, {});
    else if (hasExited && end.status == triedAgain)
        settle(end.number, Kind::failed, wordsFor(end));
    else
        settle(end.number, Kind::refused, wordsFor(end));
}

void ProgramTeller::settle(std::int64_t delivery, Kind kind, const std::string& reason) {
    if (delivery == 0) return;
    events_.push_back({kind, delivery});
    if (!reason.empty() && reason != said_)
        say_(Sentence{fmt::format("{} could not tell you: {}", subject_, reason)});
    said_ = reason;
}

}  // namespace tallowbrook::host
