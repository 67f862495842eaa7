#include "System/FileError.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace tallowbrook {
namespace {

TEST(FileError, namesTheStepAndTheSystemsReason) {
    EXPECT_EQ((FileError{"mkdir", EACCES}.description()), "mkdir failed: Permission denied");
    EXPECT_EQ((FileError{"stat", ENOTDIR}.description()), "stat failed: Not a directory");
}

TEST(FileError, isComparedByStepAndNumber) {
    EXPECT_EQ((FileError{"open", EIO}), (FileError{"open", EIO}));
    EXPECT_NE((FileError{"open", EIO}), (FileError{"read", EIO}));
    EXPECT_NE((FileError{"open", EIO}), (FileError{"open", EPERM}));
}

}  // namespace
}  // namespace tallowbrook
