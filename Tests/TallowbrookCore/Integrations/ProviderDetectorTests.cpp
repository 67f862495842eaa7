#include "Integrations/ProviderDetector.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>

#include "Domain/AgentProfile.h"

namespace tallowbrook {
namespace {

using State = ProviderDetection::State;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

// A machine that is only told about.
struct Machine {
    std::vector<std::string> searchPath = {};
    std::set<std::string> executables = {};
    std::map<std::string, std::vector<std::string>> directories = {};
    std::optional<std::string> version = {};
    std::vector<std::string> probed = {};  // the executables that were asked for their version

    ProviderDetector detector() {
        return {
            .homeDirectory = "/Users/alice",
            .searchPath = searchPath,
            .fileExists = [this](const std::string& path) { return executables.contains(path); },
            .isDirectory = [this](const std::string& path) { return directories.contains(path); },
            .contentsOfDirectory =
                [this](const std::string& path) {
                    const auto directory = directories.find(path);
                    return directory == directories.end() ? std::vector<std::string>{}
                                                          : directory->second;
                },
            .versionProbe =
                [this](const std::string& path) {
                    probed.push_back(path);
                    return version;
                },
        };
    }

    std::vector<std::string> candidates(Provider provider) {
        return detector().candidateExecutables(provider);
    }
    ProviderDetection detect(Provider provider) { return detector().detect(provider); }
};

// Those of a claude extension in the folder of one editor, without the rest of their paths.
std::vector<std::string> extensionVersions(const std::vector<std::string>& candidates,
                                           const std::string& editor) {
    const std::string begin = "/Users/alice/" + editor + "/extensions/anthropic.claude-code-";
    const std::string end = "/resources/native-binary/claude";
    std::vector<std::string> versions;
    for (const auto& path : candidates)
        if (path.starts_with(begin) && path.ends_with(end))
            versions.push_back(path.substr(begin.size(), path.size() - begin.size() - end.size()));
    return versions;
}

TEST(ProviderDetector, looksForClaudeInItsPlacesInOrder) {
    Machine machine{.searchPath = {"/usr/bin", "/opt/tools"}};
    EXPECT_THAT(machine.candidates(Provider::claudeCode),
                ElementsAre("/usr/bin/claude", "/opt/tools/claude",
                            "/Users/alice/.local/bin/claude", "/opt/homebrew/bin/claude",
                            "/usr/local/bin/claude", "/Users/alice/.claude/local/claude"));
}

TEST(ProviderDetector, aPlaceNamedTwiceIsTriedOnceAtTheFirst) {
    Machine machine{.searchPath = {"/opt/homebrew/bin", "/usr//bin/", "/opt/homebrew/bin"}};
    EXPECT_THAT(machine.candidates(Provider::claudeCode),
                ElementsAre("/opt/homebrew/bin/claude", "/usr//bin//claude",
                            "/Users/alice/.local/bin/claude", "/usr/local/bin/claude",
                            "/Users/alice/.claude/local/claude"))
        << "paths are joined as they stand";
}

TEST(ProviderDetector, looksIntoTheExtensionsOfEachEditorInTurn) {
    Machine machine;
    const std::string home = "/Users/alice/";
    for (const char* editor : {".windsurf", ".cursor", ".vscode-insiders", ".vscode", ".zed"})
        machine.directories[home + editor + "/extensions"] = {"anthropic.claude-code-1.0.0"};
    const std::string extension =
        "/extensions/anthropic.claude-code-1.0.0/resources/native-binary/claude";
    EXPECT_THAT(machine.candidates(Provider::claudeCode),
                ElementsAre("/Users/alice/.local/bin/claude", "/opt/homebrew/bin/claude",
                            "/usr/local/bin/claude", "/Users/alice/.claude/local/claude",
                            home + ".vscode" + extension, home + ".vscode-insiders" + extension,
                            home + ".cursor" + extension, home + ".windsurf" + extension));
}

TEST(ProviderDetector, aCodexExtensionHasAnExecutableForEachProcessor) {
    Machine machine;
    const std::string extensions = "/Users/alice/.cursor/extensions/";
    machine.directories["/Users/alice/.cursor/extensions"] = {
        "openai.chatgpt-0.4.9", "openai.chatgpt-0.4.10", "anthropic.claude-code-1.0.0"};
    auto candidates = machine.candidates(Provider::codexCLI);
    ASSERT_GE(candidates.size(), 8U);
    const std::vector<std::string> systemsOwn(candidates.begin() + 8, candidates.end());
    candidates.resize(8);
    EXPECT_THAT(candidates,
                ElementsAre("/Users/alice/.local/bin/codex", "/opt/homebrew/bin/codex",
                            "/usr/local/bin/codex",
                            extensions + "openai.chatgpt-0.4.10/bin/macos-aarch64/codex",
                            extensions + "openai.chatgpt-0.4.10/bin/macos-x86_64/codex",
                            extensions + "openai.chatgpt-0.4.9/bin/macos-aarch64/codex",
                            extensions + "openai.chatgpt-0.4.9/bin/macos-x86_64/codex",
                            "/Applications/Codex.app/Contents/Resources/codex"));

    std::vector<std::string> expected;
    for (const char* version : {"openai.chatgpt-0.4.10", "openai.chatgpt-0.4.9"})
        for (const auto path :
             AgentProfile::of(Provider::codexCLI).locations.systemExtensionExecutables())
            expected.push_back(extensions + version + std::string{path});
    EXPECT_EQ(systemsOwn, expected);
}

TEST(ProviderDetector, takesAnEditorsHighestExtensionVersionFirst) {
    struct Row {
        const char* why;
        std::vector<std::string> versions;  // as they are to be ordered
    };
    for (const auto& [why, versions] : {
             Row{"by number", {"1.0.31", "1.0.9"}},
             Row{"beyond every machine word",
                 {"1.100000000000000000000000000000001", "1.100000000000000000000000000000000",
                  "1.99999999999999999999"}},
             Row{"zeros in front do not count", {"1.10", "1.009", "1.8"}},
             Row{"the longer where one begins the other", {"1.0.0-universal", "1.0.0"}},
             Row{"letters by their codes", {"1.0.0-b", "1.0.0-a9", "1.0.0-B"}},
             Row{"digits above dots", {"1.0", "1..0"}},
             Row{"bytes beyond ASCII last of all", {"1.é", "1.z"}},
         }) {
        Machine machine;
        auto& names = machine.directories["/Users/alice/.vscode/extensions"];
        for (const auto& version : versions) names.push_back("anthropic.claude-code-" + version);
        std::ranges::sort(names);
        do {
            EXPECT_EQ(extensionVersions(machine.candidates(Provider::claudeCode), ".vscode"),
                      versions)
                << why;
        } while (std::ranges::next_permutation(names).found);
    }
}

TEST(ProviderDetector, passesOverFoldersOfOtherExtensions) {
    Machine machine;
    machine.directories["/Users/alice/.vscode/extensions"] = {
        "anthropic.claude-code",      // the prefix without its dash
        "anthropic.claude-codex-1",   // another name that begins alike
        "Anthropic.claude-code-1.0",  // other letters
        "xanthropic.claude-code-1.0", "openai.chatgpt-1.0", "extensions.json", ""};
    EXPECT_THAT(extensionVersions(machine.candidates(Provider::claudeCode), ".vscode"), IsEmpty());
    EXPECT_EQ(machine.candidates(Provider::claudeCode).size(), 4U);
}

TEST(ProviderDetector, theFirstExecutableThatRunsIsTheAgent) {
    Machine machine{
        .searchPath = {"/usr/bin", "/opt/tools"},
        .executables = {"/opt/tools/claude", "/usr/local/bin/claude", "/usr/bin/codex"},
        .directories = {{"/Users/alice/.claude", {}}},
        .version = "2.1.0 (Claude Code)",
    };
    EXPECT_EQ(
        machine.detect(Provider::claudeCode),
        (ProviderDetection{
            .provider = Provider::claudeCode,
            .state = State::installed,
            .executablePath = "/opt/tools/claude",
            .version = "2.1.0 (Claude Code)",
            .hookConfigPath = "/Users/alice/.claude/settings.json",
            .evidence = {"Executable: /opt/tools/claude", "Config directory: /Users/alice/.claude",
                         "Version: 2.1.0 (Claude Code)"},
        }));
    EXPECT_THAT(machine.probed, ElementsAre("/opt/tools/claude"));
}

TEST(ProviderDetector, anExecutableWithoutAVersionIsInstalledAllTheSame) {
    Machine machine{.executables = {"/usr/local/bin/codex"}};
    EXPECT_EQ(machine.detect(Provider::codexCLI).state, State::installed);
    EXPECT_THAT(machine.detect(Provider::codexCLI).evidence,
                ElementsAre("Executable: /usr/local/bin/codex"));
}

TEST(ProviderDetector, aConfigurationDirectoryAloneIsEvidenceOfItsOwn) {
    Machine machine{.directories = {{"/Users/alice/.codex", {}}}, .version = "1.0"};
    EXPECT_EQ(machine.detect(Provider::codexCLI),
              (ProviderDetection{
                  .provider = Provider::codexCLI,
                  .state = State::configOnly,
                  .executablePath = std::nullopt,
                  .version = std::nullopt,
                  .hookConfigPath = "/Users/alice/.codex/hooks.json",
                  .evidence = {"Config directory: /Users/alice/.codex"},
              }));
    EXPECT_THAT(machine.probed, IsEmpty());
}

TEST(ProviderDetector, noTraceMeansNotDetected) {
    // The file alone is no trace, nor is the other agent's directory.
    Machine machine{.executables = {"/Users/alice/.claude/settings.json"},
                    .directories = {{"/Users/alice/.codex", {}}},
                    .version = "1.0"};
    EXPECT_EQ(machine.detect(Provider::claudeCode),
              (ProviderDetection{
                  .provider = Provider::claudeCode,
                  .state = State::notDetected,
                  .executablePath = std::nullopt,
                  .version = std::nullopt,
                  .hookConfigPath = "/Users/alice/.claude/settings.json",
                  .evidence = {},
              }));
    EXPECT_THAT(machine.probed, IsEmpty());
}

TEST(SanitizeVersion, keepsTheFirstLineWithAnythingOnIt) {
    struct Row {
        const char* why;
        const char* output;
        std::optional<std::string> version;
    };
    for (const auto& [why, output, version] : {
             Row{"one line", "1.2.3\n", "1.2.3"},
             Row{"empty lines before it", "\n\r\n\n1.2.3\n", "1.2.3"},
             Row{"a carriage return ends a line", "1.2.3\r\nmore", "1.2.3"},
             Row{"a vertical tab", "1\v2", "1"},
             Row{"the next-line character", "1\u00852", "1"},
             Row{"the line separator", "1\u20282", "1"},
             Row{"the paragraph separator", "1\u20292", "1"},
             Row{"all of them in front", "\v\f\u0085\u2028\u20291", "1"},
             Row{"nothing at all", "", std::nullopt},
             Row{"line ends alone", "\n\r\n\u2028\n", std::nullopt},
             Row{"blanks at both ends", "  1.2 3  \n", "1.2 3"},
             Row{"a first line of blanks hides the next", "   \n1.2.3\n", std::nullopt},
             Row{"an escape sequence loses its escape alone", "\x1B[1m1.2\x1B[0m\n", "[1m1.2[0m"},
             Row{"blanks that dropping leaves bare", "\t \u00E9 1.2 \u00E9\t", "1.2"},
             Row{"so does one of what is dropped", "\u00E9\t\n1.2.3\n", std::nullopt},
         })
        EXPECT_EQ(ProviderDetector::sanitizeVersion(output), version) << why;
}

TEST(SanitizeVersion, keepsOnlyPrintableASCII) {
    for (int byte = 1; byte < 0x80; ++byte) {
        const char c = static_cast<char>(byte);
        if (c >= '\n' && c <= '\r') continue;
        const bool isPrintable = byte >= 0x20 && byte <= 0x7E;
        EXPECT_EQ(ProviderDetector::sanitizeVersion(std::string{"a"} + c + "b"),
                  isPrintable ? std::string{"a"} + c + "b" : "ab")
            << byte;
    }
    EXPECT_EQ(ProviderDetector::sanitizeVersion("a\t1\u0084\u00A0\u2027\u202A2"), "a12");
}

TEST(SanitizeVersion, cutsALongLineAtEightyCharacters) {
    EXPECT_EQ(ProviderDetector::sanitizeVersion(std::string(80, 'x')), std::string(80, 'x'));
    EXPECT_EQ(ProviderDetector::sanitizeVersion(std::string(200, 'x')), std::string(80, 'x'));
}

}  // namespace
}  // namespace tallowbrook
