#include "Commands/CommandLine.h"

#include <gtest/gtest.h>

#include <CLI/CLI.hpp>
#include <array>
#include <set>
#include <sstream>

namespace tallowbrook::host {
namespace {

// Every command's words, and those before any command.
std::vector<const CLI::App*> commandsOf(const CLI::App& tree) {
    std::vector<const CLI::App*> commands{&tree};
    for (const auto* command : tree.get_subcommands({})) commands.push_back(command);
    return commands;
}

TEST(CommandLine, saysWhatEachOfItsWordsMeans) {
    const CommandLine line;
    const auto commands = commandsOf(line.tree());
    EXPECT_GT(commands.size(), 10U);
    for (const auto* command : commands) {
        EXPECT_FALSE(command->get_description().empty()) << command->get_name();
        for (const auto* option : command->get_options())
            EXPECT_FALSE(option->get_description().empty())
                << command->get_name() << " " << option->get_name();
    }
}

TEST(CommandLine, namesTheStatusesInTheHelpOfEachCommand) {
    const CommandLine line;
    for (const auto* command : commandsOf(line.tree()))
        EXPECT_NE(command->help().find("Exit status: 0 done"), std::string::npos)
            << command->get_name();
}

TEST(CommandLine, helpsOnAScreenOf80Columns) {
    const CommandLine line;
    for (const auto* command : commandsOf(line.tree())) {
        std::istringstream help{command->help()};
        for (std::string row; std::getline(help, row);) EXPECT_LE(row.size(), 80U) << row;
    }
}

TEST(CommandLine, givesNoShortNameTwice) {
    const CommandLine line;
    for (const auto* command : commandsOf(line.tree())) {
        std::set<std::string> names;
        for (const auto* option : command->get_options())
            for (const auto& name : option->get_snames())
                EXPECT_TRUE(names.insert(name).second) << command->get_name() << " -" << name;
    }
}

TEST(CommandLine, takesACommandThatIsAddedToIt) {
    CommandLine line;
    std::string seen;
    auto words = line.add("greet", "Say hello", [&](const TallowbrookPaths& paths) {
        seen = paths.home.string();
        return 7;
    });
    bool loud = false;
    words.addFlag("--loud", loud, "As loud as can be");
    const std::array arguments{"tallowbrook", "greet",  "--loud", "--home",
                               "/one",        "--home", "/two"};
    EXPECT_EQ(line.run(static_cast<int>(arguments.size()), arguments.data()), 7);
    EXPECT_EQ(seen, "/two");
    EXPECT_TRUE(loud);
}

}  // namespace
}  // namespace tallowbrook::host
