#include "Integrations/HookConfigMerger.h"

#include <algorithm>
#include <span>
#include <utility>

namespace tallowbrook {
namespace {

using Members = std::vector<JSONMember>;
using Nodes = std::vector<JSONNode>;

template <typename Value>
using Result = std::expected<Value, HookConfigError>;

constexpr std::string_view helperName = "tallowbrook-hook";
constexpr std::string_view indent = "  ";

std::string eventPath(const std::string& event) { return "hooks." + event; }

auto unexpected(std::string path, std::string expectedKind) {
    return std::unexpected(
        HookConfigError::unexpectedStructure(std::move(path), std::move(expectedKind)));
}

bool isBlank(std::string_view text) {
    return text.find_first_not_of(" \n\r\t") == std::string_view::npos;
}

Result<Members> parseRoot(std::string_view text) {
    if (isBlank(text)) return Members{};
    auto root = OrderedJSON::parse(text);
    if (!root) return std::unexpected(HookConfigError::malformedJSON(root.error()));
    auto* members = root->objectMembers();
    if (!members) return std::unexpected(HookConfigError::rootNotObject());
    return std::move(*members);
}

// The events of a "hooks" value.
Result<Members*> eventMembers(JSONNode& hooks) {
    auto* events = hooks.objectMembers();
    if (!events) return unexpected("hooks", "object");
    return events;
}

// The groups of one event.
Result<Nodes*> groupNodes(JSONMember& event) {
    auto* groups = event.value.arrayElements();
    if (!groups) return unexpected(eventPath(event.key), "array");
    return groups;
}

// Null where the group has no "hooks" member. `path` is the event's.
Result<Nodes*> handlerNodes(JSONNode& group, const std::string& path) {
    auto* members = group.objectMembers();
    if (!members) return unexpected(path + "[]", "object");
    auto* hooks = value(*members, "hooks");
    if (!hooks) return nullptr;
    auto* handlers = hooks->arrayElements();
    if (!handlers) return unexpected(path + "[].hooks", "array");
    return handlers;
}

std::span<const JSONNode> all(const Nodes* nodes) {
    return nodes ? std::span{*nodes} : std::span<const JSONNode>{};
}

// The command text of a handler that runs a command; else null.
const std::string* commandText(const JSONNode& handler) {
    const auto* members = handler.objectMembers();
    if (!members) return nullptr;
    const auto* type = value(*members, "type");
    const auto* typeText = type ? type->stringValue() : nullptr;
    if (!typeText || *typeText != "command") return nullptr;
    const auto* command = value(*members, "command");
    return command ? command->stringValue() : nullptr;
}

bool hasArguments(const JSONNode& handler, std::span<const std::string> arguments) {
    const auto* args = value(*handler.objectMembers(), "args");
    const auto* elements = args ? args->arrayElements() : nullptr;
    return elements && std::ranges::equal(*elements, arguments,
                                          [](const JSONNode& element, const std::string& argument) {
                                              const auto* text = element.stringValue();
                                              return text && *text == argument;
                                          });
}

bool isExact(const JSONNode& handler, const HookInstallSpec& spec) {
    const auto* command = commandText(handler);
    if (!command || *command != spec.command.text()) return false;
    const auto* exec = std::get_if<HookCommand::Exec>(&spec.command.form);
    return !exec || hasArguments(handler, exec->arguments);
}

bool mentionsHelper(std::string_view command) {
    constexpr std::string_view before = "/ '\"";
    constexpr std::string_view after = " '\"";
    for (auto start = command.find(helperName); start != std::string_view::npos;
         start = command.find(helperName, start + 1)) {
        const auto end = start + helperName.size();
        const bool begins = start == 0 || before.contains(command[start - 1]);
        const bool ends = end == command.size() || after.contains(command[end]);
        if (begins && ends) return true;
    }
    return false;
}

bool isOurs(const JSONNode& handler) {
    const auto* command = commandText(handler);
    return command && mentionsHelper(*command);
}

JSONMember member(std::string key, JSONNode value) {
    return {std::move(key), std::nullopt, std::move(value)};
}

JSONNode handlerNode(const HookInstallSpec& spec, const std::string& event) {
    Members members;
    members.push_back(member("type", JSONNode::string("command")));
    members.push_back(member("command", JSONNode::string(spec.command.text())));
    if (const auto* exec = std::get_if<HookCommand::Exec>(&spec.command.form)) {
        Nodes arguments;
        for (const auto& argument : exec->arguments)
            arguments.push_back(JSONNode::string(argument));
        members.push_back(member("args", JSONNode::array(std::move(arguments))));
    }
    if (!spec.eventsWithoutTimeout.contains(event))
        members.push_back(member("timeout", JSONNode::number(std::to_string(spec.timeoutSeconds))));
    return JSONNode::object(std::move(members));
}

JSONNode newGroup(const std::string& event, const HookInstallSpec& spec) {
    Nodes handlers;
    handlers.push_back(handlerNode(spec, event));
    Members members;
    members.push_back(member("hooks", JSONNode::array(std::move(handlers))));
    return JSONNode::object(std::move(members));
}

enum class Removal { staleOnly, allOfOurs };

// Gives whether anything was removed. A group or event that this empties goes too; one that was
// empty before stays.
Result<bool> removeHandlers(Members& events, const HookInstallSpec& spec, Removal removal) {
    const auto isUnwanted = [&](const JSONNode& handler) {
        return isOurs(handler) && (removal == Removal::allOfOurs || !isExact(handler, spec));
    };
    bool removedAny = false;
    for (auto event = events.begin(); event != events.end();) {
        const auto groups = groupNodes(*event);
        if (!groups) return std::unexpected(groups.error());
        bool removedHere = false;
        for (auto group = (*groups)->begin(); group != (*groups)->end();) {
            const auto handlers = handlerNodes(*group, eventPath(event->key));
            if (!handlers) return std::unexpected(handlers.error());
            const bool removed = *handlers && std::erase_if(**handlers, isUnwanted) > 0;
            removedHere |= removed;
            group = removed && (*handlers)->empty() ? (*groups)->erase(group) : group + 1;
        }
        removedAny |= removedHere;
        event = removedHere && (*groups)->empty() ? events.erase(event) : event + 1;
    }
    return removedAny;
}

// The groups must have the expected structure.
bool hasExactHandler(const JSONNode& groups, const HookInstallSpec& spec) {
    const auto isWanted = [&](const JSONNode& handler) { return isExact(handler, spec); };
    return std::ranges::any_of(*groups.arrayElements(), [&](const JSONNode& group) {
        const auto* handlers = value(*group.objectMembers(), "hooks");
        return handlers && std::ranges::any_of(*handlers->arrayElements(), isWanted);
    });
}

// Gives whether anything was added. The events must have passed `removeHandlers`.
bool addMissingHandlers(Members& events, const HookInstallSpec& spec) {
    bool added = false;
    for (const auto& name : spec.events) {
        const auto event = std::ranges::find(events, name, &JSONMember::key);
        if (event == events.end()) {
            Nodes groups;
            groups.push_back(newGroup(name, spec));
            events.push_back(member(name, JSONNode::array(std::move(groups))));
        } else {
            if (hasExactHandler(event->value, spec)) continue;
            event->value.arrayElements()->push_back(newGroup(name, spec));
        }
        added = true;
    }
    return added;
}

// The file's own way with a line feed at its end is kept.
std::string render(Members root, std::string_view original) {
    auto text = OrderedJSON::serialize(JSONNode::object(std::move(root)), indent);
    if (original.empty() || original.ends_with('\n')) text += '\n';
    return text;
}

}  // namespace

HookInstallState HookInstallState::partial(std::vector<std::string> missingEvents) {
    return {Partial{std::move(missingEvents)}};
}

HookConfigError HookConfigError::malformedJSON(JSONParseError error) {
    return {MalformedJSON{std::move(error)}};
}

HookConfigError HookConfigError::unexpectedStructure(std::string path, std::string expectedKind) {
    return {UnexpectedStructure{std::move(path), std::move(expectedKind)}};
}

std::string HookConfigError::description() const {
    struct Text {
        std::string operator()(const MalformedJSON& malformed) const {
            return "The file is not valid JSON (" + malformed.error.description() +
                   "). It was not modified.";
        }
        std::string operator()(const UnexpectedStructure& place) const {
            return "Unexpected structure at " + place.path + " (expected " + place.expectedKind +
                   "). The merge is ambiguous, so the file was not modified.";
        }
        std::string operator()(const RootNotObject&) const {
            return "The file's top-level value is not a JSON object. It was not modified.";
        }
    };
    return std::visit(Text{}, reason);
}

Result<HookInstallState> HookConfigMerger::inspect(const std::optional<std::string>& text,
                                                   const HookInstallSpec& spec) {
    auto root = parseRoot(text.value_or(""));
    if (!root) return std::unexpected(root.error());
    auto* hooks = value(*root, "hooks");
    if (!hooks) return HookInstallState::notConfigured();
    const auto events = eventMembers(*hooks);
    if (!events) return std::unexpected(events.error());
    // Every event before any group: of several surprises the outermost is told.
    for (auto& event : **events) {
        const auto groups = groupNodes(event);
        if (!groups) return std::unexpected(groups.error());
    }

    std::set<std::string> covered;
    int stale = 0;
    for (auto& event : **events) {
        for (auto& group : *event.value.arrayElements()) {
            const auto handlers = handlerNodes(group, eventPath(event.key));
            if (!handlers) return std::unexpected(handlers.error());
            for (const auto& handler : all(*handlers)) {
                if (isExact(handler, spec))
                    covered.insert(event.key);
                else if (isOurs(handler))
                    ++stale;
            }
        }
    }
    if (stale > 0) return HookInstallState::needsRepair(stale);

    std::vector<std::string> missing;
    std::ranges::copy_if(spec.events, std::back_inserter(missing),
                         [&](const std::string& event) { return !covered.contains(event); });
    if (missing.empty()) return HookInstallState::installed();
    if (missing.size() == spec.events.size()) return HookInstallState::notConfigured();
    return HookInstallState::partial(std::move(missing));
}

Result<std::string> HookConfigMerger::install(const std::optional<std::string>& text,
                                              const HookInstallSpec& spec) {
    std::string original = text.value_or("");
    auto root = parseRoot(original);
    if (!root) return std::unexpected(root.error());

    auto* hooks = value(*root, "hooks");
    Members newEvents;
    Members* events = &newEvents;
    if (hooks) {
        const auto found = eventMembers(*hooks);
        if (!found) return std::unexpected(found.error());
        events = *found;
    }
    const auto removed = removeHandlers(*events, spec, Removal::staleOnly);
    if (!removed) return std::unexpected(removed.error());
    const bool added = addMissingHandlers(*events, spec);
    if (!*removed && !added) return original;

    if (!hooks) root->push_back(member("hooks", JSONNode::object(std::move(newEvents))));
    return render(std::move(*root), original);
}

Result<std::optional<std::string>> HookConfigMerger::uninstall(
    const std::optional<std::string>& text, const HookInstallSpec& spec) {
    if (!text) return text;
    auto root = parseRoot(*text);
    if (!root) return std::unexpected(root.error());
    const auto hooks = std::ranges::find(*root, "hooks", &JSONMember::key);
    if (hooks == root->end()) return text;

    const auto events = eventMembers(hooks->value);
    if (!events) return std::unexpected(events.error());
    const auto removed = removeHandlers(**events, spec, Removal::allOfOurs);
    if (!removed) return std::unexpected(removed.error());
    if (!*removed) return text;
    if ((*events)->empty()) root->erase(hooks);
    return render(std::move(*root), *text);
}

}  // namespace tallowbrook
