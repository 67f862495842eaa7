// The two ends of a pipe, closed with this value. Other programs that a test starts meanwhile do
// not hold them open.
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>

#include "System/FileDescriptor.h"

namespace tallowbrook {

struct Pipe {
    FileDescriptor reader;
    FileDescriptor writer;
};

// The calling test fails where the system refuses one.
inline Pipe makePipe() {
    std::array<int, 2> ends{-1, -1};
    if (pipe(ends.data()) != 0) ADD_FAILURE() << "no pipe: " << std::strerror(errno);
    for (const int end : ends) fcntl(end, F_SETFD, FD_CLOEXEC);
    return {FileDescriptor{ends[0]}, FileDescriptor{ends[1]}};
}

}  // namespace tallowbrook
