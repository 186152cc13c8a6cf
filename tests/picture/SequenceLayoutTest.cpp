#include <algorithm>
#include <cstdint>
#include <random>
#include <set>
#include <vector>

#include <gtest/gtest.h>

#include "picture/SequenceLayout.h"

namespace vornic {

namespace {

using fcpxml::Time;

void add(TimelineSequence& sequence, std::uint32_t track, Time position, Time duration,
         TimelineKind kind = TimelineKind::video) {
    TimelineClip clip;
    clip.track = track;
    clip.position = position;
    clip.duration = duration;
    clip.kind = kind;
    clip.place = {sequence.clips.size() * 10 + 10, 5};
    sequence.clips.push_back(clip);
}

TimelineSequence emptySequence(std::size_t tracks) {
    TimelineSequence sequence;
    sequence.place = {0, 100000000};
    sequence.tracks.resize(tracks);
    return sequence;
}

TimelineView viewOf(double from, double scale) {
    return {.area = {100, 50, 800, 300}, .from = from, .scale = scale};
}

// Tracks of clips without gaps; the even ones as long as their number.
Timeline threeTracks() {
    TimelineSequence sequence = emptySequence(4);
    for (int clip = 0; clip < 10; ++clip) {
        add(sequence, 0, Time(clip * 3), Time(3));
        add(sequence, 1, Time(clip * 5), Time(5));
    }
    add(sequence, 3, Time(100), Time(1));
    return Timeline({sequence});
}

}  // namespace

TEST(SequenceLayout, findsTheClipsOfAViewAsALookAtEachDoes) {
    std::mt19937 generator(7);
    const auto random = [&generator] { return static_cast<std::uint32_t>(generator()); };
    TimelineSequence sequence = emptySequence(3);
    for (int clip = 0; clip < 2000; ++clip) {
        const bool isLong = random() % 50 == 0;
        add(sequence, random() % 3, Time(random() % 10000, 10),
            Time(isLong ? random() % 300 : 1 + random() % 3),
            random() % 20 == 0 ? TimelineKind::transition : TimelineKind::video);
    }
    const Timeline timeline({sequence});
    const SequenceLayout layout(timeline.sequences()[0]);
    for (int turn = 0; turn < 50; ++turn) {
        const TimelineView view = viewOf(random() % 1000, 10 + random() % 50);
        std::set<std::uint32_t> expected;
        for (std::uint32_t clip = 0; clip < 2000; ++clip) {
            const TimelineClip& each = timeline.sequences()[0].clips[clip];
            const double begin = each.position.approximateSeconds();
            const double end = begin + each.duration.approximateSeconds();
            if (begin < view.to() && end > view.from && each.duration > Time(0)) {
                expected.insert(clip);
            }
        }
        const std::vector<std::uint32_t> found = layout.clipsIn(view);
        for (const std::uint32_t clip : expected) {
            EXPECT_NE(std::find(found.begin(), found.end(), clip), found.end()) << clip;
        }
        EXPECT_LE(found.size(), expected.size() + 20) << "and those that touch it";
    }
}

TEST(SequenceLayout, drawsOneOfTheClipsThatShareAPixel) {
    TimelineSequence sequence = emptySequence(1);
    for (int clip = 0; clip < 100000; ++clip) {
        add(sequence, 0, Time(clip, 25), Time(1, 25));
    }
    const Timeline timeline({sequence});
    const SequenceLayout layout(timeline.sequences()[0]);
    const TimelineView whole = viewOf(0, 800.0 / 4000);
    EXPECT_LE(layout.clipsIn(whole).size(), 802U);
    EXPECT_GE(layout.clipsIn(whole).size(), 780U);
}

TEST(SequenceLayout, hitsTheClipAtAPlaceAndThinOnesBesideIt) {
    const Timeline timeline = threeTracks();
    const SequenceLayout layout(timeline.sequences()[0]);
    const TimelineView view = viewOf(0, 10);
    EXPECT_EQ(layout.clipAt({100 + 45, 50 + 15}, view), 2U) << "4.5 s in the first track";
    EXPECT_EQ(layout.clipAt({100 + 45, 50 + 36 + 15}, view), 1U) << "4.5 s in the second";
    EXPECT_EQ(layout.clipAt({100 + 45, 50 + 72 + 15}, view), std::nullopt) << "an empty track";
    const TimelineView far = viewOf(0, 0.5);
    EXPECT_EQ(layout.clipAt({100 + 50 + 3, 50 + 108 + 15}, far), 20U) << "half a pixel wide";
    EXPECT_EQ(layout.clipAt({100 + 50 + 9, 50 + 108 + 15}, far), std::nullopt);
}

TEST(SequenceLayout, walksAlongATrackAndToTheClipAtTheSameTimeInTheNext) {
    const Timeline timeline = threeTracks();
    const SequenceLayout layout(timeline.sequences()[0]);
    EXPECT_EQ(layout.first(), 0U);
    EXPECT_EQ(layout.nextInTrack(0, 1), 2U);
    EXPECT_EQ(layout.nextInTrack(2, -1), 0U);
    EXPECT_EQ(layout.nextInTrack(0, -1), 0U);
    EXPECT_EQ(layout.endOfTrack(0, true), 18U);
    EXPECT_EQ(layout.endOfTrack(18, false), 0U);
    // The clip from 12 s on, over those from 10 s on.
    EXPECT_EQ(layout.inTrackBeside(8, true), 5U);
    EXPECT_EQ(layout.inTrackBeside(5, false), 6U);
    EXPECT_EQ(layout.inTrackBeside(5, true), 20U) << "past the empty track";
    EXPECT_EQ(layout.inTrackBeside(20, true), 20U);
    EXPECT_EQ(layout.inTrackBeside(0, false), 0U);
}

TEST(SequenceLayout, reportsWhereATransitionLeavesAClipClear) {
    TimelineSequence sequence = emptySequence(2);
    add(sequence, 0, Time(0), Time(10));
    add(sequence, 0, Time(9), Time(3), TimelineKind::transition);
    add(sequence, 0, Time(10), Time(10));
    add(sequence, 1, Time(10), Time(10));
    add(sequence, 0, Time(20), Time(10));
    const Timeline timeline({sequence});
    const SequenceLayout layout(timeline.sequences()[0]);
    EXPECT_EQ(layout.clearBeginOf(0), 0);
    EXPECT_EQ(layout.clearBeginOf(2), 12);
    EXPECT_EQ(layout.clearBeginOf(3), 10) << "on another track";
    EXPECT_EQ(layout.clearBeginOf(4), 20);
}

TEST(SequenceLayout, placesNothingWhoseTimeIsUnknown) {
    TimelineSequence sequence = emptySequence(1);
    add(sequence, 0, Time(), Time(1));
    const Timeline timeline({sequence});
    const SequenceLayout layout(timeline.sequences()[0]);
    EXPECT_EQ(layout.unplaced(), 1U);
    EXPECT_TRUE(layout.clipsIn(viewOf(0, 10)).empty());
    EXPECT_EQ(layout.first(), std::nullopt);
    EXPECT_GT(layout.end(), layout.begin());
}

TEST(SequenceLayout, keepsBoxesNearTheViewAtAnyScale) {
    TimelineSequence sequence = emptySequence(1);
    add(sequence, 0, Time(-1000000000000), Time(2000000000000));
    const Timeline timeline({sequence});
    const SequenceLayout layout(timeline.sequences()[0]);
    const Box box = layout.boxOf(0, viewOf(0, 1e6));
    EXPECT_GE(box.x, 0);
    EXPECT_LE(box.right(), 1100);
    EXPECT_LT(box.x, 100);
    EXPECT_GT(box.right(), 900);
}

}  // namespace vornic
