#include "Channels/ProgramRuns.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>

#include "Support/FileContents.h"
#include "Support/TemporaryDirectory.h"
#include "Support/WaitUntil.h"

namespace tallowbrook::host {
namespace {

using std::chrono::milliseconds;
using Way = ProgramEnd::Way;

constexpr milliseconds patience{60'000};

struct Running : testing::Test {
    TemporaryDirectory directory;
    ProgramRuns runs;

    std::string file(const std::string& name) const { return directory.path / name; }

    bool start(std::int64_t number, const std::string& script, const std::string& input = {},
               milliseconds timeout = patience) {
        return runs
            .start(number, {.path = "/bin/sh",
                            .arguments = {"-c", script, "sh", directory.path},
                            .input = input,
                            .timeout = timeout,
                            .keepsOutput = true})
            .has_value();
    }

    // As the loop does, until this many have ended.
    std::vector<ProgramEnd> ends(std::size_t count = 1) {
        PollLoop loop;
        std::vector<ProgramEnd> ended;
        const auto attached = loop.attach({.interest = [this] { return runs.interest(); },
                                           .proceed = [this](short) { runs.proceed(); }});
        while (ended.size() < count && runs.isAnyRunning()) {
            loop.runOnce();
            for (auto& end : runs.takeEnded()) ended.push_back(std::move(end));
        }
        return ended;
    }

    ProgramEnd end() {
        const auto ended = ends();
        return ended.empty() ? ProgramEnd{.number = -1} : ended.front();
    }
};

TEST_F(Running, giveTheProgramItsInputAndTellItsOutputAndItsStatus) {
    ASSERT_TRUE(start(7, "tr a-z A-Z; exit 3", "text\n"));
    EXPECT_EQ(end(), (ProgramEnd{7, Way::exited, 3, "TEXT\n"}));
    EXPECT_FALSE(runs.isAnyRunning());
    EXPECT_EQ(runs.interest().descriptor, -1);
}

TEST_F(Running, tellTheSignalThatEndedAProgram) {
    ASSERT_TRUE(start(1, "kill -SEGV $$"));
    EXPECT_EQ(end(), (ProgramEnd{1, Way::signalled, SIGSEGV, ""}));
}

TEST_F(Running, failWhereTheProgramIsMissing) {
    const auto started = runs.start(1, {.path = file("missing"), .arguments = {}, .timeout = {}});
    ASSERT_FALSE(started);
    EXPECT_EQ(started.error(), (FileError{"posix_spawn", ENOENT}));
    EXPECT_FALSE(runs.isAnyRunning());
}

TEST_F(Running, careNotForInputThatIsNotRead) {
    ASSERT_TRUE(start(1, "exit 0", std::string(1 << 20, 'x')));
    EXPECT_EQ(end(), (ProgramEnd{1, Way::exited, 0, ""}));
}

TEST_F(Running, goOnBesideEachOther) {
    for (int i = 1; i <= 3; ++i) ASSERT_TRUE(start(i, "read line; echo $line", std::to_string(i)));
    auto ended = ends(3);
    std::ranges::sort(ended, {}, &ProgramEnd::number);
    ASSERT_EQ(ended.size(), 3U);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(ended[static_cast<std::size_t>(i)].output, std::to_string(i + 1) + "\n");
}

TEST_F(Running, endAProgramWhoseTimeIsUp) {
    ASSERT_TRUE(start(1, "sleep 1000", {}, milliseconds{50}));
    EXPECT_EQ(end(), (ProgramEnd{1, Way::timedOut, SIGTERM, ""}));
}

TEST_F(Running, killAProgramThatDoesNotCareForTheRequestToEndAndWhatItHasStarted) {
    ASSERT_EQ(mkfifo(file("held").c_str(), 0600), 0);
    // Held open for as long as one of them lives.
    const FileDescriptor held{open(file("held").c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)};
    ASSERT_TRUE(start(1, "trap '' TERM; exec 3> $1/held; sleep 1000 & echo begun >&3; sleep 1000",
                      {}, milliseconds{200}));
    EXPECT_EQ(end(), (ProgramEnd{1, Way::timedOut, SIGKILL, ""}));
    std::array<char, 8> bytes{};
    while (read(held.number(), bytes.data(), bytes.size()) > 0) continue;
    waitUntil([&] { return read(held.number(), bytes.data(), bytes.size()) == 0; });
}

TEST_F(Running, endAProgramThatFloodsItsOutputWhenItsTimeIsUp) {
    ASSERT_TRUE(start(1, "exec yes", {}, milliseconds{100}));
    const auto flood = end();
    EXPECT_EQ(flood.way, Way::timedOut);
    EXPECT_LE(flood.output.size(), 65536U);
}

TEST_F(Running, waitForNothingThatAProgramLeavesBehind) {
    ASSERT_TRUE(start(1, "(sleep 1000; :) & echo $! > $1/child; echo done"));
    EXPECT_EQ(end(), (ProgramEnd{1, Way::exited, 0, "done\n"}));
    const auto child = static_cast<pid_t>(std::stoi(contentsOf(file("child"))));
    EXPECT_EQ(kill(child, 0), 0) << "it was left alone";
    // With the program that it may have started by then.
    kill(-getpgid(child), SIGKILL);
}

TEST_F(Running, endAProgramOnRequest) {
    ASSERT_TRUE(runs.start(4, {.path = "/bin/sleep", .arguments = {"1000"}, .timeout = {}}));
    runs.end(4);
    EXPECT_EQ(end(), (ProgramEnd{4, Way::timedOut, SIGTERM, ""}));
    runs.end(4);
    EXPECT_FALSE(runs.isAnyRunning());
}

TEST_F(Running, endWithThoseThatStartedThem) {
    {
        ProgramRuns others;
        ASSERT_TRUE(others.start(1, {.path = "/bin/sh",
                                     .arguments = {"-c",
                                                   "trap 'echo ended > $1/mark; exit' TERM;"
                                                   " echo begun > $1/mark; while :; do sleep 0.01;"
                                                   " done",
                                                   "sh", directory.path},
                                     .timeout = {}}));
        waitUntil([&] { return contentsOf(file("mark")) == "begun\n"; });
    }
    waitUntil([&] { return contentsOf(file("mark")) == "ended\n"; });
}

}  // namespace
}  // namespace tallowbrook::host
