#include "Integrations/IntegrationSetup.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <string>

#include "ConfigFileSamples.h"
#include "EventIngestion/PayloadNormalizer.h"
#include "HookConfigSamples.h"
#include "SessionState/SessionSnapshot.h"

namespace tallowbrook {
namespace {

namespace fs = std::filesystem;

class IntegrationSetupTest : public ConfigFileTest {
 protected:
    // The location of the installed helper, or what the user is told.
    std::string installing(const fs::path& from) const {
        const auto installed = IntegrationSetup::installHelper(from, paths);
        return installed ? installed->string() : installed.error().description();
    }

    HelperStatus status() const {
        return IntegrationSetup::helperStatus(paths.installedHelper(), source);
    }

    TallowbrookPaths paths{temporary.path / "home"};
    fs::path source = temporary.path / "libexec" / "tallowbrook-hook";
};

TEST_F(IntegrationSetupTest, tellsHowTheInstalledHelperComparesWithTheReference) {
    writeContents(source, "binary");
    EXPECT_EQ(status(), HelperStatus::missing);
    writeContents(paths.installedHelper(), contentsOf(source));
    chmod(paths.installedHelper().c_str(), 0600);
    EXPECT_EQ(status(), HelperStatus::notExecutable) << "the same bytes, but they cannot run";
    chmod(paths.installedHelper().c_str(), 0700);
    EXPECT_EQ(status(), HelperStatus::current);

    for (const auto& bytes :
         {contentsOf(source) + "x", contentsOf(source).substr(1), std::string{}}) {
        writeContents(paths.installedHelper(), bytes);
        EXPECT_EQ(status(), HelperStatus::outdated);
    }
    fs::remove(source);
    EXPECT_EQ(status(), HelperStatus::outdated) << "without a reference";
}

TEST_F(IntegrationSetupTest, installsTheHelperForItsOwnerAlone) {
    const FileModeMask masked{0};
    const std::string bytes{"ELF\0binary", 10};
    writeContents(source, bytes);
    EXPECT_EQ(installing(source), paths.installedHelper());
    EXPECT_EQ(contentsOf(paths.installedHelper()), bytes);
    EXPECT_EQ(modeOf(paths.installedHelper().c_str()), mode_t{0700});
    EXPECT_EQ(modeOf(paths.binDirectory().c_str()), mode_t{0700});
    EXPECT_EQ(namesIn(paths.binDirectory()), Names{"tallowbrook-hook"});
    EXPECT_EQ(status(), HelperStatus::current);
}

TEST_F(IntegrationSetupTest, replacesALinkInThePlaceOfTheHelper) {
    writeContents(source, "new");
    writeContents(temporary.path / "other", "kept");
    fs::create_directories(paths.binDirectory());
    fs::create_symlink(temporary.path / "other", paths.installedHelper());
    EXPECT_EQ(installing(source), paths.installedHelper());
    EXPECT_FALSE(fs::is_symlink(paths.installedHelper()));
    EXPECT_EQ(contentsOf(temporary.path / "other"), "kept");
}

TEST_F(IntegrationSetupTest, saysThatThereIsNoHelperToCopy) {
    const auto description = "The helper to copy was not found at " + source.string();
    EXPECT_EQ(installing(source), description);
    fs::create_directories(source);
    EXPECT_EQ(installing(source), description) << "a directory is no helper";
    EXPECT_FALSE(fs::exists(paths.home));
}

TEST_F(IntegrationSetupTest, saysWhyTheHelperCannotBeInstalled) {
    writeContents(source, "new");
    fs::create_directories(paths.installedHelper() / "full");
    EXPECT_EQ(installing(source), "Could not install the helper: " + reasonOf(EISDIR));
    EXPECT_EQ(namesIn(paths.binDirectory()), Names{"tallowbrook-hook"});
    fs::remove_all(paths.home);
    writeContents(paths.home, "a file in the way");
    EXPECT_EQ(installing(source), "Could not install the helper: " + reasonOf(ENOTDIR));
}

// What the plans come to is proved by the merger's tests and by the host's.
TEST_F(IntegrationSetupTest, plansChangeNothing) {
    writeContents(config, "{}\n");
    const auto plan = IntegrationSetup::planInstall(Provider::codexCLI, config, sampleHelper);
    ASSERT_TRUE(plan);
    EXPECT_EQ(plan->proposedText,
              *HookConfigMerger::install("{}\n", HookInstallSpec::codex(sampleHelper)));
    EXPECT_TRUE(
        IntegrationSetup::planUninstall(Provider::codexCLI, config, sampleHelper)->isNoOp());
    EXPECT_EQ(contentsOf(config), "{}\n");
}

class ConfigBackupTest : public IntegrationSetupTest {
 protected:
    std::vector<std::string> listed() const {
        std::vector<std::string> names;
        for (const auto& backup : IntegrationSetup::backups(config, backups))
            names.push_back(backup.url.filename());
        return names;
    }

    std::string restoring(const ConfigBackup& backup) const {
        const auto plan = IntegrationSetup::planRestore(backup, config);
        return plan ? applied(*plan) : plan.error().description();
    }
};

TEST_F(ConfigBackupTest, areListedNewestFirst) {
    for (const char* name : {"settings.json.20250301T143005Z.9f3a06c1.bak",
                             "settings.json.20250302T080000Z.00aa11bb.bak", "settings.json.bak"})
        writeContents(backups / name, "");
    using namespace std::chrono;
    EXPECT_EQ(
        IntegrationSetup::backups(config, backups),
        (std::vector<ConfigBackup>{
            {backups / "settings.json.20250302T080000Z.00aa11bb.bak", sys_days{2025y / 3 / 2} + 8h},
            {backups / "settings.json.20250301T143005Z.9f3a06c1.bak", sampleNow}}));
}

TEST_F(ConfigBackupTest, areThoseWhoseNamesHaveEveryPart) {
    for (const char* name : {
             "settings.json.20251301T000000Z.1.bak",      // month 13
             "settings.json.20250301T143005Z.1.bak.bak",  // counts
             "settings.json.20250301T143005Z.bak",        // counts: nothing random is asked for
             "settings.json.20250301T143005.1.bak",       // no zone
             "settings.json.20250301T143005Z.1",          // no suffix
             "settings.json..bak",                        // no stamp
             "settings.json.x.20250301T143005Z.1.bak",    // something before it
             "settings.jsonx.20250301T143005Z.1.bak",     // another file
             ".settings.json.20250301T143005Z.1.bak",     // hidden
         })
        writeContents(backups / name, "");
    auto names = listed();
    std::ranges::sort(names);
    EXPECT_EQ(names, (Names{"settings.json.20250301T143005Z.1.bak.bak",
                            "settings.json.20250301T143005Z.bak"}));
}

TEST_F(ConfigBackupTest, ofALinkBearTheNameOfItsTarget) {
    writeContents(temporary.path / "dotfiles" / "claude.json", "old");
    fs::create_directories(directory);
    fs::create_symlink("../dotfiles/claude.json", config);
    write("new");
    ASSERT_EQ(listed().size(), 1U);
    EXPECT_TRUE(listed()[0].starts_with("claude.json.20250301T143005Z."));
    EXPECT_EQ(restoring(IntegrationSetup::backups(config, backups)[0]), "");
    EXPECT_EQ(contentsOf(temporary.path / "dotfiles" / "claude.json"), "old");
    EXPECT_TRUE(fs::is_symlink(config));
}

TEST_F(ConfigBackupTest, areRestoredWhateverTheFileHoldsNow) {
    writeContents(config, "{\"a\": 1}\r\n");
    write("new");
    const auto backup = IntegrationSetup::backups(config, backups).at(0);
    writeContents(config, "something else that is no JSON");
    const auto plan = IntegrationSetup::planRestore(backup, config);
    ASSERT_TRUE(plan);
    EXPECT_EQ(plan->originalText, "something else that is no JSON");
    EXPECT_EQ(plan->proposedText, "{\"a\": 1}\r\n");
    EXPECT_EQ(applied(*plan), "");
    EXPECT_EQ(contentsOf(config), "{\"a\": 1}\r\n");
    EXPECT_EQ(listed().size(), 2U) << "a restoration keeps what it replaces";
    fs::remove(config);
    EXPECT_EQ(restoring(backup), "") << "also where there is no file any more";
    EXPECT_EQ(contentsOf(config), "{\"a\": 1}\r\n");
}

TEST_F(ConfigBackupTest, thatAreGoneAreNotRestored) {
    const ConfigBackup backup{backups / "settings.json.20250301T143005Z.1.bak", sampleNow};
    const auto description = "The backup " + backup.url.string() + " no longer exists.";
    EXPECT_EQ(restoring(backup), description);
    writeContents(backups, "a file in the place of the directory");
    EXPECT_EQ(restoring(backup), description);
}

TEST_F(ConfigBackupTest, thatCannotBeReadAreNotRestored) {
    writeContents(config, "kept");
    const ConfigBackup backup{backups / "settings.json.20250301T143005Z.1.bak", sampleNow};
    writeContents(backup.url, "\xFF");
    EXPECT_EQ(restoring(backup), backup.url.string() + " is not UTF-8 text. It was not modified.");
    fs::remove(backup.url);
    fs::create_directory(backup.url);
    EXPECT_EQ(restoring(backup), "Could not read " + backup.url.string() + ": " + reasonOf(EISDIR));
    EXPECT_EQ(contentsOf(config), "kept");
}

TEST(ParseStamp, readsWhatABackupIsStampedWith) {
    using namespace std::chrono;
    for (const auto instant :
         {Instant{sampleNow}, Instant{sys_days{2024y / 2 / 29}}, Instant{sys_days{1969y / 1 / 1}},
          Instant{sys_days{9999y / 12 / 31} + 86399s}, distantPast})
        EXPECT_EQ(IntegrationSetup::parseStamp(ConfigFileWriter::backupStamp(instant)), instant);
}

TEST(ParseStamp, readsNothingElse) {
    for (const char* text : {"", "20251301T000000Z", "20250301T000060Z", "20250301T143005",
                             "20250301T143005z", "20250301 143005Z", "20250301T143005ZZ",
                             "2025-03-01T14:30:05Z", "+0250301T143005Z", "2025-301T143005Z"})
        EXPECT_EQ(IntegrationSetup::parseStamp(text), std::nullopt) << text;
}

TEST(TestEvent, isCalledAsTheHooksCallTheHelper) {
    EXPECT_EQ(IntegrationSetup::testEventArguments(Provider::claudeCode),
              (std::vector<std::string>{"claude-code", "--test"}));
    EXPECT_EQ(IntegrationSetup::testEventArguments(Provider::codexCLI),
              (std::vector<std::string>{"codex", "--test"}));
}

TEST(TestEvent, isAPayloadThatTheHelperUnderstands) {
    const auto session = std::string{setupCheckPrefix} + "1";
    for (const auto provider : allCases<Provider>()) {
        const auto payload = IntegrationSetup::testEventPayload(provider, session, "/a \"b\"\\é");
        const auto source = fromRawValue<PayloadSource>(hookSourceWord(provider));
        const auto event =
            PayloadNormalizer::normalize(payload, *source, EventOrigin::test, sampleNow, UUID{});
        ASSERT_TRUE(event) << payload;
        EXPECT_EQ(event->provider, provider);
        EXPECT_EQ(event->eventType, "SessionStart");
        EXPECT_EQ(event->sessionID, session);
        EXPECT_EQ(event->cwd, "/a \"b\"\\é");
        EXPECT_EQ(event->detail.sessionSource, "setup-check");
    }
}

}  // namespace
}  // namespace tallowbrook
