#include "EventBridge/SpoolWriter.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "EventBridge/SpoolLock.h"
#include "Support/ChildProcess.h"
#include "Support/FileContents.h"
#include "Support/FileModeMask.h"
#include "Support/LockHolder.h"
#include "Support/OrdinaryUser.h"
#include "Support/Outcome.h"
#include "Support/SampleEvents.h"
#include "Support/TemporaryDirectory.h"
#include "System/FileDescriptor.h"

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

TEST_F(SpoolWriterTest, writesToNoPipeWhetherOrNotItIsRead) {
    fs::create_directories(paths.spoolDirectory());
    ASSERT_EQ(mkfifo(paths.activeSpoolFile().c_str(), 0600), 0);
    EXPECT_EQ(inChildProcess([&] { return outcomeOf(writer.append(minimalEvent())); }),
              ioCode("open-spool", ENXIO));
    const FileDescriptor reader{
        open(paths.activeSpoolFile().c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)};
    ASSERT_TRUE(reader.isOpen());
    EXPECT_EQ(outcomeOf(writer.append(minimalEvent())), ioCode("open-spool", EINVAL));
    char byte = 0;
    EXPECT_NE(read(reader.number(), &byte, 1), 1);
}

TEST_F(SpoolWriterTest, writesToNoDirectoryOrDevice) {
    fs::create_directories(paths.activeSpoolFile());
    EXPECT_EQ(outcomeOf(writer.append(minimalEvent())), ioCode("open-spool", EISDIR));
    fs::remove(paths.activeSpoolFile());
    fs::create_symlink("/dev/null", paths.activeSpoolFile());
    EXPECT_EQ(outcomeOf(writer.append(minimalEvent())), ioCode("open-spool", EINVAL));
}

// Makes the file under an umask that takes every bit, and opens it again.
TEST_F(SpoolWriterTest, canGoOnAfterAnyUmask) {
    const auto user = OrdinaryUser::find();
    if (!user) GTEST_SKIP() << OrdinaryUser::missing;
    for (const mode_t mask : {mode_t{0777}, mode_t{0400}, mode_t{0200}}) {
        const TemporaryDirectory owned;
        ASSERT_TRUE(user->own(owned.path));
        writer.paths = {owned.path / "home"};
        const auto outcome = inChildProcess([&]() -> std::string {
            if (!user->become()) return "still another user";
            std::string outcomes;
            for (const mode_t next : {mask, mode_t{022}}) {
                const FileModeMask masked{next};
                outcomes += outcomeOf(writer.append(minimalEvent())) + " ";
            }
            return outcomes;
        });
        EXPECT_EQ(outcome, "ok ok ") << mask;
        EXPECT_EQ(modeOf(writer.paths.activeSpoolFile().c_str()), mode_t{0600});
    }
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
