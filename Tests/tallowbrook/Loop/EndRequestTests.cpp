#include "Loop/EndRequest.h"

#include <gtest/gtest.h>
#include <signal.h>

#include "Support/ChildProcess.h"

namespace tallowbrook::host {
namespace {

// What a loop in a child process saw. It is another process because signals are handled for all of
// it.
std::optional<std::string> inChild(const std::function<void()>& ask) {
    return inChildProcess([&]() -> std::string {
        const auto request = EndRequest::receive();
        if (!request) return request.error().description();
        PollLoop loop;
        const auto attached = loop.attach(request->source(loop));
        ask();
        loop.run();
        return "ended";
    });
}

TEST(EndRequest, endsTheLoopOnEachSignalThatAsksForIt) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        EXPECT_EQ(inChild([signal] { raise(signal); }), "ended") << signal;
}

TEST(EndRequest, survivesMoreSignalsThanAPipeHolds) {
    EXPECT_EQ(inChild([] {
                  for (int i = 0; i < 100'000; ++i) raise(SIGHUP);
              }),
              "ended");
}

TEST(EndRequest, leavesASignalIgnoredThatWas) {
    EXPECT_EQ(inChildProcess([]() -> std::string {
                  signal(SIGHUP, SIG_IGN);
                  const auto request = EndRequest::receive();
                  PollLoop loop;
                  const auto attached = loop.attach(request->source(loop));
                  std::string seen = "nothing";
                  const auto clock = loop.attach(
                      {[] { return PollInterest{-1, 0, std::chrono::steady_clock::now()}; },
                       [&](short) {
                           seen = "the deadline";
                           loop.requestEnd();
                       }});
                  raise(SIGHUP);
                  loop.run();
                  return seen;
              }),
              "the deadline");
}

}  // namespace
}  // namespace tallowbrook::host
