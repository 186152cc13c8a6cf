#ifndef VORNIC_TESTS_SUPPORT_MACHINE_WAITING_H
#define VORNIC_TESTS_SUPPORT_MACHINE_WAITING_H

#include <chrono>
#include <fstream>
#include <string>
#include <thread>

#include <sys/types.h>

namespace vornic::test {

/// Longer than anything takes on a machine with much else to do.
inline constexpr std::chrono::seconds kLongestWait{60};

/// Waits for what another thread or process does. Dispatches no events.
/// @return false when the condition does not hold within the limit.
template <typename Condition>
[[nodiscard]] bool becomesTrue(const Condition& condition,
                               std::chrono::milliseconds limit = kLongestWait) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= deadline) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(15));
    }
    return true;
}

/// 'R' for a thread that runs, 'S' for one that sleeps, 'Z' for a zombie, as in proc(5); '-' when
/// there is none.
/// @param thread a thread's id, or a process's for its first thread
[[nodiscard]] inline char threadState(pid_t thread) {
    std::ifstream file("/proc/" + std::to_string(thread) + "/stat");
    std::string text;
    std::getline(file, text);
    // The state follows the name, which stands in parentheses and may hold some itself.
    const std::size_t end = text.rfind(')');
    return end != std::string::npos && end + 2 < text.size() ? text[end + 2] : '-';
}

/// Waits until a thread waits in a system call: until it is found asleep three times in a row.
/// @return false when it does not within the longest wait.
[[nodiscard]] inline bool fallsAsleep(pid_t thread) {
    int timesAsleep = 0;
    return becomesTrue([&] {
        timesAsleep = threadState(thread) == 'S' ? timesAsleep + 1 : 0;
        return timesAsleep == 3;
    });
}

}  // namespace vornic::test

#endif
