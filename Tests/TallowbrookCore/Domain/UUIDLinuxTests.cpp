#include <gtest/gtest.h>

#include <cerrno>

#include "Domain/UUID.h"
#include "Support/ChildProcess.h"
#include "Support/FailingSystemCallLinux.h"

namespace tallowbrook {
namespace {

TEST(RandomUUIDLinux, failsWithTheReasonWhenThereAreNoRandomBytes) {
    const auto seen = inChildProcess([]() -> std::string {
        if (!refuseRandomBytes()) return notRefused;
        const auto uuid = randomUUID();
        if (uuid) return "an identifier";
        return uuid.error().step + " " + std::to_string(uuid.error().errorNumber);
    });
    if (seen == notRefused) GTEST_SKIP() << notRefused;
    EXPECT_EQ(seen, "random " + std::to_string(EIO));
}

}  // namespace
}  // namespace tallowbrook
