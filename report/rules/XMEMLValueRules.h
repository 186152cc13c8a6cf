#ifndef VORNIC_REPORT_RULES_XMEML_VALUE_RULES_H
#define VORNIC_REPORT_RULES_XMEML_VALUE_RULES_H

#include "report/Rule.h"

namespace vornic::rules {

namespace detail {

inline constexpr std::string_view kXMEMLElementValues =
    "Final Cut Pro XML Interchange Format, elements catalogue";
inline constexpr std::string_view kXMEMLPathURL =
    "Final Cut Pro XML Interchange Format, elements catalogue, pathurl; RFC 8089; RFC 3986, "
    "sections 2 and 3";

}  // namespace detail

/// The form of single values in an XMEML file.
inline constexpr Rule kXMEMLValueRules[] = {
    {"values-number", RuleGroup::values, Severity::error,
     "<{element}> of {thing} is {value}; it should be a whole number",
     "Sizes, counts and positions are whole numbers.", "Programs read 0, or refuse the element.",
     "Write the number, without a unit or a fraction.", detail::kXMEMLElementValues},
    {"values-number-range", RuleGroup::values, Severity::warning,
     "<{element}> of {thing} is {value}; it should not be less than {least}",
     "Sizes, counts and positions are not negative.", "Programs read 0, or refuse the element.",
     "Write the number that is meant.", detail::kXMEMLElementValues},
    {"values-boolean", RuleGroup::values, Severity::warning,
     "<{element}> of {thing} is {value}; it should be TRUE or FALSE",
     "The element answers a question with yes or no, and its text is neither.",
     "Programs take it for FALSE, or for what they have as a default.", "Write TRUE or FALSE.",
     "Final Cut Pro XML Interchange Format, elements catalogue, Boolean values"},
    {"values-boolean-case", RuleGroup::values, Severity::info,
     "<{element}> of {thing} is {value}; it should be {right}, in capitals",
     "TRUE and FALSE are written in capitals.",
     "Most programs read small letters, too. A program that does not takes it for FALSE.",
     "Write it in capitals.", "8 of 18 real files have it otherwise"},
    {"values-word", RuleGroup::values, Severity::info,
     "<{element}> of {thing} is {value}; it should be {right}",
     "The format has a list of words for the element, and this is none of them. Capitals count.",
     "Programs take their default. A drop frame flag or a kind of media that is not known changes "
     "timecodes and links.",
     "Write one of the words.", detail::kXMEMLElementValues},
    {"values-channels-swapped", RuleGroup::values, Severity::error,
     "{thing} has {value} channels and {samples} samples a second; the two numbers should be "
     "exchanged",
     "The number of channels and the rate of the samples stand in each other's place.",
     "Programs try to make thousands of audio channels: they refuse the clip, hang, or import it "
     "without sound.",
     "Exchange the numbers in <channelcount> and <samplerate>.",
     "Final Cut Pro XML Interchange Format, elements catalogue, channelcount, samplerate; seen in "
     "real files"},
    {"values-channel-count", RuleGroup::values, Severity::warning,
     "{thing} has {value} channels; it should have as many as its media file, such as 2",
     "No media file has so many audio channels.",
     "Programs try to make that many channels, or import the clip without sound.",
     "Write the number of channels of the media file.",
     "Final Cut Pro XML Interchange Format, elements catalogue, channelcount"},
    {"values-sample-rate", RuleGroup::values, Severity::warning,
     "{thing} has {value} samples a second; it should be a rate such as 48000",
     "The rate of the samples is written in full, not in kHz: 48000, not 48.",
     "Programs play the sound at the wrong speed, or import the clip without it.",
     "Write the rate of the media file in samples a second.",
     "Final Cut Pro XML Interchange Format, elements catalogue, samplerate"},
    {"values-pathurl-windows-path", RuleGroup::values, Severity::warning,
     "the path of {thing}, \"{url}\", is written as on Windows; it should be a URL, as {right}",
     "The path of a media file is a URL: slashes, and a third slash before the letter of a drive.",
     "Programs on other systems do not find the file; some on Windows do not, either.",
     "Write slashes instead of backslashes, and file://localhost/ or file:/// in front.",
     detail::kXMEMLPathURL},
    {"values-pathurl-not-absolute", RuleGroup::values, Severity::warning,
     "the path of {thing}, \"{url}\", is no URL of a file; it should be one, as {right}",
     "The path of a media file is a URL that begins with file://localhost/ or file:///.",
     "Some programs read a plain path; others call the media offline.",
     "Put file://localhost in front of a path that begins with a slash, and percent-encode blanks.",
     "Final Cut Pro XML Interchange Format, elements catalogue, pathurl; RFC 8089; 318 of 4,090 "
     "paths in 103 real files have no scheme"},
    {"values-pathurl-not-encoded", RuleGroup::values, Severity::warning,
     "the path of {thing}, \"{url}\", has characters that a URL cannot hold as they are; it should "
     "be percent-encoded, as {right}",
     "Blanks, accents, brackets and percent signs of a path are written by their numbers in a URL: "
     "%20 for a blank.",
     "Some programs read it as it is; others cut the path off there and do not find the file.",
     "Percent-encode the characters.", detail::kXMEMLPathURL},
    {"values-pathurl-other-host", RuleGroup::values, Severity::warning,
     "the path of {thing}, \"{url}\", names a server; it should be a path on this computer, as "
     "{right}",
     "Between file:// and the next slash stands the name of a computer: localhost, or nothing.",
     "Most programs ignore the name and look for the file here, or do not find it.",
     "Mount the server's volume and write the path as it is there.", detail::kXMEMLPathURL},
};

}  // namespace vornic::rules

#endif
