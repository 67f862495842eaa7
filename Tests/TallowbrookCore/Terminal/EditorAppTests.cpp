#include "Terminal/EditorApp.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "Support/ChildProcess.h"
#include "Support/FileContents.h"
#include "Support/OrdinaryUser.h"
#include "Support/TemporaryDirectory.h"

namespace tallowbrook {
namespace {

using testing::ElementsAre;
using testing::UnorderedElementsAre;

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

TEST(EditorApp, listsTheSupportedEditorsInOrder) {
    EXPECT_THAT(
        EditorBridge::editors,
        ElementsAre(
            EditorApp{"VS Code", "com.microsoft.VSCode", "vscode", ".vscode/extensions"},
            EditorApp{"VS Code Insiders", "com.microsoft.VSCodeInsiders", "vscode-insiders",
                      ".vscode-insiders/extensions"},
            EditorApp{"Cursor", "com.todesktop.230313mzl4w4u92", "cursor", ".cursor/extensions"},
            EditorApp{"Windsurf", "com.exafunction.windsurf", "windsurf", ".windsurf/extensions"},
            EditorApp{"VSCodium", "com.vscodium", "vscodium", ".vscode-oss/extensions"}));
}

TEST(EditorApp, gathersTheBundleIdentifiersOfAllEditors) {
    EXPECT_THAT(EditorBridge::bundleIdentifiers(),
                UnorderedElementsAre("com.microsoft.VSCode", "com.microsoft.VSCodeInsiders",
                                     "com.todesktop.230313mzl4w4u92", "com.exafunction.windsurf",
                                     "com.vscodium"));
}

TEST(EditorApp, opensThePageOfTheExtensionByItsOwnScheme) {
    EXPECT_EQ(EditorBridge::extensionID, "tallowbrook.tallowbrook");
    std::vector<std::string> pages;
    for (const EditorApp& editor : EditorBridge::editors)
        pages.push_back(editor.extensionPageURL());
    EXPECT_THAT(pages, ElementsAre("vscode:extension/tallowbrook.tallowbrook",
                                   "vscode-insiders:extension/tallowbrook.tallowbrook",
                                   "cursor:extension/tallowbrook.tallowbrook",
                                   "windsurf:extension/tallowbrook.tallowbrook",
                                   "vscodium:extension/tallowbrook.tallowbrook"));
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
        EXPECT_EQ(isInstalledWith({folder}), isExtension) << why;
}

TEST(EditorApp, findsItsExtensionAmongOthers) {
    EXPECT_FALSE(isInstalledWith({}));
    EXPECT_FALSE(isInstalledWith({"a.b-1.0.0", "c.d-2.0.0"}));
    EXPECT_TRUE(isInstalledWith({"a.b-1.0.0", "tallowbrook.tallowbrook-0.1.0", "x.y-2.0.0"}));
}

TEST(EditorApp, looksOnlyIntoItsOwnFolder) {
    const TemporaryDirectory home;
    fs::create_directories(home.path / ".cursor/extensions/tallowbrook.tallowbrook-0.1.0");
    for (const EditorApp& editor : EditorBridge::editors)
        EXPECT_EQ(editor.hasExtension(home.path), editor.name == "Cursor") << editor.name;
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
