#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <string>

#include "ConfigFileSamples.h"
#include "Integrations/ConfigFileSwap.h"

namespace tallowbrook {
namespace {

namespace fs = std::filesystem;

const std::string uuid = "0F0E0D0C-0B0A-4908-8706-050403020100";
const std::string unfinished = ".settings.json.tallowbrook-" + uuid + ".tmp";
const std::string exchanged = ".settings.json.tallowbrook-" + uuid + ".old";

class ConfigFileLeftoversTest : public ConfigFileTest {
 protected:
    // The time from which on what was made just now is a leftover, and more.
    static Instant later() { return currentInstant() + std::chrono::minutes{2}; }

    void applyLater() const {
        EXPECT_TRUE(ConfigFileWriter::apply(planTo("new"), backups, later()));
        EXPECT_EQ(contentsOf(config), "new");
    }

    void SetUp() override { writeContents(config, "old"); }
};

TEST_F(ConfigFileLeftoversTest, ofAChangeThatWasKilledAreRemovedByTheNext) {
    writeContents(directory / unfinished, "half a fi");
    applyLater();
    EXPECT_EQ(namesIn(directory), Names{"settings.json"});
}

TEST_F(ConfigFileLeftoversTest, areLeftWhileTheirChangeMayGoOn) {
    writeContents(directory / unfinished, "half a fi");
    EXPECT_TRUE(ConfigFileWriter::apply(planTo("new"), backups, currentInstant()));
    EXPECT_EQ(namesIn(directory), (Names{unfinished, "settings.json"}));
}

TEST_F(ConfigFileLeftoversTest, thatMayBeSomebodysOnlyCopyAreKeptUntilThereIsABackup) {
    writeContents(directory / exchanged, "the user's");
    applyLater();
    EXPECT_EQ(namesIn(directory), (Names{exchanged, "settings.json"}));
    writeContents(backups / "any.bak", "the user's");
    ConfigFileSwap::removeLeftovers(config, backups, later());
    EXPECT_EQ(namesIn(directory), Names{"settings.json"});
}

TEST_F(ConfigFileLeftoversTest, areNoFilesOfOtherNamesOrKinds) {
    const Names others{
        ".settings.json.tallowbrook-" + uuid,         ".settings.json.tallowbrook-" + uuid + ".bak",
        ".settings.json.tallowbrook-1.tmp",           ".settings.json." + uuid + ".tmp",
        "settings.json.tallowbrook-" + uuid + ".tmp", uuid + ".tmp"};
    for (const auto& name : others) writeContents(directory / name, "");
    fs::create_directory(directory / unfinished);
    fs::create_symlink("settings.json", directory / (".a.tallowbrook-" + uuid + ".tmp"));
    const auto before = namesIn(directory);
    ConfigFileSwap::removeLeftovers(config, backups, later());
    EXPECT_EQ(namesIn(directory), before);
}

}  // namespace
}  // namespace tallowbrook
