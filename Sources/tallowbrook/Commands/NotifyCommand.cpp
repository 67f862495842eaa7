#include "Commands/NotifyCommand.h"

#include <fmt/core.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Channels/ChannelLadder.h"
#include "Commands/CommandLine.h"
#include "Commands/DatabaseDoor.h"
#include "Loop/EndRequest.h"
#include "Output/ExitStatus.h"
#include "Output/PrintableText.h"
#include "Output/StandardStreams.h"
#include "Store/Settings.h"
#include "Text/Digits.h"

namespace tallowbrook::host {
namespace {

using std::chrono::seconds;
using std::chrono::steady_clock;

// A channel gives up by itself before that.
constexpr seconds timeToAnswer{10};
constexpr int mostSecondsToClick = 600;

void print(const std::string& line) {
    StandardStreams::mention(PrintableText::printable(line) + "\n");
}

NotificationContent testContent(bool clicks) {
    return {.kind = NotificationKind::attention,
            .title = "Tallowbrook test",
            .body = clicks ? "This is where you are told. Click here to try the click."
                           : "This is where you are told.",
            .sessionStorageID = "tallowbrook|test",
            .eventID = {},
            .dedupeKey = {},
            .playSound = true};
}

// One channel's part of the test.
class ChannelTest {
 public:
    ChannelTest(const Channel& channel, PollLoop& loop) : channel_{channel}, loop_{loop} {
        if (channel.source) attachment_ = loop.attach(*channel.source);
        clock_ = loop.attach({.interest = [this] { return PollInterest{-1, 0, deadline_}; },
                              .proceed = [](short) {}});
    }

    int run(seconds patience) {
        const auto state = channel_.state();
        print(fmt::format("{}: {}", channel_.name, state.reason));
        channel_.begin({1, testContent(state.clicks)});
        if (!waitFor([this] { return shown_.has_value(); }, timeToAnswer))
            return ExitStatus::failed;
        if (!*shown_) {
            print("  It could not be shown: " + channel_.state().reason + ".");
            return ExitStatus::failed;
        }
        if (!state.clicks) {
            print("  Shown. This channel cannot tell of a click.");
            return ExitStatus::done;
        }
        print(fmt::format("  Shown. Click on it within {} seconds, or press Ctrl-C.",
                          patience.count()));
        waitFor([this] { return clicked_ || closed_; }, patience);
        channel_.withdraw(testContent(true).sessionStorageID);
        print(clicked_  ? "  Clicked: notifications and clicks work."
              : closed_ ? "  Closed without a click."
                        : "  Not clicked. If you saw nothing, \"do not disturb\" may be on.");
        return ExitStatus::done;
    }

 private:
    template <typename Condition>
    bool waitFor(Condition hasCome, seconds atMost) {
        deadline_ = steady_clock::now() + atMost;
        for (takeEvents(); !hasCome(); takeEvents()) {
            if (loop_.endIsRequested() || steady_clock::now() >= *deadline_) return false;
            loop_.runOnce();
        }
        deadline_.reset();
        return true;
    }

    void takeEvents() {
        for (const auto& event : channel_.takeEvents()) {
            if (event.kind == ChannelEvent::Kind::clicked)
                clicked_ = true;
            else if (event.kind == ChannelEvent::Kind::closed)
                closed_ = true;
            else
                shown_ = event.kind == ChannelEvent::Kind::handedOver;
        }
    }

    const Channel& channel_;
    PollLoop& loop_;
    std::optional<MonotonicTime> deadline_;
    std::optional<bool> shown_;
    bool clicked_ = false;
    bool closed_ = false;
    PollLoop::Attachment attachment_;
    PollLoop::Attachment clock_;
};

int testEach(const ChannelChoice& choice, seconds patience) {
    PollLoop loop;
    // A Ctrl-C ends the waiting, and not before the notification was taken back.
    const auto endRequest = EndRequest::receive();
    if (!endRequest)
        return StandardStreams::fail(
            "Signals cannot be received: " + endRequest.error().description() + ".");
    const auto ending = loop.attach(endRequest->source(loop));

    const auto channels =
        makeLadder({.say = [](const Sentence& sentence) { StandardStreams::complain(sentence); },
                    .focusCommand = [](const std::string&) { return std::string{}; }});
    findOut(choice, channels);
    const auto chosen = chosenChannels(choice, channels);
    if (chosen.empty()) {
        for (const auto& [name, isChosen, reason] : channelReports(choice, channels))
            print(fmt::format("{}: {}", name, reason));
        print("Nothing can be shown but the lines of \"tallowbrook watch\".");
        return ExitStatus::notInOrder;
    }
    int status = ExitStatus::done;
    for (const auto& channel : channels)
        if (std::ranges::find(chosen, channel.name) != chosen.end())
            status = std::max(status, ChannelTest{channel, loop}.run(patience));
    return status;
}

}  // namespace

int testNotification(const TallowbrookPaths& paths, seconds patience) {
    return withDatabaseIfAny(paths, [patience](Database* database) {
        const auto preferences =
            database == nullptr ? Preferences{} : Settings{*database}.preferences();
        return testEach(preferences.host.channels, patience);
    });
}

void addNotifyCommand(CommandLine& line) {
    struct Words {
        bool test = false;
        std::optional<std::string> patience;
    };
    const auto given = std::make_shared<Words>();
    auto words = line.add(
        "notify", "Try whether notifications reach you",
        [given](const TallowbrookPaths& paths) {
            if (!given->test)
                return StandardStreams::fail("Say what to do: notify --test.",
                                             ExitStatus::wrongUsage);
            const auto patience = given->patience ? parseNumber<int>(*given->patience)
                                                  : static_cast<int>(timeToClick.count());
            if (!patience || *patience < 0 || *patience > mostSecondsToClick)
                return StandardStreams::fail(
                    fmt::format("--wait takes seconds from 0 to {}.", mostSecondsToClick),
                    ExitStatus::wrongUsage);
            return testNotification(paths, seconds{*patience});
        },
        "3: there is no channel but the lines of \"tallowbrook watch\".");
    words.addFlag("--test", given->test, "Show one by each channel that would be used");
    words.addOption("--wait", "SECONDS", given->patience, "How long to wait for a click (30)");
}

}  // namespace tallowbrook::host
