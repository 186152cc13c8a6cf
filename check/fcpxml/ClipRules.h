#ifndef VORNIC_CHECK_FCPXML_CLIP_RULES_H
#define VORNIC_CHECK_FCPXML_CLIP_RULES_H

#include <string>

#include "check/fcpxml/TimeReader.h"
#include "formats/ElementIndex.h"
#include "formats/fcpxml/Resources.h"
#include "formats/fcpxml/Retiming.h"
#include "formats/fcpxml/Time.h"
#include "report/Findings.h"

namespace vornic {

/// The rules about a single clip: its media, its lane, and what it hangs on.
class ClipRules {
  public:
    ClipRules(const ElementIndex& index, fcpxml::Resources& resources, Findings& findings)
        : index_(index), resources_(resources), findings_(findings), retiming_(index) {}

    /// A lane other than 0 was written.
    [[nodiscard]] bool hasLane(const StoryElement& clip) const;
    /// Whether a clip or spine that stands in another clip is connected to it; the others are what
    /// that one shows. Tells those that should have a lane and have none.
    [[nodiscard]] bool isConnected(const StoryElement& clip, const StoryElement& parent);

    void judgeLaneInSpine(const StoryElement& item);
    /// Whether a connected clip hangs on a place that the clip under it has.
    bool judgeAnchor(const StoryElement& clip, const StoryElement& parent, fcpxml::Time start,
                     fcpxml::Time duration);
    /// Of a connected clip.
    void judgeDuration(const StoryElement& clip);
    /// Whether a clip lies in its asset's range. @param frame smaller differences do not count.
    void judgeRange(const StoryElement& clip, fcpxml::Time duration, fcpxml::Time frame);
    /// @param first,end where what is in the sync-clip and not connected to it begins and ends.
    void judgeSyncStart(const StoryElement& clip, fcpxml::Time start, fcpxml::Time first,
                        fcpxml::Time end);
    /// Whether an asset with motion has frames of a length.
    void judgeRate(const StoryElement& asset);

  private:
    [[nodiscard]] std::string laneOf(const StoryElement& clip) const;

    const ElementIndex& index_;
    fcpxml::Resources& resources_;
    Findings& findings_;
    fcpxml::Retiming retiming_;
};

}  // namespace vornic

#endif
