// A disk without room, for the helper and for the host.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "EndToEnd/TestHome.h"
#include "HostPromises.h"
#include "SmallDiskLinux.h"
#include "SpoolContents.h"
#include "Support/FileContents.h"

namespace tallowbrook {
namespace {

constexpr std::size_t page = 4096;  // what such a disk gives a file at a time
constexpr std::size_t plenty = 1 << 20;

class FullDiskTest : public testing::Test {
 protected:
    void SetUp() override {
        if (const auto reason = SmallDisk::reasonToSkip()) GTEST_SKIP() << *reason;
    }

    // One event after the other until long after the disk is full.
    static void fillBySpooling(const TestHome& home) {
        for (int i = 0; i < 80; ++i) home.claude("Stop", "S" + std::to_string(i));
    }

    // The first ones are there, whole, and none behind the first that found no room.
    static std::size_t expectUnbrokenRow(const TestHome& home) {
        const auto contents = SpoolContents::of(home.paths);
        EXPECT_EQ(contents.invalidLines, std::vector<std::string>{});
        EXPECT_EQ(contents.tornEnds, std::vector<std::string>{});
        for (std::size_t i = 0; i < contents.events.size(); ++i)
            EXPECT_EQ(contents.events[i].sessionID, "S" + std::to_string(i));
        return contents.events.size();
    }
};

TEST_F(FullDiskTest, takesNoEventThatWasRecordedAndTearsNone) {
    for (const std::size_t size : {1 * page, 2 * page, 3 * page, 4 * page}) {
        SCOPED_TRACE(size);
        const TestHome home;
        const SmallDisk disk{home.paths.home, size};
        fillBySpooling(home);
        const std::size_t recorded = expectUnbrokenRow(home);
        EXPECT_GT(recorded, 5U);
        EXPECT_LT(recorded, 80U) << "the disk was never full";
        EXPECT_TRUE(isSpoolFree(home.paths));
        expectOwnerOnlyModes(home.paths);

        disk.resize(plenty);
        home.claude("Stop", "S" + std::to_string(recorded));
        EXPECT_EQ(expectUnbrokenRow(home), recorded + 1);
    }
}

TEST_F(FullDiskTest, withNoRoomAtAllIsBorneInSilence) {
    const TestHome home;
    const SmallDisk disk{home.paths.home, page};
    writeContents(home.paths.home / "other", std::string(page, 'x'));
    fillBySpooling(home);
    EXPECT_EQ(expectUnbrokenRow(home), 0U);
    disk.resize(plenty);
    home.claude("Stop", "S0");
    EXPECT_EQ(expectUnbrokenRow(home), 1U);
}

TEST_F(FullDiskTest, isToldByTheHostOnceThereIsRoom) {
    const TestHome home;
    const SmallDisk disk{home.paths.home, 4 * page};
    // A log that has begun has room in its last page when the disk has none.
    home.hook({"claude-code"}, "this is no JSON");
    fillBySpooling(home);
    const auto refused = home.logged().size() - 1;
    ASSERT_GT(refused, 1U);

    disk.resize(plenty);
    const ProgramResult result = home.host({"watch", "--once"});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.errors, testing::StartsWith("tallowbrook: " + std::to_string(refused) +
                                                   " events could not be recorded "));
    EXPECT_THAT(result.errors, testing::EndsWith(": the disk was full.\n"));
    EXPECT_EQ(home.host({"watch", "--once"}).errors, "");
}

TEST_F(FullDiskTest, givesTheHostASentenceAndTakesNoEvent) {
    for (const auto& preparation : preparations) {
        const TestHome prepared;
        preparation.apply(prepared);
        const auto promises = HostPromises::of(prepared);
        int failures = 0;
        int runs = 0;
        // From no room but for what is there to room for all.
        for (std::size_t room = 0; room <= 120 * page; room += 2 * page) {
            SCOPED_TRACE(room);
            const TestHome home;
            const SmallDisk disk{home.paths.home, plenty};
            copyHome(prepared, home);
            disk.resize(disk.used() + room);
            const ProgramResult result = home.host({"watch", "--once"});
            promises.expectHonestStatus(home, result);
            HostPromises::expectSentence(result);
            promises.expectNothingLost(home, result);
            failures += result.status == 0 ? 0 : 1;
            ++runs;

            disk.resize(plenty);
            promises.expectGoodNextRun(home);
        }
        EXPECT_GT(failures, 0) << "there was always room";
        EXPECT_LT(failures, runs) << "there was never room";
    }
}

}  // namespace
}  // namespace tallowbrook
