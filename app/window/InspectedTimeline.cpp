#include "app/window/InspectedTimeline.h"

#include <algorithm>
#include <utility>

#include "formats/Timeline.h"

namespace vornic {

InspectedTimeline::InspectedTimeline(std::shared_ptr<const Inspection> inspection)
    : inspection_(std::move(inspection)) {
    if (!inspection_->file.isRead()) {
        return;
    }
    const SourceText& source = *inspection_->file.source;
    timeline_ = Timeline::ofText(source.text());
    marks_ = marksOn(timeline_, source.text(), source.decoded().decoding,
                     inspection_->file.report.findings);
    pictures_.reserve(timeline_.sequences().size());
    for (std::uint32_t number = 0; number < timeline_.sequences().size(); ++number) {
        pictures_.emplace_back(timeline_, number, marks_);
    }
}

std::uint32_t InspectedTimeline::mainSequence() const {
    const std::vector<TimelineSequence>& sequences = timeline_.sequences();
    std::vector<bool> isOpened(sequences.size());
    for (std::uint32_t number = 0; number < sequences.size(); ++number) {
        for (const TimelineClip& clip : sequences[number].clips) {
            if (clip.opens != kNoTimelineItem && clip.opens != number) {
                isOpened[clip.opens] = true;
            }
        }
    }
    const auto last = std::find(isOpened.rbegin(), isOpened.rend(), false);
    return last == isOpened.rend() ? 0 : static_cast<std::uint32_t>(isOpened.rend() - last - 1);
}

std::size_t InspectedTimeline::offsetOf(Timeline::Item item) const {
    const TimelineSequence& sequence = timeline_.sequences()[item.sequence];
    return item.clip == kNoTimelineItem ? sequence.place.offset
                                        : sequence.clips[item.clip].place.offset;
}

std::size_t InspectedTimeline::lineOf(Timeline::Item item) const {
    const SourceText& source = *inspection_->file.source;
    return source.lineOf(source.rowAt(offsetOf(item)));
}

std::string InspectedTimeline::linesAround(Timeline::Item item) const {
    constexpr std::size_t kAround = 2;
    constexpr std::size_t kLongest = 160;
    const SourceText& source = *inspection_->file.source;
    const std::size_t line = lineOf(item);
    const std::size_t last = std::min(line + kAround, source.lineCount());
    std::string lines;
    for (std::size_t number = line > kAround ? line - kAround : 1; number <= last; ++number) {
        const std::string_view whole = source.line(number);
        lines += (number == line ? "> " : "  ") + std::to_string(number) + "  ";
        lines += whole.size() > kLongest ? std::string(whole.substr(0, kLongest)) + "…"
                                         : std::string(whole);
        lines += '\n';
    }
    return lines;
}

}  // namespace vornic
