#include "formats/Timeline.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <utility>

#include "formats/ElementIndexBuilder.h"
#include "formats/fcpxml/TimelineReader.h"
#include "formats/xmeml/TimelineReader.h"
#include "xml/text/AttributeValue.h"

namespace vornic {

namespace {

using fcpxml::Time;

// More clips than this at one time share the last row.
constexpr std::size_t kMostRows = 8;

// Finds for each what it stands in, by one walk with those that are open on a stack.
template <typename Item>
void nest(std::vector<Item>& items) {
    std::uint32_t open = kNoTimelineItem;
    for (std::uint32_t number = 0; number < items.size(); ++number) {
        while (open != kNoTimelineItem && items[open].place.end() <= items[number].place.offset) {
            open = items[open].outer;
        }
        items[number].outer = std::exchange(open, number);
    }
}

// The innermost around a place, or `kNoTimelineItem`.
template <typename Item>
std::uint32_t innermostAt(const std::vector<Item>& items, std::size_t offset) {
    const auto behind = std::upper_bound(
        items.begin(), items.end(), offset,
        [](std::size_t wanted, const Item& item) { return wanted < item.place.offset; });
    auto found = static_cast<std::uint32_t>(behind - items.begin()) - 1;
    while (found != kNoTimelineItem && items[found].place.end() <= offset) {
        found = items[found].outer;
    }
    return found;
}

bool liesOverOthers(const TimelineClip& clip) {
    return clip.kind == TimelineKind::transition;
}

// Gives the clips of one track their rows, from left to right: each the first that is free.
class RowFinder {
  public:
    std::uint32_t rowFor(const TimelineClip& clip) {
        std::uint32_t row = 0;
        while (row + 1 < kMostRows && clip.position < ends_.at(row)) {
            ++row;
        }
        const Time end = clip.position + clip.duration;
        if (end.isKnown() && !(end < ends_.at(row))) {
            ends_.at(row) = end;
        }
        return row;
    }

  private:
    std::array<Time, kMostRows> ends_;
};

void findRows(TimelineSequence& sequence) {
    std::vector<TimelineClip>& clips = sequence.clips;
    std::vector<std::uint32_t> order(clips.size());
    std::iota(order.begin(), order.end(), 0U);
    // Unknown positions have no order of their own.
    std::erase_if(order, [&](std::uint32_t clip) { return !clips[clip].position.isKnown(); });
    std::stable_sort(order.begin(), order.end(), [&](std::uint32_t left, std::uint32_t right) {
        return clips[left].position < clips[right].position;
    });
    std::vector<RowFinder> finders(sequence.tracks.size());
    for (const std::uint32_t number : order) {
        TimelineClip& clip = clips[number];
        const TimelineClip* const outer =
            clip.outer == kNoTimelineItem ? nullptr : &clips[clip.outer];
        const bool isInStoryline = outer != nullptr && outer->kind == TimelineKind::storyline &&
                                   outer->track == clip.track;
        if (isInStoryline) {
            clip.row = outer->row;
        } else if (!liesOverOthers(clip)) {
            clip.row = finders[clip.track].rowFor(clip);
        }
        TimelineTrack& track = sequence.tracks[clip.track];
        track.rows = std::max(track.rows, clip.row + 1);
    }
}

void measure(TimelineSequence& sequence) {
    for (const TimelineClip& clip : sequence.clips) {
        const Time end = clip.position + clip.duration;
        if (end > sequence.duration) {
            sequence.duration = end;
        }
    }
}

std::vector<TimelineSequence> sequencesOf(const ElementIndex& index) {
    switch (index.kind()) {
        case FileKind::fcpxml:
            return fcpxml::readTimeline(index);
        case FileKind::xmeml:
            return xmeml::readTimeline(index);
        default:
            return {};
    }
}

}  // namespace

std::string_view nameOf(TimelineKind kind) {
    constexpr std::array<std::string_view, 12> kNames = {"video",
                                                         "audio",
                                                         "title",
                                                         "generator",
                                                         "compound clip",
                                                         "multicam clip",
                                                         "synchronized clip",
                                                         "audition",
                                                         "caption",
                                                         "gap",
                                                         "transition",
                                                         "storyline"};
    return kNames.at(static_cast<std::size_t>(kind));
}

std::string TimecodeCount::at(Time time) const {
    return fcpxml::timecodeText(start + time, frame, isDropFrame);
}

std::string TimelineSequence::timecodeAt(Time position) const {
    return fcpxml::timecodeText(start + position, frame, isDropFrame);
}

Timeline::Timeline(const ElementIndex& index) : Timeline(sequencesOf(index)) {}

Timeline::Timeline(std::vector<TimelineSequence> sequences) : sequences_(std::move(sequences)) {
    nest(sequences_);
    for (TimelineSequence& sequence : sequences_) {
        nest(sequence.clips);
        findRows(sequence);
        measure(sequence);
    }
}

std::optional<Timeline::Item> Timeline::itemAt(std::size_t offset) const {
    const std::uint32_t sequence = innermostAt(sequences_, offset);
    if (sequence == kNoTimelineItem) {
        return std::nullopt;
    }
    return Item{sequence, innermostAt(sequences_[sequence].clips, offset)};
}

Timeline Timeline::ofText(std::string_view text) {
    // What is mended is told by a check.
    class UnheardMends final : public XMLMendSink {
        void mend(const XMLMend& /*mend*/, std::string_view /*name*/) override {}
        void edit(const XMLEdit& /*edit*/) override {}
        void dropped(TextSpan /*characters*/) override {}
    };
    ElementIndexBuilder builder(text);
    UnheardMends mends;
    static_cast<void>(readXML(text, XMLMode::tolerant, &builder, &mends));
    return Timeline(std::move(builder).finish());
}

std::string shownName(std::string_view raw) {
    constexpr std::size_t kMostBytes = 200;
    if (raw.size() > kMostBytes) {
        std::size_t end = kMostBytes;
        // Not inside of a character.
        while (end > 0 && (static_cast<unsigned char>(raw[end]) & 0xC0U) == 0x80U) {
            --end;
        }
        return normalisedAttributeValue(raw.substr(0, end), false) + "…";
    }
    return normalisedAttributeValue(raw, false);
}

}  // namespace vornic
