// The host on a database that a disk, or a machine that lost power, has damaged: every command ends
// with a status and a sentence, and leaves the file as it is.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

#include "EventBridge/SpoolDrainer.h"
#include "Support/FileContents.h"
#include "TestHome.h"

namespace tallowbrook {
namespace {

using testing::HasSubstr;

constexpr std::size_t headerBytes = 100;
constexpr std::size_t pageBytes = 4096;
constexpr std::size_t versionOffset = 60;  // `user_version`, big-endian

using Words = std::vector<std::string>;

const std::vector<Words> readingCommands{{"sessions"}, {"explain", "1"}, {"doctor"}};
const std::vector<Words> writingCommands{{"health"}, {"preferences"}, {"watch", "--once"}};

// A home whose database has been used by every command that writes.
struct DamagedHome : TestHome {
    DamagedHome() {
        for (int i = 0; i < 40; ++i) {
            AgentEvent event = currentEvent("S" + std::to_string(i % 8));
            if (i % 3 == 0) {
                event.category = EventCategory::attentionRequested;
                event.attention = AttentionKind::permission;
            }
            spool(event);
        }
        EXPECT_EQ(host({"watch", "--once"}).status, 0);
        EXPECT_EQ(host({"preferences", "quietHours", "22:00-07:00"}).status, 0);
        sound = contentsOf(paths.databaseFile());
        EXPECT_GT(sound.size(), 4 * pageBytes);
    }

    std::string sound;

    void damage(const std::string& contents) const {
        for (const char* companion : {"-wal", "-shm"})
            std::filesystem::remove(paths.databaseFile().string() + companion);
        writeContents(paths.databaseFile(), contents);
    }

    std::string advice() const {
        const std::string file = paths.databaseFile().string();
        return "Move it away (mv " + file + " " + file +
               ".damaged) and start again; what the agents report from then on is kept.\n";
    }

    // That the command ends by itself, and says why where it fails.
    ProgramResult expectEnd(const Words& command) const {
        const ProgramResult result = host(command);
        EXPECT_NE(result.status, -1) << "ended by a signal: " << command.front();
        if (result.status == 1) {
            EXPECT_THAT(result.errors, testing::MatchesRegex("(tallowbrook: [^\n]*[.]\n)+"))
                << command.front();
        }
        return result;
    }

    // Every command on this database. One that only looks leaves it as it is, and so does one that
    // refuses to open it.
    void expectEnds(const std::string& contents) const {
        damage(contents);
        for (const auto& command : readingCommands) {
            expectEnd(command);
            EXPECT_EQ(contentsOf(paths.databaseFile()) == contents, true) << command.front();
        }
        for (const auto& command : writingCommands) {
            damage(contents);
            const auto result = expectEnd(command);
            if (result.status != 1 || !result.output.empty()) continue;
            EXPECT_EQ(contentsOf(paths.databaseFile()) == contents, true) << command.front();
        }
    }
};

std::string withVersion(std::string contents, std::uint32_t version) {
    for (std::size_t i = 0; i < 4; ++i)
        contents[versionOffset + i] = static_cast<char>(version >> (24 - 8 * i) & 0xFF);
    return contents;
}

TEST(DamagedDatabase, ofAVersionThatNeverWasIsRefusedWithAdviceByEveryCommand) {
    const DamagedHome home;
    for (const std::uint32_t version : {0x80000003U, 0xFFFFFFFFU, 0x80000000U}) {
        const auto contents = withVersion(home.sound, version);
        home.damage(contents);
        const std::string sentence =
            "tallowbrook: The database " + home.paths.databaseFile().string() +
            " is damaged: its version is " + std::to_string(static_cast<std::int32_t>(version)) +
            ". " + home.advice();
        for (const auto& commands : {readingCommands, writingCommands})
            for (const auto& command : commands) {
                const auto result = home.expectEnd(command);
                EXPECT_EQ(result.status, command.front() == "doctor" ? 4 : 1) << command.front();
                EXPECT_EQ(result.errors, sentence) << command.front();
            }
        EXPECT_EQ(contentsOf(home.paths.databaseFile()) == contents, true);
    }
}

TEST(DamagedDatabase, whoseVersionSpeaksOfOtherTablesIsRefusedWithAdvice) {
    const DamagedHome home;
    for (const std::uint32_t version : {0U, 1U, 2U}) {
        const auto contents = withVersion(home.sound, version);
        home.damage(contents);
        for (const Words& command : {Words{"sessions"}, {"watch", "--once"}}) {
            const auto result = home.expectEnd(command);
            EXPECT_EQ(result.status, 1) << version;
            EXPECT_THAT(result.errors, HasSubstr(home.advice()));
        }
        EXPECT_EQ(contentsOf(home.paths.databaseFile()) == contents, true);
    }
}

TEST(DamagedDatabase, withAFlippedBitInItsHeaderEndsNoCommandByASignal) {
    const DamagedHome home;
    std::mt19937 random{4711};
    for (std::size_t byte = 0; byte < headerBytes; byte += 1 + random() % 4) {
        SCOPED_TRACE("byte " + std::to_string(byte));
        std::string contents = home.sound;
        contents[byte] = static_cast<char>(contents[byte] ^ (1 << random() % 8));
        home.expectEnds(contents);
    }
}

TEST(DamagedDatabase, withFlippedBitsInItsPagesEndsNoCommandByASignal) {
    const DamagedHome home;
    std::mt19937 random{42};
    for (int round = 0; round < 24; ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        std::string contents = home.sound;
        for (int flips = 1 << round % 7; flips > 0; --flips) {
            const auto byte = headerBytes + random() % (contents.size() - headerBytes);
            contents[byte] = static_cast<char>(contents[byte] ^ (1 << random() % 8));
        }
        home.expectEnds(contents);
    }
}

TEST(DamagedDatabase, withAHalfWrittenPageEndsNoCommandByASignal) {
    const DamagedHome home;
    for (std::size_t page = 0; page < home.sound.size() / pageBytes; ++page) {
        SCOPED_TRACE("page " + std::to_string(page));
        std::string contents = home.sound;
        contents.replace((page + 1) * pageBytes - pageBytes / 2, pageBytes / 2, pageBytes / 2, 0);
        home.expectEnds(contents);
    }
    home.expectEnds(home.sound.substr(0, home.sound.size() - pageBytes / 2));
}

TEST(DamagedDatabase, movedAwayAsTheSentenceSaysMakesRoomForANewOne) {
    const DamagedHome home;
    std::string contents = home.sound;
    contents.replace(headerBytes, pageBytes, pageBytes, '\x7F');
    home.damage(contents);
    home.claude("Stop");
    const auto refused = home.expectEnd({"watch", "--once"});
    EXPECT_EQ(refused.status, 1);
    EXPECT_THAT(refused.errors,
                HasSubstr("The database " + home.paths.databaseFile().string() + " is damaged: "));
    EXPECT_THAT(refused.errors, HasSubstr(home.advice()));
    rename(home.paths.databaseFile(), home.paths.databaseFile().string() + ".damaged");
    EXPECT_EQ(home.host({"watch", "--once"}).status, 0);
    EXPECT_EQ(home.rows("events"), 1);
    EXPECT_EQ(SpoolDrainer{home.paths}.pendingSegmentCount(), 0);
}

}  // namespace
}  // namespace tallowbrook
