#include <algorithm>
#include <string>
#include <unordered_map>

#include "check/xmeml/MediaTable.h"
#include "check/xmeml/Rules.h"
#include "formats/xmeml/SpeedEffect.h"
#include "formats/xmeml/TrackItem.h"

namespace vornic::xmeml {

namespace {

using std::int64_t;
using std::string;

bool isSet(const std::optional<int64_t>& time) {
    return time && *time >= 0 && *time <= kMostFrames;
}

bool isUnset(const std::optional<int64_t>& time) {
    return time == -1;
}

string frames(int64_t count) {
    return std::to_string(count) + (count == 1 ? " frame" : " frames");
}

class TimelineCheck {
  public:
    TimelineCheck(const View& view, Findings& findings)
        : view_(view), index_(view.index()), findings_(findings), media_(view) {}

    void run() {
        for (const ElementNumber track : index_.elementsNamed("track")) {
            if (TimelineHead* const timeline = timelineOf(track)) {
                checkTrack(track, *timeline);
            }
        }
        for (const ElementNumber sequence : index_.elementsNamed("sequence")) {
            const auto timeline = timelines_.find(sequence);
            if (timeline != timelines_.end() && index_.isClosed(sequence)) {
                checkDuration(timeline->second);
            }
        }
    }

  private:
    // What the items of a track that came before say about the next one.
    struct Before {
        // The item before it.
        TrackItem item;
        // The latest start, and the clip item that reaches furthest.
        int64_t lastStart = 0;
        int64_t reach = 0;
        ElementNumber reaching = kNoElement;
    };

    TimelineHead* timelineOf(ElementNumber track);
    void checkTrack(ElementNumber track, TimelineHead& timeline);
    void checkClip(const TrackItem& item, const TimelineHead& timeline);
    void checkLength(const TrackItem& item, const TimelineHead& timeline, const Media* media);
    void checkMediaEnd(const TrackItem& item, const TimelineHead& timeline, const Media* media);
    void checkEdges(const TrackItem& item, const TrackItem& previous, const TrackItem& next,
                    const TimelineHead& timeline);
    void addMissingTransition(ElementNumber edge, const TrackItem& item, const char* side,
                              const TimelineHead& timeline);
    void checkTransition(const TrackItem& item, const TrackItem& previous, const TrackItem& next,
                         const TimelineHead& timeline);
    void checkPlace(const TrackItem& item, Before& before, TimelineHead& timeline);
    void checkDuration(const TimelineHead& timeline);
    Finding* add(RuleId rule, TextSpan place, const TrackItem& item, const TimelineHead& timeline);

    const View& view_;
    const ElementIndex& index_;
    Findings& findings_;
    MediaTable media_;
    std::unordered_map<ElementNumber, TimelineHead> timelines_;
};

TimelineHead* TimelineCheck::timelineOf(ElementNumber track) {
    const ElementNumber kind = index_.parentOf(track);
    const ElementNumber media = view_.parentOf(kind, Name::media);
    const ElementNumber element = media == kNoElement ? kNoElement : index_.parentOf(media);
    if (!view_.is(element, Name::sequence) && !view_.is(element, Name::clip)) {
        return nullptr;
    }
    const auto known = timelines_.find(element);
    return known != timelines_.end()
               ? &known->second
               : &timelines_.emplace(element, readTimelineHead(view_, element)).first->second;
}

// A finding with what the item is called and the timecode at which it begins.
Finding* TimelineCheck::add(RuleId rule, TextSpan place, const TrackItem& item,
                            const TimelineHead& timeline) {
    Finding* const finding = findings_.add(rule, place);
    if (finding != nullptr) {
        finding->arguments = {{"thing", view_.describe(item.element)}};
        finding->where.timecode = isSet(item.start) ? timeline.timecodeOf(*item.start) : "";
    }
    return finding;
}

void TimelineCheck::checkTrack(ElementNumber track, TimelineHead& timeline) {
    Before before;
    TrackItem item = nextItem(view_, index_.firstChildOf(track));
    while (item.isThere()) {
        const TrackItem next = nextItem(view_, index_.nextSiblingOf(item.element));
        if (index_.isClosed(item.element)) {
            if (item.isTransition()) {
                checkTransition(item, before.item, next, timeline);
            } else {
                checkClip(item, timeline);
                checkEdges(item, before.item, next, timeline);
            }
            if (timeline.isSequence) {
                checkPlace(item, before, timeline);
            }
        }
        before.item = item;
        item = next;
    }
}

void TimelineCheck::checkClip(const TrackItem& item, const TimelineHead& timeline) {
    if (item.name != Name::clipitem || !isSet(item.in) || !isSet(item.out) ||
        *item.in >= *item.out) {
        return;
    }
    const Media* const media = media_.mediaOf(item.file);
    checkMediaEnd(item, timeline, media);
    checkLength(item, timeline, media);
}

void TimelineCheck::checkLength(const TrackItem& item, const TimelineHead& timeline,
                                const Media* media) {
    if (!timeline.isSequence || !isSet(item.start) || !isSet(item.end) ||
        *item.start >= *item.end) {
        return;
    }
    const int64_t length = *item.end - *item.start;
    const int64_t used = *item.out - *item.in;
    if (length == used || hasSpeedEffect(view_, item.element)) {
        return;
    }
    // Where something runs at another rate, the two count different frames.
    const std::optional<Rate> own = rateOf(view_, item.rate);
    const std::optional<Rate>& rate = timeline.rate;
    const bool isOfOtherRate =
        rate && ((own && !own->mayEqual(*rate)) ||
                 (media != nullptr && media->rate && !media->rate->mayEqual(*rate)));
    if (isOfOtherRate) {
        return;
    }
    const TextSpan place = view_.placeOf(item.outElement);
    Finding* const finding = add("timing-length"_rule, place, item, timeline);
    if (finding == nullptr) {
        return;
    }
    const string right = std::to_string(*item.in + length);
    finding->arguments.push_back({"used", frames(used)});
    finding->arguments.push_back({"length", std::to_string(length)});
    finding->arguments.push_back({"right", right});
    if (used - length == 1 || length - used == 1) {
        finding->mend = Mend{
            Confidence::ask, "write " + right + " as <out>", {{place.offset, place.length, right}}};
    }
}

void TimelineCheck::checkMediaEnd(const TrackItem& item, const TimelineHead& timeline,
                                  const Media* media) {
    if (media == nullptr || !media->hasEnd || *item.out <= media->duration) {
        return;
    }
    const std::optional<Rate> own =
        item.rate == kNoElement ? timeline.rate : rateOf(view_, item.rate);
    if ((own && media->rate && !own->mayEqual(*media->rate)) ||
        hasSpeedEffect(view_, item.element)) {
        return;
    }
    Finding* const finding =
        add("timing-out-beyond-media"_rule, view_.placeOf(item.outElement), item, timeline);
    if (finding == nullptr) {
        return;
    }
    const string out = std::to_string(*item.out);
    const TextSpan place = view_.placeOf(media->durationElement);
    finding->arguments.push_back({"out", out});
    finding->arguments.push_back({"media", view_.describe(media->file)});
    finding->arguments.push_back({"duration", frames(media->duration)});
    finding->mend = Mend{Confidence::ask,
                         "write " + out + " as the duration of the media file",
                         {{place.offset, place.length, out}}};
}

void TimelineCheck::checkEdges(const TrackItem& item, const TrackItem& previous,
                               const TrackItem& next, const TimelineHead& timeline) {
    if (!timeline.isSequence) {
        return;
    }
    if (isUnset(item.start) && !previous.isTransition()) {
        addMissingTransition(item.startElement, item, "start", timeline);
    }
    const bool mayFollow = next.isThere() || index_.isClosed(index_.parentOf(item.element));
    if (isUnset(item.end) && !next.isTransition() && mayFollow) {
        addMissingTransition(item.endElement, item, "end", timeline);
    }
}

void TimelineCheck::addMissingTransition(ElementNumber edge, const TrackItem& item,
                                         const char* side, const TimelineHead& timeline) {
    if (Finding* const finding =
            add("timing-missing-transition"_rule, view_.placeOf(edge), item, timeline)) {
        finding->arguments.push_back({"side", side});
        finding->arguments.push_back({"where", side == string("start") ? "before" : "behind"});
    }
}

void TimelineCheck::checkTransition(const TrackItem& item, const TrackItem& previous,
                                    const TrackItem& next, const TimelineHead& timeline) {
    if (!isSet(item.start) || !isSet(item.end) || *item.start > *item.end) {
        return;
    }
    const auto meets = [&item](const std::optional<int64_t>& edge) {
        return !edge || isUnset(edge) || (*edge >= *item.start && *edge <= *item.end);
    };
    const bool meetsPrevious =
        previous.isThere() && !previous.isTransition() && meets(previous.end);
    const bool meetsNext = next.isThere() && !next.isTransition() && meets(next.start);
    const bool isKnown = next.isThere() || index_.isClosed(index_.parentOf(item.element));
    if (!meetsPrevious && !meetsNext && isKnown) {
        if (Finding* const finding = add("timing-stray-transition"_rule,
                                         index_.startTagOf(item.element), item, timeline)) {
            finding->arguments.push_back({"first", std::to_string(*item.start)});
            finding->arguments.push_back({"last", std::to_string(*item.end)});
        }
    }
}

// Whether it begins where the items before it have ended.
void TimelineCheck::checkPlace(const TrackItem& item, Before& before, TimelineHead& timeline) {
    if (item.isTransition()) {
        return;
    }
    if (isSet(item.end) && *item.end > timeline.lastEnd) {
        timeline.lastEnd = *item.end;
        timeline.lastItem = item.element;
    }
    if (!isSet(item.start)) {
        return;
    }
    if (*item.start < before.lastStart) {
        add("timing-item-order"_rule, view_.placeOf(item.startElement), item, timeline);
        return;
    }
    if (*item.start < before.reach && !before.item.isTransition()) {
        if (Finding* const finding =
                add("timing-overlap"_rule, view_.placeOf(item.startElement), item, timeline)) {
            finding->arguments.push_back({"start", std::to_string(*item.start)});
            finding->arguments.push_back({"other", view_.describe(before.reaching)});
            finding->arguments.push_back({"reach", std::to_string(before.reach)});
        }
    }
    before.lastStart = *item.start;
    if (isSet(item.end) && *item.end > before.reach) {
        before.reach = *item.end;
        before.reaching = item.element;
    }
}

void TimelineCheck::checkDuration(const TimelineHead& timeline) {
    if (!timeline.duration || *timeline.duration < 0 || timeline.lastEnd <= *timeline.duration) {
        return;
    }
    const TextSpan place = view_.placeOf(timeline.durationElement);
    // By one frame it is the other way of counting, and sound exporters have it.
    const Severity severity =
        timeline.lastEnd - *timeline.duration == 1 ? Severity::info : Severity::warning;
    Finding* const finding = findings_.add("timing-sequence-too-short"_rule, severity, place);
    if (finding != nullptr) {
        const string right = std::to_string(timeline.lastEnd);
        finding->arguments = {{"thing", view_.describe(timeline.element)},
                              {"duration", frames(*timeline.duration)},
                              {"item", view_.describe(timeline.lastItem)},
                              {"last", right}};
        finding->mend = Mend{Confidence::ask,
                             "write " + right + " as the duration",
                             {{place.offset, place.length, right}}};
    }
}

}  // namespace

void checkTimelines(const View& view, Findings& findings) {
    TimelineCheck(view, findings).run();
}

}  // namespace vornic::xmeml
