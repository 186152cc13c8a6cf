#ifndef VORNIC_BENCH_SALVAGE_SCORE_H
#define VORNIC_BENCH_SALVAGE_SCORE_H

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "bench/SeededFaults.h"

namespace vornic::bench {

/// Percent of the cases of each kind of fault in which a copy is to be exact.
inline constexpr std::array<std::size_t, kFaultKindCount> kExactGoals = {
    90, 85, 80, 100, 100, 95, 95, 100, 100, 100, 95, 90, 100, 100, 100, 75};
/// The same over all kinds.
inline constexpr std::size_t kExactGoalOfAll = 93;

/// How good salvaged copies are, summed up over cases.
struct Score {
    std::size_t cases = 0;
    std::size_t exact = 0;
    std::size_t wellFormed = 0;
    std::size_t characters = 0;
    std::size_t kept = 0;

    /// Whether so many percent of the copies are exact, all of them well-formed, and all characters
    /// kept, but for one in 200 where a `>` or a quote was lost: a `/` in front of it may be the
    /// value's or the tag's.
    [[nodiscard]] bool reaches(std::size_t goal, FaultKind kind) const {
        const bool isVague =
            kind == FaultKind::greaterThanLost || kind == FaultKind::valueNotClosed;
        const std::size_t most = isVague ? 995 : 1000;
        return 100 * exact >= goal * cases && wellFormed == cases &&
               1000 * kept >= most * characters;
    }

    void add(const Score& other) {
        cases += other.cases;
        exact += other.exact;
        wellFormed += other.wellFormed;
        characters += other.characters;
        kept += other.kept;
    }
};

/// Holds copies against what a perfect salvage would have made. Exact means that elements,
/// attributes, text, comments and instructions are those of the original to the letter, white space
/// around tags that were put back apart, and beside the root element; after a cut, that all which
/// stood whole in front of it is there and in its place, with the text up to it.
[[nodiscard]] Score scoreOf(FaultKind kind, const FaultyText& faulty,
                            const std::vector<std::string>& copies);

}  // namespace vornic::bench

#endif
