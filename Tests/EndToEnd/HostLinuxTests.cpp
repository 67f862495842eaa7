#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <functional>

#include "TestHome.h"

namespace tallowbrook {
namespace {

// Makes standard output a device on which there is never room.
void fillStandardOutput() { dup2(open("/dev/full", O_WRONLY), STDOUT_FILENO); }

// Looks again and again, for a minute.
bool comes(const std::function<bool()>& what) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes{1};
    while (!what()) {
        if (std::chrono::steady_clock::now() >= deadline) return false;
        usleep(1000);
    }
    return true;
}

TEST(HostOnLinux, keepsWhatItCouldNotTellForTheNext) {
    const TestHome home;
    home.claude("PermissionRequest");
    ProgramCall call = home.hostCall({"watch", "--once"});
    call.prepare = fillStandardOutput;
    run(call);
    EXPECT_EQ(home.rows("events"), 1);

    const ProgramResult next = home.host({"watch", "--once"});
    EXPECT_EQ(next.status, 0);
    EXPECT_NE(next.output.find("Claude Code needs permission"), std::string::npos) << next.output;
}

TEST(HostOnLinux, failsWhereItsOutputCannotBeWritten) {
    const TestHome home;
    home.claude("Stop");
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"watch", "--once"}, std::vector<std::string>{"sessions"},
          std::vector<std::string>{"sessions", "--json"}}) {
        ProgramCall call = home.hostCall(arguments);
        call.prepare = fillStandardOutput;
        const ProgramResult result = run(call);
        EXPECT_EQ(result.status, 1) << testing::PrintToString(arguments);
        EXPECT_NE(result.errors, "") << testing::PrintToString(arguments);
    }
}

TEST(HostOnLinux, doesNotSayWithEveryPassThatItsOutputCannotBeWritten) {
    const TestHome home;
    ProgramCall call = home.hostCall({"watch"});
    call.prepare = fillStandardOutput;
    RunningProgram host{call};
    ASSERT_TRUE(host.waitForErrors("Standard output cannot be written"));
    constexpr int passes = 4;
    for (int i = 0; i < passes; ++i) {
        home.claude("Stop", "S" + std::to_string(i));
        // The event is stored in a pass that could not tell it.
        ASSERT_TRUE(comes([&] { return home.rows("events") > i; }));
    }
    host.send(SIGTERM);
    const std::string errors = host.wait().errors;
    int said = 0;
    for (std::size_t at = 0; (at = errors.find("cannot be written", at)) != std::string::npos; ++at)
        ++said;
    // Of the list at its start, and of the notifications.
    EXPECT_LE(said, 2) << errors;
}

TEST(HostOnLinux, tellsOnceWhatItsOutputTakesAtLast) {
    const TestHome home;
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK), 0);
    const FileDescriptor reader{ends[0]};
    const FileDescriptor writer{ends[1]};
    std::array<char, 4096> buffer{};
    while (write(writer.number(), buffer.data(), buffer.size()) > 0) continue;

    // The first one waits for room, and the second one is held back.
    home.claude("PermissionRequest", "S1");
    home.claude("Stop", "S2");
    ProgramCall call = home.hostCall({"watch"});
    call.prepare = [&] { dup2(writer.number(), STDOUT_FILENO); };
    RunningProgram host{call};
    ASSERT_TRUE(host.waitForErrors("Standard output cannot be written"));
    // Now there is room again, and the host may write into it at once.
    std::string output;
    const auto readOn = [&] {
        ssize_t length = 0;
        while ((length = read(reader.number(), buffer.data(), buffer.size())) > 0)
            output.append(buffer.data(), static_cast<std::size_t>(length));
    };
    readOn();
    ASSERT_TRUE(comes([&] { return home.rows("deliveries WHERE state = 'told'") == 2; }));
    host.send(SIGTERM);
    EXPECT_EQ(host.wait().status, 0);
    readOn();
    std::erase(output, '\0');
    for (const std::string line :
         {"Claude Code needs permission: proj", "Claude Code finished: proj"}) {
        EXPECT_NE(output.find(line), std::string::npos) << output;
        EXPECT_EQ(output.find(line), output.rfind(line)) << output;
    }
}

}  // namespace
}  // namespace tallowbrook
