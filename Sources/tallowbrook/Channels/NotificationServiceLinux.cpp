#include "Channels/NotificationServiceLinux.h"

#include <fmt/core.h>

#include <cerrno>
#include <cstdlib>
#include <system_error>
#include <utility>

#include "Channels/NotificationText.h"

namespace tallowbrook::host {
namespace {

using std::chrono::microseconds;
using std::chrono::seconds;
using std::chrono::steady_clock;

constexpr const char* serviceName = "org.freedesktop.Notifications";
constexpr const char* servicePath = "/org/freedesktop/Notifications";
constexpr const char* serviceInterface = "org.freedesktop.Notifications";
constexpr const char* ownerRule =
    "type='signal',sender='org.freedesktop.DBus',path='/org/freedesktop/DBus',"
    "interface='org.freedesktop.DBus',member='NameOwnerChanged',"
    "arg0='org.freedesktop.Notifications'";

constexpr const char* silent = "the notification service does not answer";

// A service answers within milliseconds, and is started within a second.
constexpr seconds patience{3};
// Until then a late answer still tells the id of what is shown.
constexpr microseconds callLimit = std::chrono::minutes{1};
// A service in trouble is asked again by itself, ever more rarely, and at last not any more: what
// was to be told is too old then.
constexpr seconds firstPause{10};
constexpr seconds longestPause{5 * 60};

std::string systemText(int error) { return std::generic_category().message(error); }

std::string_view textOf(const char* text) {
    return text == nullptr ? std::string_view{} : std::string_view{text};
}

std::string whyUnreachable(int error) {
    const char* address = getenv("DBUS_SESSION_BUS_ADDRESS");
    // Without it sd-bus has looked below $XDG_RUNTIME_DIR, where that is set.
    if (textOf(address).empty() && (error == ENOMEDIUM || error == ENOENT))
        return "no session bus: DBUS_SESSION_BUS_ADDRESS is not set";
    return "the session bus cannot be reached: " + systemText(error);
}

std::string whyTroubled(std::string_view error) {
    if (error == SD_BUS_ERROR_NO_REPLY) return silent;
    constexpr std::size_t maxLength = 100;
    return "the notification service failed: " + NotificationText::plain(error, maxLength);
}

}  // namespace

NotificationService::~NotificationService() = default;

void NotificationService::become(Condition condition, std::string reason) {
    condition_ = condition;
    reason_ = std::move(reason);
    listener_.conditionChanged();
}

void NotificationService::prepare() {
    if (condition_ == Condition::ready || condition_ == Condition::findingOut) return;
    // An answer that is still to come says more than another question.
    if (unanswered_ > 0 || shown_) return;
    const auto now = steady_clock::now();
    if (lastProbe_ && now < *lastProbe_ + firstPause) return;
    lastProbe_ = now;
    if (!bus_) connect();
    if (bus_) probe();
}

void NotificationService::connect() {
    sd_bus* bus = nullptr;
    if (const int status = sd_bus_open_user(&bus); status < 0) {
        become(Condition::unreachable, whyUnreachable(-status));
        return;
    }
    bus_.reset(bus);
    const auto limit = static_cast<std::uint64_t>(callLimit.count());
    // The bus passes on what the service itself sends, but also what any program sends to us by
    // name: `isFromService` tells them apart.
    const bool listens =
        sd_bus_set_method_call_timeout(bus, limit) >= 0 &&
        sd_bus_match_signal_async(bus, nullptr, serviceName, servicePath, serviceInterface, nullptr,
                                  handle<&NotificationService::takeSignal>, nullptr, this) >= 0 &&
        sd_bus_add_match_async(bus, nullptr, ownerRule, handle<&NotificationService::takeOwner>,
                               nullptr, this) >= 0;
    if (!listens) disconnect("the session bus cannot be listened to");
}

void NotificationService::disconnect(const std::string& why) {
    bus_.reset();
    owner_.clear();
    unanswered_ = 0;
    patienceEnds_.reset();
    nextProbe_.reset();
    listener_.idsAreVoid();
    become(Condition::unreachable, why);
    settleShown(std::nullopt);
}

void NotificationService::probe() {
    nextProbe_.reset();
    const auto asks = [this](const char* member, sd_bus_message_handler_t take) {
        const auto call = newCall(member);
        return call && sd_bus_call_async(bus_.get(), nullptr, call.get(), take, this, 0) >= 0;
    };
    // Their answers come in this order.
    if (!asks("GetServerInformation", handle<&NotificationService::takeServerName>) ||
        !asks("GetCapabilities", handle<&NotificationService::takeCapabilities>)) {
        isTroubled("the notification service cannot be asked");
        return;
    }
    ++unanswered_;
    patienceEnds_ = steady_clock::now() + patience;
    become(Condition::findingOut, "the notification service is being asked");
}

void NotificationService::isReady() {
    patienceEnds_.reset();
    nextProbe_.reset();
    become(Condition::ready,
           fmt::format("{} on the session bus{}", name_.empty() ? "a notification service" : name_,
                       hasActions_ ? "" : ", which takes no clicks"));
}

void NotificationService::isTroubled(std::string why) {
    patienceEnds_.reset();
    pause_ = pause_.count() == 0 ? firstPause : 2 * pause_;
    if (pause_ <= longestPause) nextProbe_ = steady_clock::now() + pause_;
    become(Condition::troubled, std::move(why));
}

NotificationService::Message NotificationService::newCall(const char* member) const {
    sd_bus_message* message = nullptr;
    if (sd_bus_message_new_method_call(bus_.get(), &message, serviceName, servicePath,
                                       serviceInterface, member) < 0)
        message = nullptr;
    return {message, sd_bus_message_unref};
}

void NotificationService::show(const Notification& notification,
                               std::function<void(std::optional<std::uint32_t>)> answered) {
    shown_ = std::move(answered);
    const auto call = newCall("Notify");
    if (!call || !fill(call.get(), notification) ||
        sd_bus_call_async(bus_.get(), nullptr, call.get(), handle<&NotificationService::takeShown>,
                          this, 0) < 0) {
        isTroubled("the notification could not be sent");
        settleShown(std::nullopt);
        return;
    }
    patienceEnds_ = steady_clock::now() + patience;
}

bool NotificationService::fill(sd_bus_message* message, const Notification& notification) const {
    const auto text =
        hasMarkup_ ? NotificationText::escapedMarkup(notification.body) : notification.body;
    // A service without a place for a text shows the title alone.
    const auto title = hasBody_ || text.empty() ? notification.title
                                                : notification.title + ": " + notification.body;
    const auto urgency = static_cast<std::uint8_t>(notification.urgency);
    constexpr std::int32_t asTheServiceDoes = -1;
    constexpr std::int32_t never = 0;
    const auto add = [message](const char* types, auto... values) {
        return sd_bus_message_append(message, types, values...) >= 0;
    };
    const auto contents = [&] {
        return add("susss", "Tallowbrook", notification.replaces, "utilities-terminal",
                   title.c_str(), hasBody_ ? text.c_str() : "");
    };
    // Services differ in what a click on the text means: one that does not take it for the default
    // action shows at least the button.
    const auto actions = [&] {
        return hasActions_ ? add("as", 4, "default", "Show", "show", "Show") : add("as", 0);
    };
    const auto hints = [&] {
        return sd_bus_message_open_container(message, 'a', "{sv}") >= 0 &&
               add("{sv}", "urgency", "y", urgency) &&
               add("{sv}", "desktop-entry", "s", "tallowbrook") &&
               (!hasSound_ ||
                (notification.playsSound ? add("{sv}", "sound-name", "s", "message-new-instant")
                                         : add("{sv}", "suppress-sound", "b", 1))) &&
               sd_bus_message_close_container(message) >= 0;
    };
    return contents() && actions() && hints() &&
           add("i", notification.staysUntilClosed ? never : asTheServiceDoes);
}

void NotificationService::close(std::uint32_t id) {
    if (!bus_) return;
    const auto call = newCall("CloseNotification");
    if (!call || sd_bus_message_append(call.get(), "u", id) < 0 ||
        sd_bus_message_set_expect_reply(call.get(), 0) < 0)
        return;
    // One that is gone already, or cannot be closed, is nothing to tell anybody.
    sd_bus_send(bus_.get(), call.get(), nullptr);
}

PollInterest NotificationService::interest() const {
    PollInterest interest;
    const auto by = [&interest](std::optional<MonotonicTime> time) {
        if (time && (!interest.deadline || *time < *interest.deadline)) interest.deadline = time;
    };
    by(patienceEnds_);
    by(nextProbe_);
    if (!bus_) return interest;
    const int events = sd_bus_get_events(bus_.get());
    std::uint64_t timeout = 0;
    // A bus that ends has no descriptor to wait for, and has to be looked at.
    if (events < 0 || sd_bus_get_timeout(bus_.get(), &timeout) < 0) {
        by(steady_clock::now());
        return interest;
    }
    interest.descriptor = sd_bus_get_fd(bus_.get());
    interest.events = static_cast<short>(events);
    // By the clock that std::chrono::steady_clock is on Linux.
    if (timeout != UINT64_MAX) by(MonotonicTime{microseconds{static_cast<std::int64_t>(timeout)}});
    return interest;
}

void NotificationService::proceed() {
    // Bounded, so that a flood of signals does not keep all else waiting.
    constexpr int mostSteps = 64;
    for (int step = 0; bus_ && step < mostSteps; ++step) {
        const int status = sd_bus_process(bus_.get(), nullptr);
        if (status < 0) {
            disconnect("the session bus has ended: " + systemText(-status));
            return;
        }
        if (status == 0) break;
    }
    const auto now = steady_clock::now();
    if (patienceEnds_ && *patienceEnds_ <= now) isTroubled(silent);
    if (nextProbe_ && *nextProbe_ <= now && bus_) {
        nextProbe_.reset();
        if (unanswered_ == 0 && !shown_) probe();
    }
}

bool NotificationService::isFromService(sd_bus_message* message) const {
    return !owner_.empty() && textOf(sd_bus_message_get_sender(message)) == owner_;
}

void NotificationService::settleShown(std::optional<std::uint32_t> id) {
    if (const auto answered = std::exchange(shown_, nullptr)) answered(id);
}

void NotificationService::takeServerName(sd_bus_message* answer) {
    const char* name = nullptr;
    const char* maker = nullptr;
    const char* version = nullptr;
    if (sd_bus_message_is_method_error(answer, nullptr) != 0 ||
        sd_bus_message_read(answer, "sss", &name, &maker, &version) < 0)
        return;
    constexpr std::size_t maxLength = 40;
    name_ = NotificationText::plain(fmt::format("{} {}", name, version), maxLength);
}

bool NotificationService::readCapabilities(sd_bus_message* message) {
    hasBody_ = hasMarkup_ = hasActions_ = hasSound_ = false;
    if (sd_bus_message_enter_container(message, 'a', "s") < 0) return false;
    const char* text = nullptr;
    while (sd_bus_message_read(message, "s", &text) > 0) {
        const std::string_view capability{text};
        if (capability == "body") hasBody_ = true;
        if (capability == "body-markup") hasMarkup_ = true;
        if (capability == "actions") hasActions_ = true;
        if (capability == "sound") hasSound_ = true;
    }
    return true;
}

void NotificationService::takeCapabilities(sd_bus_message* answer) {
    --unanswered_;
    if (unanswered_ == 0) patienceEnds_.reset();
    if (const auto* error = sd_bus_message_get_error(answer)) {
        // Of a former service, whose successor has been asked since.
        if (unanswered_ > 0) return;
        const auto name = textOf(error->name);
        // The bus knows of no such service, or could not start it.
        const bool isMissing = name == SD_BUS_ERROR_SERVICE_UNKNOWN ||
                               name == SD_BUS_ERROR_NAME_HAS_NO_OWNER ||
                               name.starts_with("org.freedesktop.DBus.Error.Spawn");
        if (isMissing)
            become(Condition::missing, "no notification service on the session bus");
        else
            isTroubled(whyTroubled(name));
        return;
    }
    if (!readCapabilities(answer)) {
        isTroubled("the notification service does not say what it can do");
        return;
    }
    owner_ = textOf(sd_bus_message_get_sender(answer));
    isReady();
}

void NotificationService::takeShown(sd_bus_message* answer) {
    patienceEnds_.reset();
    std::uint32_t id = 0;
    const auto* error = sd_bus_message_get_error(answer);
    if (error != nullptr || sd_bus_message_read(answer, "u", &id) < 0) {
        // An end of the service has been told already.
        if (condition_ == Condition::ready || condition_ == Condition::troubled)
            isTroubled(whyTroubled(error != nullptr ? textOf(error->name) : "it gives no id"));
        settleShown(std::nullopt);
        return;
    }
    pause_ = {};
    settleShown(id);
    if (condition_ == Condition::troubled) isReady();
}

void NotificationService::takeSignal(sd_bus_message* signal) {
    if (!isFromService(signal)) return;
    std::uint32_t id = 0;
    if (sd_bus_message_is_signal(signal, nullptr, "ActionInvoked") > 0) {
        const char* action = nullptr;
        if (sd_bus_message_read(signal, "us", &id, &action) >= 0) listener_.clicked(id);
    } else if (sd_bus_message_is_signal(signal, nullptr, "NotificationClosed") > 0) {
        std::uint32_t why = 0;
        if (sd_bus_message_read(signal, "uu", &id, &why) >= 0) listener_.closed(id);
    }
}

void NotificationService::takeOwner(sd_bus_message* signal) {
    const char* name = nullptr;
    const char* former = nullptr;
    const char* owner = nullptr;
    if (textOf(sd_bus_message_get_sender(signal)) != "org.freedesktop.DBus" ||
        sd_bus_message_read(signal, "sss", &name, &former, &owner) < 0 ||
        textOf(name) != serviceName || textOf(owner) == owner_)
        return;
    owner_ = textOf(owner);
    listener_.idsAreVoid();
    if (owner_.empty()) {
        patienceEnds_.reset();
        nextProbe_.reset();
        become(Condition::missing, "the notification service has ended");
    } else if (condition_ != Condition::findingOut || !textOf(former).empty()) {
        // What the former one could says nothing of this one.
        probe();
    }
}

}  // namespace tallowbrook::host
