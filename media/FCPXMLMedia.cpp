#include <algorithm>
#include <charconv>
#include <iterator>
#include <string>
#include <unordered_map>

#include "formats/StartTag.h"
#include "formats/fcpxml/Resources.h"
#include "formats/fcpxml/Retiming.h"
#include "media/MediaList.h"
#include "xml/text/AttributeValue.h"

namespace vornic {

namespace {

using fcpxml::Resource;
using fcpxml::Resources;
using fcpxml::Time;

constexpr std::string_view kOriginal = "original-media";

// A stretch of time; unknown ends where the file does not say.
struct Range {
    Time start;
    Time end;
};

std::vector<ElementNumber> timelinesOf(const ElementIndex& index) {
    std::vector<ElementNumber> spines = index.elementsNamed("spine");
    std::vector<ElementNumber> all;
    std::merge(spines.begin(), spines.end(), index.elementsNamed("mc-angle").begin(),
               index.elementsNamed("mc-angle").end(), std::back_inserter(all));
    return all;
}

class FCPXMLMedia {
  public:
    FCPXMLMedia(const ElementIndex& index, MediaGatherer& media)
        : index_(index),
          resources_(index),
          retiming_(index),
          media_(media),
          timelines_(index, timelinesOf(index)) {}

    void gather() {
        for (const ElementNumber element : index_.elementsWithAttribute("src")) {
            const bool isAsset = index_.isNamed(element, "asset");
            const ElementNumber owner = isAsset ? element : index_.parentOf(element);
            if (isAsset || (index_.isNamed(element, "media-rep") && owner != kNoElement)) {
                addMedium(element, owner);
            }
        }
        for (const ElementNumber element : index_.elementsWithAttribute("ref")) {
            addUse(element);
        }
    }

  private:
    [[nodiscard]] std::string valueOf(ElementNumber element, std::string_view attribute) const {
        return normalisedAttributeValue(index_.attributeTextOf(element, attribute), false);
    }

    void addMedium(ElementNumber element, ElementNumber asset) {
        const TextSpan value = *index_.attributeOf(element, "src");
        const std::string url = valueOf(element, "src");
        if (url.find_first_not_of(" \t\r\n") == std::string::npos) {
            return;
        }
        Medium& medium = media_.at(url, {element, value});
        std::vector<std::size_t>& ofAsset = ofAssets_[asset];
        if (const std::size_t number = media_.indexOf(medium);
            ofAsset.size() < kMostOfAnAsset &&
            std::find(ofAsset.begin(), ofAsset.end(), number) == ofAsset.end()) {
            ofAsset.push_back(number);
        }
        if (medium.places.size() == 1) {
            const std::string kind = valueOf(element, "kind");
            medium.kind = kind == kOriginal ? "" : kind;
            describe(asset, medium);
        }
    }

    void describe(ElementNumber asset, Medium& medium) {
        medium.name = valueOf(asset, "name");
        const Resource resource = resources_.read(asset);
        medium.start = resource.start;
        medium.duration = resource.duration > Time(0) ? resource.duration : Time();
        medium.frameDuration = resource.frameDuration;
        medium.videoTracks = countOf(asset, "hasVideo", "videoSources");
        medium.audioTracks = countOf(asset, "hasAudio", "audioChannels");
    }

    // 1 where the asset has such media and does not say how many; nothing where it says neither.
    [[nodiscard]] std::optional<std::uint64_t> countOf(ElementNumber asset, std::string_view has,
                                                       std::string_view count) const {
        const std::string_view number = index_.attributeTextOf(asset, count);
        std::uint64_t value = 0;
        const auto [end, error] =
            std::from_chars(number.data(), number.data() + number.size(), value);
        if (!number.empty() && error == std::errc() && end == number.data() + number.size()) {
            return value;
        }
        const std::string_view flag = index_.attributeTextOf(asset, has);
        return flag == "1"   ? std::optional<std::uint64_t>(1)
               : flag == "0" ? std::optional<std::uint64_t>(0)
                             : std::nullopt;
    }

    void addUse(ElementNumber element) {
        const bool isInTimeline = timelines_.contains(element);
        if (!isClip(element)) {
            return;
        }
        const ClipTag tag = tagOf(element);
        const Resource* const asset = resources_.find(tag.reference, "asset");
        const auto media = asset == nullptr ? ofAssets_.end() : ofAssets_.find(asset->element);
        if (media == ofAssets_.end()) {
            return;
        }
        const Resource known = *asset;
        const std::string name = nameOfClip(element, tag);
        const Range range = isInTimeline && !retiming_.isRetimed(element)
                                ? shown(element, tag, known, kMostSteps)
                                : Range();
        for (const std::size_t medium : media->second) {
            media_.addClip(medium, name, isInTimeline);
            if (isInTimeline) {
                media_.addRange(medium, range.start, range.end);
            }
        }
    }

    // What is asked of a clip, read in one walk over its attributes; null views for what it lacks.
    struct ClipTag {
        std::string_view reference;
        std::string_view name;
        std::string_view start;
        std::string_view duration;
        std::string_view offset;
        std::string_view lane;
    };

    [[nodiscard]] ClipTag tagOf(ElementNumber element) const {
        const std::string_view text = index_.text();
        ClipTag clip;
        StartTag tag(text, index_.spanOf(element).offset);
        while (tag.next()) {
            const std::string_view name = tag.name();
            std::string_view* const place = name == "ref"        ? &clip.reference
                                            : name == "name"     ? &clip.name
                                            : name == "start"    ? &clip.start
                                            : name == "duration" ? &clip.duration
                                            : name == "offset"   ? &clip.offset
                                            : name == "lane"     ? &clip.lane
                                                                 : nullptr;
            if (place != nullptr && place->data() == nullptr) {
                *place = tag.value().of(text);
            }
        }
        return clip;
    }

    [[nodiscard]] bool isClip(ElementNumber element) const {
        return index_.isNamed(element, "asset-clip") || isPart(element);
    }
    // What a `<clip>` shows.
    [[nodiscard]] bool isPart(ElementNumber element) const {
        return index_.isNamed(element, "video") || index_.isNamed(element, "audio");
    }

    // The part's own name, or that of the clip around it.
    [[nodiscard]] std::string nameOfClip(ElementNumber element, const ClipTag& tag) const {
        ElementNumber clip = element;
        for (int step = 0; step < kMostSteps && isPart(clip); ++step) {
            const ElementNumber parent = index_.parentOf(clip);
            if (parent == kNoElement || (!isPart(parent) && !index_.isNamed(parent, "clip"))) {
                break;
            }
            clip = parent;
        }
        const std::string name = clip == element ? std::string() : valueOf(clip, "name");
        return name.empty() ? normalisedAttributeValue(tag.name, false) : name;
    }

    [[nodiscard]] static Time timeOf(std::string_view value, Time otherwise) {
        return value.data() == nullptr ? otherwise : fcpxml::parsedTime(value).time;
    }

    // What of an element is seen, in its own time: of a part of a clip only what the clip shows.
    [[nodiscard]] Range shown(ElementNumber element, const ClipTag& tag, const Resource& asset,
                              int steps) const {
        const bool ofAsset = tag.reference.data() != nullptr;
        const Time start = timeOf(tag.start, ofAsset ? asset.start : Time(0));
        const Time end = start + timeOf(tag.duration, ofAsset ? asset.duration : Time());
        const ElementNumber parent = index_.parentOf(element);
        const bool isInside = parent != kNoElement && isPart(element) &&
                              (isPart(parent) || index_.isNamed(parent, "clip")) &&
                              isZero(tag.lane);
        if (!isInside || steps == 0) {
            return {start, end};
        }
        const Range around = shown(parent, tagOf(parent), asset, steps - 1);
        const Time shift = start - timeOf(tag.offset, Time(0));
        const Time from = around.start + shift;
        const Time to = around.end + shift;
        if (!from.isKnown() || !to.isKnown()) {
            return {start, end};
        }
        return {from > start ? from : start, to < end ? to : end};
    }

    [[nodiscard]] static bool isZero(std::string_view lane) {
        return lane.find_first_not_of("+-0 ") == std::string_view::npos;
    }

    static constexpr int kMostSteps = 8;
    // Of more representations than any program writes, the uses are counted for the first ones.
    static constexpr std::size_t kMostOfAnAsset = 16;

    const ElementIndex& index_;
    Resources resources_;
    fcpxml::Retiming retiming_;
    MediaGatherer& media_;
    InsideOf timelines_;
    // The media of each asset.
    std::unordered_map<ElementNumber, std::vector<std::size_t>> ofAssets_;
};

}  // namespace

void gatherFCPXMLMedia(const ElementIndex& index, MediaGatherer& media) {
    FCPXMLMedia(index, media).gather();
}

}  // namespace vornic
