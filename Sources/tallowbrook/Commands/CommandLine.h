// The command line of the host: one tree of commands, which the parser, the help, and everything
// else that has to know the words read.
//
// Each command adds its own words. Used by one thread.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "EventBridge/TallowbrookPaths.h"

namespace CLI {
class App;
}

namespace tallowbrook::host {

// The words that one command takes. What they are read into must live as long as the tree: an
// action keeps it (see `add`).
class CommandWords {
 public:
    explicit CommandWords(CLI::App& command) : command_{command} {}

    // A switch such as "--yes,-y"; refused together with the switch `excluded`, where one is named.
    void addFlag(const std::string& names, bool& target, const std::string& meaning,
                 const std::string& excluded = {});

    // An option with a value, such as "--config FILE"; refused together with `excluded`, where that
    // is named.
    void addOption(const std::string& name, const std::string& valueName,
                   std::optional<std::string>& target, const std::string& meaning,
                   const std::string& excluded = {});

    // A word by its place. A required one cannot be left out; an optional one that `needed` names
    // only comes with that one.
    void addOperand(const std::string& name, std::string& target, const std::string& meaning);
    void addOptionalOperand(const std::string& name, std::optional<std::string>& target,
                            const std::string& meaning, const std::string& needed = {});

    // Any number of the choices, each by its place, or behind a "--name" that is repeated.
    void addChoices(const std::string& name, const std::vector<std::string>& choices,
                    std::vector<std::string>& targets, const std::string& meaning);

 private:
    CLI::App& command_;
};

class CommandLine {
 public:
    // Works on a home and gives an exit status. What it captures lives as long as the tree.
    using Action = std::function<int(const TallowbrookPaths& paths)>;

    // With all commands.
    CommandLine();
    CommandLine(const CommandLine&) = delete;
    CommandLine& operator=(const CommandLine&) = delete;
    ~CommandLine();

    // A further command. `moreHelp` stands below what is said of all commands.
    CommandWords add(const std::string& name, const std::string& description, Action action,
                     const std::string& moreHelp = {});

    // Parses and acts. Gives the exit status: that of the action, 2 for words that mean nothing,
    // with the reason on standard error.
    int run(int argc, const char* const* argv);

    // What a program that writes completions or a manual walks.
    const CLI::App& tree() const { return *tree_; }

 private:
    TallowbrookPaths paths() const;

    std::unique_ptr<CLI::App> tree_;
    std::optional<std::string> home_;
    Action action_;
};

}  // namespace tallowbrook::host
