#include "Terminal/EditorWindowTitle.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Support/EnvironmentVariable.h"

namespace tallowbrook {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* home = "/Users/x";

std::vector<std::string> namesOf(const char* folder) {
    return EditorWindowTitle::candidateNames(folder, home);
}

TEST(EditorWindowTitle, namesAFolderAndItsAncestorsBelowTheHome) {
    EXPECT_THAT(namesOf("/Users/x/code/app/src"), ElementsAre("src", "app", "code"));
    EXPECT_THAT(namesOf("/opt/code/app"), ElementsAre("app", "code", "opt"));
    EXPECT_THAT(namesOf("/Users/xy/app"), ElementsAre("app", "xy", "Users"));
    EXPECT_THAT(namesOf("/Users/x"), ElementsAre("x", "Users")) << "the home itself";
    for (const char* folder : {"/", "//", "/..", "/a/..", "", "app", "./app", "../app", "~/app"})
        EXPECT_THAT(namesOf(folder), IsEmpty()) << folder;
    for (const EditorWindowTitle::Home& unknown :
         {EditorWindowTitle::Home{}, EditorWindowTitle::Home{"/"}, EditorWindowTitle::Home{""}})
        EXPECT_THAT(EditorWindowTitle::candidateNames("/Users/x/app", unknown),
                    ElementsAre("app", "x", "Users"));
}

TEST(EditorWindowTitle, standardizesPaths) {
    for (const char* folder : {"/Users/x/code/app/", "/Users/x/code/app//", "/Users/x//code/./app",
                               "/Users/x/code/app/.", "/Users/x/code/app/src/..",
                               "/Users/../Users/x/code/app", "//Users/x/code/app"})
        EXPECT_THAT(namesOf(folder), ElementsAre("app", "code")) << folder;
    for (const char* written : {"/Users/x/", "/Users//x", "/Users/./x/.", "/Users/y/../x"})
        EXPECT_THAT(EditorWindowTitle::candidateNames("/Users/x/app", written), ElementsAre("app"))
            << written;
}

TEST(EditorWindowTitle, takesTheUsersOwnHomeUnlessTold) {
    const EnvironmentVariable variable{"HOME", "/srv/people/u"};
    EXPECT_THAT(EditorWindowTitle::candidateNames("/srv/people/u/app"), ElementsAre("app"));
    EXPECT_EQ(EditorWindowTitle::bestMatch({"people"}, "/srv/people/u/app"), std::nullopt);
    EXPECT_EQ(EditorWindowTitle::bestMatch({"people"}, "/srv/people/w/app"), "people");
}

TEST(EditorWindowTitle, matchesANameThatIsOneOfItsPartsOrTheWhole) {
    struct Row {
        const char* why;
        const char* title;
        const char* name;
        bool isMatch;
    };
    for (const auto& [why, title, name, isMatch] : {
             Row{"the whole title", "app", "app", true},
             Row{"the first part", "app \u2014 VS Code", "app", true},
             Row{"the last part", "main.cpp \u2014 app", "app", true},
             Row{"between hyphens", "main.cpp - app - VS Code", "app", true},
             Row{"between both dashes", "main.cpp - app \u2014 VS Code", "app", true},
             Row{"blanks and tabs around a part", "main.cpp \u2014 \t app\t  - VS Code", "app",
                 true},
             Row{"blanks around the whole", "  app ", "app", true},
             Row{"a part with a blank inside", "main.cpp - my app", "my app", true},
             Row{"a name with a dash in the whole", "a - b", "a - b", true},
             Row{"a name with a dash as a part", "main.cpp \u2014 a - b", "a - b", false},
             Row{"another letter case", "App \u2014 VS Code", "app", false},
             Row{"only a piece of a part", "my app \u2014 VS Code", "app", false},
             Row{"a hyphen without blanks", "my-app", "app", false},
             Row{"an em dash without blanks", "main.cpp\u2014app", "app", false},
             Row{"a line feed around a part", "main.cpp - app\n", "app", false},
             Row{"an empty name and an empty title", "", "", false},
             Row{"an empty name and an empty part", "a -  - b", "", false},
             Row{"dashes alone", " - ", "app", false},
             Row{"cut from the left", "a - - b", "- b", true},
             Row{"and not from the right", "a - - b", "b", false},
             Row{"a name in other letters", "main.cpp - r\u00E9sum\u00E9", "r\u00E9sum\u00E9",
                 true},
             Row{"the same letters composed otherwise", "r\u00E9sum\u00E9", "re\u0301sume\u0301",
                 false},
         })
        EXPECT_EQ(EditorWindowTitle::matches(title, name), isMatch) << why;
}

std::optional<std::string> best(const std::vector<std::string>& titles,
                                const char* folder = "/Users/x/code/app/src") {
    return EditorWindowTitle::bestMatch(titles, folder, home);
}

TEST(EditorWindowTitle, prefersTheNearerNameToTheEarlierTitle) {
    EXPECT_EQ(best({"a \u2014 code", "b \u2014 app", "c \u2014 src", "d \u2014 src"}),
              "c \u2014 src");
    EXPECT_EQ(best({"a \u2014 code", "b \u2014 app"}), "b \u2014 app");
    EXPECT_EQ(best({"a \u2014 code", "b"}), "a \u2014 code");
    EXPECT_EQ(best({}), std::nullopt);
    EXPECT_EQ(best({"", "a.cpp", "x", "Users"}), std::nullopt) << "the home and what lies above";
    EXPECT_EQ(best({"", "/", "app"}, "/"), std::nullopt);
}

}  // namespace
}  // namespace tallowbrook
