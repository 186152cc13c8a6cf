#ifndef VORNIC_REPAIR_PIPELINE_SOURCE_PLACES_H
#define VORNIC_REPAIR_PIPELINE_SOURCE_PLACES_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "report/Place.h"
#include "xml/reader/XMLReader.h"
#include "xml/text/TextPlace.h"
#include "xml/text/TextSpan.h"

namespace vornic {

/// Where in the user's file the bytes of a text are that a repair reads: the file's own text, or
/// that with mends in it. Places must come in ascending order; all of them together cost one pass.
/// What is handed over must outlive this.
class SourcePlaces {
  public:
    /// @param start the offset in the file of the text's first byte; nothing for a text of which
    ///     too little is left to tell places, whose findings are about the file as a whole
    SourcePlaces(std::string_view text, std::optional<std::size_t> start)
        : SourcePlaces(text, start, text, {}) {}
    /// @param text the source with the edits applied
    /// @param start the offset in the file of the source's first byte, or nothing
    SourcePlaces(std::string_view text, std::optional<std::size_t> start, std::string_view source,
                 std::span<const XMLEdit> edits)
        : text_(text), source_(source), start_(start), edits_(edits), lines_(source) {}

    [[nodiscard]] std::string_view text() const { return text_; }
    /// False when nothing of the text has a place.
    [[nodiscard]] bool areKnown() const { return start_.has_value(); }
    [[nodiscard]] Place of(TextSpan span);
    /// The offset in the source of an offset in the text; where an edit has put what stands there,
    /// that of the edit.
    [[nodiscard]] std::size_t sourceOffset(std::size_t offset);
    /// The index among the source's UTF-16 units for that among the text's, of the character at the
    /// offset of the text. It must not be one that an edit has put there.
    [[nodiscard]] std::int64_t sourceIndex(std::int64_t index, std::size_t offset);

  private:
    // Takes the edits in front of an offset of the text into account.
    void passEdits(std::size_t offset);

    std::string_view text_;
    std::string_view source_;
    std::optional<std::size_t> start_;
    // Those that are not passed yet.
    std::span<const XMLEdit> edits_;
    // How many bytes and units more than the source the text has before the next edit.
    std::ptrdiff_t surplusBytes_ = 0;
    std::int64_t surplusUnits_ = 0;
    TextPlace lines_;
};

}  // namespace vornic

#endif
