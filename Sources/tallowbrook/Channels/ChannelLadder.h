// All ways to tell, and which of them are used.
//
// Used by one thread.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Channels/Channel.h"
#include "Channels/ProgramTeller.h"
#include "Channels/TerminalNotifierChannel.h"
#include "Preferences/ChannelChoice.h"

namespace tallowbrook::host {

// What channels need of their host.
struct ChannelTools {
    SayWhy say = [](const auto&) {};
    FocusCommand focusCommand = [](const auto&) { return std::string{}; };
    // False where something else reads what the terminal sends.
    bool mayAskTerminal = true;
};

struct ChannelRow {
    std::string_view name;  // of `channelNames`
    Channel (*make)(const ChannelTools& tools);
};

// The rungs, from the best to the last resort. A channel that a machine cannot have is there too,
// and says why. One implementation per system.
std::span<const ChannelRow> channelLadder();

// One of each. None does anything before it is prepared.
std::vector<Channel> makeLadder(const ChannelTools& tools = {});

// The names of those that are to tell what is decided now: every channel that is no rung; of the
// rungs the first that is usable, or all usable ones that the user names.
std::vector<std::string> chosenChannels(const ChannelChoice& choice,
                                        const std::vector<Channel>& channels);

// Lets the rungs that the user has not ruled out find out what they can do.
void prepareChannels(const ChannelChoice& choice, const std::vector<Channel>& channels);

// The same for a caller with time: returns when all that can be known is known, which is at once,
// or after a few seconds where somebody does not answer.
void findOut(const ChannelChoice& choice, const std::vector<Channel>& channels);

// Why a channel is used or is not, for its row in a list.
struct ChannelReport {
    std::string name;
    bool isChosen = false;
    std::string reason;
};
std::vector<ChannelReport> channelReports(const ChannelChoice& choice,
                                          const std::vector<Channel>& channels);

}  // namespace tallowbrook::host
