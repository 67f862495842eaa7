#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "SetupHome.h"

namespace tallowbrook {
namespace {

using testing::HasSubstr;
using testing::Not;

constexpr int needsAttention = 3;

TEST(Health, ofAnUntouchedMachineWritesNothing) {
    const SetupHome home;
    const auto before = home.tree();
    const auto result = home.host({"health"});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.output, HasSubstr("Helper: missing"));
    EXPECT_THAT(result.output, HasSubstr("Claude Code: not set up"));
    EXPECT_THAT(result.output, HasSubstr("Codex CLI: not set up"));
    EXPECT_EQ(home.tree(), before);
}

TEST(Health, waitsForTheFirstEventAfterTheSetup) {
    const SetupHome home;
    EXPECT_EQ(home.host({"setup", "claude-code", "--yes"}).status, 0);
    const auto result = home.host({"health"});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.output, HasSubstr("Helper: current"));
    EXPECT_THAT(result.output, HasSubstr("Claude Code: waiting"));
}

TEST(Health, isReceivingOnceALiveEventWasStored) {
    const SetupHome home;
    EXPECT_EQ(home.host({"setup", "claude-code", "--yes"}).status, 0);
    home.claude("SessionStart");
    EXPECT_EQ(home.host({"watch", "--once"}).status, 0);
    const auto result = home.host({"health", "--json"});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.output, HasSubstr(R"("state":"receiving")"));
    EXPECT_THAT(result.output, HasSubstr(R"("lastLiveEventAt":")"));
    EXPECT_THAT(result.output, HasSubstr(R"("helper":"current")"));
}

TEST(Health, tellsWhichHooksAreMissing) {
    const SetupHome home;
    EXPECT_EQ(home.host({"setup", "claude-code", "--yes"}).status, 0);
    auto text = contentsOf(home.claudeFile);
    text.replace(text.find("\"Stop\""), 6, "\"Halt\"");
    writeContents(home.claudeFile, text);
    const auto result = home.host({"health"});
    EXPECT_EQ(result.status, needsAttention);
    EXPECT_THAT(result.output, HasSubstr("Claude Code: partial, no hook for Stop"));
    EXPECT_THAT(home.host({"health", "--json"}).output, HasSubstr(R"("missingEvents":["Stop"])"));
}

TEST(Health, needsRepairWhereAHookCallsAnotherHelper) {
    const SetupHome home;
    writeContents(home.claudeFile, R"({"hooks":{"Stop":[{"hooks":[{"type":"command",)"
                                   R"("command":"/old/tallowbrook-hook claude-code"}]}]}})");
    const auto result = home.host({"health"});
    EXPECT_EQ(result.status, needsAttention);
    EXPECT_THAT(result.output, HasSubstr("Claude Code: needs repair, one hook is out of date"));
}

TEST(Health, needsRepairWhereTheHelperIsGone) {
    const SetupHome home;
    EXPECT_EQ(home.host({"setup", "claude-code", "--yes"}).status, 0);
    std::filesystem::remove(home.paths.installedHelper());
    const auto result = home.host({"health"});
    EXPECT_EQ(result.status, needsAttention);
    EXPECT_THAT(result.output, HasSubstr("Helper: missing"));
    EXPECT_THAT(result.output, HasSubstr("Claude Code: needs repair, the helper cannot run"));
}

TEST(Health, namesAFileThatCannotBeRead) {
    const SetupHome home;
    writeContents(home.claudeFile, "[]");
    const auto result = home.host({"health", "claude-code"});
    EXPECT_EQ(result.status, needsAttention);
    EXPECT_THAT(result.output, HasSubstr("Claude Code: unreadable, The file's top-level value"));
    EXPECT_THAT(result.output, Not(HasSubstr("Codex")));
}

}  // namespace
}  // namespace tallowbrook
