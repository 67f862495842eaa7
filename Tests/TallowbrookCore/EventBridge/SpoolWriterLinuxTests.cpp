#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <string>

#include "EventBridge/SpoolDrainer.h"
#include "EventBridge/SpoolWriter.h"
#include "Support/ChildProcess.h"
#include "Support/FailingSystemCallLinux.h"
#include "Support/FileContents.h"
#include "Support/Outcome.h"
#include "Support/SampleEvents.h"
#include "Support/TemporaryDirectory.h"

namespace tallowbrook {
namespace {

namespace fs = std::filesystem;

class SpoolWriterLinuxTest : public testing::Test {
 protected:
    TemporaryDirectory temporary;
    TallowbrookPaths paths{temporary.path};
    SpoolWriter writer{paths, {}};
};

TEST_F(SpoolWriterLinuxTest, saysWhyARotationFailedAndWritesNothing) {
    writeContents(paths.activeSpoolFile(), "old\n");
    writer.configuration.maxActiveFileBytes = 4;
    for (const int errorNumber : {EIO, EROFS}) {
        const auto seen = inChildProcess([&]() -> std::string {
            if (!failSystemCalls(renameCalls(), errorNumber)) return noFilter;
            return outcomeOf(writer.append(minimalEvent()));
        });
        if (seen == noFilter) GTEST_SKIP() << *seen;
        EXPECT_EQ(seen, ioCode("rotate", errorNumber));
        EXPECT_EQ(contentsOf(paths.activeSpoolFile()), "old\n");
    }
    EXPECT_EQ(outcomeOf(writer.append(minimalEvent())), "ok") << "the lock was given back";
}

TEST_F(SpoolWriterLinuxTest, losesOneLineAtMostWhereATornPieceCannotBeTakenBack) {
    ASSERT_EQ(outcomeOf(writer.append(minimalEvent())), "ok");
    const auto size = fs::file_size(paths.activeSpoolFile());
    const auto seen = inChildProcess([&]() -> std::string {
        const rlimit limit{size + 10, size + 10};
        std::signal(SIGXFSZ, SIG_IGN);
        if (setrlimit(RLIMIT_FSIZE, &limit) != 0) return "no limit";
        if (!failSystemCalls({SYS_truncate, SYS_ftruncate}, EPERM)) return noFilter;
        return outcomeOf(writer.append(minimalEvent()));
    });
    if (seen == noFilter) GTEST_SKIP() << *seen;
    EXPECT_EQ(seen, ioCode("write", EFBIG)) << "the first failure counts";
    ASSERT_EQ(fs::file_size(paths.activeSpoolFile()), size + 10);

    ASSERT_EQ(outcomeOf(writer.append(fullEvent())), "ok");
    ASSERT_EQ(outcomeOf(writer.append(fullEvent())), "ok");
    const auto result = SpoolDrainer::readEvents(paths.activeSpoolFile());
    ASSERT_TRUE(result);
    EXPECT_EQ(result->events, (std::vector{minimalEvent(), fullEvent()}));
    EXPECT_EQ(result->invalidLineCount, 1);
}

}  // namespace
}  // namespace tallowbrook
