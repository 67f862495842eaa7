// What waits for the user, in a file for programs that show it: editors, status lines.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>

#include "EventBridge/TallowbrookPaths.h"
#include "SessionState/SessionSnapshot.h"
#include "Store/Database.h"

namespace tallowbrook::host {

// Used by one thread; of several processes on one home by the one that leads.
class StateFile {
 public:
    // The shell of the editor's terminal in which a session runs, where there is one.
    using ShellOf = std::function<std::optional<pid_t>(const SessionSnapshot& session)>;

    explicit StateFile(TallowbrookPaths paths, ShellOf shellOf);

    static std::filesystem::path location(const TallowbrookPaths& paths);

    // Writes the file, whole at once, where the sessions have changed or it is not there. A
    // database or a disk that fails is passed over, since nobody waits for the file: the next call
    // tries again.
    void update(Database& database, Instant now) noexcept;

    // Whether an editor's windows have changed, by which a session that waits may be found.
    bool mayHaveNews() const;

    void remove();

 private:
    struct Shell {
        Instant waitingSince{};
        std::filesystem::file_time_type windowsAsOf;
        std::optional<pid_t> pid;
    };

    std::string contents(Database& database, Instant now);
    std::optional<pid_t> shellOf(const SessionSnapshot& session);

    TallowbrookPaths paths_;
    ShellOf findShell_;
    std::map<std::string, Shell> shells_;  // by the session's id; of those that wait
    std::string written_;                  // all but the time
};

}  // namespace tallowbrook::host
