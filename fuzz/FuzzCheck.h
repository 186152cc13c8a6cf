#ifndef VORNIC_FUZZ_FUZZ_CHECK_H
#define VORNIC_FUZZ_FUZZ_CHECK_H

#include <cstdlib>
#include <iostream>
#include <string>

namespace vornic::fuzz {

/// Ends the run as a crash, which the fuzzer keeps, when a check says that something is wrong.
inline void expectNothing(const std::string& finding) {
    if (!finding.empty()) {
        std::cerr << finding << '\n';
        std::abort();
    }
}

}  // namespace vornic::fuzz

#endif
