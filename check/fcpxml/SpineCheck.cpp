#include "check/fcpxml/SpineCheck.h"

#include <algorithm>
#include <string>
#include <utility>

#include "check/fcpxml/Naming.h"

namespace vornic {

using fcpxml::Time;

std::string lengthText(Time length, Time frame) {
    if (!frame.isKnown()) {
        return length.seconds();
    }
    const std::int64_t count = length.framesOf(frame);
    return std::to_string(count) + (count == 1 ? " frame" : " frames");
}

Time SpineCheck::tolerance() const {
    constexpr Time kShort(1, 120);
    return frame_.isKnown() ? frame_.half() : kShort;
}

std::string SpineCheck::onGrid(Time time) const {
    return frame_.isKnown() ? Time::ofFrames(time.framesOf(frame_), frame_).text() : time.text();
}

void SpineCheck::item(const StoryElement& item, Time duration) {
    const Time offset = item.offset.isThere() ? item.offset.time : due_;
    const bool isOnGrid = judgeGrid(item, item.offset, "offset");
    const bool hasWholeFrames = judgeGrid(item, item.duration, "duration");
    bool hasLength = true;
    if (item.duration.isThere() && duration <= Time(0)) {
        hasLength = false;
        findings_->add("timing-no-duration"_rule, item.duration.place,
                       {{"attribute", "duration"},
                        {"clip", calledBy(*index_, item.element)},
                        {"value", duration.text()}});
    }
    if (std::exchange(isFirst_, false)) {
        judgeFirst(item, offset);
    } else if (isOnGrid) {
        judgePlace(item, offset, duration);
    }
    if (transition_.element != kNoElement) {
        judgeLength(item.element, duration);
        transition_ = {};
    }
    isSound_ = isSound_ && isOnGrid && hasWholeFrames && hasLength && offset.isKnown();
    goOnBehind(offset, hasLength && hasWholeFrames ? duration : Time(), isOnGrid);
    previous_ = item.element;
    previousDuration_ = duration;
}

// An item that stands wrong may or may not have moved those behind it.
void SpineCheck::goOnBehind(Time offset, Time duration, bool isOnGrid) {
    const bool stoodRight = !due_.isKnown() || (offset - due_).absolute() < tolerance();
    const Time otherwise = stoodRight ? Time() : due_ + duration;
    const Time due = offset + duration;
    due_ = isOnGrid || stoodRight ? due : otherwise;
    dueOtherwise_ = isOnGrid || stoodRight ? otherwise : due;
    isSound_ = isSound_ && due_.isKnown();
    end_ = end_.isKnown() && end_ > due ? end_ : due;
}

bool SpineCheck::judgeGrid(const StoryElement& item, const TimeAttribute& time,
                           std::string_view attribute) {
    if (!frame_.isKnown() || !time.time.isKnown() || time.time.isMultipleOf(frame_)) {
        return true;
    }
    // What follows has to begin where this ends.
    const bool isLength = attribute == "duration" && item.offset.time.isKnown();
    const std::string instead =
        isLength ? Time::ofFrames((item.offset.time + time.time).framesOf(frame_) -
                                      item.offset.time.framesOf(frame_),
                                  frame_)
                       .text()
                 : onGrid(time.time);
    Finding* const finding = findings_->add("timing-off-frame-grid"_rule, time.place,
                                            {{"attribute", attribute},
                                             {"clip", calledBy(*index_, item.element)},
                                             {"value", quotedValue(time.place.of(index_->text()))},
                                             {"frame", frame_.text()},
                                             {"instead", instead}});
    if (finding != nullptr) {
        finding->mend = Mend{Confidence::ask,
                             "write the nearest whole number of frames",
                             {{time.place.offset, time.place.length, instead}}};
    }
    return false;
}

void SpineCheck::judgeFirst(const StoryElement& item, Time offset) {
    if (begin_.isKnown() && (offset - begin_).absolute() >= tolerance()) {
        isSound_ = false;
        findings_->add("timing-spine-start"_rule, item.offset.place,
                       {{"clip", calledBy(*index_, item.element)},
                        {"value", offset.text()},
                        {"offset", begin_.text()}});
    }
}

bool SpineCheck::isAt(Time time, Time wanted) const {
    return (time - wanted).absolute() < tolerance();
}

bool SpineCheck::fillsHole(Time offset, Time duration) {
    const auto hole = std::find_if(holes_.begin(), holes_.end(), [&](const Hole& candidate) {
        return isAt(offset, candidate.from);
    });
    if (hole == holes_.end()) {
        return false;
    }
    hole->from = offset + duration;
    if (!(hole->to - hole->from >= tolerance())) {
        holes_.erase(hole);
    }
    return true;
}

void SpineCheck::judgePlace(const StoryElement& item, Time offset, Time duration) {
    constexpr std::size_t kMostHoles = 16;
    const Time difference = offset - due_;
    if (fillsHole(offset, duration) || !(difference.absolute() >= tolerance()) ||
        isAt(offset, dueOtherwise_) || isAt(offset, end_)) {
        return;
    }
    if (difference > Time(0)) {
        const Hole hole{due_, offset, item.element, item.offset.place};
        if (holes_.size() < kMostHoles) {
            holes_.push_back(hole);
        } else {
            addHole(hole);
        }
        return;
    }
    isSound_ = false;
    findings_->add("timing-spine-overlap"_rule, item.offset.place,
                   {{"length", lengthText(difference.absolute(), frame_)},
                    {"clip", calledBy(*index_, item.element)},
                    {"offset", onGrid(due_)}});
}

void SpineCheck::addHole(const Hole& hole) {
    isSound_ = false;
    findings_->add("timing-spine-hole"_rule, hole.place,
                   {{"length", lengthText(hole.to - hole.from, frame_)},
                    {"clip", calledBy(*index_, hole.item)},
                    {"offset", onGrid(hole.from)}});
}

void SpineCheck::finish() {
    for (const Hole& hole : holes_) {
        addHole(hole);
    }
    holes_.clear();
}

void SpineCheck::transition(const StoryElement& transition) {
    static_cast<void>(judgeGrid(transition, transition.duration, "duration"));
    const Time offset = transition.offset.time;
    const Time duration = transition.duration.time;
    const bool isAtStart = isFirst_;
    const Time centre = offset + duration.half();
    const auto isNear = [this](Time time, Time wanted) {
        return (time - wanted).absolute() < tolerance() + tolerance();
    };
    if (offset.isKnown() && duration.isKnown() && due_.isKnown()) {
        const bool isRight = isNear(centre, due_) || isNear(offset + duration, due_) ||
                             (isAtStart && isNear(offset, due_));
        if (!isRight) {
            findings_->add("timing-transition-misplaced"_rule, transition.offset.place,
                           {{"clip", calledBy(*index_, transition.element)},
                            {"cut", due_.text()},
                            {"offset", onGrid(due_ - duration.half())}});
        }
    }
    transition_ = transition;
    if (previous_ != kNoElement) {
        judgeLength(previous_, previousDuration_);
    }
}

// Once for a transition.
void SpineCheck::judgeLength(ElementNumber neighbour, Time duration) {
    if (transition_.element != kNoElement &&
        transition_.duration.time.half() >= duration + tolerance() + tolerance()) {
        findings_->add("timing-transition-too-long"_rule, transition_.duration.place,
                       {{"clip", calledBy(*index_, transition_.element)},
                        {"neighbour", calledBy(*index_, neighbour)}});
        transition_ = {};
    }
}

}  // namespace vornic
