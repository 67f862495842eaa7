#include "System/FileDescriptor.h"

#include <fcntl.h>
#include <gtest/gtest.h>

namespace tallowbrook {
namespace {

bool isOpen(int number) { return fcntl(number, F_GETFD) != -1; }

TEST(FileDescriptor, ofAFailedCallIsNotOpen) {
    EXPECT_FALSE(FileDescriptor{}.isOpen());
    EXPECT_FALSE(FileDescriptor{-1}.isOpen());
}

TEST(FileDescriptor, isClosedWithItsOneOwner) {
    int number = -1;
    {
        FileDescriptor first{open("/dev/null", O_RDONLY | O_CLOEXEC)};
        number = first.number();
        FileDescriptor second{std::move(first)};
        FileDescriptor third;
        third = std::move(second);
        EXPECT_EQ(third.number(), number);
        EXPECT_TRUE(third.isOpen() && isOpen(number));
    }
    EXPECT_FALSE(isOpen(number));
}

}  // namespace
}  // namespace tallowbrook
