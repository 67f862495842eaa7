// The helper where the file system, or another process, refuses it what it needs.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <string_view>

#include "Support/BuildPaths.h"
#include "Support/FileContents.h"
#include "Support/FileModeMask.h"
#include "Support/LockHolder.h"
#include "Support/OrdinaryUser.h"
#include "TestHome.h"

namespace tallowbrook {
namespace {

using Messages = std::vector<std::string>;

// The helper, run by a user whom file modes bind.
class HelperRefused : public testing::Test {
 protected:
    // Gives the test's directory to that user. Skips the test where there is none, or where that
    // user may not run the helper.
    void lendHome() {
        user_ = OrdinaryUser::find();
        if (!user_) GTEST_SKIP() << OrdinaryUser::missing;
        const auto mayRun = inChildProcess([&] {
            return user_->become() && access(BuildPaths::helper, X_OK) == 0 ? "yes" : "no";
        });
        if (mayRun != "yes") GTEST_SKIP() << "the helper lies where another user may not run it";
        for (const auto& path :
             {home.directory.path, home.directory.path / "user", home.directory.path / "runtime"})
            ASSERT_TRUE(user_->own(path));
    }

    void lend(const std::filesystem::path& path, mode_t mode) const {
        ASSERT_TRUE(user_->own(path));
        ASSERT_EQ(chmod(path.c_str(), mode), 0);
    }

    ProgramResult hookAsOrdinaryUser() const {
        ProgramCall call = home.hookCall({"claude-code"}, claudePayload("Stop"));
        call.prepare = [user = *user_] {
            if (!user.become()) _exit(1);
        };
        return run(call);
    }

    const TestHome home;

 private:
    std::optional<OrdinaryUser> user_;
};

TEST_F(HelperRefused, aHomeThatIsAFileChangesNothing) {
    writeContents(home.paths.home, "not a directory");
    EXPECT_EQ(home.hook({"claude-code"}, claudePayload("Stop")), quiet);
    EXPECT_EQ(contentsOf(home.paths.home), "not a directory");
}

TEST_F(HelperRefused, aHomeBelowAFileChangesNothing) {
    writeContents(home.directory.path / "file", "");
    EXPECT_EQ(run(home.plainHookCall({"--home", "file/below", "codex"}, claudePayload("Stop"))),
              quiet);
    EXPECT_EQ(contentsOf(home.directory.path / "file"), "");
}

TEST_F(HelperRefused, aSpoolDirectoryThatIsAFileIsAnUnexpectedError) {
    writeContents(home.paths.spoolDirectory(), "");
    for (const std::string source : {"claude-code", "codex"})
        EXPECT_EQ(home.hook({source}, claudePayload("Stop")), quiet);
    EXPECT_EQ(home.hook({"codex-notify", "{}"}), quiet);
    EXPECT_EQ(home.logged(), (Messages{"helper: claude-code unexpected error: FileError",
                                       "helper: codex unexpected error: FileError",
                                       "helper: codex-notify unexpected error: FileError"}));
}

TEST_F(HelperRefused, aSpoolThatIsNoFileIsASpoolError) {
    create_directories(home.paths.activeSpoolFile());
    EXPECT_EQ(home.hook({"codex"}, claudePayload("Stop")), quiet);
    EXPECT_EQ(home.logged(), Messages{"helper: codex spool write failed: io-open-spool-errno" +
                                      std::to_string(EISDIR)});
}

TEST_F(HelperRefused, aLockThatIsNoFileIsASpoolError) {
    create_directories(home.paths.spoolLockFile());
    EXPECT_EQ(home.hook({"claude-code"}, claudePayload("Stop")), quiet);
    EXPECT_EQ(home.logged(), Messages{"helper: claude-code spool write failed: io-open-lock-errno" +
                                      std::to_string(EISDIR)});
}

TEST_F(HelperRefused, alsoWithoutALogNothingIsPrinted) {
    writeContents(home.paths.logsDirectory(), "in the way");
    EXPECT_EQ(home.hook({"claude-code"}, "{"), quiet);
    EXPECT_EQ(home.hook({}), quiet);
    EXPECT_EQ(contentsOf(home.paths.logsDirectory()), "in the way");
}

TEST_F(HelperRefused, aLogThatIsNoFileIsPassedOver) {
    create_directories(home.paths.helperLogFile());
    EXPECT_EQ(home.hook({"claude-code"}, "{"), quiet);
    EXPECT_TRUE(is_empty(home.paths.helperLogFile()));
}

TEST_F(HelperRefused, aLockHeldByAnotherLosesThisEventOnly) {
    create_directories(home.paths.spoolDirectory());
    {
        const LockHolder holder{home.paths.spoolLockFile()};
        ASSERT_TRUE(holder.holds);
        EXPECT_EQ(home.hook({"codex"}, claudePayload("Stop", "lost")), quiet);
        EXPECT_EQ(home.logged(), Messages{"helper: codex spool write failed: lock-timeout"});
        EXPECT_FALSE(exists(home.paths.activeSpoolFile()));
    }
    EXPECT_EQ(home.hook({"codex"}, claudePayload("Stop", "kept")), quiet);
    const auto events = home.spooled();
    ASSERT_EQ(events.size(), 1U);
    EXPECT_EQ(events[0].sessionID, "kept");
    EXPECT_EQ(home.logged().size(), 1U);
}

TEST_F(HelperRefused, aFullDiskLeavesTheSpoolAsItWas) {
    home.claude("Stop");
    const std::string before = contentsOf(home.paths.activeSpoolFile());
    ProgramCall call = home.hookCall({"claude-code"}, claudePayload("SessionEnd"));
    // No file may grow past this size; the system's signal for it would end the program.
    call.prepare = [size = before.size() + 100] {
        const rlimit limit{size, size};
        setrlimit(RLIMIT_FSIZE, &limit);
    };
    EXPECT_EQ(run(call), quiet);
    EXPECT_EQ(contentsOf(home.paths.activeSpoolFile()), before);
    EXPECT_EQ(home.logged(), Messages{"helper: claude-code spool write failed: io-write-errno" +
                                      std::to_string(EFBIG)});
}

TEST_F(HelperRefused, noRoomForTheLogEitherIsBorneInSilence) {
    if (std::string_view{TALLOWBROOK_SANITIZERS} == "thread")
        GTEST_SKIP() << "the thread sanitizer ends a program that may write no byte to a file";
    ProgramCall call = home.hookCall({"claude-code"}, claudePayload("Stop"));
    call.prepare = [] {
        const rlimit limit{0, 0};
        setrlimit(RLIMIT_FSIZE, &limit);
    };
    EXPECT_EQ(run(call), quiet);
    EXPECT_EQ(contentsOf(home.paths.helperLogFile()), "");
    EXPECT_EQ(contentsOf(home.paths.activeSpoolFile()), "");
}

TEST_F(HelperRefused, aHomeThatMayNotBeMadeChangesNothing) {
    ASSERT_NO_FATAL_FAILURE(lendHome());
    if (IsSkipped()) return;
    lend(home.directory.path, 0500);
    EXPECT_EQ(hookAsOrdinaryUser(), quiet);
    EXPECT_FALSE(exists(home.paths.home));
}

TEST_F(HelperRefused, aHomeThatMayNotBeWrittenChangesNothing) {
    ASSERT_NO_FATAL_FAILURE(lendHome());
    if (IsSkipped()) return;
    create_directory(home.paths.home);
    lend(home.paths.home, 0500);
    EXPECT_EQ(hookAsOrdinaryUser(), quiet);
    EXPECT_TRUE(is_empty(home.paths.home));
}

TEST_F(HelperRefused, aSpoolThatMayNotBeWrittenIsLogged) {
    ASSERT_NO_FATAL_FAILURE(lendHome());
    if (IsSkipped()) return;
    create_directories(home.paths.spoolDirectory());
    lend(home.paths.home, 0700);
    lend(home.paths.spoolDirectory(), 0500);
    EXPECT_EQ(hookAsOrdinaryUser(), quiet);
    EXPECT_EQ(home.logged(), Messages{"helper: claude-code spool write failed: io-open-lock-errno" +
                                      std::to_string(EACCES)});
}

TEST_F(HelperRefused, aLogThatMayNotBeWrittenIsPassedOver) {
    ASSERT_NO_FATAL_FAILURE(lendHome());
    if (IsSkipped()) return;
    writeContents(home.paths.spoolDirectory(), "");
    create_directories(home.paths.logsDirectory());
    lend(home.paths.home, 0700);
    lend(home.paths.logsDirectory(), 0500);
    EXPECT_EQ(hookAsOrdinaryUser(), quiet);
    EXPECT_TRUE(is_empty(home.paths.logsDirectory()));
}

TEST_F(HelperRefused, whatItMakesIsTheOwnersAloneWhateverTheUmask) {
    for (const mode_t mask : {mode_t{0000}, mode_t{0022}, mode_t{0077}}) {
        const TestHome fresh;
        ProgramCall call = fresh.hookCall({"claude-code"}, claudePayload("Stop"));
        call.prepare = [mask] { umask(mask); };
        EXPECT_EQ(run(call), quiet);
        call.input = "{";
        EXPECT_EQ(run(call), quiet);
        const auto& paths = fresh.paths;
        for (const auto& made : {paths.home, paths.spoolDirectory(), paths.logsDirectory()})
            EXPECT_EQ(modeOf(made.c_str()), 0700U) << made;
        for (const auto& made :
             {paths.activeSpoolFile(), paths.spoolLockFile(), paths.helperLogFile()})
            EXPECT_EQ(modeOf(made.c_str()), 0600U) << made;
    }
}

}  // namespace
}  // namespace tallowbrook
