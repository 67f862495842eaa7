#include "QuietExit.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <exception>
#include <functional>
#include <new>
#include <stdexcept>

#include "System/FileError.h"

namespace tallowbrook::hook {
namespace {

struct Outer {
    struct Inner {};
};

std::string nameOf(const std::function<void()>& thrower) {
    try {
        thrower();
    } catch (...) {
        return currentExceptionTypeName();
    }
    return "nothing was thrown";
}

TEST(QuietExit, namesWhatWasThrownByItsTypeAlone) {
    EXPECT_EQ(nameOf([] { throw std::bad_alloc{}; }), "bad_alloc");
    EXPECT_EQ(nameOf([] { throw std::runtime_error{"secret"}; }), "runtime_error");
    EXPECT_EQ(nameOf([] { throw FileError{"open", 2}; }), "FileError");
    EXPECT_EQ(nameOf([] { throw Outer::Inner{}; }), "Inner");
    EXPECT_EQ(nameOf([] { throw 1; }), "int");
}

// How a child process ends that does this; 0 is success, negative the number of a signal.
int endOf(const std::function<void()>& body) {
    const pid_t child = fork();
    if (child == 0) {
        body();
        _exit(99);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

TEST(QuietExit, endsWithZeroWhenTheWatchdogBarks) {
    EXPECT_EQ(endOf([] {
                  armWatchdog(1);
                  while (true) pause();
              }),
              0);
}

TEST(QuietExit, endsWithZeroWhenAnExceptionIsNotCaught) {
    EXPECT_EQ(endOf([] {
                  ignoreDeadlySignals();
                  std::terminate();
              }),
              0);
}

TEST(QuietExit, makesAPipeWithoutAReaderAnError) {
    EXPECT_EQ(endOf([] {
                  std::signal(SIGPIPE, SIG_DFL);
                  ignoreDeadlySignals();
                  int ends[2];
                  if (pipe(ends) != 0) _exit(1);
                  close(ends[0]);
                  _exit(write(ends[1], "x", 1) < 0 && errno == EPIPE ? 7 : 1);
              }),
              7);
}

}  // namespace
}  // namespace tallowbrook::hook
