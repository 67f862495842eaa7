#include <gtest/gtest.h>

#include <cerrno>
#include <string>

#include "EventBridge/SpoolWriter.h"
#include "Support/ChildProcess.h"
#include "Support/FailingSystemCallLinux.h"
#include "Support/FileContents.h"
#include "Support/Outcome.h"
#include "Support/SampleEvents.h"
#include "Support/TemporaryDirectory.h"

namespace tallowbrook {
namespace {

TEST(SpoolWriterLinux, saysWhyARotationFailedAndWritesNothing) {
    const TemporaryDirectory temporary;
    const TallowbrookPaths paths{temporary.path};
    SpoolWriter writer{paths, {}};
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

}  // namespace
}  // namespace tallowbrook
