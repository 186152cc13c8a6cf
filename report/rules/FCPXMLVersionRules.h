#ifndef VORNIC_REPORT_RULES_FCPXML_VERSION_RULES_H
#define VORNIC_REPORT_RULES_FCPXML_VERSION_RULES_H

#include "report/Rule.h"

namespace vornic::rules {

namespace detail {

inline constexpr std::string_view kTooNewForReceiver =
    "A receiver of that version refuses the whole file, or leaves out what it does not know.";
inline constexpr std::string_view kDefinitions = "FCPXML document type definitions 1.0 to 1.14";

}  // namespace detail

/// The version of a file, and what a receiver that reads FCPXML up to an older one can't read.
inline constexpr Rule kFCPXMLVersionRules[] = {
    {"versions-not-declared", RuleGroup::versions, Severity::error,
     "the file does not say which version of {format} it is in; <{root}> should have the attribute "
     "version, such as version=\"{example}\"",
     "The version says what the file may hold, and in FCPXML by which definition it is to be read.",
     "FCPXML without a version is refused. XMEML is taken for one of a version that the program "
     "chooses; a conversion refuses it.",
     "Write the version that the file was made for.",
     "FCPXML document type definitions 1.0 to 1.14; Final Cut Pro XML Interchange Format, appendix "
     "on versions"},
    {"versions-malformed", RuleGroup::versions, Severity::error,
     "the file declares FCPXML \"{version}\"; it should be a version such as 1.8 or 1.10",
     "Versions of FCPXML are 1.0, 1.1 and so on, written in this way and no other.",
     "The file is refused.", "Write the version that the file was made for.", detail::kDefinitions},
    {"versions-unknown", RuleGroup::versions, Severity::warning,
     "the file declares FCPXML {version}, of which no definition is known here; it should declare "
     "one from 1.0 to {newest} to be judged",
     "The version is newer than this program. Its structure was not looked at.",
     "Programs that are older than the version refuse the file.",
     "Export the file in an older version if the receiver does not read this one.",
     detail::kDefinitions},
    {"versions-unread-element", RuleGroup::versions, Severity::error,
     "<{element}> in <{parent}> is not read before FCPXML {first}, and the receiver reads up to "
     "{reads}; it should go, or become what that version has for it",
     "The element came with a version that is newer than what the receiver reads, or has its place "
     "there only since.",
     detail::kTooNewForReceiver, "Convert the file to the receiver's version.",
     detail::kDefinitions},
    {"versions-unread-attribute", RuleGroup::versions, Severity::error,
     "the attribute {attribute} of <{element}> is not read before FCPXML {first}, and the receiver "
     "reads up to {reads}; it should go",
     "The attribute came with a version that is newer than what the receiver reads.",
     detail::kTooNewForReceiver, "Convert the file to the receiver's version.",
     detail::kDefinitions},
    {"versions-unread-value", RuleGroup::versions, Severity::error,
     "{attribute} of <{element}> is \"{value}\", which FCPXML {reads} does not have; it should be "
     "{instead}",
     "The value came with a version that is newer than what the receiver reads.",
     detail::kTooNewForReceiver, "Write a value that the receiver's version has.",
     detail::kDefinitions},
};

}  // namespace vornic::rules

#endif
