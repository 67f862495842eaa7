// What is known about one agent on this machine.
//
// A plain value; safe from any thread.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Domain/AgentEvent.h"

namespace tallowbrook {

struct ProviderDetection {
    enum class State {
        installed,    // there is an executable
        configOnly,   // there is none, but the agent's configuration directory exists
        notDetected,  // neither
    };

    Provider provider = Provider::claudeCode;
    State state = State::notDetected;
    std::optional<std::string> executablePath;
    std::optional<std::string> version;  // printable ASCII, at most 80 characters
    std::string hookConfigPath;          // where the file is expected, whether or not it exists
    std::vector<std::string> evidence;   // lines for the user that justify the state
    bool operator==(const ProviderDetection&) const = default;
};

inline constexpr std::array providerDetectionStateNames{
    std::pair{ProviderDetection::State::installed, std::string_view{"installed"}},
    std::pair{ProviderDetection::State::configOnly, std::string_view{"configOnly"}},
    std::pair{ProviderDetection::State::notDetected, std::string_view{"notDetected"}},
};
constexpr const auto& namesOf(ProviderDetection::State) { return providerDetectionStateNames; }

}  // namespace tallowbrook
