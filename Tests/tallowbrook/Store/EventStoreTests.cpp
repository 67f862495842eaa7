#include "Store/EventStore.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <memory>

#include "Domain/EventCoding.h"
#include "Store/StoreSchema.h"
#include "StoreAtHome.h"
#include "Support/ChildProcess.h"
#include "Support/FileContents.h"
#include "Support/FileModeMask.h"

namespace tallowbrook::host {
namespace {

SessionSnapshot snapshotOf(Provider provider, const std::string& sessionID) {
    return SessionSnapshot::initial({provider, sessionID}, numberedEvent(1));
}

bool add(EventStore& store, const AgentEvent& event, std::optional<std::int64_t> session,
         EventEffect effect) {
    return store.addEvent(event, EventCoding::encodeLine(event), session, effect);
}

TEST(EventStore, makesAnEmptyDatabaseOfTheCurrentSchema) {
    const StoreAtHome home;
    EXPECT_FALSE(EventStore::exists(home.paths));
    EventStore store = home.open();
    EXPECT_TRUE(EventStore::exists(home.paths));
    EXPECT_EQ(home.text("PRAGMA user_version"), std::to_string(StoreSchema::currentVersion()));
    EXPECT_EQ(store.eventCount(), 0);
    EXPECT_TRUE(store.sessions().empty());
    EXPECT_TRUE(store.pendingNotifications().empty());
    EXPECT_TRUE(store.toldNotifications(0).empty());
    EXPECT_EQ(store.newestToldNotification(), 0);
    EXPECT_EQ(store.preferences(), std::nullopt);
}

TEST(EventStore, isTheOwnersAloneWhateverTheUmask) {
    for (const mode_t mask : {mode_t{0000}, mode_t{0077}, mode_t{0777}}) {
        const StoreAtHome home;
        const FileModeMask masked{mask};
        EventStore store = home.open();
        for (const char* companion : {"", "-wal", "-shm"}) {
            const std::string file = home.paths.databaseFile().string() + companion;
            EXPECT_EQ(modeOf(file.c_str()), 0600U) << file;
        }
        EXPECT_EQ(modeOf(home.paths.home.c_str()), 0700U);
    }
}

TEST(EventStore, anEmptyFileIsNoDatabaseYet) {
    const StoreAtHome home;
    writeContents(home.paths.databaseFile(), "");
    EXPECT_FALSE(EventStore::exists(home.paths));
    EXPECT_EQ(home.open().eventCount(), 0);
}

TEST(EventStore, keepsAnEventOnce) {
    const StoreAtHome home;
    EventStore store = home.open();
    EXPECT_TRUE(add(store, numberedEvent(1), std::nullopt, EventEffect::noSession));
    AgentEvent again = numberedEvent(1);
    again.eventType = "Other";
    EXPECT_FALSE(add(store, again, std::nullopt, EventEffect::applied));
    EXPECT_TRUE(add(store, numberedEvent(2), std::nullopt, EventEffect::noSession));

    EXPECT_EQ(store.eventCount(), 2);
    EXPECT_EQ(home.text("SELECT group_concat(effect) FROM events"), "noSession,noSession");
    const auto record = home.text("SELECT record FROM events ORDER BY number LIMIT 1");
    EXPECT_EQ(EventCoding::decodeLine(record), numberedEvent(1));
}

TEST(EventStore, keepsEveryEffectByItsName) {
    const StoreAtHome home;
    EventStore store = home.open();
    const std::int64_t session = store.addSession(snapshotOf(Provider::claudeCode, "S1"));
    std::uint8_t number = 0;
    for (const EventEffect effect : allCases<EventEffect>()) {
        ASSERT_TRUE(add(store, numberedEvent(++number), session, effect));
        EXPECT_EQ(home.text("SELECT effect FROM events ORDER BY number DESC LIMIT 1"),
                  rawValue(effect));
    }
}

TEST(EventStore, refusesAnEventOfASessionThatIsNotThere) {
    const StoreAtHome home;
    EventStore store = home.open();
    EXPECT_THROW(add(store, numberedEvent(1), 7, EventEffect::applied), SQLite::Exception);
    EXPECT_EQ(store.eventCount(), 0);
}

TEST(EventStore, keepsSessionsByAgentAndId) {
    const StoreAtHome home;
    EventStore store = home.open();
    const auto claude = snapshotOf(Provider::claudeCode, "S1");
    auto codex = snapshotOf(Provider::codexCLI, "S1");
    const auto first = store.addSession(claude);
    const auto second = store.addSession(codex);
    EXPECT_NE(first, second);

    codex.status = SessionStatus::failed;
    codex.eventCount = 3;
    store.updateSession(second, codex);

    const auto found = store.session({Provider::codexCLI, "S1"});
    ASSERT_TRUE(found);
    EXPECT_EQ(found->number, second);
    EXPECT_EQ(found->snapshot, codex);
    EXPECT_EQ(store.sessions(), (std::vector{claude, codex}));
    EXPECT_FALSE(store.session({Provider::claudeCode, "s1"}));
    EXPECT_THROW(store.addSession(claude), SQLite::Exception);
}

TEST(EventStore, knowsTheNumberOfASessionThatCannotBeRead) {
    const StoreAtHome home;
    EventStore store = home.open();
    home.database().exec("INSERT INTO sessions VALUES (7, 'claudeCode|S1', 'damaged')");
    const auto found = store.session({Provider::claudeCode, "S1"});
    ASSERT_TRUE(found);
    EXPECT_EQ(found->number, 7);
    EXPECT_FALSE(found->snapshot);
}

TEST(EventStore, isThereForTheNextProgram) {
    const StoreAtHome home;
    {
        EventStore store = home.open();
        const auto session = store.addSession(snapshotOf(Provider::claudeCode, "S1"));
        add(store, numberedEvent(1), session, EventEffect::applied);
    }
    EventStore store = home.open();
    EXPECT_EQ(store.eventCount(), 1);
    EXPECT_EQ(store.sessions().size(), 1U);
}

TEST(EventStore, forgetsATransactionThatWasNotCommitted) {
    const StoreAtHome home;
    EventStore store = home.open();
    {
        const auto transaction = store.beginWriting();
        store.addSession(snapshotOf(Provider::claudeCode, "S1"));
        add(store, numberedEvent(1), std::nullopt, EventEffect::noSession);
        EXPECT_EQ(store.eventCount(), 1);
    }
    EXPECT_EQ(store.eventCount(), 0);
    EXPECT_TRUE(store.sessions().empty());
}

TEST(EventStore, canBeReadWhileAnotherWrites) {
    const StoreAtHome home;
    EventStore writer = home.open();
    EventStore reader = home.open();
    auto transaction = writer.beginWriting();
    add(writer, numberedEvent(1), std::nullopt, EventEffect::noSession);
    EXPECT_EQ(reader.eventCount(), 0);
    transaction.commit();
    EXPECT_EQ(reader.eventCount(), 1);
}

TEST(EventStore, refusesADatabaseOfANewerProgram) {
    const StoreAtHome home;
    home.open();
    const int newer = StoreSchema::currentVersion() + 1;
    home.execute("PRAGMA user_version = " + std::to_string(newer));
    const auto store = EventStore::open(home.paths);
    ASSERT_FALSE(store);
    EXPECT_EQ(store.error(), "The database " + home.paths.databaseFile().string() +
                                 " cannot be opened: it was written by a newer version of "
                                 "tallowbrook.");
    EXPECT_EQ(home.text("PRAGMA user_version"), std::to_string(newer));
}

TEST(EventStore, waitsForAnotherProcessThatIsMakingTheDatabase) {
    const StoreAtHome home;
    writeContents(home.paths.databaseFile(), "");
    std::array<int, 2> ready{};
    ASSERT_EQ(pipe(ready.data()), 0);
    ChildProcess other{[&]() -> std::string {
        auto database = home.database();
        database.exec("BEGIN IMMEDIATE");
        if (write(ready[1], "r", 1) != 1) return "nobody listens";
        // It takes its time, so that whoever comes now has to wait.
        usleep(50'000);
        database.exec("COMMIT");
        return "done";
    }};
    close(ready[1]);
    char byte = 0;
    ASSERT_EQ(read(ready[0], &byte, 1), 1);
    close(ready[0]);
    const auto store = EventStore::open(home.paths);
    EXPECT_TRUE(store) << store.error();
    EXPECT_EQ(other.result(), "done");
}

TEST(EventStore, canBeOpenedByManyProcessesAtOnce) {
    for (int round = 0; round < 10; ++round) {
        const StoreAtHome home;
        constexpr int processes = 8;
        std::vector<std::unique_ptr<ChildProcess>> children;
        for (std::uint8_t i = 0; i < processes; ++i)
            children.push_back(std::make_unique<ChildProcess>([&home, i]() -> std::string {
                auto store = EventStore::open(home.paths);
                if (!store) return store.error();
                try {
                    add(*store, numberedEvent(i), std::nullopt, EventEffect::noSession);
                } catch (const SQLite::Exception& error) {
                    return error.what();
                }
                return "stored";
            }));
        for (const auto& child : children) EXPECT_EQ(child->result(), "stored");
        EXPECT_EQ(home.open().eventCount(), processes);
    }
}

TEST(EventStore, keepsPreferencesUntilOthersAreSet) {
    const StoreAtHome home;
    EventStore store = home.open();
    NotificationPreferences preferences;
    preferences.enabled = true;
    preferences.quietHours = QuietHours{true, 1320, 420};
    preferences.dedupeInterval = Seconds{2.5};
    preferences.maxEventAge = Seconds{600};
    store.setPreferences(preferences);
    EXPECT_EQ(store.preferences(), preferences);

    preferences.paused = true;
    store.setPreferences(preferences);
    EXPECT_EQ(home.open().preferences(), preferences);
    EXPECT_EQ(home.rows("settings"), 1);
}

TEST(EventStore, hasNoPreferencesWhereTheStoredOnesCannotBeRead) {
    const StoreAtHome home;
    EventStore store = home.open();
    store.setPreferences({});
    for (const char* broken : {"", "{", "[]", "{}", R"({"enabled":1})"}) {
        home.execute("UPDATE settings SET value = '" + std::string{broken} + "'");
        EXPECT_EQ(store.preferences(), std::nullopt) << broken;
    }
}

}  // namespace
}  // namespace tallowbrook::host
