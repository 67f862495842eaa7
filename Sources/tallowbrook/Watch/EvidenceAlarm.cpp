#include "Watch/EvidenceAlarm.h"

#include <poll.h>

#include <algorithm>
#include <chrono>
#include <utility>

namespace tallowbrook::host {
namespace {

using std::chrono::steady_clock;

// An agent at work writes many times a second, and one that changes its state several files: one
// look sees all of it.
constexpr std::chrono::milliseconds timeToSettle{150};
constexpr std::chrono::milliseconds timeBetweenLooks{600};

}  // namespace

EvidenceAlarm::EvidenceAlarm() {
    if (auto started = EvidenceWatch::start()) watch_ = std::move(*started);
}

void EvidenceAlarm::watch(const std::vector<NotePlace>& places,
                          const std::vector<ProcessIdentity>& processes) {
    if (watch_ && watch_->watch(places, processes)) ring();
}

PollSource EvidenceAlarm::source(std::function<void()> look) {
    return {
        .interest = [this] { return interest(); },
        .proceed =
            [this, look = std::move(look)](short) {
                if (isDue()) look();
            },
    };
}

PollInterest EvidenceAlarm::interest() const {
    // What comes until the look is taken with it.
    if (dueAt_ || !watch_) return {-1, 0, dueAt_};
    return {watch_->fileDescriptor(), POLLIN, std::nullopt};
}

bool EvidenceAlarm::isDue() {
    const bool happened = watch_ && watch_->consume();
    if (dueAt_) {
        if (steady_clock::now() < *dueAt_) return false;
        dueAt_.reset();
        lookedAt_ = steady_clock::now();
        return true;
    }
    if (happened) ring();
    return false;
}

void EvidenceAlarm::ring() {
    if (dueAt_) return;
    dueAt_ = std::max(steady_clock::now() + timeToSettle, lookedAt_ + timeBetweenLooks);
}

}  // namespace tallowbrook::host
