#include "picture/TimelineSheet.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <set>
#include <utility>

namespace vornic {

namespace {

using fcpxml::Time;

constexpr double kMargin = 16;
constexpr double kHeads = 100;
constexpr double kTitle = 46;
constexpr double kLine = 18;
constexpr double kNarrowest = 1100;
constexpr double kWidest = 24000;
// What the clips of the fullest track get on the average.
constexpr double kClipWidth = 70;
constexpr std::size_t kMostClips = 50000;
constexpr std::size_t kMostFindings = 12;

const TimelineColours& colours() {
    return TimelineColours::light();
}

void drawLine(Canvas& canvas, double x, double y, std::string_view text, bool isStrong = false) {
    constexpr double kRoom = kNarrowest;
    canvas.text({x, y}, text,
                {.colour = isStrong ? colours().text : colours().faintText, .width = kRoom});
}

}  // namespace

double drawTimelineLegend(Canvas& canvas, const Box& box, const std::vector<TimelineKind>& kinds,
                          const std::vector<Severity>& severities, const TimelineColours& shown) {
    constexpr double kSwatch = 14;
    constexpr double kStep = 142;
    double x = box.x;
    double y = box.y;
    const auto next = [&] {
        x += kStep;
        if (x + kStep > box.right()) {
            x = box.x;
            y += kLine;
        }
    };
    for (const TimelineKind kind : kinds) {
        canvas.rectangle({x, y, kSwatch, kSwatch}, 2,
                         {.fill = shown.of(kind).fill,
                          .stroke = shown.of(kind).stroke,
                          .isDashed = kind == TimelineKind::gap});
        canvas.text({x + kSwatch + 5, y + 11}, nameOf(kind), {.colour = shown.text});
        next();
    }
    for (const Severity severity : severities) {
        drawSign(canvas, {x + kSignRadius, y + kSignRadius}, severity, shown);
        canvas.text({x + kSwatch + 5, y + 11}, severityWord(severity), {.colour = shown.text});
        next();
    }
    return (x > box.x ? y + kLine : y) - box.y;
}

TimelineSheet::TimelineSheet(const Timeline& timeline, const std::vector<TimelineMark>& marks)
    : marks_(&marks) {
    double top = kMargin;
    double widest = kNarrowest;
    for (std::uint32_t number = 0; number < timeline.sequences().size(); ++number) {
        Part part{.picture = SequencePicture(timeline, number, marks), .top = top};
        const SequenceLayout& layout = part.picture.layout();
        const double width =
            std::clamp(static_cast<double>(layout.fullest()) * kClipWidth, kNarrowest, kWidest);
        part.scale = width / (layout.end() - layout.begin());
        widest = std::max(widest, width);
        top += heightOf(part);
        parts_.push_back(std::move(part));
    }
    legendTop_ = top;
    width_ = widest + kHeads + 2 * kMargin;
    height_ = top + 3 * kLine + kMargin;
}

// Those that no clip shows come first; all of a severity, the worst first.
std::vector<const TimelineMark*> TimelineSheet::listedOf(const Part& part) const {
    std::vector<const TimelineMark*> listed = part.picture.marksOf(kNoTimelineItem);
    for (std::uint32_t clip = 0; clip < part.picture.sequence().clips.size(); ++clip) {
        const auto& marks = part.picture.marksOf(clip);
        listed.insert(listed.end(), marks.begin(), marks.end());
    }
    std::stable_sort(listed.begin(), listed.end(),
                     [](const TimelineMark* left, const TimelineMark* right) {
                         return left->severity > right->severity;
                     });
    return listed;
}

double TimelineSheet::heightOf(const Part& part) const {
    const std::size_t findings = listedOf(part).size();
    const std::size_t lines = std::min(findings, kMostFindings + 1);
    const double tracks = std::max(part.picture.layout().height(), SequenceLayout::kRowHeight);
    return kTitle + SequencePicture::kRulerHeight + tracks +
           (lines == 0 ? 0 : static_cast<double>(lines) * kLine + kLine / 2) + kMargin;
}

void TimelineSheet::draw(Canvas& canvas) const {
    canvas.rectangle({0, 0, width_, height_}, 0, {.fill = colours().paper});
    if (parts_.empty()) {
        drawLine(canvas, kMargin, kMargin + kLine, "There is no sequence in this file.", true);
        return;
    }
    std::size_t drawn = 0;
    std::size_t placed = 0;
    for (std::uint32_t number = 0; number < parts_.size(); ++number) {
        const SequenceLayout& layout = parts_[number].picture.layout();
        placed += layout.sequence().clips.size() - layout.unplaced();
        drawPart(canvas, parts_[number], number, drawn);
    }
    if (placed > drawn) {
        drawLine(canvas, kMargin, legendTop_ + 10,
                 std::to_string(placed - drawn) +
                     " more clips are too short, or too many, to be "
                     "drawn.",
                 true);
    }
    drawLegend(canvas, legendTop_ + kLine);
}

void TimelineSheet::drawPart(Canvas& canvas, const Part& part, std::uint32_t number,
                             std::size_t& drawn) const {
    const SequencePicture& picture = part.picture;
    const SequenceLayout& layout = picture.layout();
    canvas.begin({.id = idOfSequence(number)});
    canvas.text({kMargin, part.top + 18}, shownNameOf(picture.sequence(), number),
                {.colour = colours().text, .size = 16, .isBold = true, .width = kNarrowest});
    drawLine(canvas, kMargin, part.top + 36, picture.summary());
    TimelineView view;
    view.from = layout.begin();
    view.scale = part.scale;
    view.area = {kMargin + kHeads, part.top + kTitle, (layout.end() - layout.begin()) * part.scale,
                 SequencePicture::kRulerHeight};
    picture.drawRuler(canvas, view, colours());
    view.area.y += view.area.height;
    view.area.height = std::max(layout.height(), SequenceLayout::kRowHeight);
    picture.drawTracks(canvas, view, colours());
    picture.drawHeads(canvas, {kMargin, view.area.y, kHeads, view.area.height}, 0, colours());
    if (picture.sequence().tracks.empty()) {
        drawLine(canvas, kMargin, view.area.y + kLine, "This sequence has no clips.");
    }
    drawn += picture.drawClips(canvas, view, colours(), kNoTimelineItem, kMostClips - drawn);
    drawFindings(canvas, part, view.area.bottom() + kLine);
    canvas.end();
}

void TimelineSheet::drawFindings(Canvas& canvas, const Part& part, double top) const {
    const std::vector<const TimelineMark*> listed = listedOf(part);
    double y = top;
    for (std::size_t i = 0; i < listed.size() && i < kMostFindings; ++i, y += kLine) {
        const TimelineMark& mark = *listed[i];
        drawSign(canvas, {kMargin + kSignRadius, y - 4}, mark.severity, colours());
        std::string line = std::string(severityWord(mark.severity)) + ": " + mark.message;
        if (mark.item.clip != kNoTimelineItem) {
            const TimelineClip& clip = part.picture.sequence().clips[mark.item.clip];
            const std::string at = part.picture.sequence().timecodeAt(clip.position);
            line =
                (at.empty() ? "" : at + ", ") + part.picture.titleOf(mark.item.clip) + " — " + line;
        }
        drawLine(canvas, kMargin + 2 * kSignRadius + 6, y, line, true);
    }
    if (listed.size() > kMostFindings) {
        drawLine(canvas, kMargin, y, moreFindings(listed.size() - kMostFindings));
    }
}

void TimelineSheet::drawLegend(Canvas& canvas, double top) const {
    std::set<TimelineKind> kinds;
    for (const Part& part : parts_) {
        for (const TimelineClip& clip : part.picture.sequence().clips) {
            kinds.insert(clip.kind);
        }
    }
    std::set<Severity> severities;
    for (const TimelineMark& mark : *marks_) {
        severities.insert(mark.severity);
    }
    drawTimelineLegend(canvas, {kMargin, top, kNarrowest + kHeads, 2 * kLine},
                       {kinds.begin(), kinds.end()}, {severities.rbegin(), severities.rend()},
                       colours());
}

}  // namespace vornic
