#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>

#include "Domain/UUID.h"
#include "Support/ChildProcess.h"
#include "Support/FailingSystemCallLinux.h"

namespace tallowbrook {
namespace {

constexpr const char* notRefused = "this C library gets random bytes without a system call";

TEST(RandomUUIDLinux, failsWithTheReasonWhenThereAreNoRandomBytes) {
    const auto seen = inChildProcess([]() -> std::string {
        if (!failSystemCalls({SYS_getrandom}, EIO)) return noFilter;
        if (char byte = 0; getentropy(&byte, 1) == 0) return notRefused;
        const auto uuid = randomUUID();
        if (uuid) return "an identifier";
        return uuid.error().step + " " + std::to_string(uuid.error().errorNumber);
    });
    if (seen == noFilter || seen == notRefused) GTEST_SKIP() << *seen;
    EXPECT_EQ(seen, "random " + std::to_string(EIO));
}

}  // namespace
}  // namespace tallowbrook
