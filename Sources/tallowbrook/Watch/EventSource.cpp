#include "Watch/EventSource.h"

#include <chrono>
#include <optional>
#include <utility>
#include <variant>

#include "EventBridge/SpoolFileName.h"
#include "Output/PrintableText.h"
#include "Terminal/ProcessTable.h"
#include "Watch/LockOwner.h"

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

bool isLockTimeout(const SpoolAccessError& error) {
    const auto* spool = std::get_if<SpoolError>(&error);
    return spool != nullptr && *spool == SpoolError::lockTimeout();
}

std::string nameOf(pid_t pid) {
    const auto process = ProcessTable::process(pid);
    const std::string number = "Process " + std::to_string(pid);
    return process ? number + " (" + PrintableText::printable(process->name) + ")" : number;
}

// A process that does not give the spool's lock back, such as one that is stopped. In a crowd of
// writers the lock may be taken at every look, too, but each time by another.
class StuckLock {
 public:
    explicit StuckLock(std::filesystem::path file) : file_{std::move(file)} {}

    void isFree() { since_.reset(); }

    // Says so where the lock was taken for more than a second.
    std::optional<Sentence> isTaken() {
        const auto now = Clock::now();
        const auto owner = lockOwner(file_);
        const bool isAnother = owner != std::exchange(owner_, owner);
        if (!since_ || isAnother) since_ = now;
        if (now - *since_ <= std::chrono::seconds{1}) return std::nullopt;
        return Sentence{(owner ? nameOf(*owner) : "Another process") +
                        " has held the spool's lock for more than a second: no event can be "
                        "recorded until it goes on or ends"};
    }

 private:
    using Clock = std::chrono::steady_clock;

    std::filesystem::path file_;
    std::optional<Clock::time_point> since_;
    std::optional<pid_t> owner_;
};

class SpoolSource {
 public:
    SpoolSource(SpoolDrainer drainer, int asks)
        : drainer_{std::move(drainer)}, asks_{asks}, lock_{drainer_.paths.spoolLockFile()} {}

    EventClaim claim() {
        EventClaim claim;
        auto files = drainer_.claimPendingFiles();
        auto stuck = look(files);
        for (int asked = 1; asked < asks_ && isTaken(files); ++asked) {
            files = drainer_.claimPendingFiles();
            stuck = look(files);
        }
        if (files)
            for (const auto& file : *files) claim.batches.push_back(segment(file));
        else
            claim.troubles.emplace_back("The spool could not be claimed: " +
                                        describe(files.error()) + ". Its events are kept");
        if (stuck) claim.troubles.push_back(std::move(*stuck));
        if (!isTaken(files)) return claim;
        // What has its name is older than all that the lock still guards, and changes no more.
        for (const auto& entry : SpoolFileName::pendingFiles(drainer_.paths.spoolDirectory()))
            claim.batches.push_back(segment(entry.url));
        return claim;
    }

 private:
    using Files = std::expected<std::vector<std::filesystem::path>, SpoolAccessError>;

    static bool isTaken(const Files& files) { return !files && isLockTimeout(files.error()); }

    std::optional<Sentence> look(const Files& files) {
        if (isTaken(files)) return lock_.isTaken();
        lock_.isFree();
        return std::nullopt;
    }

    SpoolDrainer drainer_;
    int asks_;
    StuckLock lock_;
};

}  // namespace

EventSource EventSource::spool(SpoolDrainer drainer, int asks) {
    return {[source = SpoolSource{std::move(drainer), asks}]() mutable { return source.claim(); }};
}

}  // namespace tallowbrook::host
