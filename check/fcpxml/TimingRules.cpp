#include "check/fcpxml/TimingRules.h"

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "check/fcpxml/ClipRules.h"
#include "check/fcpxml/Naming.h"
#include "check/fcpxml/SpineCheck.h"
#include "check/fcpxml/TimeReader.h"
#include "formats/fcpxml/Resources.h"

namespace vornic {

namespace {

using fcpxml::Resource;
using fcpxml::Resources;
using fcpxml::Time;

// Nobody nests clips as deep as hostile files do.
constexpr std::size_t kMostLevels = 200;
constexpr std::size_t kNoLevel = static_cast<std::size_t>(-1);

// An element that is open, as those inside it see it.
struct Level {
    StoryElement story;
    ElementNumber end = 0;
    // What its children's offsets count from, in its own time.
    Time start;
    Time duration;
    // Where it begins on the timeline of its sequence; unknown where it is on none.
    Time position;
    // Set for what is seen on that timeline, whether its position is known or not.
    bool isPlaced = false;
    // The length of a frame in what it holds, connected clips left out.
    Time frame;
    // The sequence's level.
    std::size_t timeline = kNoLevel;
    // Of a sequence: where its last clip ends, and whether that can be said.
    Time extent;
    bool isMeasured = true;
    // Of a spine.
    std::optional<SpineCheck> spine;
    // Of a time map: the point that came last.
    Time lastPoint;
    // Of a sync-clip: where what is no connected clip begins and ends in it.
    bool hasContent = false;
    Time contentStart;
    Time contentEnd;
};

class TimelineCheck {
  public:
    TimelineCheck(const ElementIndex& index, bool isComplete, Findings& findings)
        : index_(index),
          findings_(findings),
          resources_(index),
          reader_(index, findings),
          quietReader_(index),
          clips_(index, resources_, findings),
          isComplete_(isComplete) {}

    void run() {
        const auto count = static_cast<ElementNumber>(index_.size());
        for (ElementNumber element = 0; element < count; ++element) {
            if (reader_.kindOf(element) != StoryKind::none) {
                closeUpTo(element);
                open(reader_.read(element));
            }
        }
        closeUpTo(count);
    }

  private:
    void closeUpTo(ElementNumber element);
    void open(const StoryElement& story);
    void openSequence(Level& level);
    void openSpine(Level& level);
    void openItem(Level& level);
    void openTimePoint(const StoryElement& story);
    void placeInSpine(Level& level, Level& spine);
    void placeOnItem(Level& level, Level& parent);
    void noteContent(const Level& level);
    void noteExtent(const Level& level);
    void judgeDropFrame(const StoryElement& story);
    void judgeExtent(const Level& sequence);
    void judgeSyncClip(const Level& clip);
    [[nodiscard]] Level* parentOf(ElementNumber element);
    [[nodiscard]] Time sequenceFrame(const Level& level) const;

    const ElementIndex& index_;
    Findings& findings_;
    Resources resources_;
    TimeReader reader_;
    fcpxml::StoryReader quietReader_;
    ClipRules clips_;
    bool isComplete_;
    std::vector<Level> levels_;
};

void TimelineCheck::closeUpTo(ElementNumber element) {
    while (!levels_.empty() && levels_.back().end <= element) {
        Level& level = levels_.back();
        if (level.story.kind == StoryKind::sequence) {
            judgeExtent(level);
        } else if (level.spine) {
            level.spine->finish();
            if (!level.spine->isSound() && level.isPlaced && level.timeline != kNoLevel) {
                levels_[level.timeline].isMeasured = false;
            }
        } else if (level.hasContent) {
            judgeSyncClip(level);
        }
        levels_.pop_back();
    }
}

Level* TimelineCheck::parentOf(ElementNumber element) {
    const bool isOpen =
        !levels_.empty() && levels_.back().story.element == index_.parentOf(element);
    return isOpen ? &levels_.back() : nullptr;
}

Time TimelineCheck::sequenceFrame(const Level& level) const {
    return level.timeline == kNoLevel ? Time() : levels_[level.timeline].frame;
}

void TimelineCheck::open(const StoryElement& story) {
    if (story.kind == StoryKind::timed || levels_.size() == kMostLevels) {
        return;
    }
    Level level;
    level.story = story;
    level.end = index_.endOf(story.element);
    if (const Level* const parent = levels_.empty() ? nullptr : &levels_.back()) {
        level.timeline = parent->timeline;
    }
    switch (story.kind) {
        case StoryKind::sequence:
        case StoryKind::multicam:
            openSequence(level);
            break;
        case StoryKind::spine:
            openSpine(level);
            break;
        case StoryKind::transition:
            if (Level* const spine = parentOf(story.element); spine != nullptr && spine->spine) {
                spine->spine->transition(story);
            }
            break;
        case StoryKind::timePoint:
            return openTimePoint(story);
        case StoryKind::asset:
            return clips_.judgeRate(story);
        default:
            if (isStoryItem(story.kind)) {
                openItem(level);
            }
            break;
    }
    levels_.push_back(std::move(level));
}

void TimelineCheck::openSequence(Level& level) {
    level.frame = resources_.frameDurationOf(level.story.format);
    level.start = level.story.tcStart.isThere() ? level.story.tcStart.time : Time(0);
    level.timeline = level.story.kind == StoryKind::sequence ? levels_.size() : kNoLevel;
    level.isMeasured = isComplete_;
    judgeDropFrame(level.story);
}

void TimelineCheck::judgeDropFrame(const StoryElement& story) {
    const Time frame = resources_.frameDurationOf(story.format);
    const bool isDropFrame = story.tcFormat == "DF";
    if (isDropFrame && frame.isKnown() && !(frame == Time(1001, 30000)) &&
        !(frame == Time(1001, 60000))) {
        const TextSpan place = *index_.attributeOf(story.element, "tcFormat");
        // A clip may say what its media say, whatever their format has become.
        findings_.add("timing-drop-frame"_rule,
                      isStoryItem(story.kind) ? Severity::warning : Severity::error, place,
                      {{"clip", calledBy(index_, story.element)}, {"frame", frame.text()}});
    }
}

void TimelineCheck::openSpine(Level& level) {
    const StoryElement& story = level.story;
    const Time ownFrame = resources_.frameDurationOf(story.format);
    Level* const parent = parentOf(story.element);
    if (parent == nullptr) {
        level.spine.emplace(index_, findings_, Time(), ownFrame);
        return;
    }
    if (parent->story.kind == StoryKind::sequence) {
        level.isPlaced = true;
        level.position = Time(0);
        level.frame = ownFrame.isKnown() ? ownFrame : parent->frame;
        level.spine.emplace(index_, findings_, parent->start, level.frame);
        return;
    }
    const bool isConnected = clips_.isConnected(story, parent->story);
    level.isPlaced = isConnected && parent->isPlaced;
    if (isConnected) {
        level.position = parent->position + (story.offset.isThere() ? story.offset.time : Time(0)) -
                         parent->start;
        clips_.judgeAnchor(story, parent->story, parent->start, parent->duration);
    }
    level.frame = ownFrame.isKnown() ? ownFrame
                  : isConnected      ? sequenceFrame(level)
                                     : parent->frame;
    level.spine.emplace(index_, findings_, Time(), level.frame);
}

void TimelineCheck::openItem(Level& level) {
    if (level.story.kind == StoryKind::audition) {
        level.story = quietReader_.withAuditionsPick(level.story);
    }
    level.start = fcpxml::startOf(level.story, resources_);
    level.duration = fcpxml::durationOf(level.story, resources_);
    level.frame = resources_.frameDurationOf(level.story.format);
    Level* const parent = parentOf(level.story.element);
    if (parent != nullptr && parent->spine) {
        placeInSpine(level, *parent);
    } else if (parent != nullptr && isStoryItem(parent->story.kind)) {
        placeOnItem(level, *parent);
    }
    noteContent(level);
    noteExtent(level);
    judgeDropFrame(level.story);
    const Time frame = sequenceFrame(level);
    clips_.judgeRange(level.story, level.duration, frame.isKnown() ? frame : level.frame);
}

void TimelineCheck::placeInSpine(Level& level, Level& spine) {
    clips_.judgeLaneInSpine(level.story);
    const Time offset = level.story.offset.isThere() ? level.story.offset.time : spine.spine->due();
    level.position = spine.position + offset;
    level.isPlaced = spine.isPlaced;
    spine.spine->item(level.story, level.duration);
}

void TimelineCheck::placeOnItem(Level& level, Level& parent) {
    if (parent.story.kind == StoryKind::audition) {
        return;
    }
    if (!clips_.isConnected(level.story, parent.story)) {
        return;
    }
    const Time offset = level.story.offset.isThere() ? level.story.offset.time : Time(0);
    level.position = parent.position + offset - parent.start;
    level.isPlaced = parent.isPlaced;
    const bool isAnchored =
        clips_.judgeAnchor(level.story, parent.story, parent.start, parent.duration);
    if (!isAnchored && level.timeline != kNoLevel) {
        // Where it is meant to be, and so how long the sequence is, nobody can say.
        levels_[level.timeline].isMeasured = false;
    }
    clips_.judgeDuration(level.story);
}

// The first thing in a sync-clip that is not connected to it says where its time begins, the last
// one where it ends.
void TimelineCheck::noteContent(const Level& level) {
    Level* holder = parentOf(level.story.element);
    if (holder != nullptr && holder->spine && levels_.size() > 1 &&
        index_.parentOf(holder->story.element) == levels_[levels_.size() - 2].story.element &&
        !clips_.hasLane(holder->story)) {
        holder = &levels_[levels_.size() - 2];
    }
    if (holder == nullptr || holder->story.kind != StoryKind::syncClip ||
        clips_.hasLane(level.story)) {
        return;
    }
    const Time behind = holder->hasContent ? holder->contentEnd : Time(0);
    const Time offset = level.story.offset.isThere() ? level.story.offset.time : behind;
    const Time end = offset + level.duration;
    if (!std::exchange(holder->hasContent, true)) {
        holder->contentStart = offset;
        holder->contentEnd = end;
    } else if (!(end < holder->contentEnd)) {
        holder->contentEnd = end;
    }
}

void TimelineCheck::judgeSyncClip(const Level& clip) {
    // A file that ends in it does not say where its content does.
    const Time end = index_.isClosed(clip.story.element) ? clip.contentEnd : Time();
    clips_.judgeSyncStart(clip.story, clip.start, clip.contentStart, end);
}

void TimelineCheck::noteExtent(const Level& level) {
    if (!level.isPlaced || level.timeline == kNoLevel) {
        return;
    }
    Level& sequence = levels_[level.timeline];
    const Time end = level.position + level.duration;
    sequence.isMeasured = sequence.isMeasured && end.isKnown();
    if (!sequence.extent.isKnown() || end > sequence.extent) {
        sequence.extent = end;
    }
}

void TimelineCheck::judgeExtent(const Level& sequence) {
    const Time frame = sequence.frame.isKnown() ? sequence.frame : Time(1, 24);
    const Time end = sequence.extent - sequence.start;
    const Time said = sequence.story.duration.time;
    // Exports are off by one frame now and then.
    if (!sequence.isMeasured || !((said - end).absolute() > frame)) {
        return;
    }
    const ElementNumber owner = index_.parentOf(sequence.story.element);
    const std::string instead =
        sequence.frame.isKnown() ? Time::ofFrames(end.framesOf(frame), frame).text() : end.text();
    const TextSpan place = sequence.story.duration.place;
    Finding* const finding = findings_.add(
        "timing-sequence-duration"_rule, place,
        {{"clip", calledBy(index_, owner == kNoElement ? sequence.story.element : owner)},
         {"value", said.seconds()},
         {"end", end.seconds()},
         {"instead", instead}});
    if (finding != nullptr) {
        finding->mend = Mend{Confidence::ask,
                             "write the duration that the clips have",
                             {{place.offset, place.length, instead}}};
    }
}

void TimelineCheck::openTimePoint(const StoryElement& story) {
    Level* const map = parentOf(story.element);
    if (map == nullptr || map->story.kind != StoryKind::timeMap) {
        return;
    }
    if (story.time.time < map->lastPoint) {
        findings_.add("timing-time-map-order"_rule, story.time.place,
                      {{"clip", calledBy(index_, index_.parentOf(map->story.element))},
                       {"value", story.time.time.text()}});
    }
    map->lastPoint = story.time.time;
}

}  // namespace

void checkFCPXMLTiming(const ElementIndex& index, bool isComplete, Findings& findings) {
    TimelineCheck(index, isComplete, findings).run();
}

}  // namespace vornic
