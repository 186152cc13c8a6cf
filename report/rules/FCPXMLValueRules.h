#ifndef VORNIC_REPORT_RULES_FCPXML_VALUE_RULES_H
#define VORNIC_REPORT_RULES_FCPXML_VALUE_RULES_H

#include "report/Rule.h"

namespace vornic::rules {

namespace detail {

inline constexpr std::string_view kMediaOffline =
    "The media are offline after the import and have to be linked again by hand, or the import "
    "ends "
    "with an error.";
inline constexpr std::string_view kFileURLSource =
    "RFC 8089 (file URLs); RFC 3986, section 2; the description of src in the FCPXML document type "
    "definitions";

}  // namespace detail

/// The form of single values in FCPXML.
inline constexpr Rule kFCPXMLValueRules[] = {
    {"values-mod-date", RuleGroup::values, Severity::error,
     "modDate of {clip} is \"{value}\"; it should be of the form \"2024-05-31 18:30:00 +0200\"",
     "The date of the last change has one form: year, month and day, the time, and the offset from "
     "Universal Time in hours and minutes. The name of a zone, as in \"GMT\" or "
     "\"Europe/Berlin\", is none.",
     "Final Cut Pro refuses the whole file for the name of a zone in one date.",
     "Write the offset in place of the zone's name, or take the attribute out: nothing needs it.",
     "The description of modDate in the FCPXML document type definitions; reports of refused "
     "files"},
    {"values-src-not-absolute", RuleGroup::values, Severity::warning,
     "src of {clip} is \"{value}\"; it should be a whole file URL, such as {instead}",
     "A media file is named by its whole path as a URL, with file:// in front. A relative path "
     "leads nowhere once the project file is somewhere else.",
     detail::kMediaOffline, "Write the whole path, with file:// in front of its first slash.",
     detail::kFileURLSource},
    {"values-src-windows-path", RuleGroup::values, Severity::error,
     "src of {clip} is \"{value}\"; it should be a file URL with forward slashes, such as "
     "{instead}",
     "Backslashes, and a drive letter where a URL has the name of a computer, make no URL that a "
     "program reads.",
     detail::kMediaOffline,
     "Write file:/// in front of the drive letter, and forward slashes in the path.",
     detail::kFileURLSource},
    {"values-src-not-encoded", RuleGroup::values, Severity::error,
     "src of {clip} is \"{value}\", with characters that a URL may not have; it should be "
     "{instead}",
     "Blanks, letters with accents, brackets and the signs # ? % stand in a URL by their numbers: "
     "a blank is %20.",
     detail::kMediaOffline, "Write each such character by its number, as in %20.",
     detail::kFileURLSource},
    {"values-src-other-host", RuleGroup::values, Severity::warning,
     "src of {clip} names the computer \"{host}\"; it should have nothing, or localhost, between "
     "the slashes of file:///",
     "Between the second slash of file:// and the third one stands the name of a computer. Media "
     "are looked for on this one alone. A script that left a slash out is the usual cause.",
     detail::kMediaOffline, "Write file:/// and the path on this computer.",
     detail::kFileURLSource},
    {"values-src-no-extension", RuleGroup::values, Severity::warning,
     "src of {clip} names the file \"{value}\"; its name should have an extension, such as .mov",
     "Programs tell by the extension what kind of media a file is.",
     "The file is not taken for media: the clip is offline after the import, or missing.",
     "Give the file its extension, and write it into the path.",
     "The description of src in the FCPXML document type definitions; reports of refused files"},
    {"values-audio-swapped", RuleGroup::values, Severity::error,
     "{clip} has {channels} channels at {rate} Hz; the two numbers should be swapped",
     "The number of channels and the sample rate stand in each other's place.",
     "The sound is silent, or has the wrong speed, or the import ends with an error.",
     "Swap the values of audioChannels and audioRate.",
     "The description of asset in the FCPXML document type definitions; seen in real files"},
    {"values-audio-number", RuleGroup::values, Severity::warning,
     "{attribute} of {clip} is \"{value}\"; it should be a whole number, {instead}",
     "At an asset, audioSources and audioChannels are counts, and audioRate is the sample rate in "
     "Hz, such as 48000. The short form, as in 48k, belongs to a sequence.",
     "The value is passed over, and the sound may be missing or have the wrong speed.",
     "Write the number in full.",
     "The description of asset in the FCPXML document type definitions; 133 of 133 assets with "
     "sound in real files"},
    {"values-lane", RuleGroup::values, Severity::error,
     "lane of {clip} is \"{value}\"; it should be a whole number, such as 1 or -1",
     "The lane says above or below which others a connected clip lies: 1, 2 and so on above the "
     "main storyline, -1, -2 and so on below it.",
     "The import ends with an error, or the clip comes to lie on the main storyline.",
     "Write a whole number.", "The description of lane in the FCPXML document type definitions"},
};

}  // namespace vornic::rules

#endif
