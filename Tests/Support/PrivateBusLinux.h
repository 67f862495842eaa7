// A message bus of one test's own, which starts no service by itself, and is gone with this value.
#pragma once

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <optional>
#include <string>

#include "Support/EnvironmentVariable.h"
#include "Support/FileContents.h"
#include "Support/TemporaryDirectory.h"
#include "System/ProcessLaunch.h"
#include "System/SearchPath.h"

namespace tallowbrook {

class PrivateBus {
 public:
    PrivateBus() {
        writeContents(directory_.path / "bus.conf",
                      "<busconfig><type>session</type><listen>" + address +
                          "</listen><policy context=\"default\"><allow send_destination=\"*\"/>"
                          "<allow receive_sender=\"*\"/><allow own=\"*\"/></policy></busconfig>");
        const auto program = SearchPath::find("dbus-daemon");
        auto pipe = ProcessLaunch::makePipe();
        if (!program || !pipe) {
            ADD_FAILURE() << "dbus-daemon is missing: run script/bootstrap";
            return;
        }
        const auto configuration = "--config-file=" + (directory_.path / "bus.conf").string();
        const auto started = ProcessLaunch::start(
            *program, {configuration, "--nofork", "--print-address=1"}, pipe->writer);
        if (!started) {
            ADD_FAILURE() << "dbus-daemon does not start";
            return;
        }
        pid_ = *started;
        pipe->writer = FileDescriptor{};
        // It prints its address once it listens.
        std::array<char, 256> line{};
        EXPECT_GT(read(pipe->reader.number(), line.data(), line.size()), 0);
    }
    ~PrivateBus() { end(); }
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;

    void end() {
        if (pid_ <= 0) return;
        kill(pid_, SIGKILL);
        waitpid(pid_, nullptr, 0);
        pid_ = -1;
    }

    // Does nothing until it goes on.
    void stop() const { kill(pid_, SIGSTOP); }

 private:
    TemporaryDirectory directory_;
    pid_t pid_ = -1;

 public:
    const std::string address = "unix:path=" + (directory_.path / "bus").string();

 private:
    // Of this process, and of those that it starts.
    EnvironmentVariable variable_{"DBUS_SESSION_BUS_ADDRESS", address};
};

}  // namespace tallowbrook
