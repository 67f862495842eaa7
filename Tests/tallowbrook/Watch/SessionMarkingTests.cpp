// How sessions of one project are told apart from their beginning on.
#include "Watch/SessionMarking.h"

#include "Storing.h"
#include "Support/FileContents.h"

namespace tallowbrook::host {
namespace {

struct Marking : Storing {
    std::string nameOf(const std::string& id) {
        const Instant now = sampleTime + std::chrono::minutes{5};
        return SessionMarking{database, now}.nameOf(session(id));
    }
    std::filesystem::path tree(const std::string& parent, const std::string& branch) const {
        const auto made = home.directory.path / parent / "docs";
        create_directories(made / ".git");
        writeContents(made / ".git" / "HEAD", "ref: refs/heads/" + branch + "\n");
        return made;
    }
};

TEST_F(Marking, countsTheSessionsOfAProject) {
    store({prompt(0, "S1")});
    EXPECT_EQ(nameOf("S1"), "proj");
    store({prompt(1, "S2"), prompt(2, "S3")});
    EXPECT_EQ(nameOf("S1"), "proj #1");
    EXPECT_EQ(nameOf("S2"), "proj #2");
    EXPECT_EQ(nameOf("S3"), "proj #3");
}

TEST_F(Marking, givesNoNumberAgainWhileItsSessionIsListed) {
    store({prompt(0, "S1"), prompt(1, "S2")});
    home.execute("UPDATE sessions SET last_seen_at = 0 WHERE storage_id LIKE '%S1'");
    EXPECT_EQ(nameOf("S2"), "proj") << "no list shows the other one";
    store({prompt(10, "S3")});
    EXPECT_EQ(nameOf("S2"), "proj #2");
    EXPECT_EQ(nameOf("S3"), "proj #1");
    store({prompt(40, "S1")});
    EXPECT_EQ(nameOf("S1"), "proj #3") << "its number was given to another meanwhile";
    EXPECT_EQ(nameOf("S3"), "proj #1");
}

TEST_F(Marking, tellsWorkingTreesApartByTheBranchOfTheLatestPrompt) {
    auto first = prompt(0, "S1");
    first.cwd = tree("one", "main").string();
    auto second = prompt(1, "S2");
    second.cwd = tree("two", "fix").string();
    store({first, second});
    EXPECT_EQ(nameOf("S1"), "docs (main)");
    EXPECT_EQ(nameOf("S2"), "docs (fix)");

    tree("one", "feature");
    EXPECT_EQ(nameOf("S1"), "docs (main)");
    auto next = prompt(30, "S1");
    next.cwd = first.cwd;
    store({next});
    EXPECT_EQ(nameOf("S1"), "docs (feature)");
}

TEST_F(Marking, namesASessionInWhatIsToldOfIt) {
    store({prompt(0, "S1"), prompt(1, "S2")});
    auto question = request(5, "S1");
    question.detail.toolName = "AskUserQuestion";
    store({question, stop(40, "S2")});
    EXPECT_EQ(told(),
              (Texts{"Claude Code has a question: proj #1 \xE2\x80\x94 waiting for your answer.",
                     "Claude Code finished: proj #2 \xE2\x80\x94 turn completed."}));
}

TEST_F(Marking, namesSessionsOfATimeBeforeThereWereMarks) {
    store({prompt(0, "S1"), prompt(1, "S2")});
    home.execute("DELETE FROM session_marks");
    store({stop(40, "S1")});
    EXPECT_EQ(told(), Texts{"Claude Code finished: proj \xE2\x80\x94 turn completed."});
    store({prompt(60, "S2")});
    EXPECT_EQ(nameOf("S2"), "proj");
    store({prompt(61, "S1")});
    EXPECT_EQ(nameOf("S1"), "proj #2");
}

TEST_F(Marking, goesWithItsSession) {
    store({prompt(0, "S1")});
    SessionStore{database}.removeSession({Provider::claudeCode, "S1"});
    EXPECT_EQ(home.rows("session_marks"), 0);
}

}  // namespace
}  // namespace tallowbrook::host
