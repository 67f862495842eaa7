// The programs that show notifications on a Mac, stood in for by scripts that write down how they
// were called.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "ChannelLoop.h"
#include "Channels/AlerterChannel.h"
#include "Channels/OsascriptChannel.h"
#include "Channels/ProgramText.h"
#include "Channels/TerminalNotifierChannel.h"
#include "Support/EnvironmentVariable.h"
#include "Support/RepeatedText.h"
#include "Support/StandInProgram.h"
#include "Support/TemporaryDirectory.h"

namespace tallowbrook::host {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using Kind = ChannelEvent::Kind;
using Events = std::vector<ChannelEvent>;
using Texts = std::vector<std::string>;

struct MacPrograms : testing::Test {
    TemporaryDirectory directory;
    EnvironmentVariable path{"PATH", directory.path.string() + ":/usr/bin:/bin"};
    EnvironmentVariable ssh{"SSH_CONNECTION", std::nullopt};
    Texts said;
    SayWhy say = [this](const Sentence& sentence) { said.push_back(sentence.text()); };

    // `script` runs after the arguments were written down, a line each, and an empty one.
    void install(const std::string& program, const std::string& script) const {
        makeStandIn(
            directory.path / program,
            R"(test "$1" = -version -o "$1" = --help || printf '%s\n' "$@" '' >> "$0.calls")"
            "\n" +
                script);
    }

    std::string callsOf(const std::string& program) const {
        return contentsOf(directory.path / (program + ".calls"));
    }

    // With the program's answer.
    static Channel prepared(Channel channel) {
        EXPECT_FALSE(channel.state().isUsable);
        channel.prepare();
        loopUntil(channel, [&] { return !channel.state().isFindingOut; });
        return channel;
    }

    static Delivery delivery(std::int64_t number = 1, const std::string& body = "proj — waiting.",
                             const std::string& session = "claudeCode|S1") {
        return {number,
                {.kind = NotificationKind::attention,
                 .title = "Claude Code needs permission",
                 .body = body,
                 .sessionStorageID = session,
                 .eventID = {},
                 .dedupeKey = {},
                 .playSound = true}};
    }
};

const std::string oddText = "\"quoted\" $(reboot) `x` \\ <b>&amp; \x1b\n😀";
const std::string oddTextPrinted = "\xE2\x80\x8B\"quoted\" $(reboot) `x` \\ <b>&amp;  😀";

TEST(ProgramText, isTakenForNothingButAText) {
    EXPECT_EQ(ProgramText::argument("proj — waiting."), "proj — waiting.");
    EXPECT_EQ(ProgramText::argument("-remove"), "\xE2\x80\x8B-remove");
    EXPECT_EQ(ProgramText::argument("(a, b)"), "\xE2\x80\x8B(a, b)");
    EXPECT_EQ(ProgramText::argument("😀"), "😀");
    EXPECT_EQ(ProgramText::argument(""), "");
    EXPECT_LT(ProgramText::argument(repeated("x", 10240)).size(), 600U);
    EXPECT_EQ(ProgramText::quoted("it's $HOME"), "'it'\\''s $HOME'");
}

struct OsascriptChannel : MacPrograms {};

TEST_F(OsascriptChannel, handsTheTextsOverAsArguments) {
    install("osascript", "");
    const auto channel = makeOsascriptChannel(say);
    EXPECT_TRUE(channel.state().isUsable);
    EXPECT_FALSE(channel.state().clicks);
    channel.begin(delivery(1, oddText));
    EXPECT_EQ(eventsOf(channel, 1), (Events{{Kind::handedOver, 1}}));
    EXPECT_EQ(callsOf("osascript"),
              "-e\non run argv\n-e\ndisplay notification (item 2 of argv) with title (item 1 of "
              "argv) sound name \"Glass\"\n-e\nend run\nClaude Code needs permission\n" +
                  oddTextPrinted + "\n\n");
}

TEST_F(OsascriptChannel, saysWhatFailsAndIsNotUsableWhereItIsMissing) {
    install("osascript", "exit 1");
    const auto channel = makeOsascriptChannel(say);
    channel.begin(delivery());
    EXPECT_EQ(eventsOf(channel, 1), (Events{{Kind::refused, 1}}));
    EXPECT_EQ(said, Texts{"osascript could not tell you: it ended with status 1."});
    const EnvironmentVariable empty{"PATH", directory.path / "nowhere"};
    EXPECT_FALSE(makeOsascriptChannel(say).state().isUsable);
}

TEST_F(OsascriptChannel, isNotUsedAcrossSSH) {
    install("osascript", "");
    const EnvironmentVariable connection{"SSH_CONNECTION", "10.0.0.1 50000 10.0.0.2 22"};
    EXPECT_FALSE(makeOsascriptChannel(say).state().isUsable);
}

struct TerminalNotifierChannel : MacPrograms {
    Channel channel() const {
        return prepared(makeTerminalNotifierChannel(say, [](const std::string& session) {
            return "/opt/tallowbrook focus " + ProgramText::quoted(session);
        }));
    }
};

TEST_F(TerminalNotifierChannel, replacesTakesBackAndFocusesBySession) {
    install("terminal-notifier", "echo 'terminal-notifier 3.0.0.'");
    const auto channel = this->channel();
    EXPECT_TRUE(channel.state().isUsable) << channel.state().reason;
    channel.begin(delivery(1, oddText));
    EXPECT_EQ(eventsOf(channel, 1), (Events{{Kind::handedOver, 1}}));
    const std::string told =
        "-title\nClaude Code needs permission\n-message\n" + oddTextPrinted +
        "\n-group\ntallowbrook.claudeCode|S1\n-sound\ndefault\n-execute\n/opt/tallowbrook focus "
        "'claudeCode|S1'\n\n";
    EXPECT_EQ(callsOf("terminal-notifier"), told);
    channel.withdraw("claudeCode|S1");
    const auto both = told + "-remove\ntallowbrook.claudeCode|S1\n\n";
    loopUntil(channel, [&] { return callsOf("terminal-notifier") == both; });
}

TEST_F(TerminalNotifierChannel, isNotUsedBeforeTheVersionInWhichAClickWorks) {
    for (const char* version : {"echo 'terminal-notifier 2.0.0.'", "exit 1", "exec sleep 1000",
                                "echo terminal-notifier", "kill -9 $$"}) {
        install("terminal-notifier", version);
        EXPECT_FALSE(channel().state().isUsable) << version;
    }
    install("terminal-notifier", "echo 'terminal-notifier 2.0.0.'");
    EXPECT_EQ(channel().state().reason,
              "terminal-notifier is older than 3.0.0, where a click does nothing");
}

struct AlerterChannel : MacPrograms {
    // Where the test says what the user does.
    std::string answers(const std::string& output) const {
        return "test \"$1\" = --help && exit\nwhile test ! -e " +
               (directory.path / "act").string() + "; do sleep 0.01; done; echo '" + output + "'";
    }
    void act() const { writeContents(directory.path / "act", ""); }
};

TEST_F(AlerterChannel, tellsOfTheClickThatComesLater) {
    for (const char* output : {"@CONTENTCLICKED", "@ACTIONCLICKED", "Show",
                               R"({"activationType":"actionClicked","activationValue":"Show"})"}) {
        std::filesystem::remove(directory.path / "act");
        install("alerter", answers(output));
        const auto channel = prepared(makeAlerterChannel(say));
        channel.begin(delivery());
        EXPECT_EQ(eventsOf(channel, 1), (Events{{Kind::handedOver, 1}}));
        act();
        EXPECT_EQ(eventsOf(channel, 1), (Events{{Kind::clicked, 1}})) << output;
    }
    EXPECT_THAT(callsOf("alerter"),
                testing::StartsWith("-title\nClaude Code needs permission\n-message\n"
                                    "proj — waiting.\n-actions\nShow\n-sound\ndefault\n\n"));
}

TEST_F(AlerterChannel, tellsOfOneThatWasClosed) {
    for (const char* output : {"@CLOSED", "@TIMEOUT", "", R"({"activationType":"closed"})"}) {
        std::filesystem::remove(directory.path / "act");
        install("alerter", answers(output));
        const auto channel = prepared(makeAlerterChannel(say));
        channel.begin(delivery());
        act();
        EXPECT_EQ(eventsOf(channel, 2), (Events{{Kind::handedOver, 1}, {Kind::closed, 1}}));
    }
}

TEST_F(AlerterChannel, spellsItsOptionsAsTheProgramDoes) {
    install("alerter", "test \"$1\" = --help && echo '  --message <message>'; exit 0");
    const auto channel = prepared(makeAlerterChannel(say));
    channel.begin(delivery());
    eventsOf(channel, 2);
    EXPECT_THAT(callsOf("alerter"), testing::StartsWith("--title\nClaude Code needs permission\n"
                                                        "--message\n"));
}

TEST_F(AlerterChannel, takesBackByEndingTheProgram) {
    const auto ended = (directory.path / "ended").string();
    install("alerter", "test \"$1\" = --help && exit\ntrap 'echo @CONTENTCLICKED; echo >> " +
                           ended + "; exit' TERM\nwhile :; do sleep 0.01; done");
    const auto channel = prepared(makeAlerterChannel(say));
    channel.begin(delivery(1));
    EXPECT_EQ(eventsOf(channel, 1), (Events{{Kind::handedOver, 1}}));
    channel.withdraw("claudeCode|S2");
    channel.withdraw("claudeCode|S1");
    EXPECT_EQ(eventsOf(channel, 1), (Events{{Kind::closed, 1}})) << "it was not the user";
    EXPECT_EQ(contentsOf(ended), "\n");
}

TEST_F(AlerterChannel, showsOneForEachSession) {
    install("alerter", "test \"$1\" = --help && exit\nexec sleep 1000");
    const auto channel = prepared(makeAlerterChannel(say));
    channel.begin(delivery(1));
    channel.begin(delivery(2, "other", "claudeCode|S2"));
    EXPECT_EQ(eventsOf(channel, 2), (Events{{Kind::handedOver, 1}, {Kind::handedOver, 2}}));
    channel.begin(delivery(3, "later"));
    EXPECT_EQ(eventsOf(channel, 2), (Events{{Kind::closed, 1}, {Kind::handedOver, 3}}));
}

TEST_F(AlerterChannel, saysWhatFails) {
    install("alerter", "exit 4");
    const auto channel = prepared(makeAlerterChannel(say));
    for (int number = 1; number <= 2; ++number) {
        channel.begin(delivery(number));
        EXPECT_EQ(eventsOf(channel, 1), (Events{{Kind::refused, number}}));
    }
    EXPECT_EQ(said, Texts{"alerter could not tell you: it ended with status 4."});
}

TEST_F(AlerterChannel, isHarmedByNoHelpThatHangsOrFloods) {
    for (const char* help : {"exec sleep 1000", "exec yes", "kill -9 $$"}) {
        install("alerter", help);
        EXPECT_TRUE(prepared(makeAlerterChannel(say)).state().isUsable) << help;
    }
}

}  // namespace
}  // namespace tallowbrook::host
