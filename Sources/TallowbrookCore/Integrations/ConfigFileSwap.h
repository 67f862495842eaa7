// The last step of a change to a configuration file: a finished new file takes the place of the one
// that was planned on, and of no other; and what a killed change has left behind is removed.
#pragma once

#include <expected>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "Domain/Instant.h"
#include "Integrations/ConfigFileError.h"

namespace tallowbrook::ConfigFileSwap {

// The name of a new file for `target` while it is written; beside the target, and hidden.
std::filesystem::path unfinishedName(const std::filesystem::path& target, std::string_view uuid);

// The file at `made`, complete and on stable storage, becomes `target`, where `planned` is, or no
// file when that is absent. Where the system can exchange two names it is done first and what came
// out is compared: what somebody else has written is put back, with `changedSincePlan`. At every
// moment `target` is a whole file. `made` is gone afterwards.
[[nodiscard]] std::expected<void, ConfigFileError> swapIn(const std::filesystem::path& made,
                                                          const std::filesystem::path& target,
                                                          const std::optional<std::string>& planned,
                                                          std::string_view proposed);

// Removes the user's own files beside `target` that a change left there when it was killed more
// than a minute before `now`. Where such a file may hold the only copy of what somebody wrote, it
// is kept unless a file in `backups` holds the same.
void removeLeftovers(const std::filesystem::path& target, const std::filesystem::path& backups,
                     Instant now);

}  // namespace tallowbrook::ConfigFileSwap
