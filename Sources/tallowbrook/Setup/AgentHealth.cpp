#include "Setup/AgentHealth.h"

#include "Preferences/HostSettings.h"

namespace tallowbrook::host {
namespace {

template <typename HookState>
bool is(const HookInstallState& hooks) {
    return std::holds_alternative<HookState>(hooks.state);
}

// An outdated helper still delivers events; only one that is missing or no program does not.
bool canRun(HelperStatus helper) {
    return helper == HelperStatus::current || helper == HelperStatus::outdated;
}

std::expected<HookInstallState, ConfigPlanError> inspect(const Agent& agent,
                                                         const TallowbrookPaths& paths) {
    const auto text = ConfigFileWriter::readText(agent.configFile);
    if (!text) return std::unexpected(ConfigPlanError{text.error()});
    const auto hooks = HookConfigMerger::inspect(
        *text, IntegrationSetup::spec(agent.provider, paths.installedHelper().string()));
    if (!hooks) return std::unexpected(ConfigPlanError{hooks.error()});
    return *hooks;
}

AgentHealth::State stateOf(const IntegrationHealth& events) {
    if (std::holds_alternative<IntegrationHealth::Silent>(events.state))
        return AgentHealth::State::silent;
    if (std::holds_alternative<IntegrationHealth::Receiving>(events.state))
        return AgentHealth::State::receiving;
    // Also where nothing was ever stored: the first event will tell.
    return AgentHealth::State::waiting;
}

}  // namespace

AgentHealth AgentHealth::of(const Agent& agent, const TallowbrookPaths& paths, HelperStatus helper,
                            const ManagedSettings& managed) {
    auto hooks = inspect(agent, paths);
    const bool isReady = hooks && is<HookInstallState::Installed>(*hooks) && canRun(helper);
    return {agent, std::move(hooks), isReady,
            isReady ? hookObstacle(agent, managed) : std::nullopt};
}

void AgentHealth::judgeEvents(IntegrationHealthRecord& record, Instant now) {
    // A file that cannot be read does not say that the hooks are gone. Live events are noted as
    // they are stored.
    if (hooks)
        record.reconcile(!is<HookInstallState::NotConfigured>(*hooks), isReady, std::nullopt, now);
    events = record.health(isReady, now, healthGracePeriod);
}

AgentHealth::State AgentHealth::state() const {
    if (!hooks) return State::unreadable;
    if (is<HookInstallState::NotConfigured>(*hooks)) return State::notSetUp;
    if (is<HookInstallState::Partial>(*hooks)) return State::partial;
    // Where all hooks are there and it is not ready, they call a helper that cannot run.
    if (is<HookInstallState::NeedsRepair>(*hooks) || !isReady) return State::needsRepair;
    const auto state = stateOf(events);
    // Trust is in notes of the agent's own, so what has really come tells more.
    const bool isRefuted = state == State::receiving && obstacle && !obstacle->isSwitchedOff();
    return obstacle && !isRefuted ? State::blocked : state;
}

bool AgentHealth::needsAttention() const {
    switch (state()) {
        case State::notSetUp:  // the user may not want it
        case State::waiting:
        case State::receiving:
            return false;
        case State::partial:
        case State::needsRepair:
        case State::silent:
        case State::blocked:
        case State::unreadable:
            break;
    }
    return true;
}

}  // namespace tallowbrook::host
