#include "formats/fcpxml/Resources.h"

#include <functional>

namespace vornic::fcpxml {

namespace {

std::string_view trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(" \t\r\n");
    const std::size_t last = text.find_last_not_of(" \t\r\n");
    return first == std::string_view::npos ? std::string_view()
                                           : text.substr(first, last + 1 - first);
}

void addNamed(const ElementIndex& index, ElementNumber resources, std::string_view name,
              std::vector<ElementNumber>& found) {
    for (ElementNumber child = index.firstChildOf(resources); child != vornic::kNoElement;
         child = index.nextSiblingOf(child)) {
        if (index.isNamed(child, name)) {
            found.push_back(child);
        }
    }
}

}  // namespace

std::vector<ElementNumber> resourcesNamed(const ElementIndex& index, std::string_view name) {
    std::vector<ElementNumber> found;
    for (ElementNumber child = index.firstChildOf(0); child != vornic::kNoElement;
         child = index.nextSiblingOf(child)) {
        const bool isProject = index.isNamed(child, "project");
        const ElementNumber resources = isProject ? index.firstChildOf(child) : child;
        if (resources != vornic::kNoElement && index.isNamed(resources, "resources")) {
            addNamed(index, resources, name, found);
        }
    }
    return found;
}

// A frame without length is none: what is counted in it would be nonsense.
Time Resources::frameOf(ElementNumber format) const {
    const Time frame = parsedTime(index_.attributeTextOf(format, "frameDuration")).time;
    return frame > Time(0) ? frame : Time();
}

Resource Resources::read(ElementNumber element) const {
    Resource resource;
    resource.element = element;
    resource.kind = index_.nameOf(element);
    if (resource.kind == "format") {
        resource.frameDuration = frameOf(element);
    } else if (resource.kind == "asset") {
        const auto start = index_.attributeOf(element, "start");
        resource.start = start ? parsedTime(start->of(index_.text())).time : Time(0);
        resource.duration = parsedTime(index_.attributeTextOf(element, "duration")).time;
        // Not by `find`: an asset may name itself.
        const std::string_view id = trimmed(index_.attributeTextOf(element, "format"));
        const ElementNumber format = id.empty() ? vornic::kNoElement : index_.elementWithId(id);
        if (format != vornic::kNoElement && index_.isNamed(format, "format")) {
            resource.frameDuration = frameOf(format);
        }
        resource.isStill = !resource.frameDuration.isKnown() &&
                           index_.attributeTextOf(element, "hasVideo") == "1" &&
                           index_.attributeTextOf(element, "hasAudio") != "1";
    }
    return resource;
}

const Resource* Resources::find(std::string_view reference) {
    const std::string_view id = trimmed(reference);
    if (id.empty()) {
        return nullptr;
    }
    Slot& slot = known_[std::hash<std::string_view>()(id) % kSlots];
    if (slot.id != id) {
        const ElementNumber element = index_.elementWithId(id);
        slot = {id, element == vornic::kNoElement ? Resource() : read(element)};
    }
    return slot.resource.element == vornic::kNoElement ? nullptr : &slot.resource;
}

const Resource* Resources::find(std::string_view reference, std::string_view kind) {
    const Resource* const resource = find(reference);
    return resource != nullptr && resource->kind == kind ? resource : nullptr;
}

Time Resources::frameDurationOf(std::string_view formatReference) {
    const Resource* const format = find(formatReference, "format");
    return format == nullptr ? Time() : format->frameDuration;
}

}  // namespace vornic::fcpxml
