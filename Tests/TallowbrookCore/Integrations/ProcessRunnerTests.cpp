#include "Integrations/ProcessRunner.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <array>
#include <limits>
#include <thread>

#include "Support/ChildProcess.h"
#include "Support/EnvironmentVariable.h"
#include "Support/OrdinaryUser.h"
#include "Support/TemporaryDirectory.h"
#include "TestScript.h"

namespace tallowbrook {
namespace {

namespace fs = std::filesystem;
using Result = ProcessRunner::Result;

// Longer than any program here takes that is to end by itself.
constexpr Seconds patience{60};
constexpr std::int64_t cap = 65536;

// For programs that are to be ended: longer than any test waits, yet not for ever.
const std::string sleepLong = "sleep 300";
const std::string loopLong = "i=0; while [ $i -lt 3000 ]; do sleep 0.1; i=$((i+1)); done";
// Ends by itself only once its output is closed.
const std::string flood = "while :; do echo flood; done";
// Enough for a script to begin, on a busy machine too.
constexpr Seconds briefly{2};

std::optional<Result> run(const std::string& program, const std::vector<std::string>& words = {}) {
    return ProcessRunner::run(program, words, patience, cap);
}

class ProcessRunnerTest : public testing::Test {
 protected:
    std::string script(const std::string& body) const {
        return writeScript(temporary.path / "script", body);
    }
    std::optional<Result> runScript(const std::string& body, std::int64_t maxBytes = cap) const {
        return ProcessRunner::run(script(body), {}, patience, maxBytes);
    }

    std::optional<Result> runBriefly(const std::string& body) const {
        return ProcessRunner::run(script(body), {}, briefly, cap);
    }

    TemporaryDirectory temporary;
    fs::path note = temporary.path / "pid";
    std::string noteItself = "echo $$ > " + note.string() + "\n";
};

TEST_F(ProcessRunnerTest, givesBackTheStatusAndTheWholeOutputOfAProgram) {
    struct Row {
        const char* script;
        Result result;
    };
    for (const auto& [script, result] : {
             Row{"echo 1.2.3", {0, "1.2.3\n"}},
             Row{"printf '\\n  a \\n\\n'", {0, "\n  a \n\n"}},
             Row{":", {0, ""}},
             Row{"for i in 1 2 3 4 5; do printf $i; sleep 0.05; done", {0, "12345"}},
             Row{"cat; echo read", {0, "read\n"}},
             Row{"echo error >&2; echo output; echo error >&2", {0, "output\n"}},
             Row{"printf 'a\\377b\\342\\202'", {0, "a\uFFFDb\uFFFD"}},
             Row{"printf 'a\\000b'", {0, {"a\0b", 3}}},
         }) {
        EXPECT_EQ(runScript(script), result) << script;
        EXPECT_FALSE(hasChildren());
    }
}

TEST_F(ProcessRunnerTest, givesBackTheOutputOfAProgramThatFails) {
    EXPECT_EQ(runScript("echo text; exit 3"), (Result{3, "text\n"}));
    EXPECT_EQ(runScript("exit 255"), (Result{255, ""}));
    EXPECT_EQ(runScript("echo text; kill -9 $$"), (Result{9, "text\n"})) << "the signal's number";
    EXPECT_EQ(runScript("kill -TERM $$"), (Result{15, ""}));
}

TEST_F(ProcessRunnerTest, keepsTheFrontOfALongOutput) {
    const auto result = runScript(
        "head -c 60000 /dev/zero | tr '\\0' a\n"
        "head -c 40000 /dev/zero | tr '\\0' b");
    ASSERT_TRUE(result);
    EXPECT_TRUE(result->output == std::string(60000, 'a') + std::string(5536, 'b'));

    const std::string text = "printf 'v\\342\\202\\254'; exit 4";
    EXPECT_EQ(runScript(text, 5), (Result{4, "v€"}));
    EXPECT_EQ(runScript(text, 4), (Result{4, "v€"}));
    EXPECT_EQ(runScript(text, 3), (Result{4, "v\uFFFD"})) << "a character that the cap cuts";
    for (const auto none :
         {std::int64_t{0}, std::int64_t{-1}, std::numeric_limits<std::int64_t>::min()})
        EXPECT_EQ(runScript(text, none), (Result{4, ""}));
}

TEST_F(ProcessRunnerTest, theCallersOwnInputIsLeftAlone) {
    EXPECT_EQ(inChildProcess([&]() -> std::string {
                  std::array<int, 2> ends{};
                  if (pipe(ends.data()) != 0 || write(ends[1], "typed", 5) != 5) return "no pipe";
                  dup2(ends[0], STDIN_FILENO);
                  const auto result = runScript("cat; echo read");
                  return result ? result->output : "nothing";
              }),
              "read\n");
}

TEST_F(ProcessRunnerTest, inputAndErrorsAreTheNullDevice) {
    EXPECT_EQ(runScript("for n in 0 2; do [ /dev/fd/$n -ef /dev/null ] && echo $n; done"),
              (Result{0, "0\n2\n"}));
}

TEST_F(ProcessRunnerTest, handsOverPathAndArgumentsAsTheyAre) {
    using namespace std::string_literals;
    const auto program =
        script("printf '%s' \"$0\" $#; for word; do printf '<%s>' \"$word\"; done");
    EXPECT_EQ(run(program), (Result{0, program + "0"}));
    EXPECT_EQ(run(program, {"a  b", "", "*", "$HOME", "`id`", "'\"\\", "é\n"}),
              (Result{0, program + "7<a  b><><*><$HOME><`id`><'\"\\><é\n>"}));
    EXPECT_EQ(run(program + "\0x"s), std::nullopt) << "the system would cut the word short";
    EXPECT_EQ(run(program, {"a\0b"s}), std::nullopt);
    const EnvironmentVariable path{"PATH", temporary.path.string()};
    EXPECT_EQ(run("script"), std::nullopt) << "the path is not searched";
}

TEST_F(ProcessRunnerTest, theProgramInheritsEnvironmentAndWorkingDirectory) {
    const EnvironmentVariable variable{"TALLOWBROOK_TEST", "a value"};
    EXPECT_EQ(runScript("printf '%s' \"$TALLOWBROOK_TEST\""), (Result{0, "a value"}));
    EXPECT_EQ(runScript("/bin/pwd -P"), (Result{0, fs::current_path().string() + "\n"}));
}

TEST_F(ProcessRunnerTest, theProgramInheritsNoOtherOpenFile) {
    constexpr int left = 77;
    ASSERT_EQ(dup2(open("/dev/null", O_RDONLY), left), left);
    EXPECT_EQ(runScript("for n in 0 1 2 3 4 5 6 7 8 9 77; do\n"
                        "    [ -e /dev/fd/$n ] && printf $n\n"
                        "done\n"
                        "exit 0"),
              (Result{0, "012"}));
    close(left);
}

TEST_F(ProcessRunnerTest, aProgramThatCannotBeStartedGivesNothing) {
    writeContents(temporary.path / "plain", "#!/bin/sh\necho plain\n");
    writeContents(temporary.path / "shapeless", "echo shapeless\n");
    chmod((temporary.path / "shapeless").c_str(), 0700);
    writeContents(temporary.path / "homeless", "#!/nonexistent/interpreter\n");
    chmod((temporary.path / "homeless").c_str(), 0700);
    fs::create_symlink("loop", temporary.path / "loop");
    for (const char* name : {"missing", "plain", "shapeless", "homeless", "loop", ".", "plain/x"})
        EXPECT_EQ(run(temporary.path / name), std::nullopt) << name;
    EXPECT_EQ(run(""), std::nullopt);
    EXPECT_FALSE(hasChildren());
}

TEST_F(ProcessRunnerTest, aProgramThatTakesTooLongGivesNothingAndIsEnded) {
    EXPECT_EQ(runBriefly(noteItself + "echo partial; exec " + sleepLong), std::nullopt);
    const NotedProcess program{note};
    waitUntil([&] { return !program.isThere(); });
    EXPECT_FALSE(hasChildren());
}

TEST_F(ProcessRunnerTest, nothingComesOfWhatAProgramPrintsWhenAskedToEnd) {
    EXPECT_EQ(runBriefly("trap 'echo late; exit 0' TERM\n" + loopLong), std::nullopt);
    waitUntil([] { return !hasChildren(); });
}

TEST_F(ProcessRunnerTest, aProgramIsEndedEvenWhereTheCallerIgnoresAndBlocksTheRequest) {
    EXPECT_EQ(inChildProcess([&]() -> std::string {
                  sigset_t request;
                  sigemptyset(&request);
                  sigaddset(&request, SIGTERM);
                  sigprocmask(SIG_BLOCK, &request, nullptr);
                  signal(SIGTERM, SIG_IGN);
                  if (ProcessRunner::run("/bin/sleep", {"300"}, Seconds{0.2}, cap)) return "result";
                  waitUntil([] { return !hasChildren(); });
                  return hasChildren() ? "still there" : "ended";
              }),
              "ended");
}

TEST_F(ProcessRunnerTest, aProgramThatIgnoresTheRequestToEndIsLeftAloneAndReapedWhenItExits) {
    EXPECT_EQ(runBriefly("trap '' TERM\n" + noteItself + loopLong), std::nullopt);
    const NotedProcess program{note};
    EXPECT_TRUE(program.isThere());
    program.kill();
    waitUntil([&] { return !program.isThere(); });
    EXPECT_FALSE(hasChildren());
}

TEST_F(ProcessRunnerTest, aProgramThatPrintsForeverAndIgnoresTheRequestHoldsUpNoCaller) {
    EXPECT_EQ(runBriefly("trap '' TERM\n" + noteItself + flood), std::nullopt);
    const NotedProcess program{note};
    EXPECT_TRUE(program.isThere());
    program.kill();
    waitUntil([] { return !hasChildren(); });
}

TEST_F(ProcessRunnerTest, aChildOfTheProgramThatKeepsTheOutputOpenHoldsUpNoCaller) {
    EXPECT_EQ(runBriefly(sleepLong + " & echo $! > " + note.string()), std::nullopt);
    const NotedProcess grandchild{note};
    waitUntil([] { return !hasChildren(); });
    EXPECT_TRUE(grandchild.isThere()) << "the program was reaped before the output's end";
}

TEST_F(ProcessRunnerTest, aChildOfTheProgramThatClosesTheOutputInTimeIsPartOfIt) {
    EXPECT_EQ(runScript("(sleep 0.3; echo late) & echo early; exit 6"),
              (Result{6, "early\nlate\n"}));
}

TEST_F(ProcessRunnerTest, aProgramThatClosesItsOutputIsWaitedForBeyondTheTimeout) {
    EXPECT_EQ(runBriefly("echo done; exec >&-; sleep 3; exit 5"), (Result{5, "done\n"}));
}

TEST_F(ProcessRunnerTest, anyNumberMayBeATimeout) {
    for (const double none : {0.0, -1.0, -1e300, std::numeric_limits<double>::quiet_NaN()})
        EXPECT_EQ(ProcessRunner::run("/bin/sleep", {"300"}, Seconds{none}, cap), std::nullopt)
            << none;
    for (const double endless : {1e300, std::numeric_limits<double>::infinity()})
        EXPECT_EQ(ProcessRunner::run(script("echo ran"), {}, Seconds{endless}, cap),
                  (Result{0, "ran\n"}))
            << endless;
    waitUntil([] { return !hasChildren(); });
}

TEST_F(ProcessRunnerTest, callsAtOnceDoNotMix) {
    const auto program = script("for i in 1 2 3 4 5; do printf \"$1\"; done; exit $1");
    const auto runRepeatedly = [&](int number) {
        const std::string word = std::to_string(number);
        for (int i = 0; i < 10; ++i)
            EXPECT_EQ(run(program, {word}), (Result{number, word + word + word + word + word}));
    };
    std::vector<std::thread> callers;
    for (int number = 1; number <= 6; ++number) callers.emplace_back(runRepeatedly, number);
    for (auto& caller : callers) caller.join();
    EXPECT_FALSE(hasChildren());
}

TEST_F(ProcessRunnerTest, callsThatAreGivenUpDisturbNoOthers) {
    const auto stubborn = script(
        "trap '' TERM; i=0; while [ $i -lt 30 ]; do\n"
        "    echo flood; sleep 0.1; i=$((i+1))\n"
        "done");
    const auto quick = writeScript(temporary.path / "quick", "echo quick");
    std::vector<std::thread> callers;
    for (int i = 0; i < 4; ++i)
        callers.emplace_back(
            [&] { EXPECT_EQ(ProcessRunner::run(stubborn, {}, Seconds{0.1}, cap), std::nullopt); });
    for (int i = 0; i < 20; ++i) EXPECT_EQ(run(quick), (Result{0, "quick\n"}));
    for (auto& caller : callers) caller.join();
    waitUntil([] { return !hasChildren(); });
}

TEST_F(ProcessRunnerTest, leavesSignalsToTheThreadsOfTheCaller) {
    EXPECT_EQ(inChildProcess([&]() -> std::string {
                  runBriefly("trap '' TERM; sleep 5");
                  sigset_t blocked;
                  sigemptyset(&blocked);
                  sigaddset(&blocked, SIGUSR1);
                  sigprocmask(SIG_BLOCK, &blocked, nullptr);
                  signal(SIGUSR1, SIG_DFL);
                  // Would end this process if one of the other threads took it.
                  kill(getpid(), SIGUSR1);
                  usleep(100'000);
                  sigset_t pending;
                  sigpending(&pending);
                  return sigismember(&pending, SIGUSR1) == 1 ? "kept" : "taken";
              }),
              "kept");
}

TEST_F(ProcessRunnerTest, theCallersOwnBlockedSignalsStayAsTheyWere) {
    sigset_t before;
    sigset_t after;
    sigprocmask(SIG_SETMASK, nullptr, &before);
    runScript(":");
    sigprocmask(SIG_SETMASK, nullptr, &after);
    for (const int signal : {SIGINT, SIGTERM, SIGCHLD, SIGALRM})
        EXPECT_EQ(sigismember(&after, signal), sigismember(&before, signal));
}

TEST_F(ProcessRunnerTest, worksWithoutStandardStreams) {
    const auto program = script(
        "for n in 0 2; do [ /dev/fd/$n -ef /dev/null ] && echo $n; done\n"
        "[ -e /dev/fd/3 ] || echo none");
    EXPECT_EQ(inChildProcess([&]() -> std::string {
                  for (const int stream : {0, 1, 2}) close(stream);
                  const auto result = run(program);
                  return result ? result->output : "nothing";
              }),
              "0\n2\nnone\n");
}

TEST_F(ProcessRunnerTest, givesNothingWhereNoFileCanBeOpened) {
    const auto program = script("echo ran");
    EXPECT_EQ(inChildProcess([&]() -> std::string {
                  const rlimit none{3, 3};
                  if (setrlimit(RLIMIT_NOFILE, &none) != 0) return "no limit";
                  return run(program) ? "ran" : "nothing";
              }),
              "nothing");
}

TEST_F(ProcessRunnerTest, givesNothingWhereNoThreadOrProcessCanBeStarted) {
    const auto user = OrdinaryUser::find();
    if (!user) GTEST_SKIP() << OrdinaryUser::missing;
    // Enough for neither thread, for the first one, for both but not for the program.
    for (const rlim_t most : {1U, 2U, 3U})
        EXPECT_EQ(inChildProcess([&]() -> std::string {
                      const rlimit limit{most, most};
                      if (!user->become()) return "still another user";
                      if (setrlimit(RLIMIT_NPROC, &limit) != 0) return "no limit";
                      return run("/bin/echo") ? "ran" : "nothing";
                  }),
                  "nothing")
            << most;
}

TEST_F(ProcessRunnerTest, givesNothingWhereTheSystemReapsChildrenByItself) {
    EXPECT_EQ(inChildProcess([&]() -> std::string {
                  signal(SIGCHLD, SIG_IGN);
                  return run("/bin/echo") ? "result" : "nothing";
              }),
              "nothing");
}

}  // namespace
}  // namespace tallowbrook
