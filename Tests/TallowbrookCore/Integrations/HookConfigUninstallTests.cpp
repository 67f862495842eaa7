#include <gtest/gtest.h>

#include <string>

#include "HookConfigSamples.h"

namespace tallowbrook {
namespace {

// The text after a removal that must succeed.
std::optional<std::string> uninstalled(const std::optional<std::string>& text,
                                       const HookInstallSpec& spec = sampleSpec()) {
    const auto result = HookConfigMerger::uninstall(text, spec);
    EXPECT_EQ(failureOf(result), "");
    return result.value_or("");
}

TEST(HookRemoval, changesNothingWhereNothingIsOurs) {
    EXPECT_EQ(uninstalled(std::nullopt), std::nullopt);
    for (const std::string& text :
         std::vector<std::string>{"", " \r\n\t", "{ }", R"( {"model" : "x"})", R"({"hooks":{} })",
                                  R"({"hooks":{"Start":[ ]}})",
                                  configOf(eventOf("Start", groupOf(foreignHandler))) + " "})
        EXPECT_EQ(uninstalled(text), text);
}

TEST(HookRemoval, takesTheHooksAwayThatItEmpties) {
    EXPECT_EQ(uninstalled(installedConfig), "{}");
    EXPECT_EQ(uninstalled(installedConfig + "\n"), "{}\n");
    EXPECT_EQ(uninstalled(R"({"a":1,)" + installedConfig.substr(1)), "{\n  \"a\": 1\n}");
    EXPECT_EQ(uninstalled(HookConfigMerger::install(std::nullopt, sampleSpec()).value()), "{}\n");
}

TEST(HookRemoval, takesStaleAndExactHandlersOfEveryEvent) {
    EXPECT_EQ(uninstalled(configOf(eventOf("Start", groupOf(exactHandler + "," + staleHandler)) +
                                   "," + eventOf("Unknown", groupOf(staleHandler)) + "," +
                                   eventOf("Kept", groupOf(foreignHandler)))),
              laidOut(configOf(eventOf("Kept", groupOf(foreignHandler)))));
}

TEST(HookRemoval, keepsAGroupWithAMatcherAndTheUsersOwnHandlersInOrder) {
    const std::string other = R"({"type":"prompt","prompt":"\u0041","n":1.0})";
    const auto group = [&](const std::string& ours) {
        return R"({"matcher":"Bash","hooks":[)" + foreignHandler + "," + ours + other +
               R"(],"x":null})";
    };
    EXPECT_EQ(uninstalled(configOf(eventOf("Start", group(exactHandler + ",")))),
              laidOut(configOf(eventOf("Start", group("")))));
}

TEST(HookRemoval, keepsWhatWasEmptyBefore) {
    EXPECT_EQ(uninstalled(configOf(R"("Empty":[],"Start":[{},{"matcher":"x","hooks":[)" +
                                   exactHandler + "]}" + R"(,{"hooks":[]}])")),
              laidOut(configOf(R"("Empty":[],"Start":[{},{"hooks":[]}])")));
}

TEST(HookRemoval, keepsAHandlerThatDoesNotMentionTheHelper) {
    const auto spec = HookInstallSpec::claudeCode("/opt/renamed-helper");
    const auto text = HookConfigMerger::install(std::nullopt, spec).value();
    EXPECT_EQ(uninstalled(text, spec), text);
}

}  // namespace
}  // namespace tallowbrook
