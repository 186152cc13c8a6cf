#ifndef VORNIC_FUZZ_FUZZ_CHECK_H
#define VORNIC_FUZZ_FUZZ_CHECK_H

#include <cstdio>
#include <cstdlib>
#include <string>

namespace vornic::fuzz {

/// Ends the run as a crash, which the fuzzer keeps, when a check says that something is wrong.
inline void expectNothing(const std::string& finding) {
    if (!finding.empty()) {
        std::fprintf(stderr, "%s\n", finding.c_str());
        std::abort();
    }
}

}  // namespace vornic::fuzz

#endif
