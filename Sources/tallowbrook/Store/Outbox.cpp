#include "Store/Outbox.h"

#include <cstring>

namespace tallowbrook::host {
namespace {

void bindID(SQLite::Statement& statement, int index, const UUID& id) {
    statement.bind(index, &id, static_cast<int>(id.size()));
}

UUID idOf(const SQLite::Column& column) {
    UUID id{};
    if (column.getBytes() == static_cast<int>(id.size()))
        std::memcpy(&id, column.getBlob(), id.size());
    return id;
}

// The last two parameters of a statement on one delivery.
void execOn(const Database::StatementUse& statement, int firstParameter, std::int64_t notification,
            const std::string& channel) {
    statement->bind(firstParameter, notification);
    statement->bind(firstParameter + 1, channel);
    statement->exec();
}

// How many columns a notification has: what a query asks for besides stands behind them.
constexpr int columnsOfNotification = 10;

StoredNotification readNotification(SQLite::Statement& query) {
    StoredNotification notification;
    notification.number = query.getColumn(0).getInt64();
    auto& content = notification.content;
    content.eventID = idOf(query.getColumn(1));
    content.sessionStorageID = query.getColumn(2).getString();
    content.kind = fromRawValue<NotificationKind>(query.getColumn(3).getString())
                       .value_or(NotificationKind::attention);
    content.title = query.getColumn(4).getString();
    content.body = query.getColumn(5).getString();
    content.dedupeKey = query.getColumn(6).getString();
    content.playSound = query.getColumn(7).getInt() != 0;
    notification.observedAt = instantOf(query.getColumn(8));
    return notification;
}

}  // namespace

std::int64_t Outbox::add(const NotificationContent& content, Instant observedAt, Instant decidedAt,
                         const std::vector<std::string>& channels) {
    const auto insert = database_.prepared(
        "INSERT INTO notifications (event_id, session_storage_id, kind, title, body, dedupe_key,"
        " play_sound, observed_at, decided_at) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?)");
    bindID(*insert, 1, content.eventID);
    insert->bind(2, content.sessionStorageID);
    insert->bind(3, std::string{rawValue(content.kind)});
    insert->bind(4, content.title);
    insert->bind(5, content.body);
    insert->bind(6, content.dedupeKey);
    insert->bind(7, content.playSound ? 1 : 0);
    insert->bind(8, storedForm(observedAt));
    insert->bind(9, storedForm(decidedAt));
    insert->exec();
    const auto number = database_.lastInsertedRow();
    for (const auto& channel : channels) {
        const auto insertDelivery = database_.prepared(
            "INSERT INTO deliveries (notification, channel, state, attempts, due_at)"
            " VALUES (?, ?, 'pending', 0, ?)");
        insertDelivery->bind(1, number);
        insertDelivery->bind(2, channel);
        insertDelivery->bind(3, storedForm(decidedAt));
        insertDelivery->exec();
    }
    return number;
}

std::vector<OpenDelivery> Outbox::pending(const std::string& channel) {
    // The state is asked for in the words of the index of what is open, else it would not be used.
    const auto query = database_.prepared(
        "SELECT n.*, d.attempts, d.due_at FROM deliveries d"
        " JOIN notifications n ON n.number = d.notification"
        " WHERE d.state IN ('pending', 'begun') AND d.state = 'pending' AND d.channel = ?"
        " ORDER BY d.notification");
    query->bind(1, channel);
    std::vector<OpenDelivery> deliveries;
    while (query->executeStep())
        deliveries.push_back({readNotification(*query),
                              query->getColumn(columnsOfNotification).getInt(),
                              instantOf(query->getColumn(columnsOfNotification + 1))});
    return deliveries;
}

void Outbox::markBegun(std::int64_t notification, const std::string& channel) {
    const auto update = database_.prepared(
        "UPDATE deliveries SET state = 'begun', attempts = attempts + 1"
        " WHERE notification = ? AND channel = ?");
    execOn(update, 1, notification, channel);
}

void Outbox::markTold(std::int64_t notification, const std::string& channel, Instant at) {
    // The place, not the time, orders what was told: the clock may be set back.
    const auto update = database_.prepared(
        "UPDATE deliveries SET state = 'told', told_at = ?,"
        " place = (SELECT coalesce(max(place), 0) + 1 FROM deliveries)"
        " WHERE notification = ? AND channel = ?");
    update->bind(1, storedForm(at));
    execOn(update, 2, notification, channel);
}

void Outbox::postpone(std::int64_t notification, const std::string& channel, Instant dueAt) {
    const auto update = database_.prepared(
        "UPDATE deliveries SET state = 'pending', attempts = attempts + 1, due_at = ?"
        " WHERE notification = ? AND channel = ?");
    update->bind(1, storedForm(dueAt));
    execOn(update, 2, notification, channel);
}

void Outbox::markRefused(std::int64_t notification, const std::string& channel) {
    const auto update = database_.prepared(
        "UPDATE deliveries SET state = 'refused' WHERE notification = ? AND channel = ?");
    execOn(update, 1, notification, channel);
}

void Outbox::holdBack(std::int64_t notification) {
    const auto update = database_.prepared(
        "UPDATE deliveries SET state = 'dropped' WHERE notification = ?"
        " AND state IN ('pending', 'begun') AND state = 'pending'");
    update->bind(1, notification);
    update->exec();
}

bool Outbox::handOn(const std::string& channel, const std::vector<std::string>& others) {
    const auto open = pending(channel);
    for (const auto& delivery : open) {
        const auto number = delivery.notification.number;
        for (const auto& other : others) {
            const auto insert = database_.prepared(
                "INSERT OR IGNORE INTO deliveries (notification, channel, state, attempts, due_at)"
                " VALUES (?, ?, 'pending', 0, 0)");
            execOn(insert, 1, number, other);
        }
        markRefused(number, channel);
    }
    return !open.empty();
}

void Outbox::recover(const std::string& channel, bool mayRepeat) {
    const auto update = database_.prepared(
        "UPDATE deliveries SET state = ?"
        " WHERE state IN ('pending', 'begun') AND state = 'begun' AND channel = ?");
    update->bind(1, mayRepeat ? "pending" : "refused");
    update->bind(2, channel);
    update->exec();
    const auto hurry = database_.prepared(
        "UPDATE deliveries SET due_at = 0"
        " WHERE state IN ('pending', 'begun') AND state = 'pending' AND due_at > 0"
        " AND attempts > 0 AND channel = ?");
    hurry->bind(1, channel);
    hurry->exec();
}

std::vector<StoredNotification> Outbox::dropOlderThan(Instant time) {
    std::vector<StoredNotification> dropped;
    {
        // By what is open, which is little, not through all that was ever decided.
        const auto query = database_.prepared(
            "SELECT * FROM notifications WHERE observed_at < ? AND number IN"
            " (SELECT notification FROM deliveries WHERE state IN ('pending', 'begun'))"
            " ORDER BY number");
        query->bind(1, storedForm(time));
        while (query->executeStep()) dropped.push_back(readNotification(*query));
    }
    // Most passes find none, and then write nothing.
    for (const auto& notification : dropped) {
        const auto update = database_.prepared(
            "UPDATE deliveries SET state = 'dropped'"
            " WHERE notification = ? AND state IN ('pending', 'begun')");
        update->bind(1, notification.number);
        update->exec();
    }
    std::erase_if(dropped, [this](const StoredNotification& notification) {
        const auto query = database_.prepared(
            "SELECT 1 FROM deliveries WHERE notification = ? AND state = 'told'");
        query->bind(1, notification.number);
        return query->executeStep();
    });
    return dropped;
}

std::vector<StoredNotification> Outbox::notBegun() {
    const auto query = database_.prepared(
        "SELECT * FROM notifications WHERE number IN"
        " (SELECT notification FROM deliveries WHERE state IN ('pending', 'begun')"
        " AND state = 'pending') ORDER BY number");
    std::vector<StoredNotification> open;
    while (query->executeStep()) open.push_back(readNotification(*query));
    return open;
}

bool Outbox::fold(std::int64_t notification) {
    const auto update = database_.prepared(
        "UPDATE deliveries SET state = 'folded' WHERE notification = ? AND state = 'pending'");
    update->bind(1, notification);
    update->exec();
    const auto query = database_.prepared(
        "SELECT 1 FROM deliveries WHERE notification = ? AND state IN ('begun', 'told')");
    query->bind(1, notification);
    return !query->executeStep();
}

void Outbox::dropWaiting(const std::string& sessionStorageID) {
    const auto update = database_.prepared(
        "UPDATE deliveries SET state = 'folded'"
        " WHERE state IN ('pending', 'begun') AND state = 'pending' AND notification IN"
        " (SELECT number FROM notifications"
        " WHERE session_storage_id = ? AND kind IN ('attention', 'reminder'))");
    update->bind(1, sessionStorageID);
    update->exec();
}

std::optional<Instant> Outbox::lastDelivered(const std::string& dedupeKey) {
    const auto query = database_.prepared(
        "SELECT coalesce(max(d.told_at), n.decided_at) FROM notifications n"
        " JOIN deliveries d ON d.notification = n.number"
        " WHERE n.dedupe_key = ? AND d.state IN ('pending', 'begun', 'told')"
        " GROUP BY n.number ORDER BY n.number DESC LIMIT 1");
    query->bind(1, dedupeKey);
    if (!query->executeStep()) return std::nullopt;
    return instantOf(query->getColumn(0));
}

std::vector<ToldNotification> Outbox::toldSince(std::int64_t place) {
    const auto query = database_.prepared(
        "SELECT n.*, d.place FROM deliveries d JOIN notifications n ON n.number = d.notification"
        " WHERE d.place > ? AND NOT EXISTS (SELECT 1 FROM deliveries earlier"
        " WHERE earlier.notification = d.notification AND earlier.place < d.place)"
        " ORDER BY d.place");
    query->bind(1, place);
    std::vector<ToldNotification> told;
    while (query->executeStep())
        told.push_back(
            {readNotification(*query), query->getColumn(columnsOfNotification).getInt64()});
    return told;
}

std::int64_t Outbox::newestPlace() {
    const auto query = database_.prepared("SELECT coalesce(max(place), 0) FROM deliveries");
    return query->executeStep() ? query->getColumn(0).getInt64() : 0;
}

std::vector<NotificationRecord> Outbox::latestOf(const std::string& sessionStorageID, int atMost) {
    // The keys of a session begin with its id, so their index finds them; the id itself is compared
    // too, since another one may begin with it.
    const auto query = database_.prepared(
        "SELECT * FROM (SELECT * FROM notifications"
        " WHERE dedupe_key >= ?1 || '|' AND dedupe_key < ?1 || '}' AND session_storage_id = ?1"
        " ORDER BY number DESC LIMIT ?2) ORDER BY number");
    query->bind(1, sessionStorageID);
    query->bind(2, atMost);
    std::vector<NotificationRecord> records;
    while (query->executeStep()) records.push_back({readNotification(*query), {}});
    for (auto& record : records) {
        const auto rows = database_.prepared(
            "SELECT channel, state, attempts, told_at FROM deliveries WHERE notification = ?"
            " ORDER BY channel");
        rows->bind(1, record.notification.number);
        while (rows->executeStep()) {
            DeliveryRecord delivery{
                .channel = rows->getColumn(0).getString(),
                .state = fromRawValue<DeliveryState>(rows->getColumn(1).getString())
                             .value_or(DeliveryState::pending),
                .attempts = rows->getColumn(2).getInt(),
                .toldAt = std::nullopt};
            if (!rows->isColumnNull(3)) delivery.toldAt = instantOf(rows->getColumn(3));
            record.deliveries.push_back(std::move(delivery));
        }
    }
    return records;
}

void Outbox::noteUntold(const Untold& untold) {
    const auto insert = database_.prepared(
        "INSERT INTO untold (event_id, session_storage_id, reason, at, turn, is_held_back)"
        " VALUES (?, ?, ?, ?, ?, ?)");
    bindID(*insert, 1, untold.eventID);
    insert->bind(2, untold.session);
    insert->bind(3, std::string{rawValue(untold.reason)});
    insert->bind(4, storedForm(untold.at));
    if (untold.turn)
        insert->bind(5, std::chrono::floor<std::chrono::microseconds>(*untold.turn).count());
    const bool isHeldBack =
        untold.reason == UntoldReason::paused || untold.reason == UntoldReason::quietHours;
    insert->bind(6, isHeldBack ? 1 : 0);
    insert->exec();
}

std::vector<Untold> Outbox::untold(const std::string& session) {
    const auto query = database_.prepared(
        "SELECT event_id, reason, at, turn FROM untold WHERE session_storage_id = ?"
        " ORDER BY number");
    query->bind(1, session);
    std::vector<Untold> all;
    while (query->executeStep()) {
        // One of a newer program has a reason that this one has no words for.
        const auto reason = fromRawValue<UntoldReason>(query->getColumn(1).getString());
        if (!reason) continue;
        Untold& untold = all.emplace_back();
        untold.eventID = idOf(query->getColumn(0));
        untold.session = session;
        untold.reason = *reason;
        untold.at = instantOf(query->getColumn(2));
        if (!query->getColumn(3).isNull())
            untold.turn = std::chrono::microseconds{query->getColumn(3).getInt64()};
    }
    return all;
}

std::set<std::string> Outbox::heldBack() {
    const auto query =
        database_.prepared("SELECT session_storage_id FROM untold WHERE is_held_back = 1");
    std::set<std::string> sessions;
    while (query->executeStep()) sessions.insert(query->getColumn(0).getString());
    return sessions;
}

void Outbox::letGoOfHeldBack() {
    database_.prepared("UPDATE untold SET is_held_back = 0 WHERE is_held_back = 1")->exec();
}

std::optional<std::string> Outbox::sessionOf(std::int64_t notification) {
    const auto query =
        database_.prepared("SELECT session_storage_id FROM notifications WHERE number = ?");
    query->bind(1, notification);
    if (!query->executeStep()) return std::nullopt;
    return query->getColumn(0).getString();
}

std::optional<ReminderCount> Outbox::reminderCount(const SessionKey& key) {
    const auto query = database_.prepared(
        "SELECT waiting_since, sent, last_sent_at FROM reminders WHERE session = ?");
    query->bind(1, key.storageID());
    if (!query->executeStep()) return std::nullopt;
    return ReminderCount{instantOf(query->getColumn(0)), query->getColumn(1).getInt(),
                         instantOf(query->getColumn(2))};
}

void Outbox::setReminderCount(const SessionKey& key, const ReminderCount& count) {
    const auto insert = database_.prepared(
        "INSERT OR REPLACE INTO reminders (session, waiting_since, sent, last_sent_at)"
        " VALUES (?, ?, ?, ?)");
    insert->bind(1, key.storageID());
    insert->bind(2, storedForm(count.waitingSince));
    insert->bind(3, count.sent);
    insert->bind(4, storedForm(count.lastSentAt));
    insert->exec();
}

}  // namespace tallowbrook::host
