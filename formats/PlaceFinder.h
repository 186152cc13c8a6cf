#ifndef VORNIC_FORMATS_PLACE_FINDER_H
#define VORNIC_FORMATS_PLACE_FINDER_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_map>

#include "formats/ElementIndex.h"
#include "report/Findings.h"
#include "xml/text/FileOffsets.h"
#include "xml/text/TextPlace.h"

namespace vornic {

/// Fills in what a finding's place says to people (line, column, element path, name), and turns the
/// offsets of the place and of the mend's edits from those of the checked text into the file's.
/// Findings that come in the order of the text cost one pass over it, however many they are.
class PlaceFinder {
  public:
    /// @param index of the text that was checked; must outlive this.
    /// @param decoding how the file's bytes became that text.
    PlaceFinder(const ElementIndex& index, const TextDecoding& decoding);

    /// Sorts the findings and places all that are kept. To be called once.
    void place(Findings& findings);
    void place(Finding& finding);

    /// Line, column, path and name of an offset of the text; the offset becomes the file's.
    [[nodiscard]] Place placeOf(TextSpan span);
    /// "/fcpxml[1]/resources[1]/format[16]"; "" for elements that lie deeper than anybody reads.
    [[nodiscard]] std::string pathOf(ElementNumber element);

  private:
    struct Counted {
        ElementNumber element;
        std::size_t number;
    };

    [[nodiscard]] std::size_t numberOf(ElementNumber element);
    [[nodiscard]] std::string titleAround(ElementNumber element) const;

    const ElementIndex& index_;
    FileOffsets offsets_;
    TextPlace lines_;
    // The child that was counted last, for each parent and name.
    std::unordered_map<std::string, Counted> counted_;
};

}  // namespace vornic

#endif
