#include "System/ReplacementFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <optional>
#include <string>
#include <utility>

#include "Support/FileContents.h"
#include "Support/FileModeMask.h"
#include "Support/OrdinaryUser.h"
#include "Support/TemporaryDirectory.h"

namespace tallowbrook {
namespace {

namespace fs = std::filesystem;

class ReplacementFileTest : public testing::Test {
 protected:
    // A new file that must come to be.
    ReplacementFile made() const { return ReplacementFile::create(location).value(); }

    TemporaryDirectory temporary;
    fs::path location = temporary.path / ".new";
    fs::path target = temporary.path / "file";
};

TEST_F(ReplacementFileTest, isItsOwnersAloneWhateverTheUmask) {
    for (const mode_t mask : {mode_t{0}, mode_t{022}, mode_t{0777}}) {
        const FileModeMask masked{mask};
        const auto file = made();
        EXPECT_EQ(modeOf(location.c_str()), mode_t{0600});
    }
}

TEST_F(ReplacementFileTest, takesNoNameThatIsTaken) {
    writeContents(location, "kept");
    EXPECT_EQ(ReplacementFile::create(location).error(), (FileError{"open", EEXIST}));
    EXPECT_EQ(contentsOf(location), "kept");
    fs::remove(location);
    fs::create_symlink(target, location);
    EXPECT_EQ(ReplacementFile::create(location).error(), (FileError{"open", EEXIST}));
    EXPECT_FALSE(fs::exists(target));
}

TEST_F(ReplacementFileTest, isGoneWhenItWasNotWanted) {
    {
        auto file = made();
        ASSERT_TRUE(file.write("half of it"));
        EXPECT_EQ(contentsOf(location), "half of it");
    }
    EXPECT_TRUE(fs::is_empty(temporary.path));
}

TEST_F(ReplacementFileTest, takesThePlaceOfTheTargetWhetherThereIsOneOrNot) {
    for (const char* text : {"first", "second"}) {
        {
            auto file = made();
            ASSERT_TRUE(file.write(text) && file.sync() && file.replace(target));
            EXPECT_EQ(contentsOf(target), text);
        }
        EXPECT_EQ(contentsOf(target), text);
        EXPECT_FALSE(fs::exists(location));
    }
}

TEST_F(ReplacementFileTest, staysUnderItsOwnNameWhenItIsKept) {
    {
        auto file = made();
        ASSERT_TRUE(file.write("text"));
        file.keep();
    }
    EXPECT_EQ(contentsOf(location), "text");
}

TEST_F(ReplacementFileTest, isGoneAfterItCouldNotReplace) {
    fs::create_directories(target / "full");
    {
        auto file = made();
        EXPECT_EQ(file.replace(target).error(), (FileError{"rename", EISDIR}));
        EXPECT_TRUE(fs::exists(location));
    }
    EXPECT_FALSE(fs::exists(location));
    EXPECT_TRUE(fs::exists(target / "full"));
}

TEST_F(ReplacementFileTest, isRemovedOnceThoughItWasMoved) {
    std::optional<ReplacementFile> second;
    {
        auto first = made();
        second.emplace(std::move(first));
    }
    EXPECT_TRUE(fs::exists(location));
    EXPECT_TRUE(second->write("text"));
    second.reset();
    EXPECT_FALSE(fs::exists(location));
}

TEST_F(ReplacementFileTest, getsTheModeAndOwnerThatItIsGiven) {
    auto file = made();
    const auto user = OrdinaryUser::find();
    const uid_t owner = user ? user->id : geteuid();
    const gid_t group = geteuid() == 0 ? static_cast<gid_t>(owner) : getegid();
    EXPECT_TRUE(file.setOwner(owner, group));
    struct stat status{};
    ASSERT_EQ(stat(location.c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, owner);
    EXPECT_EQ(status.st_gid, group);
    EXPECT_TRUE(file.setMode(0444));
    EXPECT_EQ(modeOf(location.c_str()), mode_t{0444});
    ASSERT_TRUE(file.write("still open for writing") && file.replace(target));
    EXPECT_EQ(modeOf(target.c_str()), mode_t{0444});
}

TEST_F(ReplacementFileTest, replacesInTheCurrentDirectoryToo) {
    const auto former = fs::current_path();
    fs::current_path(temporary.path);
    auto file = ReplacementFile::create("new");
    ASSERT_TRUE(file && file->write("text") && file->replace("file"));
    fs::current_path(former);
    EXPECT_EQ(contentsOf(target), "text");
}

}  // namespace
}  // namespace tallowbrook
