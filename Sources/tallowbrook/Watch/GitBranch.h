// The branch that a directory has checked out, as git's own files say it: gitrepository-layout(5).
//
// Runs no program. Safe from any thread.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace tallowbrook::host {

// "main" for a directory of a working tree, or of one that "git worktree" has added, at any depth.
// Absent outside of one, for a commit that is checked out without a branch, and for files that are
// not as git writes them.
std::optional<std::string> gitBranch(const std::filesystem::path& directory);

}  // namespace tallowbrook::host
