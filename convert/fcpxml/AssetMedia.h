#ifndef VORNIC_CONVERT_FCPXML_ASSET_MEDIA_H
#define VORNIC_CONVERT_FCPXML_ASSET_MEDIA_H

#include <optional>

#include "convert/fcpxml/StepState.h"

namespace vornic::fcpxml {

/// Where an asset names its media: up to 1.8 in its attribute `src`, with a bookmark beside it,
/// from 1.9 on in elements `media-rep`. Moves the path to the other place.
class AssetMedia {
  public:
    /// @param state must outlive this.
    explicit AssetMedia(StepState& state) : state_(state) {}

    /// Of an asset's start tag, when its other attributes have been converted.
    void convertStartTag(ElementNumber asset);
    /// Of a `media-rep` or `bookmark` in that asset. @return false for any other child, which is
    /// nobody's business here.
    [[nodiscard]] bool convertChild(ElementNumber child);

  private:
    void toMediaRep();
    void toSource();
    [[nodiscard]] ElementNumber chosenRep() const;
    void unwrap(ElementNumber mediaRep);
    void remove(ElementNumber mediaRep);
    void tellLostOf(ElementNumber mediaRep);

    StepState& state_;
    ElementNumber asset_ = vornic::kNoElement;
    // The one whose path the asset takes; `vornic::kNoElement` when there is none to take.
    ElementNumber chosen_ = vornic::kNoElement;
    bool wrapsBookmark_ = false;
};

}  // namespace vornic::fcpxml

#endif
