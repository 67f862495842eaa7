// What Linux alone tells: which process keeps the lock on a session.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>

#include "Support/ChildProcess.h"
#include "Support/TemporaryDirectory.h"
#include "Support/WaitUntil.h"
#include "System/FileDescriptor.h"
#include "Watch/CodexNotes.h"
#include "Watch/ProcessStart.h"

namespace tallowbrook::host {
namespace {

TEST(CodexSession, isThatOfTheProcessThatKeepsItsLock) {
    const TemporaryDirectory home;
    const auto lock = home.path / "thread-writer-locks" / "S1.lock";
    create_directories(lock.parent_path());
    const auto read = [&] { return CodexNotes::in(home.path).read({"S1"}).at("S1"); };
    EXPECT_EQ(read().process, std::nullopt);
    ChildProcess agent{[&] {
        const FileDescriptor file{open(lock.c_str(), O_RDWR | O_CREAT, 0600)};
        if (flock(file.number(), LOCK_EX) != 0) return std::string{"no lock"};
        pause();
        return std::string{};
    }};
    waitUntil([&] { return read().lock == SessionLock::held; });
    EXPECT_EQ(read().process, (ProcessIdentity{agent.pid, *processStart(agent.pid)}));
    EXPECT_TRUE(read().processLives);
}

}  // namespace
}  // namespace tallowbrook::host
