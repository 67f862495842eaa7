#include "Channels/ExecChannel.h"

#include <memory>
#include <utility>

#include "Channels/NotificationJSON.h"

namespace tallowbrook::host {
namespace {

struct Exec {
    explicit Exec(ExecOperations given)
        : operations{std::move(given)},
          teller{"The program of the preference exec", operations.say} {}

    ChannelState state() const {
        const auto command = operations.command();
        if (command.empty())
            return {.isUsable = false, .reason = "no program is named (preferences exec COMMAND)"};
        return {.reason = "runs " + command};
    }

    void begin(const Delivery& delivery) {
        auto command = operations.command();
        // The user has taken it away since this was decided.
        if (command.empty()) return teller.refuse(delivery.number, "there is none any more");
        teller.tell(delivery.number, {.path = "/bin/sh",
                                      .arguments = {"-c", std::move(command)},
                                      .input = notificationJSON(delivery, currentInstant()),
                                      .timeout = operations.timeout});
    }

    ExecOperations operations;
    ProgramTeller teller;
};

}  // namespace

Channel makeExecChannel(ExecOperations operations) {
    const auto exec = std::make_shared<Exec>(std::move(operations));
    return {
        .name = std::string{execChannelName},
        .state = [exec] { return exec->state(); },
        .begin = [exec](const Delivery& delivery) { exec->begin(delivery); },
        .withdraw = [](const std::string&) {},
        .takeEvents = [exec] { return exec->teller.takeEvents(); },
        .source = PollSource{.interest = [exec] { return exec->teller.interest(); },
                             .proceed = [exec](short) { exec->teller.proceed(); }},
    };
}

}  // namespace tallowbrook::host
