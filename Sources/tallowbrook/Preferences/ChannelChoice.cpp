#include "Preferences/ChannelChoice.h"

#include <algorithm>

#include "Text/TakeUntil.h"

namespace tallowbrook::host {
namespace {

constexpr std::string_view automatic = "auto";

}  // namespace

bool ChannelChoice::allows(std::string_view channel) const {
    return isAutomatic() || std::ranges::find(names, channel) != names.end();
}

std::string ChannelChoice::text() const {
    if (isAutomatic()) return std::string{automatic};
    std::string text;
    for (const auto& name : names) text += (text.empty() ? "" : ",") + name;
    return text;
}

std::optional<ChannelChoice> ChannelChoice::parse(std::string_view text) {
    if (text == automatic) return ChannelChoice{};
    // Or what stands behind the last comma would not be looked at.
    if (text.empty() || text.ends_with(',')) return std::nullopt;
    ChannelChoice choice;
    while (!text.empty()) {
        const auto name = takeUntil(text, ',');
        const bool isKnown = std::ranges::find(channelNames, name) != channelNames.end();
        if (!isKnown || std::ranges::find(choice.names, name) != choice.names.end())
            return std::nullopt;
        choice.names.emplace_back(name);
    }
    return choice;
}

}  // namespace tallowbrook::host
