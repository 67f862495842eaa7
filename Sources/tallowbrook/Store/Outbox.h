// What is to be told to the user, what was, and what was not: a notification is stored once, with
// one row for each channel that is to tell it, so that one dead channel stops no other.
//
// A view of a `Database`, which must outlive it; made where it is needed. Throws SQLite::Exception
// when the database fails.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Domain/EnumNames.h"
#include "Notifications/NotificationPolicy.h"
#include "Store/Database.h"
#include "Store/Untold.h"

namespace tallowbrook::host {

struct StoredNotification {
    std::int64_t number = 0;  // ascending in the order of the decisions
    NotificationContent content;
    Instant observedAt{};  // of the event behind it
};

// A notification that a channel has still to tell.
struct OpenDelivery {
    StoredNotification notification;
    int attempts = 0;  // that failed
    Instant dueAt{};   // not before then
};

// A notification that was told, with its place in the order of telling.
struct ToldNotification {
    StoredNotification notification;
    std::int64_t place = 0;
};

enum class DeliveryState { pending, begun, told, refused, dropped, folded };
inline constexpr std::array deliveryStateNames{
    std::pair{DeliveryState::pending, std::string_view{"pending"}},
    std::pair{DeliveryState::begun, std::string_view{"begun"}},
    std::pair{DeliveryState::told, std::string_view{"told"}},
    std::pair{DeliveryState::refused, std::string_view{"refused"}},
    std::pair{DeliveryState::dropped, std::string_view{"dropped"}},
    std::pair{DeliveryState::folded, std::string_view{"folded"}},
};
constexpr const auto& namesOf(DeliveryState) { return deliveryStateNames; }

// What one channel has come to with a notification.
struct DeliveryRecord {
    std::string channel;
    DeliveryState state = DeliveryState::pending;
    int attempts = 0;               // that were made
    std::optional<Instant> toldAt;  // of one that was told
};

struct NotificationRecord {
    StoredNotification notification;
    std::vector<DeliveryRecord> deliveries;  // by channel; none where none was usable
};

// The reminders of one waiting period of a session.
struct ReminderCount {
    Instant waitingSince{};
    int sent = 0;
    Instant lastSentAt = distantPast;
    bool operator==(const ReminderCount&) const = default;
};

class Outbox {
 public:
    explicit Outbox(Database& database) : database_{database} {}

    // To be told by each of these channels, at once. The rows of all are made or none where the
    // caller has a transaction. Gives the notification's number.
    std::int64_t add(const NotificationContent& content, Instant observedAt, Instant decidedAt,
                     const std::vector<std::string>& channels);

    // What the channel has still to tell, in the order of the decisions, and has not begun.
    std::vector<OpenDelivery> pending(const std::string& channel);

    // The channel is at it, and what comes of it will be known later.
    void markBegun(std::int64_t notification, const std::string& channel);
    void markTold(std::int64_t notification, const std::string& channel, Instant at);
    // The attempt failed; the next one is made at `dueAt`.
    void postpone(std::int64_t notification, const std::string& channel, Instant dueAt);
    // It will not be told by this channel.
    void markRefused(std::int64_t notification, const std::string& channel);

    // No channel is to tell it any more, of those that have not begun.
    void holdBack(std::int64_t notification);

    // What a channel has still to tell, and has not begun, is to be told by these instead, at once.
    // Tells whether there was anything.
    bool handOn(const std::string& channel, const std::vector<std::string>& others);

    // At the start of a host. What the end of the last one has cut off is pending again, or refused
    // where telling it twice would do harm. What was postponed is due at once: the new host may
    // well have what the old one lacked.
    void recover(const std::string& channel, bool mayRepeat);

    // Gives up what no channel has told and whose event was observed before `time`; gives it once.
    std::vector<StoredNotification> dropOlderThan(Instant time);

    // What some channel has still to tell and has not begun, in the order of the decisions.
    std::vector<StoredNotification> notBegun();
    // It is not told any more, by any channel that has not begun. False where one has.
    bool fold(std::int64_t notification);
    // Gives up what was to be told of a session's waiting and was not begun.
    void dropWaiting(const std::string& sessionStorageID);

    // When the user was last told of this key by any channel, or when that was last decided if it
    // is still to come.
    std::optional<Instant> lastDelivered(const std::string& dedupeKey);

    // For a host that shows what another one tells: each notification once, at its first telling,
    // in the order of telling, behind this place.
    std::vector<ToldNotification> toldSince(std::int64_t place);
    std::int64_t newestPlace();  // 0 for none

    // The latest decisions to tell of a session, oldest first, with what has come of each.
    std::vector<NotificationRecord> latestOf(const std::string& sessionStorageID, int atMost);

    // That the user is not told of this event.
    void noteUntold(const Untold& untold);
    // Of a session, by its storage id, in the order of the decisions.
    std::vector<Untold> untold(const std::string& session);
    // The sessions, by storage id, of what a pause or quiet hours hold back, until it is let go of.
    std::set<std::string> heldBack();
    void letGoOfHeldBack();

    // The session of a notification, by storage id; absent for one that is not there.
    std::optional<std::string> sessionOf(std::int64_t notification);

    std::optional<ReminderCount> reminderCount(const SessionKey& key);
    void setReminderCount(const SessionKey& key, const ReminderCount& count);

 private:
    Database& database_;
};

}  // namespace tallowbrook::host
