// System calls that fail on demand, by a filter of the kernel's, see seccomp(2).
#pragma once

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace tallowbrook {

// From now on these calls end in one of the filter's actions. There is no way back: for child
// processes only. False when the kernel takes no filter.
inline bool filterSystemCalls(const std::vector<long>& numbers, std::uint32_t action) {
    std::vector<sock_filter> program{
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
    };
    for (const long number : numbers) {
        program.push_back(
            BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<std::uint32_t>(number), 0, 1));
        program.push_back(BPF_STMT(BPF_RET | BPF_K, action));
    }
    program.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));

    const sock_fprog filter{static_cast<unsigned short>(program.size()), program.data()};
    return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) == 0;
}

// They do nothing but fail with `errorNumber`.
inline bool failSystemCalls(const std::vector<long>& numbers, int errorNumber) {
    return filterSystemCalls(numbers, SECCOMP_RET_ERRNO | static_cast<std::uint32_t>(errorNumber));
}

// They kill the process.
inline bool forbidSystemCalls(const std::vector<long>& numbers) {
    return filterSystemCalls(numbers, SECCOMP_RET_KILL_PROCESS);
}

// What a child gives back where one of these is false, and the reason to skip its test.
inline constexpr const char* noFilter = "the kernel takes no system call filter here";

// From now on the system gives no random bytes: asking for them fails with EIO. For child processes
// only. False where the kernel takes no filter, or the C library does not ask the kernel.
inline bool refuseRandomBytes() {
    char byte = 0;
    return failSystemCalls({SYS_getrandom}, EIO) && getentropy(&byte, 1) != 0;
}

// What a child gives back where `refuseRandomBytes` is false, and the reason to skip its test.
inline constexpr const char* notRefused = "random bytes cannot be refused here";

// The numbers behind rename(3); some processors lack the older ones.
inline std::vector<long> renameCalls() {
    return {
#ifdef SYS_rename
        SYS_rename,
#endif
#ifdef SYS_renameat
        SYS_renameat,
#endif
        SYS_renameat2,
    };
}

}  // namespace tallowbrook
