#include "EventBridge/SpoolFileName.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <random>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "Support/FileContents.h"
#include "Support/TemporaryDirectory.h"

namespace tallowbrook {
namespace {

using SpoolFileName::make;
using SpoolFileName::parse;
using SpoolFileName::pendingFiles;
using SpoolFileName::Prefix;

std::vector<std::string> listed(const std::filesystem::path& directory) {
    std::vector<std::string> names;
    for (const auto& entry : pendingFiles(directory)) names.push_back(entry.url.filename());
    return names;
}

TEST(SpoolFileName, isMadeOfPrefixTimeProcessAndRandomBits) {
    const Instant date{std::chrono::microseconds{1763177455123456}};
    for (const Prefix prefix : {Prefix::overflow, Prefix::ingest}) {
        const std::regex pattern{std::string{rawValue(prefix)} + "-1763177455123456-" +
                                 std::to_string(getpid()) + "-(0|[1-9A-F][0-9A-F]{0,7})\\.jsonl"};
        std::set<std::string> names;
        for (int i = 0; i < 1000; ++i) {
            const std::string name = *names.insert(make(prefix, date)).first;
            ASSERT_TRUE(std::regex_match(name, pattern)) << name;
            const SpoolFileName::Entry parts{name, prefix, 1763177455123456};
            EXPECT_EQ(parse(name), parts);
        }
        EXPECT_GE(names.size(), 998U) << "two random words may be the same, hardly ever more";
    }
}

TEST(SpoolFileName, ofANewSegmentIsBehindAllThatAreThere) {
    const auto microsAt = [](std::int64_t now, const std::vector<std::int64_t>& there) {
        std::vector<SpoolFileName::Entry> segments;
        for (const auto micros : there) segments.push_back({"x", Prefix::ingest, micros});
        const Instant date{std::chrono::microseconds{now}};
        return parse(SpoolFileName::makeNext(Prefix::overflow, date, segments)).value().micros;
    };
    EXPECT_EQ(microsAt(5, {}), 5);
    EXPECT_EQ(microsAt(5, {1, 4}), 5);
    EXPECT_EQ(microsAt(5, {1, 5}), 6);
    EXPECT_EQ(microsAt(5, {1, 70}), 71);
    EXPECT_EQ(microsAt(5, {1, INT64_MAX}), INT64_MAX);
}

TEST(SpoolFileName, isReadFromAPathThatNeedNotExist) {
    const std::filesystem::path file = "/missing-1/overflow-5-6-7.jsonl";
    EXPECT_EQ(parse(file), (SpoolFileName::Entry{file, Prefix::overflow, 5}));
    EXPECT_EQ(parse("ingest-9223372036854775807-1-0.jsonl"),
              (SpoolFileName::Entry{"ingest-9223372036854775807-1-0.jsonl", Prefix::ingest,
                                    9223372036854775807}));
    EXPECT_EQ(parse("/overflow-5-6-7.jsonl/notes"), std::nullopt);
    EXPECT_EQ(parse("/overflow-5-6-7.jsonl/"), std::nullopt);
}

TEST(PendingFiles, comeOldestFirstThenOverflowFirstThenByName) {
    const std::vector<std::string> inOrder{
        "ingest-0-1-1.jsonl",
        "overflow-1-1-1.jsonl",
        "ingest-1-1-1.jsonl",
        "ingest-10-1-1.jsonl",
        "overflow-100-1-1.jsonl",
        "overflow-100-10-1.jsonl",
        "overflow-100-2-1.jsonl",
        "ingest-100-1-1.jsonl",
        "overflow-1763177455123456-4242-9F3A01C.jsonl",
        "ingest-1763177455123457-4242-0.jsonl",
    };
    std::vector<std::string> made = inOrder;
    std::mt19937 engine;  // any order of creation will do
    std::ranges::shuffle(made, engine);
    const TemporaryDirectory temporary;
    for (const auto& name : made) writeContents(temporary.path / name, "");
    EXPECT_EQ(listed(temporary.path), inOrder);
}

TEST(SpoolFileName, isNoOther) {
    for (const char* name :
         {"events.jsonl", "spool.lock", "overflow-abc-1-2.jsonl", "overflow--1-2.jsonl",
          "overflow--5-1-2.jsonl", "overflow- 1-1-2.jsonl",
          "overflow-9223372036854775808-1-2.jsonl", "overflow-1.jsonl", "overflow-1-2-3.json",
          "overflow-1-2-3.jsonl.1", "overflow-1-2-3.JSONL", "Overflow-1-2-3.jsonl",
          "overflowed-1-2-3.jsonl", "-1-2-3.jsonl", " ingest-1-2-3.jsonl", "-.jsonl", ".jsonl", ""})
        EXPECT_EQ(parse(name), std::nullopt) << name;
}

TEST(PendingFiles, lookOnlyAtPrefixTimeAndEnding) {
    const TemporaryDirectory temporary;
    const std::vector<std::string> names{
        "ingest-1-.jsonl",
        "ingest-2-any name.jsonl",
        "ingest-3-1-2-3-4.jsonl",
        "ingest-0004-1-2.jsonl",
    };
    for (const auto& name : names) writeContents(temporary.path / name, "");
    EXPECT_EQ(listed(temporary.path), names);
}

TEST(PendingFiles, ofADirectoryThatCannotBeListedAreNone) {
    const TemporaryDirectory temporary;
    EXPECT_TRUE(pendingFiles(temporary.path).empty());
    EXPECT_TRUE(pendingFiles(temporary.path / "missing").empty());
    EXPECT_TRUE(SpoolFileName::listPendingFiles(temporary.path));
    const auto missing = SpoolFileName::listPendingFiles(temporary.path / "missing");
    ASSERT_FALSE(missing);
    EXPECT_EQ(missing.error(), (FileError{"list", ENOENT}));
}

}  // namespace
}  // namespace tallowbrook
