#include "check/xmeml/TrackTable.h"

#include <algorithm>
#include <numeric>
#include <tuple>
#include <unordered_map>

namespace vornic::xmeml {

namespace {

auto keyOf(const Track& track) {
    return std::tuple(track.timeline, track.isAudio, std::int64_t{track.number});
}

}  // namespace

TrackTable::TrackTable(const View& view) {
    const ElementIndex& index = view.index();
    std::unordered_map<ElementNumber, std::uint32_t> numbers;
    for (const ElementNumber element : index.elementsNamed("track")) {
        const ElementNumber kind = index.parentOf(element);
        const bool isAudio = view.is(kind, Name::audio);
        if (!isAudio && !view.is(kind, Name::video)) {
            continue;
        }
        const ElementNumber media = view.parentOf(kind, Name::media);
        const ElementNumber timeline = media == kNoElement ? kNoElement : index.parentOf(media);
        tracks_.push_back({timeline, element, ++numbers[kind], isAudio});
        counts_.push_back(0);
        addItems(view, static_cast<std::uint32_t>(tracks_.size() - 1));
    }
    std::sort(items_.begin(), items_.end(),
              [](const Item& left, const Item& right) { return left.element < right.element; });
    byNumber_.resize(tracks_.size());
    std::iota(byNumber_.begin(), byNumber_.end(), 0U);
    std::sort(byNumber_.begin(), byNumber_.end(), [this](std::uint32_t left, std::uint32_t right) {
        return keyOf(tracks_[left]) < keyOf(tracks_[right]);
    });
}

void TrackTable::addItems(const View& view, std::uint32_t track) {
    const ElementIndex& index = view.index();
    std::uint32_t number = 0;
    for (ElementNumber item = index.firstChildOf(tracks_[track].element); item != kNoElement;
         item = index.nextSiblingOf(item)) {
        const Name name = view.nameOf(item);
        const bool isClip = name == Name::clipitem || name == Name::generatoritem;
        if (!isClip && name != Name::transitionitem) {
            continue;
        }
        ++counts_[track];
        number += isClip ? 1 : 0;
        if (isClip) {
            items_.push_back({item, track, number, counts_[track]});
        }
    }
}

std::optional<ItemPlace> TrackTable::placeOf(ElementNumber clipItem) const {
    const auto item = std::lower_bound(
        items_.begin(), items_.end(), clipItem,
        [](const Item& candidate, ElementNumber wanted) { return candidate.element < wanted; });
    if (item == items_.end() || item->element != clipItem) {
        return std::nullopt;
    }
    return ItemPlace{tracks_[item->track], item->number, item->numberWithTransitions};
}

std::uint32_t TrackTable::itemCount(ElementNumber timeline, bool isAudio,
                                    std::int64_t trackNumber) const {
    const auto wanted = std::tuple(timeline, isAudio, trackNumber);
    const auto found = std::lower_bound(
        byNumber_.begin(), byNumber_.end(), wanted,
        [this](std::uint32_t track, const auto& key) { return keyOf(tracks_[track]) < key; });
    const bool isThere = found != byNumber_.end() && keyOf(tracks_[*found]) == wanted;
    return isThere ? counts_[*found] : 0;
}

}  // namespace vornic::xmeml
