#include "picture/SequenceLayout.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <tuple>

namespace vornic {

namespace {

// A clip without a length can be seen and hit all the same.
constexpr double kThinnest = 1.5;
constexpr double kReach = 4;

// Storylines lie behind their clips, transitions in front of them.
int layerOf(TimelineKind kind) {
    return kind == TimelineKind::storyline ? 0 : kind == TimelineKind::transition ? 2 : 1;
}

}  // namespace

SequenceLayout::SequenceLayout(const TimelineSequence& sequence) : sequence_(&sequence) {
    for (const TimelineTrack& track : sequence.tracks) {
        tops_.push_back(height_);
        height_ += kRowHeight * track.rows + kTrackGap;
    }
    place();
    makeLanes();
}

void SequenceLayout::place() {
    constexpr double kLeast = 1.0 / 25;
    spans_.reserve(sequence_->clips.size());
    end_ = sequence_->duration.approximateSeconds();
    for (const TimelineClip& clip : sequence_->clips) {
        const double begin = clip.position.approximateSeconds();
        const double length = std::max(clip.duration.approximateSeconds(), 0.0);
        spans_.push_back({begin, begin + length, begin});
        begin_ = std::min(begin_, begin);
        unplaced_ += clip.position.isKnown() ? 0 : 1;
    }
    end_ = std::max(end_, begin_ + kLeast);
}

void SequenceLayout::makeLanes() {
    std::vector<std::uint32_t> order;
    for (std::uint32_t clip = 0; clip < spans_.size(); ++clip) {
        if (isPlaced(clip)) {
            order.push_back(clip);
        }
    }
    std::stable_sort(order.begin(), order.end(), [this](std::uint32_t left, std::uint32_t right) {
        return spans_[left].begin < spans_[right].begin;
    });
    tracks_.resize(sequence_->tracks.size());
    std::vector<double> covered(tracks_.size(), begin_);
    std::map<std::tuple<int, std::uint32_t, std::uint32_t>, Lane> lanes;
    for (const std::uint32_t number : order) {
        const TimelineClip& clip = sequence_->clips[number];
        tracks_[clip.track].push_back(number);
        Lane& lane = lanes[{layerOf(clip.kind), clip.track, clip.row}];
        const double end = spans_[number].end;
        if (clip.kind == TimelineKind::transition) {
            covered[clip.track] = end;
        } else if (clip.row == 0) {
            spans_[number].clear = std::max(spans_[number].begin, covered[clip.track]);
        }
        lane.ends.push_back(lane.ends.empty() ? end : std::max(lane.ends.back(), end));
        lane.clips.push_back(number);
    }
    for (auto& [place, lane] : lanes) {
        lanes_.push_back(std::move(lane));
    }
}

bool SequenceLayout::isPlaced(std::uint32_t clip) const {
    return sequence_->clips[clip].position.isKnown();
}

std::size_t SequenceLayout::fullest() const {
    std::size_t most = 0;
    for (const auto& track : tracks_) {
        most = std::max(most, track.size());
    }
    return most;
}

double SequenceLayout::heightOf(std::uint32_t track) const {
    return kRowHeight * sequence_->tracks[track].rows + kTrackGap;
}

Box SequenceLayout::boxOf(std::uint32_t clip, const TimelineView& view) const {
    constexpr double kBeyond = 50;
    const TimelineClip& shown = sequence_->clips[clip];
    const double left = std::clamp(view.xOf(spans_[clip].begin), view.area.x - kBeyond,
                                   view.area.right() + kBeyond);
    const double right =
        std::clamp(view.xOf(spans_[clip].end), left, view.area.right() + 2 * kBeyond);
    return {left, view.top() + tops_[shown.track] + kTrackGap / 2 + kRowHeight * shown.row,
            std::max(right - left, kThinnest), kRowHeight};
}

// Calls for the clips of a lane that reach into a time.
template <typename Visit>
void SequenceLayout::visit(const Lane& lane, double from, double to, Visit visit) const {
    const auto first = std::lower_bound(lane.ends.begin(), lane.ends.end(), from);
    for (auto at = static_cast<std::size_t>(first - lane.ends.begin());
         at < lane.clips.size() && spans_[lane.clips[at]].begin <= to; ++at) {
        if (spans_[lane.clips[at]].end >= from) {
            visit(lane.clips[at]);
        }
    }
}

std::vector<std::uint32_t> SequenceLayout::clipsIn(const TimelineView& view) const {
    std::vector<std::uint32_t> clips;
    const double margin = kThinnest / view.scale;
    for (const Lane& lane : lanes_) {
        double reached = -1;
        visit(lane, view.from - margin, view.to(), [&](std::uint32_t clip) {
            const double right = std::floor(view.xOf(spans_[clip].end));
            const bool isThin = (spans_[clip].end - spans_[clip].begin) * view.scale < 1;
            if (isThin && right == reached) {
                return;
            }
            reached = right;
            clips.push_back(clip);
        });
    }
    return clips;
}

std::optional<std::uint32_t> SequenceLayout::clipAt(Point point, const TimelineView& view) const {
    std::optional<std::uint32_t> found;
    double nearest = kReach;
    const double reach = kReach / view.scale;
    const double seconds = view.secondsAt(point.x);
    for (const Lane& lane : lanes_) {
        const Box row = boxOf(lane.clips.front(), view);
        if (point.y < row.y || point.y >= row.bottom()) {
            continue;
        }
        visit(lane, seconds - reach, seconds + reach, [&](std::uint32_t clip) {
            const double left = view.xOf(spans_[clip].begin);
            const double right = std::max(view.xOf(spans_[clip].end), left + kThinnest);
            const double distance = std::max({left - point.x, point.x - right, 0.0});
            if (distance == 0 || distance < nearest) {
                nearest = distance;
                found = clip;
            }
        });
    }
    return found;
}

std::size_t SequenceLayout::placeInTrack(std::uint32_t clip) const {
    const auto& track = tracks_[sequence_->clips[clip].track];
    const double begin = spans_[clip].begin;
    auto at = std::lower_bound(
        track.begin(), track.end(), begin,
        [this](std::uint32_t each, double wanted) { return spans_[each].begin < wanted; });
    at = std::find(at, track.end(), clip);
    return static_cast<std::size_t>(at - track.begin());
}

std::uint32_t SequenceLayout::nextInTrack(std::uint32_t clip, std::ptrdiff_t steps) const {
    const auto& track = tracks_[sequence_->clips[clip].track];
    const auto wanted = static_cast<std::ptrdiff_t>(placeInTrack(clip)) + steps;
    const auto last = static_cast<std::ptrdiff_t>(track.size()) - 1;
    return track[static_cast<std::size_t>(std::clamp<std::ptrdiff_t>(wanted, 0, last))];
}

std::uint32_t SequenceLayout::endOfTrack(std::uint32_t clip, bool last) const {
    const auto& track = tracks_[sequence_->clips[clip].track];
    return last ? track.back() : track.front();
}

std::uint32_t SequenceLayout::inTrackBeside(std::uint32_t clip, bool below) const {
    const auto count = static_cast<std::ptrdiff_t>(tracks_.size());
    const std::ptrdiff_t step = below ? 1 : -1;
    std::ptrdiff_t number = static_cast<std::ptrdiff_t>(sequence_->clips[clip].track) + step;
    while (number >= 0 && number < count && tracks_[static_cast<std::size_t>(number)].empty()) {
        number += step;
    }
    if (number < 0 || number >= count) {
        return clip;
    }
    const auto& track = tracks_[static_cast<std::size_t>(number)];
    const double wanted = spans_[clip].begin;
    auto at = std::upper_bound(
        track.begin(), track.end(), wanted,
        [this](double time, std::uint32_t each) { return time < spans_[each].begin; });
    if (at == track.begin()) {
        return *at;
    }
    const std::uint32_t before = *(at - 1);
    const bool isBehind = at != track.end() && spans_[before].end <= wanted &&
                          spans_[*at].begin - wanted < wanted - spans_[before].end;
    return isBehind ? *at : before;
}

std::optional<std::uint32_t> SequenceLayout::first() const {
    for (const auto& track : tracks_) {
        if (!track.empty()) {
            return track.front();
        }
    }
    return std::nullopt;
}

}  // namespace vornic
