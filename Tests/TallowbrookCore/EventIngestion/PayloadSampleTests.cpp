// Payloads as the agents sent them.
#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <string>

#include "Normalizing.h"
#include "Support/BuildPaths.h"
#include "Support/FileContents.h"

namespace tallowbrook {
namespace {

struct Sample {
    std::string file;
    std::string sessionID;
    std::string summary;
};

const std::vector<Sample> samples{
    {"claude-Notification-1", "6de9a263-564e-42d6-a4d7-2db2229b0b2f",
     "Notification attentionRequested permission notificationType=permission_prompt"},
    {"claude-Notification-3", "f574f32b-e599-41af-a7ff-9f079c91b9c0",
     "Notification informational notificationType=elicitation_response"},
    {"claude-PermissionRequest-2", "d30be9bf-004e-4ed2-bd0d-84a05c808d79",
     "PermissionRequest attentionRequested permission toolName=Bash"},
    {"claude-PostToolUse-1", "f5fb4509-99d7-4dd1-904d-03e2b5d32756",
     "PostToolUse activity toolName=Bash"},
    {"claude-PostToolUse-2", "782e3fd9-c12a-4914-8537-68943a7aa334",
     "PostToolUse activity toolName=Read"},
    {"claude-PostToolUse-12", "f574f32b-e599-41af-a7ff-9f079c91b9c0",
     "PostToolUse activity toolName=mcp__probe__ask"},
    {"claude-PostToolUseFailure-1", "8ae27372-e54f-4170-bd92-f16ef626a122",
     "PostToolUseFailure activity toolName=Bash"},
    {"claude-SessionEnd-1", "f5fb4509-99d7-4dd1-904d-03e2b5d32756",
     "SessionEnd sessionEnded endReason=other"},
    {"claude-SessionEnd-2", "6de9a263-564e-42d6-a4d7-2db2229b0b2f",
     "SessionEnd sessionEnded endReason=prompt_input_exit"},
    {"claude-SessionStart-1", "f5fb4509-99d7-4dd1-904d-03e2b5d32756",
     "SessionStart sessionStarted sessionSource=startup"},
    {"claude-SessionStart-3", "6de9a263-564e-42d6-a4d7-2db2229b0b2f",
     "SessionStart sessionStarted sessionSource=startup"},
    {"claude-Stop-1", "f5fb4509-99d7-4dd1-904d-03e2b5d32756", "Stop turnCompleted"},
    {"claude-StopFailure-1", "9db772d9-67d5-46d7-9a13-51fd69efe4ce",
     "StopFailure turnFailed errorType=server_error"},
    {"claude-StopFailure-3", "dce38a76-7cb2-4d71-9970-e29983f69b4d",
     "StopFailure turnFailed errorType=authentication_failed"},
    {"claude-UserPromptSubmit-1", "f5fb4509-99d7-4dd1-904d-03e2b5d32756",
     "UserPromptSubmit promptSubmitted"},
    {"codex-Interrupt-1", "01a1fcb3-b9b1-70d2-8079-52fb79d0b73c",
     "Interrupt turnInterrupted turn=01a1fcb3-b9c6-7dc0-9007-e2ab6f324020"},
    {"codex-PermissionRequest-1", "01a1fcb4-ca46-72e3-87b2-e0f2f79dc6c5",
     "PermissionRequest attentionRequested permission toolName=Bash "
     "turn=01a1fcb4-d61f-7260-af04-55506671f0e4"},
    {"codex-PostToolUse-1", "01a1fcb3-aec0-70f2-81ce-a17342e1caac",
     "PostToolUse activity toolName=Bash turn=01a1fcb3-aed6-7f80-93bd-d5339df1207c"},
    {"codex-SessionEnd-1", "01a1fcb3-aec0-70f2-81ce-a17342e1caac",
     "SessionEnd sessionEnded endReason=other"},
    {"codex-SessionStart-1", "01a1fcb3-aec0-70f2-81ce-a17342e1caac",
     "SessionStart sessionStarted sessionSource=startup"},
    {"codex-Stop-1", "01a1fcb3-aec0-70f2-81ce-a17342e1caac",
     "Stop turnCompleted turn=01a1fcb3-aed6-7f80-93bd-d5339df1207c"},
    {"codex-UserPromptSubmit-1", "01a1fcb3-aec0-70f2-81ce-a17342e1caac",
     "UserPromptSubmit promptSubmitted turn=01a1fcb3-aed6-7f80-93bd-d5339df1207c"},
    {"codexnotify-agent-turn-complete-1", "01a1fcb3-aec0-70f2-81ce-a17342e1caac",
     "agent-turn-complete turnCompleted turn=01a1fcb3-aed6-7f80-93bd-d5339df1207c"},
};

const std::filesystem::path directory{BuildPaths::samples};

PayloadSource sourceOf(const std::string& file) {
    if (file.starts_with("codexnotify")) return PayloadSource::codexNotify;
    return file.starts_with("codex") ? PayloadSource::codexHook : PayloadSource::claudeCodeHook;
}

TEST(PayloadSamples, eachBecomesItsEvent) {
    for (const Sample& sample : samples) {
        const std::string payload = contentsOf(directory / (sample.file + ".json"));
        const AgentEvent event = eventOf(payload, sourceOf(sample.file));
        EXPECT_EQ(summaryOf(event), sample.summary) << sample.file;
        EXPECT_EQ(event.sessionID, sample.sessionID) << sample.file;
        EXPECT_EQ(event.cwd, "/Users/dev/Developer/proj") << sample.file;
    }
}

TEST(PayloadSamples, noneIsLeftOut) {
    std::set<std::string> files;
    for (const auto& entry : std::filesystem::directory_iterator{directory})
        if (entry.path().extension() == ".json") files.insert(entry.path().stem());
    std::set<std::string> tested;
    for (const Sample& sample : samples) tested.insert(sample.file);
    EXPECT_EQ(files, tested);
}

TEST(PayloadSamples, aCutSampleIsNoJSON) {
    const std::string payload = contentsOf(directory / "claude-PermissionRequest-2.json");
    const std::size_t end = payload.find_last_of('}');
    ASSERT_NE(end, std::string::npos);
    for (std::size_t length = 1; length <= end; ++length)
        EXPECT_EQ(outcomeOf(payload.substr(0, length)), "invalid-json") << length;
}

}  // namespace
}  // namespace tallowbrook
