// The detector of the real machine, on real files and executables.
#include <gtest/gtest.h>

#include "Integrations/ProviderDetector.h"
#include "Support/EnvironmentVariable.h"
#include "Support/TemporaryDirectory.h"
#include "TestScript.h"

namespace tallowbrook {
namespace {

namespace fs = std::filesystem;
using State = ProviderDetection::State;

class LiveProviderDetectorTest : public testing::Test {
 protected:
    // Gives the path of an executable in the only directory of PATH.
    std::string install(const std::string& name, const std::string& body) const {
        return writeScript(temporary.path / "bin" / name, body);
    }
    std::optional<std::string> probe(const std::string& body) const {
        return ProviderDetector::live(true).versionProbe(install("claude", body));
    }
    ProviderDetection detect(bool probeVersions) const {
        return ProviderDetector::live(probeVersions).detect(Provider::claudeCode);
    }

    TemporaryDirectory temporary;
    fs::path homeDirectory = temporary.path / "home";
    EnvironmentVariable home{"HOME", homeDirectory.string()};
    EnvironmentVariable path{"PATH", (temporary.path / "bin").string() + ":/usr/bin:/bin"};
};

TEST_F(LiveProviderDetectorTest, readsHomeAndSearchPathFromTheEnvironment) {
    const EnvironmentVariable searched{"PATH", "/usr/bin::/bin"};
    const auto detector = ProviderDetector::live(false);
    EXPECT_EQ(detector.homeDirectory, homeDirectory.string());
    EXPECT_EQ(detector.searchPath, (std::vector<std::string>{"/usr/bin", "/bin"}));
    const auto candidates = detector.candidateExecutables(Provider::claudeCode);
    EXPECT_EQ(candidates[0], "/usr/bin/claude");
    EXPECT_EQ(candidates[1], "/bin/claude");
}

TEST_F(LiveProviderDetectorTest, aHomeWithSlashesAtItsEndIsTheSameHome) {
    const EnvironmentVariable slashed{"HOME", "/Users/alice//"};
    EXPECT_EQ(ProviderDetector::live(false).homeDirectory, "/Users/alice");
    const EnvironmentVariable root{"HOME", "/"};
    EXPECT_EQ(detect(false).hookConfigPath, "/.claude/settings.json");
}

TEST_F(LiveProviderDetectorTest, findsAnAgentAndItsVersion) {
    fs::create_directories(homeDirectory / ".claude");
    const auto executable =
        install("claude", "[ \"$*\" = --version ] && echo '2.1.0 (Claude Code)'");
    EXPECT_EQ(detect(true),
              (ProviderDetection{
                  .provider = Provider::claudeCode,
                  .state = State::installed,
                  .executablePath = executable,
                  .version = "2.1.0 (Claude Code)",
                  .hookConfigPath = homeDirectory.string() + "/.claude/settings.json",
                  .evidence = {"Executable: " + executable,
                               "Config directory: " + homeDirectory.string() + "/.claude",
                               "Version: 2.1.0 (Claude Code)"},
              }));
}

TEST_F(LiveProviderDetectorTest, withoutProbingNothingIsRun) {
    const auto mark = temporary.path / "mark";
    install("claude", "echo ran > " + mark.string() + "; echo 1.2.3");
    const auto detection = detect(false);
    EXPECT_EQ(detection.state, State::installed);
    EXPECT_EQ(detection.version, std::nullopt);
    EXPECT_FALSE(fs::exists(mark));
    EXPECT_EQ(detect(true).version, "1.2.3");
    EXPECT_TRUE(fs::exists(mark)) << "probing would have been seen";
}

TEST_F(LiveProviderDetectorTest, listsADirectoryOrNothing) {
    const auto detector = ProviderDetector::live(false);
    writeContents(homeDirectory / "file", "");
    fs::create_directory_symlink(homeDirectory, temporary.path / "link");
    EXPECT_TRUE(detector.isDirectory((temporary.path / "link").string()));
    EXPECT_EQ(detector.contentsOfDirectory(homeDirectory.string()),
              (std::vector<std::string>{"file"}));
    for (const auto& other : {homeDirectory / "file", homeDirectory / "missing"}) {
        EXPECT_FALSE(detector.isDirectory(other.string()));
        EXPECT_TRUE(detector.contentsOfDirectory(other.string()).empty());
    }
}

TEST_F(LiveProviderDetectorTest, anExecutableThatFailsHasNoVersion) {
    EXPECT_EQ(probe("echo 1.2.3; exit 1"), std::nullopt);
    EXPECT_EQ(probe("echo 1.2.3; kill -9 $$"), std::nullopt);
    EXPECT_EQ(probe("echo 1.2.3 >&2"), std::nullopt);
    EXPECT_EQ(detect(true).state, State::installed);
}

TEST_F(LiveProviderDetectorTest, anExecutableThatHangsHasNoVersion) {
    EXPECT_EQ(probe("echo 1.2.3; exec sleep 300"), std::nullopt);
}

TEST_F(LiveProviderDetectorTest, looksForAVersionInTheFirstBytesOfAFlood) {
    EXPECT_EQ(probe("echo 1.2.3; head -c 1000000 /dev/zero"), "1.2.3");
    EXPECT_EQ(probe("head -c 65535 /dev/zero | tr '\\0' '\\n'; echo 12"), "1");
    EXPECT_EQ(probe("head -c 65536 /dev/zero | tr '\\0' '\\n'; echo 12"), std::nullopt);
}

}  // namespace
}  // namespace tallowbrook
