#include "Channels/AlerterChannel.h"

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <map>
#include <memory>
#include <optional>
#include <utility>

#include "Channels/OwnScreen.h"
#include "Channels/ProgramRuns.h"
#include "Channels/ProgramText.h"
#include "System/SearchPath.h"

namespace tallowbrook::host {
namespace {

using std::chrono::steady_clock;
using Kind = ChannelEvent::Kind;

constexpr std::chrono::seconds timeToTellItsOptions{2};
// One that has shown nothing by then has failed by then.
constexpr std::chrono::seconds timeToFail{1};
constexpr std::string_view button = "Show";
constexpr std::int64_t theQuestion = 0;  // no delivery has this number

// As text, as JSON, or the button's own name.
bool isClick(std::string_view output) {
    constexpr std::array clicks{
        std::string_view{"@CONTENTCLICKED"}, std::string_view{"@ACTIONCLICKED"},
        std::string_view{"contentsClicked"}, std::string_view{"actionClicked"}};
    while (output.ends_with('\n')) output.remove_suffix(1);
    return output == button || std::ranges::any_of(clicks, [&](std::string_view click) {
               return output.contains(click);
           });
}

class Alerter {
 public:
    explicit Alerter(SayWhy say) : program_{SearchPath::find("alerter")}, say_{std::move(say)} {}

    void prepare() {
        if (!program_ || std::exchange(wasAsked_, true)) return;
        const auto asked = runs_.start(theQuestion, {.path = *program_,
                                                     .arguments = {"--help"},
                                                     .timeout = timeToTellItsOptions,
                                                     .keepsOutput = true});
        hasAnswered_ = !asked;
    }

    ChannelState state() const {
        if (!program_) return {.isUsable = false, .reason = "alerter is not on PATH"};
        if (!isBeforeThisScreen()) return {.isUsable = false, .reason = notBeforeThisScreen};
        if (!hasAnswered_)
            return {.isUsable = false,
                    .reason = "alerter is asked for its options",
                    .isFindingOut = wasAsked_};
        return {.reason = "by alerter", .replaces = true, .withdraws = true, .clicks = true};
    }

    void begin(const Delivery& delivery) {
        const auto& session = delivery.content.sessionStorageID;
        withdraw(session);
        // In place of the earlier one, once that is gone.
        waiting_.push_back(delivery);
        startThoseThatCan();
    }

    void withdraw(const std::string& session) {
        for (const auto& [number, shown] : shown_)
            if (shown.session == session) runs_.end(number);
        std::erase_if(waiting_, [&](const Delivery& delivery) {
            if (delivery.content.sessionStorageID != session) return false;
            // Never shown, and out of date.
            events_.push_back({Kind::refused, delivery.number});
            return true;
        });
    }

    std::vector<ChannelEvent> takeEvents() { return std::exchange(events_, {}); }

    PollInterest interest() const {
        auto interest = runs_.interest();
        for (const auto& [number, shown] : shown_)
            if (!shown.isTold)
                interest.deadline =
                    std::min(shown.toldBy, interest.deadline.value_or(shown.toldBy));
        return interest;
    }

    void proceed() {
        runs_.proceed();
        for (const auto& end : runs_.takeEnded()) take(end);
        const auto now = steady_clock::now();
        for (auto& [number, shown] : shown_)
            if (shown.toldBy <= now) tellOf(number, shown);
        startThoseThatCan();
    }

 private:
    struct Shown {
        std::string session;
        MonotonicTime toldBy;
        bool isTold = false;
    };

    bool isShown(const std::string& session) const {
        return std::ranges::any_of(
            shown_, [&](const auto& numbered) { return numbered.second.session == session; });
    }

    void startThoseThatCan() {
        std::erase_if(waiting_, [this](const Delivery& delivery) {
            if (isShown(delivery.content.sessionStorageID)) return false;
            start(delivery);
            return true;
        });
    }

    void start(const Delivery& delivery) {
        if (!program_) return fail(delivery.number, Kind::refused, "it is not on PATH");
        const auto& content = delivery.content;
        std::vector<std::string> arguments{dash_ + "title",   ProgramText::argument(content.title),
                                           dash_ + "message", ProgramText::argument(content.body),
                                           dash_ + "actions", std::string{button}};
        if (content.playSound) arguments.insert(arguments.end(), {dash_ + "sound", "default"});
        const auto started = runs_.start(delivery.number, {.path = *program_,
                                                           .arguments = std::move(arguments),
                                                           .timeout = std::nullopt,
                                                           .keepsOutput = true});
        if (!started) return fail(delivery.number, Kind::failed, started.error().description());
        shown_.emplace(delivery.number,
                       Shown{content.sessionStorageID, steady_clock::now() + timeToFail});
    }

    void take(const ProgramEnd& end) {
        if (end.number == theQuestion) {
            hasAnswered_ = true;
            if (end.output.contains("--message")) dash_ = "--";
            return;
        }
        const auto found = shown_.find(end.number);
        if (found == shown_.end()) return;
        auto shown = std::move(found->second);
        shown_.erase(found);
        const bool wasWithdrawn = end.way == ProgramEnd::Way::timedOut;
        const bool hasWorked = end.way == ProgramEnd::Way::exited && end.status == 0;
        if (!shown.isTold && !wasWithdrawn && !hasWorked)
            return fail(end.number, Kind::refused,
                        end.way == ProgramEnd::Way::signalled
                            ? fmt::format("signal {} ended it", end.status)
                            : fmt::format("it ended with status {}", end.status));
        tellOf(end.number, shown);
        const bool wasClicked = !wasWithdrawn && isClick(end.output);
        events_.push_back({wasClicked ? Kind::clicked : Kind::closed, end.number});
    }

    void tellOf(std::int64_t number, Shown& shown) {
        if (!std::exchange(shown.isTold, true)) events_.push_back({Kind::handedOver, number});
        said_.clear();
    }

    void fail(std::int64_t number, Kind kind, const std::string& reason) {
        events_.push_back({kind, number});
        if (reason != said_) say_(Sentence{"alerter could not tell you: " + reason});
        said_ = reason;
    }

    std::optional<std::string> program_;
    bool wasAsked_ = false;  // how it spells its options
    bool hasAnswered_ = false;
    std::string dash_{"-"};
    SayWhy say_;
    ProgramRuns runs_;
    std::map<std::int64_t, Shown> shown_;
    std::vector<Delivery> waiting_;  // until the earlier one of its session is gone
    std::vector<ChannelEvent> events_;
    std::string said_;  // why the last one could not be told; empty where it was
};

}  // namespace

Channel makeAlerterChannel(SayWhy say) {
    const auto alerter = std::make_shared<Alerter>(std::move(say));
    return {
        .name = std::string{alerterChannelName},
        .isRung = true,
        .state = [alerter] { return alerter->state(); },
        .prepare = [alerter] { alerter->prepare(); },
        .begin = [alerter](const Delivery& delivery) { alerter->begin(delivery); },
        .withdraw = [alerter](const std::string& session) { alerter->withdraw(session); },
        .takeEvents = [alerter] { return alerter->takeEvents(); },
        .source = PollSource{.interest = [alerter] { return alerter->interest(); },
                             .proceed = [alerter](short) { alerter->proceed(); }},
    };
}

}  // namespace tallowbrook::host
