// The helper never outlives its watchdog, and no signal that an agent may bequeath to it changes
// how it ends.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <memory>

#include "TestHome.h"

namespace tallowbrook {
namespace {

struct Hang {
    const char* why;
    std::function<void()> prepare;
};

void blockAlarm() {
    sigset_t alarmOnly;
    sigemptyset(&alarmOnly);
    sigaddset(&alarmOnly, SIGALRM);
    sigprocmask(SIG_BLOCK, &alarmOnly, nullptr);
}

TEST(HelperQuietExit, anInputThatNeverEndsIsGivenUpWithoutATrace) {
    const std::vector<Hang> hangs{
        {"a pipe that stays open", [] {}},
        {"the watchdog's signal was ignored by the parent", [] { std::signal(SIGALRM, SIG_IGN); }},
        {"it was blocked", blockAlarm},
        {"both",
         [] {
             std::signal(SIGALRM, SIG_IGN);
             blockAlarm();
         }},
        {"an inherited alarm of an hour", [] { alarm(3600); }},
        {"bytes without end", [] { dup2(open("/dev/zero", O_RDONLY), STDIN_FILENO); }},
    };
    // All at once, since each lives as long as the watchdog lets it.
    struct Victim {
        const char* why;
        std::unique_ptr<TestHome> home;
        std::unique_ptr<RunningProgram> helper;
    };
    std::vector<Victim> victims;
    for (const auto& [why, prepare] : hangs) {
        auto home = std::make_unique<TestHome>();
        ProgramCall call = home->hookCall({"claude-code"}, R"({"session_id":)");
        call.inputStaysOpen = true;
        call.prepare = prepare;
        auto helper = std::make_unique<RunningProgram>(call);
        victims.push_back({why, std::move(home), std::move(helper)});
    }
    for (const auto& [why, home, helper] : victims) {
        const ProgramResult result = helper->wait();
        EXPECT_EQ(result.status, 0) << why;
        EXPECT_EQ(result.output + result.errors, "") << why;
        EXPECT_FALSE(exists(home->paths.home)) << why;
    }
}

TEST(HelperQuietExit, aPipeInThePlaceOfAFileCostsTheEventAtMost) {
    for (const auto& [pipe, message] :
         {std::pair{"spool/events.jsonl", "open-spool-errno" + std::to_string(ENXIO)},
          std::pair{"spool/spool.lock", "open-lock-errno" + std::to_string(EINVAL)}}) {
        const TestHome home;
        create_directories(home.paths.spoolDirectory());
        ASSERT_EQ(mkfifo((home.paths.home / pipe).c_str(), 0600), 0);
        EXPECT_EQ(home.hook({"claude-code"}, claudePayload("Stop")), quiet);
        EXPECT_EQ(home.logged(),
                  std::vector{"helper: claude-code spool write failed: io-" + message});
    }
}

TEST(HelperQuietExit, signalsThatTheParentIgnoresOrBlocksMakeNoDifference) {
    const TestHome home;
    ProgramCall call = home.hookCall({"claude-code"}, claudePayload("Stop"));
    call.prepare = [] {
        sigset_t all;
        sigfillset(&all);
        sigprocmask(SIG_BLOCK, &all, nullptr);
        for (const int signal : {SIGALRM, SIGCHLD, SIGINT, SIGPIPE, SIGTERM, SIGXFSZ})
            std::signal(signal, SIG_IGN);
    };
    EXPECT_EQ(run(call), quiet);
    EXPECT_EQ(home.spooled().size(), 1U);
}

}  // namespace
}  // namespace tallowbrook
