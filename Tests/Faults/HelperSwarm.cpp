#include "HelperSwarm.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

#include "Support/FileContents.h"
#include "Support/Pipe.h"

extern char** environ;

namespace tallowbrook {
namespace {

constexpr int cannotRun = 127;

}  // namespace

HelperSwarm::HelperSwarm(const TestHome& home)
    : home_{home}, output_{home.directory.path / "printed-by-helpers"} {
    Pipe gate = makePipe();
    gateReader_ = std::move(gate.reader);
    gateWriter_ = std::move(gate.writer);
    writeContents(output_, "");
}

HelperSwarm::~HelperSwarm() {
    for (const pid_t pid : running_) kill(pid, SIGKILL);
    for (const pid_t pid : running_) waitpid(pid, nullptr, 0);
}

bool HelperSwarm::add(const std::string& payload) {
    // Small enough for the pipe to hold, so nobody has to feed it.
    Pipe input = makePipe();
    if (write(input.writer.number(), payload.data(), payload.size()) !=
        static_cast<ssize_t>(payload.size()))
        ADD_FAILURE() << "the payload does not fit";
    const ProgramCall call = home_.hookCall({"claude-code"});
    const pid_t pid = fork();
    if (pid == 0) become(call, input.reader.number());
    if (pid < 0) return false;
    running_.push_back(pid);
    return true;
}

void HelperSwarm::become(const ProgramCall& call, int input) const noexcept {
    std::vector<std::string> words{call.program};
    words.insert(words.end(), call.arguments.begin(), call.arguments.end());
    std::vector<char*> arguments;
    for (auto& word : words) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    for (const auto& [name, value] : call.environment) {
        if (value)
            setenv(name.c_str(), value->c_str(), 1);
        else
            unsetenv(name.c_str());
    }
    const int output = open(output_.c_str(), O_WRONLY | O_APPEND);
    dup2(input, STDIN_FILENO);
    dup2(output, STDOUT_FILENO);
    dup2(output, STDERR_FILENO);
    setsid();
    // The gate is open once nobody can write to it any more.
    close(gateWriter_.number());
    char nothing = 0;
    while (read(gateReader_.number(), &nothing, 1) < 0 && errno == EINTR) continue;
    execve(call.program.c_str(), arguments.data(), environ);
    _exit(cannotRun);
}

void HelperSwarm::letGo() { gateWriter_ = FileDescriptor{}; }

bool HelperSwarm::isRunning() {
    std::erase_if(running_, [this](pid_t pid) {
        int status = 0;
        if (waitpid(pid, &status, WNOHANG) != pid) return false;
        if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) ++failures;
        return true;
    });
    return !running_.empty();
}

void HelperSwarm::wait() {
    for (const pid_t pid : running_) {
        int status = 0;
        while (waitpid(pid, &status, 0) < 0 && errno == EINTR) continue;
        if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) ++failures;
    }
    running_.clear();
}

std::string HelperSwarm::printed() const { return contentsOf(output_); }

}  // namespace tallowbrook
