#include "Channels/TerminalNotes.h"

#include <gtest/gtest.h>

#include "Support/RepeatedText.h"

namespace tallowbrook::host {
namespace {

using Answer = TerminalNotes::Answer;

NotificationContent contentWith(const std::string& body) {
    return {.kind = NotificationKind::attention,
            .title = "Claude Code needs permission",
            .body = body,
            .sessionStorageID = "claudeCode|S1",
            .eventID = {},
            .dedupeKey = "claudeCode|S1|attention",
            .playSound = true};
}

const auto content = contentWith("proj — waiting.");

TEST(TerminalNotes, areKittysWithAnIdentifierOfTheSession) {
    EXPECT_EQ(TerminalNotes::told(TerminalProtocol::osc99, content),
              "\x1b]99;i=tallowbrook.claudeCode+7cS1:d=0:p=title;Claude Code needs permission\x1b\\"
              "\x1b]99;i=tallowbrook.claudeCode+7cS1:d=1:p=body;proj — waiting.\x1b\\");
    EXPECT_EQ(TerminalNotes::withdrawn(TerminalProtocol::osc99, content.sessionStorageID),
              "\x1b]99;i=tallowbrook.claudeCode+7cS1:p=close;\x1b\\");
}

TEST(TerminalNotes, areOfOtherTerminalsInTheirOwnForms) {
    EXPECT_EQ(TerminalNotes::told(TerminalProtocol::osc777, content),
              "\x1b]777;notify;Claude Code needs permission;proj — waiting.\x1b\\");
    EXPECT_EQ(TerminalNotes::told(TerminalProtocol::osc9, content),
              "\x1b]9;Claude Code needs permission: proj — waiting.\x1b\\");
    EXPECT_EQ(TerminalNotes::told(TerminalProtocol::bellAndTitle, content),
              "\x1b]2;Claude Code needs permission: proj — waiting.\x1b\\\a");
    EXPECT_EQ(TerminalNotes::told(TerminalProtocol::bell, content), "\a");
    for (const auto protocol : {TerminalProtocol::osc777, TerminalProtocol::osc9,
                                TerminalProtocol::bellAndTitle, TerminalProtocol::bell})
        EXPECT_EQ(TerminalNotes::withdrawn(protocol, content.sessionStorageID), "");
}

TEST(TerminalNotes, makeNoSoundWhereNoneIsWanted) {
    auto silent = content;
    silent.playSound = false;
    EXPECT_TRUE(
        TerminalNotes::told(TerminalProtocol::osc99, silent).contains(":d=1:p=body:s=silent;"));
    EXPECT_FALSE(TerminalNotes::told(TerminalProtocol::bellAndTitle, silent).contains('\a'));
    EXPECT_EQ(TerminalNotes::told(TerminalProtocol::bell, silent), "");
}

TEST(TerminalNotes, holdNoByteThatCouldEndThem) {
    const auto dangerous = contentWith(
        "a\x1b\\b\x07"
        "c\xC2\x9C"
        "d\x9C"
        "e\nf\rg\tÄ<b>😀");
    EXPECT_EQ(TerminalNotes::told(TerminalProtocol::osc9, dangerous),
              "\x1b]9;Claude Code needs permission: a\\bcde fg Ä<b>😀\x1b\\");
    auto titled = content;
    titled.title = "one;two";
    EXPECT_TRUE(TerminalNotes::told(TerminalProtocol::osc777, titled).contains(";one,two;proj"));
}

TEST(TerminalNotes, areCutBetweenCharacters) {
    const auto told =
        TerminalNotes::told(TerminalProtocol::osc99, contentWith("x" + repeated("😀", 2500)));
    EXPECT_LT(told.size(), 2200U);
    EXPECT_TRUE(told.ends_with("😀…\x1b\\")) << told;
}

TEST(TerminalNotes, goThroughTmuxInItsEnvelope) {
    EXPECT_EQ(TerminalNotes::throughTmux("\x1b]9;text\x1b\\"),
              "\x1bPtmux;\x1b\x1b]9;text\x1b\x1b\\\x1b\\");
}

TEST(TerminalNotes, goByTheNamesOfTerminals) {
    EXPECT_EQ(TerminalNotes::protocolOf("xterm-kitty"), TerminalProtocol::osc99);
    EXPECT_EQ(TerminalNotes::protocolOf("kitty(0.35.1)"), TerminalProtocol::osc99);
    EXPECT_EQ(TerminalNotes::protocolOf("WezTerm 20240203"), TerminalProtocol::osc777);
    EXPECT_EQ(TerminalNotes::protocolOf("foot-extra"), TerminalProtocol::osc777);
    EXPECT_EQ(TerminalNotes::protocolOf("iTerm.app"), TerminalProtocol::osc9);
    EXPECT_EQ(TerminalNotes::protocolOf("Apple_Terminal"), TerminalProtocol::bellAndTitle);
    EXPECT_EQ(TerminalNotes::protocolOf("xterm-256color"), TerminalProtocol::bellAndTitle);
    EXPECT_EQ(TerminalNotes::protocolOf("tmux-256color"), TerminalProtocol::bellAndTitle);
    EXPECT_EQ(TerminalNotes::protocolOf("linux"), TerminalProtocol::bell);
    EXPECT_EQ(TerminalNotes::protocolOf(""), TerminalProtocol::bell);
}

TEST(TerminalNotes, knowAnAnswerAmongKeys) {
    EXPECT_EQ(TerminalNotes::answerIn(""), Answer{});
    EXPECT_EQ(TerminalNotes::answerIn("abc\x1b[A"), Answer{});
    EXPECT_EQ(TerminalNotes::answerIn("q\x1b]99;i=tallowbrook:p=?;a=report:c=1\x1b\\"),
              (Answer{false, true}));
    EXPECT_EQ(TerminalNotes::answerIn("\x1b]99;i=tallowbrook:p=?;a=report\a\x1b[?62c"),
              (Answer{true, true}));
    EXPECT_EQ(TerminalNotes::answerIn("x\x1b[?62;4"), Answer{});
    EXPECT_EQ(TerminalNotes::answerIn("x\x1b[?62;4c"), (Answer{true, false}));
}

}  // namespace
}  // namespace tallowbrook::host
