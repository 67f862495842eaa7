// What the host remembers: events, sessions, notifications and settings, in one SQLite database.
//
// A value belongs to one thread; any number of processes may open the same database. Every
// operation but `open` throws SQLite::Exception when the database fails, and changes nothing then
// that a transaction around it does not undo.
#pragma once

#include <SQLiteCpp/Database.h>
#include <SQLiteCpp/Statement.h>
#include <SQLiteCpp/Transaction.h>

#include <cstdint>
#include <expected>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Domain/AgentEvent.h"
#include "EventBridge/TallowbrookPaths.h"
#include "Integrations/IntegrationHealth.h"
#include "Notifications/NotificationPolicy.h"
#include "Notifications/NotificationPreferences.h"
#include "SessionState/SessionReducer.h"
#include "SessionState/WaitingCycle.h"

namespace tallowbrook::host {

struct StoredSession {
    std::int64_t number = 0;
    // Absent when what is stored cannot be read: the session then starts anew, under its number.
    std::optional<SessionSnapshot> snapshot;
};

struct StoredEvent {
    AgentEvent event;
    EventEffect effect = EventEffect::noSession;
};

// The reminders of one waiting period of a session.
struct ReminderCount {
    Instant waitingSince{};
    int sent = 0;
    Instant lastSentAt = distantPast;
    bool operator==(const ReminderCount&) const = default;
};

struct StoredNotification {
    std::int64_t number = 0;  // ascending in the order of the decisions
    NotificationContent content;
    Instant observedAt{};  // of the event behind it
};

class EventStore {
 public:
    // One store of a home at a time in a process. Creates the database, owner-only, and brings it
    // to the current schema. The error is a whole sentence for the user; a database of a newer
    // program is refused and left as it is.
    [[nodiscard]] static std::expected<EventStore, std::string> open(const TallowbrookPaths& paths);

    // Whether there is a database to open at all, for those who only look.
    static bool exists(const TallowbrookPaths& paths);

    // A transaction that writes; gives up after 5 s when another process holds the database.
    SQLite::Transaction beginWriting();

    // `line` is the event's JSON text, without a line feed. False when this event, by its id and
    // time, is there already; it is then left as it is.
    bool addEvent(const AgentEvent& event, std::string_view line,
                  std::optional<std::int64_t> session, EventEffect effect);
    std::int64_t eventCount();
    std::optional<Instant> newestEventAt();
    // The latest of a session, oldest first. What cannot be read is left out.
    std::vector<StoredEvent> latestEvents(const SessionKey& key, int atMost);

    std::optional<StoredSession> session(const SessionKey& key);
    std::vector<SessionSnapshot> sessions();
    std::int64_t addSession(const SessionSnapshot& snapshot);
    void updateSession(std::int64_t number, const SessionSnapshot& snapshot);
    // With its events; its notifications stay. Does nothing where there is no such session.
    void removeSession(const SessionKey& key);

    void addNotification(const NotificationContent& content, Instant observedAt, Instant decidedAt);
    std::vector<StoredNotification> pendingNotifications();
    void markTold(std::int64_t notification, Instant at);
    // It came too late to be told.
    void markDropped(std::int64_t notification);
    // When the user was last told of this key, or when that was last decided if it is still to
    // come.
    std::optional<Instant> lastDelivered(const std::string& dedupeKey);
    // For those who watch another process telling: told ones with a higher number than `after`.
    std::vector<StoredNotification> toldNotifications(std::int64_t after);
    std::int64_t newestToldNotification();  // 0 for none

    std::optional<ReminderCount> reminderCount(const SessionKey& key);
    void setReminderCount(const SessionKey& key, const ReminderCount& count);

    // Absent until the user has stored some, and when what is stored cannot be read.
    std::optional<NotificationPreferences> preferences();
    void setPreferences(const NotificationPreferences& preferences);

    // Zero: none. Absent until the user has chosen.
    std::optional<std::chrono::minutes> reminderInterval();
    void setReminderInterval(std::chrono::minutes interval);

    // Where stepping through the waiting sessions has come to.
    WaitingCycle waitingCycle();
    void setWaitingCycle(const WaitingCycle& cycle);

    // Empty until something is stored, and when what is stored cannot be read.
    IntegrationHealthRecord integrationHealth(Provider provider);
    void setIntegrationHealth(Provider provider, const IntegrationHealthRecord& record);

 private:
    explicit EventStore(std::unique_ptr<SQLite::Database> database);

    // A read that is not reset would keep its view of the database, and the log could not shrink.
    struct ReleaseStatement {
        void operator()(SQLite::Statement* statement) const;
    };
    using StatementUse = std::unique_ptr<SQLite::Statement, ReleaseStatement>;

    std::optional<std::string> setting(const std::string& key);
    void setSetting(const std::string& key, const std::string& value);

    // Compiles a statement once; `sql` lives as long as the store.
    StatementUse prepared(const char* sql);
    static std::vector<StoredNotification> readNotifications(StatementUse query);

    std::unique_ptr<SQLite::Database> database_;
    std::map<const char*, SQLite::Statement> statements_;
};

}  // namespace tallowbrook::host
