#include "EventBridge/SpoolError.h"

#include <gtest/gtest.h>

namespace tallowbrook {
namespace {

TEST(SpoolError, hasACodeForTheLog) {
    EXPECT_EQ(SpoolError::io("flock", 9).diagnosticCode(), "io-flock-errno9");
    EXPECT_EQ(SpoolError::io("open-lock", 13).diagnosticCode(), "io-open-lock-errno13");
    EXPECT_EQ(SpoolError::io("rotate", 0).diagnosticCode(), "io-rotate-errno0");
    EXPECT_EQ(SpoolError::lineTooLarge(16385).diagnosticCode(), "line-too-large(16385)");
    EXPECT_EQ(SpoolError::lockTimeout().diagnosticCode(), "lock-timeout");
}

}  // namespace
}  // namespace tallowbrook
