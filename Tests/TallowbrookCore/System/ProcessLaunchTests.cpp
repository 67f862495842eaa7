#include "System/ProcessLaunch.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>

#include "Support/ChildProcess.h"

namespace tallowbrook {
namespace {

TEST(ProcessLaunch, aPipeIsClosedInOtherPrograms) {
    const auto pipe = ProcessLaunch::makePipe();
    ASSERT_TRUE(pipe);
    EXPECT_EQ(fcntl(pipe->reader.number(), F_GETFD), FD_CLOEXEC);
    EXPECT_EQ(fcntl(pipe->writer.number(), F_GETFD), FD_CLOEXEC);
}

// What the caller prints would otherwise run into the pipe.
TEST(ProcessLaunch, aPipeNeverStandsInForAStandardStreamThatIsClosed) {
    for (const auto& closed : {std::array{0, 1, 2}, {0, 0, 0}, {0, 1, 1}, {1, 2, 2}, {0, 2, 2}})
        EXPECT_EQ(inChildProcess([&]() -> std::string {
                      for (const int stream : closed) close(stream);
                      const auto pipe = ProcessLaunch::makePipe();
                      if (!pipe) return "no pipe";
                      for (const auto* end : {&pipe->reader, &pipe->writer})
                          if (end->number() <= 2 || fcntl(end->number(), F_GETFD) != FD_CLOEXEC)
                              return "end " + std::to_string(end->number());
                      // Nor does anything else stand there now.
                      const bool areClosed = std::ranges::all_of(
                          closed, [](int stream) { return fcntl(stream, F_GETFD) < 0; });
                      return areClosed ? "elsewhere" : "left behind";
                  }),
                  "elsewhere");
}

TEST(ProcessLaunch, anExitIsAwaitedThoughTheChildWasStoppedBefore) {
    const auto pipe = ProcessLaunch::makePipe();
    ASSERT_TRUE(pipe);
    const auto child = ProcessLaunch::start(
        "/bin/sh", {"-c", "(while sleep 0.1 && kill -CONT $$; do :; done) & kill -STOP $$; exit 8"},
        pipe->writer);
    ASSERT_TRUE(child);
    ProcessLaunch::awaitExit(*child);
    int status = 0;
    ASSERT_EQ(waitpid(*child, &status, WNOHANG), *child);
    EXPECT_EQ(WEXITSTATUS(status), 8);
}

int statusOf(pid_t child) {
    int status = -1;
    waitpid(child, &status, 0);
    return WEXITSTATUS(status);
}

TEST(ProcessLaunch, aChildReadsWhatItIsGiven) {
    const auto output = ProcessLaunch::makePipe();
    auto input = ProcessLaunch::makePipe();
    ASSERT_TRUE(output && input);
    ASSERT_EQ(write(input->writer.number(), "text", 4), 4);
    input->writer = FileDescriptor{};
    const auto child = ProcessLaunch::start("/bin/cat", {}, output->writer, input->reader);
    ASSERT_TRUE(child);
    EXPECT_EQ(statusOf(*child), 0);
    std::array<char, 8> bytes{};
    EXPECT_EQ(read(output->reader.number(), bytes.data(), bytes.size()), 4);
    EXPECT_STREQ(bytes.data(), "text");
}

TEST(ProcessLaunch, aChildReadsATextThatNoPipeWouldHold) {
    const std::string text(1 << 20, 'x');
    const auto input = ProcessLaunch::makeInput(text);
    ASSERT_TRUE(input);
    EXPECT_EQ(fcntl(input->number(), F_GETFD), FD_CLOEXEC);
    const auto child = ProcessLaunch::start(
        "/bin/sh", {"-c", "test \"$(wc -c)\" -eq 1048576 && exit 7"}, FileDescriptor{}, *input);
    ASSERT_TRUE(child);
    EXPECT_EQ(statusOf(*child), 7);
}

TEST(ProcessLaunch, aChildLeadsAGroupOfItsOwnWhereThatIsWanted) {
    for (const auto& [group, isOwn] :
         {std::pair{ProcessLaunch::ProcessGroup::ofItsOwn, true},
          std::pair{ProcessLaunch::ProcessGroup::ofTheParent, false}}) {
        const auto child =
            ProcessLaunch::start("/bin/sleep", {"1000"}, FileDescriptor{}, FileDescriptor{}, group);
        ASSERT_TRUE(child);
        EXPECT_EQ(getpgid(*child) == *child, isOwn);
        kill(*child, SIGKILL);
        statusOf(*child);
    }
}

TEST(ProcessLaunch, theNullDeviceStandsInForWhatIsNotGiven) {
    const auto child = ProcessLaunch::start(
        "/bin/sh", {"-c", "read line && exit 1; echo text || exit 2; exit 9"}, FileDescriptor{});
    ASSERT_TRUE(child);
    EXPECT_EQ(statusOf(*child), 9);
}

TEST(ProcessLaunch, aChildIgnoresNoSignalThoughItsParentDoes) {
    EXPECT_EQ(inChildProcess([]() -> std::string {
                  signal(SIGXFSZ, SIG_IGN);
                  const auto child =
                      ProcessLaunch::start("/bin/sh", {"-c", "kill -XFSZ $$"}, FileDescriptor{});
                  int status = 0;
                  if (!child || waitpid(*child, &status, 0) != *child) return "not started";
                  return WIFSIGNALED(status) ? "ended by the signal" : "ignored";
              }),
              "ended by the signal");
}

TEST(ProcessLaunch, saysWhyAProgramCannotBeStarted) {
    EXPECT_EQ(ProcessLaunch::start("/nowhere", {}, FileDescriptor{}).error(), ENOENT);
    EXPECT_EQ(ProcessLaunch::start("/", {}, FileDescriptor{}).error(), EACCES);
}

}  // namespace
}  // namespace tallowbrook
