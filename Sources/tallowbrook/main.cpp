// tallowbrook: the host program. Every command is one function; this file only parses its words.
#include <CLI/CLI.hpp>
#include <csignal>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <functional>
#include <iostream>
#include <optional>
#include <string>

#include "Commands/BackupsCommand.h"
#include "Commands/DemoCommand.h"
#include "Commands/DoctorCommand.h"
#include "Commands/ExplainCommand.h"
#include "Commands/FocusCommand.h"
#include "Commands/HealthCommand.h"
#include "Commands/PreferencesCommand.h"
#include "Commands/SessionsCommand.h"
#include "Commands/SetupCommand.h"
#include "Commands/WatchCommand.h"
#include "EventIngestion/PayloadNormalizer.h"
#include "Output/ExitStatus.h"

namespace {

using namespace tallowbrook;
using namespace tallowbrook::host;

const std::string footer =
    "Every command takes --home DIR, before or after its name.\n"
    "Exit status: 0 done, 1 failed (the reason is on standard error), 2 wrong usage.";
const std::string changeFooter =
    footer +
    "\n3: a question was answered with no; that file was left as it is.\n"
    "A configuration file is changed only after a yes or with --yes, and its backup is kept.\n"
    "Without a terminal to ask on and without --yes, nothing is changed and the status is 1.";
const std::string setupFooter =
    changeFooter +
    "\nThe helper and the database are put into the data directory before the first question.";
const std::string healthFooter =
    footer +
    "\n3: an agent's state is partial, needs repair, silent or unreadable.\n"
    "States: not set up, partial, needs repair, waiting (for the first event since the setup), "
    "silent\n(for more than ten minutes after it), receiving, unreadable.";

const std::string focusFooter =
    footer + "\n3: the window itself was not found, but something that helps was done instead.";

class CommandLine {
 public:
    CommandLine() {
        app_.name("tallowbrook");
        app_.footer(footer);
        app_.set_version_flag("--version",
                              "tallowbrook " + std::string{PayloadNormalizer::adapterVersion});
        app_.require_subcommand(0, 1);
        // With this, "--home" may also stand behind the command word.
        app_.fallthrough();
        homeOption_ = app_.add_option("--home", home_, "The data directory to work on")
                          ->type_name("DIR")
                          ->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
        addWatching();
        addSessions();
        addPreferences();
        addSetup();
        addBackups();
        addHealth();
        addHelp();
    }

    // Gives an exit status.
    int run(int argc, char** argv) {
        try {
            app_.parse(argc, argv);
        } catch (const CLI::ParseError& error) {
            return app_.exit(error) == 0 ? 0 : ExitStatus::wrongUsage;
        }
        return action_();
    }

 private:
    CLI::App* add(const char* name, const char* description, std::function<int()> action,
                  const std::string& ending = footer) {
        auto* command = app_.add_subcommand(name, description);
        command->footer(ending);
        command->callback([this, action = std::move(action)] { action_ = action; });
        return command;
    }

    void addAgents(CLI::App* command, const std::string& whenUnnamed) {
        command->add_option("AGENT", choice_.names, whenUnnamed)
            ->check(CLI::IsMember(agentNames()));
        addConfigFile(command);
    }

    void addConfigFile(CLI::App* command) {
        command->add_option("--config", choice_.configFile, "The configuration file to work on")
            ->type_name("FILE");
    }

    void addReview(CLI::App* command) {
        auto* dryRun = command->add_flag("--dry-run", review_.dryRun,
                                         "Show what would change, and write nothing");
        command->add_flag("--yes,-y", review_.assumeYes, "Agree to every change beforehand")
            ->excludes(dryRun);
    }

    void addWatching() {
        add("watch", "Read what the agents report and tell the user", [this] {
            return host::watch(paths(), once_ ? WatchMode::once : WatchMode::stay);
        })->add_flag("--once", once_, "Read what is there, list the sessions, and end");
    }

    void addSessions() {
        auto* sessions = add("sessions", "List the sessions", [this] {
            return listSessions(paths(), all_ ? ListScope::all : ListScope::recent, format());
        });
        sessions->add_flag("--json", json_, "As a JSON array, for programs");
        sessions->add_flag("--all", all_, "Also those not heard of for more than a day");

        addSession(add("explain", "Tell why a session has its status, and its last events",
                       [this] { return explain(paths(), session_); }));
        addSession(add(
            "focus", "Bring the window of a session to the front",
            [this] { return focus(paths(), session_); }, focusFooter));
        add(
            "next", "Focus the next session that waits for you",
            [this] { return focusNext(paths()); }, focusFooter);
    }

    void addPreferences() {
        auto* preferences = add("preferences", "Show or change what you are told", [this] {
            return host::preferences(paths(),
                                     *changedName_ ? std::optional{change_} : std::nullopt);
        });
        changedName_ = preferences->add_option("NAME", change_.name, "The preference to change");
        changedName_->needs(preferences->add_option("VALUE", change_.value, "Its new value"));
    }

    void addSetup() {
        auto* setUp = add(
            "setup", "Let the agents report to tallowbrook",
            [this] { return host::setup(paths(), choice_, review_); }, setupFooter);
        addAgents(setUp, agentNameChoice() + "; without names, those that are there");
        addReview(setUp);
        auto* remove = add(
            "remove", "Take the hooks out of the agents' configuration again",
            [this] { return removeSetup(paths(), choice_, review_); }, changeFooter);
        addAgents(remove, agentNameChoice() + "; without names, those that are there");
        addReview(remove);
    }

    void addBackups() {
        auto* backups = add("backups", "List what was in the configuration files before",
                            [this] { return listBackups(paths(), choice_); });
        addAgents(backups, agentNameChoice() + "; without names, all");
        auto* restore = add(
            "restore", "Put a backup of a configuration file back",
            [this] { return restoreBackup(paths(), choice_, backup_, review_); }, changeFooter);
        restore->add_option("BACKUP", backup_,
                            "Its number in the list, its name or its path; without, the newest");
        restore->add_option("--agent", choice_.names, "Only backups of " + agentNameChoice())
            ->check(CLI::IsMember(agentNames()))
            // Or it would take the backup behind it for another agent.
            ->allow_extra_args(false);
        addConfigFile(restore);
        addReview(restore);
    }

    void addHealth() {
        auto* health = add(
            "health", "Tell whether the agents' events arrive",
            [this] { return showHealth(paths(), choice_, format()); }, healthFooter);
        addAgents(health, agentNameChoice() + "; without names, all");
        health->add_flag("--json", json_, "As a JSON object, for programs");
    }

    void addHelp() {
        add("doctor", "Report what is installed and stored, for a request for help",
            [this] { return doctor(paths()); });
        add("demo", "Show what the lists look like, with made-up sessions", [] { return demo(); });
    }

    void addSession(CLI::App* command) {
        command
            ->add_option("SESSION", session_, "Its number in the list, or the beginning of its id")
            ->required();
    }

    ListFormat format() const { return json_ ? ListFormat::json : ListFormat::table; }

    TallowbrookPaths paths() const {
        if (!*homeOption_) return TallowbrookPaths::standard();
        return {home_.empty() ? home_ : std::filesystem::absolute(home_)};
    }

    std::filesystem::path home_;
    bool once_ = false;
    bool json_ = false;
    bool all_ = false;
    PreferenceChange change_;
    AgentChoice choice_;
    ReviewOptions review_;
    std::optional<std::string> backup_;
    std::string session_;

    CLI::App app_{"Tells you which of your coding agents waits for you, has finished or failed."};
    CLI::Option* changedName_ = nullptr;
    CLI::Option* homeOption_ = nullptr;
    std::function<int()> action_ = [this] {
        std::cout << app_.help();
        return 0;
    };
};

}  // namespace

int main(int argc, char** argv) {
    // A limit to the size of files is then an ordinary write error, which can be said.
    std::signal(SIGXFSZ, SIG_IGN);
    try {
        return CommandLine{}.run(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "tallowbrook: Unexpected failure: %s.\n", error.what());
        return ExitStatus::failed;
    }
}
