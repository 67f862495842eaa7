// The settings by which Claude Code runs no hooks of its user.
#pragma once

#include <filesystem>
#include <optional>

#include "Setup/HookObstacle.h"

namespace tallowbrook::host {

// As Claude Code 2.1.197 was seen to do: those who manage the machine have the last word, in
// managed-settings.json and, over it, in managed-settings.d/*.json by the order of their names. It
// drops a file with a comment, and so does this.
std::optional<HookObstacle> obstacleInClaudeSettings(const std::filesystem::path& settingsFile,
                                                     const std::filesystem::path& managedDirectory);

}  // namespace tallowbrook::host
