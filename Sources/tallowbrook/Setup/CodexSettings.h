// The settings by which Codex runs no hooks of its user, and its notes on which hooks are trusted.
#pragma once

#include <filesystem>
#include <optional>

#include "Setup/HookObstacle.h"

namespace tallowbrook::host {

// As Codex 0.169.0 was seen to do. Switched off by "hooks", once "codex_hooks", under [features]:
// managed_config.toml has the last word on it, then config.toml beside `hooksFile`, then that of
// the machine; requirements.toml can forbid the user's hooks besides. Trust is in config.toml
// beside `hooksFile`, one entry for each hook. Whether a hook has changed since it was trusted is
// not looked at.
std::optional<HookObstacle> obstacleInCodexSettings(const std::filesystem::path& hooksFile,
                                                    const std::filesystem::path& managedDirectory);

}  // namespace tallowbrook::host
