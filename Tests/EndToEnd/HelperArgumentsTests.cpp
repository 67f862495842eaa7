#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "Support/FileContents.h"
#include "System/FileDescriptor.h"
#include "TestHome.h"

namespace tallowbrook {
namespace {

using Messages = std::vector<std::string>;
using Words = std::vector<std::string>;

const Messages unknownSource{"helper: unknown or missing source argument; event ignored"};
const ProgramResult versionLine{.status = 0, .output = "tallowbrook-hook 0.1.0\n"};

ProgramResult leaving(ProgramResult result, const std::string& input) {
    result.unreadInput = input.size();
    return result;
}

TEST(HelperArguments, anUnknownOrMissingSourceIsLoggedAndTheInputLeftAlone) {
    struct Row {
        const char* why;
        Words arguments;
    };
    const std::string payload = claudePayload("Stop");
    for (const auto& [why, arguments] : {
             Row{"nothing at all", {}},
             Row{"only an option", {"--test"}},
             Row{"another case", {"Claude-Code"}},
             Row{"another case", {"CODEX"}},
             Row{"a blank behind it", {"codex "}},
             Row{"empty", {""}},
             Row{"the beginning of one", {"codex-"}},
             Row{"an unknown option is a positional like others", {"--verbose", "codex"}},
             Row{"so is a single dash", {"-", "codex"}},
             Row{"and two", {"--", "codex"}},
             Row{"options have no other spelling", {"--test=1", "codex"}},
             Row{"nor case", {"--TEST", "codex"}},
             Row{"nor is --version a part of another word", {"--versions", "codex"}},
             Row{"only the first positional counts", {"other", "claude-code", payload}},
         }) {
        const TestHome home;
        EXPECT_EQ(home.hook(arguments, payload), leaving(quiet, payload)) << why;
        EXPECT_EQ(home.logged(), unknownSource) << why;
        EXPECT_FALSE(exists(home.paths.spoolDirectory())) << why;
    }
}

TEST(HelperArguments, eachSourceStandsForItsAgentAndChannel) {
    const TestHome home;
    const std::string notify = R"({"type":"agent-turn-complete","thread-id":"T1"})";
    EXPECT_EQ(home.hook({"claude-code"}, claudePayload("Stop")), quiet);
    EXPECT_EQ(home.hook({"codex"}, claudePayload("Stop")), quiet);
    EXPECT_EQ(home.hook({"codex-notify", notify}), quiet);

    const auto events = home.spooled();
    ASSERT_EQ(events.size(), 3U);
    EXPECT_EQ(events[0].provider, Provider::claudeCode);
    EXPECT_EQ(events[0].channel, EventChannel::hook);
    EXPECT_EQ(events[1].provider, Provider::codexCLI);
    EXPECT_EQ(events[1].channel, EventChannel::hook);
    EXPECT_EQ(events[2].provider, Provider::codexCLI);
    EXPECT_EQ(events[2].channel, EventChannel::notify);
    EXPECT_EQ(events[2].sessionID, "T1");
    EXPECT_EQ(home.logged(), Messages{});
}

TEST(HelperArguments, testMarksTheEventWhereverItStands) {
    const std::string notify = R"({"type":"agent-turn-complete"})";
    struct Row {
        Words arguments;
        EventOrigin origin;
    };
    for (const auto& [arguments, origin] : {
             Row{{"claude-code"}, EventOrigin::live},
             Row{{"--test", "claude-code"}, EventOrigin::test},
             Row{{"claude-code", "--test"}, EventOrigin::test},
             Row{{"--test", "codex", "--test"}, EventOrigin::test},
             Row{{"codex-notify", notify, "--test"}, EventOrigin::test},
             Row{{"codex-notify", "--test", notify}, EventOrigin::test},
         }) {
        const TestHome home;
        EXPECT_EQ(home.hook(arguments, claudePayload("Stop")).status, 0);
        const auto events = home.spooled();
        ASSERT_EQ(events.size(), 1U) << testing::PrintToString(arguments);
        EXPECT_EQ(events[0].origin, origin) << testing::PrintToString(arguments);
    }
}

TEST(HelperArguments, unknownOptionsBehindTheSourceDoNoHarm) {
    const TestHome home;
    EXPECT_EQ(home.hook({"claude-code", "--verbose", "-x", "word"}, claudePayload("Stop")), quiet);
    EXPECT_EQ(home.spooled().size(), 1U);
}

TEST(HelperArguments, notifyTakesTheLastPositionalAsItsPayload) {
    const std::string first = R"({"type":"agent-turn-complete","thread-id":"first"})";
    const std::string second = R"({"type":"agent-turn-complete","thread-id":"second"})";
    struct Row {
        Words arguments;
        std::string sessionID;
    };
    for (const auto& [arguments, sessionID] : {
             Row{{"codex-notify", first}, "first"},
             Row{{"codex-notify", first, second}, "second"},
             Row{{"codex-notify", "--unknown", second}, "second"},
         }) {
        const TestHome home;
        // The standard input is not this source's business.
        EXPECT_EQ(home.hook(arguments, "left"), leaving(quiet, "left"));
        const auto events = home.spooled();
        ASSERT_EQ(events.size(), 1U);
        EXPECT_EQ(events[0].sessionID, sessionID);
        EXPECT_EQ(home.logged(), Messages{});
    }
}

TEST(HelperArguments, notifyWithoutAPayloadIsLoggedAsEmpty) {
    for (const auto& arguments :
         {Words{"codex-notify"}, Words{"codex-notify", ""}, Words{"codex-notify", "x", ""},
          Words{"--test", "codex-notify"}}) {
        const TestHome home;
        EXPECT_EQ(home.hook(arguments), quiet);
        EXPECT_EQ(home.logged(),
                  Messages{"helper: codex-notify normalization failed: empty-payload"});
    }
}

TEST(HelperArguments, notifyTakesWhatTheSystemCanPassAsAnArgument) {
    const TestHome home;
    const std::string payload = R"({"type":"agent-turn-complete","thread-id":"T1","text":")" +
                                std::string(100'000, 'x') + R"("})";
    EXPECT_EQ(home.hook({"codex-notify", payload}), quiet);
    EXPECT_EQ(home.spooled().size(), 1U);
}

TEST(HelperArguments, versionPrintsItsLineAndReadsNothing) {
    const std::string payload = claudePayload("Stop");
    for (const auto& arguments :
         {Words{"--version"}, Words{"--version", "claude-code"}, Words{"claude-code", "--version"},
          Words{"--test", "nothing", "--version"}, Words{"--version", "--version"}}) {
        const TestHome home;
        // The input that never ends would hold back a helper that reads it.
        ProgramCall call = home.hookCall(arguments, payload);
        call.inputStaysOpen = true;
        EXPECT_EQ(run(call), leaving(versionLine, payload)) << testing::PrintToString(arguments);
        EXPECT_FALSE(exists(home.paths.home));
    }
}

TEST(HelperArguments, versionWithNowhereToPrintStillEndsWell) {
    const TestHome home;
    ProgramCall call = home.plainHookCall({"--version"});
    call.prepare = [] { close(STDOUT_FILENO); };
    EXPECT_EQ(run(call), quiet);
    // A pipe that nobody reads: the write would raise SIGPIPE.
    call.prepare = [] {
        int ends[2];
        if (pipe(ends) == 0) dup2(ends[1], STDOUT_FILENO);
        close(ends[0]);
        close(ends[1]);
    };
    EXPECT_EQ(run(call), quiet);
}

TEST(HelperArguments, homeMovesTheWholeTree) {
    const TestHome home;
    const TallowbrookPaths other{home.directory.path / "a" / "b c" / "\xC3\xA9"};
    EXPECT_EQ(run(home.plainHookCall({"--home", other.home.string(), "claude-code"},
                                     claudePayload("Stop"))),
              quiet);
    EXPECT_EQ(run(home.plainHookCall({"claude-code", "--home", other.home.string() + "/"}, "{")),
              quiet);
    EXPECT_EQ(TestHome::spooled(other).size(), 1U);
    EXPECT_EQ(TestHome::logged(other),
              Messages{"helper: claude-code normalization failed: invalid-json"});
    EXPECT_FALSE(exists(home.directory.path / "user" / ".local"));
}

TEST(HelperArguments, aRelativeHomeLiesBelowTheCurrentDirectory) {
    for (const char* name : {"near", "./near", "far/../near", "near/"}) {
        const TestHome home;
        EXPECT_EQ(run(home.plainHookCall({"--home", name, "claude-code"}, claudePayload("Stop"))),
                  quiet);
        EXPECT_EQ(TestHome::spooled({home.directory.path / "near"}).size(), 1U) << name;
    }
}

TEST(HelperArguments, ofTwoHomesTheLastOneCounts) {
    const TestHome home;
    EXPECT_EQ(run(home.plainHookCall({"--home", "one", "claude-code", "--home", "two"},
                                     claudePayload("Stop"))),
              quiet);
    EXPECT_FALSE(exists(home.directory.path / "one"));
    EXPECT_EQ(TestHome::spooled({home.directory.path / "two"}).size(), 1U);
}

TEST(HelperArguments, homeTakesTheNextWordWhateverItIs) {
    for (const char* word : {"--test", "--version", "--home", "claude-code", "-x"}) {
        const TestHome home;
        EXPECT_EQ(run(home.plainHookCall({"--home", word, "claude-code"}, claudePayload("Stop"))),
                  quiet)
            << word;
        const auto events = TestHome::spooled({home.directory.path / word});
        ASSERT_EQ(events.size(), 1U) << word;
        EXPECT_EQ(events[0].origin, EventOrigin::live) << word;
    }
}

TEST(HelperArguments, homeAfterTheVersionIsNotLookedAt) {
    const TestHome home;
    EXPECT_EQ(run(home.plainHookCall({"--version", "--home", "near", "claude-code"})), versionLine);
    EXPECT_FALSE(exists(home.directory.path / "near"));
}

}  // namespace
}  // namespace tallowbrook
