#ifndef VORNIC_TESTS_SUPPORT_FAKES_INTERCEPTED_CALL_H
#define VORNIC_TESTS_SUPPORT_FAKES_INTERCEPTED_CALL_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <future>
#include <thread>
#include <utility>

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace vornic::test {

/// Does something each time that this thread is about to make a system call. Nothing undoes it, so
/// that only a `ChildProcess` may call this.
/// @param number a `SYS_…` constant
/// @param act called on another thread before the call is made; returns 0 to let it be made, or the
///     errno value that it yields without being made
/// @return false when the system takes no such filters.
[[nodiscard]] inline bool interceptSystemCall(long number, std::function<int()> act) {
    std::promise<int> filtered;
    // Started before the filter, which it is therefore not under.
    std::thread([listener = filtered.get_future(), act = std::move(act)]() mutable {
        const int descriptor = listener.get();
        for (;;) {
            struct seccomp_notif call {};
            struct seccomp_notif_resp answer {};
            if (ioctl(descriptor, SECCOMP_IOCTL_NOTIF_RECV, &call) != 0) {
                return;
            }
            answer.id = call.id;
            answer.error = -act();
            answer.flags = answer.error == 0 ? SECCOMP_USER_NOTIF_FLAG_CONTINUE : 0;
            if (ioctl(descriptor, SECCOMP_IOCTL_NOTIF_SEND, &answer) != 0) {
                return;
            }
        }
    }).detach();
    std::array<struct sock_filter, 4> program{{
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(struct seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<std::uint32_t>(number), 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_USER_NOTIF),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    }};
    struct sock_fprog filter {};
    filter.len = static_cast<unsigned short>(program.size());
    filter.filter = program.data();
    if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0) {
        filtered.set_value(-1);
        return false;
    }
    const long listener =
        syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, SECCOMP_FILTER_FLAG_NEW_LISTENER, &filter);
    filtered.set_value(static_cast<int>(listener));
    return listener >= 0;
}

/// Makes one system call of this thread fail, without being made, the next time.
[[nodiscard]] inline bool failSystemCallOnce(long number, int errorNumber) {
    return interceptSystemCall(number,
                               [errorNumber]() mutable { return std::exchange(errorNumber, 0); });
}

}  // namespace vornic::test

#endif
