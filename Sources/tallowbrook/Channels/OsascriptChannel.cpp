#include "Channels/OsascriptChannel.h"

#include <memory>
#include <optional>
#include <string>

#include "Channels/OwnScreen.h"
#include "Channels/ProgramText.h"
#include "System/SearchPath.h"

namespace tallowbrook::host {
namespace {

constexpr std::chrono::seconds timeout{10};

struct Osascript {
    explicit Osascript(SayWhy say)
        : program{SearchPath::find("osascript")}, teller{"osascript", std::move(say)} {}

    ChannelState state() const {
        if (!program) return {.isUsable = false, .reason = "osascript is not on PATH"};
        if (!isBeforeThisScreen()) return {.isUsable = false, .reason = notBeforeThisScreen};
        return {.reason =
                    "by osascript; a click does nothing there (alerter and terminal-notifier "
                    "3.0.0 know clicks)"};
    }

    void begin(const Delivery& delivery) {
        if (!program) return teller.refuse(delivery.number, "it is not on PATH");
        const auto& content = delivery.content;
        const std::string sound = content.playSound ? " sound name \"Glass\"" : "";
        // The texts are arguments, since a script that held them could be made to run them.
        teller.tell(delivery.number,
                    {.path = *program,
                     .arguments = {"-e", "on run argv", "-e",
                                   "display notification (item 2 of argv) with title (item 1 of "
                                   "argv)" +
                                       sound,
                                   "-e", "end run", ProgramText::argument(content.title),
                                   ProgramText::argument(content.body)},
                     .timeout = timeout});
    }

    std::optional<std::string> program;
    ProgramTeller teller;
};

}  // namespace

Channel makeOsascriptChannel(SayWhy say) {
    const auto script = std::make_shared<Osascript>(std::move(say));
    return {
        .name = std::string{osascriptChannelName},
        .isRung = true,
        .state = [script] { return script->state(); },
        .begin = [script](const Delivery& delivery) { script->begin(delivery); },
        .withdraw = [](const std::string&) {},
        .takeEvents = [script] { return script->teller.takeEvents(); },
        .source = PollSource{.interest = [script] { return script->teller.interest(); },
                             .proceed = [script](short) { script->teller.proceed(); }},
    };
}

}  // namespace tallowbrook::host
