// What the disk may hold when the power fails: each run is recorded, call by call, and every state
// that its writes and flushes leave open is built and looked at.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <iostream>
#include <iterator>

#include "DiskRecordingLinux.h"
#include "Domain/EventCoding.h"
#include "EndToEnd/SetupHome.h"
#include "EventBridge/SpoolDrainer.h"
#include "EventBridge/SpoolFileName.h"
#include "HostPromises.h"
#include "SpoolContents.h"
#include "StraceLinux.h"
#include "Support/BuildPaths.h"
#include "Support/FileContents.h"

namespace tallowbrook {
namespace {

using Sessions = std::multiset<std::string>;

class PowerCutTest : public testing::Test {
 protected:
    static bool isHelper(const std::pair<const std::string, std::string>& file) {
        return file.first.ends_with("/bin/tallowbrook-hook");
    }

    void SetUp() override {
        if (const auto reason = Strace::reasonToSkip()) GTEST_SKIP() << *reason;
    }

    // `look` is given each state as a home of its own, but for the installed helper: it is large,
    // and can be looked at in the state's tree.
    static void forEachHome(const DiskModel& disk,
                            const std::function<void(const TestHome&, const PowerCut&)>& look) {
        int states = 0;
        disk.forEachCut([&](const PowerCut& cut) {
            SCOPED_TRACE(cut.text);
            ++states;
            const TestHome home;
            DiskTree tree = cut.tree;
            std::erase_if(tree.files, isHelper);
            tree.writeTo(home.directory.path);
            look(home, cut);
        });
        std::cout << disk.size() << " calls, " << states << " states\n";
    }
};

// The sessions of each segment that is not stored yet: one batch each.
std::vector<Sessions> newBatches(const TestHome& home) {
    const Sessions stored = StoredState::of(home.paths).events;
    auto files = SpoolFileName::pendingFiles(home.paths.spoolDirectory());
    files.push_back({.url = home.paths.activeSpoolFile()});
    std::vector<Sessions> batches;
    for (const auto& file : files) {
        Sessions batch;
        for (const auto& event : SpoolDrainer::readEvents(file.url).value().events)
            if (!stored.contains(*event.sessionID)) batch.insert(*event.sessionID);
        batches.push_back(std::move(batch));
    }
    return batches;
}

class HostPowerCutTest : public PowerCutTest, public testing::WithParamInterface<Preparation> {};

TEST_P(HostPowerCutTest, storesABatchWholeOrLeavesItInTheSpool) {
    const TestHome home;
    GetParam().apply(home);
    const auto promises = HostPromises::of(home);
    const auto batches = newBatches(home);
    ASSERT_GE(batches.size(), 2U);
    DiskModel disk{DiskTree::of(home.directory.path)};
    EXPECT_EQ(recordRun(home.hostCall({"watch", "--once"}), home.directory.path, disk).status, 0);

    constexpr int statesForANextRun = 40;
    int count = 0;
    disk.forEachCut([&](const PowerCut&) { ++count; });
    int number = 0;
    forEachHome(disk, [&](const TestHome& after, const PowerCut& cut) {
        promises.expectNothingLost(after, {.output = cut.printed});
        const auto stored = StoredState::of(after.paths).events;
        for (const auto& batch : batches) {
            Sessions part;
            std::ranges::set_intersection(batch, stored, std::inserter(part, part.end()));
            EXPECT_TRUE(part.empty() || part == batch) << testing::PrintToString(part);
        }
        // Status 0 said so.
        if (cut.isAtTheEnd) {
            EXPECT_EQ(stored, promises.everything);
        }
        if (number++ % (count / statesForANextRun + 1) == 0) promises.expectGoodNextRun(after);
    });
}

INSTANTIATE_TEST_SUITE_P(, HostPowerCutTest, testing::ValuesIn(preparations),
                         [](const auto& test) { return test.param.name; });

TEST_F(PowerCutTest, whatTheFirstHostOfAHomeHasStoredStays) {
    const TestHome home;
    DiskModel disk{DiskTree::of(home.directory.path)};
    const auto& directory = home.directory.path;
    EXPECT_EQ(recordRun(home.hookCall({"claude-code"}, claudePayload("Stop")), directory, disk),
              quiet);
    EXPECT_EQ(recordRun(home.hostCall({"watch", "--once"}), directory, disk).status, 0);
    forEachHome(disk, [](const TestHome& after, const PowerCut& cut) {
        const auto state = StoredState::of(after.paths);
        EXPECT_TRUE(state.isSound);
        if (cut.isAtTheEnd) {
            EXPECT_EQ(state.events, Sessions{"S1"});
        }
    });
}

// A helper does not wait for the disk, so its own line may be lost or torn.
void expectNothingButOneLineTorn(const TestHome& home, const Sessions& earlier) {
    const auto contents = SpoolContents::of(home.paths);
    Sessions left = StoredState::of(home.paths).events;
    left.merge(contents.sessions());
    EXPECT_TRUE(std::ranges::includes(left, earlier)) << testing::PrintToString(left);
    EXPECT_LE(contents.invalidLines.size() + contents.tornEnds.size(), 1U);
}

TEST_F(PowerCutTest, aHelperHarmsNoLineThatWasThereBefore) {
    for (const bool isFull : {false, true}) {
        const TestHome home;
        create_directories(home.paths.spoolDirectory());
        for (int i = 1; i <= 8; ++i)
            writeContents(
                home.paths.spoolDirectory() / ("overflow-" + std::to_string(i) + "-1-A.jsonl"),
                EventCoding::encodeLine(currentEvent(std::to_string(i))));
        std::string line = EventCoding::encodeLine(currentEvent("earlier"));
        if (isFull) line.insert(1, 2'097'152 - line.size(), ' ');
        home.spool(line);
        Sessions earlier = SpoolContents::of(home.paths).sessions();
        // With one segment more than are kept the oldest has to go.
        if (isFull) earlier.erase("1");

        DiskModel disk{DiskTree::of(home.directory.path)};
        const auto call = home.hookCall({"claude-code"}, claudePayload("Stop", "new"));
        EXPECT_EQ(recordRun(call, home.directory.path, disk), quiet);
        forEachHome(disk, [&](const TestHome& after, const PowerCut&) {
            expectNothingButOneLineTorn(after, earlier);
        });
    }
}

TEST_F(PowerCutTest, aClaimOfALineThatIsNotOnTheDiskHarmsNoOther) {
    const TestHome home;
    home.spool(currentEvent("earlier"));
    DiskModel disk{DiskTree::of(home.directory.path)};
    const auto call = home.hookCall({"claude-code"}, claudePayload("Stop", "new"));
    EXPECT_EQ(recordRun(call, home.directory.path, disk), quiet);
    EXPECT_EQ(recordRun(home.hostCall({"watch", "--once"}), home.directory.path, disk).status, 0);
    forEachHome(disk, [&](const TestHome& after, const PowerCut& cut) {
        expectNothingButOneLineTorn(after, {"earlier"});
        if (cut.isAtTheEnd) {
            EXPECT_EQ(StoredState::of(after.paths).events, (Sessions{"earlier", "new"}));
        }
    });
}

class SetupPowerCutTest : public PowerCutTest {
 protected:
    // Looks at every state of `setup`.
    static void setUp(const SetupHome& home) {
        const auto old = fileOf(home, home.claudeFile, DiskTree::of(home.directory.path));
        DiskModel disk{DiskTree::of(home.directory.path)};
        const auto result =
            recordRun(home.hostCall({"setup", "claude-code", "--yes"}), home.directory.path, disk);
        EXPECT_EQ(result.status, 0) << result.errors;
        const auto made = fileOf(home, home.claudeFile, disk.now());
        ASSERT_TRUE(made);
        ASSERT_NE(made, old);
        const auto helper = contentsOf(BuildPaths::helper);
        bool wasOld = false;
        forEachHome(disk, [&](const TestHome& after, const PowerCut& cut) {
            const auto config = fileOf(home, home.claudeFile, cut.tree);
            EXPECT_TRUE(config == old || config == made) << config.value_or("no file");
            EXPECT_TRUE(StoredState::of(inside(after, home)).isSound);
            wasOld = wasOld || config == old;
            if (cut.isAtTheEnd) {
                EXPECT_EQ(config, made);
            }
            if (config != made) return;
            EXPECT_TRUE(fileOf(home, home.paths.installedHelper(), cut.tree) == helper)
                << "the hooks call a helper that is missing or torn";
            if (old) {
                EXPECT_TRUE(hasBackup(cut.tree, *old)) << "replaced without a whole backup";
            }
        });
        EXPECT_TRUE(wasOld);
    }

 private:
    static std::optional<std::string> fileOf(const TestHome& home,
                                             const std::filesystem::path& file,
                                             const DiskTree& tree) {
        const auto found = tree.files.find(file.lexically_relative(home.directory.path).string());
        if (found == tree.files.end()) return std::nullopt;
        return found->second;
    }

    static bool hasBackup(const DiskTree& tree, const std::string& contents) {
        return std::ranges::any_of(tree.files, [&](const auto& file) {
            return file.first.ends_with(".bak") && file.second == contents;
        });
    }

    // The data home that was written to another test's directory.
    static TallowbrookPaths inside(const TestHome& after, const TestHome& home) {
        return {after.directory.path / home.paths.home.lexically_relative(home.directory.path)};
    }
};

TEST_F(SetupPowerCutTest, leavesTheOldConfigurationOrTheNewOneWithItsBackupAndHelper) {
    const SetupHome home;
    writeContents(home.claudeFile, "{\n  \"model\": \"x\"\n}\n");
    setUp(home);
}

TEST_F(SetupPowerCutTest, leavesNoConfigurationOrTheNewOneWithItsHelper) {
    const SetupHome home;
    setUp(home);
}

}  // namespace
}  // namespace tallowbrook
