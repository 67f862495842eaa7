#include "DiskModel.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tallowbrook {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::Not;
using testing::UnorderedElementsAre;

// What a file can hold after a power cut at any moment; "-" where it is not there.
std::set<std::string> statesOf(const std::string& file, const DiskModel& disk) {
    std::set<std::string> states;
    disk.forEachCut([&](const PowerCut& cut) {
        const auto found = cut.tree.files.find(file);
        states.insert(found == cut.tree.files.end() ? "-" : found->second);
    });
    return states;
}

// The same where the program had ended before.
std::set<std::string> lastStatesOf(const std::string& file, const DiskModel& disk) {
    std::set<std::string> states;
    disk.forEachCut([&](const PowerCut& cut) {
        const auto found = cut.tree.files.find(file);
        if (cut.isAtTheEnd) states.insert(found == cut.tree.files.end() ? "-" : found->second);
    });
    return states;
}

DiskModel diskWith(const std::string& file, const std::string& bytes) {
    return DiskModel{DiskTree{.files = {{file, bytes}}, .directories = {}}};
}

TEST(DiskModel, aFileThatIsRenamedBeforeItIsFlushedMayBeEmptyOrTorn) {
    auto disk = diskWith("config", "old!");
    ASSERT_TRUE(disk.create("new") && disk.append("new", "NEW!") && disk.rename("new", "config"));
    EXPECT_THAT(statesOf("config", disk),
                UnorderedElementsAre("old!", "", "NE", std::string(4, '\0'), "NEW!"));
}

TEST(DiskModel, aFileThatIsFlushedBeforeItIsRenamedIsTheOldOrTheNewOne) {
    auto disk = diskWith("config", "old!");
    ASSERT_TRUE(disk.create("new") && disk.append("new", "NEW!") && disk.flush("new") &&
                disk.rename("new", "config"));
    EXPECT_THAT(statesOf("config", disk), UnorderedElementsAre("old!", "NEW!"));
    EXPECT_THAT(lastStatesOf("config", disk), UnorderedElementsAre("old!", "NEW!"));
    ASSERT_TRUE(disk.flush(""));
    EXPECT_THAT(lastStatesOf("config", disk), ElementsAre("NEW!"));
}

TEST(DiskModel, twoFilesExchangeTheirNamesAsAWhole) {
    DiskModel disk{{.files = {{"one", "1"}, {"other", "2"}}, .directories = {}}};
    ASSERT_TRUE(disk.exchange("one", "other"));
    std::set<std::string> states;
    disk.forEachCut([&](const PowerCut& cut) {
        states.insert(cut.tree.files.at("one") + cut.tree.files.at("other"));
    });
    EXPECT_THAT(states, UnorderedElementsAre("12", "21"));
}

TEST(DiskModel, aFlushedFileInANewDirectoryIsLostUntilTheNamesAreFlushed) {
    DiskModel disk{DiskTree{}};
    ASSERT_TRUE(disk.makeDirectory("a") && disk.create("a/file") && disk.append("a/file", "x") &&
                disk.flush("a/file") && disk.flush("a"));
    EXPECT_THAT(lastStatesOf("a/file", disk), UnorderedElementsAre("-", "x"));
    ASSERT_TRUE(disk.flush(""));
    EXPECT_THAT(lastStatesOf("a/file", disk), ElementsAre("x"));
}

TEST(DiskModel, writesKeepNoOrderUntilTheyAreFlushed) {
    auto disk = diskWith("file", "....");
    ASSERT_TRUE(disk.write("file", 0, "A") && disk.write("file", 3, "B"));
    EXPECT_THAT(statesOf("file", disk), testing::AllOf(Contains("...."), Contains("A..."),
                                                       Contains("...B"), Contains("A..B")));
    ASSERT_TRUE(disk.flush("file"));
    EXPECT_THAT(lastStatesOf("file", disk), ElementsAre("A..B"));
}

TEST(DiskModel, theNamesOfADirectoryChangeInOrder) {
    DiskModel disk{DiskTree{}};
    ASSERT_TRUE(disk.create("first") && disk.create("second"));
    std::set<std::string> alone;
    disk.forEachCut([&](const PowerCut& cut) {
        if (cut.tree.files.size() == 1) alone.insert(cut.tree.files.begin()->first);
    });
    EXPECT_THAT(alone, ElementsAre("first"));
}

TEST(DiskModel, aRemovedFileMayBeBack) {
    auto disk = diskWith("file", "x");
    ASSERT_TRUE(disk.remove("file"));
    EXPECT_THAT(lastStatesOf("file", disk), UnorderedElementsAre("x", "-"));
}

TEST(DiskModel, whatWasPrintedBeforeIsKnown) {
    auto disk = diskWith("file", "");
    ASSERT_TRUE(disk.append("file", "x"));
    disk.print("said");
    ASSERT_TRUE(disk.flush("file"));
    disk.forEachCut([](const PowerCut& cut) {
        if (cut.isAtTheEnd) {
            EXPECT_EQ(cut.printed, "said");
        }
    });
}

TEST(DiskModel, knowsWhatIsMissingOrInTheWay) {
    auto disk = diskWith("file", "");
    EXPECT_FALSE(disk.create("file"));
    EXPECT_FALSE(disk.create("nowhere/file"));
    EXPECT_FALSE(disk.append("other", "x"));
    EXPECT_FALSE(disk.remove("other"));
    EXPECT_FALSE(disk.rename("other", "file"));
    EXPECT_FALSE(disk.exchange("file", "other"));
    EXPECT_FALSE(disk.flush("other"));
}

}  // namespace
}  // namespace tallowbrook
