#include "Store/Database.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <memory>

#include "DatabaseAtHome.h"
#include "Domain/EventCoding.h"
#include "Store/StoreSchema.h"
#include "Support/ChildProcess.h"
#include "Support/FileContents.h"
#include "Support/FileModeMask.h"

namespace tallowbrook::host {
namespace {

void addEvent(Database& database, std::uint8_t number) {
    const AgentEvent event = numberedEvent(number);
    SessionStore{database}.addEvent(event, EventCoding::encodeLine(event), std::nullopt,
                                    EventEffect::noSession);
}

TEST(Database, isMadeEmptyWithTheCurrentSchema) {
    const DatabaseAtHome home;
    EXPECT_FALSE(Database::exists(home.paths));
    Database database = home.open();
    EXPECT_TRUE(Database::exists(home.paths));
    EXPECT_EQ(home.text("PRAGMA user_version"), std::to_string(StoreSchema::currentVersion()));
    EXPECT_EQ(SessionStore{database}.eventCount(), 0);
    EXPECT_TRUE(SessionStore{database}.sessions().empty());
    EXPECT_TRUE(Outbox{database}.pending("lines").empty());
    EXPECT_EQ(Outbox{database}.newestPlace(), 0);
    EXPECT_EQ(Settings{database}.preferences(), Preferences{});
}

TEST(Database, isTheOwnersAloneWhateverTheUmask) {
    for (const mode_t mask : {mode_t{0000}, mode_t{0077}, mode_t{0777}}) {
        const DatabaseAtHome home;
        const FileModeMask masked{mask};
        const Database database = home.open();
        for (const char* companion : {"", "-wal", "-shm"}) {
            const std::string file = home.paths.databaseFile().string() + companion;
            EXPECT_EQ(modeOf(file.c_str()), 0600U) << file;
        }
        EXPECT_EQ(modeOf(home.paths.home.c_str()), 0700U);
    }
}

TEST(Database, isNotThereYetWhereTheFileIsEmpty) {
    const DatabaseAtHome home;
    writeContents(home.paths.databaseFile(), "");
    EXPECT_FALSE(Database::exists(home.paths));
    Database database = home.open();
    EXPECT_EQ(SessionStore{database}.eventCount(), 0);
}

TEST(Database, ofANewerProgramIsRefusedAndLeftAsItIs) {
    const DatabaseAtHome home;
    home.open();
    const int newer = StoreSchema::currentVersion() + 1;
    home.execute("PRAGMA user_version = " + std::to_string(newer));
    const auto database = Database::open(home.paths);
    ASSERT_FALSE(database);
    EXPECT_EQ(database.error().text(), "The database " + home.paths.databaseFile().string() +
                                           " cannot be opened: it was written by a newer version "
                                           "of tallowbrook.");
    EXPECT_EQ(home.text("PRAGMA user_version"), std::to_string(newer));
}

TEST(Database, forgetsATransactionThatWasNotCommitted) {
    const DatabaseAtHome home;
    Database database = home.open();
    {
        const auto transaction = database.beginWriting();
        addEvent(database, 1);
        EXPECT_EQ(SessionStore{database}.eventCount(), 1);
    }
    EXPECT_EQ(SessionStore{database}.eventCount(), 0);
}

TEST(Database, canBeReadWhileAnotherWrites) {
    const DatabaseAtHome home;
    Database writer = home.open();
    Database reader = home.open();
    const auto before = reader.dataVersion();
    auto transaction = writer.beginWriting();
    addEvent(writer, 1);
    EXPECT_EQ(SessionStore{reader}.eventCount(), 0);
    EXPECT_EQ(reader.dataVersion(), before);
    transaction.commit();
    EXPECT_NE(reader.dataVersion(), before);
    EXPECT_EQ(SessionStore{reader}.eventCount(), 1);
}

TEST(Database, waitsForAnotherProcessThatIsMakingIt) {
    const DatabaseAtHome home;
    writeContents(home.paths.databaseFile(), "");
    std::array<int, 2> ready{};
    ASSERT_EQ(pipe(ready.data()), 0);
    ChildProcess other{[&]() -> std::string {
        auto database = home.connection();
        database.exec("BEGIN IMMEDIATE");
        if (write(ready[1], "r", 1) != 1) return "the parent does not listen";
        // It takes its time, so that a process that comes now has to wait.
        usleep(50'000);
        database.exec("COMMIT");
        return "done";
    }};
    close(ready[1]);
    char byte = 0;
    ASSERT_EQ(read(ready[0], &byte, 1), 1);
    close(ready[0]);
    EXPECT_TRUE(Database::open(home.paths));
    EXPECT_EQ(other.result(), "done");
}

TEST(Database, canBeOpenedByManyProcessesAtOnce) {
    for (int round = 0; round < 10; ++round) {
        const DatabaseAtHome home;
        constexpr int processes = 8;
        std::vector<std::unique_ptr<ChildProcess>> children;
        for (std::uint8_t i = 0; i < processes; ++i)
            children.push_back(std::make_unique<ChildProcess>([&home, i]() -> std::string {
                try {
                    Database database = home.open();
                    addEvent(database, i);
                } catch (const SQLite::Exception& error) {
                    return error.what();
                }
                return "stored";
            }));
        for (const auto& child : children) EXPECT_EQ(child->result(), "stored");
        Database database = home.open();
        EXPECT_EQ(SessionStore{database}.eventCount(), processes);
    }
}

}  // namespace
}  // namespace tallowbrook::host
