#include <string>
#include <unordered_map>

#include "formats/xmeml/IdTable.h"
#include "formats/xmeml/Number.h"
#include "formats/xmeml/Rate.h"
#include "formats/xmeml/SpeedEffect.h"
#include "formats/xmeml/View.h"
#include "media/MediaList.h"

namespace vornic {

namespace {

using fcpxml::Time;
using xmeml::Name;
using xmeml::Parts;
using xmeml::View;

Time frameOf(const xmeml::Rate& rate) {
    return rate.ntsc.value_or(false) ? Time(1001, rate.timebase * 1000) : Time(1, rate.timebase);
}

class XMEMLMedia {
  public:
    XMEMLMedia(const ElementIndex& index, bool isComplete, MediaGatherer& media)
        : view_(index, isComplete),
          index_(index),
          media_(media),
          sequences_(index, index.elementsNamed("sequence")) {}

    void gather() {
        for (const ElementNumber file : index_.elementsNamed("file")) {
            addDefinition(file);
        }
        ids_.sort();
        for (const ElementNumber file : index_.elementsNamed("file")) {
            addUse(file);
        }
    }

  private:
    // What a clip says, whatever the number of files in it.
    struct Clip {
        std::string name;
        Time start;
        Time end;
    };

    void addDefinition(ElementNumber file) {
        if (index_.firstChildOf(file) == kNoElement) {
            return;
        }
        const Parts parts(view_, file);
        const std::string url = view_.textOf(parts[Name::pathurl]);
        if (url.empty() || !index_.isClosed(parts[Name::pathurl])) {
            return;
        }
        Medium& medium =
            media_.at(url, {parts[Name::pathurl], *index_.textOf(parts[Name::pathurl])});
        definitions_.emplace(file, media_.indexOf(medium));
        std::string storage;
        if (const std::string_view id = view_.idOf(file, storage); !id.empty()) {
            ids_.add(file, id);
        }
        if (medium.places.size() == 1) {
            describe(parts, medium);
        }
    }

    void describe(const Parts& parts, Medium& medium) {
        medium.name = view_.textOf(parts[Name::name]);
        if (const auto rate = xmeml::rateOf(view_, parts[Name::rate])) {
            medium.frameDuration = frameOf(*rate);
        }
        const auto duration = xmeml::readNumber(view_.textOf(parts[Name::duration])).whole();
        medium.start = Time(0);
        if (duration && *duration > 0) {
            medium.duration = Time::ofFrames(*duration, medium.frameDuration);
        }
        if (parts.has(Name::media)) {
            countTracks(parts[Name::media], medium);
        }
    }

    // `<media>` of a file: a `<video>` for each track of pictures, and `<audio>` with the number of
    // its channels.
    void countTracks(ElementNumber tracks, Medium& medium) {
        constexpr std::int64_t kMostChannels = 1000;
        medium.videoTracks = 0;
        medium.audioTracks = 0;
        for (ElementNumber track = index_.firstChildOf(tracks); track != kNoElement;
             track = index_.nextSiblingOf(track)) {
            if (view_.is(track, Name::video)) {
                ++*medium.videoTracks;
            } else if (view_.is(track, Name::audio)) {
                const auto channels =
                    xmeml::readNumber(view_.textOf(view_.childOf(track, Name::channelcount)))
                        .whole();
                const bool isCount = channels && *channels >= 0 && *channels <= kMostChannels;
                *medium.audioTracks += isCount ? static_cast<std::uint64_t>(*channels) : 1;
            }
        }
    }

    void addUse(ElementNumber file) {
        const bool isInSequence = sequences_.contains(file);
        const std::optional<std::size_t> medium = mediumOf(file);
        const ElementNumber parent = index_.parentOf(file);
        if (!medium || (!view_.is(parent, Name::clipitem) && !view_.is(parent, Name::clip))) {
            return;
        }
        const Clip& clip = clipAt(parent, media_[*medium].frameDuration);
        media_.addClip(*medium, clip.name, isInSequence);
        if (isInSequence) {
            media_.addRange(*medium, clip.start, clip.end);
        }
    }

    [[nodiscard]] std::optional<std::size_t> mediumOf(ElementNumber file) {
        ElementNumber definition = file;
        if (index_.firstChildOf(file) == kNoElement) {
            std::string storage;
            const std::string_view id = view_.idOf(file, storage);
            definition = id.empty()
                             ? kNoElement
                             : ids_.find(id, [this](ElementNumber element, std::string& keep) {
                                   return view_.idOf(element, keep);
                               });
        }
        const auto found = definitions_.find(definition);
        return found == definitions_.end() ? std::nullopt : std::optional(found->second);
    }

    const Clip& clipAt(ElementNumber element, Time frameOfFile) {
        const auto [known, isNew] = clips_.try_emplace(element);
        if (isNew) {
            known->second = readClip(element, frameOfFile);
        }
        return known->second;
    }

    // `in` and `out` count frames of the clip's own rate; -1 is not set (and then all of it is
    // used).
    [[nodiscard]] Clip readClip(ElementNumber element, Time frameOfFile) const {
        const Parts parts(view_, element);
        Clip clip;
        clip.name = view_.textOf(parts[Name::name]);
        if (xmeml::hasSpeedEffect(view_, element)) {
            return clip;
        }
        const auto rate = xmeml::rateOf(view_, parts[Name::rate]);
        const Time frame = rate ? frameOf(*rate) : frameOfFile;
        const auto first = xmeml::readNumber(view_.textOf(parts[Name::in])).whole();
        const auto last = xmeml::readNumber(view_.textOf(parts[Name::out])).whole();
        if (first && last && *first >= 0 && *last >= *first) {
            clip.start = Time::ofFrames(*first, frame);
            clip.end = Time::ofFrames(*last, frame);
        }
        return clip;
    }

    View view_;
    const ElementIndex& index_;
    MediaGatherer& media_;
    InsideOf sequences_;
    xmeml::IdTable ids_;
    std::unordered_map<ElementNumber, std::size_t> definitions_;
    std::unordered_map<ElementNumber, Clip> clips_;
};

}  // namespace

void gatherXMEMLMedia(const ElementIndex& index, bool isComplete, MediaGatherer& media) {
    XMEMLMedia(index, isComplete, media).gather();
}

}  // namespace vornic
