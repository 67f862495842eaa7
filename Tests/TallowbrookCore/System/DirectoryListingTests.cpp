#include "System/DirectoryListing.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "Support/ChildProcess.h"
#include "Support/FileContents.h"
#include "Support/OrdinaryUser.h"
#include "Support/TemporaryDirectory.h"

namespace tallowbrook {
namespace {

using testing::IsEmpty;
using testing::UnorderedElementsAre;

TEST(DirectoryListing, holdsEveryKindOfEntryAndNothingBelow) {
    const TemporaryDirectory temporary;
    writeContents(temporary.path / "file", "");
    writeContents(temporary.path / ".hidden", "");
    writeContents(temporary.path / "directory" / "below", "");
    std::filesystem::create_symlink("missing", temporary.path / "dangling");
    EXPECT_THAT(listDirectory(temporary.path),
                UnorderedElementsAre(temporary.path / "file", temporary.path / ".hidden",
                                     temporary.path / "directory", temporary.path / "dangling"));
}

TEST(DirectoryListing, isEmptyWhereThereIsNothingToList) {
    const TemporaryDirectory temporary;
    EXPECT_THAT(listDirectory(temporary.path), IsEmpty());
    EXPECT_THAT(listDirectory(temporary.path / "missing"), IsEmpty());
    writeContents(temporary.path / "file", "");
    EXPECT_THAT(listDirectory(temporary.path / "file"), IsEmpty());
    EXPECT_THAT(listDirectory(""), IsEmpty());
}

TEST(DirectoryListing, isEmptyWhereListingIsRefused) {
    const auto user = OrdinaryUser::find();
    if (!user) GTEST_SKIP() << OrdinaryUser::missing;
    const TemporaryDirectory temporary;
    writeContents(temporary.path / "file", "");
    ASSERT_TRUE(user->own(temporary.path));
    chmod(temporary.path.c_str(), 0300);
    const auto count = inChildProcess([&]() -> std::string {
        if (!user->become()) return "still another user";
        return std::to_string(listDirectory(temporary.path).size());
    });
    chmod(temporary.path.c_str(), 0700);
    EXPECT_EQ(count, "0");
}

}  // namespace
}  // namespace tallowbrook
