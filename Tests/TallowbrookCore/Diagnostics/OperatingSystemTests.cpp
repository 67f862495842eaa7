#include "Diagnostics/OperatingSystem.h"

#include <gtest/gtest.h>

namespace tallowbrook {
namespace {

std::optional<std::string> name(const std::string& file) {
    return OperatingSystem::releaseVariable(file, "PRETTY_NAME");
}

TEST(ReleaseVariable, readsTheValuesOfAssignments) {
    struct Row {
        const char* why;
        const char* file;
        std::optional<std::string> value;
    };
    for (const auto& [why, file, value] : {
             Row{"among others", "ID=debian\nPRETTY_NAME=Debian\nNAME=other\n", "Debian"},
             Row{"in double quotes", "PRETTY_NAME=\"Debian GNU/Linux 12 (bookworm)\"\n",
                 "Debian GNU/Linux 12 (bookworm)"},
             Row{"in single quotes", "PRETTY_NAME='A \"B\" \\C'\n", "A \"B\" \\C"},
             Row{"with escapes", "PRETTY_NAME=\"A \\\"B\\\" \\$C \\\\ \\`D'\"\n",
                 "A \"B\" $C \\ `D'"},
             Row{"the last of two", "PRETTY_NAME=A\nPRETTY_NAME=B\n", "B"},
             Row{"without its closing quote", "PRETTY_NAME=\"A\nNAME=B\n", "A"},
             Row{"a backslash at the end", "PRETTY_NAME=\"A\\", "A\\"},
             Row{"not there", "NAME=A\n", std::nullopt},
             Row{"a longer name", "PRETTY_NAME_2=A\nNOT_PRETTY_NAME=B\n", std::nullopt},
         })
        EXPECT_EQ(name(file), value) << why;
}

}  // namespace
}  // namespace tallowbrook
