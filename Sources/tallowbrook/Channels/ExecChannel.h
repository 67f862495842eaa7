// Tells by a program of the user's: a push to a phone, a lamp.
#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <string_view>

#include "Channels/Channel.h"
#include "Channels/ProgramTeller.h"

namespace tallowbrook::host {

// The name under which the outbox keeps what this channel has to tell.
inline constexpr std::string_view execChannelName = "exec";

struct ExecOperations {
    // The command as of now, for /bin/sh; empty: none.
    std::function<std::string()> command;
    SayWhy say;
    // The program must have ended by then.
    std::chrono::milliseconds timeout = std::chrono::seconds{10};
};

// Runs `/bin/sh -c COMMAND` for each notification, as `ProgramTeller` does, with `notificationJSON`
// on its standard input; what it prints goes nowhere.
Channel makeExecChannel(ExecOperations operations);

}  // namespace tallowbrook::host
