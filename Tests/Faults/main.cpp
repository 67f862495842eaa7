#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    // These tests start thousands of programs that would wait for the disk. What a killed program
    // has written outlives it in memory just as well.
    constexpr const char* memory = "/dev/shm";
    if (access(memory, W_OK | X_OK) == 0) setenv("TEST_TMPDIR", memory, 0);
    return RUN_ALL_TESTS();
}
