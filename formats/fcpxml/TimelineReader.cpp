#include "formats/fcpxml/TimelineReader.h"

#include <algorithm>
#include <charconv>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "formats/fcpxml/StoryElement.h"

namespace vornic::fcpxml {

namespace {

using std::uint32_t;

// Nobody nests clips as deep as hostile files do.
constexpr std::size_t kMostLevels = 200;
// Nor uses as many lanes.
constexpr int kMostLane = 1000;

enum class Role : std::uint8_t { none, story, angle, marker };

// An element that is open, as those inside it see it.
struct Level {
    ElementNumber element = vornic::kNoElement;
    ElementNumber end = 0;
    StoryKind kind = StoryKind::none;
    bool isAngle = false;
    bool isInMulticam = false;
    // Seen on the timeline of its sequence.
    bool isPlaced = false;
    // Where it begins there, and what its children's offsets count from.
    Time position;
    Time start;
    int lane = 0;
    uint32_t sequence = kNoTimelineItem;
    // The clip that it is, or stands in.
    uint32_t clip = kNoTimelineItem;
    // Of a storyline: where its next item stands that does not say so.
    Time due;
    // Of an audition: the clip that it shows has come.
    bool hasPick = false;

    [[nodiscard]] bool isStoryline() const { return kind == StoryKind::spine || isAngle; }
};

class Reader {
  public:
    explicit Reader(const ElementIndex& index)
        : index_(index), resources_(index), reader_(index), roles_(index.nameCount() + 1) {
        for (std::size_t number = 0; number < index.nameCount(); ++number) {
            roles_[number] = roleOf(index.nameNumbered(number));
        }
    }

    std::vector<TimelineSequence> read() {
        const auto count = static_cast<ElementNumber>(index_.size());
        for (ElementNumber element = 0; element < count; ++element) {
            const Role role = roles_[index_.nameNumberOf(element)];
            const StoryKind kind = reader_.kindOf(element);
            if (role != Role::none || (kind != StoryKind::none && kind != StoryKind::timed)) {
                closeUpTo(element);
                open(element, role, kind);
            }
        }
        closeUpTo(count);
        finish();
        return std::move(sequences_);
    }

  private:
    // The tracks of a sequence by lane, those of a multicam clip by angle.
    struct Tracks {
        std::map<int, uint32_t> byLane;
        std::vector<TimelineTrack> tracks;
    };

    static Role roleOf(std::string_view name) {
        return name == "mc-angle"         ? Role::angle
               : name.ends_with("marker") ? Role::marker
                                          : Role::none;
    }

    void closeUpTo(ElementNumber element);
    void open(ElementNumber element, Role role, StoryKind kind);
    void openSequence(Level& level, const StoryElement& story);
    void openAngle(Level& level, const Level* parent);
    void openSpine(Level& level, const StoryElement& story, const Level* parent);
    void openItem(Level& level, StoryElement story, Level* parent);
    void openPick(Level& level, const StoryElement& story, Level& audition);
    void openTransition(Level& level, const StoryElement& story, const Level* parent);
    void addMarker(ElementNumber element, const Level& on);
    void addClip(Level& level, TimelineClip clip);
    void noteMedia(const StoryElement& story, const Level& level);
    void finish();
    [[nodiscard]] Level* parentOf(ElementNumber element);
    [[nodiscard]] uint32_t trackOf(uint32_t sequence, int lane);
    [[nodiscard]] TimelineKind kindOf(const StoryElement& story);
    [[nodiscard]] std::string nameOf(ElementNumber element) const;
    [[nodiscard]] std::string mediaOf(std::string_view reference);
    [[nodiscard]] TimecodeCount sourceOf(const StoryElement& story);
    [[nodiscard]] int laneOf(const StoryElement& story, const Level& around) const;

    const ElementIndex& index_;
    Resources resources_;
    StoryReader reader_;
    std::vector<Role> roles_;
    std::vector<Level> levels_;
    std::vector<TimelineSequence> sequences_;
    std::vector<Tracks> tracks_;
    // What the resource holds that a clip refers to, and which clips wait for it.
    std::unordered_map<ElementNumber, uint32_t> sequenceIn_;
    struct Opening {
        Timeline::Item clip;
        ElementNumber media;
    };
    std::vector<Opening> openings_;
};

bool holdsContent(StoryKind kind) {
    return kind == StoryKind::clip || kind == StoryKind::syncClip;
}

Level* Reader::parentOf(ElementNumber element) {
    const bool isOpen = !levels_.empty() && levels_.back().element == index_.parentOf(element);
    return isOpen ? &levels_.back() : nullptr;
}

// A storyline is as long as what is in it.
void Reader::closeUpTo(ElementNumber element) {
    while (!levels_.empty() && levels_.back().end <= element) {
        const Level& level = levels_.back();
        const bool isShown =
            level.kind == StoryKind::spine && level.isPlaced && level.clip != kNoTimelineItem;
        if (isShown) {
            TimelineClip& clip = sequences_[level.sequence].clips[level.clip];
            clip.duration = level.due;
        }
        levels_.pop_back();
    }
}

void Reader::open(ElementNumber element, Role role, StoryKind kind) {
    if (levels_.size() == kMostLevels) {
        return;
    }
    Level* const parent = parentOf(element);
    if (role == Role::marker) {
        if (parent != nullptr && parent->isPlaced && isStoryItem(parent->kind)) {
            addMarker(element, *parent);
        }
        return;
    }
    Level level;
    level.element = element;
    level.end = index_.endOf(element);
    level.kind = kind;
    if (!levels_.empty()) {
        level.sequence = levels_.back().sequence;
        level.clip = levels_.back().clip;
        level.isInMulticam = levels_.back().isInMulticam;
    }
    const StoryElement story = reader_.read(element);
    if (role == Role::angle) {
        openAngle(level, parent);
    } else if (kind == StoryKind::sequence || kind == StoryKind::multicam) {
        openSequence(level, story);
    } else if (kind == StoryKind::spine) {
        openSpine(level, story, parent);
    } else if (kind == StoryKind::transition) {
        openTransition(level, story, parent);
    } else if (isStoryItem(kind)) {
        openItem(level, story, parent);
    }
    levels_.push_back(level);
}

void Reader::openSequence(Level& level, const StoryElement& story) {
    level.sequence = static_cast<uint32_t>(sequences_.size());
    level.clip = kNoTimelineItem;
    level.isInMulticam = story.kind == StoryKind::multicam;
    level.isPlaced = true;
    level.position = Time(0);
    level.start = story.tcStart.isThere() ? story.tcStart.time : Time(0);
    TimelineSequence sequence;
    sequence.place = index_.spanOf(level.element);
    sequence.frame = resources_.frameDurationOf(story.format);
    sequence.start = level.start;
    sequence.isDropFrame = story.tcFormat == "DF";
    const ElementNumber owner = index_.parentOf(level.element);
    if (owner != vornic::kNoElement) {
        sequence.name = nameOf(owner);
        sequenceIn_.try_emplace(owner, level.sequence);
    }
    sequences_.push_back(std::move(sequence));
    tracks_.emplace_back();
}

// What is in an angle stands as in a storyline.
void Reader::openAngle(Level& level, const Level* parent) {
    level.isAngle = true;
    if (parent == nullptr || parent->kind != StoryKind::multicam) {
        return;
    }
    Tracks& tracks = tracks_[parent->sequence];
    level.lane = -static_cast<int>(tracks.tracks.size());
    const std::string name = nameOf(level.element);
    tracks.byLane.emplace(level.lane, static_cast<uint32_t>(tracks.tracks.size()));
    tracks.tracks.push_back(
        {name.empty() ? "Angle " + std::to_string(1 - level.lane) : name, false, 1});
    level.isPlaced = true;
    level.position = Time(0) - parent->start;
    level.start = Time(0);
    level.due = parent->start;
}

void Reader::openSpine(Level& level, const StoryElement& story, const Level* parent) {
    level.start = Time(0);
    level.due = Time(0);
    if (parent == nullptr || !parent->isPlaced) {
        return;
    }
    if (parent->kind == StoryKind::sequence) {
        level.isPlaced = true;
        level.position = Time(0) - parent->start;
        level.due = parent->start;
        return;
    }
    const std::string_view lane = story.lane.of(index_.text());
    if (!isStoryItem(parent->kind) || (holdsContent(parent->kind) && !isLane(lane))) {
        return;
    }
    level.isPlaced = true;
    level.position =
        parent->position + (story.offset.isThere() ? story.offset.time : Time(0)) - parent->start;
    level.lane = laneOf(story, *parent);
    TimelineClip clip;
    clip.kind = TimelineKind::storyline;
    clip.position = level.position;
    clip.name = nameOf(level.element);
    addClip(level, std::move(clip));
}

void Reader::openTransition(Level& level, const StoryElement& story, const Level* parent) {
    if (parent == nullptr || !parent->isStoryline() || !parent->isPlaced) {
        return;
    }
    level.lane = parent->lane;
    TimelineClip clip;
    clip.kind = TimelineKind::transition;
    clip.position = parent->position + story.offset.time;
    clip.duration = story.duration.time;
    clip.name = nameOf(level.element);
    addClip(level, std::move(clip));
}

void Reader::openItem(Level& level, StoryElement story, Level* parent) {
    StoryElement shown = story;
    if (story.kind == StoryKind::audition) {
        const ElementNumber pick = index_.firstChildOf(story.element);
        story = reader_.withAuditionsPick(story);
        if (pick != vornic::kNoElement && isStoryItem(reader_.kindOf(pick))) {
            shown = reader_.read(pick);
        }
    }
    level.start = startOf(shown, resources_);
    const Time duration = durationOf(shown, resources_);
    if (parent == nullptr || !parent->isPlaced) {
        return noteMedia(story, level);
    }
    if (parent->isStoryline()) {
        const Time offset = story.offset.isThere() ? story.offset.time : parent->due;
        level.position = parent->position + offset;
        level.lane = parent->lane;
        parent->due = offset + duration;
    } else if (parent->kind == StoryKind::audition) {
        return openPick(level, story, *parent);
    } else {
        const bool isConnected =
            isLane(story.lane.of(index_.text())) || !holdsContent(parent->kind);
        if (!isStoryItem(parent->kind) || !isConnected) {
            return noteMedia(story, level);
        }
        level.position = parent->position + (story.offset.isThere() ? story.offset.time : Time(0)) -
                         parent->start;
        level.lane = laneOf(story, *parent);
    }
    level.isPlaced = true;
    TimelineClip clip;
    clip.kind = kindOf(story);
    clip.isEnabled = index_.attributeTextOf(shown.element, "enabled") != "0";
    clip.position = level.position;
    clip.duration = duration;
    clip.in = level.start;
    clip.out = level.start + duration;
    clip.media = mediaOf(shown.reference);
    clip.source = sourceOf(shown);
    if (!clip.source.frame.isKnown()) {
        clip.source.frame = sequences_[level.sequence].frame;
    }
    clip.name = nameOf(shown.element);
    addClip(level, std::move(clip));
    if (shown.kind == StoryKind::refClip || shown.kind == StoryKind::mcClip) {
        const Resource* const media = resources_.find(shown.reference, "media");
        if (media != nullptr) {
            openings_.push_back({{level.sequence, level.clip}, media->element});
        }
    }
}

// What is connected to the clip that an audition shows is connected to the audition.
void Reader::openPick(Level& level, const StoryElement& story, Level& audition) {
    if (std::exchange(audition.hasPick, true)) {
        return;
    }
    level.isPlaced = true;
    level.position = audition.position;
    level.lane = audition.lane;
    noteMedia(story, level);
}

void Reader::addMarker(ElementNumber element, const Level& on) {
    const StoryElement story = reader_.read(element);
    const TimelineClip& clip = sequences_[on.sequence].clips[on.clip];
    const Time position =
        on.position + (story.start.isThere() ? story.start.time : on.start) - on.start;
    // One that the clip has been trimmed by is not seen.
    if (position < clip.position || position > clip.position + clip.duration) {
        return;
    }
    sequences_[on.sequence].markers.push_back({index_.spanOf(element),
                                               shownName(index_.attributeTextOf(element, "value")),
                                               position, on.clip});
}

void Reader::addClip(Level& level, TimelineClip clip) {
    clip.place = index_.spanOf(level.element);
    clip.track = trackOf(level.sequence, level.lane);
    std::vector<TimelineClip>& clips = sequences_[level.sequence].clips;
    level.clip = static_cast<uint32_t>(clips.size());
    clips.push_back(std::move(clip));
}

// A clip is called after what it holds where it names no media itself.
void Reader::noteMedia(const StoryElement& story, const Level& level) {
    if (level.clip == kNoTimelineItem || story.reference.empty()) {
        return;
    }
    TimelineClip& clip = sequences_[level.sequence].clips[level.clip];
    if (clip.media.empty()) {
        clip.media = mediaOf(story.reference);
    }
}

uint32_t Reader::trackOf(uint32_t sequence, int lane) {
    Tracks& tracks = tracks_[sequence];
    const auto [known, isNew] =
        tracks.byLane.try_emplace(lane, static_cast<uint32_t>(tracks.tracks.size()));
    if (isNew) {
        tracks.tracks.push_back(
            {lane == 0 ? "Storyline" : "Lane " + std::to_string(lane), lane < 0, 1});
    }
    return known->second;
}

TimelineKind Reader::kindOf(const StoryElement& story) {
    const Resource* const resource = resources_.find(story.reference);
    switch (story.kind) {
        case StoryKind::title:
            return TimelineKind::title;
        case StoryKind::audio:
            return TimelineKind::audio;
        case StoryKind::refClip:
            return TimelineKind::compound;
        case StoryKind::mcClip:
            return TimelineKind::multicam;
        case StoryKind::syncClip:
            return TimelineKind::synchronized;
        case StoryKind::audition:
            return TimelineKind::audition;
        case StoryKind::caption:
            return TimelineKind::caption;
        case StoryKind::gap:
            return TimelineKind::gap;
        case StoryKind::liveDrawing:
            return TimelineKind::generator;
        default:
            break;
    }
    if (resource != nullptr && resource->kind == "effect") {
        return TimelineKind::generator;
    }
    const bool isSound = index_.attributeTextOf(story.element, "srcEnable") == "audio" ||
                         (resource != nullptr && resource->kind == "asset" &&
                          index_.attributeTextOf(resource->element, "hasAudio") == "1" &&
                          index_.attributeTextOf(resource->element, "hasVideo") != "1");
    return isSound ? TimelineKind::audio : TimelineKind::video;
}

std::string Reader::nameOf(ElementNumber element) const {
    return shownName(index_.attributeTextOf(element, "name"));
}

std::string Reader::mediaOf(std::string_view reference) {
    const Resource* const resource = resources_.find(reference);
    return resource == nullptr ? "" : nameOf(resource->element);
}

// The times of a clip are those of its media.
TimecodeCount Reader::sourceOf(const StoryElement& story) {
    TimecodeCount count;
    count.frame = resources_.frameDurationOf(story.format);
    count.isDropFrame = story.tcFormat == "DF";
    const Resource* const media = resources_.find(story.reference);
    if (media == nullptr) {
        return count;
    }
    if (!count.frame.isKnown()) {
        count.frame = media->frameDuration;
    }
    // Compound and multicam clips leave it to what they show.
    for (const std::string_view name : {"sequence", "multicam"}) {
        const ElementNumber shown = index_.childOf(media->element, name);
        if (shown != kNoElement) {
            count.frame = resources_.frameDurationOf(index_.attributeTextOf(shown, "format"));
            count.isDropFrame = index_.attributeTextOf(shown, "tcFormat") == "DF";
        }
    }
    return count;
}

// Lanes count from the clip that they are connected to; those in an angle stay in its track.
int Reader::laneOf(const StoryElement& story, const Level& around) const {
    if (around.isInMulticam) {
        return around.lane;
    }
    std::string_view text = story.lane.of(index_.text());
    text.remove_prefix(text.starts_with('+') ? 1 : 0);
    int lane = 0;
    const std::errc error = std::from_chars(text.data(), text.data() + text.size(), lane).ec;
    lane = error == std::errc() ? lane : 0;
    return std::clamp(around.lane + std::clamp(lane, -kMostLane, kMostLane), -kMostLane, kMostLane);
}

// Puts the highest lane first.
void Reader::finish() {
    for (std::size_t number = 0; number < sequences_.size(); ++number) {
        TimelineSequence& sequence = sequences_[number];
        Tracks& tracks = tracks_[number];
        std::vector<uint32_t> places(tracks.tracks.size());
        for (auto lane = tracks.byLane.rbegin(); lane != tracks.byLane.rend(); ++lane) {
            places[lane->second] = static_cast<uint32_t>(sequence.tracks.size());
            sequence.tracks.push_back(std::move(tracks.tracks[lane->second]));
        }
        for (TimelineClip& clip : sequence.clips) {
            clip.track = places[clip.track];
        }
    }
    for (const Opening& opening : openings_) {
        const auto shown = sequenceIn_.find(opening.media);
        if (shown != sequenceIn_.end()) {
            sequences_[opening.clip.sequence].clips[opening.clip.clip].opens = shown->second;
        }
    }
}

}  // namespace

std::vector<TimelineSequence> readTimeline(const ElementIndex& index) {
    return Reader(index).read();
}

}  // namespace vornic::fcpxml
