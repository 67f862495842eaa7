#include <gtest/gtest.h>
#include <sys/syscall.h>

#include "Support/ChildProcess.h"
#include "Support/FailingSystemCallLinux.h"
#include "Support/FileContents.h"
#include "Support/Outcome.h"
#include "Support/TemporaryDirectory.h"
#include "System/ReplacementFile.h"

namespace tallowbrook {
namespace {

TEST(ReplacementFileLinux, waitsForNoDiskUnlessItIsAskedTo) {
    const TemporaryDirectory temporary;
    const auto made = [&] { return ReplacementFile::create(temporary.path / "new").value(); };
    const auto seen = inChildProcess([&]() -> std::string {
        if (!forbidSystemCalls({SYS_fsync})) return noFilter;
        auto replacing = made();
        if (!replacing.write("text")) return "not written";
        if (auto done = replacing.replace(temporary.path / "target"); !done) return outcomeOf(done);
        made().keep();
        return "ok";
    });
    if (seen == noFilter) GTEST_SKIP() << noFilter;
    EXPECT_EQ(seen, "ok");
    EXPECT_EQ(contentsOf(temporary.path / "target"), "text");
    EXPECT_TRUE(std::filesystem::exists(temporary.path / "new"));

    const auto whenAsked = inChildProcess([&]() -> std::string {
        auto file = ReplacementFile::create(temporary.path / "other").value();
        return forbidSystemCalls({SYS_fsync}) ? outcomeOf(file.sync()) : noFilter;
    });
    EXPECT_EQ(whenAsked, std::nullopt) << "the filter forbids nothing";
}

}  // namespace
}  // namespace tallowbrook
