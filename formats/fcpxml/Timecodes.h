#ifndef VORNIC_FORMATS_FCPXML_TIMECODES_H
#define VORNIC_FORMATS_FCPXML_TIMECODES_H

#include <cstddef>
#include <string>
#include <vector>

#include "formats/ElementIndex.h"
#include "formats/fcpxml/Resources.h"
#include "formats/fcpxml/Time.h"

namespace vornic::fcpxml {

/// Tells where in its sequence something stands, by the offsets of the clips around it: what a user
/// reads in the timeline of the editing program. Costs the depth of the place. One thread.
class Timecodes {
  public:
    /// @param index must outlive this.
    explicit Timecodes(const ElementIndex& index) : index_(index), resources_(index) {}

    /// The timecode at which the clip around a place of the text begins, or the marker at it
    /// stands: "01:00:04:12". "" outside of all sequences, and where offsets or the frame duration
    /// are not known.
    [[nodiscard]] std::string at(std::size_t offset);

  private:
    // Where a clip begins, on the timeline and in its own time.
    struct Point {
        Time position;
        Time start;
    };

    [[nodiscard]] std::vector<ElementNumber> wayTo(ElementNumber element) const;
    // False when what follows is not on the timeline by itself.
    [[nodiscard]] bool step(ElementNumber element, ElementNumber parent, Point& point);
    [[nodiscard]] Time timeOf(ElementNumber element, std::string_view attribute,
                              Time otherwise) const;
    [[nodiscard]] Time startOf(ElementNumber clip);
    [[nodiscard]] bool hasLane(ElementNumber element) const;

    const ElementIndex& index_;
    Resources resources_;
};

}  // namespace vornic::fcpxml

#endif
