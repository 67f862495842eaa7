#include "Integrations/ProcessLaunch.h"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>

extern char** environ;

namespace tallowbrook {
namespace {

// How a child differs from its parent, see posix_spawn(3).
class SpawnSettings {
 public:
    SpawnSettings() {
        hasActions_ = posix_spawn_file_actions_init(&actions_) == 0;
        hasAttributes_ = posix_spawnattr_init(&attributes_) == 0;
    }
    ~SpawnSettings() {
        if (hasActions_) posix_spawn_file_actions_destroy(&actions_);
        if (hasAttributes_) posix_spawnattr_destroy(&attributes_);
    }
    SpawnSettings(const SpawnSettings&) = delete;
    SpawnSettings& operator=(const SpawnSettings&) = delete;

    bool prepare(int output) {
        short flags = POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF;
        return hasActions_ && hasAttributes_ && connectStreams(output) &&
               ProcessLaunch::closeOtherDescriptors(actions_, flags) && resetSignals() &&
               posix_spawnattr_setflags(&attributes_, flags) == 0;
    }

    const posix_spawn_file_actions_t* actions() const { return &actions_; }
    const posix_spawnattr_t* attributes() const { return &attributes_; }

 private:
    bool connectStreams(int output) {
        constexpr const char* nullDevice = "/dev/null";
        return posix_spawn_file_actions_adddup2(&actions_, output, STDOUT_FILENO) == 0 &&
               posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, nullDevice, O_RDONLY, 0) ==
                   0 &&
               posix_spawn_file_actions_addopen(&actions_, STDERR_FILENO, nullDevice, O_WRONLY,
                                                0) == 0;
    }

    // A parent that ignores or blocks SIGTERM would otherwise start children that cannot be ended.
    bool resetSignals() {
        sigset_t none;
        sigset_t all;
        sigemptyset(&none);
        sigfillset(&all);
        return posix_spawnattr_setsigmask(&attributes_, &none) == 0 &&
               posix_spawnattr_setsigdefault(&attributes_, &all) == 0;
    }

    posix_spawn_file_actions_t actions_{};
    posix_spawnattr_t attributes_{};
    bool hasActions_ = false;
    bool hasAttributes_ = false;
};

// The same open file under a number above those of the standard streams.
FileDescriptor aboveStandardStreams(FileDescriptor file) {
    if (file.number() > STDERR_FILENO) return file;
    return FileDescriptor{fcntl(file.number(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1)};
}

}  // namespace

std::optional<ProcessLaunch::Pipe> ProcessLaunch::makePipe() {
    auto pipe = makeSystemPipe();
    if (!pipe) return std::nullopt;
    pipe->reader = aboveStandardStreams(std::move(pipe->reader));
    pipe->writer = aboveStandardStreams(std::move(pipe->writer));
    if (!pipe->reader.isOpen() || !pipe->writer.isOpen()) return std::nullopt;
    return pipe;
}

std::optional<pid_t> ProcessLaunch::start(const std::string& executablePath,
                                          const std::vector<std::string>& arguments,
                                          const FileDescriptor& output) {
    SpawnSettings settings;
    if (!settings.prepare(output.number())) return std::nullopt;

    // posix_spawn(3) promises to leave the words alone.
    std::vector<char*> words{const_cast<char*>(executablePath.c_str())};
    for (const auto& argument : arguments) words.push_back(const_cast<char*>(argument.c_str()));
    words.push_back(nullptr);

    pid_t child = -1;
    if (posix_spawn(&child, executablePath.c_str(), settings.actions(), settings.attributes(),
                    words.data(), environ) != 0)
        return std::nullopt;
    return child;
}

}  // namespace tallowbrook
