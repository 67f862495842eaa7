#include "Store/EventStore.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <thread>

#include "Domain/EventCoding.h"
#include "Domain/RecordCoding.h"
#include "SessionState/SessionSnapshotCoding.h"
#include "Store/StoreSchema.h"
#include "System/FileDescriptor.h"
#include "Text/Digits.h"

namespace tallowbrook::host {
namespace {

constexpr std::chrono::milliseconds busyTimeout{5000};
constexpr const char* preferencesKey = "notificationPreferences";
constexpr const char* reminderIntervalKey = "reminderIntervalMinutes";
constexpr const char* waitingCycleKey = "waitingCycle";

std::string healthKey(Provider provider) {
    return "integrationHealth." + std::string{rawValue(provider)};
}

// SQLite gives its companion files the mode of the database, so that one must be right first.
std::expected<void, FileError> makeOwnerOnlyFile(const std::filesystem::path& path) {
    const FileDescriptor file{::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600)};
    if (!file.isOpen()) return std::unexpected(FileError{"open", errno});
    if (fchmod(file.number(), 0600) != 0) return std::unexpected(FileError{"chmod", errno});
    return {};
}

// The step into this mode does not wait for other processes as all else does, so it is tried again.
void enterWALMode(SQLite::Database& database) {
    const auto deadline = std::chrono::steady_clock::now() + busyTimeout;
    while (true) {
        try {
            database.exec("PRAGMA journal_mode = WAL");
            return;
        } catch (const SQLite::Exception& error) {
            const bool isBusy = error.getErrorCode() == SQLITE_BUSY;
            if (!isBusy || std::chrono::steady_clock::now() >= deadline) throw;
            std::this_thread::sleep_for(std::chrono::milliseconds{5});
        }
    }
}

std::int64_t micros(Instant instant) { return instant.time_since_epoch().count(); }

Instant instantOf(const SQLite::Column& column) {
    return Instant{std::chrono::microseconds{column.getInt64()}};
}

void bindID(SQLite::Statement& statement, int index, const UUID& id) {
    statement.bind(index, &id, static_cast<int>(id.size()));
}

UUID idOf(const SQLite::Column& column) {
    UUID id{};
    if (column.getBytes() == static_cast<int>(id.size()))
        std::memcpy(&id, column.getBlob(), id.size());
    return id;
}

constexpr const char* notificationColumns =
    "number, event_id, session_storage_id, kind, title, body, dedupe_key, play_sound, observed_at";

}  // namespace

EventStore::EventStore(std::unique_ptr<SQLite::Database> database)
    : database_{std::move(database)} {}

std::expected<EventStore, std::string> EventStore::open(const TallowbrookPaths& paths) {
    const auto failed = [&](const std::string& reason) {
        return std::unexpected("The database " + paths.databaseFile().string() +
                               " cannot be opened: " + reason + ".");
    };
    if (auto made = TallowbrookPaths::ensureDirectory(paths.home); !made)
        return failed(made.error().description());
    if (auto made = makeOwnerOnlyFile(paths.databaseFile()); !made)
        return failed(made.error().description());
    try {
        auto database = std::make_unique<SQLite::Database>(paths.databaseFile().string(),
                                                           SQLite::OPEN_READWRITE,
                                                           static_cast<int>(busyTimeout.count()));
        if (StoreSchema::version(*database) > StoreSchema::currentVersion())
            return failed("it was written by a newer version of tallowbrook");
        enterWALMode(*database);
        // A segment is deleted once its events are committed, so a commit must survive a power cut.
        database->exec("PRAGMA synchronous = FULL");
        database->exec("PRAGMA foreign_keys = ON");
        StoreSchema::migrate(*database);
        return EventStore{std::move(database)};
    } catch (const SQLite::Exception& error) {
        return failed(error.what());
    }
}

bool EventStore::exists(const TallowbrookPaths& paths) {
    struct stat status{};
    // What cannot be looked at may well be there: opening it will tell the reason.
    if (stat(paths.databaseFile().c_str(), &status) != 0) return errno != ENOENT;
    return status.st_size > 0;
}

SQLite::Transaction EventStore::beginWriting() {
    return SQLite::Transaction{*database_, SQLite::TransactionBehavior::IMMEDIATE};
}

void EventStore::ReleaseStatement::operator()(SQLite::Statement* statement) const {
    statement->tryReset();
    statement->clearBindings();
}

EventStore::StatementUse EventStore::prepared(const char* sql) {
    auto found = statements_.find(sql);
    if (found == statements_.end())
        found = statements_.emplace(sql, SQLite::Statement{*database_, sql}).first;
    return StatementUse{&found->second};
}

bool EventStore::addEvent(const AgentEvent& event, std::string_view line,
                          std::optional<std::int64_t> session, EventEffect effect) {
    // Both outlive their statement's use.
    const std::string record{line};
    const std::string effectName{rawValue(effect)};
    const auto insert = prepared(
        "INSERT OR IGNORE INTO events (id, session, observed_at, effect, record)"
        " VALUES (?, ?, ?, ?, ?)");
    bindID(*insert, 1, event.id);
    if (session) insert->bind(2, *session);
    insert->bind(3, micros(event.observedAt));
    insert->bindNoCopy(4, effectName);
    insert->bindNoCopy(5, record);
    return insert->exec() > 0;
}

std::int64_t EventStore::eventCount() {
    const auto query = prepared("SELECT count(*) FROM events");
    return query->executeStep() ? query->getColumn(0).getInt64() : 0;
}

std::optional<Instant> EventStore::newestEventAt() {
    const auto query = prepared("SELECT max(observed_at) FROM events");
    if (!query->executeStep() || query->getColumn(0).isNull()) return std::nullopt;
    return instantOf(query->getColumn(0));
}

std::vector<StoredEvent> EventStore::latestEvents(const SessionKey& key, int atMost) {
    std::vector<StoredEvent> events;
    const auto stored = session(key);
    if (!stored) return events;
    const auto query = prepared(
        "SELECT record, effect FROM events WHERE session = ?"
        " ORDER BY observed_at DESC, number DESC LIMIT ?");
    query->bind(1, stored->number);
    query->bind(2, atMost);
    while (query->executeStep()) {
        auto event = EventCoding::decodeLine(query->getColumn(0).getString());
        const auto effect = fromRawValue<EventEffect>(query->getColumn(1).getString());
        if (event && effect) events.push_back({std::move(*event), *effect});
    }
    std::ranges::reverse(events);
    return events;
}

std::optional<StoredSession> EventStore::session(const SessionKey& key) {
    const auto query = prepared("SELECT number, snapshot FROM sessions WHERE storage_id = ?");
    query->bind(1, key.storageID());
    if (!query->executeStep()) return std::nullopt;
    StoredSession session{query->getColumn(0).getInt64(), std::nullopt};
    if (auto decoded = SessionSnapshotCoding::decode(query->getColumn(1).getString()))
        session.snapshot = std::move(*decoded);
    return session;
}

std::vector<SessionSnapshot> EventStore::sessions() {
    std::vector<SessionSnapshot> sessions;
    const auto query = prepared("SELECT snapshot FROM sessions ORDER BY number");
    while (query->executeStep())
        if (auto snapshot = SessionSnapshotCoding::decode(query->getColumn(0).getString()))
            sessions.push_back(std::move(*snapshot));
    return sessions;
}

std::int64_t EventStore::addSession(const SessionSnapshot& snapshot) {
    const auto insert = prepared("INSERT INTO sessions (storage_id, snapshot) VALUES (?, ?)");
    insert->bind(1, snapshot.id());
    insert->bind(2, SessionSnapshotCoding::encode(snapshot));
    insert->exec();
    return database_->getLastInsertRowid();
}

void EventStore::updateSession(std::int64_t number, const SessionSnapshot& snapshot) {
    const auto update = prepared("UPDATE sessions SET snapshot = ? WHERE number = ?");
    update->bind(1, SessionSnapshotCoding::encode(snapshot));
    update->bind(2, number);
    update->exec();
}

void EventStore::removeSession(const SessionKey& key) {
    auto transaction = beginWriting();
    if (const auto stored = session(key)) {
        for (const char* sql :
             {"DELETE FROM events WHERE session = ?", "DELETE FROM sessions WHERE number = ?"}) {
            const auto remove = prepared(sql);
            remove->bind(1, stored->number);
            remove->exec();
        }
    }
    transaction.commit();
}

void EventStore::addNotification(const NotificationContent& content, Instant observedAt,
                                 Instant decidedAt) {
    const auto insert = prepared(
        "INSERT INTO notifications (event_id, session_storage_id, kind, title, body, dedupe_key,"
        " play_sound, observed_at, decided_at, state)"
        " VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, 'pending')");
    bindID(*insert, 1, content.eventID);
    insert->bind(2, content.sessionStorageID);
    insert->bind(3, std::string{rawValue(content.kind)});
    insert->bind(4, content.title);
    insert->bind(5, content.body);
    insert->bind(6, content.dedupeKey);
    insert->bind(7, content.playSound ? 1 : 0);
    insert->bind(8, micros(observedAt));
    insert->bind(9, micros(decidedAt));
    insert->exec();
}

std::vector<StoredNotification> EventStore::readNotifications(StatementUse query) {
    std::vector<StoredNotification> notifications;
    while (query->executeStep()) {
        StoredNotification notification;
        notification.number = query->getColumn(0).getInt64();
        auto& content = notification.content;
        content.eventID = idOf(query->getColumn(1));
        content.sessionStorageID = query->getColumn(2).getString();
        content.kind = fromRawValue<NotificationKind>(query->getColumn(3).getString())
                           .value_or(NotificationKind::attention);
        content.title = query->getColumn(4).getString();
        content.body = query->getColumn(5).getString();
        content.dedupeKey = query->getColumn(6).getString();
        content.playSound = query->getColumn(7).getInt() != 0;
        notification.observedAt = instantOf(query->getColumn(8));
        notifications.push_back(std::move(notification));
    }
    return notifications;
}

std::vector<StoredNotification> EventStore::pendingNotifications() {
    static const std::string sql = std::string{"SELECT "} + notificationColumns +
                                   " FROM notifications WHERE state = 'pending' ORDER BY number";
    return readNotifications(prepared(sql.c_str()));
}

std::vector<StoredNotification> EventStore::toldNotifications(std::int64_t after) {
    static const std::string sql = std::string{"SELECT "} + notificationColumns +
                                   " FROM notifications WHERE number > ? AND state = 'told'"
                                   " ORDER BY number";
    auto query = prepared(sql.c_str());
    query->bind(1, after);
    return readNotifications(std::move(query));
}

std::int64_t EventStore::newestToldNotification() {
    const auto query =
        prepared("SELECT coalesce(max(number), 0) FROM notifications WHERE state = 'told'");
    return query->executeStep() ? query->getColumn(0).getInt64() : 0;
}

void EventStore::markTold(std::int64_t notification, Instant at) {
    const auto update =
        prepared("UPDATE notifications SET state = 'told', told_at = ? WHERE number = ?");
    update->bind(1, micros(at));
    update->bind(2, notification);
    update->exec();
}

void EventStore::markDropped(std::int64_t notification) {
    const auto update = prepared("UPDATE notifications SET state = 'dropped' WHERE number = ?");
    update->bind(1, notification);
    update->exec();
}

std::optional<Instant> EventStore::lastDelivered(const std::string& dedupeKey) {
    const auto query = prepared(
        "SELECT coalesce(told_at, decided_at) FROM notifications"
        " WHERE dedupe_key = ? AND state IN ('pending', 'told') ORDER BY number DESC LIMIT 1");
    query->bind(1, dedupeKey);
    if (!query->executeStep()) return std::nullopt;
    return instantOf(query->getColumn(0));
}

std::optional<ReminderCount> EventStore::reminderCount(const SessionKey& key) {
    const auto query =
        prepared("SELECT waiting_since, sent, last_sent_at FROM reminders WHERE session = ?");
    query->bind(1, key.storageID());
    if (!query->executeStep()) return std::nullopt;
    return ReminderCount{instantOf(query->getColumn(0)), query->getColumn(1).getInt(),
                         instantOf(query->getColumn(2))};
}

void EventStore::setReminderCount(const SessionKey& key, const ReminderCount& count) {
    const auto insert = prepared(
        "INSERT OR REPLACE INTO reminders (session, waiting_since, sent, last_sent_at)"
        " VALUES (?, ?, ?, ?)");
    insert->bind(1, key.storageID());
    insert->bind(2, micros(count.waitingSince));
    insert->bind(3, count.sent);
    insert->bind(4, micros(count.lastSentAt));
    insert->exec();
}

std::optional<std::string> EventStore::setting(const std::string& key) {
    const auto query = prepared("SELECT value FROM settings WHERE key = ?");
    query->bind(1, key);
    if (!query->executeStep()) return std::nullopt;
    return query->getColumn(0).getString();
}

void EventStore::setSetting(const std::string& key, const std::string& value) {
    const auto insert = prepared("INSERT OR REPLACE INTO settings (key, value) VALUES (?, ?)");
    insert->bind(1, key);
    insert->bind(2, value);
    insert->exec();
}

std::optional<NotificationPreferences> EventStore::preferences() {
    const auto stored = setting(preferencesKey);
    if (!stored) return std::nullopt;
    auto decoded = NotificationPreferencesCoding::decode(*stored);
    if (!decoded) return std::nullopt;
    return *decoded;
}

void EventStore::setPreferences(const NotificationPreferences& preferences) {
    setSetting(preferencesKey, NotificationPreferencesCoding::encode(preferences));
}

std::optional<std::chrono::minutes> EventStore::reminderInterval() {
    const auto stored = setting(reminderIntervalKey);
    if (!stored) return std::nullopt;
    const auto minutes = parseNumber<int>(*stored);
    if (!minutes) return std::nullopt;
    return std::chrono::minutes{*minutes};
}

void EventStore::setReminderInterval(std::chrono::minutes interval) {
    setSetting(reminderIntervalKey, std::to_string(interval.count()));
}

WaitingCycle EventStore::waitingCycle() {
    const auto stored = setting(waitingCycleKey);
    auto decoder = RecordDecoder::parse(stored.value_or(""));
    if (!decoder) return {};
    WaitingCycle::Pick pick{decoder->text("id"), decoder->date("at")};
    if (decoder->failure()) return {};
    return {std::move(pick)};
}

void EventStore::setWaitingCycle(const WaitingCycle& cycle) {
    RecordEncoder encoder;
    if (cycle.last) {
        encoder.encode("id", cycle.last->id);
        encoder.encode("at", cycle.last->at);
    }
    setSetting(waitingCycleKey, encoder.text());
}

IntegrationHealthRecord EventStore::integrationHealth(Provider provider) {
    const auto stored = setting(healthKey(provider));
    if (!stored) return {};
    return IntegrationHealthCoding::decode(*stored).value_or(IntegrationHealthRecord{});
}

void EventStore::setIntegrationHealth(Provider provider, const IntegrationHealthRecord& record) {
    setSetting(healthKey(provider), IntegrationHealthCoding::encode(record));
}

}  // namespace tallowbrook::host
