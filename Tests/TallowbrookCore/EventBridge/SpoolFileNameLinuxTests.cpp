#include <gtest/gtest.h>

#include <cerrno>

#include "EventBridge/SpoolFileName.h"
#include "Support/ChildProcess.h"
#include "Support/FailingSystemCallLinux.h"
#include "Support/FileContents.h"
#include "Support/TemporaryDirectory.h"

namespace tallowbrook {
namespace {

TEST(SpoolFileNameLinux, isValidEvenWithoutRandomBits) {
    const TemporaryDirectory temporary;
    const auto seen = inChildProcess([&]() -> std::string {
        if (!failSystemCalls({SYS_getrandom}, EIO)) return noFilter;
        const Instant date{std::chrono::microseconds{5}};
        writeContents(temporary.path / make(SpoolFileName::Prefix::overflow, date), "");
        return std::to_string(SpoolFileName::pendingFiles(temporary.path).size());
    });
    if (seen == noFilter) GTEST_SKIP() << *seen;
    EXPECT_EQ(seen, "1");
}

}  // namespace
}  // namespace tallowbrook
