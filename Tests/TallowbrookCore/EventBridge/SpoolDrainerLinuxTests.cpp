#include <gtest/gtest.h>

#include <cerrno>

#include "EventBridge/SpoolDrainer.h"
#include "EventBridge/SpoolWriter.h"
#include "Support/ChildProcess.h"
#include "Support/FailingSystemCallLinux.h"
#include "Support/Outcome.h"
#include "Support/SampleEvents.h"
#include "Support/TemporaryDirectory.h"

namespace tallowbrook {
namespace {

// An empty list would look as if there were nothing left to read.
TEST(SpoolDrainerLinux, saysWhenTheSpoolCannotBeListed) {
    const TemporaryDirectory temporary;
    const TallowbrookPaths paths{temporary.path};
    ASSERT_EQ(outcomeOf(SpoolWriter{paths, {}}.append(minimalEvent())), "ok");
    const SpoolDrainer drainer{paths};
    const auto seen = inChildProcess([&]() -> std::string {
        if (!failSystemCalls({SYS_getdents64}, EIO)) return noFilter;
        return outcomeOf(drainer.claimPendingFiles());
    });
    if (seen == noFilter) GTEST_SKIP() << *seen;
    EXPECT_EQ(seen, "list-errno" + std::to_string(EIO));

    const auto files = drainer.claimPendingFiles();
    ASSERT_TRUE(files);
    EXPECT_EQ(files->size(), 1U) << "what was claimed is given the next time";
}

}  // namespace
}  // namespace tallowbrook
