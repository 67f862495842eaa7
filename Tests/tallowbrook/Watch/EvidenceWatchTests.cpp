#include "Watch/EvidenceWatch.h"

#include <gtest/gtest.h>
#include <poll.h>

#include <fstream>

#include "Support/ChildProcess.h"
#include "Support/TemporaryDirectory.h"
#include "Watch/ProcessStart.h"

namespace tallowbrook::host {
namespace {

struct WatchedEvidence : testing::Test {
    TemporaryDirectory directory;
    EvidenceWatch watch = std::move(*EvidenceWatch::start());
    NotePlace place{directory.path, "note"};

    void write(const std::string& name, const std::string& text = "text") const {
        std::ofstream{directory.path / name} << text;
    }

    // Whether something watched has happened, or nothing comes within a moment.
    bool hears() {
        pollfd readable{watch.fileDescriptor(), POLLIN, 0};
        while (poll(&readable, 1, 100) > 0)
            if (watch.consume()) return true;
        return false;
    }
    void beQuiet() {
        while (hears()) continue;
    }
};

TEST_F(WatchedEvidence, wakesWhenANoteIsWritten) {
    write("note.json");
    EXPECT_TRUE(watch.watch({place}, {})) << "newly watched";
    EXPECT_FALSE(watch.watch({place}, {}));
    EXPECT_FALSE(hears());
    write("note.json", "other");
    EXPECT_TRUE(hears());
    beQuiet();
    std::filesystem::remove(directory.path / "note.json");
    EXPECT_TRUE(hears());
}

TEST_F(WatchedEvidence, wakesWhenAProcessEnds) {
    ChildProcess agent{[] {
        pause();
        return std::string{};
    }};
    const ProcessIdentity identity{agent.pid, *processStart(agent.pid)};
    EXPECT_TRUE(watch.watch({}, {identity}));
    EXPECT_FALSE(watch.watch({}, {identity}));
    EXPECT_FALSE(hears());
    agent.kill();
    EXPECT_TRUE(hears());
    EXPECT_FALSE(hears()) << "once";
}

TEST_F(WatchedEvidence, saysThatAProcessMayHaveEndedJustBefore) {
    ChildProcess agent{[] { return std::string{}; }};
    const ProcessIdentity ended{agent.pid, 1};
    agent.result();
    EXPECT_TRUE(watch.watch({}, {ended}));
    EXPECT_FALSE(hears());
}

TEST_F(WatchedEvidence, isQuietAboutWhatIsNotWatchedAnyMore) {
    watch.watch({place}, {{getpid(), *processStart(getpid())}});
    beQuiet();
    watch.watch({}, {});
    write("note.json");
    EXPECT_FALSE(hears());
}

TEST_F(WatchedEvidence, mayBeMissing) {
    const NotePlace missing{directory.path / "later", ""};
    EXPECT_FALSE(watch.watch({missing}, {}));
    std::filesystem::create_directory(missing.directory);
    EXPECT_TRUE(watch.watch({missing}, {}));
    std::ofstream{missing.directory / "x"} << "text";
    EXPECT_TRUE(hears());
    beQuiet();
    std::filesystem::remove_all(missing.directory);
    EXPECT_TRUE(hears());
    EXPECT_FALSE(watch.watch({missing}, {}));
}

}  // namespace
}  // namespace tallowbrook::host
