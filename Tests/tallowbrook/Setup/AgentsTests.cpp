#include "Setup/Agents.h"

#include <gtest/gtest.h>

#include <set>

#include "Support/TemporaryDirectory.h"

namespace tallowbrook::host {
namespace {

const TallowbrookPaths paths{"/data"};

std::string nameFor(const std::string& directory) {
    const Agent agent{Provider::claudeCode, directory + "/settings.json", true};
    const auto backups = agent.backupDirectory(paths);
    EXPECT_EQ(backups.parent_path(), paths.backupsDirectory());
    return backups.filename();
}

TEST(BackupDirectory, ofAnOrdinaryPathIsThePathWithPercentSigns) {
    EXPECT_EQ(nameFor("/home/me/.claude"), "%home%me%.claude");
}

TEST(BackupDirectory, isNoOtherDirectorysWhateverSignsAreInTheirNames) {
    const std::string alphabet = "/%25F=#a";
    std::set<std::string> directories;
    // Every path of up to four signs below /x, but for empty names in it.
    for (std::size_t number = 0; number < 4096; ++number) {
        std::string directory = "/x";
        for (std::size_t rest = number; rest > 0; rest /= 8) directory += alphabet[rest % 8];
        if (directory.find("//") == std::string::npos && !directory.ends_with('/'))
            directories.insert(directory);
    }
    std::set<std::string> names;
    for (const auto& directory : directories)
        EXPECT_TRUE(names.insert(nameFor(directory)).second) << directory;
}

TEST(BackupDirectory, ofALongPathHasANameThatAFileSystemTakes) {
    std::set<std::string> names;
    const std::string deep = "/" + std::string(150, 'a') + "/" + std::string(150, 'b');
    for (const auto& directory : {deep, deep + "c", deep + "%", std::string(100, '%')}) {
        const auto name = nameFor("/" + directory);
        EXPECT_LE(name.size(), 255U);
        EXPECT_TRUE(names.insert(name).second) << directory;
    }
}

}  // namespace
}  // namespace tallowbrook::host
