#include "formats/PlaceFinder.h"

#include <vector>

#include "xml/text/AttributeValue.h"

namespace vornic {

namespace {

// A path with more steps helps nobody, and hostile files have elements that lie millions deep.
constexpr std::size_t kMostSteps = 100;
// How far around a place its name is looked for.
constexpr std::size_t kNearestElements = 16;
// A damaged file may have a name of many megabytes, and each finding in it has a copy.
constexpr std::size_t kLongestTitle = 1000;

// No character is cut in half.
std::string_view beginningOf(std::string_view title) {
    if (title.size() <= kLongestTitle) {
        return title;
    }
    std::size_t end = kLongestTitle;
    while (end != 0 && (static_cast<unsigned char>(title[end]) & 0xC0U) == 0x80) {
        --end;
    }
    return title.substr(0, end);
}

}  // namespace

PlaceFinder::PlaceFinder(const ElementIndex& index, const TextDecoding& decoding)
    : index_(index), offsets_(index.text(), decoding), lines_(index.text()) {}

std::size_t PlaceFinder::numberOf(ElementNumber element) {
    const ElementNumber parent = index_.parentOf(element);
    if (parent == kNoElement) {
        return 1;
    }
    const std::string_view name = index_.nameOf(element);
    std::string key = std::to_string(parent);
    key.append(" ").append(name);
    const auto [known, isNew] =
        counted_.try_emplace(std::move(key), Counted{index_.childOf(parent, name), 1});
    Counted& counted = known->second;
    if (counted.element > element) {
        counted = {index_.childOf(parent, name), 1};
    }
    while (counted.element != element) {
        counted.element = index_.nextSiblingOf(counted.element);
        counted.number += index_.isNamed(counted.element, name) ? 1 : 0;
    }
    return counted.number;
}

std::string PlaceFinder::pathOf(ElementNumber element) {
    std::vector<ElementNumber> way;
    for (; element != kNoElement; element = index_.parentOf(element)) {
        if (way.size() == kMostSteps) {
            return "";
        }
        way.push_back(element);
    }
    std::string path;
    for (auto step = way.rbegin(); step != way.rend(); ++step) {
        path.append("/").append(index_.nameOf(*step));
        path.append("[").append(std::to_string(numberOf(*step))).append("]");
    }
    return path;
}

std::string PlaceFinder::titleAround(ElementNumber element) const {
    for (std::size_t count = 0; element != kNoElement && count < kNearestElements; ++count) {
        if (const std::string_view title = index_.titleOf(element); !title.empty()) {
            return normalisedAttributeValue(beginningOf(title), false);
        }
        element = index_.parentOf(element);
    }
    return "";
}

Place PlaceFinder::placeOf(TextSpan span) {
    const ElementNumber element = index_.elementAt(span.offset);
    lines_.moveTo(span.offset);
    Place place;
    place.line = lines_.line();
    place.column = lines_.column();
    place.path = pathOf(element);
    place.name = titleAround(element);
    place.offset = offsets_.of(span.offset);
    place.length = offsets_.of(span.end()) - place.offset;
    return place;
}

void PlaceFinder::place(Finding& finding) {
    std::string timecode = std::move(finding.where.timecode);
    finding.where = placeOf({finding.where.offset, finding.where.length});
    finding.where.timecode = std::move(timecode);
    if (finding.mend) {
        for (Edit& edit : finding.mend->edits) {
            const std::size_t end = offsets_.of(edit.offset + edit.length);
            edit.offset = offsets_.of(edit.offset);
            edit.length = end - edit.offset;
        }
    }
}

void PlaceFinder::place(Findings& findings) {
    findings.sort();
    for (Finding& finding : findings.kept()) {
        place(finding);
    }
}

}  // namespace vornic
