#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <string>

#include "Support/ChildProcess.h"
#include "Support/FailingSystemCallLinux.h"
#include "Support/Outcome.h"
#include "Support/TemporaryDirectory.h"
#include "System/FileDescriptor.h"
#include "Terminal/EditorBridge.h"

namespace tallowbrook {
namespace {

using testing::ElementsAre;

// What a watcher of a directory sees happen to the requests in it, in order.
class RequestWatch {
 public:
    explicit RequestWatch(const std::filesystem::path& directory)
        : inotify_{inotify_init1(IN_NONBLOCK | IN_CLOEXEC)} {
        // All that changes what is there; opening and closing it does not.
        constexpr auto changes = IN_CREATE | IN_MODIFY | IN_ATTRIB | IN_MOVE | IN_DELETE;
        const int watch = inotify_add_watch(inotify_.number(), directory.c_str(), changes);
        EXPECT_GE(watch, 0);
    }

    std::vector<std::string> seen() const {
        std::vector<std::string> events;
        alignas(inotify_event) std::array<char, 16 * 1024> buffer{};
        const ssize_t length = read(inotify_.number(), buffer.data(), buffer.size());
        for (ssize_t position = 0; position < length;) {
            const char* start = buffer.data() + position;
            inotify_event event{};
            std::memcpy(&event, start, sizeof event);
            if (event.len > 0 && std::string_view{start + sizeof event}.ends_with(".json"))
                events.push_back(event.mask == IN_MOVED_TO ? "appeared whole" : "another change");
            position += static_cast<ssize_t>(sizeof event + event.len);
        }
        return events;
    }

 private:
    FileDescriptor inotify_;
};

TEST(EditorBridgeRequest, appearsWholeToAWatcher) {
    const TemporaryDirectory temporary;
    const RequestWatch watch{temporary.path};
    EXPECT_TRUE(EditorBridge::requestTerminal(4242, temporary.path, currentInstant()));
    EXPECT_THAT(watch.seen(), ElementsAre("appeared whole"));
}

TEST(EditorBridgeRequest, leavesNothingBehindWhenItCannotBeNamed) {
    const TemporaryDirectory temporary;
    const auto seen = inChildProcess([&]() -> std::string {
        if (!failSystemCalls(renameCalls(), EIO)) return noFilter;
        return outcomeOf(EditorBridge::requestTerminal(10, temporary.path, currentInstant()));
    });
    if (seen == noFilter) GTEST_SKIP() << noFilter;
    EXPECT_EQ(seen, "rename-errno" + std::to_string(EIO));
    EXPECT_TRUE(std::filesystem::is_empty(temporary.path));
}

TEST(EditorBridgeRequest, isRefusedWithoutRandomBytesForItsName) {
    const TemporaryDirectory temporary;
    const auto seen = inChildProcess([&]() -> std::string {
        if (!refuseRandomBytes()) return notRefused;
        return outcomeOf(EditorBridge::requestTerminal(10, temporary.path, currentInstant()));
    });
    if (seen == notRefused) GTEST_SKIP() << notRefused;
    EXPECT_EQ(seen, "random-errno" + std::to_string(EIO));
    EXPECT_TRUE(std::filesystem::is_empty(temporary.path));
}

}  // namespace
}  // namespace tallowbrook
