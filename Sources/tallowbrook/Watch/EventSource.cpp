#include "Watch/EventSource.h"

#include <variant>

namespace tallowbrook::host {
namespace {

// A lock or a rename is told by its code, as in the helper's log, so that the two can be compared.
std::string describe(const SpoolAccessError& error) {
    if (const auto* spool = std::get_if<SpoolError>(&error)) return spool->diagnosticCode();
    return std::get<FileError>(error).description();
}

EventBatch segment(const std::filesystem::path& file) {
    return {
        .name = "spool segment " + file.filename().string(),
        .forEachEvent =
            [file](const SpoolDrainer::EventSink& take) {
                return SpoolDrainer::forEachEvent(file, take);
            },
        .remove = [file] { SpoolDrainer::remove(file); },
    };
}

}  // namespace

EventSource EventSource::spool(SpoolDrainer drainer) {
    return {[drainer = std::move(drainer)]() -> std::expected<std::vector<EventBatch>, Sentence> {
        const auto files = drainer.claimPendingFiles();
        if (!files)
            return std::unexpected(Sentence{"The spool could not be claimed: " +
                                            describe(files.error()) + ". Its events are kept"});
        std::vector<EventBatch> batches;
        batches.reserve(files->size());
        for (const auto& file : *files) batches.push_back(segment(file));
        return batches;
    }};
}

}  // namespace tallowbrook::host
