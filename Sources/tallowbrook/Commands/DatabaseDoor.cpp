#include "Commands/DatabaseDoor.h"

#include "Output/ExitStatus.h"
#include "Output/StandardStreams.h"
#include "Store/DatabaseFailure.h"

namespace tallowbrook::host {
namespace {

enum class Missing { isMade, isLeft };

// The one place where a command's database may fail.
std::expected<void, Sentence> run(const TallowbrookPaths& paths, Missing missing,
                                  const std::function<void(Database*)>& action) {
    bool isOpen = false;
    try {
        if (missing == Missing::isLeft && !Database::exists(paths)) {
            action(nullptr);
            return {};
        }
        const bool reads = missing == Missing::isLeft && !Database::mayBeWritten(paths);
        auto database = reads ? Database::openToRead(paths) : Database::open(paths);
        if (!database) return std::unexpected(database.error());
        isOpen = true;
        action(&*database);
        return {};
    } catch (const SQLite::Exception& error) {
        return std::unexpected(isOpen ? databaseFailure(paths.databaseFile(), error)
                                      : openingFailure(paths.databaseFile(), error));
    }
}

int statusOf(const std::expected<void, Sentence>& outcome, int status) {
    return outcome ? status : StandardStreams::fail(outcome.error().text());
}

}  // namespace

int withDatabase(const TallowbrookPaths& paths, const std::function<int(Database&)>& action) {
    int status = ExitStatus::failed;
    const auto outcome =
        run(paths, Missing::isMade, [&](Database* database) { status = action(*database); });
    return statusOf(outcome, status);
}

int withDatabaseIfAny(const TallowbrookPaths& paths, const std::function<int(Database*)>& action) {
    int status = ExitStatus::failed;
    const auto outcome =
        run(paths, Missing::isLeft, [&](Database* database) { status = action(database); });
    return statusOf(outcome, status);
}

int withExistingDatabase(const TallowbrookPaths& paths,
                         const std::function<int(Database&)>& action) {
    return withDatabaseIfAny(paths, orNoSessions(action));
}

std::function<int(Database*)> orNoSessions(const std::function<int(Database&)>& action) {
    return [action](Database* database) {
        if (database != nullptr) return action(*database);
        return StandardStreams::fail(
            "There are no sessions yet. \"tallowbrook setup\" lets the agents report, "
            "\"tallowbrook watch\" reads what they say.");
    };
}

std::expected<void, Sentence> tryDatabase(const TallowbrookPaths& paths,
                                          const std::function<void(Database&)>& action) {
    return run(paths, Missing::isMade, [&](Database* database) { action(*database); });
}

std::expected<void, Sentence> tryDatabaseIfAny(const TallowbrookPaths& paths,
                                               const std::function<void(Database*)>& action) {
    return run(paths, Missing::isLeft, action);
}

}  // namespace tallowbrook::host
