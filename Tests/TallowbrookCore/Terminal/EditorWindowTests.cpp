#include "Terminal/EditorWindow.h"

#include <gtest/gtest.h>

#include "Support/BuildPaths.h"
#include "Support/FileContents.h"

namespace tallowbrook {
namespace {

EditorWindow sampleWindow() {
    return {
        .hostPid = 4242,
        .appName = "Visual Studio Code",
        .workspace = "/Users/x/proj.code-workspace",
        .folders = {"/Users/x/proj", "/Users/x/lib"},
        .shellPids = {10, 850},
    };
}

const std::string sampleText =
    R"({"appName":"Visual Studio Code","folders":["/Users/x/proj","/Users/x/lib"],)"
    R"("hostPid":4242,"shellPids":[10,850],"workspace":"/Users/x/proj.code-workspace"})";

std::string replaced(const std::string& from, const std::string& to) {
    std::string text = sampleText;
    const auto at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return text.replace(at, from.size(), to);
}

TEST(EditorWindow, opensByItsWorkspaceOrElseByItsOnlyFolder) {
    struct Row {
        const char* why;
        std::optional<std::string> workspace;
        std::vector<std::string> folders;
        std::optional<std::string> target;
    };
    for (const auto& [why, workspace, folders, target] : {
             Row{"workspace and folders", "/w", {"/a", "/b"}, "/w"},
             Row{"workspace alone", "/w", {}, "/w"},
             Row{"one folder", std::nullopt, {"/a"}, "/a"},
             Row{"several folders", std::nullopt, {"/a", "/b"}, std::nullopt},
             Row{"nothing", std::nullopt, {}, std::nullopt},
         }) {
        EditorWindow window = sampleWindow();
        window.workspace = workspace;
        window.folders = folders;
        EXPECT_EQ(window.openTarget(), target) << why;
    }
}

TEST(EditorWindow, isCodedUnderTheNamesOfItsFields) {
    EXPECT_EQ(EditorWindowCoding::encode(sampleWindow()), sampleText);
    EXPECT_EQ(EditorWindowCoding::decode(sampleText), sampleWindow());
    EXPECT_EQ(EditorWindowCoding::decode(replaced("{", R"({ "version": {"of": [1]}, )")),
              sampleWindow());
}

// The tests of the editors' extension read the same files.
TEST(EditorWindow, isCodedAsTheExtensionCodesIt) {
    const std::filesystem::path samples{BuildPaths::samples};
    for (const auto* name : {"editor-window-1.json", "editor-window-2.json"}) {
        const auto text = contentsOf(samples / name);
        const auto window = EditorWindowCoding::decode(text);
        ASSERT_TRUE(window) << name << ": " << window.error().description;
        EXPECT_EQ(EditorWindowCoding::encode(*window), text);
    }
    EXPECT_EQ(contentsOf(samples / "editor-window-1.json"), sampleText);
}

TEST(EditorWindow, isCodedWithoutAWorkspaceThatIsAbsent) {
    const EditorWindow window{
        .hostPid = 2, .appName = "", .workspace = std::nullopt, .folders = {}, .shellPids = {}};
    const std::string text = R"({"appName":"","folders":[],"hostPid":2,"shellPids":[]})";
    EXPECT_EQ(EditorWindowCoding::encode(window), text);
    EXPECT_EQ(EditorWindowCoding::decode(text), window);
    EXPECT_EQ(EditorWindowCoding::decode(
                  R"({"appName":"","folders":[],"hostPid":2,"shellPids":[],"workspace":null})"),
              window);
}

TEST(EditorWindow, isReadOnlyWithAllItsFieldsOfTheRightType) {
    struct Row {
        const char* why;
        std::string text;
    };
    for (const auto& [why, text] : {
             Row{"no host", replaced(R"("hostPid":4242,)", "")},
             Row{"no name", replaced(R"("appName":"Visual Studio Code",)", "")},
             Row{"no folders", replaced(R"("folders")", R"("Folders")")},
             Row{"no shells", replaced(R"("shellPids")", R"("shells")")},
             Row{"host is a text", replaced("4242", R"("4242")")},
             Row{"host beyond 32 bits", replaced("4242", "2147483648")},
             Row{"name is a number", replaced(R"("Visual Studio Code")", "1")},
             Row{"workspace is a list", replaced(R"("/Users/x/proj.code-workspace")", "[]")},
             Row{"folders are a text", replaced(R"(["/Users/x/proj","/Users/x/lib"])", R"("/a")")},
             Row{"a folder is null", replaced(R"("/Users/x/lib")", "null")},
             Row{"a shell is a text", replaced("850", R"("850")")},
             Row{"a list", "[" + sampleText + "]"},
             Row{"invalid UTF-8", replaced("Visual", "\xFF")},
             Row{"nothing", ""},
         })
        EXPECT_FALSE(EditorWindowCoding::decode(text)) << why;
}

}  // namespace
}  // namespace tallowbrook
