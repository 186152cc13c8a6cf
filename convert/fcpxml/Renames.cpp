#include "convert/fcpxml/Renames.h"

namespace vornic::fcpxml {

namespace {

using std::string_view;

// Effects that real files use in filters of the picture alone.
bool isPictureEffect(string_view uid) {
    return uid.starts_with("FxPlug:") || uid.find("/Effects.localized/") != string_view::npos;
}

bool hasPictureEffect(const ElementIndex& index, ElementNumber filter) {
    const ElementNumber effect = index.elementWithId(index.attributeTextOf(filter, "ref"));
    return effect != vornic::kNoElement && isPictureEffect(index.attributeTextOf(effect, "uid"));
}

string_view renamedFilter(const ElementIndex& index, ElementNumber filter, string_view parent) {
    if (parent == "video" || parent == "title" || parent == "mc-source") {
        return "filter-video";
    }
    const bool isOfPicture = hasPictureEffect(index, filter);
    if (parent == "mc-clip") {
        return isOfPicture ? "filter" : "filter-audio";
    }
    if (parent == "clip" || parent == "ref-clip") {
        return isOfPicture ? "filter-video" : "filter";
    }
    return "filter-audio";
}

}  // namespace

string_view renamed(const ElementIndex& index, ElementNumber element, string_view parent,
                    Version from, Version to) {
    const string_view name = index.nameOf(element);
    if (to == Version(6) && (name == "audio-source" || name == "audio-aux-source")) {
        return parent == "clip"                                ? "audio-channel-source"
               : parent == "ref-clip" || parent == "mc-source" ? "audio-role-source"
                                                               : name;
    }
    return from < Version(3) && to == Version(3) && name == "filter"
               ? renamedFilter(index, element, parent)
               : name;
}

}  // namespace vornic::fcpxml
