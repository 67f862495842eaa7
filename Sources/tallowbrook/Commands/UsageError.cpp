#include "Commands/UsageError.h"

#include <fmt/core.h>

#include <CLI/CLI.hpp>

#include "Output/NearestWord.h"

namespace tallowbrook::host {
namespace {

using Words = std::vector<std::string>;

const CLI::App& givenCommand(const CLI::App& tree) {
    const auto given = tree.get_subcommands();
    return given.empty() ? tree : *given.front();
}

Words optionsOf(const CLI::App& command) {
    Words names;
    for (const auto* option : command.get_options())
        for (const auto& name : option->get_lnames()) names.push_back("--" + name);
    return names;
}

// Where to read on.
std::string help(const CLI::App& tree) {
    const auto& command = givenCommand(tree);
    return &command == &tree ? "\"tallowbrook help\" lists the commands."
                             : "\"tallowbrook help " + command.get_name() + "\" shows its words.";
}

Sentence unexpected(const CLI::App& tree) {
    const auto words = tree.remaining(true);
    if (words.empty()) return Sentence{"There is a word too many"}.followedBy(help(tree));
    const auto& word = words.front();
    const auto& command = givenCommand(tree);
    if (word.starts_with('-') && word.size() > 1) {
        auto known = optionsOf(tree);
        if (&command != &tree)
            for (auto& name : optionsOf(command)) known.push_back(std::move(name));
        const auto meant = suggestion(word, known);
        const auto text = fmt::format("Unknown option \"{}\"{}", word, meant);
        return meant.empty() ? Sentence{text}.followedBy(help(tree)) : Sentence{text};
    }
    if (&command == &tree) return unknownCommand(tree, word);
    return Sentence{fmt::format("\"{}\" is one word too many for \"{}\"", word, command.get_name())}
        .followedBy(help(tree));
}

Sentence missing(const CLI::App& tree) {
    const auto& command = givenCommand(tree);
    for (const auto* option : command.get_options())
        if (option->get_required() && option->count() == 0)
            return Sentence{fmt::format("\"{}\" needs {}: {}", command.get_name(),
                                        option->get_name(true), option->get_description())}
                .followedBy(help(tree));
    return Sentence{"Something is missing"}.followedBy(help(tree));
}

// The parser puts the option's name before what its own or our checks say.
std::pair<std::string, std::string> parted(const std::string& text, const std::string& by) {
    const auto place = text.find(by);
    if (place == std::string::npos) return {text, ""};
    return {text.substr(0, place), text.substr(place + by.size())};
}

}  // namespace

Sentence unknownCommand(const CLI::App& tree, const std::string& word) {
    Words commands;
    for (const auto* command : tree.get_subcommands({}))
        if (!command->get_group().empty()) commands.push_back(command->get_name());
    const auto meant = suggestion(word, commands);
    const auto text = fmt::format("Unknown command \"{}\"{}", word, meant);
    return meant.empty() ? Sentence{text}.followedBy(help(tree)) : Sentence{text};
}

Sentence usageError(const CLI::App& tree, const CLI::ParseError& error) {
    const std::string text = error.what();
    if (dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr) return unexpected(tree);
    if (dynamic_cast<const CLI::ArgumentMismatch*>(&error) != nullptr)
        return Sentence{fmt::format("{} needs a value", parted(text, ":").first)}.followedBy(
            help(tree));
    if (dynamic_cast<const CLI::ExcludesError*>(&error) != nullptr) {
        const auto [one, other] = parted(text, " excludes ");
        return Sentence{fmt::format("{} and {} do not go together", one, other)};
    }
    if (dynamic_cast<const CLI::RequiresError*>(&error) != nullptr) {
        const auto [one, other] = parted(text, " requires ");
        return Sentence{fmt::format("{} needs {} too", one, other)}.followedBy(help(tree));
    }
    if (dynamic_cast<const CLI::RequiredError*>(&error) != nullptr) return missing(tree);
    if (dynamic_cast<const CLI::ValidationError*>(&error) != nullptr)
        if (const auto why = parted(text, ": ").second; !why.empty()) return Sentence{why};
    return Sentence{text}.followedBy(help(tree));
}

}  // namespace tallowbrook::host
