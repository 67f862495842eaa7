// A directory with a configuration file of an agent in it, and changes to that file.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "Integrations/ConfigFileWriter.h"
#include "Support/DirectoryNames.h"
#include "Support/FileContents.h"
#include "Support/FileModeMask.h"
#include "Support/TemporaryDirectory.h"

namespace tallowbrook {

// 2025-03-01T14:30:05Z
inline constexpr Instant sampleNow{std::chrono::seconds{1740839405}};

// The system's own text for an error.
inline std::string reasonOf(int errorNumber) { return FileError{"", errorNumber}.reason(); }

class ConfigFileTest : public testing::Test {
 protected:
    using Names = std::vector<std::string>;

    static std::expected<ConfigChangePlan, ConfigPlanError> planned(
        const std::filesystem::path& file, const std::optional<std::string>& proposal) {
        return ConfigFileWriter::plan(file, [&](const auto&) { return proposal; });
    }

    // A plan for `config` that must succeed.
    ConfigChangePlan planTo(const std::optional<std::string>& proposal) const {
        auto plan = planned(config, proposal);
        if (!plan) ADD_FAILURE() << plan.error().description();
        return plan.value_or(ConfigChangePlan{});
    }

    // Empty after a success, else what the user is told.
    std::string applied(const ConfigChangePlan& plan) const {
        const auto result = ConfigFileWriter::apply(plan, backups, sampleNow);
        return result ? "" : result.error().description();
    }

    // Plans and applies; the file must be written.
    void write(const std::string& proposal) const {
        EXPECT_EQ(applied(planTo(proposal)), "");
        EXPECT_EQ(contentsOf(config), proposal);
        EXPECT_EQ(planTo(proposal).originalText, proposal);
    }

    // What the backups hold.
    Names kept() const {
        Names contents;
        for (const auto& name : namesIn(backups)) contents.push_back(contentsOf(backups / name));
        std::ranges::sort(contents);
        return contents;
    }

    TemporaryDirectory temporary;
    std::filesystem::path directory = temporary.path / "agent";
    std::filesystem::path config = directory / "settings.json";
    std::filesystem::path backups = temporary.path / "home" / "backups";
};

}  // namespace tallowbrook
