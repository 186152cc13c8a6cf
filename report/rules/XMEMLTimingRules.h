#ifndef VORNIC_REPORT_RULES_XMEML_TIMING_RULES_H
#define VORNIC_REPORT_RULES_XMEML_TIMING_RULES_H

#include "report/Rule.h"

namespace vornic::rules {

namespace detail {

inline constexpr std::string_view kXMEMLTimingValues =
    "Final Cut Pro XML Interchange Format, basics, Timing Values";
inline constexpr std::string_view kXMEMLFrameRates =
    "Final Cut Pro XML Interchange Format, elements catalogue, rate, and appendix on frame rates";
inline constexpr std::string_view kXMEMLTimecode =
    "Final Cut Pro XML Interchange Format, elements catalogue, timecode; SMPTE ST 12-1";

}  // namespace detail

/// Frames, rates and timecodes of an XMEML file.
inline constexpr Rule kXMEMLTimingRules[] = {
    {"timing-number", RuleGroup::timing, Severity::error,
     "<{element}> of {thing} is {value}; it should be a whole number of frames",
     "Times in XMEML are frames, counted from 0.",
     "Programs read 0, refuse the clip, or refuse the file.",
     "Write the number of frames, without a unit, a fraction or a timecode.",
     detail::kXMEMLTimingValues},
    {"timing-number-with-fraction", RuleGroup::timing, Severity::info,
     "<{element}> of {thing} is {value}; it should be \"{right}\", without a fraction",
     "The number is a whole one and written with decimals, as scripts do that count in seconds.",
     "Most programs read it. Some read 0.", "Take the decimal point and the zeros away.",
     "Final Cut Pro XML Interchange Format, basics, Timing Values; 6 of 18 real files"},
    {"timing-number-range", RuleGroup::timing, Severity::warning,
     "<{element}> of {thing} is {value}; it should be a number of frames from {least} to "
     "2147483647",
     "Frames are counted from 0. -1 says of a place that it is not set. No program keeps more "
     "frames than fit into 32 bits.",
     "Programs take the value for 0, or put the clip where nobody finds it.",
     "Write the number that is meant, or -1 where the place is not set.",
     detail::kXMEMLTimingValues},
    {"timing-timebase", RuleGroup::timing, Severity::error,
     "the timebase of {thing} is {value}; it should be a whole number of frames a second, "
     "{right}",
     "The timebase is 24, 25, 30, 48, 50 or 60. Whether a rate is slower by a thousandth, as 29.97 "
     "is, stands in <ntsc>.",
     "Programs read another rate or none: all times are wrong, or the file is refused.",
     "Write the whole number; 23.976, 29.97 and 59.94 are 24, 30 and 60 with <ntsc>TRUE</ntsc>.",
     detail::kXMEMLFrameRates},
    {"timing-timebase-cut-off", RuleGroup::timing, Severity::warning,
     "the timebase of {thing} is {value}, a rate with its fraction cut off; it should be "
     "{right} with <ntsc>TRUE</ntsc>",
     "No camera and no program works at this rate. Scripts that cut 29.97 down to 29 write it.",
     "Programs play the sequence at the wrong speed, and picture and sound drift apart.",
     "Write the next whole number, and TRUE into <ntsc>.", detail::kXMEMLFrameRates},
    {"timing-unusual-timebase", RuleGroup::timing, Severity::info,
     "the timebase of {thing} is {value}; it should mostly be 24, 25, 30, 48, 50 or 60",
     "Other rates exist, but most programs have no setting for them.",
     "Programs take the nearest rate that they know, or ask.", "Nothing, if the rate is meant.",
     detail::kXMEMLFrameRates},
    {"timing-missing-ntsc", RuleGroup::timing, Severity::info,
     "{thing} does not say whether it is an NTSC rate; <ntsc> should be TRUE or FALSE",
     "30 frames a second and 29.97 have the same timebase. Where <ntsc> is left out, each reader "
     "takes what is around it or guesses.",
     "Programs that guess differently show other timecodes and lengths.",
     "Write <ntsc>TRUE</ntsc> for 23.976, 29.97 and 59.94 and <ntsc>FALSE</ntsc> for all others.",
     "Final Cut Pro XML Interchange Format, elements catalogue, rate; 28 of 103 real files"},
    {"timing-ntsc", RuleGroup::timing, Severity::warning,
     "{thing} has the timebase {timebase} and says that it is an NTSC rate; <ntsc> should be FALSE",
     "NTSC rates are slower by a thousandth than 24, 30 and 60. There are none for 25 and 50.",
     "Programs ignore the flag, or take the sequence for one of a rate that nobody uses.",
     "Write FALSE.", detail::kXMEMLFrameRates},
    {"timing-drop-frame-flag", RuleGroup::timing, Severity::warning,
     "{thing} counts with drop frame at timebase {rate}; it should be NDF, since only 29.97 and "
     "59.94 have a drop frame count",
     "Drop frame leaves out numbers so that 29.97 frames a second keep pace with the clock. Other "
     "rates have no need for that.",
     "Programs ignore the flag or show wrong timecodes; media may not be found again by timecode.",
     "Write NDF, and a colon before the frames. If the media do have drop frame, correct the rate.",
     detail::kXMEMLTimecode},
    {"timing-timecode-string", RuleGroup::timing, Severity::warning,
     "{thing} says \"{value}\", which its count does not have; it should be hours, minutes, "
     "seconds "
     "and frames, as in 01:00:00:00",
     "Each part has two digits and an upper limit: 23, 59, 59 and the frames of a second. Drop "
     "frame leaves out the first frames of most minutes.",
     "Programs read 00:00:00:00 or the frame beside it.", "Write the timecode that the media has.",
     detail::kXMEMLTimecode},
    {"timing-timecode-frame", RuleGroup::timing, Severity::warning,
     "{thing} says {text}, which is frame {right}, and frame {frame}; both should be the same",
     "The timecode stands in the file as text and as a number of frames since midnight. The two "
     "disagree.",
     "Some programs read the text, others the number: the same file has two timecodes.",
     "Find out which is right, by the media or by the program that wrote the file.",
     detail::kXMEMLTimecode},
    {"timing-start-end", RuleGroup::timing, Severity::error,
     "{thing} begins at frame {first} and ends at frame {last}; its end should lie behind its "
     "start",
     "<start> and <end> say where in the timeline the item stands. Its end does not lie behind its "
     "start.",
     "Programs leave the item out or refuse the sequence.",
     "Correct the one that is wrong: the end is the start plus the length.",
     detail::kXMEMLTimingValues},
    {"timing-in-out", RuleGroup::timing, Severity::error,
     "{thing} has its in point at frame {first} and its out point at frame {last}; the out point "
     "should lie behind the in point",
     "<in> and <out> say which piece of the source is used. The piece has no length.",
     "Programs leave the clip out, or use a piece of another length.",
     "Correct the one that is wrong: out is in plus the length.", detail::kXMEMLTimingValues},
    {"timing-length", RuleGroup::timing, Severity::warning,
     "{thing} uses {used} of its source and lasts {length} in the timeline; both should be the "
     "same, with {right} as <out>",
     "Between in and out lie as many frames as between start and end, unless the clip runs at "
     "another speed. It has no speed effect and no rate of its own that would explain it.",
     "Some programs go by the source, others by the timeline: clips are cut off, moved, or get a "
     "speed that nobody chose.",
     "Find out which length is right. If it is off by one frame, out is mostly the wrong one.",
     "126 of 17,452 clip items in 10 of 103 real files"},
    {"timing-out-beyond-media", RuleGroup::timing, Severity::warning,
     "{thing} is used up to frame {out}, and {media} has {duration}; the clip should end within "
     "its "
     "media",
     "The clip's out point lies behind the end of the media file.",
     "Programs shorten the clip, repeat its last frame or call the media offline.",
     "Shorten the clip, or correct the duration of the media file if that is wrong.",
     "Final Cut Pro XML Interchange Format, basics, Timing Values; counts over 103 real files, "
     "without stills"},
    {"timing-missing-transition", RuleGroup::timing, Severity::warning,
     "{thing} leaves its {side} to a transition, and there is none {where} it; a frame number "
     "should "
     "stand there instead of -1",
     "-1 says that a transition decides where the clip begins or ends. The item beside it in the "
     "track is none.",
     "Programs put the clip at the beginning, or leave it out.",
     "Write the frame at which the clip begins or ends, or put the transition back.",
     detail::kXMEMLTimingValues},
    {"timing-stray-transition", RuleGroup::timing, Severity::warning,
     "{thing} lasts from frame {first} to frame {last} and touches no clip; it should stand "
     "between "
     "two clips, or at an end of one",
     "A transition stands in the track between the clips that it joins. The clips beside it lie "
     "elsewhere.",
     "Programs leave it out or refuse the track.",
     "Take the transition out, or move it to the cut that it belongs to.",
     "Final Cut Pro XML Interchange Format, basics, Transitions"},
    {"timing-item-order", RuleGroup::timing, Severity::info,
     "{thing} begins before the clip that stands in front of it in the file; clips of a track "
     "should stand in the order of time",
     "The order in the file is not that of the timeline. Scripts that add clips at the end write "
     "such files.",
     "Most programs sort the clips. Some take each for the next one and put it behind.",
     "Move the clip item to its place in the track.", "18 real files, in none of which it occurs"},
    {"timing-overlap", RuleGroup::timing, Severity::warning,
     "{thing} begins at frame {start}, before {other} ends at frame {reach}; it should begin there "
     "or later",
     "Two clips of one track cannot be seen at the same time. Where they should blend, a "
     "transition "
     "stands between them.",
     "Programs cut one of the two off, or leave it out.",
     "Move one of the clips, shorten it, or put it on a track of its own.",
     "Final Cut Pro XML Interchange Format, basics, Media in a Sequence"},
    {"timing-sequence-too-short", RuleGroup::timing, Severity::warning,
     "{thing} has {duration}, and {item} ends at frame {last}; the sequence should last as long as "
     "what is in it",
     "The duration of the sequence is less than what its tracks hold.",
     "Most programs go by the clips. Some cut the sequence off.",
     "Write the frame at which the last clip ends.",
     "Final Cut Pro XML Interchange Format, elements catalogue, sequence; 8 of 18 real files, 4 of "
     "them by one frame"},
};

}  // namespace vornic::rules

#endif
