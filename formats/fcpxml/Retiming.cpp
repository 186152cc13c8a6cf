#include "formats/fcpxml/Retiming.h"

#include <string_view>

namespace vornic::fcpxml {

bool Retiming::isRetimed(ElementNumber clip) {
    constexpr int kMostAncestors = 32;
    for (int count = 0; clip != vornic::kNoElement && count < kMostAncestors; ++count) {
        const auto [known, isNew] = known_.try_emplace(clip, false);
        if (isNew) {
            known->second = saysSo(clip);
        }
        if (known->second) {
            return true;
        }
        clip = index_.parentOf(clip);
    }
    return false;
}

// The element itself, whatever stands around it.
bool Retiming::saysSo(ElementNumber clip) const {
    for (ElementNumber child = index_.firstChildOf(clip); child != vornic::kNoElement;
         child = index_.nextSiblingOf(child)) {
        const std::string_view name = index_.nameOf(child);
        if (name == "timeMap" || name == "conform-rate") {
            return true;
        }
        // Both stand in front of all others but these.
        if (name != "note" && name != "param") {
            return false;
        }
    }
    return false;
}

}  // namespace vornic::fcpxml
