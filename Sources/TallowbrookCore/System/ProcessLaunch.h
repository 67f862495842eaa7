// Starting a child process and learning of its exit.
//
// Stateless; safe from any thread.
#pragma once

#include <spawn.h>
#include <sys/types.h>

#include <expected>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "System/FileDescriptor.h"
#include "System/FileError.h"

namespace tallowbrook::ProcessLaunch {

struct Pipe {
    FileDescriptor reader;
    FileDescriptor writer;
};

// A pipe that programs started meanwhile do not inherit, and whose ends are none of the standard
// streams, even where those are closed. Absent when the system refuses.
std::optional<Pipe> makePipe();

// A file without a name that holds the text, to be read from its start by a program that is
// started. Unlike a pipe it takes the whole text, whether the program reads it or not. In the
// directory for temporary files; the error names the system call.
[[nodiscard]] std::expected<FileDescriptor, FileError> makeInput(std::string_view text);

// Of a child that leads a group of its own all descendants can be signalled at once, and the keys
// of the terminal that end its parent do not reach it.
enum class ProcessGroup { ofTheParent, ofItsOwn };

// Starts the executable at exactly this path, with `output` and `input` as its standard streams, no
// further descriptor, no signal blocked and none ignored. Of the two, those that are open are ends
// of pipes of `makePipe`, or a `makeInput`; the null device stands in for one that is not, and is
// the standard error. Returns once the program runs, else the error number of posix_spawn(3). The
// caller must reap the child.
[[nodiscard]] std::expected<pid_t, int> start(const std::string& executablePath,
                                              const std::vector<std::string>& arguments,
                                              const FileDescriptor& output,
                                              const FileDescriptor& input = {},
                                              ProcessGroup group = ProcessGroup::ofTheParent);

// Waits until a child of this process has exited, and leaves it to be reaped. Returns early where
// the system cannot wait so. One implementation per system.
void awaitExit(pid_t child);

// Both ends, closed in programs started meanwhile as well as the system can. One implementation per
// system.
std::optional<Pipe> makeSystemPipe();

// Has all descriptors but the standard streams closed in the child, by an action that comes last or
// by a flag. False when the system refuses. One implementation per system.
bool closeOtherDescriptors(posix_spawn_file_actions_t& actions, short& flags);

}  // namespace tallowbrook::ProcessLaunch
