#include "Channels/TerminalNotifierChannel.h"

#include <memory>
#include <optional>
#include <utility>

#include "Channels/OwnScreen.h"
#include "Channels/ProgramText.h"
#include "System/SearchPath.h"
#include "Text/Digits.h"

namespace tallowbrook::host {
namespace {

constexpr std::chrono::seconds timeout{10};
constexpr std::chrono::seconds timeToTellItsVersion{2};
constexpr int firstVersionWithClicks = 3;

// The 3 of "terminal-notifier 3.0.0."; absent where it names none.
std::optional<int> majorVersion(std::string_view text) {
    const auto first = text.find_first_of("0123456789");
    if (first == std::string_view::npos) return std::nullopt;
    text.remove_prefix(first);
    return parseNumber<int>(takeDigits(text));
}

struct TerminalNotifier {
    TerminalNotifier(SayWhy say, FocusCommand command)
        : program{SearchPath::find("terminal-notifier")},
          focusCommand{std::move(command)},
          teller{"terminal-notifier", std::move(say)} {}

    void prepare() {
        if (!program || std::exchange(wasAsked, true)) return;
        teller.run({.path = *program,
                    .arguments = {"-version"},
                    .timeout = timeToTellItsVersion,
                    .keepsOutput = true},
                   [this](const ProgramEnd& end) {
                       hasAnswered = true;
                       if (end.way == ProgramEnd::Way::exited) version = majorVersion(end.output);
                   });
    }

    ChannelState state() const {
        if (!program) return {.isUsable = false, .reason = "terminal-notifier is not on PATH"};
        if (!isBeforeThisScreen()) return {.isUsable = false, .reason = notBeforeThisScreen};
        if (!version)
            return {.isUsable = false,
                    .reason = hasAnswered ? "terminal-notifier does not tell its version"
                                          : "terminal-notifier is asked for its version",
                    .isFindingOut = wasAsked && !hasAnswered};
        if (*version < firstVersionWithClicks)
            return {.isUsable = false,
                    .reason = "terminal-notifier is older than 3.0.0, where a click does nothing"};
        return {.reason = "by terminal-notifier", .replaces = true, .withdraws = true};
    }

    // What a later one of the session takes the place of.
    static std::string group(const std::string& sessionStorageID) {
        return "tallowbrook." + sessionStorageID;
    }

    void begin(const Delivery& delivery) {
        if (!program) return teller.refuse(delivery.number, "it is not on PATH");
        const auto& content = delivery.content;
        std::vector<std::string> arguments{"-title",   ProgramText::argument(content.title),
                                           "-message", ProgramText::argument(content.body),
                                           "-group",   group(content.sessionStorageID)};
        if (content.playSound) arguments.insert(arguments.end(), {"-sound", "default"});
        if (!content.sessionStorageID.empty())
            arguments.insert(arguments.end(), {"-execute", focusCommand(content.sessionStorageID)});
        teller.tell(delivery.number,
                    {.path = *program, .arguments = std::move(arguments), .timeout = timeout});
    }

    void withdraw(const std::string& sessionStorageID) {
        if (program)
            teller.run({.path = *program,
                        .arguments = {"-remove", group(sessionStorageID)},
                        .timeout = timeout});
    }

    std::optional<std::string> program;
    bool wasAsked = false;  // for its version
    bool hasAnswered = false;
    std::optional<int> version;
    FocusCommand focusCommand;
    ProgramTeller teller;
};

}  // namespace

Channel makeTerminalNotifierChannel(SayWhy say, FocusCommand focusCommand) {
    const auto notifier =
        std::make_shared<TerminalNotifier>(std::move(say), std::move(focusCommand));
    return {
        .name = std::string{terminalNotifierChannelName},
        .isRung = true,
        .state = [notifier] { return notifier->state(); },
        .prepare = [notifier] { notifier->prepare(); },
        .begin = [notifier](const Delivery& delivery) { notifier->begin(delivery); },
        .withdraw = [notifier](const std::string& session) { notifier->withdraw(session); },
        .takeEvents = [notifier] { return notifier->teller.takeEvents(); },
        .source = PollSource{.interest = [notifier] { return notifier->teller.interest(); },
                             .proceed = [notifier](short) { notifier->teller.proceed(); }},
    };
}

}  // namespace tallowbrook::host
