#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <string>

#include "ConfigFileSamples.h"
#include "Support/ChildProcess.h"
#include "Support/OrdinaryUser.h"

namespace tallowbrook {
namespace {

namespace fs = std::filesystem;

using ConfigFilePlanTest = ConfigFileTest;

// The text of a file, "absent", or what the user is told.
std::string readingOf(const fs::path& file) {
    const auto text = ConfigFileWriter::readText(file);
    return text ? text->value_or("absent") : text.error().description();
}

TEST_F(ConfigFilePlanTest, readsAnyUTF8ByteForByte) {
    for (const char* text :
         {"", "{}", "{}\n", "{\r\n}\r\n", "\xEF\xBB\xBF{}", "é € 😀", "not JSON at all"}) {
        writeContents(config, text);
        EXPECT_EQ(readingOf(config), text);
    }
    const std::string zeros("a\0b", 3);
    writeContents(config, zeros);
    EXPECT_EQ(readingOf(config), zeros);
}

TEST_F(ConfigFilePlanTest, readsNothingWhereThereIsNoFile) {
    EXPECT_EQ(readingOf(config), "absent");
    fs::create_directories(directory);
    EXPECT_EQ(readingOf(config), "absent");
    fs::create_symlink("nowhere", config);
    EXPECT_EQ(readingOf(config), "absent");
    fs::remove_all(directory);
    writeContents(directory, "a file in the place of the directory");
    EXPECT_EQ(readingOf(config), "absent");
}

TEST_F(ConfigFilePlanTest, readsNoFileThatIsNotUTF8) {
    for (const char* bytes : {"\xFF\xFE{\n", "caf\xE9", "{\"a\":\"\xC3\"}", "\xED\xA0\x80"}) {
        writeContents(config, bytes);
        EXPECT_EQ(readingOf(config), config.string() + " is not UTF-8 text. It was not modified.");
    }
}

TEST_F(ConfigFilePlanTest, readsNothingButRegularFiles) {
    const auto unreadable = [](const fs::path& file, int error) {
        return "Could not read " + file.string() + ": " + reasonOf(error);
    };
    fs::create_directories(config);
    EXPECT_EQ(readingOf(config), unreadable(config, EISDIR));
    const auto pipe = directory / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_EQ(readingOf(pipe), unreadable(pipe, EINVAL));
    fs::create_symlink("loop", directory / "loop");
    EXPECT_EQ(readingOf(directory / "loop"), unreadable(directory / "loop", ELOOP));
    EXPECT_EQ(planned(directory / "loop", "{}").error().description(),
              unreadable(directory / "loop", ELOOP));
}

TEST_F(ConfigFilePlanTest, saysThatAFileMayNotBeRead) {
    const auto user = OrdinaryUser::find();
    if (!user) GTEST_SKIP() << OrdinaryUser::missing;
    writeContents(config, "{}");
    fs::permissions(config, fs::perms{0});
    ASSERT_TRUE(user->own(temporary.path) && user->own(directory) && user->own(config));
    const auto seen =
        inChildProcess([&] { return user->become() ? readingOf(config) : "still another user"; });
    EXPECT_EQ(seen, "Could not read " + config.string() + ": " + reasonOf(EACCES));
}

TEST_F(ConfigFilePlanTest, holdsBothTextsAndTheirDifference) {
    const auto name = config.string();
    const auto planTwice = [&] {
        return ConfigFileWriter::plan(config,
                                      [](const auto& text) {
                                          return std::optional{text.value_or("1\n2\n3\n") + "4\n"};
                                      })
            .value();
    };
    EXPECT_EQ(planTwice(), (ConfigChangePlan{config, std::nullopt, "1\n2\n3\n4\n",
                                             "--- /dev/null\n+++ " + name +
                                                 "\n@@ -1,0 +1,4 @@\n+1\n+2\n+3\n+4\n"}));
    writeContents(config, "1\n2\n3\n");
    EXPECT_EQ(planTwice(), (ConfigChangePlan{config, "1\n2\n3\n", "1\n2\n3\n4\n",
                                             "--- " + name + "\n+++ " + name +
                                                 "\n@@ -2,2 +2,3 @@\n 2\n 3\n+4\n"}));
}

TEST_F(ConfigFilePlanTest, changesNothing) {
    planTo("{}");
    EXPECT_FALSE(fs::exists(directory));
    writeContents(config, "old");
    planTo("new");
    EXPECT_EQ(contentsOf(config), "old");
    EXPECT_EQ(namesIn(temporary.path), Names{"agent"});
    EXPECT_EQ(namesIn(directory), Names{"settings.json"});
}

TEST_F(ConfigFilePlanTest, doesNothingOnlyWhenTheTextsAreTheSame) {
    EXPECT_TRUE(planTo(std::nullopt).isNoOp());
    EXPECT_EQ(planTo(std::nullopt).diff, "");
    EXPECT_FALSE(planTo("").isNoOp()) << "an empty file is more than none";
    writeContents(config, "{}");
    EXPECT_TRUE(planTo("{}").isNoOp());
    EXPECT_EQ(planTo("{}").diff, "");
    EXPECT_FALSE(planTo(std::nullopt).isNoOp());
    EXPECT_FALSE(planTo("{}\n").isNoOp()) << "no line changes, but the file does";
    EXPECT_EQ(planTo("{}\n").diff, "");
}

TEST_F(ConfigFilePlanTest, isNotMadeWhereTheTransformFails) {
    const auto refuse = [](const auto&) {
        return std::unexpected(HookConfigError::rootNotObject());
    };
    EXPECT_EQ(ConfigFileWriter::plan(config, refuse).error(),
              ConfigPlanError{HookConfigError::rootNotObject()});
    EXPECT_EQ(ConfigFileWriter::plan(config, refuse).error().description(),
              "The file's top-level value is not a JSON object. It was not modified.");
}

TEST_F(ConfigFilePlanTest, isNotMadeForATextThatCouldNotBeReadAgain) {
    const auto description = "Could not write " + config.string() + ": " + reasonOf(EILSEQ);
    EXPECT_EQ(
        planned(config, "{\"command\": \"/home/jos\xE9/tallowbrook-hook\"}").error().description(),
        description);
}

TEST_F(ConfigFilePlanTest, readsThroughLinksAndKeepsTheNameThatItWasGiven) {
    writeContents(temporary.path / "dotfiles" / "settings.json", "old");
    fs::create_directories(directory);
    fs::create_symlink("../dotfiles/settings.json", config);
    EXPECT_EQ(planTo("new").originalText, "old");
    EXPECT_EQ(planTo("new").fileURL, config);
    EXPECT_TRUE(planTo("new").diff.starts_with("--- " + config.string() + "\n"));
}

TEST(BackupStamp, isTheTimeInUTCToTheSecond) {
    using namespace std::chrono;
    const auto at = [](auto date, microseconds time) {
        return ConfigFileWriter::backupStamp(sys_days{date} + time);
    };
    EXPECT_EQ(at(2025y / 3 / 1, 14h + 30min + 5s), "20250301T143005Z");
    EXPECT_EQ(at(2025y / 12 / 31, 23h + 59min + 59s + 999999us), "20251231T235959Z");
    EXPECT_EQ(at(1969y / 12 / 31, 23h + 59min + 59s + 1us), "19691231T235959Z");
    EXPECT_EQ(at(2024y / 2 / 29, 0s), "20240229T000000Z");
    EXPECT_EQ(at(1y / 1 / 1, 0s), "00010101T000000Z");
    EXPECT_EQ(at(9999y / 12 / 31, 0s), "99991231T000000Z");
}

}  // namespace
}  // namespace tallowbrook
