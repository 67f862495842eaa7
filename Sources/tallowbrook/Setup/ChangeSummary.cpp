#include "Setup/ChangeSummary.h"

#include <fmt/core.h>

#include <algorithm>
#include <iterator>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "Integrations/HookConfigStructure.h"
#include "Integrations/HookHandler.h"
#include "Integrations/LineDiff.h"
#include "Integrations/OrderedJSON.h"

namespace tallowbrook::host {
namespace {

using namespace HookConfigStructure;

// Each hook of ours with its event, sorted; none in a text of another shape.
std::vector<std::string> hooksIn(const std::optional<std::string>& text) {
    std::vector<std::string> found;
    auto root = parseRoot(text.value_or(""));
    auto* hooks = root ? value(*root, "hooks") : nullptr;
    if (!hooks) return found;
    const auto events = eventsOf(*hooks);
    if (!events) return found;
    for (const auto& event : **events) {
        if (!checkEvent(event) || !checkGroups(event)) continue;
        for (const auto& group : groupsOf(event))
            if (const auto* handlers = handlersOf(group))
                for (const auto& handler : *handlers)
                    if (HookHandler::isOurs(handler))
                        found.push_back(event.key + '\n' + OrderedJSON::serialize(handler, ""));
    }
    std::ranges::sort(found);
    return found;
}

// How many of these are not among the others.
std::size_t countBeyond(const std::vector<std::string>& hooks,
                        const std::vector<std::string>& others) {
    std::vector<std::string> beyond;
    std::ranges::set_difference(hooks, others, std::back_inserter(beyond));
    return beyond.size();
}

std::string count(std::size_t number, std::string_view thing) {
    return fmt::format("{} {}{}", number, thing, number == 1 ? "" : "s");
}

struct Lines {
    std::size_t removed = 0;
    std::size_t added = 0;
    std::size_t commas = 0;  // lines of which only a comma at the end comes or goes
};

std::string withoutComma(std::string line) {
    if (line.ends_with('\r')) line.pop_back();
    if (line.ends_with(',')) line.pop_back();
    return line;
}

Lines linesOf(const ConfigChangePlan& plan) {
    const auto steps = LineDiff::editScript(LineDiff::lines(plan.originalText),
                                            LineDiff::lines(plan.proposedText));
    Lines lines;
    std::unordered_map<std::string, std::size_t> added;
    for (const auto& step : steps) {
        if (step.kind != LineDiff::StepKind::insert) continue;
        ++added[withoutComma(step.text)];
        ++lines.added;
    }
    for (const auto& step : steps) {
        if (step.kind != LineDiff::StepKind::delete_) continue;
        const auto again = added.find(withoutComma(step.text));
        if (again == added.end() || again->second == 0) {
            ++lines.removed;
            continue;
        }
        --again->second;
        --lines.added;
        ++lines.commas;
    }
    return lines;
}

// What changes beside hooks that only come, or only go.
std::string rest(std::size_t otherLines) {
    return otherLines == 0 ? ", nothing else"
                           : fmt::format(", changes {}", count(otherLines, "other line"));
}

std::string ofLines(const Lines& lines) {
    const auto changed = std::max(lines.removed, lines.added) + lines.commas;
    if (changed == 0) return "changes the end of the last line";
    if (lines.removed + lines.commas == 0) return "adds " + count(changed, "line");
    if (lines.added + lines.commas == 0) return "takes out " + count(changed, "line");
    return "changes " + count(changed, "line");
}

}  // namespace

std::string summaryOf(const ConfigChangePlan& plan) {
    if (plan.isNoOp() || !plan.proposedText) return "nothing to change";
    const auto oldHooks = hooksIn(plan.originalText);
    const auto newHooks = hooksIn(plan.proposedText);
    const auto coming = countBeyond(newHooks, oldHooks);
    const auto going = countBeyond(oldHooks, newHooks);
    if (!plan.originalText) return "to be created with " + count(coming, "hook");

    const auto lines = linesOf(plan);
    const auto commas = lines.commas == 0 ? "" : " and " + count(lines.commas, "comma");
    if (coming > 0 && going == 0)
        return "adds " + count(coming, "hook") + commas + rest(lines.removed);
    if (going > 0 && coming == 0)
        return "takes out " + count(going, "hook") + commas + rest(lines.added);
    if (coming > 0 && coming == going) return "renews " + count(coming, "hook");
    if (coming > 0) return "adds " + count(coming, "hook") + ", takes out " + count(going, "other");
    return ofLines(lines);
}

}  // namespace tallowbrook::host
