// Writes that the system breaks off, by a limit to the size of files.
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cerrno>
#include <csignal>
#include <string>

#include "EventBridge/SpoolDrainer.h"
#include "EventBridge/SpoolWriter.h"
#include "Support/ChildProcess.h"
#include "Support/FileContents.h"
#include "Support/Outcome.h"
#include "Support/SampleEvents.h"
#include "Support/TemporaryDirectory.h"

namespace tallowbrook {
namespace {

namespace fs = std::filesystem;

// For a child: no file of the process grows beyond `bytes`.
bool limitFileSize(std::size_t bytes) {
    const rlimit limit{bytes, bytes};
    return std::signal(SIGXFSZ, SIG_IGN) != SIG_ERR && setrlimit(RLIMIT_FSIZE, &limit) == 0;
}

class SpoolWriteFailureTest : public testing::Test {
 protected:
    std::optional<std::string> appendWithLimit(std::size_t bytes, const AgentEvent& event) const {
        return inChildProcess(
            [&] { return limitFileSize(bytes) ? outcomeOf(writer.append(event)) : "no limit"; });
    }

    TemporaryDirectory temporary;
    TallowbrookPaths paths{temporary.path};
    SpoolWriter writer{paths, {}};
    std::string line = EventCoding::encodeLine(minimalEvent());
    std::string writeFailed = ioCode("write", EFBIG);
};

TEST_F(SpoolWriteFailureTest, aPartOfALineIsTakenBack) {
    ASSERT_EQ(outcomeOf(writer.append(minimalEvent())), "ok");
    for (const std::size_t more : {std::size_t{0}, std::size_t{1}, line.size() - 1}) {
        EXPECT_EQ(appendWithLimit(line.size() + more, fullEvent()), writeFailed) << more;
        EXPECT_EQ(contentsOf(paths.activeSpoolFile()), line) << more;
    }
}

TEST_F(SpoolWriteFailureTest, aFileThatWasMissingHoldsNothingAfterwards) {
    for (const std::size_t limit : {std::size_t{0}, std::size_t{10}, line.size() - 1}) {
        EXPECT_EQ(appendWithLimit(limit, minimalEvent()), writeFailed) << limit;
        EXPECT_EQ(contentsOf(paths.activeSpoolFile()), "") << limit;
        EXPECT_EQ((SpoolDrainer{paths, Seconds{0}}.pendingSegmentCount()), 0) << limit;
    }
}

TEST_F(SpoolWriteFailureTest, aTornPieceOfSomeoneElseIsNotTakenBack) {
    writeContents(paths.activeSpoolFile(), line + "{\"adapter");
    EXPECT_EQ(appendWithLimit(line.size() + 20, minimalEvent()), writeFailed);
    EXPECT_EQ(contentsOf(paths.activeSpoolFile()), line + "{\"adapter");
}

TEST_F(SpoolWriteFailureTest, appendBytesTakesNothingBack) {
    const fs::path file = temporary.path / "file";
    writeContents(file, "1234");
    EXPECT_EQ(inChildProcess([&] {
                  return limitFileSize(6) ? outcomeOf(SpoolWriter::appendBytes("abcd", file))
                                          : "no limit";
              }),
              writeFailed);
    EXPECT_EQ(contentsOf(file), "1234ab") << "others may have written behind it without a lock";
}

}  // namespace
}  // namespace tallowbrook
