#ifndef VORNIC_BENCH_SEEDED_FAULTS_H
#define VORNIC_BENCH_SEEDED_FAULTS_H

#include <array>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace vornic::bench {

enum class FaultKind {
    endTagLost,
    startTagLost,
    startTagWithAttributesLost,
    tagsCrossed,
    endTagMisspelt,
    endTagTwice,
    greaterThanLost,
    attributeTwice,
    attributeTwiceWithOtherValue,
    strayEndTag,
    lineTwice,
    valueNotClosed,
    textAfterRoot,
    secondRoot,
    cutOff,
    several,
};

inline constexpr std::array kFaultNames = {
    "end tag lost",
    "start tag without attributes lost",
    "start tag with attributes lost",
    "tags crossed",
    "end tag misspelt",
    "end tag twice",
    "`>` of a tag lost",
    "attribute twice, same value",
    "attribute twice, other value",
    "stray end tag after the root",
    "line with one tag twice",
    "value never closed",
    "text after the root",
    "second root",
    "cut off",
    "two to five of these at once",
};
inline constexpr std::size_t kFaultKindCount = kFaultNames.size();

/// A sound document with a fault in it.
struct FaultyText {
    std::string text;
    /// What a perfect salvage would make of it: the original, but for what no program can know
    /// (the attributes of a lost start tag).
    std::string expected;
    /// Where in the expected text tags stand that the fault has lost or moved: white space around
    /// them is nobody's to know.
    std::vector<std::size_t> restored;
    /// How many bytes of the original are left, for a text that was cut off.
    std::size_t cutAt = 0;
};

/// Puts one fault of the kind into a document. The same numbers make the same fault.
/// @return nothing where the document has no place for it.
[[nodiscard]] std::optional<FaultyText> seedFault(std::string_view document, FaultKind kind,
                                                  std::mt19937_64& random);

}  // namespace vornic::bench

#endif
