#include "Output/SessionName.h"

#include <gtest/gtest.h>

namespace tallowbrook::host {
namespace {

SessionMark mark(const std::string& session, int number,
                 const std::optional<std::string>& branch = std::nullopt,
                 const std::string& directory = "/x/docs-site") {
    return {session, "docs-site", directory, number, branch};
}

SessionNames namesOf(const std::vector<SessionMark>& marks) {
    SessionNames names;
    for (const auto& each : marks) names.add(each);
    return names;
}

TEST(SessionNames, ofTheOnlySessionOfAProjectAreTheProjects) {
    auto names = namesOf({mark("A", 3, "main")});
    names.add({"B", "api", "/x/api", 1, "main"});
    EXPECT_EQ(names.nameOf("A"), "docs-site");
    EXPECT_EQ(names.nameOf("C"), "");
}

TEST(SessionNames, tellSessionsOfOneDirectoryApartByTheirNumbers) {
    const auto names = namesOf({mark("A", 1, "main"), mark("B", 2, "main")});
    EXPECT_EQ(names.nameOf("A"), "docs-site #1");
    EXPECT_EQ(names.nameOf("B"), "docs-site #2");
}

TEST(SessionNames, tellDirectoriesApartByTheirBranches) {
    const auto names = namesOf({mark("A", 1, "main"), mark("B", 2, "fix", "/y/docs-site"),
                                mark("C", 3, std::nullopt, "/z/docs-site")});
    EXPECT_EQ(names.nameOf("A"), "docs-site (main)");
    EXPECT_EQ(names.nameOf("B"), "docs-site (fix)");
    EXPECT_EQ(names.nameOf("C"), "docs-site #3");
}

TEST(SessionNames, giveNoBranchThatTwoAreOn) {
    const auto names = namesOf({mark("A", 1, "main"), mark("B", 2, "main", "/y/docs-site"),
                                mark("C", 3, "fix", "/z/docs-site")});
    EXPECT_EQ(names.nameOf("A"), "docs-site #1");
    EXPECT_EQ(names.nameOf("B"), "docs-site #2");
    EXPECT_EQ(names.nameOf("C"), "docs-site (fix)");
}

TEST(SessionNames, keepANumberWhateverTheOthersHave) {
    auto names = namesOf({mark("B", 2), mark("D", 4)});
    EXPECT_EQ(names.nameOf("D"), "docs-site #4");
    EXPECT_EQ(names.freeNumber("docs-site"), 1);
    EXPECT_TRUE(names.isTaken("docs-site", 2));
    EXPECT_FALSE(names.isTaken("docs-site", 3));
    for (const char* session : {"first", "second", "third"}) names.add(mark(session, 0));
    EXPECT_EQ(names.nameOf("first"), "docs-site #1");
    EXPECT_EQ(names.nameOf("second"), "docs-site #3");
    EXPECT_EQ(names.nameOf("third"), "docs-site #5");
}

TEST(SessionNames, followASessionThatIsBegunAgainElsewhere) {
    auto names = namesOf({mark("A", 1, "main"), mark("B", 2, "main")});
    names.add({"B", "api", "/x/api", 1, "main"});
    EXPECT_EQ(names.nameOf("A"), "docs-site");
    EXPECT_EQ(names.nameOf("B"), "api");
    EXPECT_EQ(names.freeNumber("docs-site"), 2);
}

TEST(SessionNames, giveOfALongBranchWhatTellsMostAndNoHalfCharacter) {
    const auto names =
        namesOf({mark("A", 1, "feature/search-box"), mark("B", 2, "T-1234-a-long-one", "/y/docs"),
                 mark("C", 3, "aaaaaaaaaaa\xC3\xA4", "/z/docs"), mark("D", 4, "fix/a", "/v/docs")});
    EXPECT_EQ(names.nameOf("A"), "docs-site (search-box)");
    EXPECT_EQ(names.nameOf("B"), "docs-site (T-1234-a-lon\xE2\x80\xA6)");
    EXPECT_EQ(names.nameOf("C"), "docs-site (aaaaaaaaaaa\xE2\x80\xA6)");
    EXPECT_EQ(names.nameOf("D"), "docs-site (fix/a)");
}

TEST(SessionNames, giveNoBranchThatLooksLikeAnother) {
    const auto names = namesOf(
        {mark("A", 1, "feature/search-box"), mark("B", 2, "bugfixes/search-box", "/y/docs-site")});
    EXPECT_EQ(names.nameOf("A"), "docs-site #1");
    EXPECT_EQ(names.nameOf("B"), "docs-site #2");
}

}  // namespace
}  // namespace tallowbrook::host
