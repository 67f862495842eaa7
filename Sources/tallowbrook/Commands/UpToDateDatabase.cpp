#include "Commands/UpToDateDatabase.h"

#include <fmt/core.h>

#include <algorithm>
#include <chrono>
#include <vector>

#include "Commands/DatabaseDoor.h"
#include "EventBridge/SpoolDrainer.h"
#include "EventBridge/SpoolFileName.h"
#include "Output/StandardStreams.h"
#include "Output/TimeText.h"
#include "Store/SessionStore.h"
#include "Watch/HostLock.h"
#include "Watch/SpoolIntake.h"

namespace tallowbrook::host {
namespace {

using FileClock = std::filesystem::file_time_type::clock;

// A host looks at the spool every two seconds even where no signal reaches it.
constexpr std::chrono::seconds longUnread{10};

// Since when the spool has held what the host has not taken; absent while that is not long.
std::optional<Instant> unreadSince(const TallowbrookPaths& paths, Instant now) {
    std::vector<std::filesystem::path> files{paths.activeSpoolFile()};
    for (const auto& entry : SpoolFileName::pendingFiles(paths.spoolDirectory()))
        files.push_back(entry.url);
    FileClock::duration age{0};
    for (const auto& file : files) {
        std::error_code error;
        if (const auto changed = last_write_time(file, error); !error)
            age = std::max(age, FileClock::now() - changed);
    }
    if (age < longUnread) return std::nullopt;
    return now - std::chrono::duration_cast<Instant::duration>(age);
}

std::vector<Sentence> whatTheHostLeaves(const TallowbrookPaths& paths) {
    const Instant now = currentInstant();
    const auto since = unreadSince(paths, now);
    if (!since) return {};
    const auto holder = HostLock::holder(paths);
    const auto number = holder && holder->pid ? fmt::format(" (process {})", *holder->pid) : "";
    return {Sentence{fmt::format("The host{} runs, but has not read the spool since {}", number,
                                 TimeText::shortTime(*since, now))}};
}

// Gives what the user has to know about it.
std::vector<Sentence> takeIn(const TallowbrookPaths& paths) {
    if (SpoolDrainer{paths}.pendingSegmentCount() == 0) return {};
    if (HostLock::isHeld(paths)) return whatTheHostLeaves(paths);
    if (!Database::mayBeWritten(paths)) return {Sentence{"This home cannot be written"}};
    std::vector<Sentence> troubles;
    const auto taken = tryDatabase(paths, [&](Database& database) {
        troubles = takeInUnlessWatched(paths, database).troubles;
    });
    if (!taken) troubles.push_back(taken.error());
    return troubles;
}

Sentence ageOf(Database* database) {
    const auto newest =
        database != nullptr ? SessionStore{*database}.newestEventAt() : std::nullopt;
    if (!newest) return Sentence{"Events wait in the spool; none was taken in before"};
    return Sentence{fmt::format("Events wait in the spool; what is shown ends with the one of {}",
                                TimeText::shortTime(*newest, currentInstant()))};
}

}  // namespace

int withUpToDateDatabase(const TallowbrookPaths& paths,
                         const std::function<int(Database*)>& action) {
    const auto troubles = takeIn(paths);
    return withDatabaseIfAny(paths, [&](Database* database) {
        // Only here: a database that cannot be opened is said by the one who opens it.
        for (const auto& trouble : troubles) StandardStreams::complain(trouble);
        if (!troubles.empty() && SpoolDrainer{paths}.pendingSegmentCount() > 0)
            StandardStreams::complain(ageOf(database));
        return action(database);
    });
}

int withUpToDateSessions(const TallowbrookPaths& paths,
                         const std::function<int(Database&)>& action) {
    return withUpToDateDatabase(paths, orNoSessions(action));
}

}  // namespace tallowbrook::host
