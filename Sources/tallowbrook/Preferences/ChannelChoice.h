// The ways in which the user wants to be told.
//
// Plain values and pure functions; safe from any thread.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tallowbrook::host {

// Every channel that can be chosen, by the name under which the outbox keeps its deliveries.
inline constexpr std::array<std::string_view, 6> channelNames{
    "desktop", "terminal", "lines", "alerter", "terminal-notifier", "osascript"};

struct ChannelChoice {
    std::vector<std::string> names;  // none: by what is there
    bool operator==(const ChannelChoice&) const = default;

    bool isAutomatic() const { return names.empty(); }
    bool allows(std::string_view channel) const;

    // "auto", or "desktop,lines".
    std::string text() const;

    // Absent for a name that is no channel's, or that comes twice.
    static std::optional<ChannelChoice> parse(std::string_view text);
};

}  // namespace tallowbrook::host
