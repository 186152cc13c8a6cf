#ifndef VORNIC_CHECK_FCPXML_SPINE_CHECK_H
#define VORNIC_CHECK_FCPXML_SPINE_CHECK_H

#include <string>
#include <string_view>
#include <vector>

#include "check/fcpxml/TimeReader.h"
#include "formats/ElementIndex.h"
#include "formats/fcpxml/Time.h"
#include "report/Findings.h"

namespace vornic {

/// "1 frame", "33 frames", or seconds where the length of a frame is not known.
[[nodiscard]] std::string lengthText(fcpxml::Time length, fcpxml::Time frame);

/// Goes through the items of one spine in order and reports holes, overlaps and what is not on
/// the grid of frames. One fault is reported once: behind it the storyline goes on from where its
/// next item stands. Items may stand in any order, as some exports have it: what comes later may
/// fill a hole.
class SpineCheck {
  public:
    /// @param begin where the first item has to stand; unknown for any place.
    /// @param frame the length of a frame; unknown where the grid is not to be judged.
    SpineCheck(const ElementIndex& index, Findings& findings, fcpxml::Time begin,
               fcpxml::Time frame)
        : index_(&index), findings_(&findings), frame_(frame), begin_(begin), due_(begin) {}

    /// What stands next. @param duration the item's own, or the one that holds when it has none.
    void item(const StoryElement& item, fcpxml::Time duration);
    void transition(const StoryElement& transition);

    /// Tells the holes that nothing has filled. To be called behind the last item.
    void finish();

    /// Where the next item has to stand; unknown when that cannot be said.
    [[nodiscard]] fcpxml::Time due() const { return due_; }
    /// False once something was reported, or a time was not known.
    [[nodiscard]] bool isSound() const { return isSound_; }
    [[nodiscard]] fcpxml::Time frame() const { return frame_; }

  private:
    // From what ended before it to the item that was found behind it.
    struct Hole {
        fcpxml::Time from;
        fcpxml::Time to;
        ElementNumber item;
        TextSpan place;
    };

    [[nodiscard]] bool judgeGrid(const StoryElement& item, const TimeAttribute& time,
                                 std::string_view attribute);
    void judgePlace(const StoryElement& item, fcpxml::Time offset, fcpxml::Time duration);
    void addHole(const Hole& hole);
    [[nodiscard]] bool fillsHole(fcpxml::Time offset, fcpxml::Time duration);
    [[nodiscard]] bool isAt(fcpxml::Time time, fcpxml::Time wanted) const;
    void judgeFirst(const StoryElement& item, fcpxml::Time offset);
    void goOnBehind(fcpxml::Time offset, fcpxml::Time duration, bool isOnGrid);
    void judgeLength(ElementNumber neighbour, fcpxml::Time duration);
    // Differences below half a frame do not count.
    [[nodiscard]] fcpxml::Time tolerance() const;
    // The nearest place on the grid, as an attribute says it.
    [[nodiscard]] std::string onGrid(fcpxml::Time time) const;

    const ElementIndex* index_;
    Findings* findings_;
    fcpxml::Time frame_;
    fcpxml::Time begin_;
    fcpxml::Time due_;
    // Where the next item would stand if the last one stood where it should.
    fcpxml::Time dueOtherwise_;
    // The end of the item that ends last.
    fcpxml::Time end_;
    // Those that a later item may still fill.
    std::vector<Hole> holes_;
    ElementNumber previous_ = kNoElement;
    fcpxml::Time previousDuration_;
    // The transition in front of the next item.
    StoryElement transition_;
    bool isFirst_ = true;
    bool isSound_ = true;
};

}  // namespace vornic

#endif
