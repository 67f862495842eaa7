#include "EventBridge/SpoolWriter.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <string>

#include "EventBridge/SpoolLock.h"
#include "Support/FileContents.h"
#include "Support/FileModeMask.h"
#include "Support/LockHolder.h"
#include "Support/Outcome.h"
#include "Support/SampleEvents.h"
#include "Support/TemporaryDirectory.h"

namespace tallowbrook {
namespace {

namespace fs = std::filesystem;

class SpoolWriterTest : public testing::Test {
 protected:
    TemporaryDirectory temporary;
    TallowbrookPaths paths{temporary.path / "home"};
    SpoolWriter writer{paths, {}};
};

TEST_F(SpoolWriterTest, addsEachEventAsOneLineAtTheEnd) {
    std::string expected;
    for (int i = 0; i < 5; ++i) {
        AgentEvent event = minimalEvent();
        event.sessionID = std::to_string(i);
        EXPECT_EQ(outcomeOf(writer.append(event)), "ok");
        expected += EventCoding::encodeLine(event);
    }
    EXPECT_EQ(contentsOf(paths.activeSpoolFile()), expected);
}

TEST_F(SpoolWriterTest, keepsTheModeOfAnExistingFile) {
    writeContents(paths.activeSpoolFile(), "");
    chmod(paths.activeSpoolFile().c_str(), 0640);
    EXPECT_EQ(outcomeOf(writer.append(minimalEvent())), "ok");
    EXPECT_EQ(modeOf(paths.activeSpoolFile().c_str()), mode_t{0640});
}

TEST_F(SpoolWriterTest, takesLinesUpToItsLimit) {
    const AgentEvent longest = eventWithLineOf(16384);
    ASSERT_EQ(EventCoding::encodeLine(longest).size(), 16384U);
    EXPECT_EQ(outcomeOf(writer.append(longest)), "ok");
    EXPECT_EQ(fs::file_size(paths.activeSpoolFile()), 16384U);
    EXPECT_EQ(outcomeOf(writer.append(eventWithLineOf(16385))), "line-too-large(16385)");
    EXPECT_EQ(fs::file_size(paths.activeSpoolFile()), 16384U);
}

TEST_F(SpoolWriterTest, touchesNothingForALineThatIsTooLarge) {
    EXPECT_EQ(outcomeOf(writer.append(eventWithLineOf(100'000))), "line-too-large(100000)");
    EXPECT_FALSE(fs::exists(paths.home));
}

TEST_F(SpoolWriterTest, givesUpWhenAnotherProcessHoldsTheLockTooLong) {
    ASSERT_EQ(outcomeOf(writer.append(minimalEvent())), "ok");
    const std::string before = contentsOf(paths.activeSpoolFile());
    const LockHolder holder{paths.spoolLockFile()};
    ASSERT_TRUE(holder.holds);
    EXPECT_EQ(outcomeOf(writer.append(fullEvent())), "lock-timeout");
    EXPECT_EQ(contentsOf(paths.activeSpoolFile()), before);
}

TEST_F(SpoolWriterTest, waitsForALockThatIsGivenBack) {
    fs::create_directories(paths.spoolDirectory());
    LockHolder holder{paths.spoolLockFile()};
    ASSERT_TRUE(holder.holds);
    holder.releaseSoon();
    writer.configuration.lockTimeout = Seconds{60};
    EXPECT_EQ(outcomeOf(writer.append(minimalEvent())), "ok");
    EXPECT_EQ(contentsOf(paths.activeSpoolFile()), EventCoding::encodeLine(minimalEvent()));
}

TEST(AppendBytes, addToAFileOrMakeIt) {
    const TemporaryDirectory temporary;
    const FileModeMask masked{0};
    const fs::path file = temporary.path / "file";
    EXPECT_EQ(outcomeOf(SpoolWriter::appendBytes("one\n", file)), "ok");
    EXPECT_EQ(modeOf(file.c_str()), mode_t{0600});
    chmod(file.c_str(), 0644);
    EXPECT_EQ(outcomeOf(SpoolWriter::appendBytes("two", file)), "ok");
    EXPECT_EQ(outcomeOf(SpoolWriter::appendBytes("", file)), "ok");
    EXPECT_EQ(contentsOf(file), "one\ntwo");
    EXPECT_EQ(modeOf(file.c_str()), mode_t{0644});
}

}  // namespace
}  // namespace tallowbrook
