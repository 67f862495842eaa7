// Files of other people, as they are.
#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <string>

#include "HookConfigTrees.h"
#include "Integrations/HookConfigMerger.h"
#include "Integrations/OrderedJSON.h"
#include "Support/Corpora.h"
#include "Support/FileContents.h"

namespace tallowbrook {
namespace {

namespace fs = std::filesystem;

// What the suite leaves to each parser and this one refuses: what is no UTF-8 from its first byte,
// a byte-order mark, half a surrogate pair, and too deep nesting. Numbers of any size are kept as
// text, and broken bytes inside strings are replaced.
const std::set<std::string> refusedByChoice{
    "i_object_key_lone_2nd_surrogate.json",
    "i_string_1st_surrogate_but_2nd_missing.json",
    "i_string_1st_valid_surrogate_2nd_invalid.json",
    "i_string_UTF-16LE_with_BOM.json",
    "i_string_incomplete_surrogate_and_escape_valid.json",
    "i_string_incomplete_surrogate_pair.json",
    "i_string_incomplete_surrogates_escape_valid.json",
    "i_string_invalid_lonely_surrogate.json",
    "i_string_invalid_surrogate.json",
    "i_string_inverted_surrogates_U+1D11E.json",
    "i_string_lone_second_surrogate.json",
    "i_string_utf16BE_no_BOM.json",
    "i_string_utf16LE_no_BOM.json",
    "i_structure_500_nested_arrays.json",
    "i_structure_UTF-8_BOM_empty_object.json",
};

// Valid JSON, but it cannot be told which of two equal keys is meant.
const std::set<std::string> refusedOnPurpose{
    "y_object_duplicated_key.json",
    "y_object_duplicated_key_and_value.json",
};

// So has one of the real files.
bool hasAKeyTwice(const fs::path& file) {
    return file.parent_path().filename() == "claude-settings" && file.filename() == "051.json";
}

void expectWrittenAndReadTheSame(const fs::path& file, const JSONNode& node) {
    for (const char* indent : {"", "  ", "\t"})
        EXPECT_EQ(OrderedJSON::parse(OrderedJSON::serialize(node, indent)), node) << file;
}

TEST(PublicFiles, ofTheJSONSuiteAreAcceptedOrRefusedAsTheyShould) {
    const auto files = Corpora::jsonSuite();
    if (files.empty())
        GTEST_SKIP() << "the public JSON parsing test suite is not in " << Corpora::directory();

    int mandatory = 0;
    for (const auto& file : files) {
        const std::string name = file.filename().string();
        const bool isFree = name.starts_with("i_");
        mandatory += isFree ? 0 : 1;
        const bool isValid = isFree ? !refusedByChoice.contains(name)
                                    : name.starts_with("y_") && !refusedOnPurpose.contains(name);
        const auto node = OrderedJSON::parse(contentsOf(file));
        EXPECT_EQ(node.has_value(), isValid)
            << name << (node ? "" : ": " + node.error().description());
        if (node) expectWrittenAndReadTheSame(file, *node);
        if (refusedOnPurpose.contains(name)) {
            EXPECT_TRUE(node.error().message.starts_with("Duplicate key ")) << name;
        }
    }
    EXPECT_EQ(mandatory, Corpora::mandatorySuiteFiles) << "the suite is not whole";
}

TEST(PublicFiles, comeBackAsTheSameTree) {
    int count = 0;
    for (const char* collection :
         {"claude-settings", "claude-plugin-hooks", "codex-hooks", "other-json"})
        for (const auto& file : Corpora::files(collection)) {
            ++count;
            const auto node = OrderedJSON::parse(contentsOf(file));
            if (hasAKeyTwice(file)) {
                ASSERT_FALSE(node);
                EXPECT_EQ(node.error(), (JSONParseError{84, 10, "Duplicate key \"model\""}));
                continue;
            }
            ASSERT_TRUE(node) << file << ": " << node.error().description();
            expectWrittenAndReadTheSame(file, *node);
        }
    if (count == 0) GTEST_SKIP() << "there are no public files in " << Corpora::directory();
}

void expectMergedWithoutATrace(const fs::path& file, const HookInstallSpec& spec) {
    SCOPED_TRACE(file);
    const auto original = contentsOf(file);
    ASSERT_EQ(HookConfigMerger::inspect(original, spec), HookInstallState::notConfigured());

    const auto installed = HookConfigMerger::install(original, spec);
    ASSERT_TRUE(installed) << installed.error().description();
    EXPECT_EQ(HookConfigMerger::inspect(*installed, spec), HookInstallState::installed());
    EXPECT_EQ(HookConfigMerger::install(*installed, spec), *installed);
    EXPECT_EQ(installed->ends_with('\n'), original.ends_with('\n'));

    const auto uninstalled = HookConfigMerger::uninstall(*installed, spec);
    ASSERT_TRUE(uninstalled && *uninstalled);
    EXPECT_EQ(HookConfigMerger::inspect(*uninstalled, spec), HookInstallState::notConfigured());
    EXPECT_EQ(OrderedJSON::parse(**uninstalled),
              afterInstallAndUninstall(OrderedJSON::parse(original).value(), spec));
    EXPECT_EQ(HookConfigMerger::uninstall(original, spec), original);
}

TEST(PublicFiles, areMergedAndGivenBackWithoutATrace) {
    const auto claude = HookInstallSpec::claudeCode("/Users/x/a b/bin/tallowbrook-hook");
    const auto codex = HookInstallSpec::codex("/Users/x/a b/bin/tallowbrook-hook");
    int count = 0;
    for (const char* collection : {"claude-settings", "claude-plugin-hooks", "codex-hooks"})
        for (const auto& file : Corpora::files(collection)) {
            ++count;
            if (hasAKeyTwice(file)) continue;
            expectMergedWithoutATrace(file, claude);
            expectMergedWithoutATrace(file, codex);
        }
    if (count == 0) GTEST_SKIP() << "there are no public files in " << Corpora::directory();
}

}  // namespace
}  // namespace tallowbrook
