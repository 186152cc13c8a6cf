#include "check/xmeml/RepeatedItems.h"

#include <algorithm>

#include "base/Text.h"
#include "formats/xmeml/Number.h"

namespace vornic::xmeml {

void RepeatedItems::addItem(ElementNumber first, ElementNumber item) {
    const auto [group, isNew] = groups_.try_emplace(first);
    if (isNew) {
        addToTimeline(group->second, first);
    }
    addToTimeline(group->second, item);
}

void RepeatedItems::addToTimeline(Group& group, ElementNumber item) {
    const std::optional<ItemPlace> place = tracks_.placeOf(item);
    Timeline& timeline = group.timelines[place ? place->track.timeline : kNoElement];
    timeline.items.push_back(item);
    if (place) {
        timeline.byNumbers[{place->track.isAudio, place->track.number, place->number}] = item;
    }
}

void RepeatedItems::addLink(ElementNumber link, ElementNumber reference, ElementNumber first) {
    const auto found = groups_.find(first);
    if (found == groups_.end()) {
        return;
    }
    const std::optional<TextSpan> written = view_.index().textOf(reference);
    const ElementNumber target = written ? targetOf(found->second, link) : kNoElement;
    if (target == kNoElement) {
        found->second.isUnclear = true;
    } else {
        found->second.links[target].push_back(*written);
    }
}

ElementNumber RepeatedItems::targetOf(const Group& group, ElementNumber link) const {
    const std::optional<ItemPlace> own = tracks_.placeOf(view_.index().parentOf(link));
    const auto found = group.timelines.find(own ? own->track.timeline : kNoElement);
    if (found == group.timelines.end()) {
        return kNoElement;
    }
    const Timeline& timeline = found->second;
    if (timeline.items.size() == 1) {
        return timeline.items.front();
    }
    const Parts parts(view_, link);
    std::string storage;
    const auto numberOf = [&](Name name) {
        return readNumber(view_.textOf(parts[name], storage)).whole();
    };
    const std::optional<std::int64_t> track = numberOf(Name::trackindex);
    const std::optional<std::int64_t> clip = numberOf(Name::clipindex);
    const std::string media = lowercased(view_.textOf(parts[Name::mediatype], storage));
    if (!track || !clip || (media != "video" && media != "audio")) {
        return kNoElement;
    }
    const auto item = timeline.byNumbers.find({media == "audio", *track, *clip});
    return item == timeline.byNumbers.end() ? kNoElement : item->second;
}

std::optional<Mend> RepeatedItems::mendOf(ElementNumber first, ElementNumber item) {
    const ElementIndex& index = view_.index();
    const std::optional<TextSpan> id = index.attributeOf(item, "id");
    const auto found = groups_.find(first);
    const std::string_view text = id ? trimmed(id->of(index.text())) : std::string_view();
    if (found == groups_.end() || found->second.isUnclear || text.empty() ||
        text.find('&') != std::string_view::npos) {
        return std::nullopt;
    }
    Group& group = found->second;
    const std::string fresh = freshIds_.like(text);
    Mend mend{Confidence::ask,
              "write the id \"" + fresh + "\" here, and in the links that mean this clip item",
              {{id->offset, id->length, fresh}}};
    for (const TextSpan& link : group.links[item]) {
        mend.edits.push_back({link.offset, link.length, fresh});
    }
    std::sort(mend.edits.begin(), mend.edits.end(),
              [](const Edit& left, const Edit& right) { return left.offset < right.offset; });
    return mend;
}

}  // namespace vornic::xmeml
