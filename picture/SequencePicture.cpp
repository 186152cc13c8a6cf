#include "picture/SequencePicture.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace vornic {

namespace {

using fcpxml::Time;

constexpr std::size_t kMostMessages = 5;
constexpr double kTextInset = 4;
constexpr double kBaseLine = 4;
constexpr int kTextSize = 11;
constexpr std::uint8_t kMarkerStamp = 100;
constexpr double kPi = 3.14159265358979323846;

std::vector<Point> ring(Point centre, double radius, int corners, double turned) {
    std::vector<Point> points;
    for (int corner = 0; corner < corners; ++corner) {
        const double angle = 2 * kPi * (corner + turned) / corners;
        points.push_back(
            {centre.x + radius * std::sin(angle), centre.y - radius * std::cos(angle)});
    }
    return points;
}

std::string oneLine(std::string text) {
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text;
}

// As many frames as the step, or seconds where the sequence has no timecode.
Time rulerStep(Time frame, std::int64_t rate, double scale) {
    constexpr double kApart = 110;
    constexpr std::array<std::int64_t, 16> kSeconds = {
        1, 2, 5, 10, 15, 30, 60, 120, 300, 600, 900, 1800, 3600, 7200, 21600, 86400};
    for (const std::int64_t frames : {1, 2, 5, 10}) {
        if (rate > frames &&
            frame.approximateSeconds() * static_cast<double>(frames) * scale >= kApart) {
            return Time::ofFrames(frames, frame);
        }
    }
    for (const std::int64_t seconds : kSeconds) {
        const Time step = rate > 0 ? Time::ofFrames(rate * seconds, frame) : Time(seconds);
        if (step.approximateSeconds() * scale >= kApart || seconds == kSeconds.back()) {
            return step;
        }
    }
    return Time(1);
}

// Tells the kinds of stamps from each other.
std::uint64_t kindOfStamp(std::uint8_t shape, Colour colour) {
    return std::uint64_t{shape} << 24 | std::uint64_t{colour.red} << 16 |
           std::uint64_t{colour.green} << 8 | colour.blue;
}

void drawSignItself(Canvas& canvas, Point centre, Severity severity,
                    const TimelineColours& colours) {
    const ShapeStyle style{.fill = colours.of(severity)};
    constexpr double kHalf = 0.5;
    constexpr int kOctagon = 8;
    constexpr int kDisc = 24;
    constexpr double kArm = 2.6;
    const Colour sign = colours.sign;
    if (severity == Severity::error) {
        canvas.polygon(ring(centre, kSignRadius, kOctagon, kHalf), style);
        canvas.line({centre.x - kArm, centre.y - kArm}, {centre.x + kArm, centre.y + kArm}, sign,
                    1.8);
        canvas.line({centre.x - kArm, centre.y + kArm}, {centre.x + kArm, centre.y - kArm}, sign,
                    1.8);
        return;
    }
    const bool isWarning = severity == Severity::warning;
    canvas.polygon(isWarning ? ring({centre.x, centre.y + 1}, kSignRadius + 1, 3, 0)
                             : ring(centre, kSignRadius, kDisc, 0),
                   style);
    canvas.text({centre.x, centre.y + 4}, isWarning ? "!" : "i",
                {.colour = sign, .size = 10, .isBold = true, .isCentred = true});
}

}  // namespace

void drawSign(Canvas& canvas, Point centre, Severity severity, const TimelineColours& colours) {
    canvas.stamp(centre, kindOfStamp(static_cast<std::uint8_t>(severity), colours.of(severity)),
                 [&](Canvas& on, Point middle) { drawSignItself(on, middle, severity, colours); });
}

std::string_view severityWord(Severity severity) {
    return severity == Severity::info ? "note" : nameOf(severity);
}

std::string moreFindings(std::size_t count) {
    return "and " + std::to_string(count) + (count == 1 ? " more finding" : " more findings");
}

std::string idOfSequence(std::uint32_t number) {
    return "sequence-" + std::to_string(number + 1);
}

std::string shownNameOf(const TimelineSequence& sequence, std::uint32_t number) {
    return sequence.name.empty() ? "Sequence " + std::to_string(number + 1) : sequence.name;
}

SequencePicture::SequencePicture(const Timeline& timeline, std::uint32_t number,
                                 const std::vector<TimelineMark>& marks)
    : number_(number), layout_(timeline.sequences()[number]) {
    for (const TimelineMark& mark : marks) {
        if (mark.item.sequence == number_) {
            marks_[mark.item.clip].push_back(&mark);
        }
    }
    addMarkedClips();
    const std::vector<TimelineMarker>& markers = sequence().markers;
    for (std::uint32_t marker = 0; marker < markers.size(); ++marker) {
        if (markers[marker].position.isKnown()) {
            markers_.push_back(marker);
            markersOf_[markers[marker].clip].push_back(marker);
        }
    }
    std::stable_sort(markers_.begin(), markers_.end(),
                     [&](std::uint32_t left, std::uint32_t right) {
                         return markers[left].position.approximateSeconds() <
                                markers[right].position.approximateSeconds();
                     });
}

void SequencePicture::addMarkedClips() {
    worst_.assign(sequence().clips.size(), kNoSeverity);
    std::map<std::pair<std::uint32_t, std::uint32_t>, MarkedRow> rows;
    for (const auto& [clip, marks] : marks_) {
        if (clip == kNoTimelineItem || !layout_.isPlaced(clip)) {
            continue;
        }
        Severity worst = Severity::info;
        for (const TimelineMark* const mark : marks) {
            worst = std::max(worst, mark->severity);
        }
        worst_[clip] = static_cast<std::uint8_t>(worst);
        const TimelineClip& shown = sequence().clips[clip];
        rows[{shown.track, shown.row}].clips.push_back(clip);
    }
    for (auto& [place, row] : rows) {
        std::stable_sort(row.clips.begin(), row.clips.end(),
                         [this](std::uint32_t left, std::uint32_t right) {
                             return layout_.beginOf(left) < layout_.beginOf(right);
                         });
        double last = layout_.endOf(row.clips.front());
        for (const std::uint32_t clip : row.clips) {
            last = std::max(last, layout_.endOf(clip));
            row.ends.push_back(last);
        }
        markedRows_.push_back(std::move(row));
    }
}

const SequencePicture::Marks& SequencePicture::marksOf(std::uint32_t clip) const {
    static const Marks kNone;
    const auto found = marks_.find(clip);
    return found == marks_.end() ? kNone : found->second;
}

void SequencePicture::drawRuler(Canvas& canvas, const TimelineView& view,
                                const TimelineColours& colours) const {
    // Beyond, no timecode counts, and no double knows a frame.
    constexpr double kFarthest = 1e9;
    const Time frame = sequence().frame;
    const bool isCounted = !sequence().timecodeAt(Time(0)).empty();
    const std::int64_t rate = isCounted ? Time(1).framesOf(frame) : 0;
    const Time step = rulerStep(frame, rate, view.scale);
    const double length = step.approximateSeconds();
    const double end = std::min(view.to(), layout_.end());
    if (length <= 0 || std::abs(view.from) > kFarthest || std::abs(end) > kFarthest) {
        return;
    }
    // Whole steps of the timecode, where that is not its beginning.
    const Time unit = isCounted ? frame : Time(1);
    const std::int64_t units = isCounted ? step.framesOf(frame) : step.framesOf(Time(1));
    const std::int64_t first = isCounted ? sequence().start.framesOf(frame) : 0;
    const double firstSeconds = Time::ofFrames(first, unit).approximateSeconds();
    const double base = view.area.y + kRulerHeight;
    auto at = static_cast<std::int64_t>(std::ceil((view.from + firstSeconds) / length - 1e-9));
    for (;; ++at) {
        const Time position = Time::ofFrames(at * units - first, unit);
        const double seconds = position.approximateSeconds();
        if (!position.isKnown() || seconds > end) {
            return;
        }
        const double x = view.xOf(seconds);
        canvas.line({x, base - 9}, {x, base}, colours.line, 1);
        const std::string label = isCounted ? sequence().timecodeAt(position) : position.seconds();
        const double room = view.area.right() - x;
        constexpr double kNeeded = 84;
        if (room >= kNeeded) {
            canvas.text({x + 3, base - 11}, label, {.colour = colours.faintText, .size = 10});
        }
    }
}

void SequencePicture::drawTracks(Canvas& canvas, const TimelineView& view,
                                 const TimelineColours& colours) const {
    for (std::uint32_t track = 0; track < sequence().tracks.size(); ++track) {
        const double y = view.top() + layout_.topOf(track);
        const double height = layout_.heightOf(track);
        if (y < view.area.bottom() && y + height > view.area.y) {
            const bool isAudio = sequence().tracks[track].isAudio;
            canvas.rectangle({view.area.x, y, view.area.width, height - 1}, 0,
                             {.fill = isAudio ? colours.soundTrack : colours.pictureTrack});
        }
    }
}

void SequencePicture::drawHeads(Canvas& canvas, const Box& heads, double scrolled,
                                const TimelineColours& colours) const {
    for (std::uint32_t track = 0; track < sequence().tracks.size(); ++track) {
        const double y = heads.y - scrolled + layout_.topOf(track);
        const double height = layout_.heightOf(track);
        if (y >= heads.bottom() || y + height <= heads.y) {
            continue;
        }
        const TimelineTrack& shown = sequence().tracks[track];
        canvas.rectangle({heads.x, y, heads.width - 2, height - 1}, 0,
                         {.fill = shown.isAudio ? colours.soundTrack : colours.pictureTrack});
        canvas.text({heads.x + kTextInset, y + height / 2 + kBaseLine}, shown.name,
                    {.colour = colours.text, .size = kTextSize, .width = heads.width - 10});
    }
}

std::size_t SequencePicture::drawClips(Canvas& canvas, const TimelineView& view,
                                       const TimelineColours& colours, std::uint32_t cursor,
                                       std::size_t most) const {
    std::vector<std::uint32_t> clips = layout_.clipsIn(view);
    clips.resize(std::min(clips.size(), most));
    for (const std::uint32_t clip : clips) {
        const Box box = layout_.boxOf(clip, view);
        if (box.y < view.area.bottom() && box.bottom() > view.area.y) {
            drawClip(canvas, view, colours, clip);
        }
    }
    drawMarkers(canvas, view, colours);
    drawMarks(canvas, view, colours);
    if (cursor != kNoTimelineItem && layout_.isPlaced(cursor)) {
        Box box = layout_.boxOf(cursor, view);
        box = {box.x - 1, box.y + 1, box.width + 2, box.height - 2};
        canvas.rectangle(box, 3, {.stroke = colours.cursor, .strokeWidth = 2.5});
    }
    return clips.size();
}

void SequencePicture::drawClip(Canvas& canvas, const TimelineView& view,
                               const TimelineColours& colours, std::uint32_t clip) const {
    constexpr double kDisabled = 0.5;
    const TimelineClip& shown = sequence().clips[clip];
    ShapeGroup group;
    group.opacity = shown.isEnabled ? 1 : kDisabled;
    if (canvas.showsTitles()) {
        group.title = describe(clip);
        group.link = shown.opens == kNoTimelineItem ? "" : idOfSequence(shown.opens);
    }
    canvas.begin(group);
    const TimelineColours::OfKind& kind = colours.of(shown.kind);
    const bool isTransition = shown.kind == TimelineKind::transition;
    const bool isStoryline = shown.kind == TimelineKind::storyline;
    const double inset = isStoryline ? 0 : isTransition ? 6 : 3;
    Box box = layout_.boxOf(clip, view);
    box = {box.x, box.y + inset, box.width, box.height - 2 * inset};
    constexpr double kRound = 2;
    canvas.rectangle(box, kRound,
                     {.fill = kind.fill,
                      .stroke = kind.stroke,
                      .isDashed = shown.kind == TimelineKind::gap,
                      .fillOpacity = isTransition ? 0.75 : 1});
    if (isTransition) {
        canvas.line({box.x, box.y}, {box.right(), box.bottom()}, kind.stroke, 1);
        canvas.line({box.x, box.bottom()}, {box.right(), box.y}, kind.stroke, 1);
    } else if (!isStoryline) {
        drawName(canvas, view, colours, clip, box);
    }
    canvas.end();
}

// Of a clip that begins left of the view the name is seen, too.
void SequencePicture::drawName(Canvas& canvas, const TimelineView& view,
                               const TimelineColours& colours, std::uint32_t clip,
                               const Box& box) const {
    constexpr double kLeastRoom = 10;
    const TimelineClip& shown = sequence().clips[clip];
    const double clear = std::min(view.xOf(layout_.clearBeginOf(clip)), view.area.right());
    const double left = std::max({box.x, clear, view.area.x}) + kTextInset;
    const double sign = isMarked(clip) ? 2 * kSignRadius : 0;
    const double room = std::min(box.right(), view.area.right()) - left - kTextInset - sign;
    if (room < kLeastRoom) {
        return;
    }
    canvas.text({left, box.y + box.height / 2 + kBaseLine},
                (shown.opens == kNoTimelineItem ? "" : "▸ ") + shown.name,
                {.colour = shown.kind == TimelineKind::gap ? colours.faintText : colours.clipText,
                 .size = kTextSize,
                 .width = room});
}

// At the right end of what is seen of the clip.
Point SequencePicture::signOf(std::uint32_t clip, const TimelineView& view) const {
    const Box box = layout_.boxOf(clip, view);
    const double right = std::min(box.right(), view.area.right());
    return {std::max(right - kSignRadius - 2, (box.x + right) / 2), box.y + kSignRadius + 1};
}

bool SequencePicture::signContains(std::uint32_t clip, Point point,
                                   const TimelineView& view) const {
    const Point sign = signOf(clip, view);
    return isMarked(clip) && std::abs(point.x - sign.x) <= kSignRadius &&
           std::abs(point.y - sign.y) <= kSignRadius;
}

// Of signs that would cover each other the worst is drawn.
void SequencePicture::drawMarks(Canvas& canvas, const TimelineView& view,
                                const TimelineColours& colours) const {
    std::vector<std::uint32_t> shown;
    for (const MarkedRow& row : markedRows_) {
        const Box box = layout_.boxOf(row.clips.front(), view);
        if (box.y < view.area.bottom() && box.bottom() > view.area.y) {
            drawMarksOf(row, canvas, view, colours, shown);
        }
    }
}

// @param shown is filled anew: for each place that a sign has room in, the clip that has it.
void SequencePicture::drawMarksOf(const MarkedRow& row, Canvas& canvas, const TimelineView& view,
                                  const TimelineColours& colours,
                                  std::vector<std::uint32_t>& shown) const {
    constexpr double kRoom = 2 * kSignRadius;
    shown.assign(static_cast<std::size_t>(view.area.width / kRoom) + 2, kNoTimelineItem);
    const auto first = std::lower_bound(row.ends.begin(), row.ends.end(), view.from);
    for (auto at = static_cast<std::size_t>(first - row.ends.begin());
         at < row.clips.size() && layout_.beginOf(row.clips[at]) <= view.to(); ++at) {
        const std::uint32_t clip = row.clips[at];
        if (layout_.endOf(clip) < view.from) {
            continue;
        }
        const double x = std::max(signOf(clip, view).x - view.area.x, 0.0);
        const auto place = std::min(static_cast<std::size_t>(x / kRoom), shown.size() - 1);
        if (shown[place] == kNoTimelineItem || worstOf(clip) > worstOf(shown[place])) {
            shown[place] = clip;
        }
    }
    for (const std::uint32_t clip : shown) {
        if (clip != kNoTimelineItem) {
            drawMark(canvas, view, colours, clip);
        }
    }
}

// A frame and a sign: neither form nor colour alone has to be seen.
void SequencePicture::drawMark(Canvas& canvas, const TimelineView& view,
                               const TimelineColours& colours, std::uint32_t clip) const {
    const std::size_t count = marksOf(clip).size();
    const Severity worst = worstOf(clip);
    const Box box = layout_.boxOf(clip, view);
    const Colour colour = colours.of(worst);
    canvas.begin({.title = canvas.showsTitles() ? describe(clip) : ""});
    canvas.rectangle({box.x, box.y + 2, box.width, box.height - 4}, 2,
                     {.stroke = colour, .strokeWidth = 2});
    const Point centre = signOf(clip, view);
    drawSign(canvas, centre, worst, colours);
    constexpr double kRoomForCount = 60;
    if (count > 1 && centre.x - box.x >= kRoomForCount) {
        canvas.text({centre.x, box.bottom() - 5}, std::to_string(count),
                    {.colour = colours.clipText, .size = 9, .isBold = true, .isCentred = true});
    }
    canvas.end();
}

// The middle of its upper edge: on its clip, or above all tracks.
Point SequencePicture::placeOf(const TimelineMarker& marker, const TimelineView& view) const {
    const bool isOnClip = marker.clip != kNoTimelineItem && layout_.isPlaced(marker.clip);
    return {view.xOf(marker.position.approximateSeconds()),
            isOnClip ? layout_.boxOf(marker.clip, view).y + 3 : view.top() - 5};
}

const TimelineMarker* SequencePicture::markerAt(Point point, const TimelineView& view) const {
    constexpr double kReach = 5;
    constexpr double kHeight = 9;
    const std::vector<TimelineMarker>& markers = sequence().markers;
    const double from = view.secondsAt(point.x - kReach);
    auto at = std::lower_bound(markers_.begin(), markers_.end(), from,
                               [&](std::uint32_t marker, double wanted) {
                                   return markers[marker].position.approximateSeconds() < wanted;
                               });
    for (; at != markers_.end(); ++at) {
        const Point place = placeOf(markers[*at], view);
        if (place.x > point.x + kReach) {
            return nullptr;
        }
        if (point.y >= place.y && point.y <= place.y + kHeight) {
            return &markers[*at];
        }
    }
    return nullptr;
}

std::string SequencePicture::describe(const TimelineMarker& marker) const {
    const std::string at = sequence().timecodeAt(marker.position);
    return "marker\n" + oneLine(marker.name) + (at.empty() ? "" : "\nat " + at);
}

void SequencePicture::drawMarkers(Canvas& canvas, const TimelineView& view,
                                  const TimelineColours& colours) const {
    constexpr double kHalf = 4;
    const std::vector<TimelineMarker>& markers = sequence().markers;
    const auto secondsOf = [&](std::uint32_t marker) {
        return markers[marker].position.approximateSeconds();
    };
    auto at = std::lower_bound(
        markers_.begin(), markers_.end(), view.from - kHalf / view.scale,
        [&](std::uint32_t marker, double from) { return secondsOf(marker) < from; });
    std::map<double, double> reached;
    for (; at != markers_.end() && secondsOf(*at) <= view.to(); ++at) {
        const TimelineMarker& marker = markers[*at];
        const double x = view.xOf(secondsOf(*at));
        const double y = placeOf(marker, view).y;
        const bool isNew = reached.try_emplace(y, x).second;
        // Those that nobody can tell from each other are drawn once.
        if ((!isNew && x - reached[y] < 1) || y >= view.area.bottom() || y < view.area.y - 8) {
            continue;
        }
        reached[y] = x;
        ShapeGroup group;
        if (canvas.showsTitles()) {
            group.title = describe(marker);
        }
        canvas.begin(group);
        canvas.stamp({x, y}, kindOfStamp(kMarkerStamp, colours.marker), [&](Canvas& on, Point top) {
            on.polygon({{top.x - kHalf, top.y}, {top.x + kHalf, top.y}, {top.x, top.y + 2 * kHalf}},
                       {.fill = colours.marker, .stroke = colours.paper, .strokeWidth = 0.5});
        });
        canvas.end();
    }
}

std::string SequencePicture::titleOf(std::uint32_t clip) const {
    const TimelineClip& shown = sequence().clips[clip];
    return oneLine(shown.name.empty() ? std::string(nameOf(shown.kind)) : shown.name);
}

std::string SequencePicture::describe(std::uint32_t clip) const {
    const TimelineClip& shown = sequence().clips[clip];
    std::string lines = std::string(nameOf(shown.kind)) + (shown.isEnabled ? "" : ", disabled");
    const auto add = [&lines](std::string_view label, std::string_view value) {
        if (!value.empty()) {
            lines += "\n" + std::string(label) + oneLine(std::string(value));
        }
    };
    const auto timeOrSeconds = [](const TimecodeCount& count, Time time) {
        std::string timecode = count.at(time);
        return timecode.empty() ? time.seconds() : timecode;
    };
    add("", shown.name);
    add("at ", shown.position.isKnown() ? sequence().timecodeAt(shown.position)
                                        : "a time that the file leaves open");
    const TimecodeCount lengths{.frame = sequence().frame, .isDropFrame = sequence().isDropFrame};
    add("length ", timeOrSeconds(lengths, shown.duration));
    if (shown.kind != TimelineKind::gap) {
        add("in ", timeOrSeconds(shown.source, shown.in));
        add("out ", timeOrSeconds(shown.source, shown.out));
    }
    add("media ", shown.media);
    if (const auto found = markersOf_.find(clip); found != markersOf_.end()) {
        const std::size_t count = found->second.size();
        for (std::size_t i = 0; i < std::min(count, kMostMessages); ++i) {
            add("", describe(sequence().markers[found->second[i]]));
        }
        add("", count > kMostMessages
                    ? "and " + std::to_string(count - kMostMessages) + " more markers"
                    : "");
    }
    const Marks& marks = marksOf(clip);
    for (std::size_t i = 0; i < std::min(marks.size(), kMostMessages); ++i) {
        add(std::string(severityWord(marks[i]->severity)) + ": ", marks[i]->message);
    }
    if (marks.size() > kMostMessages) {
        add("", moreFindings(marks.size() - kMostMessages));
    }
    return lines;
}

std::string SequencePicture::summary() const {
    const std::size_t count = sequence().clips.size();
    std::string line = std::to_string(count) + (count == 1 ? " item, " : " items, ");
    const std::string from = sequence().timecodeAt(Time(0));
    const TimecodeCount lengths{.frame = sequence().frame, .isDropFrame = sequence().isDropFrame};
    const std::string length = lengths.at(sequence().duration);
    line += length.empty() ? sequence().duration.seconds() : length;
    line += from.empty() ? "" : ", from " + from;
    if (layout_.unplaced() != 0) {
        line += ", " + std::to_string(layout_.unplaced()) + " at a time that the file leaves open";
    }
    return line;
}

}  // namespace vornic
