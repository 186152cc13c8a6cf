#ifndef VORNIC_REPORT_MEND_H
#define VORNIC_REPORT_MEND_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace vornic {

/// A change of a text: `length` bytes at `offset` are replaced by `text`.
struct Edit {
    /// Bytes, counted as those of the finding's `Place` are.
    std::size_t offset = 0;
    std::size_t length = 0;
    /// UTF-8; who writes it puts it into the file's encoding.
    std::string text;
    friend bool operator==(const Edit&, const Edit&) = default;
};

/// How sure it is that a mend is what the user wants.
enum class Confidence {
    /// Nothing is dropped and nothing guessed.
    safe,
    /// Made only when the user asks for it.
    ask,
};

/// "safe", "ask".
[[nodiscard]] constexpr std::string_view nameOf(Confidence confidence) {
    return confidence == Confidence::safe ? "safe" : "ask";
}

/// What would take a finding away.
struct Mend {
    Confidence confidence = Confidence::ask;
    /// What is done, in one sentence without a full stop: "write &amp; in its place".
    std::string description;
    /// In the order of the text, not overlapping.
    std::vector<Edit> edits;
    friend bool operator==(const Mend&, const Mend&) = default;
};

}  // namespace vornic

#endif
