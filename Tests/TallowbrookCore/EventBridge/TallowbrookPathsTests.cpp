#include "EventBridge/TallowbrookPaths.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <string>
#include <vector>

#include "Support/ChildProcess.h"
#include "Support/FileContents.h"
#include "Support/FileModeMask.h"
#include "Support/OrdinaryUser.h"
#include "Support/Outcome.h"
#include "Support/TemporaryDirectory.h"

namespace tallowbrook {
namespace {

namespace fs = std::filesystem;

std::string ensure(const fs::path& directory) {
    return outcomeOf(TallowbrookPaths::ensureDirectory(directory));
}

TEST(TallowbrookPaths, derivesEveryLocationFromTheHome) {
    const TallowbrookPaths paths{"/tmp/x"};
    const std::vector<fs::path> derived{
        paths.spoolDirectory(),  paths.activeSpoolFile(),  paths.spoolLockFile(),
        paths.logsDirectory(),   paths.helperLogFile(),    paths.appLogFile(),
        paths.databaseFile(),    paths.backupsDirectory(), paths.binDirectory(),
        paths.installedHelper(), paths.editorsDirectory(), paths.editorRequestsDirectory()};
    EXPECT_EQ(derived,
              (std::vector<fs::path>{
                  "/tmp/x/spool", "/tmp/x/spool/events.jsonl", "/tmp/x/spool/spool.lock",
                  "/tmp/x/logs", "/tmp/x/logs/helper.log", "/tmp/x/logs/app.log",
                  "/tmp/x/Tallowbrook.sqlite", "/tmp/x/backups", "/tmp/x/bin",
                  "/tmp/x/bin/tallowbrook-hook", "/tmp/x/editors", "/tmp/x/editors/requests"}));
}

TEST(TallowbrookPaths, resolvesNothing) {
    EXPECT_EQ(TallowbrookPaths{"a/../b"}.spoolDirectory().native(), "a/../b/spool");
    EXPECT_EQ(TallowbrookPaths{"/a/"}.spoolDirectory().native(), "/a/spool");
}

TEST(EnsureDirectory, leavesAnExistingDirectoryAsItIs) {
    const TemporaryDirectory temporary;
    const fs::path directory = temporary.path / "a";
    fs::create_directory(directory);
    writeContents(directory / "file", "kept");
    for (const mode_t mode : {mode_t{0755}, mode_t{0500}, mode_t{0}}) {
        chmod(directory.c_str(), mode);
        EXPECT_EQ(ensure(directory), "ok");
        EXPECT_EQ(modeOf(directory.c_str()), mode);
    }
    chmod(directory.c_str(), 0700);
    EXPECT_EQ(contentsOf(directory / "file"), "kept");
    EXPECT_EQ(ensure("/"), "ok");
    EXPECT_EQ(ensure("."), "ok");
}

TEST(EnsureDirectory, givesEachNewDirectoryToItsOwnerAloneWhateverTheUmask) {
    for (const mode_t mask : {mode_t{0}, mode_t{022}, mode_t{077}, mode_t{0277}, mode_t{0777}}) {
        const TemporaryDirectory temporary;
        const FileModeMask masked{mask};
        EXPECT_EQ(ensure(temporary.path / "a" / "b" / "c"), "ok") << mask;
        for (const char* made : {"a", "a/b", "a/b/c"})
            EXPECT_EQ(modeOf((temporary.path / made).c_str()), mode_t{0700}) << mask << made;
    }
}

TEST(EnsureDirectory, getsPastAUmaskThatBindsItsUser) {
    const auto user = OrdinaryUser::find();
    if (!user) GTEST_SKIP() << OrdinaryUser::missing;
    const TemporaryDirectory temporary;
    ASSERT_TRUE(user->own(temporary.path));
    const auto seen = inChildProcess([&]() -> std::string {
        if (!user->become()) return "still another user";
        const FileModeMask masked{0777};
        return ensure(temporary.path / "a" / "b" / "c");
    });
    EXPECT_EQ(seen, "ok");
    for (const char* made : {"a", "a/b", "a/b/c"})
        EXPECT_EQ(modeOf((temporary.path / made).c_str()), mode_t{0700}) << made;
}

TEST(EnsureDirectory, takesASlashAtTheEnd) {
    const TemporaryDirectory temporary;
    EXPECT_EQ(ensure(temporary.path / "a" / "b" / ""), "ok");
    EXPECT_EQ(ensure(temporary.path / "a" / "b" / ""), "ok");
    EXPECT_EQ(modeOf((temporary.path / "a").c_str()), mode_t{0700});
    EXPECT_EQ(modeOf((temporary.path / "a" / "b").c_str()), mode_t{0700});
}

TEST(EnsureDirectory, takesARelativeLocation) {
    const TemporaryDirectory temporary;
    const auto seen = inChildProcess([&]() -> std::string {
        if (chdir(temporary.path.c_str()) != 0) return "no such directory";
        return ensure("a/b") + " " + ensure("c");
    });
    EXPECT_EQ(seen, "ok ok");
    EXPECT_TRUE(fs::is_directory(temporary.path / "a" / "b"));
    EXPECT_TRUE(fs::is_directory(temporary.path / "c"));
}

TEST(EnsureDirectory, takesALinkToADirectory) {
    const TemporaryDirectory temporary;
    fs::create_directory(temporary.path / "a");
    fs::create_directory_symlink("a", temporary.path / "link");
    EXPECT_EQ(ensure(temporary.path / "link"), "ok");
    EXPECT_EQ(ensure(temporary.path / "link" / "b"), "ok");
    EXPECT_TRUE(fs::is_directory(temporary.path / "a" / "b"));
}

TEST(EnsureDirectory, failsWhereSomethingElseIsInTheWay) {
    const TemporaryDirectory temporary;
    writeContents(temporary.path / "file", "kept");
    fs::create_symlink("missing", temporary.path / "dangling");
    const auto numberOf = [&](const char* name) {
        const auto made = TallowbrookPaths::ensureDirectory(temporary.path / name);
        return made ? 0 : made.error().errorNumber;
    };
    EXPECT_EQ(numberOf("file"), ENOTDIR);
    EXPECT_EQ(numberOf("file/a"), ENOTDIR);
    EXPECT_EQ(numberOf("file/a/b"), ENOTDIR);
    EXPECT_NE(numberOf("dangling"), 0);
    EXPECT_NE(numberOf("dangling/a"), 0);
    EXPECT_EQ(contentsOf(temporary.path / "file"), "kept");
    EXPECT_FALSE(fs::exists(temporary.path / "missing"));
}

TEST(EnsureDirectory, namesTheStepThatFailed) {
    const auto user = OrdinaryUser::find();
    if (!user) GTEST_SKIP() << OrdinaryUser::missing;
    const TemporaryDirectory temporary;
    fs::create_directory(temporary.path / "closed");
    ASSERT_TRUE(user->own(temporary.path) && user->own(temporary.path / "closed"));
    chmod((temporary.path / "closed").c_str(), 0500);
    const auto seen = inChildProcess([&] {
        return user->become() ? ensure(temporary.path / "closed" / "a" / "b") : "same user";
    });
    EXPECT_EQ(seen, "mkdir-errno" + std::to_string(EACCES));
    EXPECT_TRUE(fs::is_empty(temporary.path / "closed"));
}

TEST(EnsureDirectory, severalProcessesMayCreateTheSameAtOnce) {
    const TemporaryDirectory temporary;
    for (int round = 0; round < 10; ++round) {
        fs::path directory = temporary.path / std::to_string(round);
        for (const char* name : {"a", "b", "c", "d", "e", "f"}) directory /= name;
        std::vector<std::unique_ptr<ChildProcess>> children;
        for (int i = 0; i < 4; ++i)
            children.push_back(std::make_unique<ChildProcess>([&] { return ensure(directory); }));
        for (const auto& child : children) EXPECT_EQ(child->result(), "ok");
        EXPECT_TRUE(fs::is_directory(directory));
    }
}

}  // namespace
}  // namespace tallowbrook
