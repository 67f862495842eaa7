#include "Integrations/HookInstallSpec.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tallowbrook {
namespace {

TEST(HookInstallSpec, ofClaudeCodeRunsTheHelperWithoutAShell) {
    const auto spec = HookInstallSpec::claudeCode("/Users/a b/tallowbrook-hook");
    EXPECT_EQ(spec.provider, Provider::claudeCode);
    EXPECT_EQ(spec.events,
              (std::vector<std::string>{"SessionStart", "UserPromptSubmit", "PermissionRequest",
                                        "Notification", "PostToolUse", "PostToolUseFailure", "Stop",
                                        "StopFailure", "SessionEnd"}));
    EXPECT_EQ(spec.command, HookCommand::exec("/Users/a b/tallowbrook-hook", {"claude-code"}));
    EXPECT_EQ(spec.timeoutSeconds, 5);
    EXPECT_EQ(spec.eventsWithoutTimeout, (std::set<std::string>{"SessionEnd"}));
    EXPECT_EQ(spec.executablePath(), "/Users/a b/tallowbrook-hook");
}

TEST(HookInstallSpec, ofCodexRunsOneShellLine) {
    const auto spec = HookInstallSpec::codex("/Users/a b/x");
    EXPECT_EQ(spec.provider, Provider::codexCLI);
    EXPECT_EQ(spec.events,
              (std::vector<std::string>{"SessionStart", "UserPromptSubmit", "PermissionRequest",
                                        "PostToolUse", "Stop", "Interrupt", "SessionEnd"}));
    EXPECT_EQ(spec.command, HookCommand::shell("'/Users/a b/x' codex"));
    EXPECT_EQ(spec.timeoutSeconds, 5);
    EXPECT_EQ(spec.eventsWithoutTimeout, (std::set<std::string>{"SessionEnd", "Interrupt"}));
    EXPECT_EQ(spec.executablePath(), "/Users/a b/x");
}

TEST(HookInstallSpec, givesBackAnyPathThatItQuoted) {
    EXPECT_EQ(HookInstallSpec::codex("/o'neil's").command.text(), R"('/o'\''neil'\''s' codex)");
    for (const char* path : {"/plain", "/o'neil", "'", "''", "/a'", "'a", R"(/back\slash)",
                             R"(/a'\''b)", "/$HOME \"x\" `y`\n", ""})
        EXPECT_EQ(HookInstallSpec::codex(path).executablePath(), path);
}

TEST(HookInstallSpec, hasNoProgramWhereTheShellLineDoesNotBeginWithAQuotedWord) {
    auto spec = HookInstallSpec::codex("/x");
    spec.command = HookCommand::shell("/x codex");
    EXPECT_EQ(spec.executablePath(), std::nullopt);
}

TEST(LeadingSingleQuotedWord, endsAtItsQuote) {
    struct Row {
        const char* line;
        std::optional<std::string> word;
    };
    for (const auto& [line, word] : {
             Row{"'a b' codex", "a b"},
             Row{"'a'b", "a"},
             Row{R"('a'\''b' c)", "a'b"},
             Row{R"('a'\'b')", "a"},
             Row{"'a", std::nullopt},
             Row{R"('a'\'')", std::nullopt},
             Row{" 'a'", std::nullopt},
             Row{"a 'b'", std::nullopt},
         })
        EXPECT_EQ(leadingSingleQuotedWord(line), word) << line;
}

}  // namespace
}  // namespace tallowbrook
