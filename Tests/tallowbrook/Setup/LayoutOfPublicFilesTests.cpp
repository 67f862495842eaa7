// Setting up and removing, over files of other people and over each of them laid out otherwise.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "Integrations/HookConfigMerger.h"
#include "Integrations/LineDiff.h"
#include "Integrations/OrderedJSON.h"
#include "Setup/JSONLayout.h"
#include "Setup/LayoutPreservingEdit.h"
#include "Setup/SetupReversal.h"
#include "Support/Corpora.h"
#include "Support/FileContents.h"
#include "TallowbrookCore/Integrations/HookConfigTrees.h"

namespace tallowbrook::host {
namespace {

struct PublicFile {
    std::string name;
    std::string text;
    JSONNode root;
};

// Those that are JSON objects without a key twice.
std::vector<PublicFile> publicFiles() {
    std::vector<PublicFile> files;
    for (const char* collection :
         {"claude-settings", "claude-plugin-hooks", "codex-hooks", "other-json"})
        for (const auto& file : Corpora::files(collection)) {
            auto text = contentsOf(file);
            auto root = OrderedJSON::parse(text);
            if (root && root->objectMembers())
                files.push_back({file.string(), std::move(text), std::move(*root)});
        }
    return files;
}

std::vector<HookInstallSpec> specs() {
    const std::string helper = "/Users/x/a b/bin/tallowbrook-hook";
    return {HookInstallSpec::claudeCode(helper), HookInstallSpec::codex(helper)};
}

// An event's list, or a "hooks" object, that is there and empty is dropped on removal: it cannot be
// told from one that the installation has made.
bool losesEmptyLists(const JSONNode& root, const HookInstallSpec& spec) {
    return afterInstallAndUninstall(root, spec) != root;
}

void expectNoTraceAfterRemoval(const std::string& original, const HookInstallSpec& spec) {
    const auto merged = HookConfigMerger::install(original, spec);
    ASSERT_TRUE(merged) << merged.error().description();
    const auto installed = inLayoutOf(original, *merged);
    EXPECT_EQ(OrderedJSON::parse(installed), OrderedJSON::parse(*merged));
    EXPECT_EQ(HookConfigMerger::inspect(installed, spec), HookInstallState::installed());

    const auto unmerged = HookConfigMerger::uninstall(installed, spec);
    ASSERT_TRUE(unmerged && *unmerged);
    EXPECT_EQ(inLayoutOf(installed, **unmerged), original);
}

// The line without what an addition may put text before: its end, a comma, closing brackets.
std::string withoutEnd(std::string line) {
    line.erase(line.find_last_not_of(" \t\r,]}") + 1);
    return line;
}

void expectOnlyAddedLines(const std::string& original, const HookInstallSpec& spec) {
    const auto installed = inLayoutOf(original, HookConfigMerger::install(original, spec).value());
    const auto steps = LineDiff::editScript(LineDiff::lines(original), LineDiff::lines(installed));
    for (const auto& step : steps) {
        if (step.kind != LineDiff::StepKind::delete_) continue;
        const auto isContinuation = [&](const LineDiff::Step& other) {
            return other.kind == LineDiff::StepKind::insert && other.newIndex >= step.newIndex &&
                   other.text.starts_with(withoutEnd(step.text));
        };
        EXPECT_TRUE(std::ranges::any_of(steps, isContinuation)) << step.text;
    }
}

// In the layouts that a file may have beside its own.
std::vector<std::string> otherLayouts(const JSONNode& root) {
    std::vector<std::string> texts;
    for (const char* lineEnd : {"\n", "\r\n"})
        for (const char* indentation : {"  ", "    ", "\t"}) {
            const JSONLayout layout{.lineEnd = lineEnd, .indentation = indentation};
            texts.push_back(onLines(root, layout, ""));
            texts.push_back(texts.back() + lineEnd);
        }
    texts.push_back(onOneLine(root, {}));
    texts.push_back(onOneLine(root, {.colon = ":", .comma = ",", .objectPadding = " "}) + "\n");
    return texts;
}

std::string installedIn(const std::string& text, const HookInstallSpec& spec) {
    return inLayoutOf(text, HookConfigMerger::install(text, spec).value());
}

// What a removal makes of the text with these backups there.
std::string removedFrom(const std::string& text, const std::vector<std::string>& backups,
                        const HookInstallSpec& spec) {
    const auto removal = keepLayout(
        {"settings.json", text, HookConfigMerger::uninstall(text, spec).value(), "difference"});
    return givingBack(removal, backups, spec).proposedText.value();
}

// The same file with nothing in it, with an empty "hooks" object, and with empty lists of events.
std::vector<std::string> withEmptyContainers(const PublicFile& file, const HookInstallSpec& spec) {
    std::vector<std::string> texts{"{\n}\n", "{ }"};
    auto members = *file.root.objectMembers();
    std::erase_if(members, [](const JSONMember& member) { return member.key == "hooks"; });
    const auto with = [&](std::vector<JSONMember> events) {
        auto changed = members;
        changed.insert(changed.begin(),
                       {"hooks", std::nullopt, JSONNode::object(std::move(events))});
        return JSONNode::object(std::move(changed));
    };
    for (const auto& root :
         {with({}), with({{spec.events.front(), std::nullopt, JSONNode::array({})}}),
          with({{spec.events.back(), std::nullopt, JSONNode::array({})},
                {"Another", std::nullopt, JSONNode::array({})}}),
          with({{"Another", std::nullopt,
                 JSONNode::array(
                     {JSONNode::object({{"hooks", std::nullopt, JSONNode::array({})}})})}})}) {
        texts.push_back(onLines(root, {}, ""));
        texts.push_back(onLines(root, {.lineEnd = "\r\n", .indentation = "\t"}, "") + "\r\n");
        texts.push_back(onOneLine(root, {.objectPadding = " "}));
    }
    return texts;
}

TEST(LayoutOfPublicFiles, comeBackWithTheirEmptyListsWhereTheBackupIsThere) {
    const auto files = publicFiles();
    if (files.empty()) GTEST_SKIP() << "there are no public files in " << Corpora::directory();
    for (const auto& spec : specs()) {
        std::string other = "{}";
        for (const auto& file : files) {
            SCOPED_TRACE(file.name);
            auto texts = withEmptyContainers(file, spec);
            texts.push_back(file.text);
            for (const auto& text : texts) {
                const auto installed = installedIn(text, spec);
                EXPECT_EQ(removedFrom(installed, {installed, text, other}, spec), text);
                // With another file's backup alone, what the text itself tells.
                const auto removed = removedFrom(installed, {other}, spec);
                if (removed != other)
                    EXPECT_EQ(removed, removedFrom(installed, {}, spec));
                else
                    EXPECT_EQ(installedIn(other, spec), installed);
                other = text;
            }
        }
    }
}

TEST(LayoutOfPublicFiles, comesBackByteForByteAfterARemoval) {
    const auto files = publicFiles();
    if (files.empty()) GTEST_SKIP() << "there are no public files in " << Corpora::directory();
    for (const auto& file : files) {
        SCOPED_TRACE(file.name);
        for (const auto& spec : specs())
            if (!losesEmptyLists(file.root, spec)) expectNoTraceAfterRemoval(file.text, spec);
    }
}

TEST(LayoutOfPublicFiles, comesBackByteForByteInWhateverLayoutTheyAre) {
    const auto files = publicFiles();
    if (files.empty()) GTEST_SKIP() << "there are no public files in " << Corpora::directory();
    for (const auto& file : files) {
        SCOPED_TRACE(file.name);
        for (const auto& spec : specs()) {
            if (losesEmptyLists(file.root, spec)) continue;
            for (const auto& text : otherLayouts(file.root)) expectNoTraceAfterRemoval(text, spec);
        }
    }
}

TEST(LayoutOfPublicFiles, changesOnlyByLinesThatAreAddedAndTheCommasBeforeThem) {
    const auto files = publicFiles();
    if (files.empty()) GTEST_SKIP() << "there are no public files in " << Corpora::directory();
    for (const auto& file : files) {
        SCOPED_TRACE(file.name);
        for (const auto& spec : specs()) expectOnlyAddedLines(file.text, spec);
    }
}

}  // namespace
}  // namespace tallowbrook::host
