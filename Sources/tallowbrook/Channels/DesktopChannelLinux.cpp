#include <deque>
#include <map>
#include <memory>
#include <utility>
#include <variant>

#include "Channels/DesktopChannel.h"
#include "Channels/NotificationServiceLinux.h"
#include "Channels/NotificationText.h"

namespace tallowbrook::host {
namespace {

using Kind = ChannelEvent::Kind;
using Condition = NotificationService::Condition;
using Notification = NotificationService::Notification;

// Somebody is waited for, so it stays in sight until that is over and it is taken back. What tells
// of several sessions is never taken back.
bool asksForTheUser(const NotificationContent& content) {
    return !content.sessionStorageID.empty() && (content.kind == NotificationKind::attention ||
                                                 content.kind == NotificationKind::reminder);
}

Notification notificationOf(const NotificationContent& content) {
    using NotificationText::plain;
    const bool asks = asksForTheUser(content);
    return {.title = plain(content.title, NotificationText::maxTitleLength),
            .body = plain(content.body, NotificationText::maxBodyLength),
            .urgency = asks ? Notification::Urgency::critical : Notification::Urgency::normal,
            .staysUntilClosed = asks,
            .playsSound = content.playSound};
}

class Desktop {
 public:
    Desktop() = default;
    Desktop(const Desktop&) = delete;
    Desktop& operator=(const Desktop&) = delete;
    ~Desktop() {
        for (const auto& [session, shown] : shown_) service_.close(shown.id);
    }

    ChannelState state() const {
        const auto condition = service_.condition();
        const bool isFindingOut = condition == Condition::findingOut;
        return {.isUsable = isFindingOut || condition == Condition::ready,
                .reason = service_.reason(),
                .replaces = true,
                .withdraws = true,
                .clicks = service_.takesClicks(),
                .isFindingOut = isFindingOut};
    }

    void prepare() { service_.prepare(); }

    void begin(const Delivery& delivery) {
        queue_.push_back(delivery);
        advance();
    }

    void withdraw(const std::string& session) {
        queue_.push_back(session);
        advance();
    }

    std::vector<ChannelEvent> takeEvents() { return std::exchange(events_, {}); }

    PollInterest interest() const { return service_.interest(); }
    void proceed() { service_.proceed(); }

 private:
    struct Shown {
        std::uint32_t id = 0;
        std::int64_t delivery = 0;
    };
    using Withdrawal = std::string;  // of what is shown of a session

    // One at a time, since the id of a notification is known only with its answer, and a later one
    // of its session must take its place.
    void advance() {
        if (isAdvancing_) return;
        isAdvancing_ = true;
        while (!queue_.empty() && service_.condition() == Condition::ready && !underWay_) {
            const auto next = std::move(queue_.front());
            queue_.pop_front();
            if (const auto* session = std::get_if<Withdrawal>(&next))
                takeBack(*session);
            else
                show(std::get<Delivery>(next));
        }
        if (!state().isUsable) giveUp();
        isAdvancing_ = false;
    }

    void takeBack(const std::string& session) {
        const auto shown = shown_.find(session);
        if (shown == shown_.end()) return;
        service_.close(shown->second.id);
        shown_.erase(shown);
    }

    void show(const Delivery& delivery) {
        const auto& session = delivery.content.sessionStorageID;
        auto notification = notificationOf(delivery.content);
        if (const auto earlier = shown_.find(session); earlier != shown_.end())
            notification.replaces = earlier->second.id;
        underWay_ = delivery.number;
        isAwaited_ = true;
        service_.show(notification, [this, session, number = delivery.number](auto id) {
            if (id) shown_[session] = {*id, number};
            if (isAwaited_) events_.push_back({id ? Kind::handedOver : Kind::failed, number});
            underWay_.reset();
            advance();
        });
    }

    // What a service that does not answer was given counts as failed; its late answer tells the id
    // all the same, so that the next attempt takes its place.
    void giveUp() {
        if (underWay_ && std::exchange(isAwaited_, false))
            events_.push_back({Kind::failed, *underWay_});
        for (const auto& waiting : queue_)
            if (const auto* delivery = std::get_if<Delivery>(&waiting))
                events_.push_back({Kind::failed, delivery->number});
        std::erase_if(
            queue_, [](const auto& waiting) { return std::holds_alternative<Delivery>(waiting); });
    }

    std::optional<std::int64_t> deliveryOf(std::uint32_t id) const {
        for (const auto& [session, shown] : shown_)
            if (shown.id == id) return shown.delivery;
        return std::nullopt;
    }

    void noteClicked(std::uint32_t id) {
        if (const auto delivery = deliveryOf(id)) events_.push_back({Kind::clicked, *delivery});
    }

    void noteClosed(std::uint32_t id) {
        if (const auto delivery = deliveryOf(id)) events_.push_back({Kind::closed, *delivery});
        std::erase_if(shown_, [id](const auto& shown) { return shown.second.id == id; });
    }

    std::deque<std::variant<Delivery, Withdrawal>> queue_;
    std::map<std::string, Shown> shown_;  // by session
    std::optional<std::int64_t> underWay_;
    bool isAwaited_ = false;  // its failure was not told yet
    bool isAdvancing_ = false;
    std::vector<ChannelEvent> events_;
    // Last, since it tells the others until it ends.
    NotificationService service_{{.conditionChanged = [this] { advance(); },
                                  .clicked = [this](std::uint32_t id) { noteClicked(id); },
                                  .closed = [this](std::uint32_t id) { noteClosed(id); },
                                  .idsAreVoid = [this] { shown_.clear(); }}};
};

}  // namespace

Channel makeDesktopChannel() {
    const auto desktop = std::make_shared<Desktop>();
    return {
        .name = std::string{desktopChannelName},
        .isRung = true,
        .state = [desktop] { return desktop->state(); },
        .prepare = [desktop] { desktop->prepare(); },
        .begin = [desktop](const Delivery& delivery) { desktop->begin(delivery); },
        .withdraw = [desktop](const std::string& session) { desktop->withdraw(session); },
        .takeEvents = [desktop] { return desktop->takeEvents(); },
        .source = PollSource{.interest = [desktop] { return desktop->interest(); },
                             .proceed = [desktop](short) { desktop->proceed(); }},
    };
}

}  // namespace tallowbrook::host
