#include "System/FileContents.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <string>

#include "Support/ChildProcess.h"
#include "Support/FileContents.h"
#include "Support/Outcome.h"
#include "Support/TemporaryDirectory.h"
#include "System/FileDescriptor.h"

namespace tallowbrook {
namespace {

namespace fs = std::filesystem;

std::string failed(const std::string& step, int errorNumber) {
    return codeOf(FileError{step, errorNumber});
}

class FileContentsTest : public testing::Test {
 protected:
    static std::string reading(const fs::path& place) {
        return outcomeOf(FileContents::read(place));
    }

    TemporaryDirectory temporary;
    fs::path file = temporary.path / "file";
};

TEST_F(FileContentsTest, readsEveryByte) {
    for (const auto& bytes : {std::string{}, std::string{"a"}, std::string("a\0\xFF\n", 4),
                              std::string(5'000'000, 'x')}) {
        writeContents(file, bytes);
        EXPECT_EQ(FileContents::read(file), bytes);
    }
}

TEST_F(FileContentsTest, readsAFileUpToTheLimitThatItIsGiven) {
    writeContents(file, "1234");
    EXPECT_EQ(FileContents::read(file, 4), "1234");
    EXPECT_EQ(outcomeOf(FileContents::read(file, 3)), failed("read", EFBIG));
    // The system tells no size of what it makes up as it is read.
    if (fs::exists("/proc/self/status")) {
        EXPECT_EQ(outcomeOf(FileContents::read("/proc/self/status", 10)), failed("read", EFBIG));
    }
}

TEST_F(FileContentsTest, refusesWhatIsNoRegularFileAndNeverWaits) {
    EXPECT_EQ(reading(file), failed("open", ENOENT));
    EXPECT_EQ(reading(temporary.path), failed("read", EISDIR));
    ASSERT_EQ(mkfifo(file.c_str(), 0600), 0);
    EXPECT_EQ(reading(file), failed("read", EINVAL));
    EXPECT_EQ(reading("/dev/null"), failed("read", EINVAL));
    fs::create_symlink("loop", temporary.path / "loop");
    EXPECT_EQ(reading(temporary.path / "loop"), failed("open", ELOOP));
}

TEST_F(FileContentsTest, areWrittenWholeHoweverManyCallsThatTakes) {
    // A pipe takes far less at a time than what is written into it.
    const std::string bytes(1'000'000, 'x');
    std::array<int, 2> pipe{};
    ASSERT_EQ(::pipe(pipe.data()), 0);
    FileDescriptor reader{pipe[0]};
    FileDescriptor writer{pipe[1]};
    ChildProcess child{[&] { return outcomeOf(FileContents::write(writer.number(), bytes)); }};
    writer = FileDescriptor{};
    std::size_t received = 0;
    std::array<char, 4096> buffer{};
    for (ssize_t length = 0; (length = read(reader.number(), buffer.data(), buffer.size())) > 0;)
        received += static_cast<std::size_t>(length);
    EXPECT_EQ(child.result(), "ok");
    EXPECT_EQ(received, bytes.size());
}

TEST_F(FileContentsTest, saysWhyAWriteFailedAfterAPart) {
    const auto seen = inChildProcess([&]() -> std::string {
        const rlimit limit{10, 10};
        std::signal(SIGXFSZ, SIG_IGN);
        if (setrlimit(RLIMIT_FSIZE, &limit) != 0) return "no limit";
        const FileDescriptor opened{open(file.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600)};
        return outcomeOf(FileContents::write(opened.number(), "more than ten bytes"));
    });
    EXPECT_EQ(seen, failed("write", EFBIG));
    EXPECT_EQ(contentsOf(file), "more than ");
}

TEST_F(FileContentsTest, refusesADescriptorThatCannotBeWritten) {
    writeContents(file, "kept");
    const FileDescriptor opened{open(file.c_str(), O_RDONLY | O_CLOEXEC)};
    EXPECT_EQ(outcomeOf(FileContents::write(opened.number(), "x")), failed("write", EBADF));
    EXPECT_EQ(outcomeOf(FileContents::write(opened.number(), "")), "ok");
    EXPECT_EQ(contentsOf(file), "kept");
}

}  // namespace
}  // namespace tallowbrook
