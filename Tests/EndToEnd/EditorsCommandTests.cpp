#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "EventIngestion/PayloadNormalizer.h"
#include "SetupHome.h"
#include "Support/BuildPaths.h"
#include "Support/FileContents.h"

namespace tallowbrook {
namespace {

using testing::HasSubstr;
using testing::Not;

constexpr int declined = 3;

// A user with editors whose command lines do what theirs do with an extension, and who has
// installed the program with a package of it.
struct EditorsSetUp : testing::Test {
    SetupHome home;
    std::filesystem::path programs = home.directory.path / "programs";
    std::filesystem::path host = home.directory.path / "bin" / "tallowbrook";
    std::filesystem::path package = home.directory.path / "bin" / "tallowbrook.vsix";
    std::string folder =
        "tallowbrook.tallowbrook-" + std::string{PayloadNormalizer::adapterVersion};

    EditorsSetUp() {
        std::filesystem::create_directory(programs);
        std::filesystem::create_directory(host.parent_path());
        std::filesystem::copy_file(BuildPaths::host, host);
        writeContents(package, "a package");
        home.environment["PATH"] = programs;
    }

    std::filesystem::path extensions(const std::string& editor = ".vscode") const {
        return home.user / editor / "extensions";
    }

    void addProgram(const std::string& name, const std::string& editor, int status = 0) const {
        const auto file = programs / name;
        writeContents(file, "#!/bin/sh\necho \"$@\" >> " + (programs / "calls").string() + "\n[ " +
                                std::to_string(status) + " = 0 ] || exit " +
                                std::to_string(status) + "\ncase $1 in\n--install-extension) " +
                                "/bin/mkdir -p " + (extensions(editor) / folder).string() +
                                ";;\n--uninstall-extension) /bin/rm -r " +
                                (extensions(editor) / "tallowbrook.").string() + "*;;\nesac\n");
        std::filesystem::permissions(file, std::filesystem::perms::owner_all);
    }

    std::string calls() const {
        const auto file = programs / "calls";
        return std::filesystem::exists(file) ? contentsOf(file) : "";
    }

    ProgramCall call(std::vector<std::string> arguments) const {
        auto call = home.plainHostCall(std::move(arguments));
        call.program = host;
        return call;
    }

    ProgramResult answering(const std::string& answer, std::vector<std::string> arguments) const {
        const PseudoTerminal terminal;
        RunningProgram program{SetupHome::onTerminal(terminal, call(std::move(arguments)))};
        EXPECT_TRUE(program.waitForOutput("[y/N] "));
        EXPECT_TRUE(terminal.type(answer + "\n"));
        return program.wait();
    }
};

TEST_F(EditorsSetUp, putTheExtensionInAfterAYesAndTakeItOutAgain) {
    addProgram("code", ".vscode");
    const auto installed = answering("y", {"setup", "--editors"});
    EXPECT_EQ(installed.status, 0) << installed.errors;
    EXPECT_THAT(installed.output, HasSubstr("VS Code: the extension is to be installed, by\n  " +
                                            (programs / "code").string() + " --install-extension " +
                                            package.string()));
    EXPECT_THAT(installed.output, HasSubstr("VS Code has the extension."));
    EXPECT_EQ(calls(), "--install-extension " + package.string() + " --force\n");

    const auto removed = answering("y", {"remove", "--editors"});
    EXPECT_EQ(removed.status, 0) << removed.errors;
    EXPECT_THAT(calls(), HasSubstr("--uninstall-extension tallowbrook.tallowbrook\n"));
    EXPECT_TRUE(std::filesystem::is_empty(extensions()));
}

TEST_F(EditorsSetUp, runNothingAfterANoOrUnasked) {
    addProgram("code", ".vscode");
    const auto refused = answering("n", {"setup", "--editors"});
    EXPECT_EQ(refused.status, declined);
    EXPECT_THAT(refused.output, HasSubstr("VS Code was left as it is.\n"));
    EXPECT_EQ(run(call({"setup", "--editors", "--dry-run"})).status, 0);
    EXPECT_EQ(run(call({"setup", "--editors"})).status, 1);
    EXPECT_EQ(calls(), "");
}

TEST_F(EditorsSetUp, renewAnOlderExtensionAndLeaveACurrentOne) {
    addProgram("code", ".vscode");
    addProgram("codium", ".vscode-oss");
    std::filesystem::create_directories(extensions() / folder);
    std::filesystem::create_directories(extensions(".vscode-oss") /
                                        "tallowbrook.tallowbrook-0.0.1");
    const auto result = run(call({"setup", "--editors", "--yes"}));
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_THAT(result.output, HasSubstr("VS Code: the extension is current\n"));
    EXPECT_THAT(result.output, HasSubstr("VSCodium: the extension is to be renewed"));
    EXPECT_EQ(calls(), "--install-extension " + package.string() + " --force\n");
}

TEST_F(EditorsSetUp, goOnWithTheNextWhereOneFails) {
    addProgram("code", ".vscode", 7);
    addProgram("cursor", ".cursor");
    const auto result = run(call({"setup", "--editors", "--yes"}));
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.errors, HasSubstr("VS Code did not take the extension. Its command line "
                                         "ended with status 7."));
    EXPECT_THAT(result.output, HasSubstr("Cursor has the extension."));
}

TEST_F(EditorsSetUp, saySoWhereThereIsNothingToDo) {
    const auto none = run(call({"setup", "--editors"}));
    EXPECT_EQ(none.status, 1);
    EXPECT_THAT(none.errors, HasSubstr("No editor was found: none of code, "));
    addProgram("code", ".vscode");
    const auto absent = run(call({"remove", "--editors"}));
    EXPECT_EQ(absent.status, 0);
    EXPECT_THAT(absent.output, HasSubstr("VS Code: the extension is not there\n"));
    std::filesystem::remove(package);
    const auto incomplete = run(call({"setup", "--editors", "--yes"}));
    EXPECT_EQ(incomplete.status, 1);
    EXPECT_THAT(incomplete.errors, HasSubstr("was not found beside this program"));
    EXPECT_EQ(calls(), "");
}

TEST_F(EditorsSetUp, refuseWhatTheExtensionDoesNotKnow) {
    addProgram("code", ".vscode");
    auto elsewhere = call({"setup", "--editors", "--yes", "--home", home.directory.path / "other"});
    EXPECT_EQ(run(elsewhere).status, 2);
    EXPECT_EQ(run(call({"setup", "--editors", "codex", "--yes"})).status, 2);
    EXPECT_EQ(run(call({"remove", "--editors", "codex", "--yes"})).status, 2);
    EXPECT_EQ(calls(), "");
}

}  // namespace
}  // namespace tallowbrook
