// The desktop's notification service, reached over the session bus: the Desktop Notifications
// Specification 1.2, through sd-bus
// (https://specifications.freedesktop.org/notification-spec/1.2/).
//
// Nothing here waits: what is asked is answered later, by way of the source. Used by one thread.
#pragma once

#include <systemd/sd-bus.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Loop/PollLoop.h"

namespace tallowbrook::host {

class NotificationService {
 public:
    enum class Condition {
        unreachable,  // no bus, or none that was asked yet
        findingOut,
        ready,
        missing,   // the bus has no such service
        troubled,  // it does not answer, or with errors
    };

    struct Notification {
        enum class Urgency : std::uint8_t {
            normal = 1,
            critical = 2
        };  // as the service knows them
        std::uint32_t replaces = 0;  // the id of an earlier one; 0: none
        std::string title;           // both in UTF-8 without control characters
        std::string body;
        Urgency urgency = Urgency::normal;
        bool staysUntilClosed = false;
        bool playsSound = false;
    };

    // What the service and the bus bring about. A listener may ask for anything but the service's
    // end.
    struct Listener {
        std::function<void()> conditionChanged = [] {};
        std::function<void(std::uint32_t id)> clicked = [](std::uint32_t) {};
        std::function<void(std::uint32_t id)> closed = [](std::uint32_t) {};
        // No id means anything from here on.
        std::function<void()> idsAreVoid = [] {};
    };

    explicit NotificationService(Listener listener) : listener_{std::move(listener)} {}
    ~NotificationService();
    NotificationService(const NotificationService&) = delete;
    NotificationService& operator=(const NotificationService&) = delete;

    Condition condition() const { return condition_; }
    // In a few words, such as "dunst 1.9.0 on the session bus".
    const std::string& reason() const { return reason_; }
    bool takesClicks() const { return hasActions_; }

    // Asks the service what it can do, unless that is known, or was asked a moment ago. It is
    // started by the bus where that can.
    void prepare();

    // Shows a notification; in the condition `ready` alone, and not before the last one was
    // answered. `answered` is given its id; nothing when it was refused. A service that takes
    // longer than a few seconds is `troubled`, and ready again with its late answer.
    void show(const Notification& notification,
              std::function<void(std::optional<std::uint32_t> id)> answered);

    // Takes one back. Its own answer is not waited for.
    void close(std::uint32_t id);

    PollInterest interest() const;
    void proceed();

 private:
    struct BusCloser {
        void operator()(sd_bus* bus) const { sd_bus_close_unref(bus); }
    };
    using Message = std::unique_ptr<sd_bus_message, decltype(&sd_bus_message_unref)>;

    void connect();
    void disconnect(const std::string& why);
    void probe();
    void isReady();
    void isTroubled(std::string why);
    void become(Condition condition, std::string reason);
    Message newCall(const char* member) const;
    bool isFromService(sd_bus_message* message) const;
    bool fill(sd_bus_message* message, const Notification& notification) const;
    bool readCapabilities(sd_bus_message* message);
    void settleShown(std::optional<std::uint32_t> id);

    void takeServerName(sd_bus_message* answer);
    void takeCapabilities(sd_bus_message* answer);
    void takeShown(sd_bus_message* answer);
    void takeSignal(sd_bus_message* signal);
    void takeOwner(sd_bus_message* signal);

    template <void (NotificationService::*take)(sd_bus_message*)>
    static int handle(sd_bus_message* message, void* service, sd_bus_error*) {
        (static_cast<NotificationService*>(service)->*take)(message);
        return 0;
    }

    Listener listener_;
    std::unique_ptr<sd_bus, BusCloser> bus_;
    Condition condition_ = Condition::unreachable;
    std::string reason_ = "not asked yet";
    std::string owner_;  // of the service's name: the one whose signals count
    std::string name_;   // and version
    bool hasBody_ = false;
    bool hasMarkup_ = false;
    bool hasActions_ = false;
    bool hasSound_ = false;

    int unanswered_ = 0;                                       // probes
    std::function<void(std::optional<std::uint32_t>)> shown_;  // while a notification is unanswered
    std::optional<MonotonicTime> patienceEnds_;
    std::optional<MonotonicTime> nextProbe_;  // by itself
    std::optional<MonotonicTime> lastProbe_;
    std::chrono::seconds pause_{};  // before the next probe by itself
};

}  // namespace tallowbrook::host
