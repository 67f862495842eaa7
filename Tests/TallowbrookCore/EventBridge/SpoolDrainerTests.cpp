#include "EventBridge/SpoolDrainer.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <vector>

#include "EventBridge/SpoolFileName.h"
#include "EventBridge/SpoolWriter.h"
#include "Support/FileContents.h"
#include "Support/FileModeMask.h"
#include "Support/LockHolder.h"
#include "Support/Outcome.h"
#include "Support/SampleEvents.h"
#include "Support/TemporaryDirectory.h"

namespace tallowbrook {
namespace {

namespace fs = std::filesystem;

class SpoolDrainerTest : public testing::Test {
 protected:
    fs::path segment(const std::string& name) const { return paths.spoolDirectory() / name; }

    // The segments that a successful claim gives.
    std::vector<fs::path> claim() const {
        const auto files = drainer.claimPendingFiles();
        EXPECT_EQ(outcomeOf(files), "ok");
        return files.value_or(std::vector<fs::path>{});
    }

    TemporaryDirectory temporary;
    TallowbrookPaths paths{temporary.path / "home"};
    SpoolWriter writer{paths, {}};
    SpoolDrainer drainer{paths, Seconds{0}};
    std::string line = EventCoding::encodeLine(minimalEvent());
};

TEST_F(SpoolDrainerTest, createsAMissingSpoolAndFindsNothing) {
    EXPECT_EQ(drainer.pendingSegmentCount(), 0);
    EXPECT_FALSE(fs::exists(paths.home));
    EXPECT_EQ(claim(), std::vector<fs::path>{});
    EXPECT_EQ(modeOf(paths.spoolDirectory().c_str()), mode_t{0700});
    EXPECT_EQ(drainer.pendingSegmentCount(), 0);
}

TEST_F(SpoolDrainerTest, claimsTheActiveFile) {
    ASSERT_EQ(outcomeOf(writer.append(minimalEvent())), "ok");
    ASSERT_EQ(outcomeOf(writer.append(fullEvent())), "ok");
    EXPECT_EQ(drainer.pendingSegmentCount(), 1);
    const auto files = claim();
    ASSERT_EQ(files.size(), 1U);
    EXPECT_FALSE(fs::exists(paths.activeSpoolFile()));
    EXPECT_EQ(contentsOf(files[0]), line + EventCoding::encodeLine(fullEvent()));

    const auto entries = SpoolFileName::pendingFiles(paths.spoolDirectory());
    ASSERT_EQ(entries.size(), 1U);
    EXPECT_EQ(entries[0].url, files[0]);
    EXPECT_EQ(entries[0].prefix, SpoolFileName::Prefix::ingest);
}

TEST_F(SpoolDrainerTest, doesNotClaimAnEmptyActiveFile) {
    writeContents(paths.activeSpoolFile(), "");
    EXPECT_EQ(drainer.pendingSegmentCount(), 0);
    EXPECT_EQ(claim(), std::vector<fs::path>{});
    EXPECT_TRUE(fs::exists(paths.activeSpoolFile()));

    writeContents(paths.activeSpoolFile(), "x");
    EXPECT_EQ(drainer.pendingSegmentCount(), 1);
    EXPECT_EQ(claim().size(), 1U);
}

TEST_F(SpoolDrainerTest, givesAllSegmentsOldestFirst) {
    const std::vector<fs::path> expected{
        segment("ingest-4-1-1.jsonl"),
        segment("overflow-5-1-1.jsonl"),
        segment("ingest-5-1-1.jsonl"),
        segment("overflow-10-1-1.jsonl"),
    };
    for (std::size_t i = expected.size(); i-- > 0;) writeContents(expected[i], line);
    writeContents(segment("notes.jsonl"), line);
    EXPECT_EQ(drainer.pendingSegmentCount(), 4);
    EXPECT_EQ(claim(), expected);

    ASSERT_EQ(outcomeOf(writer.append(minimalEvent())), "ok");
    EXPECT_EQ(drainer.pendingSegmentCount(), 5);
    const auto files = claim();
    ASSERT_EQ(files.size(), 5U);
    EXPECT_EQ((std::vector<fs::path>{files.begin(), files.end() - 1}), expected);
    EXPECT_EQ(claim(), files) << "what was not removed is delivered again";
}

TEST_F(SpoolDrainerTest, renamesNothingWithoutTheLock) {
    ASSERT_EQ(outcomeOf(writer.append(minimalEvent())), "ok");
    LockHolder holder{paths.spoolLockFile()};
    ASSERT_TRUE(holder.holds);
    EXPECT_EQ(outcomeOf(drainer.claimPendingFiles()), "lock-timeout");
    drainer.lockTimeout = Seconds{0.05};
    EXPECT_EQ(outcomeOf(drainer.claimPendingFiles()), "lock-timeout");
    EXPECT_EQ(contentsOf(paths.activeSpoolFile()), line);
    EXPECT_EQ(drainer.pendingSegmentCount(), 1) << "takes no lock";

    drainer.lockTimeout = Seconds{60};
    holder.releaseSoon();
    EXPECT_EQ(claim().size(), 1U);
}

TEST_F(SpoolDrainerTest, saysWhenTheActiveFileCannotBeLookedAt) {
    fs::create_directories(paths.spoolDirectory());
    fs::create_symlink(paths.activeSpoolFile().filename(), paths.activeSpoolFile());
    EXPECT_EQ(outcomeOf(drainer.claimPendingFiles()), ioCode("claim", ELOOP));
}

TEST_F(SpoolDrainerTest, saysWhenTheSpoolCannotBeMadeOrLocked) {
    writeContents(paths.home, "a file");
    EXPECT_EQ(outcomeOf(drainer.claimPendingFiles()), "stat-errno" + std::to_string(ENOTDIR));
    fs::remove(paths.home);
    fs::create_directories(paths.spoolLockFile());
    writeContents(paths.activeSpoolFile(), line);
    EXPECT_EQ(outcomeOf(drainer.claimPendingFiles()), ioCode("open-lock", EISDIR));
    EXPECT_EQ(contentsOf(paths.activeSpoolFile()), line);
}

TEST_F(SpoolDrainerTest, removesASegmentAndIgnoresOneThatIsGone) {
    ASSERT_EQ(outcomeOf(writer.append(minimalEvent())), "ok");
    const auto files = claim();
    ASSERT_EQ(files.size(), 1U);
    SpoolDrainer::remove(files[0]);
    EXPECT_FALSE(fs::exists(files[0]));
    SpoolDrainer::remove(files[0]);
    SpoolDrainer::remove(paths.spoolDirectory());
    EXPECT_TRUE(fs::exists(paths.spoolDirectory()));
    EXPECT_EQ(drainer.pendingSegmentCount(), 0);
}

TEST_F(SpoolDrainerTest, countsWhatIsNoEventAndPassesItOver) {
    const std::string bare = line.substr(0, line.size() - 1);
    struct Row {
        const char* why;
        std::string contents;
        std::size_t events;
        std::int64_t invalid;
    };
    for (const auto& [why, contents, events, invalid] : {
             Row{"no line feed at the end", line + bare, 2, 0},
             Row{"only line feeds", "\n\n\n", 0, 0},
             Row{"garbage among blank lines", line + "\ngarbage\n\n" + line, 2, 1},
             Row{"a torn line and the event behind it", "{\"adapter" + line + line, 1, 1},
             Row{"a line of blanks is no empty one", " \n" + line, 1, 1},
             Row{"line ends of another system", bare + "\r\n" + bare + "\r\n", 2, 0},
             Row{"a carriage return alone is no empty line", "\r\n" + line, 1, 1},
             Row{"other records", "{}\n[]\nnull\n1\n\"text\"\n" + line, 1, 5},
         }) {
        const fs::path file = segment("ingest-1-1-1.jsonl");
        writeContents(file, contents);
        const auto result = SpoolDrainer::readEvents(file);
        ASSERT_TRUE(result) << why;
        EXPECT_EQ(result->events, std::vector(events, minimalEvent())) << why;
        EXPECT_EQ(result->invalidLineCount, invalid) << why;
    }
}

TEST_F(SpoolDrainerTest, handsEachEventOverWithItsLine) {
    const std::string other = R"({"later":1, )" + line.substr(1, line.size() - 2);
    writeContents(segment("ingest-1-1-1.jsonl"), "garbage\n" + other + "\n\n" + line);
    std::vector<AgentEvent> events;
    std::vector<std::string> lines;
    EXPECT_EQ(SpoolDrainer::forEachEvent(segment("ingest-1-1-1.jsonl"),
                                         [&](AgentEvent&& event, std::string_view read) {
                                             events.push_back(std::move(event));
                                             lines.emplace_back(read);
                                         }),
              1);
    EXPECT_EQ(events, std::vector(2, minimalEvent()));
    EXPECT_EQ(lines, (std::vector{other, line.substr(0, line.size() - 1)}));
}

TEST_F(SpoolDrainerTest, keepsASegmentThatCannotBeRead) {
    const fs::path directory = segment("overflow-1-1-1.jsonl");
    fs::create_directories(directory);
    const auto files = claim();
    EXPECT_EQ(files, std::vector{directory});
    EXPECT_EQ(outcomeOf(SpoolDrainer::readEvents(directory)),
              "read-errno" + std::to_string(EISDIR));
    EXPECT_TRUE(fs::exists(directory));
    EXPECT_EQ(outcomeOf(SpoolDrainer::readEvents(segment("missing"))),
              "open-errno" + std::to_string(ENOENT));
}

}  // namespace
}  // namespace tallowbrook
