#ifndef VORNIC_BENCH_SALVAGE_SCORE_H
#define VORNIC_BENCH_SALVAGE_SCORE_H

#include <cstddef>
#include <string>
#include <vector>

#include "bench/SeededFaults.h"

namespace vornic::bench {

/// How good salvaged copies are, summed up over cases.
struct Score {
    std::size_t cases = 0;
    std::size_t exact = 0;
    std::size_t wellFormed = 0;
    std::size_t characters = 0;
    std::size_t kept = 0;

    void add(const Score& other) {
        cases += other.cases;
        exact += other.exact;
        wellFormed += other.wellFormed;
        characters += other.characters;
        kept += other.kept;
    }
};

/// Holds copies against what a perfect salvage would have made. Exact means that elements,
/// attributes, text, comments and instructions are those of the original, white space at the ends
/// of text apart; after a cut, that all which stood whole in front of it is there and in its place.
[[nodiscard]] Score scoreOf(FaultKind kind, const FaultyText& faulty,
                            const std::vector<std::string>& copies);

}  // namespace vornic::bench

#endif
