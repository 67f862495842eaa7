#include <gtest/gtest.h>
#include <stdlib.h>

#include "ArbitraryJSON.h"
#include "Integrations/LineDiff.h"
#include "Support/FileContents.h"
#include "Support/TemporaryDirectory.h"

#include <rapidcheck/gtest.h>

namespace tallowbrook {
namespace {

using LineDiff::StepKind;
using Lines = std::vector<std::string>;

// Few different lines, so that many are equal; some look like parts of a diff.
Lines drawLines() {
    static const Lines lines{
        "a", "b", "c", "", " a", "-a", "+b", "-- a", "++ b", "@@ -1,1 +1,1 @@", "a\r", "é"};
    Lines drawn;
    for (auto count = drawBelow(25); count > 0; --count) drawn.push_back(drawOneOf(lines));
    return drawn;
}

// The second of two texts is mostly the first with a few changes.
Lines drawChanged(Lines lines) {
    if (drawBelow(4) == 0) return drawLines();
    for (auto count = drawBelow(4); count > 0; --count) {
        const auto place = static_cast<std::ptrdiff_t>(drawBelow(lines.size() + 1));
        if (drawBool() && place < std::ssize(lines))
            lines.erase(lines.begin() + place);
        else
            lines.insert(lines.begin() + place, "new");
    }
    return lines;
}

std::string textOf(const Lines& lines) {
    std::string text;
    for (const auto& line : lines) text += line + "\n";
    return text;
}

RC_GTEST_PROP(LineDiffProperty, theScriptLeadsFromTheOldLinesToTheNewOnes, ()) {
    const auto oldLines = drawLines();
    const auto newLines = drawChanged(oldLines);
    Lines before;
    Lines after;
    for (const auto& step : LineDiff::editScript(oldLines, newLines)) {
        RC_ASSERT(step.oldIndex == before.size());
        RC_ASSERT(step.newIndex == after.size());
        if (step.kind != StepKind::insert) before.push_back(step.text);
        if (step.kind != StepKind::delete_) after.push_back(step.text);
    }
    RC_ASSERT(before == oldLines);
    RC_ASSERT(after == newLines);
}

bool havePatch() { return system("command -v patch >/dev/null 2>&1") == 0; }

// Whether patch(1) makes the new text of the old one and their diff.
bool isUnderstoodByPatch(const std::string& oldText, const std::string& newText,
                         const std::string& diff) {
    const TemporaryDirectory directory;
    writeContents(directory.path / "old", oldText);
    writeContents(directory.path / "diff", diff);
    const auto command = "cd '" + directory.path.string() + "' && patch -s -F0 -o new old diff";
    return system(command.c_str()) == 0 && contentsOf(directory.path / "new") == newText;
}

// With no line of context this does not hold: patch(1) takes the start of an empty side for the
// line before it, and here it is the line behind it. Between texts that are not empty and with
// context, no side of a hunk is empty.
TEST(LineDiffProperty, patchMakesTheNewTextOfTheOldOne) {
    if (!havePatch()) GTEST_SKIP() << "patch(1) is missing";
    EXPECT_TRUE(rc::check([] {
        const auto oldText = textOf(drawLines());
        const auto newText = textOf(drawChanged(LineDiff::lines(oldText)));
        RC_PRE(!oldText.empty() && !newText.empty() && oldText != newText);
        const auto diff = LineDiff::unified(oldText, newText, "old", "new", 1 + drawBelow(4));
        RC_LOG() << diff.value();
        RC_ASSERT(isUnderstoodByPatch(oldText, newText, diff.value()));
    }));
}

}  // namespace
}  // namespace tallowbrook
