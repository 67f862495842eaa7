#include "Commands/HelpCommand.h"

#include <CLI/CLI.hpp>
#include <memory>

#include "Commands/CommandLine.h"
#include "Commands/UsageError.h"
#include "EventIngestion/PayloadNormalizer.h"
#include "Output/ExitStatus.h"
#include "Output/StandardStreams.h"

namespace tallowbrook::host {
namespace {

constexpr std::string_view exitCodes =
    "Exit statuses, the same for every command that gives them:\n"
    "\n"
    "    0  done; wait: the turn was completed\n"
    "    1  failed, with the reason on standard error\n"
    "    2  the command line means nothing, and nothing was done\n"
    "    3  not as wished, and the output says why: something is not in order\n"
    "       (health, setup, notify), you said no (setup, remove, restore), or\n"
    "       something that helps was done instead (focus, next)\n"
    "    4  agents are set up, but no host runs (health, doctor)\n"
    "    5  the session needs you (wait)\n"
    "    6  the session failed or was broken off (wait)\n"
    "  124  the time is over (wait)\n";

int help(const CommandLine& line, const std::optional<std::string>& topic) {
    if (!topic) return StandardStreams::showAsResult(line.tree().help());
    if (*topic == "exit-codes") return StandardStreams::showAsResult(exitCodes);
    for (const auto* command : line.tree().get_subcommands({}))
        if (command->get_name() == *topic) return StandardStreams::showAsResult(command->help());
    return StandardStreams::fail(unknownCommand(line.tree(), *topic), ExitStatus::wrongUsage);
}

}  // namespace

void addHelpCommands(CommandLine& line) {
    const auto topic = std::make_shared<std::optional<std::string>>();
    auto words = line.add("help", "Show how a command is used",
                          [&line, topic](const TallowbrookPaths&) { return help(line, *topic); });
    words.addOptionalOperand("COMMAND", *topic, "A command, or exit-codes; without, all");
    line.add("version", "Show the version", [](const TallowbrookPaths&) {
        return StandardStreams::showAsResult("tallowbrook " +
                                             std::string{PayloadNormalizer::adapterVersion} + "\n");
    });
}

}  // namespace tallowbrook::host
