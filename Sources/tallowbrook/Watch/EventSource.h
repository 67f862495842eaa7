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

struct EventSource {
    // The batches that are there, in the order in which they are to be stored. After a failure
    // nothing is lost: the next call gives them.
    std::function<std::expected<std::vector<EventBatch>, Sentence>()> claim;

    // The spool of a home: claims under the lock that its writers share.
    static EventSource spool(SpoolDrainer drainer);
};

}  // namespace tallowbrook::host
