// All that differs from agent to agent, one row for each `Provider`: its names, its files, the
// events it sends and how its hooks are installed. A further agent is a further row.
//
// Constant data; safe from any thread.
#pragma once

#include <array>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "Domain/AgentEvent.h"
#include "Domain/PayloadField.h"

namespace tallowbrook {

// The dialects of payloads; the raw text is the helper's first argument.
enum class PayloadSource { claudeCodeHook, codexHook, codexNotify };
inline constexpr std::array payloadSourceNames{
    std::pair{PayloadSource::claudeCodeHook, std::string_view{"claude-code"}},
    std::pair{PayloadSource::codexHook, std::string_view{"codex"}},
    std::pair{PayloadSource::codexNotify, std::string_view{"codex-notify"}},
};
constexpr const auto& namesOf(PayloadSource) { return payloadSourceNames; }

// Where an event's one extra member goes. A text of more than `maxLength` bytes is dropped.
struct DetailRule {
    PayloadField from;
    std::optional<std::string> EventDetail::* to;
    std::size_t maxLength;
};

// A text of the extra member that makes the event ask for the user.
struct AttentionRule {
    std::string_view detail;
    AttentionKind attention;
};

// What the user is really asked when the agent asks for leave to use one of its own tools.
enum class Asking {
    question,  // to answer
    plan,      // to approve
};

struct AskingTool {
    std::string_view name;
    Asking asks;
};

enum class HookInstallation {
    none,            // the agent sends the event by another way
    withTimeout,     // the agent ends a helper that takes longer than `hookTimeoutSeconds`
    withoutTimeout,  // the agent takes no timeout for this event
};

// What an event means, and how its hook is installed.
struct AgentEventRule {
    std::string_view name;
    EventCategory category;
    std::optional<AttentionKind> attention = std::nullopt;
    std::optional<DetailRule> detail = std::nullopt;
    std::span<const AttentionRule> attentions{};
    HookInstallation hook = HookInstallation::withTimeout;
};

// One way by which payloads come, and the members and events of its dialect.
struct AgentSource {
    PayloadSource source;
    EventChannel channel;
    PayloadField sessionID;
    std::optional<PayloadField> turnID;
    PayloadField eventName;
    std::span<const AgentEventRule> events;
};

struct AgentLocations {
    std::string_view executableName;
    // The agent's own environment variable for a configuration directory that the user has moved.
    const char* configDirectoryVariable;
    // Below the home directory:
    std::string_view configDirectory;
    std::string_view hookConfigFile;
    std::span<const std::string_view> homeExecutables;  // beside those that all agents have
    // How the folders of its editor extension begin, and the executables in such a folder.
    std::string_view extensionPrefix;
    std::span<const std::string_view> extensionExecutables;
    std::span<const std::string_view> linuxExtensionExecutables;
    std::span<const std::string_view> absoluteExecutables;

    // The executables in an extension folder that only this system's edition of the extension has.
    // One implementation per system.
    std::span<const std::string_view> systemExtensionExecutables() const;
};

enum class HookForm {
    exec,       // the helper's path and its arguments, each by itself
    shellLine,  // one line for the user's shell
};

struct AgentProfile {
    Provider provider;
    std::string_view displayName;
    AgentLocations locations;
    std::span<const AgentSource> sources;  // that of its hooks comes first
    HookForm hookForm;
    int hookTimeoutSeconds;
    std::span<const AskingTool> askingTools;
    // Its words for the end of a session that its user has left by a word or key of the agent's.
    std::span<const std::string_view> leavingReasons;
    std::string_view nextStep;  // what the user has to know or do once the hooks are installed

    const AgentSource& hooks() const { return sources.front(); }

    static const AgentProfile& of(Provider provider);
    static const AgentProfile& of(PayloadSource source);

    // Absent for a tool that does not ask, and where no tool is named.
    std::optional<Asking> asking(const std::optional<std::string>& name) const;

    // Whether a session that ended for this reason was left by its user on purpose.
    bool isLeaving(const std::optional<std::string>& reason) const;
};

// The source, as its agent's row describes it.
const AgentSource& agentSource(PayloadSource source);

}  // namespace tallowbrook
