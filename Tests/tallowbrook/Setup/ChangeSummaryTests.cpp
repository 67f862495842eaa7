#include "Setup/ChangeSummary.h"

#include <gtest/gtest.h>

#include "Integrations/HookConfigMerger.h"
#include "Setup/LayoutPreservingEdit.h"

namespace tallowbrook::host {
namespace {

const auto spec = HookInstallSpec::claudeCode("/x/tallowbrook-hook");

std::string installedIn(const std::string& text) {
    return inLayoutOf(text, HookConfigMerger::install(text, spec).value());
}

std::string summary(std::optional<std::string> original, std::optional<std::string> proposed) {
    return summaryOf({"settings.json", std::move(original), std::move(proposed), ""});
}

TEST(ChangeSummary, countsTheHooksThatComeAndTheCommasBeforeThem) {
    EXPECT_EQ(summary("{\n}\n", installedIn("{\n}\n")), "adds 9 hooks, nothing else");
    const std::string mine = "{\n  \"a\": 1\n}\n";
    EXPECT_EQ(summary(mine, installedIn(mine)), "adds 9 hooks and 1 comma, nothing else");
    const std::string withStop =
        "{\n  \"hooks\": {\n    \"Stop\": [\n      {\n        \"hooks\": []\n      }\n    ]\n  "
        "}\n}\n";
    EXPECT_EQ(summary(withStop, installedIn(withStop)), "adds 9 hooks, nothing else");
}

TEST(ChangeSummary, countsTheHooksThatGo) {
    const std::string mine = "{\n  \"a\": 1\n}\n";
    EXPECT_EQ(summary(installedIn(mine), mine), "takes out 9 hooks and 1 comma, nothing else");
}

TEST(ChangeSummary, countsLinesThatHoldMoreThanHooks) {
    const std::string oneLine = "{\"a\": 1}\n";
    EXPECT_EQ(summary(oneLine, installedIn(oneLine)), "adds 9 hooks, changes 1 other line");
    EXPECT_EQ(summary("{\n\"a\": 1,\n\"b\": 2\n}\n", "{\n\"a\": 3,\n\"b\": 4\n}\n"),
              "changes 2 lines");
    EXPECT_EQ(summary("{\n}\n", "{\n\"a\": 1\n}\n"), "adds 1 line");
    EXPECT_EQ(summary("{\n\"a\": 1,\n\"b\": 2\n}\n", "{\n}\n"), "takes out 2 lines");
}

TEST(ChangeSummary, tellsHooksThatAreRenewed) {
    const std::string mine = "{\n  \"a\": 1\n}\n";
    const auto old = inLayoutOf(
        mine, HookConfigMerger::install(mine, HookInstallSpec::claudeCode("/old/tallowbrook-hook"))
                  .value());
    EXPECT_EQ(summary(old, installedIn(old)), "renews 9 hooks");
}

TEST(ChangeSummary, saysWhenThereIsNoFileAndWhenThereIsNothingToDo) {
    EXPECT_EQ(summary(std::nullopt, installedIn("")), "to be created with 9 hooks");
    EXPECT_EQ(summary("{}", "{}"), "nothing to change");
    EXPECT_EQ(summary(std::nullopt, std::nullopt), "nothing to change");
}

TEST(ChangeSummary, ofTextsThatAreNoJSONCountsLines) {
    EXPECT_EQ(summary("// mine\n", "// yours\n"), "changes 1 line");
    EXPECT_EQ(summary("a", "a\n"), "changes the end of the last line");
}

}  // namespace
}  // namespace tallowbrook::host
