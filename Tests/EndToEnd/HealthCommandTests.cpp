#include <SQLiteCpp/SQLiteCpp.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>

#include "Integrations/IntegrationHealth.h"
#include "SetupHome.h"

namespace tallowbrook {
namespace {

using testing::HasSubstr;
using testing::Not;

constexpr int needsAttention = 3;
constexpr int noHost = 4;
constexpr auto key = "integrationHealth.claudeCode";

// A user of Claude Code alone, set up, and what the host has stored about that.
struct HealthHome : SetupHome {
    HealthHome() { EXPECT_EQ(host({"setup", "claude-code", "--yes"}).status, 0); }

    SQLite::Database database() const {
        constexpr int busyTimeoutMilliseconds = 5000;
        return {paths.databaseFile().string(), SQLite::OPEN_READWRITE, busyTimeoutMilliseconds};
    }

    IntegrationHealthRecord stored() const {
        auto opened = database();
        SQLite::Statement query{opened, "SELECT value FROM settings WHERE key = ?"};
        query.bind(1, key);
        if (!query.executeStep()) return {};
        return IntegrationHealthCoding::decode(query.getColumn(0).getString()).value();
    }

    static void store(const IntegrationHealthRecord& record, SQLite::Database& database) {
        SQLite::Statement update{database, "UPDATE settings SET value = ? WHERE key = ?"};
        update.bind(1, IntegrationHealthCoding::encode(record));
        update.bind(2, key);
        EXPECT_EQ(update.exec(), 1);
    }

    // As if the last event had come a day ago, and the agent had been set up again since.
    IntegrationHealthRecord storeSilence() const {
        const auto now = std::chrono::floor<std::chrono::milliseconds>(currentInstant());
        const IntegrationHealthRecord record{now - std::chrono::minutes{20},
                                             now - std::chrono::hours{24}};
        auto opened = database();
        store(record, opened);
        return record;
    }
};

TEST(Health, ofAnUntouchedMachineWritesNothing) {
    const SetupHome home;
    const auto before = home.tree();
    const auto result = home.host({"health"});
    EXPECT_EQ(result.status, noHost);
    EXPECT_THAT(result.output, HasSubstr("Helper: missing"));
    EXPECT_THAT(result.output, HasSubstr("Claude Code: not set up"));
    EXPECT_THAT(result.output, HasSubstr("Codex CLI: not set up"));
    EXPECT_EQ(home.tree(), before);
}

TEST(Health, waitsForTheFirstEventAfterTheSetupAndThenReceives) {
    const HealthHome home;
    const auto waiting = home.host({"health"});
    EXPECT_EQ(waiting.status, noHost);
    EXPECT_THAT(waiting.output, HasSubstr("Helper: current"));
    EXPECT_THAT(waiting.output, HasSubstr("Claude Code: waiting, for the first event since"));

    home.claude("SessionStart");
    EXPECT_EQ(home.host({"watch", "--once"}).status, 0);
    const auto receiving = home.host({"health", "--json"});
    EXPECT_EQ(receiving.status, noHost);
    EXPECT_THAT(receiving.output, HasSubstr(R"("state":"receiving")"));
    EXPECT_THAT(receiving.output, HasSubstr(R"("lastLiveEventAt":")"));
    EXPECT_THAT(receiving.output, HasSubstr(R"("helper":"current")"));
}

TEST(Health, isSilentWhenNothingHasComeForLongAfterTheSetup) {
    const HealthHome home;
    const auto record = home.storeSilence();
    const auto result = home.host({"health", "claude-code"});
    EXPECT_EQ(result.status, needsAttention);
    EXPECT_THAT(result.output, HasSubstr("Claude Code: silent, no event since the setup at "));
    const auto json = home.host({"health", "claude-code", "--json"}).output;
    EXPECT_THAT(json, HasSubstr(R"("state":"silent")"));
    EXPECT_THAT(json, HasSubstr(R"("setUpAt":")" + EventDate::text(record.setUpAt.value())));
    EXPECT_EQ(home.stored(), record);
}

TEST(Health, saysWhatIsWrongWithTheHooksAndRemembersTheSetupMeanwhile) {
    const HealthHome home;
    const auto record = home.storeSilence();
    const auto whole = contentsOf(home.claudeFile);
    auto partial = whole;
    partial.replace(partial.find("\"Stop\""), 6, "\"Halt\"");
    auto stale = whole;
    stale.replace(stale.find("/Tallowbrook/bin/"), 17, "/gone/bin/");
    struct Row {
        std::string text;
        std::string line;
        std::string json;
    };
    for (const auto& [text, line, json] : {
             Row{partial, "partial, no hook for Stop (", R"("missingEvents":["Stop"])"},
             Row{stale, "needs repair, one hook is out of date (", R"("staleHandlers":1)"},
             Row{"[]", "unreadable, The file's top-level value",
                 R"("error":"The file's top-level)"},
         }) {
        writeContents(home.claudeFile, text);
        const auto result = home.host({"health", "claude-code"});
        EXPECT_EQ(result.status, needsAttention);
        EXPECT_THAT(result.output, HasSubstr("Claude Code: " + line));
        EXPECT_THAT(result.output, Not(HasSubstr("Codex")));
        EXPECT_THAT(home.host({"health", "--json"}).output, HasSubstr(json));
        EXPECT_EQ(home.stored(), record) << line;
    }
}

TEST(Health, needsRepairWhereTheHelperIsGone) {
    const HealthHome home;
    std::filesystem::remove(home.paths.installedHelper());
    const auto result = home.host({"health"});
    EXPECT_EQ(result.status, needsAttention);
    EXPECT_THAT(result.output, HasSubstr("Helper: missing"));
    EXPECT_THAT(result.output, HasSubstr("Claude Code: needs repair, the helper cannot run"));
}

TEST(Health, andDoctorNameWhatKeepsTheAgentFromRunningTheHooks) {
    const SetupHome home;
    EXPECT_EQ(home.host({"setup", "claude-code", "codex", "--yes"}).status, 0);
    auto text = contentsOf(home.claudeFile);
    writeContents(home.claudeFile, text.replace(0, 1, "{\"disableAllHooks\": true, "));
    const auto result = home.host({"health"});
    EXPECT_EQ(result.status, needsAttention);
    EXPECT_THAT(result.output, HasSubstr("Claude Code: blocked, \"disableAllHooks\" is set in " +
                                         home.claudeFile.string() + "; take it out there"));
    EXPECT_THAT(result.output, HasSubstr("Codex CLI: blocked, the hooks are not trusted yet; start "
                                         "codex in a project and choose to trust them ("));
    const auto json = home.host({"health", "codex", "--json"}).output;
    EXPECT_THAT(json, HasSubstr(R"("state":"blocked")"));
    EXPECT_THAT(json, HasSubstr(R"("obstacle":"the hooks are not trusted yet; start codex)"));
    EXPECT_THAT(home.host({"doctor"}).output,
                HasSubstr("integration blocked · \"disableAllHooks\" is set in ~/.claude/"));
}

TEST(Health, forgetsTheSetupOnceTheHooksAreGone) {
    const HealthHome home;
    const auto record = home.storeSilence();
    EXPECT_EQ(home.host({"remove", "claude-code", "--yes"}).status, 0);
    EXPECT_THAT(home.host({"health"}).output, HasSubstr("Claude Code: not set up"));
    EXPECT_EQ(home.stored(), (IntegrationHealthRecord{std::nullopt, record.lastLiveEventAt}));
}

TEST(Health, ofAnotherFileLeavesWhatIsStoredAlone) {
    const HealthHome home;
    const auto record = home.storeSilence();
    const auto none = home.directory.path / "none.json";
    EXPECT_THAT(home.host({"health", "claude-code", "--config", none}).output,
                HasSubstr("Claude Code: not set up"));
    EXPECT_EQ(home.stored(), record);
}

TEST(Health, overwritesNoEventThatComesWhileItLooks) {
    const HealthHome home;
    auto record = home.storeSilence();
    std::filesystem::remove(home.claudeFile);
    auto watcher = home.database();
    ProgramResult result;
    // On a machine so busy that the host gave up waiting for the database, it is asked again.
    do {
        SQLite::Transaction transaction{watcher, SQLite::TransactionBehavior::IMMEDIATE};
        RunningProgram host{home.hostCall({"health", "claude-code"})};
        // Time to read, as far as it may; without, the test would merely prove less.
        usleep(300'000);
        *record.lastLiveEventAt += std::chrono::hours{1};
        HealthHome::store(record, watcher);
        transaction.commit();
        result = host.wait();
    } while (result.errors.find("it is locked") != std::string::npos);
    EXPECT_EQ(result.status, noHost) << result.errors;
    EXPECT_EQ(home.stored(), (IntegrationHealthRecord{std::nullopt, record.lastLiveEventAt}));
}

TEST(Health, withoutADatabaseMakesNone) {
    const HealthHome home;
    std::filesystem::remove(home.paths.databaseFile());
    const auto before = home.tree();
    const auto result = home.host({"health", "claude-code"});
    EXPECT_EQ(result.status, noHost);
    EXPECT_THAT(result.output, HasSubstr("Claude Code: waiting, for the first event ("));
    EXPECT_THAT(home.host({"health", "--json"}).output, Not(HasSubstr("setUpAt")));
    EXPECT_EQ(home.tree(), before);
}

TEST(Health, ofADatabaseThatIsNoneFailsAndMakesNothingUp) {
    const HealthHome home;
    for (const auto& entry : std::filesystem::directory_iterator{home.paths.home})
        if (entry.path().filename().string().starts_with("Tallowbrook.sqlite"))
            std::filesystem::remove(entry.path());
    writeContents(home.paths.databaseFile(), "notes");
    const auto result = home.host({"health"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_THAT(result.errors, HasSubstr("is damaged: file is not a database. Move it away"));
    EXPECT_EQ(contentsOf(home.paths.databaseFile()), "notes");

    const auto report = home.host({"doctor"});
    EXPECT_EQ(report.status, noHost);
    EXPECT_THAT(report.output, HasSubstr("Stored events: unavailable"));
    EXPECT_THAT(report.output, Not(HasSubstr("integration waiting")));
    EXPECT_THAT(report.output, HasSubstr("integration not set up"));
}

TEST(Health, andDoctorSayWhetherAHostRunsAndHowToStartOne) {
    const HealthHome home;
    const std::string none =
        "Host: not running, nobody is told anything; run \"tallowbrook watch\"\n";
    for (const std::string command : {"health", "doctor"}) {
        const auto result = home.host({command});
        EXPECT_EQ(result.status, noHost);
        EXPECT_THAT(result.output, HasSubstr(none));
    }
    EXPECT_THAT(home.host({"health", "--json"}).output, HasSubstr(R"("host":{"running":false})"));

    RunningProgram host{home.hostCall({"watch"})};
    ASSERT_TRUE(host.waitForOutput("No sessions to show."));
    for (const std::string command : {"health", "doctor"}) {
        const auto result = home.host({command});
        EXPECT_EQ(result.status, 0) << result.output;
        EXPECT_THAT(result.output,
                    testing::ContainsRegex("Host: running since [0-9:]+ .process [0-9]+.\n"));
    }
    EXPECT_THAT(home.host({"health", "--json"}).output,
                testing::ContainsRegex("\"host\":.\"pid\":[0-9]+,\"running\":true,\"since\":\"20"));

    host.send(SIGKILL);
    host.wait();
    EXPECT_THAT(home.host({"health"}).output, HasSubstr(none));
}

TEST(Health, tellsOfAnAgentInTroubleBeforeOfAHostThatIsNotThere) {
    const HealthHome home;
    home.storeSilence();
    EXPECT_EQ(home.host({"health"}).status, needsAttention);
    EXPECT_THAT(home.host({"health"}).output, HasSubstr("Host: not running"));
}

}  // namespace
}  // namespace tallowbrook
