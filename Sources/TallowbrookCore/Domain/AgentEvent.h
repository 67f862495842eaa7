// The one record that travels from the hook helper to the host, and the words it is made of.
//
// Plain values, compared field by field; safe from any thread.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "Domain/EnumNames.h"
#include "Domain/Instant.h"
#include "Domain/UUID.h"

namespace tallowbrook {

enum class Provider { claudeCode, codexCLI };
inline constexpr std::array providerNames{
    std::pair{Provider::claudeCode, std::string_view{"claudeCode"}},
    std::pair{Provider::codexCLI, std::string_view{"codexCLI"}},
};
constexpr const auto& namesOf(Provider) { return providerNames; }

// What the user knows the agent as: "Claude Code" or "Codex CLI".
std::string_view displayName(Provider provider);

enum class EventChannel { hook, notify };
inline constexpr std::array eventChannelNames{
    std::pair{EventChannel::hook, std::string_view{"hook"}},
    std::pair{EventChannel::notify, std::string_view{"notify"}},
};
constexpr const auto& namesOf(EventChannel) { return eventChannelNames; }

enum class EventOrigin { live, test, demo };
inline constexpr std::array eventOriginNames{
    std::pair{EventOrigin::live, std::string_view{"live"}},
    std::pair{EventOrigin::test, std::string_view{"test"}},
    std::pair{EventOrigin::demo, std::string_view{"demo"}},
};
constexpr const auto& namesOf(EventOrigin) { return eventOriginNames; }

enum class EventCategory {
    sessionStarted,
    promptSubmitted,
    attentionRequested,
    activity,
    turnCompleted,
    turnFailed,
    turnInterrupted,
    sessionEnded,
    informational,
    unrecognized,
};
inline constexpr std::array eventCategoryNames{
    std::pair{EventCategory::sessionStarted, std::string_view{"sessionStarted"}},
    std::pair{EventCategory::promptSubmitted, std::string_view{"promptSubmitted"}},
    std::pair{EventCategory::attentionRequested, std::string_view{"attentionRequested"}},
    std::pair{EventCategory::activity, std::string_view{"activity"}},
    std::pair{EventCategory::turnCompleted, std::string_view{"turnCompleted"}},
    std::pair{EventCategory::turnFailed, std::string_view{"turnFailed"}},
    std::pair{EventCategory::turnInterrupted, std::string_view{"turnInterrupted"}},
    std::pair{EventCategory::sessionEnded, std::string_view{"sessionEnded"}},
    std::pair{EventCategory::informational, std::string_view{"informational"}},
    std::pair{EventCategory::unrecognized, std::string_view{"unrecognized"}},
};
constexpr const auto& namesOf(EventCategory) { return eventCategoryNames; }

enum class AttentionKind { permission, input };
inline constexpr std::array attentionKindNames{
    std::pair{AttentionKind::permission, std::string_view{"permission"}},
    std::pair{AttentionKind::input, std::string_view{"input"}},
};
constexpr const auto& namesOf(AttentionKind) { return attentionKindNames; }

struct EventDetail {
    std::optional<std::string> notificationType;
    std::optional<std::string> toolName;
    std::optional<std::string> sessionSource;
    std::optional<std::string> endReason;
    std::optional<std::string> errorType;
    bool operator==(const EventDetail&) const = default;
};

struct AgentEvent {
    static constexpr std::int64_t currentSchema = 1;

    std::int64_t schema = currentSchema;
    UUID id{};  // chosen by the writer, at random
    Provider provider = Provider::claudeCode;
    EventChannel channel = EventChannel::hook;
    EventOrigin origin = EventOrigin::live;
    std::string eventType;  // the agent's own name of the event, or "Unknown"
    EventCategory category = EventCategory::unrecognized;
    std::optional<AttentionKind> attention;  // only for `attentionRequested`
    std::optional<std::string> sessionID;
    std::optional<std::string> turnID;
    Instant observedAt{};            // when the helper received the event
    std::optional<std::string> cwd;  // absolute
    std::optional<std::string> tty;  // such as ttys003, without "/dev/"
    EventDetail detail;
    std::string adapterVersion;  // of the normalizer that made the event
    bool operator==(const AgentEvent&) const = default;
};

}  // namespace tallowbrook
