#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <vector>

#include "EventBridge/SpoolFileName.h"
#include "EventBridge/SpoolWriter.h"
#include "Support/FileContents.h"
#include "Support/Outcome.h"
#include "Support/SampleEvents.h"
#include "Support/TemporaryDirectory.h"

namespace tallowbrook {
namespace {

namespace fs = std::filesystem;
using SpoolFileName::Prefix;

// The active file's length as `rotateIfNeeded` tells it, or the error's code.
std::string lengthAfter(std::int64_t adding, const SpoolWriter& writer) {
    const auto length = writer.rotateIfNeeded(adding);
    if (!length) return outcomeOf(length);
    return *length ? std::to_string(**length) : "unknown";
}

class SpoolRotationTest : public testing::Test {
 protected:
    SpoolRotationTest() { fs::create_directories(paths.spoolDirectory()); }

    std::vector<SpoolFileName::Entry> segments() const {
        return SpoolFileName::pendingFiles(paths.spoolDirectory());
    }

    void makeSegment(const std::string& name) const {
        writeContents(paths.spoolDirectory() / name, name);
    }

    std::uintmax_t activeSize() const {
        return fs::exists(paths.activeSpoolFile()) ? fs::file_size(paths.activeSpoolFile()) : 0;
    }

    TemporaryDirectory temporary;
    TallowbrookPaths paths{temporary.path};
    SpoolWriter writer{paths, {}};
};

TEST_F(SpoolRotationTest, anAppendFillsTheActiveFileToItsCap) {
    const std::string line = EventCoding::encodeLine(fullEvent());
    writeZeros(paths.activeSpoolFile(), 2097152 - line.size());
    EXPECT_EQ(outcomeOf(writer.append(fullEvent())), "ok");
    EXPECT_EQ(activeSize(), 2097152U);
    EXPECT_TRUE(segments().empty());

    EXPECT_EQ(outcomeOf(writer.append(fullEvent())), "ok");
    EXPECT_EQ(contentsOf(paths.activeSpoolFile()), line);
    ASSERT_EQ(segments().size(), 1U);
    EXPECT_EQ(fs::file_size(segments()[0].url), 2097152U);
}

TEST_F(SpoolRotationTest, anAppendThatWouldPassTheCapByOneByteRotatesFirst) {
    const std::string line = EventCoding::encodeLine(fullEvent());
    writeZeros(paths.activeSpoolFile(), 2097152 - line.size() + 1);
    EXPECT_EQ(outcomeOf(writer.append(fullEvent())), "ok");
    EXPECT_EQ(contentsOf(paths.activeSpoolFile()), line);
    ASSERT_EQ(segments().size(), 1U);
    EXPECT_EQ(fs::file_size(segments()[0].url), 2097152 - line.size() + 1);
}

TEST_F(SpoolRotationTest, nothingIsMovedWithoutAnActiveFile) {
    EXPECT_EQ(lengthAfter(10'000'000, writer), "0");
    EXPECT_TRUE(segments().empty());
    EXPECT_EQ(lengthAfter(10'000'000, SpoolWriter{{"/dev/null"}, {}}), "unknown");
}

TEST_F(SpoolRotationTest, theEightNewestSegmentsAreKept) {
    struct Row {
        int oldest;
        int newest;
        int kept;  // the oldest that is left
    };
    writer.configuration.maxActiveFileBytes = 3;
    // By time, not by name: 10 comes after 9.
    for (const auto& [oldest, newest, kept] : {Row{1, 7, 1}, Row{3, 10, 4}, Row{1, 30, 24}}) {
        for (const auto& segment : segments()) fs::remove(segment.url);
        for (int i = oldest; i <= newest; ++i)
            makeSegment("overflow-" + std::to_string(i) + "-1-1.jsonl");
        writeContents(paths.activeSpoolFile(), "new");
        const auto before = currentInstant().time_since_epoch().count();
        ASSERT_EQ(lengthAfter(1, writer), "0");
        const auto left = segments();
        ASSERT_EQ(left.size(), 8U);
        EXPECT_EQ(left[0].micros, kept);
        EXPECT_EQ(left[6].micros, newest);
        EXPECT_EQ(contentsOf(left[7].url), "new");
        EXPECT_GE(left[7].micros, before);
        EXPECT_LE(left[7].micros, currentInstant().time_since_epoch().count());
    }
}

TEST_F(SpoolRotationTest, theOldestGoesAlsoAfterTheClockWasSetBack) {
    const auto later = (currentInstant() + std::chrono::days{1}).time_since_epoch().count();
    for (int i = 1; i <= 8; ++i)
        makeSegment("overflow-" + std::to_string(later + i) + "-1-1.jsonl");
    writer.configuration.maxActiveFileBytes = 3;
    for (const std::string contents : {"new", "two", "six"}) {
        writeContents(paths.activeSpoolFile(), contents);
        ASSERT_EQ(lengthAfter(1, writer), "0");
        const auto left = segments();
        ASSERT_EQ(left.size(), 8U);
        EXPECT_EQ(contentsOf(left[7].url), contents);
    }
    EXPECT_EQ(segments()[0].micros, later + 4);
}

TEST_F(SpoolRotationTest, nothingIsDeletedWithoutARotation) {
    for (int i = 1; i <= 30; ++i) makeSegment("overflow-" + std::to_string(i) + "-1-1.jsonl");
    EXPECT_EQ(outcomeOf(writer.append(minimalEvent())), "ok");
    EXPECT_EQ(segments().size(), 30U);
}

TEST_F(SpoolRotationTest, ingestSegmentsAndOtherFilesAreNeverDeleted) {
    for (int i = 1; i <= 20; ++i) makeSegment("ingest-" + std::to_string(i) + "-1-1.jsonl");
    for (int i = 1; i <= 8; ++i) makeSegment("overflow-" + std::to_string(i) + "-1-1.jsonl");
    makeSegment("notes.jsonl");
    makeSegment("overflow-abc-1-2.jsonl");
    writeContents(paths.activeSpoolFile(), "new");
    writer.configuration.maxActiveFileBytes = 3;
    ASSERT_EQ(lengthAfter(1, writer), "0");

    const auto left = segments();
    EXPECT_EQ(std::ranges::count(left, Prefix::ingest, &SpoolFileName::Entry::prefix), 20);
    EXPECT_EQ(std::ranges::count(left, Prefix::overflow, &SpoolFileName::Entry::prefix), 8);
    EXPECT_FALSE(fs::exists(paths.spoolDirectory() / "overflow-1-1-1.jsonl"));
    EXPECT_TRUE(fs::exists(paths.spoolDirectory() / "notes.jsonl"));
    EXPECT_TRUE(fs::exists(paths.spoolDirectory() / "overflow-abc-1-2.jsonl"));
}

TEST_F(SpoolRotationTest, aSegmentThatCannotBeDeletedDoesNotFailTheAppend) {
    for (int i = 1; i <= 9; ++i)
        fs::create_directory(paths.spoolDirectory() /
                             ("overflow-" + std::to_string(i) + "-1-1.jsonl"));
    writeZeros(paths.activeSpoolFile(), 2097152);
    EXPECT_EQ(outcomeOf(writer.append(minimalEvent())), "ok");
    EXPECT_EQ(contentsOf(paths.activeSpoolFile()), EventCoding::encodeLine(minimalEvent()));
    EXPECT_EQ(segments().size(), 10U);
}

}  // namespace
}  // namespace tallowbrook
