// A user of one test with the two agents' directories, for the commands that set agents up. Its
// data home is the user's standard one, since no other is set up for the agents' own files.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "Support/EnvironmentVariable.h"
#include "Support/FileContents.h"
#include "Support/PseudoTerminal.h"
#include "TestHome.h"

namespace tallowbrook {

struct SetupHome : TestHome {
    SetupHome() {
        // An agent of the machine's own may still be found: in /usr/bin, and where installers put
        // one. So tests name the agents that they mean.
        environment["PATH"] = "/usr/bin:/bin";
        environment["CLAUDE_CONFIG_DIR"] = std::nullopt;
        environment["CODEX_HOME"] = std::nullopt;
        environment["NO_COLOR"] = std::nullopt;
        const EnvironmentVariable userHome{"HOME", user.string()};
        const EnvironmentVariable dataHome{"XDG_DATA_HOME", std::nullopt};
        paths = TallowbrookPaths::standard();
    }

    std::filesystem::path user = directory.path / "user";
    std::filesystem::path claudeFile = user / ".claude" / "settings.json";
    std::filesystem::path codexFile = user / ".codex" / "hooks.json";

    // The call with its standard input on the terminal, which outlives it.
    static ProgramCall onTerminal(const PseudoTerminal& terminal, ProgramCall call) {
        call.prepare = [&terminal] { dup2(open(terminal.path.c_str(), O_RDWR), STDIN_FILENO); };
        return call;
    }

    // Runs the host on a terminal, on which each answer is typed when the next question comes.
    ProgramResult hostWithAnswers(std::vector<std::string> arguments,
                                  const std::vector<std::string>& answers) const {
        const PseudoTerminal terminal;
        RunningProgram host{onTerminal(terminal, hostCall(std::move(arguments)))};
        std::string seen;
        for (const auto& answer : answers) {
            while (host.output().substr(seen.size()).find("[y/N] ") == std::string::npos)
                if (!host.waitForMoreOutput()) return host.wait();
            seen = host.output();
            EXPECT_TRUE(terminal.type(answer + "\n"));
        }
        return host.wait();
    }

    // Every file below the test's directory with its contents.
    std::map<std::string, std::string> tree() const {
        std::map<std::string, std::string> files;
        for (const auto& entry : std::filesystem::recursive_directory_iterator{directory.path})
            files[entry.path()] = entry.is_regular_file() ? contentsOf(entry.path()) : "";
        return files;
    }

    std::vector<std::filesystem::path> backups() const {
        std::vector<std::filesystem::path> files;
        if (!std::filesystem::exists(paths.backupsDirectory())) return files;
        for (const auto& entry :
             std::filesystem::recursive_directory_iterator{paths.backupsDirectory()})
            if (entry.is_regular_file()) files.push_back(entry.path());
        return files;
    }
};

}  // namespace tallowbrook
