#ifndef VORNIC_SALVAGE_SALVAGE_H
#define VORNIC_SALVAGE_SALVAGE_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "report/Report.h"
#include "salvage/Structure.h"

namespace vornic::salvage {

/// What is left of a broken file.
struct Salvage {
    /// Well-formed documents in UTF-8, one for each root element; none for a sound file and with a
    /// refusal.
    std::vector<std::string> copies;
    /// Every guess, with its place in the file (bytes, line, column) and in its copy, whose element
    /// path and name it has. `path` is left empty.
    Report report;
    /// Why there is no copy of a file that is not sound, as a sentence; "" otherwise. Then there
    /// are no findings.
    std::string refusal;
    /// True for a file that is well-formed: there is nothing to salvage.
    bool isSound = false;
};

struct SalvageOptions {
    /// Findings of a rule that are kept; more are only counted.
    std::size_t mostOfARule = 100;
    Weights weights = {};
};

/// Makes the likeliest original of a file that is no XML any more, with every character of content
/// that is left. Nothing is written, nothing raised but for memory that has run out. Linear, in
/// at most 32 MB of memory, three times the file and 64 bytes a tag. Any thread.
/// @param bytes of the whole file.
[[nodiscard]] Salvage salvage(std::string bytes, const SalvageOptions& options = {});

}  // namespace vornic::salvage

#endif
