#include "System/FileError.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace tallowbrook {
namespace {

TEST(FileError, namesTheStepAndTheSystemsReason) {
    EXPECT_EQ((FileError{"mkdir", EACCES}.description()), "mkdir failed: Permission denied");
    EXPECT_EQ((FileError{"stat", ENOTDIR}.description()), "stat failed: Not a directory");
}

}  // namespace
}  // namespace tallowbrook
