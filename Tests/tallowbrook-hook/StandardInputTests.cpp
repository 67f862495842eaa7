#include "StandardInput.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/time.h>
#include <unistd.h>

#include <csignal>
#include <string>

#include "Support/ChildProcess.h"

namespace tallowbrook::hook {
namespace {

struct Row {
    const char* why;
    std::size_t size;
    const char* outcome;
};

std::string described(const StandardInput& input) {
    return input.truncated ? "truncated" : std::to_string(input.bytes().size());
}

// What a process reads of an input that another one writes piece by piece.
std::optional<std::string> reading(
    std::size_t size, std::size_t piece, std::size_t limit,
    const std::function<void()>& prepare = [] {}) {
    return inChildProcess([&]() -> std::string {
        int ends[2];
        if (pipe(ends) != 0) return "no pipe";
        const ChildProcess writer{[&]() -> std::string {
            close(ends[0]);
            for (std::size_t sent = 0; sent < size; sent += piece) {
                const std::string bytes(std::min(piece, size - sent), 'x');
                if (write(ends[1], bytes.data(), bytes.size()) < 0) return "broken";
                if (piece == 1) usleep(2000);
            }
            return "sent";
        }};
        close(ends[1]);
        dup2(ends[0], STDIN_FILENO);
        close(ends[0]);
        prepare();
        return described(readStandardInput(limit));
    });
}

TEST(StandardInput, isTakenUpToItsLimit) {
    for (const auto& [why, size, outcome] : {
             Row{"empty", 0, "0"},
             Row{"the limit", 100'000, "100000"},
             Row{"one byte more", 100'001, "truncated"},
             Row{"twice the limit, so that it fills the buffer twice", 200'002, "truncated"},
             Row{"much more", 1'000'000, "truncated"},
         })
        EXPECT_EQ(reading(size, 4096, 100'000), outcome) << why;
}

TEST(StandardInput, goesOnBehindASignalThatInterruptsIt) {
    const auto interrupt = [] {
        struct sigaction action{};
        action.sa_handler = [](int) {};
        sigaction(SIGALRM, &action, nullptr);
        const itimerval often{{0, 500}, {0, 500}};
        setitimer(ITIMER_REAL, &often, nullptr);
    };
    EXPECT_EQ(reading(20, 1, 100, interrupt), "20");
}

TEST(StandardInput, isWaitedForWhereItsDescriptorDoesNotBlock) {
    const auto doNotBlock = [] { fcntl(STDIN_FILENO, F_SETFL, O_NONBLOCK); };
    EXPECT_EQ(reading(20, 1, 100, doNotBlock), "20");
}

TEST(StandardInput, isEmptyWhereThereIsNoDescriptor) {
    EXPECT_EQ(reading(20, 1, 100, [] { close(STDIN_FILENO); }), "0");
}

TEST(StandardInput, keepsTheBytesAsTheyCame) {
    EXPECT_EQ(inChildProcess([]() -> std::string {
                  int ends[2];
                  if (pipe(ends) != 0) return "no pipe";
                  const std::string bytes{"a\0\xFF\n", 4};
                  if (write(ends[1], bytes.data(), bytes.size()) != 4) return "not written";
                  close(ends[1]);
                  dup2(ends[0], STDIN_FILENO);
                  return readStandardInput(10).bytes() == bytes ? "same" : "other";
              }),
              "same");
}

}  // namespace
}  // namespace tallowbrook::hook
