#include "Diagnostics/DiagnosticsReport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "Diagnostics/OperatingSystem.h"
#include "Support/EnvironmentVariable.h"
#include "Support/FileContents.h"
#include "Support/RepeatedText.h"
#include "Support/SampleEvents.h"
#include "Support/TemporaryDirectory.h"

namespace tallowbrook {
namespace {

using State = ProviderDetection::State;
using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines{""};
    for (const char c : text) {
        if (c == '\n')
            lines.emplace_back();
        else
            lines.back() += c;
    }
    return lines;
}

class DiagnosticsReportTest : public testing::Test {
 protected:
    // A line of the report by its number from 0.
    std::string line(std::size_t number) const { return linesOf(report.render()).at(number); }

    // The lines below the heading of the log's tail; the report holds no detection.
    std::vector<std::string> logLines() const {
        auto lines = linesOf(report.render());
        lines.erase(lines.begin(), lines.begin() + 8);
        return lines;
    }

    EnvironmentVariable home{"HOME", "/Users/alice"};
    DiagnosticsReport report{
        .appVersion = "1.4.0",
        .helperVersion = "0.1.0",
        .paths = {"/Users/alice/Library/Application Support/Tallowbrook"},
        .detections = {},
        .integrationStates = {},
        .integrationHealth = {},
        .notificationAuthorization = "allowed",
        .storedEventCount = {},
        .sessionCountsByStatus = {},
        .lastEventAt = {},
        .pendingSpoolFiles = 0,
        .helperLogTail = {},
    };
};

TEST_F(DiagnosticsReportTest, showsWhatIsMissingAsMissing) {
    EXPECT_THAT(linesOf(report.render()),
                ElementsAre("Tallowbrook diagnostics (sanitized)",
                            "App 1.4.0 · helper/adapter 0.1.0 · " + OperatingSystem::description(),
                            "Data directory: ~/Library/Application Support/Tallowbrook",
                            "Notification permission: allowed",
                            "Stored events: unavailable · pending spool segments: 0",
                            "Sessions: none", "Last event: never"));
}

TEST_F(DiagnosticsReportTest, showsAllThatIsKnown) {
    report.detections = {
        {.provider = Provider::codexCLI,
         .state = State::configOnly,
         .executablePath = {},
         .version = {},
         .hookConfigPath = "/Users/alice/.codex/hooks.json",
         .evidence = {"Config directory: /Users/alice/.codex"}},
        {.provider = Provider::claudeCode,
         .state = State::installed,
         .executablePath = "/Users/alice/.local/bin/claude",
         .version = "2.1.0 (Claude Code)",
         .hookConfigPath = "/Users/alice/.claude/settings.json",
         .evidence = {}},
    };
    report.integrationStates = {{Provider::claudeCode, "installed"}};
    report.integrationHealth = {{Provider::claudeCode, "last live event 2026-11-15T03:30:55Z"},
                                {Provider::codexCLI, "waiting"}};
    report.storedEventCount = 12345678901;
    report.sessionCountsByStatus = {{"failed", 1}, {"working", 2}};
    report.lastEventAt = sampleTime;
    report.pendingSpoolFiles = 3;
    report.helperLogTail = {"2026-11-15T03:30:55.123Z lock-timeout"};
    auto lines = linesOf(report.render());
    lines.erase(lines.begin(), lines.begin() + 4);
    EXPECT_THAT(
        lines,
        ElementsAre("Stored events: 12345678901 · pending spool segments: 3",
                    "Sessions: Working=2, Failed=1", "Last event: 2026-11-15T03:30:55.123Z",
                    "Codex CLI: configOnly · hooks file ~/.codex/hooks.json · waiting",
                    "Claude Code: installed · 2.1.0 (Claude Code) · ~/.local/bin/claude"
                    " · hooks file ~/.claude/settings.json · integration installed"
                    " · last live event 2026-11-15T03:30:55Z",
                    "Recent helper diagnostics:", "  2026-11-15T03:30:55.123Z lock-timeout"));
}

TEST_F(DiagnosticsReportTest, isTextWhateverTheBytesOfAPathOrALogLine) {
    report.paths.home = "/srv/jos\xE9";
    EXPECT_EQ(line(2), "Data directory: /srv/jos\uFFFD");
    report.helperLogTail = {"caf\xE9 /Users/alice", std::string(400, '\xE9') + "x"};
    EXPECT_THAT(logLines(), ElementsAre("  caf\uFFFD ~", "  " + repeated("\uFFFD", 400) + "…"));
    const EnvironmentVariable other{"HOME", "/home/jos\xE9"};
    report.paths.home = "/home/jos\xE9/data";
    EXPECT_EQ(line(2), "Data directory: ~/data") << "the home directory is found before";
}

TEST_F(DiagnosticsReportTest, countsSessionsInTheOrderOfTheirStatuses) {
    for (const char* status : {"none of them", "unknown", "stale", "interrupted", "failed",
                               "completed", "needsAttention", "working"})
        report.sessionCountsByStatus.emplace(status, report.sessionCountsByStatus.size());
    EXPECT_EQ(line(5),
              "Sessions: Working=7, Needs Attention=6, Completed=5, Failed=4, Interrupted=3, "
              "Stale=2, Unknown=1");
}

TEST_F(DiagnosticsReportTest, leavesOutOfADetectionWhatIsAbsent) {
    ProviderDetection detection{.provider = Provider::claudeCode,
                                .state = State::configOnly,
                                .executablePath = {},
                                .version = {},
                                .hookConfigPath = "/etc/settings.json",
                                .evidence = {}};
    const auto shown = [&] {
        report.detections = {detection};
        return line(7);
    };
    const std::string alone = "Claude Code: configOnly · hooks file /etc/settings.json";
    EXPECT_EQ(shown(), alone);
    report.integrationStates = {{Provider::claudeCode, "S"}};
    EXPECT_EQ(shown(), alone + " · integration S");
    report.integrationStates = {{Provider::codexCLI, "S"}};
    report.integrationHealth = {{Provider::codexCLI, "H"}};
    EXPECT_EQ(shown(), alone) << "another agent's";
    report.integrationHealth = {{Provider::claudeCode, "H"}};
    EXPECT_EQ(shown(), alone + " · H");
    detection.version = "1.0";
    EXPECT_EQ(shown(), "Claude Code: configOnly · 1.0 · hooks file /etc/settings.json · H");
    detection.version.reset();
    detection.executablePath = "/usr/bin/claude";
    EXPECT_EQ(shown(),
              "Claude Code: configOnly · /usr/bin/claude · hooks file /etc/settings.json · H");
}

TEST_F(DiagnosticsReportTest, neverShowsTheHomeDirectoryOrControlCharacters) {
    const std::string text = "at /Users/alice/x\nforged: \x1B[2J\x7F";
    report.appVersion = report.helperVersion = report.notificationAuthorization = text;
    report.paths = {text};
    report.detections = {{.provider = Provider::codexCLI,
                          .state = State::installed,
                          .executablePath = text,
                          .version = text,
                          .hookConfigPath = text,
                          .evidence = {text}}};
    report.integrationStates = report.integrationHealth = {{Provider::codexCLI, text}};
    report.sessionCountsByStatus = {{text, 1}};
    report.helperLogTail = {text};
    const std::string rendered = report.render();
    EXPECT_EQ(rendered.find("/Users/alice"), std::string::npos) << rendered;
    EXPECT_EQ(rendered.find_first_of("\x1B\x7F"), std::string::npos) << rendered;
    EXPECT_EQ(linesOf(rendered).size(), 10U) << rendered;
    EXPECT_EQ(linesOf(rendered).back(), "  at ~/x forged:  [2J ");
}

TEST_F(DiagnosticsReportTest, showsTheLastTenLinesOfTheLog) {
    for (const std::size_t count : {1U, 10U, 11U}) {
        report.helperLogTail.clear();
        for (std::size_t i = 1; i <= count; ++i) report.helperLogTail.push_back(std::to_string(i));
        std::vector<std::string> expected;
        for (std::size_t i = count > 10 ? count - 9 : 1; i <= count; ++i)
            expected.push_back("  " + std::to_string(i));
        EXPECT_EQ(line(7), "Recent helper diagnostics:");
        EXPECT_EQ(logLines(), expected);
    }
}

TEST_F(DiagnosticsReportTest, sanitizesTheLinesOfTheLog) {
    report.helperLogTail = {"a\tb", std::string(400, 'x'), std::string(500, 'y'), "",
                            "in /Users/alice/proj"};
    EXPECT_THAT(logLines(), ElementsAre("  a b", "  " + std::string(400, 'x'),
                                        "  " + std::string(400, 'y') + "…", "  ", "  in ~/proj"));
}

class DiagnosticsReportTailTest : public testing::Test {
 protected:
    std::vector<std::string> tailOf(const std::string& contents, std::size_t lines) const {
        writeContents(file, contents);
        return DiagnosticsReport::tail(file, lines);
    }

    TemporaryDirectory temporary;
    std::filesystem::path file = temporary.path / "helper.log";
};

TEST_F(DiagnosticsReportTailTest, givesTheLastLinesInFileOrder) {
    EXPECT_THAT(tailOf("a\nb\nc\n", 2), ElementsAre("b", "c"));
    EXPECT_THAT(tailOf("a\r\nb\u2028c", 4), ElementsAre("a\r", "b\u2028c"));
    EXPECT_THAT(tailOf("a\nb\nc\n", 0), IsEmpty());
}

TEST_F(DiagnosticsReportTailTest, countsNoEmptyLines) {
    EXPECT_THAT(tailOf("\n\na\n\n\nb\n\n", 2), ElementsAre("a", "b"));
    EXPECT_THAT(tailOf("\n\n", 2), IsEmpty());
    EXPECT_THAT(tailOf("", 2), IsEmpty());
    EXPECT_THAT(tailOf("a\n \n", 2), ElementsAre("a", " "));
}

TEST_F(DiagnosticsReportTailTest, givesNothingOfAFileThatIsNotUTF8AsAWhole) {
    EXPECT_THAT(tailOf("caf\xE9\nb\n", 1), IsEmpty());
    EXPECT_THAT(tailOf("café\nb\n", 2), ElementsAre("café", "b"));
}

TEST_F(DiagnosticsReportTailTest, givesNothingWhereThereIsNothingToRead) {
    EXPECT_THAT(DiagnosticsReport::tail(file, 5), IsEmpty());
    EXPECT_THAT(DiagnosticsReport::tail(temporary.path, 5), IsEmpty());
    ASSERT_EQ(mkfifo(file.c_str(), 0600), 0);
    EXPECT_THAT(DiagnosticsReport::tail(file, 5), IsEmpty()) << "a pipe without a writer";
}

}  // namespace
}  // namespace tallowbrook
