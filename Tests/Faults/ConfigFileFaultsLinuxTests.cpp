// A user's configuration file while each system call of its replacement fails or is the last one,
// and on a disk without room.
#include <gtest/gtest.h>
#include <string.h>
#include <unistd.h>

#include <algorithm>
#include <iostream>
#include <set>
#include <string>

#include "Integrations/HookConfigMerger.h"
#include "Integrations/IntegrationSetup.h"
#include "SmallDiskLinux.h"
#include "StraceLinux.h"
#include "Support/BuildPaths.h"
#include "Support/ChildProcess.h"
#include "Support/FileContents.h"
#include "Support/FileModeMask.h"
#include "Support/TemporaryDirectory.h"
#include "TallowbrookCore/Integrations/ConfigFileSamples.h"

namespace tallowbrook {
namespace {

namespace fs = std::filesystem;

const std::string helper = "/x/tallowbrook-hook";
const std::string userText = "{\n  \"model\": \"x\"\n}\n";

// "error=EIO" as its text: "Input/output error".
std::string reasonOf(const Fault& fault) {
    for (int number = 1; number < 200; ++number)
        if (const char* name = strerrorname_np(number))
            if (fault.effect == std::string{"error="} + name) return tallowbrook::reasonOf(number);
    return fault.effect + " has no text";
}

// A configuration file to change: one behind a link, or none in a directory that is missing, too.
class Place {
 public:
    explicit Place(bool hasFile) : hasFile_{hasFile} {
        if (!hasFile) return;
        writeContents(dotfiles_ / "file.json", userText);
        permissions(dotfiles_ / "file.json", fs::perms{0644});
        fs::create_directory(agent_);
        fs::create_symlink("../dotfiles/file.json", config_);
    }

    ProgramCall call() const {
        return {.program = BuildPaths::applyPlan, .arguments = {config_, backups_, helper}};
    }

    bool isOld() const { return hasFile_ ? contentsOf(config_) == userText : !fs::exists(config_); }
    bool isNew() const {
        const auto before = hasFile_ ? std::optional{userText} : std::nullopt;
        return contentsOf(config_) ==
               HookConfigMerger::install(before, HookInstallSpec::claudeCode(helper)).value();
    }

    // The old file or the new one, whole, where and as it was.
    void expectWhole() const {
        EXPECT_TRUE(isOld() || isNew()) << contentsOf(config_);
        if (!hasFile_) return;
        EXPECT_TRUE(fs::is_symlink(config_));
        EXPECT_EQ(modeOf(config_.c_str()), mode_t{0644});
    }

    void expectNothingElse() const {
        if (hasFile_) {
            EXPECT_EQ(namesIn(dotfiles_), std::vector<std::string>{"file.json"});
        }
        for (const auto& name : namesIn(agent_)) EXPECT_EQ(name, "settings.json");
    }

    // Backups, each of them whole.
    std::size_t backupCount() const {
        const auto names = namesIn(backups_);
        for (const auto& name : names) EXPECT_EQ(contentsOf(backups_ / name), userText);
        return names.size();
    }

    bool hasFile() const { return hasFile_; }
    const fs::path& config() const { return config_; }
    const fs::path& backups() const { return backups_; }
    const fs::path& directory() const { return hasFile_ ? dotfiles_ : agent_; }

 private:
    bool hasFile_;
    TemporaryDirectory temporary_;
    fs::path dotfiles_ = temporary_.path / "dotfiles";
    fs::path agent_ = temporary_.path / "agent";
    fs::path config_ = agent_ / "settings.json";
    fs::path backups_ = temporary_.path / "home" / "backups";
};

class ConfigFileFaultsTest : public testing::Test {
 protected:
    void SetUp() override {
        if (const auto reason = Strace::reasonToSkip()) GTEST_SKIP() << *reason;
    }

    // Those of the application alone. Left out is the memory of the process: without any the
    // program ends, as it would at the next call.
    static std::vector<SystemCall> ownCalls(bool hasFile) {
        const Place place{hasFile};
        const auto calls = Strace::callsOf(place.call());
        const auto isAlarm = [](const SystemCall& call) { return call.name == "alarm"; };
        const auto first = std::ranges::find_if(calls, isAlarm);
        const auto last = std::find_if(std::min(first + 1, calls.end()), calls.end(), isAlarm);
        std::vector<SystemCall> own{std::min(first + 1, last), last};
        static const std::set<std::string> memory{"brk", "mmap", "munmap", "mprotect", "mremap"};
        std::erase_if(own, [](const SystemCall& call) { return memory.contains(call.name); });
        return own;
    }

    void failEveryCall(bool hasFile) {
        const auto calls = ownCalls(hasFile);
        for (const char* landmark : {"fsync", "renameat2"})
            ASSERT_NE(std::ranges::find(calls, landmark, &SystemCall::name), calls.end());
        for (const auto& call : calls) {
            for (const auto& error : fittingErrors(call.name)) {
                fail(hasFile, {call.name, call.occurrence, error, false}, call);
                // For ever: calls that are interrupted are made again.
                if (error != "error=EINTR")
                    fail(hasFile, {call.name, call.occurrence, error, true}, call);
            }
            endAt(hasFile, {call.name, call.occurrence, "signal=KILL", false}, call);
        }
        std::cout << calls.size() << " calls, " << runs << " runs, " << failures << " failures\n";
        EXPECT_GT(failures, runs / 4);
    }

    void fail(bool hasFile, const Fault& fault, const SystemCall& call) {
        SCOPED_TRACE(fault.text() + " at " + call.text);
        ++runs;
        const Place place{hasFile};
        const FaultyRun faulty = Strace::runWith(fault, place.call());
        EXPECT_TRUE(faulty.wasInjected);
        place.expectWhole();
        // What cannot be removed, or not be told from the user's, stays.
        const bool mayStay =
            fault.call == "unlink" || (fault.call == "newfstatat" && fault.forEver);
        if (!mayStay) place.expectNothingElse();
        if (faulty.result.status == 0) {
            EXPECT_TRUE(place.isNew());
            EXPECT_EQ(place.backupCount(), hasFile ? 1U : 0U);
            EXPECT_EQ(faulty.result.errors, "");
        } else {
            ++failures;
            EXPECT_EQ(faulty.result.status, 1);
            EXPECT_TRUE(place.isOld());
            place.backupCount();
            const bool canSpeak = fault.call != "write" || !fault.forEver;
            if (canSpeak) expectSaid(faulty.result.errors, fault);
        }
        expectGoodNextRun(place);
    }

    void endAt(bool hasFile, const Fault& fault, const SystemCall& call) {
        SCOPED_TRACE(fault.text() + " at " + call.text);
        ++runs;
        const Place place{hasFile};
        EXPECT_TRUE(Strace::runWith(fault, place.call()).wasInjected);
        place.expectWhole();
        expectGoodNextRun(place);
    }

    static void expectSaid(const std::string& errors, const Fault& fault) {
        EXPECT_TRUE(errors.starts_with("Could not read /") ||
                    errors.starts_with("Could not write /"))
            << errors;
        EXPECT_TRUE(errors.ends_with(": " + reasonOf(fault))) << errors;
    }

    static void expectGoodNextRun(const Place& place) {
        const auto next = run(place.call());
        EXPECT_EQ(next.status, 0) << next.errors;
        EXPECT_TRUE(place.isNew());
    }

    int runs = 0;
    int failures = 0;
};

TEST_F(ConfigFileFaultsTest, noFailingCallHarmsAFileThatIsReplaced) { failEveryCall(true); }

TEST_F(ConfigFileFaultsTest, noFailingCallHarmsAFileThatIsMade) { failEveryCall(false); }

class ConfigFileChangedTest : public ConfigFileFaultsTest {
 protected:
    // Of the call that waits until the new file is on the disk.
    static int waitForDisk(bool hasFile) {
        const auto calls = ownCalls(hasFile);
        const auto created = std::ranges::find_if(calls, [](const SystemCall& call) {
            return call.text.find(".tallowbrook-") != std::string::npos;
        });
        const auto written = std::find_if(
            created, calls.end(), [](const SystemCall& call) { return call.name == "fsync"; });
        if (written != calls.end()) return written->occurrence;
        ADD_FAILURE() << "the program does not wait for the disk";
        return 0;
    }

    // While the program waits for the disk, somebody else writes.
    static ProgramResult runWhileTheUserWrites(const Place& place, int waitForDisk,
                                               std::chrono::microseconds delay) {
        const ChildProcess user{[&]() -> std::string {
            while (true) {
                for (const auto& name : namesIn(place.directory()))
                    if (name.ends_with(".tmp")) {
                        writeContents(place.config(), "the user's");
                        return name;
                    }
                usleep(10'000);
            }
        }};
        const Fault fault{"fsync", waitForDisk, "delay_enter=" + std::to_string(delay.count()),
                          false};
        return Strace::runWith(fault, place.call()).result;
    }
};

TEST_F(ConfigFileChangedTest, aChangeAtTheLastMomentIsNotOverwritten) {
    constexpr int mostTries = 6;
    for (const bool hasFile : {true, false}) {
        const int call = waitForDisk(hasFile);
        bool isRefused = false;
        // On a busy machine the user may come too late; then the program has to wait for longer.
        std::chrono::microseconds delay = std::chrono::seconds{1};
        for (int tries = 0; !isRefused && tries < mostTries; ++tries, delay *= 2) {
            const Place place{hasFile};
            const auto result = runWhileTheUserWrites(place, call, delay);
            if (result.status == 0) continue;
            isRefused = true;
            EXPECT_EQ(result.status, 1);
            EXPECT_EQ(result.errors,
                      ConfigFileError::changedSincePlan(place.config()).description());
            EXPECT_EQ(contentsOf(place.config()), "the user's");
            place.expectNothingElse();
        }
        EXPECT_TRUE(isRefused) << "each time the change was overwritten, or came too late";
    }
}

// Between the last look at the file and the change of names.
TEST_F(ConfigFileChangedTest, aChangeBehindTheLastLookIsPutBack) {
    for (const bool hasFile : {true, false}) {
        const auto calls = ownCalls(hasFile);
        const auto last = std::find_if(calls.rbegin(), calls.rend(), [](const SystemCall& call) {
            return call.name.starts_with("rename");
        });
        ASSERT_NE(last, calls.rend());
        const Place place{hasFile};
        const ChildProcess user{[&]() -> std::string {
            const auto isMade = [](const std::string& name) {
                return name.find(".tallowbrook-") != std::string::npos;
            };
            while (std::ranges::none_of(namesIn(place.directory()), isMade)) usleep(1000);
            usleep(300'000);
            writeContents(place.config(), "the user's");
            return "written";
        }};
        const Fault fault{last->name, last->occurrence, "delay_enter=1500000", false};
        const auto result = Strace::runWith(fault, place.call()).result;
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.errors, ConfigFileError::changedSincePlan(place.config()).description());
        EXPECT_EQ(contentsOf(place.config()), "the user's");
        place.expectNothingElse();
    }
}

TEST_F(ConfigFileFaultsTest, aNewDirectoryIsOnTheDiskBeforeTheFileIsReplaced) {
    const Place place{true};
    std::string earlier;
    for (const auto& call : Strace::callsOf(place.call())) {
        if (call.name.starts_with("rename")) break;
        earlier += call.text + "\n";
    }
    const auto backups = place.backups();
    for (const auto& parent : {backups, backups.parent_path(), backups.parent_path().parent_path()})
        EXPECT_NE(earlier.find('"' + parent.string() + "\", O_RDONLY|O_CLOEXEC|O_DIRECTORY)"),
                  std::string::npos)
            << parent << " was not written before:\n"
            << earlier;
}

class ConfigFileOnFullDiskTest : public ConfigFileTest {
 protected:
    static constexpr std::size_t page = 4096;  // what such a disk gives a file at a time

    void SetUp() override {
        if (const auto reason = SmallDisk::reasonToSkip()) GTEST_SKIP() << *reason;
    }
};

TEST_F(ConfigFileOnFullDiskTest, keepsTheOldFileWhereTheNewOneHasNoRoom) {
    const SmallDisk disk{directory, 3 * page};
    writeContents(config, "old");
    const std::string large(2 * page, 'x');
    EXPECT_EQ(applied(planTo(large + "x")),
              "Could not write " + config.string() + ": " + tallowbrook::reasonOf(ENOSPC));
    EXPECT_EQ(contentsOf(config), "old");
    EXPECT_EQ(namesIn(directory), Names{"settings.json"});
    EXPECT_EQ(applied(planTo(large)), "") << "just enough room";
    EXPECT_EQ(contentsOf(config), large);
}

TEST_F(ConfigFileOnFullDiskTest, keepsTheOldFileWhereItsBackupHasNoRoom) {
    const SmallDisk disk{backups, page};
    writeContents(backups / "other", std::string(page, 'x'));
    writeContents(config, "old");
    EXPECT_TRUE(applied(planTo("new")).ends_with(".bak: " + tallowbrook::reasonOf(ENOSPC)));
    EXPECT_EQ(contentsOf(config), "old");
    EXPECT_EQ(namesIn(directory), Names{"settings.json"});
    EXPECT_EQ(namesIn(backups), Names{"other"});
}

}  // namespace
}  // namespace tallowbrook
