#include "Terminal/EditorBridge.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <limits>
#include <string>

#include "Domain/UUID.h"
#include "EventBridge/TallowbrookPaths.h"
#include "Support/ChildProcess.h"
#include "Support/DirectoryNames.h"
#include "Support/FileContents.h"
#include "Support/FileModeMask.h"
#include "Support/OrdinaryUser.h"
#include "Support/Outcome.h"
#include "Support/SampleSnapshots.h"
#include "Support/TemporaryDirectory.h"

namespace tallowbrook {
namespace {

namespace fs = std::filesystem;

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

bool everyProcessRuns(pid_t) { return true; }

EditorWindow windowOf(pid_t host, const std::vector<pid_t>& shells = {}) {
    return {.hostPid = host,
            .appName = "Cursor",
            .workspace = std::nullopt,
            .folders = {"/Users/x/proj"},
            .shellPids = shells};
}

void publish(const fs::path& file, const EditorWindow& window) {
    writeContents(file, EditorWindowCoding::encode(window));
}

std::vector<pid_t> hostsOf(const std::vector<EditorWindow>& windows) {
    std::vector<pid_t> hosts;
    for (const EditorWindow& window : windows) hosts.push_back(window.hostPid);
    return hosts;
}

// A process id that was in use a moment ago.
pid_t endedProcess() {
    const pid_t child = fork();
    if (child == 0) _exit(0);
    waitpid(child, nullptr, 0);
    return child;
}

TEST(EditorBridgeProcesses, areRunningUntilTheyEnd) {
    EXPECT_TRUE(EditorBridge::processIsRunning(getpid()));
    EXPECT_FALSE(EditorBridge::processIsRunning(endedProcess()));
    EXPECT_FALSE(EditorBridge::processIsRunning(std::numeric_limits<pid_t>::max()));
    // Each of these would mean a group of processes, or every process there is.
    for (const pid_t pid : {1, 0, -1, -getpgrp(), std::numeric_limits<pid_t>::min()})
        EXPECT_FALSE(EditorBridge::processIsRunning(pid)) << pid;
}

TEST(EditorBridgeProcesses, ofAnotherUserAreRunning) {
    const auto user = OrdinaryUser::find();
    if (!user || user->id == geteuid()) GTEST_SKIP() << "needs root, to become another user";
    const pid_t ours = getpid();
    const pid_t ended = endedProcess();
    const auto seen = inChildProcess([&]() -> std::string {
        if (!user->become()) return "still another user";
        if (kill(ours, 0) == 0 || errno != EPERM) return "may signal it";
        return std::string{EditorBridge::processIsRunning(ours) ? "running" : "ended"} + " " +
               (EditorBridge::processIsRunning(ended) ? "running" : "ended");
    });
    EXPECT_EQ(seen, "running ended");
}

TEST(EditorBridgeWindows, areRecordsByNameAlone) {
    const TemporaryDirectory temporary;
    pid_t host = 10;
    for (const char* name :
         {"window-1.json", "window-.json", "window-a.b.json", "other.json", "window-2.txt",
          "window-3", "window.json", "Window-4.json", "window-5.JSON", "window-6.json.bak",
          "a-window-7.json", ".window-8.json", "window-9json"})
        publish(temporary.path / name, windowOf(host++));
    EXPECT_THAT(hostsOf(EditorBridge::windows(temporary.path, everyProcessRuns)),
                UnorderedElementsAre(10, 11, 12));
}

TEST(EditorBridgeWindows, areThoseOfEditorsThatRun) {
    const TemporaryDirectory temporary;
    EditorWindow window = windowOf(getpid(), {10, 850});
    window.workspace = "/Users/x/proj.code-workspace";
    publish(temporary.path / "window-1.json", windowOf(endedProcess()));
    publish(temporary.path / "window-2.json", window);
    publish(temporary.path / "window-3.json", windowOf(0));
    EXPECT_THAT(EditorBridge::windows(temporary.path), ElementsAre(window));
    EXPECT_THAT(hostsOf(EditorBridge::windows(temporary.path, [](pid_t pid) { return pid == 0; })),
                ElementsAre(0));
    EXPECT_EQ(namesIn(temporary.path).size(), 3U) << "their records are the extension's to remove";
    for (const char* name : {"missing", "window-1.json"})
        EXPECT_THAT(EditorBridge::windows(temporary.path / name), IsEmpty());
}

TEST(EditorBridgeWindows, comeInTheOrderOfTheListingAndAreNotMerged) {
    const TemporaryDirectory temporary;
    for (int i = 0; i < 20; ++i)
        publish(temporary.path / ("window-" + std::to_string(i) + ".json"), windowOf(100 + i / 2));
    std::vector<pid_t> listed;
    for (const auto& entry : fs::directory_iterator{temporary.path})
        listed.push_back(EditorWindowCoding::decode(contentsOf(entry.path())).value().hostPid);
    EXPECT_EQ(hostsOf(EditorBridge::windows(temporary.path, everyProcessRuns)), listed);
}

TEST(EditorBridgeWindows, passOverWhatIsNoRecord) {
    const TemporaryDirectory temporary;
    publish(temporary.path / "window-1.json", windowOf(30));
    writeContents(temporary.path / "window-2.json", "");
    writeContents(temporary.path / "window-3.json", "not JSON");
    writeContents(temporary.path / "window-4.json", R"({"hostPid":4242})");
    fs::create_directory(temporary.path / "window-5.json");
    fs::create_symlink("missing", temporary.path / "window-6.json");
    ASSERT_EQ(mkfifo((temporary.path / "window-7.json").c_str(), 0600), 0);
    const std::string blanks(1'048'576, ' ');
    writeContents(temporary.path / "window-8.json",
                  blanks + EditorWindowCoding::encode(windowOf(31)));
    EXPECT_THAT(hostsOf(EditorBridge::windows(temporary.path, everyProcessRuns)), ElementsAre(30));
}

TEST(EditorBridgeWindows, passOverARecordThatMayNotBeRead) {
    const auto user = OrdinaryUser::find();
    if (!user) GTEST_SKIP() << OrdinaryUser::missing;
    const TemporaryDirectory temporary;
    ASSERT_TRUE(user->own(temporary.path));
    publish(temporary.path / "window-1.json", windowOf(40));
    publish(temporary.path / "window-2.json", windowOf(41));
    chmod((temporary.path / "window-1.json").c_str(), 0);
    chmod((temporary.path / "window-2.json").c_str(), 0644);
    const auto seen = inChildProcess([&]() -> std::string {
        if (!user->become()) return "still another user";
        std::string hosts;
        for (const auto& window : EditorBridge::windows(temporary.path, everyProcessRuns))
            hosts += std::to_string(window.hostPid) + " ";
        return hosts;
    });
    EXPECT_EQ(seen, "41 ");
}

TEST(EditorBridgeOwner, isTheFirstWindowWithItsFirstShellAmongTheProcesses) {
    using EditorBridge::owner, EditorBridge::Owner;
    const EditorWindow first = windowOf(2, {10, 850});
    const EditorWindow second = windowOf(3, {900});
    EXPECT_EQ(owner({900, 850, 1}, {first, second}), (Owner{first, 850}));
    EXPECT_EQ(owner({900, 850, 1}, {second, first}), (Owner{second, 900}));
    EXPECT_EQ(owner({850, 10}, {first}), (Owner{first, 10}));
    EXPECT_EQ(owner({11, 2}, {windowOf(4), first, second}), std::nullopt)
        << "the editor is no shell";
    EXPECT_EQ(owner({}, {first}), std::nullopt);
    EXPECT_EQ(owner({10}, {}), std::nullopt);
}

std::string request(pid_t shell, const fs::path& directory, Instant now = currentInstant()) {
    return outcomeOf(EditorBridge::requestTerminal(shell, directory, now));
}

void setModified(const fs::path& file, Instant time) {
    fs::last_write_time(file, fs::file_time_type::clock::from_sys(time));
}

TEST(EditorBridgeRequest, isOneNewFileThatNamesTheShell) {
    const TemporaryDirectory temporary;
    const Instant now = currentInstant();
    for (const auto& [name, age] : {std::pair{"expired.json", 11}, std::pair{"fresh.json", 9}}) {
        writeContents(temporary.path / name, "");
        setModified(temporary.path / name, now - std::chrono::seconds{age});
    }
    EXPECT_EQ(request(4242, temporary.path, now), "ok");
    EXPECT_FALSE(fs::exists(temporary.path / "expired.json"));
    ASSERT_TRUE(fs::remove(temporary.path / "fresh.json"));

    const auto names = namesIn(temporary.path);
    ASSERT_EQ(names.size(), 1U);
    const fs::path name{names.front()};
    EXPECT_EQ(name.extension(), ".json");
    const auto id = UUIDText::parse(name.stem().string());
    ASSERT_TRUE(id);
    EXPECT_EQ(UUIDText::text(*id), name.stem()) << "in upper case";
    EXPECT_EQ(contentsOf(temporary.path / name), R"({"shellPid":4242})");
    EXPECT_EQ(request(4242, temporary.path, now), "ok");
    EXPECT_EQ(namesIn(temporary.path).size(), 2U) << "beside others of the same shell";
}

TEST(EditorBridgeRequest, isForItsOwnerAloneWhateverTheUmask) {
    const TemporaryDirectory temporary;
    const TallowbrookPaths paths{temporary.path / "home"};
    const FileModeMask mask{0};
    EXPECT_EQ(request(2, paths.editorRequestsDirectory()), "ok");
    for (const fs::path& made :
         {paths.home, paths.editorsDirectory(), paths.editorRequestsDirectory()})
        EXPECT_EQ(modeOf(made.c_str()), mode_t{0700}) << made;
    for (const std::string& name : namesIn(paths.editorRequestsDirectory()))
        EXPECT_EQ(modeOf((paths.editorRequestsDirectory() / name).c_str()), mode_t{0600});
}

TEST(EditorBridgeRequest, isRefusedWhereTheDirectoryCannotBeMade) {
    const TemporaryDirectory temporary;
    writeContents(temporary.path / "file", "kept");
    EXPECT_EQ(request(10, temporary.path / "file"), "stat-errno" + std::to_string(ENOTDIR));
    EXPECT_EQ(request(10, temporary.path / "file" / "requests"),
              "stat-errno" + std::to_string(ENOTDIR));
    EXPECT_EQ(contentsOf(temporary.path / "file"), "kept");
}

TEST(EditorBridgeRequest, isRefusedWhereNoFileMayBeMade) {
    const auto user = OrdinaryUser::find();
    if (!user) GTEST_SKIP() << OrdinaryUser::missing;
    const TemporaryDirectory temporary;
    ASSERT_TRUE(user->own(temporary.path));
    chmod(temporary.path.c_str(), 0500);
    const auto seen = inChildProcess(
        [&] { return user->become() ? request(10, temporary.path) : "still another user"; });
    chmod(temporary.path.c_str(), 0700);
    EXPECT_EQ(seen, "open-errno" + std::to_string(EACCES));
    EXPECT_THAT(namesIn(temporary.path), IsEmpty());
}

TEST(EditorBridgeRequest, leavesNothingBehindWhenItCannotBeWritten) {
    const TemporaryDirectory temporary;
    const auto seen = inChildProcess([&]() -> std::string {
        signal(SIGXFSZ, SIG_IGN);
        // Five bytes fit: the write is cut short before it fails.
        const rlimit limit{5, 5};
        if (setrlimit(RLIMIT_FSIZE, &limit) != 0) return "no limit";
        return request(10, temporary.path);
    });
    EXPECT_EQ(seen, "write-errno" + std::to_string(EFBIG));
    EXPECT_THAT(namesIn(temporary.path), IsEmpty());
}

TEST(ExpiredRequests, areThoseWrittenMoreThanTenSecondsAgo) {
    struct Row {
        double age;
        bool isKept;
    };
    for (const auto& [age, isKept] :
         {Row{0, true}, Row{9, true}, Row{10, true}, Row{10.000001, false}, Row{11, false},
          Row{1e9, false}, Row{-5, true}, Row{-3600, true}}) {
        const TemporaryDirectory temporary;
        writeContents(temporary.path / "a.json", "");
        setModified(temporary.path / "a.json", after(-age));
        EditorBridge::removeExpiredRequests(temporary.path, sampleTime);
        EXPECT_EQ(fs::exists(temporary.path / "a.json"), isKept) << age;
    }
}

TEST(ExpiredRequests, areFilesWithTheirExtensionOnly) {
    const TemporaryDirectory temporary;
    for (const char* name : {"a.json", "b.c.json", "a.json.unfinished", "a.JSON", "a.unfinished",
                             "a.json.bak", "a.txt", "json", "a.jsonl", ".json", "ajson"}) {
        writeContents(temporary.path / name, "");
        setModified(temporary.path / name, after(-11));
    }
    EditorBridge::removeExpiredRequests(temporary.path, sampleTime);
    EXPECT_THAT(namesIn(temporary.path),
                UnorderedElementsAre("a.JSON", "a.unfinished", "a.json.bak", "a.txt", "json",
                                     "a.jsonl", ".json", "ajson"));
}

TEST(ExpiredRequests, neverTakeADirectoryOrWhatALinkLeadsTo) {
    const TemporaryDirectory temporary;
    const fs::path requests = temporary.path / "requests";
    writeContents(temporary.path / "elsewhere.json", "kept");
    writeContents(requests / "a.json" / "file", "kept");
    fs::create_symlink("../elsewhere.json", requests / "b.json");
    fs::create_symlink("missing", requests / "c.json");  // without a time, so it counts as expired
    setModified(temporary.path / "elsewhere.json", after(-11));
    setModified(requests / "a.json", after(-11));
    for (const fs::path& directory :
         {requests, temporary.path / "missing", temporary.path / "elsewhere.json"})
        EditorBridge::removeExpiredRequests(directory, sampleTime);
    EXPECT_THAT(namesIn(requests), ElementsAre("a.json"));
    EXPECT_EQ(contentsOf(requests / "a.json" / "file"), "kept");
    EXPECT_EQ(contentsOf(temporary.path / "elsewhere.json"), "kept");
}

TEST(ExpiredRequests, doNotStandInTheWayWhenTheyCannotBeRemoved) {
    const auto user = OrdinaryUser::find();
    if (!user) GTEST_SKIP() << OrdinaryUser::missing;
    const TemporaryDirectory temporary;
    ASSERT_TRUE(user->own(temporary.path));
    writeContents(temporary.path / "a.json", "");
    setModified(temporary.path / "a.json", after(-11));
    chmod(temporary.path.c_str(), 0500);
    const auto seen = inChildProcess([&] {
        if (!user->become()) return "still another user";
        EditorBridge::removeExpiredRequests(temporary.path, sampleTime);
        return "went on";
    });
    chmod(temporary.path.c_str(), 0700);
    EXPECT_EQ(seen, "went on");
    EXPECT_THAT(namesIn(temporary.path), ElementsAre("a.json"));
}

}  // namespace
}  // namespace tallowbrook
