#include "Terminal/EditorApp.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "Support/ChildProcess.h"
#include "Support/FileContents.h"
#include "Support/OrdinaryUser.h"
#include "Support/TemporaryDirectory.h"

namespace tallowbrook {
namespace {

namespace fs = std::filesystem;

const EditorApp& code = EditorBridge::editors.front();

// Whether VS Code has the extension when its folder holds just these.
bool isInstalledWith(const std::vector<std::string>& folders) {
    const TemporaryDirectory home;
    fs::create_directories(home.path / ".vscode" / "extensions");
    for (const std::string& folder : folders)
        fs::create_directory(home.path / ".vscode" / "extensions" / folder);
    return code.hasExtension(home.path);
}

TEST(EditorApp, opensThePageOfTheExtensionByItsOwnScheme) {
    EXPECT_EQ(code.extensionPageURL(), "vscode:extension/tallowbrook.tallowbrook");
    EXPECT_EQ(EditorBridge::bundleIdentifiers().size(), EditorBridge::editors.size());
}

TEST(EditorApp, knowsItsExtensionByTheNameOfItsFolder) {
    struct Row {
        const char* why;
        const char* folder;
        bool isExtension;
    };
    for (const auto& [why, folder, isExtension] : {
             Row{"the id alone", "tallowbrook.tallowbrook", true},
             Row{"a version behind a dash", "tallowbrook.tallowbrook-0.1.0", true},
             Row{"a system behind the version", "tallowbrook.tallowbrook-1.2.3-darwin-arm64", true},
             Row{"a dash and nothing", "tallowbrook.tallowbrook-", true},
             Row{"any letter case", "TallowBrook.TALLOWBROOK-0.1.0", true},
             Row{"no dash", "tallowbrook.tallowbrook2", false},
             Row{"another separator", "tallowbrook.tallowbrook.0.1.0", false},
             Row{"a longer id", "tallowbrook.tallowbrookhelper-1.0.0", false},
             Row{"cut short", "tallowbrook.tallowbroo", false},
             Row{"another publisher", "x-tallowbrook.tallowbrook-0.1.0", false},
             Row{"another separator inside", "tallowbrook-tallowbrook-0.1.0", false},
             Row{"letters that only look alike", "tallowbroo\u212A.tallowbrook", false},
         })
        EXPECT_EQ(isInstalledWith({"a.b-1.0.0", folder, "x.y-2.0.0"}), isExtension) << why;
    EXPECT_FALSE(isInstalledWith({}));
}

TEST(EditorApp, countsAnEntryOfWhateverKind) {
    const TemporaryDirectory home;
    writeContents(home.path / ".vscode/extensions/a", "");
    fs::create_symlink("missing", home.path / ".vscode/extensions/tallowbrook.tallowbrook-0.1.0");
    EXPECT_TRUE(code.hasExtension(home.path));
}

TEST(EditorApp, hasNoExtensionWhereNothingCanBeListed) {
    const TemporaryDirectory home;
    EXPECT_FALSE(code.hasExtension(home.path)) << "no such folder";
    EXPECT_FALSE(code.hasExtension(home.path / "missing")) << "no such home";
    writeContents(home.path / ".vscode" / "extensions", "");
    EXPECT_FALSE(code.hasExtension(home.path)) << "no folder";
}

TEST(EditorApp, hasNoExtensionWhereListingIsRefused) {
    const auto user = OrdinaryUser::find();
    if (!user) GTEST_SKIP() << OrdinaryUser::missing;
    const TemporaryDirectory home;
    const fs::path extensions = home.path / ".vscode" / "extensions";
    fs::create_directories(extensions / "tallowbrook.tallowbrook-0.1.0");
    ASSERT_TRUE(user->own(home.path) && user->own(home.path / ".vscode") && user->own(extensions));
    chmod(extensions.c_str(), 0300);
    const auto seen = inChildProcess([&]() -> std::string {
        if (!user->become()) return "still another user";
        return code.hasExtension(home.path) ? "installed" : "not installed";
    });
    chmod(extensions.c_str(), 0700);
    EXPECT_EQ(seen, "not installed");
}

}  // namespace
}  // namespace tallowbrook
