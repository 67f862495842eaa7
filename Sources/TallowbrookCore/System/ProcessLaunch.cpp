#include "System/ProcessLaunch.h"

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <system_error>

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

    bool prepare(const FileDescriptor& input, const FileDescriptor& output,
                 ProcessLaunch::ProcessGroup group) {
        short flags = POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF;
        // With the attribute's own default, 0, the child's id becomes the group's.
        if (group == ProcessLaunch::ProcessGroup::ofItsOwn) flags |= POSIX_SPAWN_SETPGROUP;
        // Closing comes last, since the actions before it still need their descriptors.
        return hasActions_ && hasAttributes_ && connect(STDIN_FILENO, input, O_RDONLY) &&
               connect(STDOUT_FILENO, output, O_WRONLY) && connect(STDERR_FILENO, {}, O_WRONLY) &&
               ProcessLaunch::closeOtherDescriptors(actions_, flags) && resetSignals() &&
               posix_spawnattr_setflags(&attributes_, flags) == 0;
    }

    const posix_spawn_file_actions_t* actions() const { return &actions_; }
    const posix_spawnattr_t* attributes() const { return &attributes_; }

 private:
    bool connect(int stream, const FileDescriptor& file, int mode) {
        if (file.isOpen())
            return posix_spawn_file_actions_adddup2(&actions_, file.number(), stream) == 0;
        return posix_spawn_file_actions_addopen(&actions_, stream, "/dev/null", mode, 0) == 0;
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

// The open file under a number above those of the standard streams. Where one of those is closed, a
// pipe would get its number, and what the program prints would run into the pipe.
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

std::expected<FileDescriptor, FileError> ProcessLaunch::makeInput(std::string_view text) {
    std::error_code error;
    const auto directory = std::filesystem::temp_directory_path(error);
    if (error) return std::unexpected(FileError{"stat", error.value()});
    std::string path = directory / "tallowbrook-XXXXXX";
    FileDescriptor file{mkstemp(path.data())};
    if (!file.isOpen()) return std::unexpected(FileError{"mkstemp", errno});
    unlink(path.c_str());
    if (fcntl(file.number(), F_SETFD, FD_CLOEXEC) != 0)
        return std::unexpected(FileError{"fcntl", errno});
    for (auto rest = text; !rest.empty();) {
        const ssize_t count = write(file.number(), rest.data(), rest.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return std::unexpected(FileError{"write", errno});
        rest.remove_prefix(static_cast<std::size_t>(count));
    }
    if (lseek(file.number(), 0, SEEK_SET) != 0) return std::unexpected(FileError{"lseek", errno});
    file = aboveStandardStreams(std::move(file));
    if (!file.isOpen()) return std::unexpected(FileError{"fcntl", errno});
    return file;
}

std::expected<pid_t, int> ProcessLaunch::start(const std::string& executablePath,
                                               const std::vector<std::string>& arguments,
                                               const FileDescriptor& output,
                                               const FileDescriptor& input, ProcessGroup group) {
    SpawnSettings settings;
    // Of the settings only the lists grow, so nothing but a lack of memory can be wrong.
    if (!settings.prepare(input, output, group)) return std::unexpected(ENOMEM);

    // posix_spawn(3) promises to leave the words alone.
    std::vector<char*> words{const_cast<char*>(executablePath.c_str())};
    for (const auto& argument : arguments) words.push_back(const_cast<char*>(argument.c_str()));
    words.push_back(nullptr);

    pid_t child = -1;
    const int error = posix_spawn(&child, executablePath.c_str(), settings.actions(),
                                  settings.attributes(), words.data(), environ);
    if (error != 0) return std::unexpected(error);
    return child;
}

}  // namespace tallowbrook
