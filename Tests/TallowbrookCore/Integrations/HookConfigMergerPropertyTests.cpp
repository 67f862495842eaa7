#include <gtest/gtest.h>

#include <map>

#include "ArbitraryJSON.h"
#include "HookConfigSamples.h"
#include "HookConfigTrees.h"

#include <rapidcheck/gtest.h>

namespace tallowbrook {
namespace {

using Members = std::vector<JSONMember>;
using Nodes = std::vector<JSONNode>;

JSONMember member(std::string key, JSONNode value) {
    // Now and then written with an escape, as a user may.
    std::optional<std::string> rawKey;
    if (!key.empty() && drawBelow(4) == 0)
        rawKey =
            OrderedJSON::escape(key.substr(0, key.size() - 1)) + "\\u00" +
            std::string{"0123456789abcdef"[key.back() >> 4], "0123456789abcdef"[key.back() & 15]};
    return {std::move(key), std::move(rawKey), std::move(value)};
}

template <typename Value>
void insertAnywhere(std::vector<Value>& values, Value value) {
    const auto place = drawBelow(values.size() + 1);
    values.insert(values.begin() + static_cast<std::ptrdiff_t>(place), std::move(value));
}

// A file with handlers that are none of ours, of the shape that is understood.
JSONNode drawForeignHandler() {
    static const std::vector<std::string> commands{"echo done", "mytallowbrook-hook",
                                                   "/x/tallowbrook-hook-old claude-code", ""};
    if (drawBelow(4) == 0) return drawNode(1);
    Members members{member("type", JSONNode::string(drawBool() ? "command" : "prompt")),
                    member("command", JSONNode::string(drawOneOf(commands)))};
    drawMemberInto(members, 1);
    return JSONNode::object(std::move(members));
}

JSONNode drawForeignGroup() {
    Members members;
    drawMemberInto(members, 1);
    if (drawBelow(4) > 0) {
        Nodes handlers;
        for (auto count = drawBelow(4); count > 0; --count)
            handlers.push_back(drawForeignHandler());
        insertAnywhere(members, member("hooks", JSONNode::array(std::move(handlers))));
    }
    return JSONNode::object(std::move(members));
}

JSONNode drawForeignFile() {
    Members root;
    drawMemberInto(root, 2);
    drawMemberInto(root, 2);
    if (drawBelow(4) > 0) {
        Members events;
        for (const char* name : {"Start", "Stop", "Other", ""}) {
            if (drawBool()) continue;
            Nodes groups;
            for (auto count = drawBelow(3); count > 0; --count)
                groups.push_back(drawForeignGroup());
            insertAnywhere(events, member(name, JSONNode::array(std::move(groups))));
        }
        insertAnywhere(root, member("hooks", JSONNode::object(std::move(events))));
    }
    return JSONNode::object(std::move(root));
}

// What of ours was put into a file.
struct OurHandlers {
    int stale = 0;
    std::map<std::string, int> exact;  // by event

    HookInstallState state(const HookInstallSpec& spec) const {
        if (stale > 0) return HookInstallState::needsRepair(stale);
        std::vector<std::string> missing;
        for (const auto& event : spec.events)
            if (!exact.contains(event)) missing.push_back(event);
        if (missing.empty()) return HookInstallState::installed();
        if (missing.size() == spec.events.size()) return HookInstallState::notConfigured();
        return HookInstallState::partial(missing);
    }
};

JSONNode drawOurHandler(const std::string& event, OurHandlers& ours) {
    const bool isExact = drawBool();
    if (isExact)
        ++ours.exact[event];
    else
        ++ours.stale;
    return OrderedJSON::parse(isExact ? exactHandler : staleHandler).value();
}

JSONNode drawOurGroup(const std::string& event, OurHandlers& ours) {
    Nodes handlers;
    for (auto count = 1 + drawBelow(2); count > 0; --count)
        handlers.push_back(drawOurHandler(event, ours));
    return JSONNode::object({member("hooks", JSONNode::array(std::move(handlers)))});
}

// Only where something of the user's stays beside it, or all of it is ours: what becomes empty
// without ours is dropped.
OurHandlers drawOurHandlersInto(JSONNode& file) {
    OurHandlers ours;
    auto& root = *file.objectMembers();
    if (value(root, "hooks") == nullptr) {
        if (drawBool()) return ours;
        insertAnywhere(root, member("hooks", JSONNode::object({})));
    }
    auto& events = *value(root, "hooks")->objectMembers();
    for (auto& event : events) {
        auto& groups = *event.value.arrayElements();
        for (auto& group : groups) {
            auto* hooks = value(*group.objectMembers(), "hooks");
            auto* handlers = hooks ? hooks->arrayElements() : nullptr;
            if (handlers && !handlers->empty() && drawBool())
                insertAnywhere(*handlers, drawOurHandler(event.key, ours));
        }
        if (!groups.empty() && drawBool()) insertAnywhere(groups, drawOurGroup(event.key, ours));
    }
    for (const char* name : {"Start", "Stop", "Ours"})
        if (value(events, name) == nullptr && drawBool())
            insertAnywhere(events, member(name, JSONNode::array({drawOurGroup(name, ours)})));
    return ours;
}

// The text of a file, which is shown where a property does not hold.
std::string drawTextOf(const JSONNode& file) {
    auto text = OrderedJSON::serialize(file, drawBool() ? "\t" : "") + (drawBool() ? "\n" : "");
    RC_LOG() << text;
    return text;
}

RC_GTEST_PROP(HookConfigMergerProperty, inspectionTellsWhatIsThere, ()) {
    const auto spec = sampleSpec();
    auto file = drawForeignFile();
    const auto ours = drawOurHandlersInto(file);
    RC_ASSERT((HookConfigMerger::inspect(drawTextOf(file), spec).value() == ours.state(spec)));
}

RC_GTEST_PROP(HookConfigMergerProperty, installationIsCompleteAndDoneOnce, ()) {
    const auto spec = sampleSpec();
    auto file = drawForeignFile();
    const auto before = drawOurHandlersInto(file).state(spec);
    const auto text = drawTextOf(file);
    const auto installed = HookConfigMerger::install(text, spec).value();
    RC_ASSERT(
        (HookConfigMerger::inspect(installed, spec).value() == HookInstallState::installed()));
    RC_ASSERT(HookConfigMerger::install(installed, spec).value() == installed);
    RC_ASSERT((before == HookInstallState::installed()) == (installed == text));
}

RC_GTEST_PROP(HookConfigMergerProperty, removalLeavesWhatIsForeignAndNoTraceOfTheHelper, ()) {
    const auto spec = sampleSpec();
    const auto foreign = drawForeignFile();
    auto file = foreign;
    drawOurHandlersInto(file);
    const auto text = drawTextOf(file);
    const auto installed = HookConfigMerger::install(text, spec).value();
    const auto removed = HookConfigMerger::uninstall(installed, spec).value().value();
    RC_LOG() << removed;
    RC_ASSERT(
        (OrderedJSON::parse(removed).value() == afterInstallAndUninstall(asRead(foreign), spec)));
    RC_ASSERT(HookConfigMerger::uninstall(removed, spec).value().value() == removed);
    RC_ASSERT(removed.ends_with('\n') == text.ends_with('\n'));
}

}  // namespace
}  // namespace tallowbrook
