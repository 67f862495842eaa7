// `watch` whose reader takes nothing: it goes on storing, and tells what waits once it can.
#include <SQLiteCpp/Database.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <termios.h>

#include <array>
#include <csignal>

#include "EventBridge/SpoolDrainer.h"
#include "Support/PseudoTerminal.h"
#include "Support/WaitUntil.h"
#include "TestHome.h"

namespace tallowbrook {
namespace {

using testing::HasSubstr;

// A pipe that is full until somebody reads.
struct FullPipe {
    FullPipe() {
        std::array<int, 2> ends{-1, -1};
        EXPECT_EQ(pipe(ends.data()), 0);
        reader = FileDescriptor{ends[0]};
        writer = FileDescriptor{ends[1]};
        for (const int end : ends) fcntl(end, F_SETFD, FD_CLOEXEC);
        fcntl(writer.number(), F_SETFL, O_NONBLOCK);
        const std::string filling(4096, '.');
        while (write(writer.number(), filling.data(), filling.size()) > 0) continue;
        fcntl(writer.number(), F_SETFL, 0);
        fcntl(reader.number(), F_SETFL, O_NONBLOCK);
    }

    std::string read() const {
        std::array<char, 65536> buffer;
        const ssize_t count = ::read(reader.number(), buffer.data(), buffer.size());
        return {buffer.data(), count > 0 ? static_cast<std::size_t>(count) : 0};
    }

    FileDescriptor reader;
    FileDescriptor writer;
};

ProgramCall on(int output, ProgramCall call) {
    call.prepare = [output] {
        for (const int stream : {STDOUT_FILENO, STDERR_FILENO}) dup2(output, stream);
    };
    return call;
}

int storedEvents(const TestHome& home) {
    try {
        return home.rows("events");
    } catch (const SQLite::Exception&) {  // it is being made
        return 0;
    }
}

// Until all is stored, although nothing is read of the output.
void sendAndAwait(const TestHome& home, int events) {
    for (int i = 1; i <= events; ++i) {
        home.claude("Stop", "S" + std::to_string(i));
        waitUntil([&] { return storedEvents(home) == i; });
    }
    EXPECT_EQ(storedEvents(home), events);
    waitUntil([&] { return SpoolDrainer{home.paths}.pendingSegmentCount() == 0; });
}

int count(const std::string& text, const std::string& part) {
    int found = 0;
    for (std::size_t at = 0; (at = text.find(part, at)) != std::string::npos; ++at) ++found;
    return found;
}

TEST(StalledOutput, ofAFullPipeStopsNoEventAndIsCaughtUpWith) {
    const TestHome home;
    const FullPipe pipe;
    RunningProgram host{on(pipe.writer.number(), home.hostCall({"watch"}))};
    sendAndAwait(home, 3);
    std::string text;
    waitUntil([&] { return count(text += pipe.read(), "Claude Code finished: proj") >= 3; });
    EXPECT_EQ(count(text, "Claude Code finished: proj"), 3);
    // What the list shows depends on which came first.
    EXPECT_THAT(text, testing::AnyOf(HasSubstr("No sessions to show."), HasSubstr("HEARD OF")));
    host.send(SIGTERM);
    EXPECT_EQ(host.wait().status, 0);
    const auto next = home.host({"watch", "--once"});
    EXPECT_EQ(count(next.output, "finished: proj"), 0) << "told already";
}

TEST(StalledOutput, ofAStoppedTerminalStopsNoEventAndIsCaughtUpWith) {
    const TestHome home;
    const PseudoTerminal terminal;
    const FileDescriptor screen{open(terminal.path.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC)};
    ASSERT_EQ(tcflow(screen.number(), TCOOFF), 0);
    RunningProgram host{on(screen.number(), home.hostCall({"watch"}))};
    sendAndAwait(home, 3);
    ASSERT_EQ(tcflow(screen.number(), TCOON), 0);
    waitUntil([&] {
        return SQLite::Database{home.paths.databaseFile().string(), SQLite::OPEN_READONLY, 5000}
                   .execAndGet("SELECT count(*) FROM deliveries WHERE state = 'told'")
                   .getInt() == 3;
    });
    host.send(SIGTERM);
    EXPECT_EQ(host.wait().status, 0);
}

TEST(StalledOutput, endsAHostThatIsAskedToEnd) {
    const TestHome home;
    const FullPipe pipe;
    RunningProgram host{on(pipe.writer.number(), home.hostCall({"watch"}))};
    sendAndAwait(home, 2);
    host.send(SIGTERM);
    EXPECT_EQ(host.wait().status, 0);
    const auto next = home.host({"watch", "--once"});
    EXPECT_EQ(count(next.output, "finished: proj"), 2) << "was not told yet";
}

TEST(ClosedOutput, isSaidAndTheEventsAreStored) {
    const TestHome home;
    home.claude("Stop");
    std::array<int, 2> ends{-1, -1};
    ASSERT_EQ(pipe(ends.data()), 0);
    close(ends[0]);
    const FileDescriptor writer{ends[1]};
    auto call = home.hostCall({"watch", "--once"});
    call.prepare = [&] { dup2(writer.number(), STDOUT_FILENO); };
    const auto result = run(call);
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.errors, HasSubstr("tallowbrook: Standard output cannot be written"));
    EXPECT_EQ(home.rows("events"), 1);

    auto staying = home.hostCall({"watch"});
    staying.prepare = call.prepare;
    RunningProgram host{staying};
    ASSERT_TRUE(host.waitForErrors("Standard output cannot be written"));
    home.claude("PermissionRequest", "S2");
    waitUntil([&] { return storedEvents(home) == 2; });
    host.send(SIGTERM);
    EXPECT_EQ(host.wait().status, 0);
    EXPECT_EQ(count(home.host({"watch", "--once"}).output, "Claude Code"), 4);
}

}  // namespace
}  // namespace tallowbrook
