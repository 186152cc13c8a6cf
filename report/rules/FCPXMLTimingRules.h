#ifndef VORNIC_REPORT_RULES_FCPXML_TIMING_RULES_H
#define VORNIC_REPORT_RULES_FCPXML_TIMING_RULES_H

#include "report/Rule.h"

namespace vornic::rules {

namespace detail {

inline constexpr std::string_view kTimeSource =
    "The description of times in the FCPXML document type definitions: a 64-bit number over a "
    "32-bit one";
inline constexpr std::string_view kStorySource =
    "The descriptions of spine, offset and duration in the FCPXML document type definitions; no "
    "export of Final Cut Pro among 70 real files has one";

}  // namespace detail

/// Times of FCPXML, and what they say together.
inline constexpr Rule kFCPXMLTimingRules[] = {
    {"timing-malformed-time", RuleGroup::timing, Severity::error,
     "{attribute} of {clip} is \"{value}\"; it should be a time such as 5s or 1001/24000s",
     "Times are whole numbers or fractions of a second, with an s behind them. Decimals, as in "
     "2.5s, timecodes and numbers without the s are none.",
     "The file is refused, or the time is taken for 0s.",
     "Write the time as a fraction: 2.5s is 5/2s.", detail::kTimeSource},
    {"timing-time-out-of-range", RuleGroup::timing, Severity::error,
     "{attribute} of {clip} is \"{value}\"; it should fit into 64 bits above the line and into 32 "
     "below it, where 0 may not stand",
     "A time is kept as a number of 64 bits over one of 32 bits. Scripts that add fractions "
     "without reducing them soon leave that range.",
     "The file is refused, or the clip comes to stand anywhere.", "Reduce the fraction.",
     detail::kTimeSource},
    {"timing-no-duration", RuleGroup::timing, Severity::error,
     "{attribute} of {clip} is {value}; it should be longer than 0s",
     "What stands in a timeline lasts a while. A duration of nothing or less is mostly a mistake "
     "of a calculation.",
     "The clip is left out, or the import ends with an error.",
     "Write the duration that is meant, or take the clip out.",
     "The description of duration in the FCPXML document type definitions"},
    {"timing-off-frame-grid", RuleGroup::timing, Severity::warning,
     "{attribute} of {clip} is {value}, which is no whole number of frames of {frame}; it should "
     "be {instead}",
     "What stands in a storyline begins and ends on a frame of its sequence: offset and duration "
     "are multiples of the frame duration of the sequence's format.",
     "Final Cut Pro says that the item is not on an edit frame boundary, moves it and leaves a "
     "gap.",
     "Write the nearest whole number of frames. Calculate with fractions, never with decimals.",
     "Warnings of imports; the description of frameDuration in the FCPXML document type "
     "definitions; none of 1,990 items of real exports"},
    {"timing-spine-hole", RuleGroup::timing, Severity::error,
     "a hole of {length} is in front of {clip}; its offset should be {offset}, or a <gap> should "
     "fill the hole",
     "The items of a storyline follow each other without a hole: each begins where the one before "
     "it ends. Where nothing is to be seen stands a <gap>.",
     "Items move forward and everything behind the hole comes too early, or the import ends with "
     "an error.",
     "Correct the offset, or put a <gap> of the missing length in between.", detail::kStorySource},
    {"timing-spine-overlap", RuleGroup::timing, Severity::error,
     "{clip} begins {length} before the end of what stands before it; its offset should be "
     "{offset}",
     "The items of a storyline follow each other without an overlap. What lies above or below "
     "another clip is connected to it and has a lane.",
     "Items move backward and everything behind comes too late, or the import ends with an error.",
     "Correct the offset or the duration before it, or make it a connected clip with a lane.",
     detail::kStorySource},
    {"timing-spine-start", RuleGroup::timing, Severity::warning,
     "{clip} is the first of its sequence and has the offset {value}; it should be {offset}, where "
     "the sequence begins",
     "The offsets of a sequence's own storyline count from its tcStart, or from 0s when it has "
     "none.",
     "A gap stands at the beginning, or all clips come to stand elsewhere.",
     "Add tcStart to all offsets of the storyline, or correct tcStart.", detail::kStorySource},
    {"timing-lane-in-spine", RuleGroup::timing, Severity::warning,
     "{clip} stands in a storyline and has the lane {value}; it should have none",
     "A lane is for clips that are connected to another. The items of a storyline follow each "
     "other and have no lane.",
     "The lane is passed over, or the clip is connected to the one before it.",
     "Take the attribute lane out, or put the clip into the one that it is to be connected to.",
     "The description of lane in the FCPXML document type definitions; none of 1,383 items of "
     "storylines in real files"},
    {"timing-connected-without-lane", RuleGroup::timing, Severity::error,
     "{clip} is connected to {parent} and has no lane; it should have one other than 0",
     "What stands in another clip is connected to it, above it with a lane of 1 and more, below it "
     "with one of -1 and less. Lane 0 is the clip itself.",
     "The clip is left out, or the import ends with an error.",
     "Give it a lane: 1 for a picture above, -1 for sound below.",
     "The description of lane in the FCPXML document type definitions; 348 of 356 connected clips "
     "in real files"},
    {"timing-connected-outside", RuleGroup::timing, Severity::info,
     "{clip} is connected to {parent} at {value}, which the clip does not show; its offset should "
     "be from {first} to {last}",
     "A connected clip hangs on a moment of the clip that it stands in, in that one's own time, "
     "which counts from its start.",
     "The clip comes to stand elsewhere than it seems, mostly where it is meant to.",
     "Calculate the offset from the start of the clip around it, not from the sequence.",
     "The description of offset in the FCPXML document type definitions; 2 of 358 connected clips "
     "in real exports"},
    {"timing-clip-beyond-media", RuleGroup::timing, Severity::warning,
     "{clip} shows its media from {first} to {last}, and there are media from {from} to {to} "
     "alone; it should stay within them",
     "The start of a clip, and its start and duration together, lie within the start and the "
     "duration of its asset. Media that begin at a timecode are the usual cause: their start has "
     "to be added.",
     "\"Invalid edit with no respective media\", the message that imports end with most often; "
     "elsewhere \"The clip was not found\".",
     "Correct start or duration of the clip. The start of an asset is the timecode of its file.",
     "The descriptions of asset and asset-clip in the FCPXML document type definitions; reports of "
     "refused files"},
    {"timing-transition-misplaced", RuleGroup::timing, Severity::warning,
     "{clip} does not lie across the cut at {cut}; its offset should be {offset}",
     "A transition lies across a cut, half of it before and half behind. At the beginning of a "
     "storyline it begins with it, at the end it ends with it.",
     "The transition moves, or is left out.",
     "Write the time of the cut less half the duration of the transition.",
     "The description of transition in the FCPXML document type definitions; 20 of 20 in real "
     "exports"},
    {"timing-transition-too-long", RuleGroup::timing, Severity::warning,
     "{clip} reaches beyond {neighbour}; half of it should not be longer than the clip that it "
     "lies on",
     "Half of a transition lies on the clip before the cut and half on the one behind it.",
     "The transition is shortened or left out.", "Shorten the transition.",
     "The description of transition in the FCPXML document type definitions; 20 of 20 in real "
     "exports"},
    {"timing-sync-clip-start", RuleGroup::timing, Severity::warning,
     "{clip} begins at {value}, and what is in it {content}; its start should be "
     "{offset}",
     "The start of a synchronized clip counts in the time of what stands in it. When nothing "
     "stands there, nothing is shown.",
     "The clip shows blank frames.", "Write the offset of the inner clip as the start.",
     "The description of sync-clip in the FCPXML document type definitions; 4 of 4 in real files"},
    {"timing-drop-frame", RuleGroup::timing, Severity::error,
     "{clip} counts in drop frame at a frame duration of {frame}; its tcFormat should be NDF, or "
     "its frames 1001/30000s or 1001/60000s long",
     "Drop frame leaves numbers out so that the timecode keeps pace with the clock at 29.97 and "
     "59.94 frames a second. At any other rate there is nothing to leave out.",
     "Timecodes are off by up to 3.6 seconds an hour, or the import ends with an error.",
     "Write tcFormat=\"NDF\", or correct the format.",
     "SMPTE ST 12-1; the description of tcFormat "
     "in the FCPXML document type definitions"},
    {"timing-sequence-duration", RuleGroup::timing, Severity::warning,
     "{clip} lasts {value} by its sequence, and its clips end after {end}; the duration should be "
     "{instead}",
     "The duration of a sequence reaches to the end of its last clip, connected ones included.",
     "The end is cut off, or black follows, until the sequence is opened and counted anew.",
     "Write the duration that the clips have, or leave the attribute out.",
     "The description of sequence in the FCPXML document type definitions; 99 of 105 sequences in "
     "real files"},
    {"timing-time-map-order", RuleGroup::timing, Severity::warning,
     "a time point of {clip} is at {value}, before the one that it follows; the times should rise",
     "The points of a time map say which moment of the media is shown when, one after the other.",
     "The change of speed is passed over, or the clip shows the wrong part.",
     "Put the points in the order of their times.",
     "The description of timeMap in the FCPXML document type definitions; 24 of 24 in real files"},
    {"timing-media-without-rate", RuleGroup::timing, Severity::warning,
     "{clip} lasts {duration} and has a format without a frame duration; its format should have "
     "one",
     "A format without frameDuration is that of a still. Media with motion have frames of a "
     "length.",
     "The clip is taken for a still, or its times do not fit.",
     "Give the format a frameDuration, such as 1001/24000s, or name another format.",
     "The description of format in the FCPXML document type definitions; 36 of 36 formats without "
     "one are those of stills in real exports"},
};

}  // namespace vornic::rules

#endif
