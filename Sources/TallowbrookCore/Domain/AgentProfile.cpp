#include "Domain/AgentProfile.h"

#include <algorithm>

namespace tallowbrook {
namespace {

using Path = std::string_view;

constexpr std::size_t maxToolNameLength = 128;
constexpr std::size_t maxWordLength = 64;

constexpr DetailRule sessionSource{PayloadField::source, &EventDetail::sessionSource,
                                   maxWordLength};
constexpr DetailRule toolName{PayloadField::toolName, &EventDetail::toolName, maxToolNameLength};
constexpr DetailRule notificationType{PayloadField::notificationType,
                                      &EventDetail::notificationType, maxWordLength};
constexpr DetailRule errorType{PayloadField::error, &EventDetail::errorType, maxWordLength};
constexpr DetailRule endReason{PayloadField::reason, &EventDetail::endReason, maxWordLength};

constexpr AgentEventRule sessionStart{
    .name = "SessionStart", .category = EventCategory::sessionStarted, .detail = sessionSource};
constexpr AgentEventRule userPromptSubmit{.name = "UserPromptSubmit",
                                          .category = EventCategory::promptSubmitted};
constexpr AgentEventRule permissionRequest{.name = "PermissionRequest",
                                           .category = EventCategory::attentionRequested,
                                           .attention = AttentionKind::permission,
                                           .detail = toolName};
constexpr AgentEventRule postToolUse{
    .name = "PostToolUse", .category = EventCategory::activity, .detail = toolName};
constexpr AgentEventRule stop{.name = "Stop", .category = EventCategory::turnCompleted};
constexpr AgentEventRule sessionEnd{.name = "SessionEnd",
                                    .category = EventCategory::sessionEnded,
                                    .detail = endReason,
                                    .hook = HookInstallation::withoutTimeout};

// The notifications that ask for the user; all others only inform.
constexpr std::array claudeNotifications{
    AttentionRule{"permission_prompt", AttentionKind::permission},
    AttentionRule{"elicitation_dialog", AttentionKind::input},
    AttentionRule{"elicitation_url_dialog", AttentionKind::input},
};

constexpr std::array claudeEvents{
    sessionStart,
    userPromptSubmit,
    permissionRequest,
    AgentEventRule{.name = "Notification",
                   .category = EventCategory::informational,
                   .detail = notificationType,
                   .attentions = claudeNotifications},
    postToolUse,
    // A tool that fails is part of the agent's ordinary work; only StopFailure fails a turn.
    AgentEventRule{
        .name = "PostToolUseFailure", .category = EventCategory::activity, .detail = toolName},
    stop,
    AgentEventRule{
        .name = "StopFailure", .category = EventCategory::turnFailed, .detail = errorType},
    sessionEnd,
};
constexpr std::array claudeSources{
    // This dialect carries no turn id.
    AgentSource{.source = PayloadSource::claudeCodeHook,
                .channel = EventChannel::hook,
                .sessionID = PayloadField::sessionID,
                .turnID = std::nullopt,
                .eventName = PayloadField::hookEventName,
                .events = claudeEvents},
};
constexpr std::array claudeHomeExecutables{Path{"/.claude/local/claude"}};
constexpr std::array claudeExtensionExecutables{Path{"/resources/native-binary/claude"}};

constexpr std::array claudeAskingTools{
    AskingTool{"AskUserQuestion", Asking::question},
    AskingTool{"ExitPlanMode", Asking::plan},
};

constexpr std::array claudeLeavingReasons{std::string_view{"prompt_input_exit"},
                                          std::string_view{"clear"}, std::string_view{"resume"},
                                          std::string_view{"logout"}};

constexpr AgentProfile claudeCode{
    .provider = Provider::claudeCode,
    .displayName = "Claude Code",
    .locations = {.executableName = "claude",
                  .configDirectoryVariable = "CLAUDE_CONFIG_DIR",
                  .configDirectory = "/.claude",
                  .hookConfigFile = "/.claude/settings.json",
                  .homeExecutables = claudeHomeExecutables,
                  .extensionPrefix = "anthropic.claude-code-",
                  .extensionExecutables = claudeExtensionExecutables,
                  .linuxExtensionExecutables = {},
                  .absoluteExecutables = {}},
    .sources = claudeSources,
    .hookForm = HookForm::exec,
    .hookTimeoutSeconds = 5,
    .askingTools = claudeAskingTools,
    .leavingReasons = claudeLeavingReasons,
    .nextStep = "sessions that you start from now on are watched.",
};

constexpr std::array codexEvents{
    sessionStart,
    userPromptSubmit,
    permissionRequest,
    postToolUse,
    stop,
    AgentEventRule{.name = "Interrupt",
                   .category = EventCategory::turnInterrupted,
                   .hook = HookInstallation::withoutTimeout},
    sessionEnd,
};
constexpr std::array codexNotifyEvents{
    AgentEventRule{.name = "agent-turn-complete",
                   .category = EventCategory::turnCompleted,
                   .hook = HookInstallation::none},
};
constexpr std::array codexSources{
    AgentSource{.source = PayloadSource::codexHook,
                .channel = EventChannel::hook,
                .sessionID = PayloadField::sessionID,
                .turnID = PayloadField::turnID,
                .eventName = PayloadField::hookEventName,
                .events = codexEvents},
    AgentSource{.source = PayloadSource::codexNotify,
                .channel = EventChannel::notify,
                .sessionID = PayloadField::notifyThreadID,
                .turnID = PayloadField::notifyTurnID,
                .eventName = PayloadField::notifyType,
                .events = codexNotifyEvents},
};
constexpr std::array codexExtensionExecutables{Path{"/bin/macos-aarch64/codex"},
                                               Path{"/bin/macos-x86_64/codex"}};
constexpr std::array codexLinuxExtensionExecutables{Path{"/bin/linux-aarch64/codex"},
                                                    Path{"/bin/linux-x86_64/codex"}};
constexpr std::array codexAbsoluteExecutables{
    Path{"/Applications/Codex.app/Contents/Resources/codex"}};

constexpr AgentProfile codexCLI{
    .provider = Provider::codexCLI,
    .displayName = "Codex CLI",
    .locations = {.executableName = "codex",
                  .configDirectoryVariable = "CODEX_HOME",
                  .configDirectory = "/.codex",
                  .hookConfigFile = "/.codex/hooks.json",
                  .homeExecutables = {},
                  .extensionPrefix = "openai.chatgpt-",
                  .extensionExecutables = codexExtensionExecutables,
                  .linuxExtensionExecutables = codexLinuxExtensionExecutables,
                  .absoluteExecutables = codexAbsoluteExecutables},
    .sources = codexSources,
    .hookForm = HookForm::shellLine,
    .hookTimeoutSeconds = 5,
    .askingTools = {},
    // Its one word is "other", whatever has ended the session.
    .leavingReasons = {},
    .nextStep = "start it and trust the new hooks; it skips them until then.",
};

constexpr std::array profiles{claudeCode, codexCLI};

// A row that is missing, or out of its place, is found by the compiler and not by a user.
static_assert(std::ranges::equal(profiles, allCases<Provider>(), {}, &AgentProfile::provider));

struct Owner {
    const AgentProfile* profile = nullptr;
    const AgentSource* source = nullptr;
};

constexpr Owner ownerOf(PayloadSource source) {
    for (const auto& profile : profiles)
        for (const auto& candidate : profile.sources)
            if (candidate.source == source) return {&profile, &candidate};
    return {};
}
static_assert(std::ranges::all_of(allCases<PayloadSource>(), [](PayloadSource source) {
    return ownerOf(source).profile != nullptr;
}));

}  // namespace

std::string_view displayName(Provider provider) { return AgentProfile::of(provider).displayName; }

const AgentProfile& AgentProfile::of(Provider provider) {
    return profiles[static_cast<std::size_t>(provider)];
}

std::optional<Asking> AgentProfile::asking(const std::optional<std::string>& name) const {
    for (const auto& tool : askingTools)
        if (tool.name == name) return tool.asks;
    return std::nullopt;
}

bool AgentProfile::isLeaving(const std::optional<std::string>& reason) const {
    return std::ranges::any_of(leavingReasons,
                               [&](std::string_view word) { return reason == word; });
}

const AgentProfile& AgentProfile::of(PayloadSource source) { return *ownerOf(source).profile; }

const AgentSource& agentSource(PayloadSource source) { return *ownerOf(source).source; }

}  // namespace tallowbrook
