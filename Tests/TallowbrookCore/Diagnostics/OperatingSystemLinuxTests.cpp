#include <gtest/gtest.h>

#include "Diagnostics/OperatingSystem.h"
#include "Integrations/ProcessRunner.h"

namespace tallowbrook {
namespace {

TEST(OperatingSystemOnLinux, isNamedAsAShellReadsItsReleaseFile) {
    const auto shell = ProcessRunner::run(
        "/bin/sh", {"-c", ". /etc/os-release; printf 'Linux %s' \"$PRETTY_NAME\""}, Seconds{60},
        4096);
    ASSERT_TRUE(shell);
    if (shell->status != 0 || shell->output == "Linux ") GTEST_SKIP() << "no release file here";
    EXPECT_EQ(OperatingSystem::description(), shell->output);
}

}  // namespace
}  // namespace tallowbrook
