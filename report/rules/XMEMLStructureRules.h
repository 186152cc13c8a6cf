#ifndef VORNIC_REPORT_RULES_XMEML_STRUCTURE_RULES_H
#define VORNIC_REPORT_RULES_XMEML_STRUCTURE_RULES_H

#include "report/Rule.h"

namespace vornic::rules {

namespace detail {

inline constexpr std::string_view kXMEMLElements =
    "Final Cut Pro XML Interchange Format, elements catalogue: the parts that each element needs";
inline constexpr std::string_view kXMEMLVersions =
    "Final Cut Pro XML Interchange Format, appendix on versions";

}  // namespace detail

/// What has to stand in the elements of an XMEML file, and which version it is.
inline constexpr Rule kXMEMLStructureRules[] = {
    {"structure-missing-part", RuleGroup::structure, Severity::warning,
     "{thing} lacks {parts}; every {element} should have that",
     "The format asks for the part, and the program that wrote the file left it out.",
     "Final Cut Pro 7 looks for the parts that it needs and refuses the file or leaves the element "
     "out. Other programs guess; some refuse a sequence without a duration.",
     "Add the part with the value that is meant, or export the file again.",
     detail::kXMEMLElements},
    {"structure-left-out-part", RuleGroup::structure, Severity::info,
     "{thing} lacks {parts}, which programs can do without; every {element} should have that",
     "The format lists the part as one that is needed. Real exporters leave it out, and readers "
     "take "
     "a rate from the element around, and a value from the effect's defaults.",
     "Such files are read everywhere that we know of.",
     "Nothing, unless a program reads the element wrong; then write the part.",
     "Final Cut Pro XML Interchange Format, basics, Inheritance; counts over 103 real files"},
    {"structure-unknown-version", RuleGroup::structure, Severity::warning,
     "the file declares version \"{version}\", which XMEML does not have; it should be a number "
     "from 1 to 5",
     "Five versions were published, the last with Final Cut Pro 7.",
     "Programs refuse a version that they do not know, or read the file as the newest one.",
     "Write the version that the file was made for, 1 to 5.", detail::kXMEMLVersions},
    {"structure-version-form", RuleGroup::structure, Severity::info,
     "the file declares version \"{version}\"; it should be \"{whole}\"",
     "Versions of XMEML are whole numbers, and some programs compare them letter by letter.",
     "Most programs read the file. A classic repair and a conversion do not know the version.",
     "Write the whole number.", detail::kXMEMLVersions},
    {"structure-newer-element", RuleGroup::structure, Severity::warning,
     "<{element}> came with XMEML {since}, and the file declares version {version}; the file "
     "should "
     "declare {since} or do without the element",
     "The declared version has no such element. Lowering the number by hand without taking out "
     "what "
     "the lower version lacks leads to this.",
     "A program that reads no newer version leaves the element out with all that is in it, or "
     "refuses the file.",
     "Declare the newer version if the receiver reads it, or convert the file with vornic to the "
     "version that it declares.",
     detail::kXMEMLVersions},
    {"structure-root-content", RuleGroup::structure, Severity::warning,
     "<{element}> stands in the root element; only a project, bin, clip or sequence should",
     "A file is a project, a bin, or clips and sequences on their own, after options for the "
     "import. Parts of them have no place outside of them.",
     "Programs do not look for anything else there and leave it out.",
     "Move the element into the sequence or clip that it belongs to.",
     "Final Cut Pro XML Interchange Format, elements catalogue, xmeml"},
    {"structure-no-content", RuleGroup::structure, Severity::warning,
     "the file holds nothing; a project, bin, clip or sequence should stand in the root element",
     "There is a root element and nothing in it that a program could show.",
     "Programs import nothing, mostly without a message. A classic repair says that there is no "
     "sequence.",
     "Export the project again.",
     "Final Cut Pro XML Interchange Format, elements catalogue, xmeml"},
};

/// What a receiver of an older version cannot read.
inline constexpr Rule kXMEMLVersionRules[] = {
    {"versions-newer-than-receiver", RuleGroup::versions, Severity::error,
     "the file declares version {version}; for a receiver that reads up to {reads} it should be "
     "{reads} or lower",
     "The number of the version is newer than all that the receiver knows.",
     "Programs refuse a file of a newer version at once, whatever is in it.",
     "Convert the file to a version that the receiver reads.",
     "Final Cut Pro XML Interchange Format, appendix on versions; FCPXML document type definitions "
     "1.0 to 1.14"},
    {"versions-newer-element", RuleGroup::versions, Severity::error,
     "<{element}> came with XMEML {since}; for a receiver that reads up to {reads} it should not "
     "be "
     "there",
     "The receiver's version does not have the element.",
     "The receiver leaves the element out with all that is in it, or refuses the file.",
     "Convert the file to a version that the receiver reads, which takes the element out, and look "
     "at what is lost.",
     detail::kXMEMLVersions},
};

}  // namespace vornic::rules

#endif
