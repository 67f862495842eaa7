#include "ProcessTimer.h"

#include <fcntl.h>
#include <fmt/core.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>

extern char** environ;

namespace tallowbrook::bench {
namespace {

[[noreturn]] void giveUp(const std::string& reason) {
    fmt::print(stderr, "benchmark: {}\n", reason);
    std::exit(1);
}

}  // namespace

pid_t start(const Program& program) {
    std::vector<char*> arguments;
    for (const auto& argument : program.arguments)
        arguments.push_back(const_cast<char*>(argument.c_str()));
    arguments.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, program.standardInput.c_str(),
                                     O_RDONLY, 0);
    if (!program.standardOutput.empty())
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, program.standardOutput.c_str(),
                                         O_WRONLY, 0);
    pid_t pid = 0;
    const int error =
        posix_spawnp(&pid, arguments[0], &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0) giveUp("cannot start " + program.arguments[0]);
    return pid;
}

double timeRun(const Program& program) {
    const auto begin = std::chrono::steady_clock::now();
    const pid_t pid = start(program);
    int status = 0;
    waitpid(pid, &status, 0);
    const std::chrono::duration<double, std::micro> taken =
        std::chrono::steady_clock::now() - begin;
    if (status != 0) giveUp(program.arguments[0] + " failed");
    return taken.count();
}

ScratchDirectory::ScratchDirectory() {
    std::string name = (std::filesystem::temp_directory_path() / "tallowbrook-bench-XXXXXX");
    if (mkdtemp(name.data()) == nullptr) giveUp("cannot make a temporary directory");
    path = name;
}

ScratchDirectory::~ScratchDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
}

}  // namespace tallowbrook::bench
