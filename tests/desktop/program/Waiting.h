#ifndef VORNIC_TESTS_DESKTOP_PROGRAM_WAITING_H
#define VORNIC_TESTS_DESKTOP_PROGRAM_WAITING_H

#include <chrono>
#include <functional>
#include <stdexcept>
#include <string>
#include <thread>

namespace vornic::test {

/// Longer than anything takes on a machine with much else to do.
inline constexpr std::chrono::seconds kLongestWait{60};

/// Asks again and again until something holds. @return false when it does not within the limit.
inline bool becomesTrue(const std::function<bool()>& holds,
                        std::chrono::milliseconds limit = kLongestWait) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (!holds()) {
        if (std::chrono::steady_clock::now() >= deadline) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(15));
    }
    return true;
}

/// Ends the test when something does not come to hold. @param what it is, for the failure's text
inline void waitUntil(const std::string& what, const std::function<bool()>& holds) {
    if (!becomesTrue(holds)) {
        throw std::runtime_error("waited in vain: " + what);
    }
}

}  // namespace vornic::test

#endif
