// Real programs for tests to run: shell scripts in a temporary directory, and what they leave.
#pragma once

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <cerrno>
#include <filesystem>
#include <optional>
#include <string>

#include "Support/FileContents.h"
#include "Support/WaitUntil.h"

namespace tallowbrook {

// Gives the script's path.
inline std::string writeScript(const std::filesystem::path& file, const std::string& body) {
    writeContents(file, "#!/bin/sh\n" + body + "\n");
    if (chmod(file.c_str(), 0700) != 0) ADD_FAILURE() << "cannot make " << file << " executable";
    return file.string();
}

// A process that has told its number in a file, with `echo $$ > FILE` or the like. It is killed
// when this value goes.
class NotedProcess {
 public:
    explicit NotedProcess(const std::filesystem::path& file) {
        waitUntil([&] { return contentsOf(file).ends_with('\n'); });
        if (const std::string text = contentsOf(file); !text.empty()) pid = std::stoi(text);
    }
    ~NotedProcess() { kill(); }
    NotedProcess(const NotedProcess&) = delete;
    NotedProcess& operator=(const NotedProcess&) = delete;

    // One that has exited counts as there until it is reaped.
    bool isThere() const { return pid > 0 && ::kill(pid, 0) == 0; }

    void kill() const {
        if (pid > 0) ::kill(pid, SIGKILL);
    }

    pid_t pid = -1;
};

// Whether this process has a child that runs or is still to be reaped; looking does not reap it.
inline bool hasChildren() {
    siginfo_t ignored;
    return waitid(P_ALL, 0, &ignored, WEXITED | WNOHANG | WNOWAIT) == 0 || errno != ECHILD;
}

}  // namespace tallowbrook
