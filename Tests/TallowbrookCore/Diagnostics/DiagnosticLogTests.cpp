#include "Diagnostics/DiagnosticLog.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Support/ChildProcess.h"
#include "Support/EnvironmentVariable.h"
#include "Support/FileContents.h"
#include "Support/FileModeMask.h"
#include "Support/SampleEvents.h"
#include "Support/TemporaryDirectory.h"

namespace tallowbrook {
namespace {

namespace fs = std::filesystem;

class DiagnosticLogTest : public testing::Test {
 protected:
    static constexpr std::int64_t maxBytes = 262144;

    TemporaryDirectory temporary;
    EnvironmentVariable home{"HOME", "/Users/alice"};
    fs::path file = temporary.path / "home" / "logs" / "helper.log";
    fs::path older = temporary.path / "home" / "logs" / "helper.log.1";
    DiagnosticLog log{file, maxBytes};
    std::string line = "2026-11-15T03:30:55.123Z message\n";
};

TEST_F(DiagnosticLogTest, writesTimeBlankMessageAndLineFeed) {
    log.append("message", sampleTime);
    EXPECT_EQ(contentsOf(file), line);
    log.append("", Instant{});
    EXPECT_EQ(contentsOf(file), line + "1970-01-01T00:00:00.000Z \n");
}

TEST_F(DiagnosticLogTest, createsItsDirectoryAndFileForItsUserAlone) {
    const FileModeMask masked{0};
    log.append("message", sampleTime);
    EXPECT_EQ(modeOf(file.c_str()), mode_t{0600});
    EXPECT_EQ(modeOf(file.parent_path().c_str()), mode_t{0700});
    EXPECT_EQ(modeOf(file.parent_path().parent_path().c_str()), mode_t{0700});
}

TEST_F(DiagnosticLogTest, keepsEachMessageOnOneLine) {
    log.append("first\nof /Users/alice\r\nthird\tend\x7F", sampleTime);
    EXPECT_EQ(contentsOf(file), "2026-11-15T03:30:55.123Z first of ~  third end \n");
}

TEST_F(DiagnosticLogTest, cutsMessagesAtFourHundredCharacters) {
    log.append(std::string(400, 'x'), sampleTime);
    log.append(std::string(401, 'y'), sampleTime);
    EXPECT_EQ(contentsOf(file), "2026-11-15T03:30:55.123Z " + std::string(400, 'x') +
                                    "\n2026-11-15T03:30:55.123Z " + std::string(400, 'y') +
                                    "\u2026\n");
}

TEST_F(DiagnosticLogTest, replacesTheOlderGeneration) {
    writeContents(older, "older");
    writeZeros(file, 262144);
    log.append("message", sampleTime);
    EXPECT_EQ(contentsOf(older), "older") << "not before the cap is passed";
    log.append("message", sampleTime);
    EXPECT_EQ(contentsOf(file), line);
    EXPECT_EQ(fs::file_size(older), 262144 + line.size());
    EXPECT_EQ(std::distance(fs::directory_iterator{file.parent_path()}, {}), 2);
}

TEST_F(DiagnosticLogTest, goesOnWhereTheOlderGenerationCannotBeReplaced) {
    writeContents(older / "in the way", "");
    writeContents(file, "1234\n");
    const DiagnosticLog small{file, 3};
    small.append("message", sampleTime);
    EXPECT_EQ(contentsOf(file), "1234\n" + line);
    EXPECT_TRUE(fs::is_directory(older));
}

TEST_F(DiagnosticLogTest, isSilentWhereItsDirectoryCannotBeMade) {
    writeContents(file.parent_path(), "a file");
    log.append("message", sampleTime);
    EXPECT_EQ(contentsOf(file.parent_path()), "a file");
}

TEST_F(DiagnosticLogTest, isSilentWhereAPipeIsInItsPlace) {
    fs::create_directories(file.parent_path());
    ASSERT_EQ(mkfifo(file.c_str(), 0600), 0);
    EXPECT_EQ(inChildProcess([&]() -> std::string {
                  log.append("message", sampleTime);
                  return "silent";
              }),
              "silent");
}

TEST_F(DiagnosticLogTest, linesOfManyProcessesDoNotMix) {
    constexpr std::size_t lineCount = 200;
    std::vector<std::unique_ptr<ChildProcess>> children;
    std::map<std::string, std::size_t> expected;
    for (const char letter : {'a', 'b', 'c', 'd', 'e', 'f'}) {
        const std::string message(static_cast<std::size_t>(letter - 'a') * 60 + 1, letter);
        expected["2026-11-15T03:30:55.123Z " + message] = lineCount;
        children.push_back(std::make_unique<ChildProcess>([this, message]() -> std::string {
            for (std::size_t i = 0; i < lineCount; ++i) log.append(message, sampleTime);
            return "done";
        }));
    }
    for (const auto& child : children) EXPECT_EQ(child->result(), "done");
    std::map<std::string, std::size_t> seen;
    std::ifstream stream{file};
    for (std::string text; std::getline(stream, text);) ++seen[text];
    EXPECT_EQ(seen, expected);
}

}  // namespace
}  // namespace tallowbrook
