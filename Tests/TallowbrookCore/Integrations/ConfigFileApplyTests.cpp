#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <regex>
#include <string>

#include "ConfigFileSamples.h"

namespace tallowbrook {
namespace {

namespace fs = std::filesystem;

using ConfigFileApplyTest = ConfigFileTest;

TEST_F(ConfigFileApplyTest, makesANewFileOfItsOwnersAlone) {
    config = directory / "a" / "settings.json";
    for (const mode_t mask : {mode_t{0}, mode_t{022}, mode_t{0777}}) {
        const auto plan = planTo("{}");
        {
            const FileModeMask masked{mask};
            EXPECT_EQ(ConfigFileWriter::apply(plan, backups, sampleNow), std::nullopt);
        }
        EXPECT_EQ(contentsOf(config), "{}");
        EXPECT_EQ(modeOf(config.c_str()), mode_t{0600});
        for (const auto& made : {directory, directory / "a"})
            EXPECT_EQ(modeOf(made.c_str()), mode_t{0700});
        EXPECT_EQ(namesIn(directory / "a"), Names{"settings.json"});
        fs::remove_all(directory);
    }
    EXPECT_FALSE(fs::exists(backups)) << "there was nothing to keep";
}

TEST_F(ConfigFileApplyTest, writesAFileOfTheCurrentDirectory) {
    const auto former = fs::current_path();
    fs::current_path(temporary.path);
    config = "settings.json";
    for (const char* text : {"first", "second", "third"}) write(text);
    fs::current_path(former);
    EXPECT_EQ(contentsOf(temporary.path / "settings.json"), "third");
    EXPECT_EQ(kept(), (Names{"first", "second"})) << "two backups of one second";
}

TEST_F(ConfigFileApplyTest, keepsTheModeOfAFileThatItReplaces) {
    const FileModeMask masked{077};
    for (const mode_t mode : {mode_t{0644}, mode_t{0600}, mode_t{0444}, mode_t{0400}, mode_t{0666},
                              mode_t{0755}, mode_t{0}, mode_t{04711}}) {
        writeContents(config, "old");
        ASSERT_EQ(chmod(config.c_str(), mode), 0);
        if (access(config.c_str(), R_OK) != 0) continue;  // for an ordinary user
        write("new");
        EXPECT_EQ(modeOf(config.c_str()), mode);
        fs::remove(config);
    }
}

TEST_F(ConfigFileApplyTest, putsANewFileInThePlaceOfTheOldOne) {
    writeContents(config, "old");
    fs::create_hard_link(config, temporary.path / "another name");
    write("new");
    EXPECT_EQ(contentsOf(temporary.path / "another name"), "old") << "it was written over";
    EXPECT_EQ(namesIn(directory), Names{"settings.json"});
}

TEST_F(ConfigFileApplyTest, writesEveryByteOfTheProposal) {
    writeContents(config, "old");
    for (const auto& text :
         {std::string{"{\r\n}\r\n"}, std::string{"no line feed"}, std::string{},
          std::string{"\xEF\xBB\xBF{}"}, std::string("a\0b", 3), std::string(3'000'000, 'x')})
        write(text);
}

TEST_F(ConfigFileApplyTest, keepsWhatWasThereAsABackup) {
    writeContents(config, "old\r\n");
    const FileModeMask masked{0};
    const auto backup = ConfigFileWriter::apply(planTo("new"), backups, sampleNow);
    ASSERT_TRUE(backup && *backup);
    EXPECT_EQ(contentsOf(**backup), "old\r\n");
    EXPECT_EQ(modeOf((*backup)->c_str()), mode_t{0600}) << "whatever the file's own mode is";
    EXPECT_EQ((*backup)->parent_path(), backups);
    EXPECT_TRUE(std::regex_match(
        (*backup)->filename().string(),
        std::regex{R"(settings\.json\.20250301T143005Z\.(0|[1-9a-f][0-9a-f]{0,7})\.bak)"}))
        << **backup;
    EXPECT_EQ(modeOf(backups.c_str()), mode_t{0700});
    EXPECT_EQ(namesIn(backups).size(), 1U);
}

TEST_F(ConfigFileApplyTest, writesNothingWithoutAProposal) {
    EXPECT_EQ(applied(planTo(std::nullopt)), "");
    EXPECT_FALSE(fs::exists(directory));
    writeContents(config, "old");
    EXPECT_EQ(applied(planTo(std::nullopt)), "");
    EXPECT_EQ(contentsOf(config), "old");
    EXPECT_FALSE(fs::exists(backups));
}

TEST_F(ConfigFileApplyTest, replacesTheTargetOfALinkAndKeepsTheLink) {
    const fs::path dotfiles = temporary.path / "dotfiles";
    writeContents(dotfiles / "claude.json", "old");
    chmod((dotfiles / "claude.json").c_str(), 0640);
    fs::create_directories(directory);
    fs::create_symlink("../dotfiles/claude.json", config);
    write("new");
    EXPECT_EQ(fs::read_symlink(config), "../dotfiles/claude.json");
    EXPECT_EQ(contentsOf(dotfiles / "claude.json"), "new");
    EXPECT_EQ(modeOf((dotfiles / "claude.json").c_str()), mode_t{0640});
    EXPECT_EQ(namesIn(dotfiles), Names{"claude.json"});
    EXPECT_EQ(namesIn(directory), Names{"settings.json"});
    EXPECT_TRUE(namesIn(backups)[0].starts_with("claude.json.2025"));
}

TEST_F(ConfigFileApplyTest, followsAChainOfLinksAlsoToAFileThatIsMissing) {
    const fs::path deep = temporary.path / "real" / "deep";
    fs::create_directories(deep);
    fs::create_directory_symlink("real/deep", directory);
    fs::create_symlink("second", deep / "settings.json");
    fs::create_symlink(deep / "third", deep / "second");
    // From the directory where it really is.
    fs::create_symlink("../dotfiles/file", deep / "third");
    for (const char* text : {"new", "newer"}) {
        write(text);
        EXPECT_EQ(contentsOf(temporary.path / "real" / "dotfiles" / "file"), text);
    }
    EXPECT_EQ(namesIn(deep), (Names{"second", "settings.json", "third"}));
    for (const auto& entry : fs::directory_iterator{deep}) EXPECT_TRUE(entry.is_symlink());
}

TEST_F(ConfigFileApplyTest, failsOnALoopOfLinks) {
    auto plan = planTo("new");
    fs::create_directories(directory);
    fs::create_symlink("other", config);
    fs::create_symlink("settings.json", directory / "other");
    EXPECT_EQ(applied(plan), "Could not read " + config.string() + ": " + reasonOf(ELOOP));
    EXPECT_EQ(namesIn(directory), (Names{"other", "settings.json"}));
}

TEST_F(ConfigFileApplyTest, overwritesNothingThatChangedSinceThePlan) {
    const auto changed =
        config.string() +
        " changed after the preview was made. Nothing was written; review the new preview.";

    const auto forNewFile = planTo("new");
    writeContents(config, "the user's");
    EXPECT_EQ(applied(forNewFile), changed) << "created meanwhile";
    writeContents(config, "");
    EXPECT_EQ(applied(forNewFile), changed) << "an empty file is more than none";

    writeContents(config, "old");
    const auto forOldFile = planTo("new");
    writeContents(config, "old\n");
    EXPECT_EQ(applied(forOldFile), changed) << "changed meanwhile";
    EXPECT_EQ(contentsOf(config), "old\n");
    fs::remove(config);
    EXPECT_EQ(applied(forOldFile), changed) << "deleted meanwhile";
    EXPECT_FALSE(fs::exists(config));

    EXPECT_FALSE(fs::exists(backups));
    EXPECT_TRUE(fs::is_empty(directory));
    writeContents(config, "old");
    EXPECT_EQ(applied(forOldFile), "") << "the same text again";
}

TEST_F(ConfigFileApplyTest, touchesNothingThatIsNoLongerAUTF8File) {
    writeContents(config, "old");
    const auto plan = planTo("new");
    writeContents(config, "\xFF");
    EXPECT_EQ(applied(plan), config.string() + " is not UTF-8 text. It was not modified.");
    EXPECT_EQ(contentsOf(config), "\xFF");
    fs::remove(config);
    fs::create_directory(config);
    EXPECT_EQ(applied(plan), "Could not read " + config.string() + ": " + reasonOf(EISDIR));
    fs::remove(config);
    ASSERT_EQ(mkfifo(config.c_str(), 0600), 0);
    EXPECT_EQ(applied(plan), "Could not read " + config.string() + ": " + reasonOf(EINVAL));
    EXPECT_TRUE(fs::is_fifo(config));
    EXPECT_EQ(namesIn(directory), Names{"settings.json"});
    EXPECT_FALSE(fs::exists(backups));
}

TEST_F(ConfigFileApplyTest, replacesNothingWithoutABackup) {
    writeContents(config, "old");
    writeContents(backups, "a file in the way");
    const auto description = applied(planTo("new"));
    EXPECT_TRUE(description.starts_with("Could not write " + backups.string() +
                                        "/settings.json.20250301T143005Z.") &&
                description.ends_with(".bak: " + reasonOf(ENOTDIR)))
        << description;
    EXPECT_EQ(contentsOf(config), "old");
    EXPECT_EQ(namesIn(directory), Names{"settings.json"});

    config = backups / "settings.json";
    EXPECT_EQ(applied(planTo("new")),
              "Could not write " + config.string() + ": " + reasonOf(ENOTDIR))
        << "nor is a file made where no directory can be";
}

TEST_F(ConfigFileApplyTest, keepsAFileWhoseNameIsAsLongAsNamesMayBe) {
    config = directory / std::string(255, 'n');
    writeContents(config, "old");
    EXPECT_TRUE(applied(planTo("new")).ends_with(": " + reasonOf(ENAMETOOLONG)));
    EXPECT_EQ(contentsOf(config), "old");
    EXPECT_EQ(namesIn(directory).size(), 1U);
}

using WriteAtomicallyTest = ConfigFileTest;

TEST_F(WriteAtomicallyTest, takesTheModeOfAnotherFile) {
    const auto source = temporary.path / "source";
    writeContents(source, "");
    chmod(source.c_str(), 0640);
    writeContents(config, "old");
    EXPECT_TRUE(ConfigFileWriter::writeAtomically("new", config, source));
    EXPECT_EQ(contentsOf(config), "new");
    EXPECT_EQ(modeOf(config.c_str()), mode_t{0640});

    EXPECT_TRUE(ConfigFileWriter::writeAtomically("newer", config, temporary.path / "missing"));
    EXPECT_EQ(contentsOf(config), "newer");
    EXPECT_EQ(modeOf(config.c_str()), mode_t{0600});
    EXPECT_EQ(namesIn(directory), Names{"settings.json"});
}

TEST_F(WriteAtomicallyTest, replacesALinkItself) {
    writeContents(directory / "file", "kept");
    fs::create_symlink("file", config);
    EXPECT_TRUE(ConfigFileWriter::writeAtomically("new", config, config));
    EXPECT_FALSE(fs::is_symlink(config));
    EXPECT_EQ(contentsOf(directory / "file"), "kept");
}

TEST_F(WriteAtomicallyTest, leavesNothingBehindWhereItFails) {
    EXPECT_EQ(ConfigFileWriter::writeAtomically("new", config, config).error(),
              ConfigFileError::writeFailed(config, reasonOf(ENOENT)));
    fs::create_directories(config / "full");
    EXPECT_EQ(ConfigFileWriter::writeAtomically("new", config, config).error(),
              ConfigFileError::writeFailed(config, reasonOf(EISDIR)));
    EXPECT_EQ(namesIn(directory), Names{"settings.json"});
    EXPECT_EQ(namesIn(config), Names{"full"});
}

}  // namespace
}  // namespace tallowbrook
