#include "Integrations/LineDiff.h"

#include <algorithm>
#include <cstdint>

#include "Text/TakeUntil.h"

namespace tallowbrook {
namespace {

using LineDiff::Step;
using LineDiff::StepKind;
using Lines = std::span<const std::string>;

// 8 MB of table. Configuration files are far below it.
constexpr std::size_t maxTableCells = 4'000'000;

// For every pair of suffixes of two lists of lines, the length of their longest common subsequence.
class SuffixTable {
 public:
    SuffixTable(Lines oldLines, Lines newLines)
        : columns_{newLines.size() + 1}, lengths_((oldLines.size() + 1) * columns_) {
        for (std::size_t i = oldLines.size(); i-- > 0;)
            for (std::size_t j = newLines.size(); j-- > 0;)
                cell(i, j) = oldLines[i] == newLines[j]
                                 ? static_cast<Length>(cell(i + 1, j + 1) + 1)
                                 : std::max(cell(i + 1, j), cell(i, j + 1));
    }

    std::size_t at(std::size_t oldIndex, std::size_t newIndex) const {
        return lengths_[oldIndex * columns_ + newIndex];
    }

 private:
    // The shorter list has 2000 lines at most: the square root of the number of cells.
    using Length = std::uint16_t;

    Length& cell(std::size_t oldIndex, std::size_t newIndex) {
        return lengths_[oldIndex * columns_ + newIndex];
    }

    std::size_t columns_;
    std::vector<Length> lengths_;
};

struct ScriptBuilder {
    Lines oldLines;
    Lines newLines;
    std::vector<Step> steps{};
    std::size_t i = 0;
    std::size_t j = 0;

    bool hasOld() const { return i < oldLines.size(); }
    bool hasNew() const { return j < newLines.size(); }

    void keep() {
        steps.push_back({StepKind::equal, oldLines[i], i, j});
        ++i;
        ++j;
    }
    void remove() {
        steps.push_back({StepKind::delete_, oldLines[i], i, j});
        ++i;
    }
    void insert() {
        steps.push_back({StepKind::insert, newLines[j], i, j});
        ++j;
    }

    void replaceAll() {
        while (hasOld()) remove();
        while (hasNew()) insert();
    }

    void walk(const SuffixTable& table) {
        while (hasOld() && hasNew()) {
            if (oldLines[i] == newLines[j]) keep();
            // The delete first on a tie: a changed line shows as its old text, then its new one.
            else if (table.at(i + 1, j) >= table.at(i, j + 1))
                remove();
            else
                insert();
        }
        replaceAll();
    }
};

// A range of steps, both ends included.
struct Hunk {
    std::size_t first;
    std::size_t last;
};

std::vector<Hunk> hunksOf(const std::vector<Step>& steps, std::size_t context) {
    std::vector<Hunk> hunks;
    for (std::size_t change = 0; change < steps.size(); ++change) {
        if (steps[change].kind == StepKind::equal) continue;
        const std::size_t first = change - std::min(change, context);
        // Written so that no context, however large, overflows.
        const std::size_t last =
            context < steps.size() - change ? change + context : steps.size() - 1;
        // Hunks that touch become one: nothing would stand between them.
        if (!hunks.empty() && first <= hunks.back().last + 1)
            hunks.back().last = last;
        else
            hunks.push_back({first, last});
    }
    return hunks;
}

char marker(StepKind kind) {
    switch (kind) {
        case StepKind::delete_:
            return '-';
        case StepKind::insert:
            return '+';
        case StepKind::equal:
            break;
    }
    return ' ';
}

void append(std::span<const Step> steps, std::string& text) {
    const auto without = [&](StepKind kind) {
        return steps.size() -
               static_cast<std::size_t>(std::ranges::count(steps, kind, &Step::kind));
    };
    const auto range = [](std::size_t start, std::size_t count) {
        return std::to_string(start + 1) + "," + std::to_string(count);
    };
    text += "@@ -" + range(steps.front().oldIndex, without(StepKind::insert)) + " +" +
            range(steps.front().newIndex, without(StepKind::delete_)) + " @@\n";
    for (const Step& step : steps) {
        text += marker(step.kind);
        text += step.text;
        text += '\n';
    }
}

}  // namespace

std::vector<std::string> LineDiff::lines(const std::optional<std::string>& text) {
    std::vector<std::string> lines;
    if (!text) return lines;
    std::string_view rest = *text;
    while (!rest.empty()) lines.emplace_back(takeUntil(rest, '\n'));
    return lines;
}

std::vector<Step> LineDiff::editScript(Lines oldLines, Lines newLines) {
    ScriptBuilder script{oldLines, newLines};
    if (oldLines.size() * newLines.size() > maxTableCells)
        script.replaceAll();
    else
        script.walk(SuffixTable{oldLines, newLines});
    return std::move(script.steps);
}

std::optional<std::string> LineDiff::unified(const std::optional<std::string>& oldText,
                                             const std::optional<std::string>& newText,
                                             std::string_view oldLabel, std::string_view newLabel,
                                             std::size_t context) {
    const auto oldLines = lines(oldText);
    const auto newLines = lines(newText);
    // An empty file and none have equal lines, yet making or deleting a file is a change to show.
    if (oldLines == newLines && oldText.has_value() == newText.has_value()) return std::nullopt;

    const auto label = [](const std::optional<std::string>& text, std::string_view name) {
        return std::string{text ? name : "/dev/null"};
    };
    std::string diff =
        "--- " + label(oldText, oldLabel) + "\n+++ " + label(newText, newLabel) + "\n";
    const auto steps = editScript(oldLines, newLines);
    for (const auto [first, last] : hunksOf(steps, context))
        append(std::span{steps}.subspan(first, last - first + 1), diff);
    return diff;
}

}  // namespace tallowbrook
