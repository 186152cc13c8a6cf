#include "formats/fcpxml/Retiming.h"

#include <string_view>

namespace vornic::fcpxml {

bool isRetimed(const ElementIndex& index, ElementNumber clip) {
    constexpr int kMostAncestors = 32;
    for (int count = 0; clip != vornic::kNoElement && count < kMostAncestors; ++count) {
        for (ElementNumber child = index.firstChildOf(clip); child != vornic::kNoElement;
             child = index.nextSiblingOf(child)) {
            const std::string_view name = index.nameOf(child);
            if (name == "timeMap" || name == "conform-rate") {
                return true;
            }
            // Both stand in front of all others but these.
            if (name != "note" && name != "param") {
                break;
            }
        }
        clip = index.parentOf(clip);
    }
    return false;
}

}  // namespace vornic::fcpxml
