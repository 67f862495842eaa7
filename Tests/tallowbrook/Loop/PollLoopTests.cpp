#include "Loop/PollLoop.h"

#include <gtest/gtest.h>
#include <poll.h>

#include "System/ProcessLaunch.h"

namespace tallowbrook::host {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

// A pipe that a test writes into, and a source that reads it.
struct Pipe {
    ProcessLaunch::Pipe ends = ProcessLaunch::makePipe().value();
    std::string heard;

    void write(std::string_view text) const {
        ASSERT_EQ(::write(ends.writer.number(), text.data(), text.size()),
                  static_cast<ssize_t>(text.size()));
    }

    PollSource source() {
        return {[this] { return PollInterest{ends.reader.number(), POLLIN, std::nullopt}; },
                [this](short) {
                    char byte = 0;
                    if (::read(ends.reader.number(), &byte, 1) == 1) heard += byte;
                }};
    }
};

PollSource due(std::optional<MonotonicTime>& deadline, int& count) {
    return {[&] { return PollInterest{-1, 0, deadline}; },
            [&](short ready) {
                EXPECT_EQ(ready, 0);
                ++count;
                deadline.reset();
            }};
}

TEST(PollLoop, letsEachSourceThatIsReadyProceedOnce) {
    PollLoop loop;
    Pipe one;
    Pipe two;
    Pipe silent;
    const auto first = loop.attach(one.source());
    const auto second = loop.attach(two.source());
    const auto third = loop.attach(silent.source());
    one.write("ab");
    two.write("c");
    loop.runOnce();
    EXPECT_EQ(one.heard, "a");
    EXPECT_EQ(two.heard, "c");
    loop.runOnce();
    EXPECT_EQ(one.heard, "ab");
    EXPECT_EQ(silent.heard, "");
}

TEST(PollLoop, wakesForTheEarliestDeadlineAndAsksForTheNextAnew) {
    PollLoop loop;
    int early = 0;
    int late = 0;
    std::optional soon{steady_clock::now() + milliseconds{1}};
    std::optional later{steady_clock::now() + std::chrono::hours{1}};
    const auto first = loop.attach(due(later, late));
    const auto second = loop.attach(due(soon, early));
    loop.runOnce();
    EXPECT_EQ(early, 1);
    soon = steady_clock::now();
    loop.runOnce();
    EXPECT_EQ(early, 2);
    EXPECT_EQ(late, 0);
}

TEST(PollLoop, tellsThatAPipesOtherEndIsGone) {
    PollLoop loop;
    Pipe pipe;
    short seen = 0;
    const auto attached = loop.attach(
        {pipe.source().interest, [&](short ready) { seen = static_cast<short>(seen | ready); }});
    pipe.ends.writer = {};
    loop.runOnce();
    EXPECT_NE(seen & POLLHUP, 0);
}

TEST(PollLoop, forgetsASourceWhoseAttachmentIsGone) {
    PollLoop loop;
    Pipe pipe;
    pipe.write("a");
    {
        const auto attached = loop.attach(pipe.source());
    }
    int count = 0;
    std::optional now{steady_clock::now()};
    const auto other = loop.attach(due(now, count));
    loop.runOnce();
    EXPECT_EQ(pipe.heard, "");
    EXPECT_EQ(count, 1);
}

TEST(PollLoop, letsASourceDetachItselfAndOthersAndAttachNewOnes) {
    PollLoop loop;
    Pipe pipe;
    Pipe other;
    pipe.write("a");
    other.write("b");
    PollLoop::Attachment own;
    PollLoop::Attachment others;
    PollLoop::Attachment added;
    own = loop.attach({pipe.source().interest, [&](short) {
                           own = {};
                           others = {};
                           added = loop.attach(other.source());
                       }});
    others = loop.attach({other.source().interest, [](short) { FAIL() << "it is detached"; }});
    loop.runOnce();
    EXPECT_EQ(other.heard, "");
    loop.runOnce();
    EXPECT_EQ(other.heard, "b");
}

TEST(PollLoop, endsBeforeAnotherSourceProceeds) {
    PollLoop loop;
    Pipe asking;
    Pipe behind;
    asking.write("a");
    behind.write("b");
    const auto first = loop.attach({asking.source().interest, [&](short) { loop.requestEnd(); }});
    const auto second = loop.attach(behind.source());
    loop.run();
    EXPECT_EQ(behind.heard, "");
}

}  // namespace
}  // namespace tallowbrook::host
