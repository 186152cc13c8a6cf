#ifndef VORNIC_TESTS_SUPPORT_FAKES_FAILING_SYSTEM_CALL_H
#define VORNIC_TESTS_SUPPORT_FAKES_FAILING_SYSTEM_CALL_H

#include <array>
#include <cstddef>
#include <cstdint>

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>

namespace vornic::test {

/// Makes one system call fail from now on, in this process and its children, without being made:
/// what a volume or a kernel without it does. Nothing undoes it, so that only a `ChildProcess` may
/// call this.
/// @param number a `SYS_…` constant
/// @param errorNumber the errno value that each call yields
/// @param flags when not 0, only calls that have one of these bits in the argument with that index
/// @return false when the system takes no filters.
[[nodiscard]] inline bool failSystemCall(long number, int errorNumber, std::uint32_t flags = 0,
                                         unsigned argument = 0) {
    const auto argumentOffset = static_cast<std::uint32_t>(offsetof(struct seccomp_data, args) +
                                                           sizeof(std::uint64_t) * argument);
    const std::uint32_t answer =
        SECCOMP_RET_ERRNO | (static_cast<std::uint32_t>(errorNumber) & SECCOMP_RET_DATA);
    const std::uint8_t skipFlagTest = flags == 0 ? 2 : 0;
    std::array<struct sock_filter, 7> program{{
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(struct seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<std::uint32_t>(number), 0, 4),
        BPF_JUMP(BPF_JMP | BPF_JA, skipFlagTest, 0, 0),
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, argumentOffset),
        BPF_JUMP(BPF_JMP | BPF_JSET | BPF_K, flags, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, answer),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    }};
    struct sock_fprog filter {};
    filter.len = static_cast<unsigned short>(program.size());
    filter.filter = program.data();
    return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) == 0;
}

}  // namespace vornic::test

#endif
