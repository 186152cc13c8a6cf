#ifndef VORNIC_XML_READER_FORBIDDEN_CHARACTERS_H
#define VORNIC_XML_READER_FORBIDDEN_CHARACTERS_H

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "xml/reader/XMLReading.h"

namespace vornic {

/// A text without the characters that XML forbids, and the way back from its offsets to those of
/// the text that it was made from.
class ForbiddenCharacters {
  public:
    /// In how many runs of neighbouring characters the text holds characters that XML forbids.
    /// Quick. Malformed UTF-8 counts as allowed.
    [[nodiscard]] static std::size_t runsIn(std::string_view text);
    /// Tells those runs one by one, in their order, for who keeps nothing of them.
    static void forEachRun(std::string_view text, const std::function<void(TextSpan run)>& tell);

    /// @param text well-formed UTF-8.
    explicit ForbiddenCharacters(std::string_view text);

    [[nodiscard]] const std::string& remainingText() const { return remaining_; }
    [[nodiscard]] std::size_t count() const { return count_; }

    /// The place after the forbidden characters that begin at `place`; `place` itself when the one
    /// there is allowed.
    [[nodiscard]] static const char* endOfRun(const char* place, const char* end);

    /// Turns places in the remaining text, in any order, into those of the original text.
    class Runs {
      public:
        explicit Runs(const ForbiddenCharacters& characters);
        /// The piece of the original text from the first to the last byte of a piece of the
        /// remaining text; an empty one stands behind what was dropped there.
        [[nodiscard]] TextSpan original(TextSpan remaining) const;

      private:
        [[nodiscard]] std::size_t original(std::size_t remainingOffset) const;

        const std::vector<XMLEdit>& runs_;
        // For each run, its offset in the remaining text.
        std::vector<std::size_t> remainingOffsets_;
    };

    /// The runs that were dropped, as edits of the original text.
    [[nodiscard]] const std::vector<XMLEdit>& runs() const { return runs_; }

    /// Turns offsets in the remaining text, each at least as large as the one before, into those
    /// of the original text.
    class OffsetMap {
      public:
        explicit OffsetMap(const ForbiddenCharacters& characters) : runs_(characters.runs_) {}
        [[nodiscard]] std::size_t original(std::size_t remainingOffset);

      private:
        friend class ForbiddenCharacters;
        const std::vector<XMLEdit>& runs_;
        std::size_t next_ = 0;
        std::size_t removed_ = 0;
    };

    /// Edits of the remaining text, made into edits of the original text that also take out the
    /// forbidden characters.
    [[nodiscard]] std::vector<XMLEdit> editsOfOriginal(const std::vector<XMLEdit>& edits) const;

  private:
    std::string remaining_;
    // What was taken out, as offsets in the original text.
    std::vector<XMLEdit> runs_;
    std::size_t count_ = 0;
};

}  // namespace vornic

#endif
