#include "System/UserHome.h"

#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

#include "Support/ChildProcess.h"
#include "Support/EnvironmentVariable.h"
#include "Support/OrdinaryUser.h"

namespace tallowbrook {
namespace {

TEST(UserHome, isTheEnvironmentsWhereThatIsAbsolute) {
    for (const char* home : {"/home/u", "/", "/not/there", "/with blank"}) {
        const EnvironmentVariable variable{"HOME", home};
        EXPECT_EQ(userHomeDirectory(), home);
    }
}

TEST(UserHome, isTheAccountsWhereTheEnvironmentsIsNot) {
    for (const auto& home :
         {std::optional<std::string>{}, std::optional<std::string>{""},
          std::optional<std::string>{"home/u"}, std::optional<std::string>{"~"}}) {
        const EnvironmentVariable variable{"HOME", home};
        EXPECT_EQ(userHomeDirectory(), accountHomeDirectory()) << home.value_or("unset");
    }
}

TEST(UserHome, ofTheAccountIsItsEntry) {
    const passwd* account = getpwuid(getuid());
    if (account == nullptr || account->pw_dir[0] != '/') GTEST_SKIP() << "no account entry here";
    EXPECT_EQ(accountHomeDirectory(), account->pw_dir);
}

TEST(UserHome, isUnknownWithoutEnvironmentAndAccount) {
    const auto user = OrdinaryUser::find();
    if (!user) GTEST_SKIP() << OrdinaryUser::missing;
    if (getpwuid(user->id) != nullptr) GTEST_SKIP() << "every user here has an account";
    const EnvironmentVariable variable{"HOME", std::nullopt};
    EXPECT_EQ(inChildProcess([&]() -> std::string {
                  if (!user->become()) return "still another user";
                  return userHomeDirectory() ? "known" : "unknown";
              }),
              "unknown");
}

}  // namespace
}  // namespace tallowbrook
