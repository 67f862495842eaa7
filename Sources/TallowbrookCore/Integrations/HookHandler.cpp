#include "Integrations/HookHandler.h"

#include <algorithm>
#include <span>
#include <utility>

namespace tallowbrook {
namespace {

using Members = std::vector<JSONMember>;
using Nodes = std::vector<JSONNode>;

constexpr std::string_view helperName = "tallowbrook-hook";

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

// In order and nothing more: other arguments make the helper do something else.
bool hasArguments(const JSONNode& handler, std::span<const std::string> arguments) {
    const auto* args = value(*handler.objectMembers(), "args");
    const auto* elements = args ? args->arrayElements() : nullptr;
    return elements && std::ranges::equal(*elements, arguments,
                                          [](const JSONNode& element, const std::string& argument) {
                                              const auto* text = element.stringValue();
                                              return text && *text == argument;
                                          });
}

// The helper may be called by any path, through a shell or with arguments, but its name must stand
// as a word of its own: a user's "mytallowbrook-hook" or "tallowbrook-hook-old" is not ours to take
// away.
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

}  // namespace

bool HookHandler::isOurs(const JSONNode& handler) {
    const auto* command = commandText(handler);
    return command && mentionsHelper(*command);
}

bool HookHandler::isExact(const JSONNode& handler, const HookInstallSpec& spec) {
    const auto* command = commandText(handler);
    if (!command || *command != spec.command.text()) return false;
    // A shell line holds its arguments itself.
    const auto* exec = std::get_if<HookCommand::Exec>(&spec.command.form);
    return !exec || hasArguments(handler, exec->arguments);
}

// Without a matcher, so that the agent calls the helper for every tool.
JSONNode HookHandler::newGroup(const std::string& event, const HookInstallSpec& spec) {
    Nodes handlers;
    handlers.push_back(handlerNode(spec, event));
    Members members;
    members.push_back(member("hooks", JSONNode::array(std::move(handlers))));
    return JSONNode::object(std::move(members));
}

}  // namespace tallowbrook
