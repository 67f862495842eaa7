#include "Loop/WakeUp.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include "EventBridge/SpoolSignal.h"
#include "Support/ChildProcess.h"
#include "Support/EnvironmentVariable.h"
#include "Support/FileContents.h"
#include "Support/TemporaryDirectory.h"

namespace tallowbrook::host {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds patience{60'000};

const char* nameOf(WakeUp::Reason reason) {
    switch (reason) {
        case WakeUp::Reason::posted:
            return "posted";
        case WakeUp::Reason::timer:
            return "timer";
        case WakeUp::Reason::endRequested:
            break;
    }
    return "end requested";
}

// What the child process saw. It is another process because signals are handled for all of it.
class WakeUpInChild : public testing::Test {
 protected:
    std::optional<std::string> inChild(const std::function<std::string(WakeUp&)>& body) const {
        return inChildProcess([&]() -> std::string {
            auto wakeUp = WakeUp::start();
            return wakeUp ? body(*wakeUp) : wakeUp.error().description();
        });
    }

    TemporaryDirectory runtime;
    EnvironmentVariable setting{"XDG_RUNTIME_DIR", runtime.path.string()};
};

TEST_F(WakeUpInChild, comesAfterItsTime) {
    EXPECT_EQ(inChild([](WakeUp& wakeUp) { return nameOf(wakeUp.wait(milliseconds{1})); }),
              "timer");
    EXPECT_EQ(inChild([](WakeUp& wakeUp) { return nameOf(wakeUp.wait(milliseconds{0})); }),
              "timer");
}

TEST_F(WakeUpInChild, comesWithAPost) {
    EXPECT_EQ(inChild([](WakeUp& wakeUp) {
                  SpoolSignal::post();
                  return nameOf(wakeUp.wait(patience));
              }),
              "posted");
}

TEST_F(WakeUpInChild, comesOnceForPostsThatCameTogether) {
    EXPECT_EQ(inChild([](WakeUp& wakeUp) {
                  for (int i = 0; i < 5; ++i) SpoolSignal::post();
                  const std::string first = nameOf(wakeUp.wait(patience));
                  return first + ", " + nameOf(wakeUp.wait(milliseconds{1}));
              }),
              "posted, timer");
}

TEST_F(WakeUpInChild, comesWithEachSignalThatAsksForTheEnd) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        EXPECT_EQ(inChild([signal](WakeUp& wakeUp) {
                      raise(signal);
                      return nameOf(wakeUp.wait(patience));
                  }),
                  "end requested")
            << signal;
}

TEST_F(WakeUpInChild, asksForTheEndBeforeAllElseAndAgain) {
    EXPECT_EQ(inChild([](WakeUp& wakeUp) {
                  SpoolSignal::post();
                  raise(SIGTERM);
                  raise(SIGINT);
                  const std::string first = nameOf(wakeUp.wait(patience));
                  return first + ", " + nameOf(wakeUp.wait(patience));
              }),
              "end requested, end requested");
}

TEST_F(WakeUpInChild, survivesMoreRequestsThanAPipeHolds) {
    EXPECT_EQ(inChild([](WakeUp& wakeUp) {
                  for (int i = 0; i < 100'000; ++i) raise(SIGHUP);
                  return nameOf(wakeUp.wait(patience));
              }),
              "end requested");
}

TEST_F(WakeUpInChild, sleepsOnWhenTheSignalsDirectorySeesOtherFiles) {
    EXPECT_EQ(inChild([&](WakeUp& wakeUp) {
                  writeContents(runtime.path / "other", "");
                  return nameOf(wakeUp.wait(milliseconds{50}));
              }),
              "timer");
}

TEST_F(WakeUpInChild, hasItsTimerWhereTheSignalCannotBeObserved) {
    const EnvironmentVariable nowhere{"XDG_RUNTIME_DIR", runtime.path / "missing"};
    EXPECT_EQ(inChild([](WakeUp& wakeUp) { return nameOf(wakeUp.wait(milliseconds{1})); }),
              "timer");
}

}  // namespace
}  // namespace tallowbrook::host
