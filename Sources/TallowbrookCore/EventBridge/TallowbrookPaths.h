// The one place that knows where the system keeps its files.
//
// Everything lies under one home directory by fixed relative names, so that another home moves the
// whole tree at once. Locations are joined, not looked at: nothing is resolved, checked or created
// until a writer asks for it. Safe from any thread.
#pragma once

#include <expected>
#include <filesystem>

#include "System/FileError.h"

namespace tallowbrook {

struct TallowbrookPaths {
    std::filesystem::path home;
    bool operator==(const TallowbrookPaths&) const = default;

    // The user's data directory of the system + "Tallowbrook". One implementation per system.
    static std::filesystem::path defaultHome();
    static TallowbrookPaths standard() { return {defaultHome()}; }

    std::filesystem::path spoolDirectory() const { return home / "spool"; }
    std::filesystem::path activeSpoolFile() const { return home / "spool" / "events.jsonl"; }
    std::filesystem::path spoolLockFile() const { return home / "spool" / "spool.lock"; }
    std::filesystem::path logsDirectory() const { return home / "logs"; }
    std::filesystem::path helperLogFile() const { return home / "logs" / "helper.log"; }
    std::filesystem::path appLogFile() const { return home / "logs" / "app.log"; }
    std::filesystem::path databaseFile() const { return home / "Tallowbrook.sqlite"; }
    std::filesystem::path backupsDirectory() const { return home / "backups"; }
    std::filesystem::path binDirectory() const { return home / "bin"; }
    std::filesystem::path installedHelper() const { return home / "bin" / "tallowbrook-hook"; }
    std::filesystem::path editorsDirectory() const { return home / "editors"; }
    std::filesystem::path editorRequestsDirectory() const { return home / "editors" / "requests"; }

    // Creates the directory and its missing parents, each with mode 0700 whatever the umask; an
    // existing directory keeps its mode. Something else in its place is ENOTDIR.
    [[nodiscard]] static std::expected<void, FileError> ensureDirectory(
        const std::filesystem::path& directory);
};

}  // namespace tallowbrook
