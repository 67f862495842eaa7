#include "Focus/BoundedRun.h"

#include <gtest/gtest.h>

#include <csignal>

#include "Support/TemporaryDirectory.h"
#include "TallowbrookCore/Integrations/TestScript.h"

namespace tallowbrook::host {
namespace {

struct BoundedRun : testing::Test {
    TemporaryDirectory directory;
    std::filesystem::path note = directory.path / "pid";

    std::optional<ProcessRunner::Result> run(const std::string& body, Seconds timeout = Seconds{60},
                                             std::int64_t maxBytes = 65536) const {
        return runBounded(writeScript(directory.path / "program", body), {"one", "two words"},
                          timeout, maxBytes);
    }

    // Runs until the program has told its number, and ends it if the run does not.
    void expectGivenUp(const std::string& body) const {
        EXPECT_EQ(run("echo $$ > " + note.string() + "\n" + body, Seconds{0.5}), std::nullopt);
        const NotedProcess program{note};
        waitUntil([&] { return !program.isThere(); });
    }
};

TEST_F(BoundedRun, givesWhatTheProgramPrintsAndItsStatus) {
    EXPECT_EQ(run("echo \"$2\"; cat; echo hidden >&2; exit 3"),
              (ProcessRunner::Result{3, "two words\n"}));
    EXPECT_EQ(run("kill -9 $$"), (ProcessRunner::Result{SIGKILL, ""}));
}

TEST_F(BoundedRun, keepsTheFrontOfALongOutputAndReadsItAll) {
    EXPECT_EQ(run("head -c 300000 /dev/zero | tr '\\0' x; exit 4", Seconds{60}, 5),
              (ProcessRunner::Result{4, "xxxxx"}));
}

TEST_F(BoundedRun, ofNoSuchProgramIsAbsent) {
    EXPECT_EQ(runBounded((directory.path / "none").string(), {}, Seconds{60}, 10), std::nullopt);
    EXPECT_EQ(runBounded(std::string{"/bin/echo\0x", 11}, {}, Seconds{60}, 10), std::nullopt);
}

TEST_F(BoundedRun, endsAProgramThatPrintsNothing) { expectGivenUp("exec sleep 1000"); }

TEST_F(BoundedRun, endsAProgramThatClosesItsOutputAndLivesOn) {
    expectGivenUp("exec 1>&-\nexec sleep 1000");
}

TEST_F(BoundedRun, endsAProgramThatWillNotBeAsked) {
    expectGivenUp("trap '' TERM\nexec 1>&-\nwhile :; do sleep 0.1; done");
}

}  // namespace
}  // namespace tallowbrook::host
