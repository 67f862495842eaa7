// Access control lists, see acl(5), and extended attributes of a file that is replaced.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/xattr.h>

#include <cerrno>
#include <string>
#include <string_view>

#include "ConfigFileSamples.h"
#include "Support/ChildProcess.h"
#include "Support/FailingSystemCallLinux.h"

namespace tallowbrook {
namespace {

using namespace std::string_view_literals;

constexpr const char* access = "system.posix_acl_access";
constexpr const char* inherited = "system.posix_acl_default";

// user::rw-, user:4242:r--, group::---, mask::r--, other::---
constexpr auto readableByAnother =
    "\x02\0\0\0"
    "\x01\0\x06\0\xFF\xFF\xFF\xFF"
    "\x02\0\x04\0\x92\x10\0\0"
    "\x04\0\0\0\xFF\xFF\xFF\xFF"
    "\x10\0\x04\0\xFF\xFF\xFF\xFF"
    "\x20\0\0\0\xFF\xFF\xFF\xFF"sv;

class ConfigFileAttributesTest : public ConfigFileTest {
 protected:
    static bool set(const std::filesystem::path& file, const char* name, std::string_view value) {
        return setxattr(file.c_str(), name, value.data(), value.size(), 0) == 0;
    }

    // "none" where there is no such attribute.
    std::string valueOf(const char* name) const {
        std::string value(1000, '\0');
        const ssize_t length = getxattr(config.c_str(), name, value.data(), value.size());
        if (length < 0) return "none";
        value.resize(static_cast<std::size_t>(length));
        return value;
    }

    void SetUp() override { writeContents(config, "old"); }
};

TEST_F(ConfigFileAttributesTest, anAccessControlListIsKeptAndNotWidened) {
    if (!set(config, access, readableByAnother)) GTEST_SKIP() << reasonOf(errno);
    ASSERT_EQ(modeOf(config.c_str()), mode_t{0640}) << "the group's place shows the mask";
    write("new");
    EXPECT_EQ(valueOf(access), readableByAnother);
    EXPECT_EQ(modeOf(config.c_str()), mode_t{0640});
}

TEST_F(ConfigFileAttributesTest, aListThatTheDirectoryGivesToNewFilesIsNotTaken) {
    chmod(config.c_str(), 0644);
    if (!set(directory, inherited, readableByAnother)) GTEST_SKIP() << reasonOf(errno);
    write("new");
    EXPECT_EQ(valueOf(access), "none");
    EXPECT_EQ(modeOf(config.c_str()), mode_t{0644});
}

TEST_F(ConfigFileAttributesTest, extendedAttributesAreKept) {
    if (!set(config, "user.note", "a\0b"sv) || !set(config, "user.empty", ""))
        GTEST_SKIP() << reasonOf(errno);
    write("new");
    EXPECT_EQ(valueOf("user.note"), "a\0b"sv);
    EXPECT_EQ(valueOf("user.empty"), "");
}

TEST_F(ConfigFileAttributesTest, aFileWhoseAttributesCannotBeKeptIsLeftAlone) {
    if (!set(config, "user.note", "x")) GTEST_SKIP() << reasonOf(errno);
    const auto plan = planTo("new");
    const auto seen = inChildProcess([&]() -> std::string {
        return failSystemCalls({SYS_fsetxattr}, ENOSPC) ? applied(plan) : noFilter;
    });
    if (seen == noFilter) GTEST_SKIP() << noFilter;
    EXPECT_EQ(seen, "Could not write " + config.string() + ": " + reasonOf(ENOSPC));
    EXPECT_EQ(contentsOf(config), "old");
    EXPECT_EQ(namesIn(directory), Names{"settings.json"});
}

}  // namespace
}  // namespace tallowbrook
