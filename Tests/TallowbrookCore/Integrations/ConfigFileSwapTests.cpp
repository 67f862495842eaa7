#include "Integrations/ConfigFileSwap.h"

#include <gtest/gtest.h>

#include "ConfigFileSamples.h"

namespace tallowbrook {
namespace {

namespace fs = std::filesystem;

class ConfigFileSwapTest : public ConfigFileTest {
 protected:
    // Swaps in "new"; empty after a success, else what the user is told.
    std::string swapped(const std::optional<std::string>& planned) const {
        writeContents(made, "new");
        const auto done = ConfigFileSwap::swapIn(made, config, planned, "new");
        return done ? "" : done.error().description();
    }

    void SetUp() override { fs::create_directories(directory); }

    fs::path made = directory / "made.tmp";
    std::string changed = ConfigFileError::changedSincePlan(config).description();
};

TEST_F(ConfigFileSwapTest, replacesTheFileThatWasPlannedOn) {
    writeContents(config, "old");
    EXPECT_EQ(swapped("old"), "");
    EXPECT_EQ(contentsOf(config), "new");
    EXPECT_EQ(namesIn(directory), Names{"settings.json"});
}

TEST_F(ConfigFileSwapTest, makesAFileWhereNoneWas) {
    EXPECT_EQ(swapped(std::nullopt), "");
    EXPECT_EQ(contentsOf(config), "new");
    EXPECT_EQ(namesIn(directory), Names{"settings.json"});
}

TEST_F(ConfigFileSwapTest, putsBackWhatSomebodyElseHasWritten) {
    writeContents(config, "the user's");
    EXPECT_EQ(swapped("old"), changed);
    EXPECT_EQ(contentsOf(config), "the user's");
    EXPECT_EQ(swapped(std::nullopt), changed);
    EXPECT_EQ(contentsOf(config), "the user's");
    EXPECT_EQ(namesIn(directory), Names{"settings.json"});
}

TEST_F(ConfigFileSwapTest, makesNothingWhereTheFileHasBeenDeleted) {
    EXPECT_EQ(swapped("old"), changed);
    EXPECT_EQ(namesIn(directory), Names{});
}

TEST_F(ConfigFileSwapTest, putsBackADirectory) {
    writeContents(config / "file", "");
    EXPECT_EQ(swapped("old"), "Could not read " + config.string() + ": " + reasonOf(EISDIR));
    EXPECT_TRUE(fs::exists(config / "file"));
    EXPECT_EQ(namesIn(directory), Names{"settings.json"});
}

}  // namespace
}  // namespace tallowbrook
