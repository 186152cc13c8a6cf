#ifndef VORNIC_REPORT_RULES_REQUIREMENTS_H
#define VORNIC_REPORT_RULES_REQUIREMENTS_H

#include <string_view>

namespace vornic::rules {

/// Something that a format asks of a file, and which rules hold it.
struct Requirement {
    /// In our own short words.
    std::string_view text;
    /// Ids, parted by single blanks.
    std::string_view rules;
};

/// All that the rules about the formats hold: each rule stands in one of these at least. What XML
/// asks for is no part of it.
inline constexpr Requirement kRequirements[] = {
    {"FCPXML is valid by the definition of the version that it declares",
     "structure-unknown-element structure-element-of-other-version structure-misplaced-element "
     "structure-element-order structure-surplus-element structure-missing-element "
     "structure-misplaced-text structure-content-in-empty-element structure-unknown-attribute "
     "structure-attribute-of-other-version structure-missing-attribute structure-value-not-listed "
     "structure-value-not-fixed structure-malformed-id structure-repeated-id "
     "structure-dangling-reference structure-document-type"},
    {"FCPXML: what stands alone gets no values from its definition", "values-standalone"},
    {"FCPXML: each version is read by its own definition; one that is newer is not judged",
     "structure-element-of-other-version structure-attribute-of-other-version "
     "versions-not-declared "
     "versions-malformed versions-unknown"},
    {"FCPXML: a receiver reads up to a version, and nothing that is newer",
     "versions-newer-than-receiver versions-unread-element versions-unread-attribute "
     "versions-unread-value"},
    {"FCPXML: info-asc-cdl is declared in no version from 1.5 on, whatever filter-video's model "
     "says",
     "structure-element-of-other-version"},
    {"FCPXML: an audition is not empty", "structure-missing-element"},
    {"FCPXML: a library is required in 1.4 and 1.5, and resources nowhere since",
     "structure-missing-element"},
    {"FCPXML: a reference finds its target", "structure-dangling-reference references-dangling"},
    {"FCPXML: a reference leads to the right kind of thing",
     "references-wrong-kind references-wrong-media"},
    {"FCPXML: the angleID of an mc-source is an angle of that multicam",
     "references-unknown-angle references-repeated-angle"},
    {"FCPXML: different assets and media have different uids", "references-uid-clash"},
    {"FCPXML: a time is digits, perhaps over digits, and an s", "timing-malformed-time"},
    {"FCPXML: a time is a 64-bit number over one of 32 bits, which is not 0",
     "timing-time-out-of-range"},
    {"FCPXML: offset and duration in a spine are whole multiples of the sequence's frame duration",
     "timing-off-frame-grid"},
    {"FCPXML: no hole and no overlap is between the items of a spine",
     "timing-spine-hole timing-spine-overlap"},
    {"FCPXML: a transition lies half on either side of a cut",
     "timing-transition-misplaced timing-transition-too-long"},
    {"FCPXML: a duration is longer than 0", "timing-no-duration"},
    {"FCPXML: a clip stays in its asset's range, unless it has a time map or a conformed rate",
     "timing-clip-beyond-media"},
    {"FCPXML: the items of a spine are placed from tcStart, children of a clip in the clip's time",
     "timing-spine-start timing-connected-outside"},
    {"FCPXML: a sequence lasts as long as what is in it", "timing-sequence-duration"},
    {"FCPXML: drop frame fits frame durations of 1001/30000s and 1001/60000s alone",
     "timing-drop-frame"},
    {"FCPXML: a sync-clip starts where its inner clip does", "timing-sync-clip-start"},
    {"FCPXML: the points of a time map follow each other", "timing-time-map-order"},
    {"FCPXML: a clip with motion has a format with a frame duration", "timing-media-without-rate"},
    {"FCPXML: connected clips have a lane other than 0, items of a spine have none",
     "timing-connected-without-lane timing-lane-in-spine values-lane"},
    {"FCPXML: modDate is yyyy-mm-dd hh:mm:ss and an offset, never the name of a zone",
     "values-mod-date"},
    {"FCPXML: src is an absolute file URL, percent-encoded, with a file name that has an extension",
     "values-src-not-absolute values-src-windows-path values-src-not-encoded "
     "values-src-other-host values-src-no-extension"},
    {"FCPXML: the audioRate of a sequence is one of a list, such as 44.1k, and an asset's is in Hz",
     "structure-value-not-listed values-audio-number values-audio-swapped"},
    {"XMEML: clips, clip items, files, rates, timecodes, links, markers, parameters, multiclips, "
     "angles and metadata have their required parts",
     "structure-missing-part structure-left-out-part"},
    {"XMEML: a project, a bin, or clips and sequences stand in the root element",
     "structure-root-content structure-no-content"},
    {"XMEML: the version is a whole number from 1 to 5",
     "versions-not-declared structure-unknown-version structure-version-form"},
    {"XMEML: no element is newer than the version that the file declares, or that a receiver reads",
     "structure-newer-element versions-newer-element versions-newer-than-receiver"},
    {"XMEML: a file is defined once and named by empty elements after that",
     "references-file-repeated references-file-redefined"},
    {"XMEML: what is named is defined somewhere",
     "references-file-undefined references-clip-undefined"},
    {"XMEML: a link names a clip item of the file, with its track and number",
     "references-dangling-link references-link-numbers"},
    {"XMEML: ids of clip items are unique", "references-clip-item-repeated"},
    {"XMEML: a master clip that is not in the file is normal", "references-master-clip-missing"},
    {"XMEML: out less in is end less start, but beside transitions and with another rate",
     "timing-length timing-missing-transition timing-stray-transition"},
    {"XMEML: in lies before out, start before end", "timing-in-out timing-start-end"},
    {"XMEML: times are whole numbers of frames",
     "timing-number timing-number-with-fraction timing-number-range"},
    {"XMEML: a clip ends within its media, stills apart", "timing-out-beyond-media"},
    {"XMEML: a timebase is a whole number, mostly 24, 25, 30, 48, 50 or 60",
     "timing-timebase timing-timebase-cut-off timing-unusual-timebase"},
    {"XMEML: ntsc is TRUE or FALSE, fits the timebase, and is not left to guess",
     "timing-missing-ntsc timing-ntsc values-boolean values-boolean-case"},
    {"XMEML: a timecode and its frame number say the same",
     "timing-timecode-string timing-timecode-frame"},
    {"XMEML: clip items of a track stand in order and do not overlap",
     "timing-item-order timing-overlap"},
    {"XMEML: numbers and words have the form that the format lists",
     "values-number values-number-range values-word"},
    {"XMEML: pathurl is a percent-encoded file URL",
     "values-pathurl-not-absolute values-pathurl-not-encoded values-pathurl-other-host "
     "values-pathurl-windows-path"},
    {"XMEML: drop frame goes with 29.97 and 59.94 frames a second alone", "timing-drop-frame-flag"},
    {"XMEML: a sequence lasts as long as what is in it", "timing-sequence-too-short"},
    {"XMEML: channel counts and sample rates are possible ones, and not exchanged",
     "values-channels-swapped values-channel-count values-sample-rate"},
    {"Characters that a classic repair takes out, control characters and half pairs are told",
     "characters-removed-by-repair characters-control characters-half-pair "
     "characters-forbidden-reference characters-long-reference"},
    {"A file is UTF-8 and says so, and its name says which format it is in",
     "values-encoding values-extension xml-declared-encoding"},
    {"The root element is <fcpxml> or <xmeml>", "xml-other-root"},
    {"The media files that a project names are there, under the names that it has for them",
     "media-missing media-other-name media-folder media-unreadable media-not-mounted "
     "media-no-answer media-elsewhere"},
};

}  // namespace vornic::rules

#endif
