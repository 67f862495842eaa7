#include "Setup/SetupReversal.h"

#include <gtest/gtest.h>

#include "Integrations/HookConfigMerger.h"
#include "Setup/LayoutPreservingEdit.h"

namespace tallowbrook::host {
namespace {

const auto spec = HookInstallSpec::codex("/x/tallowbrook-hook");

std::string installedIn(const std::string& text) {
    return inLayoutOf(text, HookConfigMerger::install(text, spec).value());
}

TEST(SetupReversal, findsWhatSetupMadeTheTextOf) {
    for (const std::string text : {"", "{\n}\n", "{ \"hooks\": {} }", "{\"hooks\":{\"Stop\":[]}}"})
        EXPECT_EQ(textBeforeSetup(installedIn(text), {"{\"a\": 1}", text}, spec), text);
}

TEST(SetupReversal, takesTheFirstOfSeveral) {
    EXPECT_EQ(textBeforeSetup(installedIn("{}\n"), {"{\n}\n", "{}\n", "{\r\n}\n"}, spec), "{\n}\n");
}

TEST(SetupReversal, takesNoneThatHoldsOurHooks) {
    const auto installed = installedIn("{}\n");
    auto partial = HookConfigMerger::install("{}\n", spec).value();
    partial.replace(partial.find("Interrupt"), 9, "AnyOther1");
    const auto completed = installedIn(partial);
    EXPECT_EQ(textBeforeSetup(installed, {installed}, spec), std::nullopt);
    EXPECT_EQ(textBeforeSetup(completed, {partial}, spec), std::nullopt);
}

TEST(SetupReversal, takesNoneOnceTheFileWasChangedOtherwise) {
    const std::string before = "{\n  \"a\": 1,\n  \"hooks\": {}\n}\n";
    auto later = installedIn(before);
    later.replace(later.find(": 1"), 3, ": 2");
    EXPECT_EQ(textBeforeSetup(later, {before}, spec), std::nullopt);
    EXPECT_EQ(textBeforeSetup(installedIn(before) + "\n", {before}, spec), std::nullopt);
}

TEST(SetupReversal, takesNoneThatIsNoConfiguration) {
    EXPECT_EQ(textBeforeSetup("// mine", {"// mine", "[]", "{\"hooks\": 1}"}, spec), std::nullopt);
}

TEST(SetupReversal, ofAPlanShowsTheDifferenceToWhatWasBefore) {
    const std::string before = "{\n  \"hooks\": {}\n}\n";
    const auto installed = installedIn(before);
    const auto removed = HookConfigMerger::uninstall(installed, spec).value();
    const ConfigChangePlan removal{"hooks.json", installed, removed, "difference"};
    const auto plan = givingBack(removal, {before}, spec);
    EXPECT_EQ(plan, proposing(removal, before));
    EXPECT_NE(plan.diff.find("\n+  \"hooks\": {}\n"), std::string::npos);
    EXPECT_EQ(givingBack(removal, {"{}"}, spec), removal);
    const ConfigChangePlan nothing{"hooks.json", before, before, ""};
    EXPECT_EQ(givingBack(nothing, {before}, spec), nothing);
}

}  // namespace
}  // namespace tallowbrook::host
