#include "formats/xmeml/SpeedEffect.h"

#include <algorithm>
#include <string>

#include "base/Text.h"

namespace vornic::xmeml {

namespace {

bool isSpeedEffect(const View& view, ElementNumber effect) {
    const Parts parts(view, effect);
    for (const Name name : {Name::effectid, Name::name}) {
        std::string text = lowercased(view.textOf(parts[name]));
        text.erase(std::remove(text.begin(), text.end(), ' '), text.end());
        if (text.find("timeremap") != std::string::npos ||
            text.find("speed") != std::string::npos) {
            return true;
        }
    }
    return false;
}

}  // namespace

bool hasSpeedEffect(const View& view, ElementNumber clipItem) {
    const ElementIndex& index = view.index();
    for (ElementNumber child = index.firstChildOf(clipItem); child != kNoElement;
         child = index.nextSiblingOf(child)) {
        const Name name = view.nameOf(child);
        if (name == Name::reversed || name == Name::stillframe) {
            return true;
        }
        const ElementNumber effect =
            name == Name::filter ? view.childOf(child, Name::effect) : kNoElement;
        if (effect != kNoElement && isSpeedEffect(view, effect)) {
            return true;
        }
    }
    return false;
}

}  // namespace vornic::xmeml
