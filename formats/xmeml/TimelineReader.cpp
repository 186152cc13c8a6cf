#include "formats/xmeml/TimelineReader.h"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "formats/xmeml/Number.h"
#include "formats/xmeml/Rate.h"
#include "formats/xmeml/TrackItem.h"
#include "formats/xmeml/View.h"

namespace vornic::xmeml {

namespace {

using fcpxml::Time;
using std::int64_t;
using std::uint32_t;

// Beyond, frames are counted by no program.
constexpr int64_t kMostFrames = int64_t{1} << 40U;

Time frameOf(const std::optional<Rate>& rate) {
    if (!rate) {
        return {};
    }
    return rate->ntsc.value_or(false) ? Time(1001, rate->timebase * 1000) : Time(1, rate->timebase);
}

bool isSet(const std::optional<int64_t>& frame) {
    return frame && *frame >= 0 && *frame < kMostFrames;
}

Time timeOf(const std::optional<int64_t>& frame, Time length) {
    return isSet(frame) ? Time::ofFrames(*frame, length) : Time();
}

class Reader {
  public:
    explicit Reader(const ElementIndex& index) : view_(index, true), index_(index) {}

    std::vector<TimelineSequence> read() {
        findFiles();
        for (const ElementNumber element : sequencesAndMulticlips()) {
            if (view_.isReference(element)) {
                continue;
            }
            if (view_.is(element, Name::multiclip)) {
                readMulticlip(element);
            } else {
                readSequence(element);
            }
        }
        for (const Opening& opening : openings_) {
            const uint32_t shown = sequenceOf(opening.shown);
            sequences_[opening.clip.sequence].clips[opening.clip.clip].opens = shown;
        }
        return std::move(sequences_);
    }

  private:
    void findFiles();
    [[nodiscard]] std::vector<ElementNumber> sequencesAndMulticlips() const;
    void readMulticlip(ElementNumber element);
    void readAngle(ElementNumber angle);
    void readSequence(ElementNumber element);
    void readTracks(ElementNumber media);
    void readTrack(ElementNumber track, bool isAudio);
    void readClip(const TrackItem& item, const TrackItem& previous, const TrackItem& next,
                  bool isAudio);
    void place(const TrackItem& item, const TrackItem& previous, const TrackItem& next,
               TimelineClip& clip) const;
    void readMarker(ElementNumber marker, const TrackItem* on, Time clipFrame);
    void readMarkers(ElementNumber around, const TrackItem* on, Time clipFrame);
    [[nodiscard]] TimelineKind kindOf(const TrackItem& item, const Parts& parts,
                                      bool isAudio) const;
    [[nodiscard]] ElementNumber definitionOf(ElementNumber file) const;
    [[nodiscard]] std::string mediaOf(ElementNumber file) const;
    [[nodiscard]] TimecodeCount sourceOf(ElementNumber file, Time clipFrame) const;
    [[nodiscard]] std::string textOf(ElementNumber element) const;
    [[nodiscard]] uint32_t sequenceOf(ElementNumber element) const;
    [[nodiscard]] TimelineSequence& sequence() { return sequences_.back(); }

    View view_;
    const ElementIndex& index_;
    std::vector<TimelineSequence> sequences_;
    std::unordered_map<ElementNumber, uint32_t> numbers_;
    std::unordered_map<std::string, ElementNumber> sequenceIds_;
    std::unordered_map<std::string, ElementNumber> multiclipIds_;
    std::unordered_map<std::string, ElementNumber> files_;
    struct Opening {
        Timeline::Item clip;
        ElementNumber shown;
    };
    std::vector<Opening> openings_;
};

// Files and sequences are defined once and referred to by empty elements with their ids.
void Reader::findFiles() {
    std::string storage;
    for (const auto& [name, definitions] :
         {std::pair("file", &files_), std::pair("sequence", &sequenceIds_),
          std::pair("multiclip", &multiclipIds_)}) {
        for (const ElementNumber element : index_.elementsNamed(name)) {
            const std::string_view id = view_.idOf(element, storage);
            if (!id.empty() && !view_.isReference(element)) {
                definitions->try_emplace(std::string(id), element);
            }
        }
    }
}

// In the order of the file.
std::vector<ElementNumber> Reader::sequencesAndMulticlips() const {
    std::vector<ElementNumber> found;
    for (const std::string_view name : {"sequence", "multiclip"}) {
        for (const ElementNumber element : index_.elementsNamed(name)) {
            found.push_back(element);
        }
    }
    std::sort(found.begin(), found.end());
    return found;
}

void Reader::readMulticlip(ElementNumber element) {
    numbers_.emplace(element, static_cast<uint32_t>(sequences_.size()));
    TimelineSequence& made = sequences_.emplace_back();
    made.place = index_.spanOf(element);
    made.name = textOf(view_.childOf(element, Name::name));
    for (ElementNumber angle = index_.firstChildOf(element); angle != kNoElement;
         angle = index_.nextSiblingOf(angle)) {
        if (view_.is(angle, Name::angle)) {
            made.tracks.push_back({"Angle " + std::to_string(made.tracks.size() + 1), false, 1});
            readAngle(angle);
        }
    }
}

// Angles are shown from their beginnings: how far programs move them is not in the file for sure.
void Reader::readAngle(ElementNumber angle) {
    std::string storage;
    Time begin(0);
    for (ElementNumber child = index_.firstChildOf(angle); child != kNoElement;
         child = index_.nextSiblingOf(child)) {
        if (!view_.is(child, Name::clip) && !view_.is(child, Name::clipitem)) {
            continue;
        }
        const Parts parts(view_, child);
        const Time frame = frameOf(rateOf(view_, parts[Name::rate]));
        if (!sequence().frame.isKnown()) {
            sequence().frame = frame;
        }
        ElementNumber file = child + 1;
        while (file < index_.endOf(child) && !view_.is(file, Name::file)) {
            ++file;
        }
        file = file < index_.endOf(child) ? definitionOf(file) : kNoElement;
        TimelineClip clip;
        clip.place = index_.spanOf(child);
        clip.track = static_cast<uint32_t>(sequence().tracks.size()) - 1;
        clip.name = textOf(parts[Name::name]);
        clip.media = mediaOf(file);
        clip.source = sourceOf(file, frame);
        clip.position = begin;
        clip.duration =
            timeOf(readNumber(view_.textOf(parts[Name::duration], storage)).whole(), frame);
        clip.in = Time(0);
        clip.out = clip.duration;
        begin = begin + clip.duration;
        sequence().clips.push_back(std::move(clip));
    }
}

std::string Reader::textOf(ElementNumber element) const {
    const std::optional<TextSpan> span =
        element == kNoElement ? std::nullopt : index_.textOf(element);
    const std::string_view raw = span ? span->of(index_.text()) : std::string_view();
    // Only what holds more than characters has to be read as markup.
    return raw.find('<') == std::string_view::npos ? shownName(raw)
                                                   : shownName(view_.textOf(element));
}

void Reader::readSequence(ElementNumber element) {
    const TimelineHead head = readTimelineHead(view_, element);
    numbers_.emplace(element, static_cast<uint32_t>(sequences_.size()));
    TimelineSequence& made = sequences_.emplace_back();
    made.place = index_.spanOf(element);
    const Parts parts(view_, element);
    made.frame = frameOf(head.rate);
    if (!made.frame.isKnown()) {
        made.frame = frameOf(rateOf(view_, view_.childOf(parts[Name::timecode], Name::rate)));
    }
    made.isDropFrame = head.isDropFrame;
    made.start = timeOf(head.startFrame, made.frame).valueOr(Time(0));
    made.name = textOf(parts[Name::name]);
    if (parts.has(Name::media)) {
        readTracks(parts[Name::media]);
    }
    readMarkers(element, nullptr, made.frame);
}

void Reader::readTracks(ElementNumber media) {
    std::vector<TimelineTrack>& tracks = sequence().tracks;
    std::size_t videos = 0;
    std::size_t sounds = 0;
    for (ElementNumber kind = index_.firstChildOf(media); kind != kNoElement;
         kind = index_.nextSiblingOf(kind)) {
        const bool isAudio = view_.is(kind, Name::audio);
        if (!isAudio && !view_.is(kind, Name::video)) {
            continue;
        }
        for (ElementNumber track = index_.firstChildOf(kind); track != kNoElement;
             track = index_.nextSiblingOf(track)) {
            if (view_.is(track, Name::track)) {
                const std::size_t number = isAudio ? ++sounds : ++videos;
                tracks.push_back({(isAudio ? "A" : "V") + std::to_string(number), isAudio, 1});
                readTrack(track, isAudio);
            }
        }
    }
    // The topmost picture first, then sound from the first track on.
    std::vector<uint32_t> order;
    for (const bool audio : {false, true}) {
        const auto from = static_cast<std::ptrdiff_t>(order.size());
        for (uint32_t track = 0; track < tracks.size(); ++track) {
            if (tracks[track].isAudio == audio) {
                order.push_back(track);
            }
        }
        if (!audio) {
            std::reverse(order.begin() + from, order.end());
        }
    }
    std::vector<TimelineTrack> sorted;
    std::vector<uint32_t> places(tracks.size());
    for (const uint32_t track : order) {
        places[track] = static_cast<uint32_t>(sorted.size());
        sorted.push_back(std::move(tracks[track]));
    }
    tracks = std::move(sorted);
    for (TimelineClip& clip : sequence().clips) {
        clip.track = places[clip.track];
    }
}

void Reader::readTrack(ElementNumber track, bool isAudio) {
    TrackItem previous;
    TrackItem item = nextItem(view_, index_.firstChildOf(track));
    while (item.isThere()) {
        const TrackItem next = nextItem(view_, index_.nextSiblingOf(item.element));
        readClip(item, previous, next, isAudio);
        previous = item;
        item = next;
    }
}

// A clip beside a transition reaches to its far end: what it shows there it shows, too.
void Reader::place(const TrackItem& item, const TrackItem& previous, const TrackItem& next,
                   TimelineClip& clip) const {
    const Time frame = sequences_.back().frame;
    const Time length = clip.out - clip.in;
    Time begin = timeOf(item.start, frame);
    Time end = timeOf(item.end, frame);
    if (!begin.isKnown() && previous.isTransition()) {
        begin = timeOf(previous.start, frame);
    }
    if (!end.isKnown() && next.isTransition()) {
        end = timeOf(next.end, frame);
    }
    begin = begin.valueOr(end - length);
    end = end.valueOr(begin + length);
    clip.position = begin;
    clip.duration = end - begin;
}

void Reader::readClip(const TrackItem& item, const TrackItem& previous, const TrackItem& next,
                      bool isAudio) {
    const Parts parts(view_, item.element);
    std::string storage;
    const Time sequenceFrame = sequence().frame;
    const Time frame = item.rate == kNoElement
                           ? sequenceFrame
                           : frameOf(rateOf(view_, item.rate)).valueOr(sequenceFrame);
    TimelineClip clip;
    clip.kind = kindOf(item, parts, isAudio);
    clip.isEnabled = readBoolean(view_.textOf(parts[Name::enabled], storage)).value_or(true);
    clip.place = index_.spanOf(item.element);
    clip.track = static_cast<uint32_t>(sequence().tracks.size()) - 1;
    clip.in = timeOf(item.in, frame);
    clip.out = timeOf(item.out, frame);
    place(item, previous, next, clip);
    clip.name = textOf(parts[Name::name]);
    if (clip.name.empty() && parts.has(Name::effect)) {
        clip.name = textOf(view_.childOf(parts[Name::effect], Name::name));
    }
    const ElementNumber file = definitionOf(item.file);
    clip.media = mediaOf(file);
    clip.source = sourceOf(file, frame);
    const ElementNumber shown =
        parts.has(Name::multiclip) ? parts[Name::multiclip] : parts[Name::sequence];
    if (shown != kNoElement) {
        const auto number = static_cast<uint32_t>(sequence().clips.size());
        openings_.push_back({{static_cast<uint32_t>(sequences_.size() - 1), number}, shown});
        clip.media = textOf(view_.childOf(shown, Name::name));
    }
    sequence().clips.push_back(std::move(clip));
    readMarkers(item.element, &item, frame);
}

// Those of a clip count in its media.
void Reader::readMarkers(ElementNumber around, const TrackItem* on, Time clipFrame) {
    for (ElementNumber child = index_.firstChildOf(around); child != kNoElement;
         child = index_.nextSiblingOf(child)) {
        if (view_.is(child, Name::marker)) {
            readMarker(child, on, clipFrame);
        }
    }
}

void Reader::readMarker(ElementNumber marker, const TrackItem* on, Time clipFrame) {
    const Parts parts(view_, marker);
    std::string storage;
    const std::optional<int64_t> in = readNumber(view_.textOf(parts[Name::in], storage)).whole();
    TimelineMarker made;
    made.place = index_.spanOf(marker);
    made.name = textOf(parts[Name::name]);
    made.position = timeOf(in, clipFrame);
    if (on != nullptr) {
        made.clip = static_cast<uint32_t>(sequence().clips.size() - 1);
        const TimelineClip& clip = sequence().clips.back();
        made.position = clip.position + made.position - clip.in.valueOr(Time(0));
        // One that the clip has been trimmed by is not seen.
        if (made.position < clip.position || made.position > clip.position + clip.duration) {
            return;
        }
    }
    sequence().markers.push_back(std::move(made));
}

TimelineKind Reader::kindOf(const TrackItem& item, const Parts& parts, bool isAudio) const {
    if (item.isTransition()) {
        return TimelineKind::transition;
    }
    if (item.name == Name::generatoritem) {
        return TimelineKind::generator;
    }
    if (parts.has(Name::multiclip)) {
        return TimelineKind::multicam;
    }
    if (parts.has(Name::sequence)) {
        return TimelineKind::compound;
    }
    return isAudio ? TimelineKind::audio : TimelineKind::video;
}

// The element that a reference means; `kNoElement` where there is none.
ElementNumber Reader::definitionOf(ElementNumber file) const {
    if (file == kNoElement || !view_.isReference(file)) {
        return file;
    }
    std::string storage;
    const auto definition = files_.find(std::string(view_.idOf(file, storage)));
    return definition == files_.end() ? kNoElement : definition->second;
}

// The name of the file, else that of its path.
std::string Reader::mediaOf(ElementNumber file) const {
    if (file == kNoElement) {
        return "";
    }
    std::string storage;
    const Parts parts(view_, file);
    if (std::string name = textOf(parts[Name::name]); !name.empty()) {
        return name;
    }
    const std::string_view url = view_.textOf(parts[Name::pathurl], storage);
    return shownName(url.substr(url.rfind('/') + 1));
}

// Frames of a clip count from the first one of its file.
TimecodeCount Reader::sourceOf(ElementNumber file, Time clipFrame) const {
    TimecodeCount count;
    count.frame = clipFrame;
    if (file == kNoElement) {
        return count;
    }
    const TimelineHead head = readTimelineHead(view_, file);
    const Time frame = frameOf(head.rate);
    if (frame.isKnown()) {
        count.frame = frame;
        count.start = timeOf(head.startFrame, frame).valueOr(Time(0));
        count.isDropFrame = head.isDropFrame;
    }
    return count;
}

uint32_t Reader::sequenceOf(ElementNumber element) const {
    std::string storage;
    if (view_.isReference(element)) {
        const auto& ids = view_.is(element, Name::multiclip) ? multiclipIds_ : sequenceIds_;
        const auto definition = ids.find(std::string(view_.idOf(element, storage)));
        element = definition == ids.end() ? kNoElement : definition->second;
    }
    const auto number = numbers_.find(element);
    return number == numbers_.end() ? kNoTimelineItem : number->second;
}

}  // namespace

std::vector<TimelineSequence> readTimeline(const ElementIndex& index) {
    return Reader(index).read();
}

}  // namespace vornic::xmeml
