// Programs that the host runs and that do not end: it goes on without them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "SetupHome.h"
#include "TallowbrookCore/Integrations/TestScript.h"

namespace tallowbrook {
namespace {

using testing::HasSubstr;
using testing::Not;

struct StubbornHome : SetupHome {
    StubbornHome() { environment["PATH"] = bin.string() + ":/usr/bin:/bin"; }

    std::filesystem::path bin = directory.path / "bin";
    std::filesystem::path note = directory.path / "pid";

    // A program that closes its output, tells its number and stays.
    void add(const std::string& name) const {
        writeScript(bin / name, "exec 1>&-\necho $$ > " + note.string() + "\nexec sleep 1000");
    }
};

TEST(StubbornProgram, doesNotHoldUpDoctor) {
    const StubbornHome home;
    home.add("claude");
    const auto result = home.host({"doctor"});
    EXPECT_EQ(result.status, 4) << "no host runs";
    EXPECT_THAT(result.output, HasSubstr("Claude Code"));
    const NotedProcess program{home.note};
    EXPECT_FALSE(program.isThere());
}

TEST(StubbornProgram, doesNotHoldUpFocus) {
    const StubbornHome home;
    home.add("tmux");
    home.claude("Stop", "S1");
    EXPECT_EQ(home.host({"watch", "--once"}).status, 0);
    const auto result = home.host({"focus", "S1"});
    EXPECT_EQ(result.status, 1);
    const NotedProcess program{home.note};
    EXPECT_FALSE(program.isThere());
}

TEST(Doctor, runsNoProgramOfTheDirectoryItIsCalledIn) {
    StubbornHome home;
    const auto ran = home.directory.path / "ran";
    const auto work = home.directory.path / "work";
    for (const char* name : {"claude", "codex"})
        for (const auto& directory : {work, work / "bin"})
            writeScript(directory / name, "echo x > " + ran.string() + "\necho 1.2.3");
    home.environment["PATH"] = ".:bin:/usr/bin:/bin";
    for (const std::vector<std::string>& words :
         {std::vector<std::string>{"doctor"}, {"health"}, {"backups"}}) {
        auto call = home.hostCall(words);
        call.directory = work;
        const auto result = run(call);
        EXPECT_THAT(result.output, Not(HasSubstr("1.2.3"))) << words.front();
        EXPECT_THAT(result.output, Not(HasSubstr("Executable: ./"))) << words.front();
    }
    EXPECT_FALSE(exists(ran));
}

}  // namespace
}  // namespace tallowbrook
