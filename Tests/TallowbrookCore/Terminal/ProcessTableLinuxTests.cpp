#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/sysmacros.h>

#include <filesystem>
#include <fstream>

#include "Support/PseudoTerminal.h"
#include "Terminal/ProcessTable.h"
#include "WaitingChild.h"

namespace tallowbrook {
namespace {

// The record of a child that gave itself this command name, and a terminal where `path` has one.
std::optional<ProcessRecord> childNamed(const char* name, const std::string& terminalPath = {}) {
    const WaitingChild child{[&]() -> std::optional<std::string> {
        if (!terminalPath.empty() && !takeTerminal(terminalPath)) return std::nullopt;
        if (prctl(PR_SET_NAME, name) != 0) return std::nullopt;
        return "ready";
    }};
    if (!child.report) return std::nullopt;
    return ProcessTable::process(child.pid);
}

TEST(ProcessTableLinux, aCommandNameMayHoldAnyByte) {
    const PseudoTerminal terminal;
    ASSERT_FALSE(terminal.path.empty());
    struct Row {
        const char* why;
        const char* given;
        const char* name;
    };
    for (const auto& [why, given, name] : {
             Row{"blanks and parentheses", "a) (b c", "a) (b c"},
             Row{"looks like the end of the name", "x) S 1 1 1 0", "x) S 1 1 1 0"},
             Row{"only a parenthesis", ")", ")"},
             Row{"empty", "", ""},
             Row{"blank at both ends", " a ", " a "},
             Row{"line feed", "a\nb", "a\nb"},
             Row{"backslash", "a\\b", "a\\b"},
             Row{"backslash before n", "a\\nb", "a\\nb"},
             Row{"backslash at the end", "a\\", "a\\"},
             Row{"15 bytes", "123456789012345", "123456789012345"},
             Row{"more than the kernel keeps", "1234567890123456", "123456789012345"},
             Row{"character cut by the kernel", "12345678901234\u00E9", "12345678901234\uFFFD"},
             Row{"beyond ASCII", "\u65E5\u672C", "\u65E5\u672C"},
             Row{"not UTF-8", "a\xFF\xC3", "a\uFFFD\uFFFD"},
         }) {
        const auto record = childNamed(given, terminal.path);
        ASSERT_TRUE(record) << why;
        EXPECT_EQ(record->name, name) << why;
        EXPECT_EQ(record->parentPID, getpid()) << why;
        EXPECT_EQ(record->device, terminal.device) << why;
    }
}

TEST(ProcessTableLinux, aProgramIsNamedAfterItsFile) {
    const auto directory = std::filesystem::path{testing::TempDir()} /
                           ("tallowbrook process table " + std::to_string(getpid()));
    std::filesystem::create_directories(directory);
    const auto program = directory / "a) (b c";
    std::ofstream{program} << "#!/bin/sh\necho ready\nread -r line\n";
    std::filesystem::permissions(program, std::filesystem::perms::owner_all);

    const WaitingChild child{[&]() -> std::optional<std::string> {
        execl(program.c_str(), program.c_str(), nullptr);
        return std::nullopt;
    }};
    EXPECT_TRUE(child.report);
    const auto record = ProcessTable::process(child.pid);
    std::filesystem::remove_all(directory);
    ASSERT_TRUE(record);
    EXPECT_EQ(record->name, "a) (b c");
    EXPECT_EQ(record->parentPID, getpid());
}

TEST(ProcessTableLinux, terminalsAreNamedByTheirNumbers) {
    struct Row {
        unsigned majorNumber;
        unsigned minorNumber;
        const char* name;
    };
    for (const auto& [majorNumber, minorNumber, name] : {
             Row{4, 1, "tty1"},
             Row{4, 63, "tty63"},
             Row{4, 64, "ttyS0"},
             Row{4, 67, "ttyS3"},
             Row{136, 0, "pts/0"},
             Row{136, 255, "pts/255"},
             Row{136, 256, "pts/256"},
             Row{136, 1048575, "pts/1048575"},
             Row{137, 0, "pts/256"},
             Row{143, 255, "pts/2047"},
         }) {
        EXPECT_EQ(ProcessTable::deviceName(makedev(majorNumber, minorNumber)), name);
    }
}

TEST(ProcessTableLinux, anotherDeviceIsNamedByTheDeviceTree) {
    if (!std::filesystem::exists("/sys/dev/char/5:0")) GTEST_SKIP() << "no /sys/dev/char here";
    EXPECT_EQ(ProcessTable::deviceName(makedev(5, 0)), "tty");
    EXPECT_EQ(ProcessTable::deviceName(makedev(5, 1)), "console");
}

TEST(ProcessTableLinux, aDeviceThatNoDriverHasIsNameless) {
    EXPECT_FALSE(ProcessTable::deviceName(makedev(4094, 1000000)));
}

}  // namespace
}  // namespace tallowbrook
