#ifndef VORNIC_FORMATS_XMEML_TIMECODES_H
#define VORNIC_FORMATS_XMEML_TIMECODES_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>

#include "formats/ElementIndex.h"
#include "formats/fcpxml/Time.h"

namespace vornic::xmeml {

/// Tells where in its sequence something stands: what a user reads in the timeline of the editing
/// program. Costs the depth of the place, and once for each clip and sequence a look at its
/// children. One thread.
class Timecodes {
  public:
    /// @param index must outlive this.
    explicit Timecodes(const ElementIndex& index) : index_(index) {}

    /// The timecode at which the clip, generator or transition around a place of the text begins,
    /// or the marker of the sequence stands: "01:00:04:12". "" outside of them, for one of whose
    /// beginning the file says nothing (-1, beside a transition), and where the frame rate is not
    /// known.
    [[nodiscard]] std::string at(std::size_t offset);

  private:
    // How the frames of a sequence are counted; no frame for one that does not say.
    struct Count {
        fcpxml::Time frame;
        std::int64_t first = 0;
        bool isDropFrame = false;
    };

    [[nodiscard]] std::optional<std::int64_t> startOf(ElementNumber item);
    [[nodiscard]] const Count& countOf(ElementNumber sequence);
    [[nodiscard]] Count readCount(ElementNumber sequence) const;
    [[nodiscard]] std::optional<std::int64_t> numberIn(ElementNumber element,
                                                       std::string_view child) const;

    const ElementIndex& index_;
    std::unordered_map<ElementNumber, std::optional<std::int64_t>> starts_;
    std::unordered_map<ElementNumber, Count> counts_;
};

}  // namespace vornic::xmeml

#endif
