#include "Loop/PollLoop.h"

#include <poll.h>

#include <algorithm>
#include <limits>
#include <utility>

namespace tallowbrook::host {
namespace {

// What poll(2) takes: rounded up, or the loop would spin through the last part of a millisecond.
int millisecondsUntil(MonotonicTime deadline) {
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    constexpr std::int64_t most = std::numeric_limits<int>::max();
    return static_cast<int>(std::clamp<std::int64_t>(left.count(), 0, most));
}

struct Waiting {
    std::int64_t source = 0;
    PollInterest interest;
};

}  // namespace

PollLoop::Attachment::Attachment(Attachment&& other) noexcept
    : loop_{std::exchange(other.loop_, nullptr)}, number_{other.number_} {}

PollLoop::Attachment& PollLoop::Attachment::operator=(Attachment&& other) noexcept {
    std::swap(loop_, other.loop_);
    std::swap(number_, other.number_);
    return *this;
}

PollLoop::Attachment::~Attachment() {
    if (loop_ != nullptr) loop_->sources_.erase(number_);
}

PollLoop::Attachment PollLoop::attach(PollSource source) {
    sources_.emplace(++lastNumber_, std::move(source));
    return Attachment{*this, lastNumber_};
}

void PollLoop::runOnce() {
    std::vector<Waiting> waiting;
    std::vector<pollfd> descriptors;
    int timeout = -1;
    for (const auto& [number, source] : sources_) {
        const auto interest = source.interest();
        waiting.push_back({number, interest});
        // poll(2) passes over a negative descriptor.
        descriptors.push_back({interest.descriptor, interest.events, 0});
        if (!interest.deadline) continue;
        const int left = millisecondsUntil(*interest.deadline);
        timeout = timeout < 0 ? left : std::min(timeout, left);
    }
    // A call that a signal interrupts leaves every result 0: what is due is seen all the same.
    poll(descriptors.data(), static_cast<nfds_t>(descriptors.size()), timeout);

    const auto now = std::chrono::steady_clock::now();
    for (std::size_t i = 0; i < waiting.size() && !endIsRequested_; ++i) {
        const auto& [number, interest] = waiting[i];
        const short ready = descriptors[i].revents;
        const bool isDue = interest.deadline && *interest.deadline <= now;
        if (ready == 0 && !isDue) continue;
        const auto found = sources_.find(number);
        // Another source has detached it meanwhile.
        if (found == sources_.end()) continue;
        // A copy, since the source may detach itself.
        const auto proceed = found->second.proceed;
        proceed(ready);
    }
}

void PollLoop::run() {
    while (!endIsRequested_) runOnce();
}

}  // namespace tallowbrook::host
