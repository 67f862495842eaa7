#include "Setup/BackupPruning.h"

#include <fmt/core.h>
#include <gtest/gtest.h>

#include "Support/DirectoryNames.h"
#include "Support/FileContents.h"
#include "Support/TemporaryDirectory.h"

namespace tallowbrook::host {
namespace {

struct Pruning : testing::Test {
    TemporaryDirectory directory;
    std::filesystem::path file = directory.path / "settings.json";
    std::filesystem::path backups = directory.path / "backups";

    // Of the second `number` of that minute.
    std::string backup(int number, const std::string& name = "settings.json") const {
        const auto text = fmt::format("{}.20250301T1430{:02}Z.9f3a06c1.bak", name, number);
        writeContents(backups / text, "old");
        return text;
    }

    bool has(const std::string& name) const { return exists(symlink_status(backups / name)); }
};

TEST_F(Pruning, keepsTheNewestTwentyAndTheFirst) {
    std::vector<std::string> made;
    for (int i = 0; i < 30; ++i) made.push_back(backup(i));
    pruneBackups(file, backups, backups / made.back());
    for (std::size_t i = 0; i < made.size(); ++i) EXPECT_EQ(has(made[i]), i == 0 || i >= 10) << i;
}

TEST_F(Pruning, leavesTheOneThatWasJustMadeWhateverItsTime) {
    std::vector<std::string> made;
    for (int i = 0; i < 30; ++i) made.push_back(backup(i));
    pruneBackups(file, backups, backups / made[3]);
    EXPECT_TRUE(has(made[3]));
    EXPECT_FALSE(has(made[4]));
}

TEST_F(Pruning, leavesWhatIsNoBackupOfThatFile) {
    const std::vector<std::string> others{backup(1, "hooks.json"), "settings.json.mine.bak",
                                          "settings.json.20250301T143000Z.9f3a06c1.bak.txt",
                                          "notes"};
    for (const auto& name : others) writeContents(backups / name, "mine");
    const std::string link = "settings.json.20250301T143002Z.9f3a06c1.bak";
    const std::string directoryName = "settings.json.20250301T143003Z.9f3a06c1.bak";
    create_symlink(file, backups / link);
    create_directory(backups / directoryName);
    const auto first = backup(1);
    for (int i = 10; i < 40; ++i) backup(i);
    pruneBackups(file, backups, backups / "settings.json.20250301T143039Z.9f3a06c1.bak");
    for (const auto& name : others) EXPECT_TRUE(has(name)) << name;
    EXPECT_TRUE(has(link));
    EXPECT_TRUE(has(directoryName));
    EXPECT_TRUE(has(first));
    EXPECT_FALSE(has("settings.json.20250301T143010Z.9f3a06c1.bak"));
}

}  // namespace
}  // namespace tallowbrook::host
