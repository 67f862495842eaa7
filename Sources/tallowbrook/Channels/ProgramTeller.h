// The work of a channel that tells by running a program for each notification: one at a time, in
// the order of the notifications, bounded in time, and the reasons of failures said once.
//
// Used by one thread.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <string>
#include <vector>

#include "Channels/Channel.h"
#include "Channels/ProgramRuns.h"
#include "Output/Sentence.h"

namespace tallowbrook::host {

// Takes why something could not be told: once for as long as the reason lasts.
using SayWhy = std::function<void(const Sentence& sentence)>;

class ProgramTeller {
 public:
    // `subject` begins the sentences: "The program of the preference exec".
    ProgramTeller(std::string subject, SayWhy say)
        : subject_{std::move(subject)}, say_{std::move(say)} {}

    // Runs the program for this notification when its turn has come. Its exit status 0 means told,
    // 75 (EX_TEMPFAIL of sysexits.h) not now but again later; anything else is final, since a
    // program that fails after its work would do it again and again.
    void tell(std::int64_t delivery, ProgramRequest request);

    // Runs a program in its turn by which nothing is told. `answered` takes how it ended; it is not
    // called where the program cannot be started.
    void run(
        ProgramRequest request,
        std::function<void(const ProgramEnd& end)> answered = [](const auto&) {});

    void refuse(std::int64_t delivery, const std::string& reason);

    std::vector<ChannelEvent> takeEvents();
    PollInterest interest() const { return runs_.interest(); }
    void proceed();

 private:
    struct Job {
        std::int64_t delivery = 0;  // 0: none
        ProgramRequest request;
        std::function<void(const ProgramEnd& end)> answered;
    };

    void startNext();
    void take(const ProgramEnd& end);
    void settle(std::int64_t delivery, ChannelEvent::Kind kind, const std::string& reason);

    std::string subject_;
    SayWhy say_;
    ProgramRuns runs_;
    std::deque<Job> waiting_;
    Job current_;  // that runs
    std::vector<ChannelEvent> events_;
    std::string said_;  // why the last one could not be told; empty where it was
};

}  // namespace tallowbrook::host
