#include <gtest/gtest.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "EventBridge/SpoolSignal.h"
#include "Support/ChildProcess.h"
#include "Support/EnvironmentVariable.h"
#include "Support/FileContents.h"
#include "Support/FileModeMask.h"
#include "Support/TemporaryDirectory.h"

namespace tallowbrook {
namespace {

namespace fs = std::filesystem;

constexpr const char* signalName = "com.tallowbrook.spool.changed";

// Whether the observer's descriptor becomes readable before long.
bool isWoken(const SpoolSignal::Observer& observer, int milliseconds = 10'000) {
    pollfd descriptor{observer.fileDescriptor(), POLLIN, 0};
    return poll(&descriptor, 1, milliseconds) == 1 && (descriptor.revents & POLLIN) != 0;
}

bool isQuiet(const SpoolSignal::Observer& observer) { return !isWoken(observer, 0); }

class SpoolSignalLinuxTest : public testing::Test {
 protected:
    // An observer that has to start.
    static SpoolSignal::Observer start() {
        auto observer = SpoolSignal::Observer::start();
        EXPECT_TRUE(observer) << observer.error().description();
        return std::move(observer).value();
    }

    TemporaryDirectory temporary;
    fs::path directory = temporary.path / "runtime";
    fs::path file = directory / signalName;
    EnvironmentVariable runtime{"XDG_RUNTIME_DIR", directory};
    bool made = fs::create_directory(directory);
};

TEST_F(SpoolSignalLinuxTest, aPostWakesTheObserverOnce) {
    auto observer = start();
    EXPECT_TRUE(isQuiet(observer));
    EXPECT_FALSE(observer.consume());
    for (int round = 0; round < 3; ++round) {
        SpoolSignal::post();
        EXPECT_TRUE(isWoken(observer));
        EXPECT_TRUE(observer.consume());
        EXPECT_TRUE(isQuiet(observer));
        EXPECT_FALSE(observer.consume());
    }
}

TEST_F(SpoolSignalLinuxTest, thePosterCreatesTheFileForItsUserAlone) {
    const FileModeMask masked{0};
    SpoolSignal::post();
    EXPECT_EQ(modeOf(file.c_str()), mode_t{0600});
    EXPECT_EQ(fs::file_size(file), 0U);
    SpoolSignal::post();
    EXPECT_EQ(fs::file_size(file), 0U);
    EXPECT_EQ(std::distance(fs::directory_iterator{directory}, {}), 1);
}

TEST_F(SpoolSignalLinuxTest, aPostIsNotLostWhereMoreHappensThanTheSystemKeeps) {
    int kept = 0;
    std::ifstream{"/proc/sys/fs/inotify/max_queued_events"} >> kept;
    if (kept <= 0 || kept > 200'000) GTEST_SKIP() << "the system keeps " << kept << " events";
    auto observer = start();
    // Two files in turn, or the system would merge equal events.
    const std::array others{directory / "other", directory / "another"};
    for (const auto& other : others) writeContents(other, "");
    for (int i = 0; i < kept; ++i)
        fs::permissions(others[static_cast<std::size_t>(i % 2)], fs::perms::owner_all);
    SpoolSignal::post();
    EXPECT_TRUE(isWoken(observer));
    EXPECT_TRUE(observer.consume()) << "what was dropped may have been a post";
    EXPECT_FALSE(observer.consume());
    SpoolSignal::post();
    EXPECT_TRUE(isWoken(observer));
    EXPECT_TRUE(observer.consume());
}

TEST_F(SpoolSignalLinuxTest, otherFilesAreNoPost) {
    auto observer = start();
    writeContents(directory / "bus", "x");
    writeContents(directory / (std::string{signalName} + ".1"), "x");
    writeContents(directory / "com.tallowbrook.spool.change", "x");
    fs::create_directory(directory / "dconf");
    fs::rename(directory / "bus", directory / "bus2");
    fs::remove(directory / "bus2");
    EXPECT_FALSE(observer.consume());
    EXPECT_TRUE(isQuiet(observer));
}

TEST_F(SpoolSignalLinuxTest, theObserverSurvivesTheDeletionOfTheFile) {
    auto observer = start();
    for (int round = 0; round < 2; ++round) {
        SpoolSignal::post();
        EXPECT_TRUE(observer.consume());
        EXPECT_TRUE(fs::remove(file));
        observer.consume();
        EXPECT_TRUE(isQuiet(observer));
        SpoolSignal::post();
        EXPECT_TRUE(isWoken(observer)) << round;
        EXPECT_TRUE(observer.consume()) << round;
    }
}

TEST_F(SpoolSignalLinuxTest, theObserverSurvivesTheReplacementOfTheDirectory) {
    auto observer = start();
    for (int round = 0; round < 3; ++round) {
        fs::remove_all(directory);
        fs::create_directory(directory);
        SpoolSignal::post();
        EXPECT_TRUE(isWoken(observer)) << "the loss of the directory wakes";
        EXPECT_TRUE(observer.consume()) << "a post may have come before the new watch";
        SpoolSignal::post();
        EXPECT_TRUE(isWoken(observer)) << round;
        EXPECT_TRUE(observer.consume()) << round;
        EXPECT_FALSE(observer.consume()) << round;
    }
}

TEST_F(SpoolSignalLinuxTest, theObserverTakesUpADirectoryThatComesBackLater) {
    auto observer = start();
    fs::remove_all(directory);
    EXPECT_TRUE(isWoken(observer));
    EXPECT_FALSE(observer.consume());
    EXPECT_TRUE(isQuiet(observer)) << "a reader must not spin";
    EXPECT_FALSE(observer.consume());

    fs::create_directory(directory);
    SpoolSignal::post();
    EXPECT_TRUE(observer.consume()) << "as the reader's timer calls it";
    SpoolSignal::post();
    EXPECT_TRUE(isWoken(observer));
    EXPECT_TRUE(observer.consume());
}

TEST_F(SpoolSignalLinuxTest, theObserverTakesUpADirectoryThatComesBackBeforeItsReaderSleeps) {
    auto observer = start();
    fs::remove_all(directory);
    EXPECT_FALSE(observer.consume());
    EXPECT_TRUE(isQuiet(observer));

    fs::create_directory(directory);
    SpoolSignal::post();
    EXPECT_TRUE(isWoken(observer)) << "a post may have come before the new watch";
    EXPECT_TRUE(observer.consume());
    EXPECT_TRUE(isQuiet(observer));
    SpoolSignal::post();
    EXPECT_TRUE(isWoken(observer));
    EXPECT_TRUE(observer.consume());
}

TEST_F(SpoolSignalLinuxTest, theObserverDoesNotGoWithADirectoryThatIsMovedAway) {
    auto observer = start();
    for (int round = 0; round < 2; ++round) {
        fs::rename(directory, temporary.path / std::to_string(round));
        fs::create_directory(directory);
        EXPECT_TRUE(isWoken(observer)) << "the loss of the directory wakes";
        EXPECT_TRUE(observer.consume()) << "a post may have come before the new watch";
        SpoolSignal::post();
        EXPECT_TRUE(isWoken(observer)) << round;
        EXPECT_TRUE(observer.consume()) << round;
        writeContents(temporary.path / std::to_string(round) / signalName, "");
        EXPECT_TRUE(isQuiet(observer)) << round;
    }
}

TEST_F(SpoolSignalLinuxTest, aPostWithoutADirectoryIsNothing) {
    fs::remove_all(directory);
    SpoolSignal::post();
    EXPECT_FALSE(fs::exists(directory));
    const auto observer = SpoolSignal::Observer::start();
    ASSERT_FALSE(observer);
    EXPECT_EQ(observer.error(), (FileError{"inotify_add_watch", ENOENT}));
}

TEST_F(SpoolSignalLinuxTest, aPostNeverBlocksOrFollowsALink) {
    const fs::path elsewhere = temporary.path / "elsewhere";
    writeContents(elsewhere, "kept");
    const auto time = fs::last_write_time(elsewhere) - std::chrono::hours{1};
    fs::last_write_time(elsewhere, time);
    fs::create_symlink(elsewhere, file);
    SpoolSignal::post();
    EXPECT_EQ(fs::last_write_time(elsewhere), time);
    EXPECT_EQ(contentsOf(elsewhere), "kept");

    fs::remove(file);
    fs::create_symlink(temporary.path / "missing", file);
    SpoolSignal::post();
    EXPECT_FALSE(fs::exists(temporary.path / "missing"));

    fs::remove(file);
    ASSERT_EQ(mkfifo(file.c_str(), 0600), 0);
    SpoolSignal::post();
    fs::remove(file);
    fs::create_directory(file);
    SpoolSignal::post();
    EXPECT_TRUE(fs::is_directory(file));
}

TEST_F(SpoolSignalLinuxTest, manyProcessesMayPostAtOnce) {
    auto observer = start();
    auto other = start();
    std::vector<std::unique_ptr<ChildProcess>> posters;
    for (int i = 0; i < 8; ++i)
        posters.push_back(std::make_unique<ChildProcess>([]() -> std::string {
            for (int post = 0; post < 100; ++post) SpoolSignal::post();
            return "posted";
        }));
    for (const auto& poster : posters) EXPECT_EQ(poster->result(), "posted");
    EXPECT_TRUE(isWoken(observer));
    EXPECT_TRUE(observer.consume());
    EXPECT_FALSE(observer.consume()) << "all of them arrive as one";
    EXPECT_TRUE(other.consume()) << "every observer hears of it";
}

}  // namespace
}  // namespace tallowbrook
