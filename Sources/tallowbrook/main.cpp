// tallowbrook: the host program. Every command is one function; this file only parses its words.
#include <CLI/CLI.hpp>
#include <csignal>
#include <cstdio>
#include <exception>
#include <optional>
#include <string>

#include "EventIngestion/PayloadNormalizer.h"
#include "PreferencesCommand.h"
#include "SessionsCommand.h"
#include "WatchCommand.h"

namespace {

using namespace tallowbrook;
using namespace tallowbrook::host;

constexpr int failure = 1;
constexpr int usageError = 2;

constexpr auto footer =
    "Every command takes --home DIR, before or after its name.\n"
    "Exit status: 0 done, 1 failed (the reason is on standard error), 2 wrong usage.";

struct CommandLine {
    std::string home;
    bool once = false;
    bool json = false;
    bool all = false;
    PreferenceChange change;

    CLI::App app{"Tells you which of your coding agents waits for you, has finished or failed."};
    CLI::App* watch = nullptr;
    CLI::App* sessions = nullptr;
    CLI::App* preferences = nullptr;
    CLI::Option* changedName = nullptr;
    CLI::Option* homeOption = nullptr;

    CommandLine() {
        app.name("tallowbrook");
        app.footer(footer);
        app.set_version_flag("--version",
                             "tallowbrook " + std::string{PayloadNormalizer::adapterVersion});
        app.require_subcommand(0, 1);
        // With this, "--home" may also stand behind the command word.
        app.fallthrough();
        homeOption = app.add_option("--home", home, "The data directory to work on")
                         ->type_name("DIR")
                         ->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);

        watch = app.add_subcommand("watch", "Read what the agents report and tell the user");
        watch->add_flag("--once", once, "Read what is there, list the sessions, and end");
        sessions = app.add_subcommand("sessions", "List the sessions");
        sessions->add_flag("--json", json, "As a JSON array, for programs");
        sessions->add_flag("--all", all, "Also those not heard of for more than a day");
        preferences = app.add_subcommand("preferences", "Show or change what you are told");
        changedName = preferences->add_option("NAME", change.name, "The preference to change");
        auto* value = preferences->add_option("VALUE", change.value, "Its new value");
        changedName->needs(value);
        for (auto* command : app.get_subcommands({})) command->footer(footer);
    }

    TallowbrookPaths paths() const {
        return *homeOption ? TallowbrookPaths{home} : TallowbrookPaths::standard();
    }

    int run() const {
        if (*watch) return host::watch(paths(), once ? WatchMode::once : WatchMode::stay);
        if (*sessions)
            return listSessions(paths(), all ? ListScope::all : ListScope::recent,
                                json ? ListFormat::json : ListFormat::table);
        if (*preferences)
            return host::preferences(paths(), *changedName ? std::optional{change} : std::nullopt);
        std::cout << app.help();
        return 0;
    }
};

}  // namespace

int main(int argc, char** argv) {
    // A limit to the size of files is then an ordinary write error, which can be said.
    std::signal(SIGXFSZ, SIG_IGN);
    try {
        CommandLine commandLine;
        try {
            commandLine.app.parse(argc, argv);
        } catch (const CLI::ParseError& error) {
            return commandLine.app.exit(error) == 0 ? 0 : usageError;
        }
        return commandLine.run();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "tallowbrook: Unexpected failure: %s.\n", error.what());
        return failure;
    }
}
