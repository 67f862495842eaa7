#include "Channels/ChannelLadder.h"

#include <algorithm>

namespace tallowbrook::host {
namespace {

bool isRuledOut(const ChannelChoice& choice, const Channel& channel) {
    return channel.isRung && !choice.allows(channel.name);
}

}  // namespace

std::vector<Channel> makeLadder(const ChannelTools& tools) {
    std::vector<Channel> channels;
    for (const auto& row : channelLadder()) channels.push_back(row.make(tools));
    return channels;
}

std::vector<std::string> chosenChannels(const ChannelChoice& choice,
                                        const std::vector<Channel>& channels) {
    std::vector<std::string> names;
    bool hasRung = false;
    for (const auto& channel : channels) {
        if (isRuledOut(choice, channel) || !channel.state().isUsable) continue;
        if (channel.isRung && hasRung && choice.isAutomatic()) continue;
        hasRung = hasRung || channel.isRung;
        names.push_back(channel.name);
    }
    return names;
}

void prepareChannels(const ChannelChoice& choice, const std::vector<Channel>& channels) {
    for (const auto& channel : channels)
        if (!isRuledOut(choice, channel)) channel.prepare();
}

void findOut(const ChannelChoice& choice, const std::vector<Channel>& channels) {
    prepareChannels(choice, channels);
    PollLoop loop;
    std::vector<PollLoop::Attachment> attachments;
    for (const auto& channel : channels)
        if (channel.source) attachments.push_back(loop.attach(*channel.source));
    while (std::ranges::any_of(channels,
                               [](const auto& channel) { return channel.state().isFindingOut; }))
        loop.runOnce();
}

std::vector<ChannelReport> channelReports(const ChannelChoice& choice,
                                          const std::vector<Channel>& channels) {
    const auto chosen = chosenChannels(choice, channels);
    std::vector<ChannelReport> reports;
    for (const auto& channel : channels) {
        const bool isChosen = std::ranges::find(chosen, channel.name) != chosen.end();
        const auto state = channel.state();
        auto reason = state.reason;
        if (isRuledOut(choice, channel))
            reason = "not among the channels that you chose";
        else if (state.isUsable && !isChosen)
            reason = "a better channel is used";
        reports.push_back({channel.name, isChosen, std::move(reason)});
    }
    return reports;
}

}  // namespace tallowbrook::host
