#include "RunProgram.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>

#include "Support/Pipe.h"

extern char** environ;

namespace tallowbrook {
namespace {

constexpr std::chrono::seconds patience{60};
constexpr int cannotRun = 127;

void setNonBlocking(const FileDescriptor& file) {
    fcntl(file.number(), F_SETFL, fcntl(file.number(), F_GETFL) | O_NONBLOCK);
}

std::vector<std::string> environmentOf(const Environment& changes) {
    std::vector<std::string> variables;
    for (char** variable = environ; *variable != nullptr; ++variable) {
        const std::string text = *variable;
        if (!changes.contains(text.substr(0, text.find('=')))) variables.push_back(text);
    }
    for (const auto& [name, value] : changes)
        if (value) variables.push_back(name + "=" + *value);
    return variables;
}

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (auto& text : texts) pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

[[noreturn]] void become(const ProgramCall& call, int input, int output, int errors) noexcept {
    std::vector<std::string> words{call.program};
    words.insert(words.end(), call.arguments.begin(), call.arguments.end());
    auto variables = environmentOf(call.environment);
    dup2(input, STDIN_FILENO);
    dup2(output, STDOUT_FILENO);
    dup2(errors, STDERR_FILENO);
    setsid();
    std::signal(SIGPIPE, SIG_DFL);
    if (!call.directory.empty() && chdir(call.directory.c_str()) != 0) _exit(cannotRun);
    call.prepare();
    execve(call.program.c_str(), pointersTo(words).data(), pointersTo(variables).data());
    const std::string complaint = "cannot run " + call.program + ": " + std::strerror(errno);
    [[maybe_unused]] const auto written = write(STDERR_FILENO, complaint.data(), complaint.size());
    _exit(cannotRun);
}

}  // namespace

void PrintTo(const ProgramResult& result, std::ostream* stream) {
    *stream << "status " << result.status << ", output " << testing::PrintToString(result.output)
            << ", errors " << testing::PrintToString(result.errors) << ", " << result.unreadInput
            << " bytes of input left";
}

RunningProgram::RunningProgram(const ProgramCall& call)
    : input_{call.input}, inputStaysOpen_{call.inputStaysOpen} {
    std::signal(SIGPIPE, SIG_IGN);
    Pipe input = makePipe();
    Pipe output = makePipe();
    Pipe errors = makePipe();
    pid_ = fork();
    if (pid_ == 0)
        become(call, input.reader.number(), output.writer.number(), errors.writer.number());
    if (pid_ < 0) ADD_FAILURE() << "no child process: " << std::strerror(errno);
    inputReader_ = std::move(input.reader);
    inputWriter_ = std::move(input.writer);
    outputReader_ = std::move(output.reader);
    errorsReader_ = std::move(errors.reader);
    for (const auto* stream : {&inputWriter_, &outputReader_, &errorsReader_})
        setNonBlocking(*stream);
    writeInput();
}

RunningProgram::~RunningProgram() {
    if (isReaped()) return;
    send(SIGKILL);
    waitpid(pid_, nullptr, 0);
}

bool RunningProgram::waitForOutput(std::string_view text) {
    const auto isThere = [&] { return result_.output.find(text) != std::string::npos; };
    exchange(isThere);
    return isThere();
}

bool RunningProgram::waitForErrors(std::string_view text) {
    const auto isThere = [&] { return result_.errors.find(text) != std::string::npos; };
    exchange(isThere);
    return isThere();
}

bool RunningProgram::waitForMoreOutput() {
    const auto hasMore = [&, former = result_.output.size()] {
        return result_.output.size() > former;
    };
    exchange(hasMore);
    return hasMore();
}

void RunningProgram::send(int signal) const {
    if (!isReaped()) kill(pid_, signal);
}

ProgramResult RunningProgram::wait() {
    exchange([] { return false; });
    int status = 0;
    while (waitpid(pid_, &status, 0) < 0 && errno == EINTR) continue;
    pid_ = -1;
    result_.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    result_.unreadInput = unreadInput();
    return result_;
}

// Feeds and listens until there is enough, or until the program has closed both its outputs.
void RunningProgram::exchange(const std::function<bool()>& isEnough) {
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (!isEnough() && (outputReader_.isOpen() || errorsReader_.isOpen())) {
        // poll(2) passes over a negative descriptor.
        const int writer = written_ < input_.size() ? inputWriter_.number() : -1;
        std::array<pollfd, 3> streams{{{outputReader_.number(), POLLIN, 0},
                                       {errorsReader_.number(), POLLIN, 0},
                                       {writer, POLLOUT, 0}}};
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0) {
            ADD_FAILURE() << "the program does not end, nor what the test waits for come";
            send(SIGKILL);
            return;
        }
        poll(streams.data(), streams.size(), static_cast<int>(left.count()));
        if (streams[0].revents != 0) readInto(result_.output, outputReader_);
        if (streams[1].revents != 0) readInto(result_.errors, errorsReader_);
        if (streams[2].revents != 0) writeInput();
    }
}

void RunningProgram::writeInput() {
    while (written_ < input_.size()) {
        const ssize_t count =
            write(inputWriter_.number(), input_.data() + written_, input_.size() - written_);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return;
        written_ += static_cast<std::size_t>(count);
    }
    if (!inputStaysOpen_) inputWriter_ = FileDescriptor{};
}

void RunningProgram::readInto(std::string& text, FileDescriptor& stream) {
    std::array<char, 65536> buffer{};
    const ssize_t count = read(stream.number(), buffer.data(), buffer.size());
    if (count > 0)
        text.append(buffer.data(), static_cast<std::size_t>(count));
    else if (count == 0)
        stream = FileDescriptor{};
}

std::size_t RunningProgram::unreadInput() const {
    int inPipe = 0;
    if (ioctl(inputReader_.number(), FIONREAD, &inPipe) != 0) ADD_FAILURE() << "no FIONREAD";
    return input_.size() - written_ + static_cast<std::size_t>(inPipe);
}

}  // namespace tallowbrook
