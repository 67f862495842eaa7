// Where event lines come from, as the ingest sees it: batches that are claimed, read, and removed
// once their events are stored. Until a batch is removed its source gives it again.
#pragma once

#include <cstdint>
#include <expected>
#include <functional>
#include <string>
#include <vector>

#include "EventBridge/SpoolDrainer.h"
#include "Output/Sentence.h"

namespace tallowbrook::host {

struct EventBatch {
    std::string name;  // as sentences call it: "spool segment overflow-1-1-A.jsonl"
    // `SpoolDrainer::forEachEvent` of this batch.
    std::function<std::expected<std::int64_t, FileError>(const SpoolDrainer::EventSink& take)>
        forEachEvent;
    std::function<void()> remove;
};

struct EventClaim {
    std::vector<EventBatch> batches;  // in the order in which they are to be stored
    // Why some are missing, which the next call gives: no event behind them is among the batches.
    std::vector<Sentence> troubles;
};

struct EventSource {
    std::function<EventClaim()> claim;

    // How often a claim asks for the spool's lock, for as long as the drainer's timeout each time.
    static constexpr int asksAgainLater = 1;
    static constexpr int asksUntilItKnows =
        3;  // that the lock is stuck, for a caller who claims once

    // The spool of a home: claims under the lock that its writers share. While another process
    // keeps that lock, it gives the segments that have their names already, and where that lasts
    // for more than a second it says which process keeps it, as far as the system tells.
    static EventSource spool(SpoolDrainer drainer, int asks = asksAgainLater);
};

}  // namespace tallowbrook::host
