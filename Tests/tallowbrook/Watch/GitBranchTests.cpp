#include "Watch/GitBranch.h"

#include <gtest/gtest.h>

#include "Support/FileContents.h"
#include "Support/TemporaryDirectory.h"

namespace tallowbrook::host {
namespace {

using Branch = std::optional<std::string>;

struct WorkingTree : testing::Test {
    TemporaryDirectory directory;
    std::filesystem::path tree = directory.path / "tree";

    WorkingTree() { create_directories(tree / "sources" / "deep"); }

    void writeHead(const std::string& text) const {
        create_directories(tree / ".git");
        writeContents(tree / ".git" / "HEAD", text);
    }
};

TEST_F(WorkingTree, hasTheBranchThatItsHeadNames) {
    writeHead("ref: refs/heads/feature/login\n");
    EXPECT_EQ(gitBranch(tree), Branch{"feature/login"});
    EXPECT_EQ(gitBranch(tree / "sources" / "deep"), Branch{"feature/login"});
    EXPECT_EQ(gitBranch(tree / "gone"), Branch{"feature/login"});
    EXPECT_EQ(gitBranch(directory.path), Branch{});
    EXPECT_EQ(gitBranch("tree"), Branch{}) << "of another directory, whichever that is";
}

TEST_F(WorkingTree, thatWasAddedToARepositoryHasABranchOfItsOwn) {
    const auto added = directory.path / "repository" / ".git" / "worktrees" / "tree";
    create_directories(added);
    writeContents(added / "HEAD", "ref: refs/heads/fix\n");
    for (const auto& place : {added.string(), std::string{"../repository/.git/worktrees/tree"}}) {
        writeContents(tree / ".git", "gitdir: " + place + "\n");
        EXPECT_EQ(gitBranch(tree / "sources"), Branch{"fix"}) << place;
    }
}

TEST_F(WorkingTree, withoutABranchHasNone) {
    for (const char* head :
         {"3f786850e387550fdab836ed7e6dc881de23001b\n", "ref: refs/tags/v1\n", "ref: refs/heads/\n",
          "ref: refs/heads/.invalid\n", "ref: refs/heads/a\nb\n", ""}) {
        writeHead(head);
        EXPECT_EQ(gitBranch(tree), Branch{}) << head;
    }
    writeHead("ref: refs/heads/" + std::string(5000, 'x'));
    EXPECT_EQ(gitBranch(tree), Branch{});
}

TEST_F(WorkingTree, whoseFilesAreOfAnotherKindHasNone) {
    create_directories(tree / ".git" / "HEAD");
    EXPECT_EQ(gitBranch(tree), Branch{});
    remove_all(tree / ".git");
    writeContents(tree / ".git", "somewhere else\n");
    EXPECT_EQ(gitBranch(tree), Branch{});
}

}  // namespace
}  // namespace tallowbrook::host
