// The one place where the host sleeps: poll(2) over whatever is attached.
//
// A source says before every sleep what it waits for, so that no descriptor and no deadline is
// remembered in two places. Nothing here polls at an interval: without a ready descriptor or a
// deadline the loop sleeps on. Used by one thread.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <vector>

namespace tallowbrook::host {

// The monotonic clock, so that a change of the time of day moves no deadline.
using MonotonicTime = std::chrono::steady_clock::time_point;

struct PollInterest {
    int descriptor = -1;  // negative: none
    short events = 0;     // of poll(2), such as POLLIN
    std::optional<MonotonicTime> deadline;
};

struct PollSource {
    // As of now; asked anew before every sleep.
    std::function<PollInterest()> interest;
    // What poll(2) reported of the descriptor; 0: the deadline has passed.
    std::function<void(short readyEvents)> proceed;
};

class PollLoop {
 public:
    // Keeps a source attached for as long as it lives. The loop must outlive it.
    class Attachment {
     public:
        Attachment() = default;
        Attachment(Attachment&& other) noexcept;
        Attachment& operator=(Attachment&& other) noexcept;
        ~Attachment();

     private:
        friend class PollLoop;
        Attachment(PollLoop& loop, std::int64_t number) : loop_{&loop}, number_{number} {}

        PollLoop* loop_ = nullptr;
        std::int64_t number_ = 0;
    };

    PollLoop() = default;
    PollLoop(const PollLoop&) = delete;
    PollLoop& operator=(const PollLoop&) = delete;

    // Sources proceed in the order in which they were attached. A source may attach and detach any
    // source, itself too, while it proceeds.
    [[nodiscard]] Attachment attach(PollSource source);

    // Sleeps until something is ready or due, and lets those sources proceed, once each. After a
    // request to end no further source proceeds.
    void runOnce();

    // Until a source requests the end.
    void run();

    // `run` returns as soon as the source that proceeds now is done.
    void requestEnd() { endIsRequested_ = true; }
    bool endIsRequested() const { return endIsRequested_; }

 private:
    std::map<std::int64_t, PollSource> sources_;  // by the order of their attachment
    std::int64_t lastNumber_ = 0;
    bool endIsRequested_ = false;
};

}  // namespace tallowbrook::host
