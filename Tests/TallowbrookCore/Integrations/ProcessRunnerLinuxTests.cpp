// What only the kernel can tell of a run: how much memory and how many descriptors it took.
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <iterator>

#include "Integrations/ProcessRunner.h"
#include "Support/TemporaryDirectory.h"
#include "TestScript.h"

namespace tallowbrook {
namespace {

namespace fs = std::filesystem;

constexpr Seconds patience{60};

long peakMemoryKilobytes() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

std::ptrdiff_t openFiles() {
    return std::distance(fs::directory_iterator{"/proc/self/fd"}, fs::directory_iterator{});
}

TEST(ProcessRunnerOnLinux, readsGigabytesToTheirEndInLittleMemory) {
    const long before = peakMemoryKilobytes();
    const auto result =
        ProcessRunner::run("/usr/bin/head", {"-c", "2G", "/dev/zero"}, patience, 10);
    EXPECT_EQ(result, (ProcessRunner::Result{0, std::string(10, '\0')}));
    EXPECT_LT(peakMemoryKilobytes() - before, 64 * 1024);
}

TEST(ProcessRunnerOnLinux, leavesNoDescriptorOpen) {
    const TemporaryDirectory temporary;
    const auto program = writeScript(temporary.path / "script", "echo text; exit $1");
    const auto before = openFiles();
    for (int i = 0; i < 10; ++i) {
        EXPECT_TRUE(ProcessRunner::run(program, {"0"}, patience, 10));
        EXPECT_FALSE(ProcessRunner::run("/nonexistent", {}, patience, 10));
        EXPECT_EQ(openFiles(), before);
    }
    EXPECT_FALSE(ProcessRunner::run("/bin/sleep", {"300"}, Seconds{0.1}, 10));
    waitUntil([&] { return openFiles() == before; });
}

TEST(ProcessRunnerOnLinux, startsNoShell) {
    const auto result = ProcessRunner::run("/bin/cat", {"/proc/self/stat"}, patience, 4096);
    ASSERT_TRUE(result);
    // The parent is this process, with no shell in between.
    EXPECT_NE(result->output.find(") R " + std::to_string(getpid()) + " "), std::string::npos)
        << result->output;
}

}  // namespace
}  // namespace tallowbrook
