#include "Terminal/ProcessTable.h"

#include <gtest/gtest.h>

#include <limits>
#include <set>

#include "Support/PseudoTerminal.h"
#include "WaitingChild.h"

namespace tallowbrook {
namespace {

std::optional<std::string> withoutTerminal() {
    if (setsid() < 0) return std::nullopt;
    return "ready";
}

std::set<pid_t> processIDs(const std::vector<ProcessRecord>& records) {
    std::set<pid_t> pids;
    for (const ProcessRecord& record : records) pids.insert(record.pid);
    return pids;
}

TEST(ProcessTable, aProcessAtTheHeadOfANewSessionHasNoTerminal) {
    const WaitingChild child{withoutTerminal};
    ASSERT_TRUE(child.report);
    const auto record = ProcessTable::process(child.pid);
    ASSERT_TRUE(record);
    EXPECT_EQ(*record, (ProcessRecord{.pid = child.pid,
                                      .parentPID = getpid(),
                                      .device = std::nullopt,
                                      .name = ProcessTable::process(getpid())->name}));
}

TEST(ProcessTable, findsEveryProcessOnADeviceAndNoOther) {
    const PseudoTerminal terminal;
    const PseudoTerminal otherTerminal;
    const WaitingChild child{[&]() -> std::optional<std::string> {
        if (!takeTerminal(terminal.path)) return std::nullopt;
        const pid_t grandchild = fork();
        if (grandchild == 0) WaitingChild::standStill();
        return std::to_string(grandchild);
    }};
    const WaitingChild elsewhere{[&]() -> std::optional<std::string> {
        if (!takeTerminal(otherTerminal.path)) return std::nullopt;
        return "ready";
    }};
    const WaitingChild nowhere{withoutTerminal};
    ASSERT_TRUE(child.report && elsewhere.report && nowhere.report);

    const auto found = ProcessTable::processesOnDevice(terminal.device);
    EXPECT_EQ(processIDs(found), (std::set<pid_t>{child.pid, std::stoi(*child.report)}));
    for (const ProcessRecord& record : found) {
        EXPECT_EQ(record.device, terminal.device);
        EXPECT_EQ(record.parentPID, record.pid == child.pid ? getpid() : child.pid);
    }
}

TEST(ProcessTable, aTerminalWithoutAShellHasNoProcesses) {
    const PseudoTerminal terminal;
    ASSERT_FALSE(terminal.path.empty());
    EXPECT_TRUE(ProcessTable::processesOnDevice(terminal.device).empty());
}

TEST(ProcessTable, anExitedProcessCountsUntilItsParentHasWaited) {
    const pid_t pid = fork();
    if (pid == 0) _exit(0);
    ASSERT_GT(pid, 0);
    siginfo_t exited{};
    ASSERT_EQ(waitid(P_PID, static_cast<id_t>(pid), &exited, WEXITED | WNOWAIT), 0);

    const auto zombie = ProcessTable::process(pid);
    ASSERT_TRUE(zombie);
    EXPECT_EQ(zombie->pid, pid);
    EXPECT_EQ(zombie->parentPID, getpid());

    ASSERT_EQ(waitpid(pid, nullptr, 0), pid);
    EXPECT_FALSE(ProcessTable::process(pid));
}

TEST(ProcessTable, anImpossibleProcessIsAbsent) {
    EXPECT_FALSE(ProcessTable::process(-1));
    EXPECT_FALSE(ProcessTable::process(std::numeric_limits<pid_t>::max()));
}

TEST(ProcessTable, namesATerminalAsItStandsBelowDev) {
    const PseudoTerminal terminal;
    ASSERT_FALSE(terminal.path.empty());
    const auto name = ProcessTable::deviceName(terminal.device);
    ASSERT_TRUE(name);
    EXPECT_EQ("/dev/" + *name, terminal.path);
    EXPECT_EQ(ProcessTable::deviceNumber(*TerminalDevice::parse(*name)), terminal.device);
    EXPECT_FALSE(ProcessTable::deviceNumber(*TerminalDevice::parse("ttynosuchdevice")));
}

TEST(ProcessTable, aCommandNameEndsAtTheFirstNULOrAfterSeventeenBytes) {
    using namespace std::string_view_literals;
    struct Row {
        const char* why;
        std::string_view buffer;
        std::string_view name;
    };
    for (const auto& [why, buffer, name] : {
             Row{"nothing", "", ""},
             Row{"empty name", "\0zsh"sv, ""},
             Row{"rest of an older name behind the NUL", "zsh\0-old\0"sv, "zsh"},
             Row{"16 bytes", "1234567890123456\0"sv, "1234567890123456"},
             Row{"17 bytes", "12345678901234567", "12345678901234567"},
             Row{"18 bytes", "123456789012345678", "12345678901234567"},
             Row{"last character ends at byte 17", "123456789012345\u00E9",
                 "123456789012345\u00E9"},
             Row{"limit cuts a character", "1234567890123456\u00E9", "1234567890123456\uFFFD"},
             Row{"invalid pieces", "a\xE1\x80\xC3\xA9\xFF\x80", "a\uFFFD\u00E9\uFFFD\uFFFD"},
         }) {
        EXPECT_EQ(ProcessTable::decodeCommandName(buffer), name) << why;
    }
}

}  // namespace
}  // namespace tallowbrook
