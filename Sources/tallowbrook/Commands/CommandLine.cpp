#include "Commands/CommandLine.h"

#include <CLI/CLI.hpp>
#include <filesystem>

#include "Commands/BackupsCommand.h"
#include "Commands/DemoCommand.h"
#include "Commands/DoctorCommand.h"
#include "Commands/ExplainCommand.h"
#include "Commands/FocusCommand.h"
#include "Commands/HealthCommand.h"
#include "Commands/MuteCommand.h"
#include "Commands/NotifyCommand.h"
#include "Commands/PauseCommand.h"
#include "Commands/PreferencesCommand.h"
#include "Commands/SessionsCommand.h"
#include "Commands/SetupCommand.h"
#include "Commands/WatchCommand.h"
#include "EventIngestion/PayloadNormalizer.h"
#include "Output/ExitStatus.h"
#include "Output/StandardStreams.h"

namespace tallowbrook::host {
namespace {

const std::string footer =
    "Every command takes --home DIR, before or after its name.\n"
    "Exit status: 0 done, 1 failed (the reason is on standard error), 2 wrong usage.";

}  // namespace

void CommandWords::addFlag(const std::string& names, bool& target, const std::string& meaning,
                           const std::string& excluded) {
    auto* flag = command_.add_flag(names, target, meaning);
    if (!excluded.empty()) flag->excludes(command_.get_option(excluded));
}

void CommandWords::addOption(const std::string& name, const std::string& valueName,
                             std::optional<std::string>& target, const std::string& meaning) {
    command_.add_option(name, target, meaning)->type_name(valueName);
}

void CommandWords::addOperand(const std::string& name, std::string& target,
                              const std::string& meaning) {
    command_.add_option(name, target, meaning)->required();
}

void CommandWords::addOptionalOperand(const std::string& name, std::optional<std::string>& target,
                                      const std::string& meaning, const std::string& needed) {
    auto* operand = command_.add_option(name, target, meaning);
    if (!needed.empty()) command_.get_option(needed)->needs(operand);
}

void CommandWords::addChoices(const std::string& name, const std::vector<std::string>& choices,
                              std::vector<std::string>& targets, const std::string& meaning) {
    auto* option = command_.add_option(name, targets, meaning)->check(CLI::IsMember(choices));
    // Or an option would take the word behind its value for another value.
    if (name.starts_with('-')) option->allow_extra_args(false);
}

CommandLine::CommandLine()
    : tree_{std::make_unique<CLI::App>(
          "Tells you which of your coding agents waits for you, has finished or failed.",
          "tallowbrook")} {
    tree_->footer(footer);
    tree_->set_version_flag("--version",
                            "tallowbrook " + std::string{PayloadNormalizer::adapterVersion});
    tree_->require_subcommand(0, 1);
    // With this, "--home" may also stand behind the command word.
    tree_->fallthrough();
    tree_->add_option("--home", home_, "The data directory to work on")
        ->type_name("DIR")
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
    action_ = [this](const TallowbrookPaths&) {
        return StandardStreams::showAsResult(tree_->help());
    };
    // In the order in which the help lists them: the daily ones first.
    addWatchCommand(*this);
    addSessionsCommand(*this);
    addExplainCommand(*this);
    addFocusCommands(*this);
    addPauseCommands(*this);
    addMuteCommands(*this);
    addPreferencesCommand(*this);
    addNotifyCommand(*this);
    addSetupCommands(*this);
    addBackupsCommands(*this);
    addHealthCommand(*this);
    addDoctorCommand(*this);
    addDemoCommand(*this);
}

CommandLine::~CommandLine() = default;

CommandWords CommandLine::add(const std::string& name, const std::string& description,
                              Action action, const std::string& moreHelp) {
    auto* command = tree_->add_subcommand(name, description);
    command->footer(moreHelp.empty() ? footer : footer + "\n" + moreHelp);
    command->callback([this, action = std::move(action)] { action_ = action; });
    return CommandWords{*command};
}

int CommandLine::run(int argc, const char* const* argv) {
    try {
        tree_->parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return tree_->exit(error) == 0 ? ExitStatus::done : ExitStatus::wrongUsage;
    }
    return action_(paths());
}

TallowbrookPaths CommandLine::paths() const {
    if (!home_) return TallowbrookPaths::standard();
    return {home_->empty() ? std::filesystem::path{} : std::filesystem::absolute(*home_)};
}

}  // namespace tallowbrook::host
