#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cerrno>

#include "Support/ChildProcess.h"
#include "Support/FileContents.h"
#include "Support/Outcome.h"
#include "Support/TemporaryDirectory.h"
#include "System/FileContents.h"

namespace tallowbrook {
namespace {

TEST(FileContentsLinux, saysWhenThereIsNoMemoryForAFile) {
    if (!std::string_view{TALLOWBROOK_SANITIZERS}.empty())
        GTEST_SKIP() << "a sanitizer needs the memory that this test takes away";
    constexpr rlim_t allowed = rlim_t{1} << 30;
    const TemporaryDirectory temporary;
    const auto file = temporary.path / "file";
    writeZeros(file, allowed);
    const auto seen = inChildProcess([&]() -> std::string {
        const rlimit limit{allowed, allowed};
        if (setrlimit(RLIMIT_AS, &limit) != 0) return "no limit";
        return outcomeOf(FileContents::read(file));
    });
    EXPECT_EQ(seen, "read-errno" + std::to_string(ENOMEM));
}

}  // namespace
}  // namespace tallowbrook
