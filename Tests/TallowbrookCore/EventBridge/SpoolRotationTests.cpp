#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <vector>

#include "EventBridge/SpoolFileName.h"
#include "EventBridge/SpoolLock.h"
#include "EventBridge/SpoolWriter.h"
#include "Support/ChildProcess.h"
#include "Support/FileContents.h"
#include "Support/OrdinaryUser.h"
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

    std::vector<std::string> segmentNames() const {
        std::vector<std::string> names;
        for (const auto& entry : segments()) names.push_back(entry.url.filename());
        return names;
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

TEST_F(SpoolRotationTest, theActiveFileMayReachItsCap) {
    writeZeros(paths.activeSpoolFile(), 2097000);
    EXPECT_EQ(lengthAfter(152, writer), "2097000");
    EXPECT_EQ(activeSize(), 2097000U);
    EXPECT_TRUE(segments().empty());
}

TEST_F(SpoolRotationTest, theActiveFileIsMovedAsideBeforeItWouldPassItsCap) {
    writeZeros(paths.activeSpoolFile(), 2097000);
    EXPECT_EQ(lengthAfter(153, writer), "0");
    EXPECT_FALSE(fs::exists(paths.activeSpoolFile()));
    ASSERT_EQ(segments().size(), 1U);
    EXPECT_EQ(segments()[0].prefix, Prefix::overflow);
    EXPECT_EQ(fs::file_size(segments()[0].url), 2097000U);
}

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

TEST_F(SpoolRotationTest, theSegmentIsNamedAfterTheTimeOfRotation) {
    writeContents(paths.activeSpoolFile(), "line\n");
    writer.configuration.maxActiveFileBytes = 5;
    const auto before = currentInstant().time_since_epoch().count();
    ASSERT_EQ(lengthAfter(1, writer), "0");
    const auto after = currentInstant().time_since_epoch().count();
    ASSERT_EQ(segments().size(), 1U);
    EXPECT_GE(segments()[0].micros, before);
    EXPECT_LE(segments()[0].micros, after);
    EXPECT_EQ(contentsOf(segments()[0].url), "line\n");
}

TEST_F(SpoolRotationTest, eightSegmentsAreKept) {
    for (int i = 1; i <= 7; ++i) makeSegment("overflow-" + std::to_string(i) + "-1-1.jsonl");
    writeContents(paths.activeSpoolFile(), "new");
    writer.configuration.maxActiveFileBytes = 3;
    ASSERT_EQ(lengthAfter(1, writer), "0");
    EXPECT_EQ(segments().size(), 8U) << "the eighth has room";
    EXPECT_EQ(segmentNames()[0], "overflow-1-1-1.jsonl");
}

TEST_F(SpoolRotationTest, theOldestSegmentMakesRoomForTheNinth) {
    // By time, not by name: 10 comes after 9.
    for (int i = 3; i <= 10; ++i) makeSegment("overflow-" + std::to_string(i) + "-1-1.jsonl");
    writeContents(paths.activeSpoolFile(), "new");
    writer.configuration.maxActiveFileBytes = 3;
    ASSERT_EQ(lengthAfter(1, writer), "0");
    ASSERT_EQ(segments().size(), 8U);
    EXPECT_EQ(segmentNames()[0], "overflow-4-1-1.jsonl");
    EXPECT_EQ(segmentNames()[6], "overflow-10-1-1.jsonl");
    EXPECT_EQ(contentsOf(segments()[7].url), "new");
}

TEST_F(SpoolRotationTest, manySegmentsTooManyGoAtOnce) {
    for (int i = 1; i <= 30; ++i) makeSegment("overflow-" + std::to_string(i) + "-1-1.jsonl");
    writeContents(paths.activeSpoolFile(), "new");
    writer.configuration.maxActiveFileBytes = 3;
    ASSERT_EQ(lengthAfter(1, writer), "0");
    ASSERT_EQ(segments().size(), 8U);
    EXPECT_EQ(segmentNames()[0], "overflow-24-1-1.jsonl");
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

TEST_F(SpoolRotationTest, aFileOfAnySizeIsMovedAsideWhole) {
    writeZeros(paths.activeSpoolFile(), 5'000'000'000);
    EXPECT_EQ(outcomeOf(writer.append(minimalEvent())), "ok");
    ASSERT_EQ(segments().size(), 1U);
    EXPECT_EQ(fs::file_size(segments()[0].url), 5'000'000'000U);
}

TEST_F(SpoolRotationTest, aFailedRenameLeavesEverythingAsItWas) {
    const auto user = OrdinaryUser::find();
    if (!user) GTEST_SKIP() << OrdinaryUser::missing;
    writeContents(paths.activeSpoolFile(), "old\n");
    writeContents(paths.spoolLockFile(), "");
    for (int i = 1; i <= 9; ++i) makeSegment("overflow-" + std::to_string(i) + "-1-1.jsonl");
    for (const auto& path :
         {paths.home, paths.spoolDirectory(), paths.activeSpoolFile(), paths.spoolLockFile()})
        ASSERT_TRUE(user->own(path));
    writer.configuration.maxActiveFileBytes = 4;
    chmod(paths.spoolDirectory().c_str(), 0500);
    EXPECT_EQ(inChildProcess([&] {
                  return user->become() ? outcomeOf(writer.append(minimalEvent())) : "same user";
              }),
              ioCode("rotate", EACCES));
    chmod(paths.spoolDirectory().c_str(), 0700);
    EXPECT_EQ(contentsOf(paths.activeSpoolFile()), "old\n");
    EXPECT_EQ(segments().size(), 9U);
    EXPECT_EQ(outcomeOf(SpoolLock::acquire(paths, Seconds{0})), "ok");
}

}  // namespace
}  // namespace tallowbrook
