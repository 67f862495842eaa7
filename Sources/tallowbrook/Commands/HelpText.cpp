#include "Commands/HelpText.h"

#include <fmt/core.h>

#include "Output/PrintableText.h"

namespace tallowbrook::host {
namespace {

constexpr std::size_t screenColumns = 80;
constexpr std::size_t nameColumns = 22;

// "  NAME   MEANING", the meaning broken where the screen ends, the further lines below it.
std::string row(const std::string& name, const std::string& meaning) {
    const auto lines = PrintableText::wrapped(meaning, screenColumns - nameColumns - 1);
    std::string text = "  " + name;
    const bool fits = text.size() + 2 <= nameColumns;
    std::string indent(nameColumns, ' ');
    text += fits ? std::string(nameColumns - text.size(), ' ') : "\n" + indent;
    for (const char c : lines) {
        text += c;
        if (c == '\n') text += indent;
    }
    return text + "\n";
}

// "-y, --yes", "--home DIR", "SESSION"
std::string nameOf(const CLI::Option& option) {
    if (option.get_positional()) return option.get_name(true);
    std::string names;
    for (const auto& name : option.get_snames()) names += (names.empty() ? "-" : ", -") + name;
    for (const auto& name : option.get_lnames()) names += (names.empty() ? "--" : ", --") + name;
    const auto value = option.get_type_size() == 0 ? std::string{} : option.get_type_name();
    // The parser's own words for a type ("TEXT") tell nobody anything.
    return names + (value.empty() ? "" : " " + (value == "TEXT" ? "WORD" : value));
}

std::string usageOf(const CLI::App& command, const std::string& name) {
    const auto* parent = command.get_parent();
    std::string words = parent != nullptr ? parent->get_name() + " " + command.get_name() : name;
    std::string operands;
    bool hasOptions = false;
    for (const auto* option : command.get_options()) {
        if (!option->get_positional()) {
            hasOptions = true;
            continue;
        }
        auto operand = option->get_name(true);
        if (option->get_items_expected_max() > 1) operand += "...";
        operands += option->get_required() ? " " + operand : " [" + operand + "]";
    }
    if (parent == nullptr) operands += " [COMMAND]";
    return "Usage: " + words + operands + (hasOptions ? " [OPTIONS]" : "") + "\n";
}

std::string wrappedLines(const std::string& text) {
    std::string result;
    for (std::size_t begin = 0; begin < text.size();) {
        const auto end = std::min(text.find('\n', begin), text.size());
        const auto line = text.substr(begin, end - begin);
        // What fits may begin with blanks that have a meaning.
        result += line.size() <= screenColumns ? line : PrintableText::wrapped(line, screenColumns);
        result += "\n";
        begin = end + 1;
    }
    return result;
}

}  // namespace

std::string HelpText::make_help(const CLI::App* command, std::string name,
                                CLI::AppFormatMode) const {
    std::string text = wrappedLines(command->get_description()) + usageOf(*command, name);
    std::string operands;
    std::string options;
    for (const auto* option : command->get_options())
        (option->get_positional() ? operands : options) +=
            row(nameOf(*option), option->get_description());
    std::string commands;
    for (const auto* further : command->get_subcommands({}))
        commands += row(further->get_name(), further->get_description());
    if (!commands.empty()) text += "\nCommands:\n" + commands;
    if (!operands.empty()) text += "\n" + operands;
    if (!options.empty()) text += "\nOptions:\n" + options;
    return text + "\n" + wrappedLines(command->get_footer());
}

}  // namespace tallowbrook::host
