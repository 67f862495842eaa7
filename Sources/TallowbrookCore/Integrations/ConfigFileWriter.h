// Changes to a user's configuration file in two steps: a plan to review, and its application.
//
// A plan is applied only while the file is still what the plan was made from. What was there is
// kept as a backup first, and the file is replaced by a change of names, so that at every moment it
// is either the old or the new one, whole. One file is changed by one caller at a time. That others
// replace it meanwhile is noticed and put right, where the system can exchange the names of two
// files; elsewhere it is noticed up to the moment before the replacement.
#pragma once

#include <cstdint>
#include <expected>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "Domain/Instant.h"
#include "Integrations/ConfigFileError.h"
#include "System/FileError.h"

namespace tallowbrook {

struct ConfigChangePlan {
    std::filesystem::path fileURL;
    std::optional<std::string> originalText;  // absent when there was no file
    std::optional<std::string> proposedText;
    std::string diff;  // unified, for the user; empty where no line changes
    bool operator==(const ConfigChangePlan&) const = default;

    bool isNoOp() const { return originalText == proposedText; }
};

namespace ConfigFileWriter {

// From the file's text, absent where there is no file, to the text to write.
using Transform = std::function<std::expected<std::optional<std::string>, HookConfigError>(
    const std::optional<std::string>& text)>;

// The location with every symbolic link at its end followed, also to a file that does not exist.
// Fails with ELOOP after 40 links, and where a link cannot be read.
[[nodiscard]] std::expected<std::filesystem::path, FileError> resolve(
    const std::filesystem::path& location);

// How many other names the file has, as hard links; a file that is replaced leaves them with what
// was there. 0 where there is no file.
std::uint64_t otherNames(const std::filesystem::path& location);

// Absent when there is no file, nor a directory for it to be in. Only regular files in UTF-8 are
// read.
[[nodiscard]] std::expected<std::optional<std::string>, ConfigFileError> readText(
    const std::filesystem::path& location);

// Reads the file and writes nothing. A proposed text that is no UTF-8 is refused with
// `writeFailed`.
[[nodiscard]] std::expected<ConfigChangePlan, ConfigPlanError> plan(
    const std::filesystem::path& fileURL, const Transform& transform);

// Gives the location of the backup, or nothing where there was no file to keep. A plan without a
// proposed text writes nothing. `now` is the time in the backup's name. What a change left beside
// the file when it was killed is removed once it is a minute old.
//
// A file behind a symbolic link is replaced where it is, and the link stays. A new file gets mode
// 0600, and its missing directory 0700; a replaced one keeps its mode, owner, access control list
// and extended attributes, or the operation fails. After a failure the file is as it was, and no
// temporary file is left behind.
[[nodiscard]] std::expected<std::optional<std::filesystem::path>, ConfigFileError> apply(
    const ConfigChangePlan& plan, const std::filesystem::path& backupDirectory, Instant now);

// "20250301T143005Z", for the years 1 to 9999.
std::string backupStamp(Instant date);

// Replaces the target, or creates it, with the mode, owner, access control list and extended
// attributes of `source` where that exists, else with mode 0600. The bytes are on stable storage,
// POSIX fsync(2), before they take the target's place. Follows no link.
[[nodiscard]] std::expected<void, ConfigFileError> writeAtomically(
    std::string_view data, const std::filesystem::path& target,
    const std::filesystem::path& source);

}  // namespace ConfigFileWriter
}  // namespace tallowbrook
