#include "System/SearchPath.h"

#include <gtest/gtest.h>

#include "Support/EnvironmentVariable.h"
#include "Support/FileContents.h"
#include "Support/TemporaryDirectory.h"

namespace tallowbrook {
namespace {

namespace fs = std::filesystem;

void makeProgram(const fs::path& file) {
    writeContents(file, "#!/bin/sh\n");
    fs::permissions(file, fs::perms::owner_all);
}

TEST(SearchPath, namesItsDirectoriesInOrderWithoutTheEmptyOnes) {
    struct Row {
        std::optional<std::string> path;
        std::vector<std::string> directories;
    };
    for (const auto& [path, directories] : {
             Row{std::nullopt, {}},
             Row{":", {}},
             Row{"/usr/bin::/bin:", {"/usr/bin", "/bin"}},
             Row{"bin:/bin", {"bin", "/bin"}},
         }) {
        const EnvironmentVariable variable{"PATH", path};
        EXPECT_EQ(SearchPath::directories(), directories) << path.value_or("unset");
    }
}

TEST(SearchPath, findsTheFirstFileThatTheUserMayRun) {
    const TemporaryDirectory temporary;
    const auto& top = temporary.path;
    fs::create_directories(top / "one" / "tool");  // a directory may be entered, but not run
    writeContents(top / "two" / "tool", "no program");
    makeProgram(top / "three" / "tool");
    makeProgram(top / "four" / "tool");
    std::string path;
    for (const char* name : {"one", "two", "three", "four"}) path += ":" + (top / name).string();
    const EnvironmentVariable variable{"PATH", path};
    EXPECT_EQ(SearchPath::find("tool"), top / "three" / "tool");
    EXPECT_EQ(SearchPath::find("other"), std::nullopt);
}

TEST(SearchPath, findsNothingByADirectoryThatIsRelative) {
    const TemporaryDirectory temporary;
    makeProgram(temporary.path / "bin" / "tool");
    const auto before = fs::current_path();
    fs::current_path(temporary.path);
    const EnvironmentVariable variable{"PATH", "bin"};
    EXPECT_EQ(SearchPath::find("tool"), std::nullopt);
    EXPECT_TRUE(SearchPath::isExecutableFile("bin/tool"));
    fs::current_path(before);
}

}  // namespace
}  // namespace tallowbrook
