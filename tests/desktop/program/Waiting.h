#ifndef VORNIC_TESTS_DESKTOP_PROGRAM_WAITING_H
#define VORNIC_TESTS_DESKTOP_PROGRAM_WAITING_H

#include <functional>
#include <stdexcept>
#include <string>

#include "tests/support/machine/Waiting.h"

namespace vornic::test {

/// Ends the test when something does not become true. @param what it is, for the failure's text
inline void waitUntil(const std::string& what, const std::function<bool()>& holds) {
    if (!becomesTrue(holds)) {
        throw std::runtime_error("waited in vain: " + what);
    }
}

}  // namespace vornic::test

#endif
