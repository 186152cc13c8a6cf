#ifndef VORNIC_BASE_CANONICAL_TEXT_H
#define VORNIC_BASE_CANONICAL_TEXT_H

#include <string>
#include <string_view>

namespace vornic {

/// The text in Unicode's Normalization Form D (Unicode Standard Annex 15): two texts that a reader
/// cannot tell apart, such as an e with its accent as one character or as two, become the same
/// bytes. Bytes that are no UTF-8 stay. Linear but for runs of combining marks, which are sorted.
/// Any thread.
[[nodiscard]] std::string canonicallyDecomposed(std::string_view text);

/// What file names have in common that differ by case or normalisation only: decomposed and in
/// lower case. For comparing, not for showing. Any thread.
[[nodiscard]] std::string foldedName(std::string_view name);

namespace detail {

/// The table of decompositions and combining classes that is part of the programs.
[[nodiscard]] std::string_view decompositionText();

}  // namespace detail

}  // namespace vornic

#endif
