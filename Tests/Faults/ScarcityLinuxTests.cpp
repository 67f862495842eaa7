// A limit on the size of files, and too few descriptors, for the helper and for the host.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <functional>

#include "Domain/EventCoding.h"
#include "EndToEnd/TestHome.h"
#include "HostPromises.h"
#include "SpoolContents.h"
#include "Support/FileContents.h"
#include "TestBuild.h"

namespace tallowbrook {
namespace {

ProgramCall limited(ProgramCall call, decltype(RLIMIT_FSIZE) resource, rlim_t most) {
    call.prepare = [resource, most] {
        // A descriptor that the test itself was started with would count as well.
        close_range(STDERR_FILENO + 1, ~0U, CLOSE_RANGE_CLOEXEC);
        const rlimit limit{most, most};
        setrlimit(resource, &limit);
    };
    return call;
}

ProgramCall eventOn(const TestHome& home) {
    return home.hookCall({"claude-code"}, claudePayload("Stop", "victim"));
}

// What was there is still there, the event came or the log says why not, and the next one comes.
void expectUnharmed(const TestHome& home, bool mayLog) {
    auto contents = SpoolContents::of(home.paths);
    EXPECT_EQ(contents.invalidLines, std::vector<std::string>{});
    EXPECT_EQ(contents.tornEnds, std::vector<std::string>{});
    EXPECT_EQ(contents.sessions().count("earlier"), 1U);
    if (mayLog) {
        EXPECT_EQ(contents.sessions().count("victim") + home.logged().size(), 1U);
    }
    EXPECT_TRUE(isSpoolFree(home.paths));
    expectOwnerOnlyModes(home.paths);
    home.claude("Stop", "next");
    contents = SpoolContents::of(home.paths);
    EXPECT_EQ(contents.sessions().count("earlier"), 1U);
    EXPECT_EQ(contents.sessions().count("next"), 1U);
}

TEST(HelperScarcity, aFileSizeLimitTearsNoLine) {
    for (const std::size_t room : {0U, 1U, 2U, 50U, 100U, 200U, 250U, 300U, 350U, 1000U}) {
        SCOPED_TRACE(room);
        const TestHome home;
        home.claude("Stop", "earlier");
        const auto size = file_size(home.paths.activeSpoolFile());
        EXPECT_EQ(run(limited(eventOn(home), RLIMIT_FSIZE, size + room)), quiet);
        expectUnharmed(home, true);
    }
}

TEST(HelperScarcity, aFileSizeLimitBelowWhatIsThereTakesNothing) {
    for (const rlim_t most : {smallestFileSizeLimit, 1U, 50U}) {
        SCOPED_TRACE(most);
        const TestHome home;
        home.claude("Stop", "earlier");
        EXPECT_EQ(run(limited(eventOn(home), RLIMIT_FSIZE, most)), quiet);
        EXPECT_EQ(SpoolContents::of(home.paths).sessions().count("victim"), 0U);
        expectUnharmed(home, false);
    }
}

TEST(HelperScarcity, tooFewDescriptorsAreBorneInSilence) {
    // With three all are taken by the standard streams, and the log needs one as well.
    for (const rlim_t most : {0U, 1U, 2U, 3U, 4U, 5U, 6U}) {
        SCOPED_TRACE(most);
        const TestHome home;
        home.claude("Stop", "earlier");
        const ProgramResult result = run(limited(eventOn(home), RLIMIT_NOFILE, most));
        if (isSanitized && result.status != 0) continue;
        EXPECT_EQ(result, quiet);
        expectUnharmed(home, most > 3);
    }
}

class HostScarcity : public testing::TestWithParam<Preparation> {
 protected:
    void SetUp() override {
        GetParam().apply(prepared);
        promises = HostPromises::of(prepared);
    }

    // Whether the program comes as far as its own first step.
    bool starts(decltype(RLIMIT_FSIZE) resource, rlim_t most) const {
        return run(limited(prepared.hostCall({"--version"}), resource, most)).status == 0;
    }

    // Tells whether all was done.
    bool expectPromisesKept(decltype(RLIMIT_FSIZE) resource, rlim_t most) const {
        SCOPED_TRACE(most);
        const TestHome home;
        copyHome(prepared, home);
        const ProgramResult result =
            run(limited(home.hostCall({"watch", "--once"}), resource, most));
        promises.expectHonestStatus(home, result);
        HostPromises::expectSentence(result);
        promises.expectNothingLost(home, result);
        promises.expectGoodNextRun(home);
        return result.status == 0;
    }

    TestHome prepared;
    HostPromises promises;
};

TEST_P(HostScarcity, aFileSizeLimitIsSaidAndTakesNoEvent) {
    int failures = 0;
    rlim_t most = smallestFileSizeLimit;
    for (; !expectPromisesKept(RLIMIT_FSIZE, most) && most < 1'000'000; most += 3000) ++failures;
    EXPECT_GT(failures, 0) << "the limit was never met";
    EXPECT_LT(most, 1'000'000U) << "no limit was high enough";
}

TEST_P(HostScarcity, tooFewDescriptorsAreSaidAndTakeNoEvent) {
    if (isSanitized) GTEST_SKIP() << "a sanitizer needs descriptors for its own checks";
    rlim_t most = 3;
    while (!starts(RLIMIT_NOFILE, most) && most < 100) ++most;
    int failures = 0;
    for (; !expectPromisesKept(RLIMIT_NOFILE, most) && most < 100; ++most) ++failures;
    EXPECT_GT(failures, 0) << "the limit was never met";
    EXPECT_LT(most, 100U) << "no limit was high enough";
}

INSTANTIATE_TEST_SUITE_P(, HostScarcity, testing::ValuesIn(preparations),
                         [](const auto& test) { return test.param.name; });

}  // namespace
}  // namespace tallowbrook
