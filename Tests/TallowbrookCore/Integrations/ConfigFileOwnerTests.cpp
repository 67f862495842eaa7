// Configuration files and directories of several users.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "ConfigFileSamples.h"
#include "Support/ChildProcess.h"
#include "Support/OrdinaryUser.h"

namespace tallowbrook {
namespace {

namespace fs = std::filesystem;

class ConfigFileOwnerTest : public ConfigFileTest {
 protected:
    void SetUp() override {
        user = OrdinaryUser::find();
        if (!user) GTEST_SKIP() << OrdinaryUser::missing;
        writeContents(config, "old");
        for (const auto& place : {temporary.path, directory, config})
            ASSERT_TRUE(user->own(place)) << place;
    }

    // The outcome of a plan and its application by the ordinary user.
    std::optional<std::string> changedByUser() const {
        return inChildProcess(
            [&] { return user->become() ? applied(planTo("new")) : "still another user"; });
    }

    std::string refusal(const fs::path& place, int error) const {
        return "Could not write " + place.string() + ": " + reasonOf(error);
    }

    void expectUntouched() const {
        EXPECT_EQ(contentsOf(config), "old");
        EXPECT_EQ(namesIn(directory), Names{"settings.json"});
    }

    std::optional<OrdinaryUser> user;
};

TEST_F(ConfigFileOwnerTest, aUserReplacesAReadOnlyFileOfTheirs) {
    chmod(config.c_str(), 0444);
    EXPECT_EQ(changedByUser(), "");
    EXPECT_EQ(contentsOf(config), "new");
    EXPECT_EQ(modeOf(config.c_str()), mode_t{0444});
}

TEST_F(ConfigFileOwnerTest, aFileInAReadOnlyDirectoryIsNotReplaced) {
    chmod(directory.c_str(), 0500);
    EXPECT_EQ(changedByUser(), refusal(config, EACCES));
    expectUntouched();
    EXPECT_EQ(kept(), Names{"old"}) << "the backup was made before";
}

TEST_F(ConfigFileOwnerTest, aFileInAForbiddenDirectoryIsNotRead) {
    chmod(directory.c_str(), 0);
    const auto plan = ConfigChangePlan{config, "old", "new", ""};
    const auto seen =
        inChildProcess([&] { return user->become() ? applied(plan) : "still another user"; });
    EXPECT_EQ(seen, "Could not read " + config.string() + ": " + reasonOf(EACCES));
    chmod(directory.c_str(), 0700);
    expectUntouched();
}

TEST_F(ConfigFileOwnerTest, aFileIsNotReplacedWhereNoBackupMayBeMade) {
    fs::create_directories(backups);
    ASSERT_TRUE(user->own(backups) && user->own(backups.parent_path()));
    chmod(backups.c_str(), 0500);
    const auto seen = changedByUser();
    EXPECT_TRUE(seen &&
                seen->starts_with("Could not write " + backups.string() + "/settings.json.") &&
                seen->ends_with(": " + reasonOf(EACCES)))
        << seen.value_or("absent");
    expectUntouched();
}

TEST_F(ConfigFileOwnerTest, aFileOfAnotherUserIsNotTakenOver) {
    if (geteuid() != 0) GTEST_SKIP() << "only root has files to keep from another user";
    ASSERT_EQ(chown(config.c_str(), 0, 0), 0);
    chmod(config.c_str(), 0644);
    EXPECT_EQ(changedByUser(), refusal(config, EPERM));
    expectUntouched();
    struct stat status{};
    ASSERT_EQ(stat(config.c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, 0U);
}

TEST_F(ConfigFileOwnerTest, rootKeepsTheOwnerOfAFile) {
    if (geteuid() != 0) GTEST_SKIP() << "only root may give files away";
    chmod(config.c_str(), 04755);
    write("new");
    struct stat status{};
    ASSERT_EQ(stat(config.c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, user->id);
    EXPECT_EQ(status.st_gid, static_cast<gid_t>(user->id));
    EXPECT_EQ(modeOf(config.c_str()), mode_t{04755}) << "a change of owner takes bits away";
}

}  // namespace
}  // namespace tallowbrook
