#include "System/DirectoryListing.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Support/FileContents.h"
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

}  // namespace
}  // namespace tallowbrook
