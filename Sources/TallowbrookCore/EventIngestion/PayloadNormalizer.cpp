#include "EventIngestion/PayloadNormalizer.h"

#include <algorithm>

#include "EventIngestion/FieldSanitizer.h"

namespace tallowbrook {

Provider provider(PayloadSource source) {
    return source == PayloadSource::claudeCodeHook ? Provider::claudeCode : Provider::codexCLI;
}

EventChannel channel(PayloadSource source) {
    return source == PayloadSource::codexNotify ? EventChannel::notify : EventChannel::hook;
}

std::string NormalizationError::diagnosticCode() const {
    struct Text {
        std::string operator()(const PayloadTooLarge& error) const {
            return "payload-too-large(" + std::to_string(error.byteCount) + ")";
        }
        std::string operator()(const EmptyPayload&) const { return "empty-payload"; }
        std::string operator()(const InvalidJSON&) const { return "invalid-json"; }
        std::string operator()(const NotAnObject&) const { return "not-an-object"; }
    };
    return std::visit(Text{}, reason);
}

namespace {

constexpr std::size_t maxIdentifierLength = 128;
constexpr std::size_t maxToolNameLength = 128;
constexpr std::size_t maxWordLength = 64;  // event names, types, sources, reasons
constexpr std::size_t maxPathLength = 1024;

using DetailField = std::optional<std::string> EventDetail::*;

// Where an event's one extra member goes.
struct DetailRule {
    PayloadField from;
    DetailField to;
    std::size_t maxLength;
};

constexpr DetailRule sessionSource{PayloadField::source, &EventDetail::sessionSource,
                                   maxWordLength};
constexpr DetailRule toolName{PayloadField::toolName, &EventDetail::toolName, maxToolNameLength};
constexpr DetailRule notificationType{PayloadField::notificationType,
                                      &EventDetail::notificationType, maxWordLength};
constexpr DetailRule errorType{PayloadField::error, &EventDetail::errorType, maxWordLength};
constexpr DetailRule endReason{PayloadField::reason, &EventDetail::endReason, maxWordLength};

// What the name of a hook event means.
struct EventRule {
    std::string_view name;
    EventCategory category;
    std::optional<AttentionKind> attention = std::nullopt;
    std::optional<DetailRule> detail = std::nullopt;
};

constexpr std::array claudeCodeRules{
    EventRule{"SessionStart", EventCategory::sessionStarted, std::nullopt, sessionSource},
    EventRule{"UserPromptSubmit", EventCategory::promptSubmitted},
    EventRule{"PermissionRequest", EventCategory::attentionRequested, AttentionKind::permission,
              toolName},
    EventRule{"Notification", EventCategory::informational, std::nullopt, notificationType},
    EventRule{"PostToolUse", EventCategory::activity, std::nullopt, toolName},
    // A tool that fails is part of the agent's ordinary work; only StopFailure fails a turn.
    EventRule{"PostToolUseFailure", EventCategory::activity, std::nullopt, toolName},
    EventRule{"Stop", EventCategory::turnCompleted},
    EventRule{"StopFailure", EventCategory::turnFailed, std::nullopt, errorType},
    EventRule{"SessionEnd", EventCategory::sessionEnded, std::nullopt, endReason},
};

// The notifications that ask for the user; all others only inform.
constexpr std::array attentionNotifications{
    std::pair{std::string_view{"permission_prompt"}, AttentionKind::permission},
    std::pair{std::string_view{"elicitation_dialog"}, AttentionKind::input},
    std::pair{std::string_view{"elicitation_url_dialog"}, AttentionKind::input},
};

constexpr std::array codexRules{
    EventRule{"SessionStart", EventCategory::sessionStarted, std::nullopt, sessionSource},
    EventRule{"UserPromptSubmit", EventCategory::promptSubmitted},
    EventRule{"PermissionRequest", EventCategory::attentionRequested, AttentionKind::permission,
              toolName},
    EventRule{"PostToolUse", EventCategory::activity, std::nullopt, toolName},
    EventRule{"Stop", EventCategory::turnCompleted},
    EventRule{"Interrupt", EventCategory::turnInterrupted},
    EventRule{"SessionEnd", EventCategory::sessionEnded, std::nullopt, endReason},
};

constexpr std::array codexNotifyRules{
    EventRule{"agent-turn-complete", EventCategory::turnCompleted},
};

// Names the event, and gives it its meaning where the name is known.
template <std::size_t size>
void applyRules(const std::array<EventRule, size>& rules, PayloadField nameField,
                const PayloadFields& fields, AgentEvent& event) {
    const auto name = FieldSanitizer::token(fields[nameField], maxWordLength);
    if (!name) return;
    event.eventType = *name;
    const auto rule = std::ranges::find(rules, *name, &EventRule::name);
    if (rule == rules.end()) return;
    event.category = rule->category;
    event.attention = rule->attention;
    if (const auto& detail = rule->detail)
        event.detail.*(detail->to) = FieldSanitizer::token(fields[detail->from], detail->maxLength);
}

void mapClaudeCode(const PayloadFields& fields, AgentEvent& event) {
    event.sessionID =
        FieldSanitizer::identifier(fields[PayloadField::sessionID], maxIdentifierLength);
    event.cwd = FieldSanitizer::path(fields[PayloadField::cwd], maxPathLength);
    applyRules(claudeCodeRules, PayloadField::hookEventName, fields, event);

    for (const auto& [type, attention] : attentionNotifications) {
        if (event.detail.notificationType != type) continue;
        event.category = EventCategory::attentionRequested;
        event.attention = attention;
    }
}

void mapCodexHook(const PayloadFields& fields, AgentEvent& event) {
    event.sessionID =
        FieldSanitizer::identifier(fields[PayloadField::sessionID], maxIdentifierLength);
    event.turnID = FieldSanitizer::identifier(fields[PayloadField::turnID], maxIdentifierLength);
    event.cwd = FieldSanitizer::path(fields[PayloadField::cwd], maxPathLength);
    applyRules(codexRules, PayloadField::hookEventName, fields, event);
}

void mapCodexNotify(const PayloadFields& fields, AgentEvent& event) {
    event.sessionID =
        FieldSanitizer::identifier(fields[PayloadField::notifyThreadID], maxIdentifierLength);
    event.turnID =
        FieldSanitizer::identifier(fields[PayloadField::notifyTurnID], maxIdentifierLength);
    event.cwd = FieldSanitizer::path(fields[PayloadField::cwd], maxPathLength);
    applyRules(codexNotifyRules, PayloadField::notifyType, fields, event);
}

}  // namespace

AgentEvent PayloadNormalizer::makeEvent(const PayloadFields& fields, PayloadSource source,
                                        EventOrigin origin, Instant observedAt, const UUID& id) {
    AgentEvent event;
    event.id = id;
    event.provider = provider(source);
    event.channel = channel(source);
    event.origin = origin;
    event.eventType = "Unknown";
    event.observedAt = observedAt;
    event.adapterVersion = adapterVersion;
    switch (source) {
        case PayloadSource::claudeCodeHook:
            mapClaudeCode(fields, event);
            break;
        case PayloadSource::codexHook:
            mapCodexHook(fields, event);
            break;
        case PayloadSource::codexNotify:
            mapCodexNotify(fields, event);
            break;
    }
    return event;
}

std::expected<AgentEvent, NormalizationError> PayloadNormalizer::normalize(std::string_view payload,
                                                                           PayloadSource source,
                                                                           EventOrigin origin,
                                                                           Instant observedAt,
                                                                           const UUID& id) {
    if (payload.empty()) return std::unexpected(NormalizationError::emptyPayload());
    if (payload.size() > maxPayloadBytes)
        return std::unexpected(NormalizationError::payloadTooLarge(payload.size()));
    const auto fields = readPayloadFields(payload);
    if (!fields && fields.error() == PayloadSyntaxError::notAnObject)
        return std::unexpected(NormalizationError::notAnObject());
    if (!fields) return std::unexpected(NormalizationError::invalidJSON());
    return makeEvent(*fields, source, origin, observedAt, id);
}

}  // namespace tallowbrook
