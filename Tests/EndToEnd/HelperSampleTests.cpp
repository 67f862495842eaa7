// Payloads as the agents sent them, on the whole way through the helper into the spool.
#include <gtest/gtest.h>

#include <set>

#include "Support/BuildPaths.h"
#include "Support/EventSummary.h"
#include "Support/FileContents.h"
#include "TestHome.h"

namespace tallowbrook {
namespace {

const std::filesystem::path samples{BuildPaths::samples};

struct Sample {
    const char* file;
    const char* event;  // as `summaryOf`, without the turn
    const char* sessionID;
    const char* turnID = "";
};

const std::vector<Sample> expectedEvents{
    {"claude-Notification-1",
     "Notification attentionRequested permission notificationType=permission_prompt",
     "6de9a263-564e-42d6-a4d7-2db2229b0b2f"},
    {"claude-Notification-3", "Notification informational notificationType=elicitation_response",
     "f574f32b-e599-41af-a7ff-9f079c91b9c0"},
    {"claude-PermissionRequest-2", "PermissionRequest attentionRequested permission toolName=Bash",
     "d30be9bf-004e-4ed2-bd0d-84a05c808d79"},
    {"claude-PostToolUse-1", "PostToolUse activity toolName=Bash",
     "f5fb4509-99d7-4dd1-904d-03e2b5d32756"},
    {"claude-PostToolUse-2", "PostToolUse activity toolName=Read",
     "782e3fd9-c12a-4914-8537-68943a7aa334"},
    {"claude-PostToolUse-12", "PostToolUse activity toolName=mcp__probe__ask",
     "f574f32b-e599-41af-a7ff-9f079c91b9c0"},
    {"claude-PostToolUseFailure-1", "PostToolUseFailure activity toolName=Bash",
     "8ae27372-e54f-4170-bd92-f16ef626a122"},
    {"claude-SessionEnd-1", "SessionEnd sessionEnded endReason=other",
     "f5fb4509-99d7-4dd1-904d-03e2b5d32756"},
    {"claude-SessionEnd-2", "SessionEnd sessionEnded endReason=prompt_input_exit",
     "6de9a263-564e-42d6-a4d7-2db2229b0b2f"},
    {"claude-SessionStart-1", "SessionStart sessionStarted sessionSource=startup",
     "f5fb4509-99d7-4dd1-904d-03e2b5d32756"},
    {"claude-SessionStart-3", "SessionStart sessionStarted sessionSource=startup",
     "6de9a263-564e-42d6-a4d7-2db2229b0b2f"},
    {"claude-Stop-1", "Stop turnCompleted", "f5fb4509-99d7-4dd1-904d-03e2b5d32756"},
    {"claude-StopFailure-1", "StopFailure turnFailed errorType=server_error",
     "9db772d9-67d5-46d7-9a13-51fd69efe4ce"},
    {"claude-StopFailure-3", "StopFailure turnFailed errorType=authentication_failed",
     "dce38a76-7cb2-4d71-9970-e29983f69b4d"},
    {"claude-UserPromptSubmit-1", "UserPromptSubmit promptSubmitted",
     "f5fb4509-99d7-4dd1-904d-03e2b5d32756"},
    {"codex-Interrupt-1", "Interrupt turnInterrupted", "01a1fcb3-b9b1-70d2-8079-52fb79d0b73c",
     "01a1fcb3-b9c6-7dc0-9007-e2ab6f324020"},
    {"codex-PermissionRequest-1", "PermissionRequest attentionRequested permission toolName=Bash",
     "01a1fcb4-ca46-72e3-87b2-e0f2f79dc6c5", "01a1fcb4-d61f-7260-af04-55506671f0e4"},
    {"codex-PostToolUse-1", "PostToolUse activity toolName=Bash",
     "01a1fcb3-aec0-70f2-81ce-a17342e1caac", "01a1fcb3-aed6-7f80-93bd-d5339df1207c"},
    {"codex-SessionEnd-1", "SessionEnd sessionEnded endReason=other",
     "01a1fcb3-aec0-70f2-81ce-a17342e1caac"},
    {"codex-SessionStart-1", "SessionStart sessionStarted sessionSource=startup",
     "01a1fcb3-aec0-70f2-81ce-a17342e1caac"},
    {"codex-Stop-1", "Stop turnCompleted", "01a1fcb3-aec0-70f2-81ce-a17342e1caac",
     "01a1fcb3-aed6-7f80-93bd-d5339df1207c"},
    {"codex-UserPromptSubmit-1", "UserPromptSubmit promptSubmitted",
     "01a1fcb3-aec0-70f2-81ce-a17342e1caac", "01a1fcb3-aed6-7f80-93bd-d5339df1207c"},
    {"codexnotify-agent-turn-complete-1", "agent-turn-complete turnCompleted",
     "01a1fcb3-aec0-70f2-81ce-a17342e1caac", "01a1fcb3-aed6-7f80-93bd-d5339df1207c"},
};

// Hands the sample over as its agent does.
ProgramResult play(const TestHome& home, const std::string& file) {
    const std::string payload = contentsOf(samples / (file + ".json"));
    if (file.starts_with("codexnotify")) return home.hook({"codex-notify", payload});
    return home.hook({file.starts_with("codex") ? "codex" : "claude-code"}, payload);
}

TEST(HelperSamples, eachBecomesItsEvent) {
    for (const auto& [file, expected, sessionID, turnID] : expectedEvents) {
        const TestHome home;
        EXPECT_EQ(play(home, file), quiet) << file;
        const auto events = home.spooled();
        ASSERT_EQ(events.size(), 1U) << file;
        const AgentEvent& event = events[0];
        const bool isClaude = std::string_view{file}.starts_with("claude");
        const std::string turn = *turnID != '\0' ? std::string{" turn="} + turnID : "";
        EXPECT_EQ(summaryOf(event), expected + turn) << file;
        EXPECT_EQ(event.sessionID, sessionID) << file;
        EXPECT_EQ(event.cwd, "/Users/dev/Developer/proj") << file;
        EXPECT_EQ(event.provider, isClaude ? Provider::claudeCode : Provider::codexCLI) << file;
        EXPECT_EQ(event.origin, EventOrigin::live) << file;
        EXPECT_EQ(event.schema, 1) << file;
        EXPECT_EQ(event.adapterVersion, "0.1.0") << file;
        EXPECT_EQ(home.logged(), std::vector<std::string>{}) << file;
    }
}

TEST(HelperSamples, noneIsLeftOut) {
    std::set<std::string> files;
    for (const auto& entry : std::filesystem::directory_iterator{samples})
        if (entry.path().extension() == ".json") files.insert(entry.path().stem().string());
    // What no agent says: the files that the programs share with the editors' extension.
    std::erase_if(files, [](const std::string& file) { return file.starts_with("editor-"); });
    std::set<std::string> expected;
    for (const Sample& sample : expectedEvents) expected.insert(sample.file);
    EXPECT_EQ(files, expected);
}

}  // namespace
}  // namespace tallowbrook
