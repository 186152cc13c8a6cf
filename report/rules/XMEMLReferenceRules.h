#ifndef VORNIC_REPORT_RULES_XMEML_REFERENCE_RULES_H
#define VORNIC_REPORT_RULES_XMEML_REFERENCE_RULES_H

#include "report/Rule.h"

namespace vornic::rules {

/// Ids of an XMEML file, and what refers to them.
inline constexpr Rule kXMEMLReferenceRules[] = {
    {"references-file-repeated", RuleGroup::references, Severity::warning,
     "{thing} is defined here once more under the id \"{id}\", in the same words; it should be "
     "defined once and named by <file id=\"{id}\"/> after that",
     "The file's details stand with the first clip that uses it; further clips name it by its id "
     "alone. Here they are written out again.",
     "Most programs take the second definition for the first. At least one drops the clip without "
     "a "
     "message.",
     "Replace the second definition by an empty <file> element with the same id. Nothing is lost: "
     "both say the same.",
     "Final Cut Pro XML Interchange Format, basics, The id Attribute; 14 of 103 real files, with "
     "65 "
     "such ids"},
    {"references-file-redefined", RuleGroup::references, Severity::error,
     "{thing} is defined here under the id \"{id}\", which another definition has already; each "
     "file should have an id of its own",
     "Two different media files share an id, so that nothing says which of them the clips mean. "
     "Scripts that join two project files cause this.",
     "Programs use one of the two for all clips, or drop clips: the picture in the timeline is "
     "wrong, mostly without a message.",
     "Give the second file another id, and write that id into the clip items that use it.",
     "Final Cut Pro XML Interchange Format, basics, The id Attribute"},
    {"references-file-undefined", RuleGroup::references, Severity::warning,
     "the file \"{id}\" is named here and defined nowhere; its name and its path should stand in "
     "the file once",
     "The clip says by an id which media file it uses, and no element of the file tells more about "
     "that id.",
     "The clip comes in without its media and has to be linked by hand.",
     "Export the sequence again, or write the definition with name, rate, duration and path at the "
     "first clip that uses it.",
     "Final Cut Pro XML Interchange Format, basics, The id Attribute; 5 of 103 real files"},
    {"references-clip-undefined", RuleGroup::references, Severity::warning,
     "the {kind} \"{id}\" is named here and defined nowhere; the whole {kind} should stand in the "
     "file once",
     "An empty element with an id stands for one that is written out elsewhere in the file, and "
     "there is none.",
     "Programs leave out what stands here: a nested sequence is empty, an angle has no picture.",
     "Export it together with what it uses, or take the element out.",
     "Final Cut Pro XML Interchange Format, basics, The id Attribute"},
    {"references-dangling-link", RuleGroup::references, Severity::warning,
     "{thing} is linked to {target}, which is not there; the link should name a clip item of the "
     "file or go",
     "Links hold the picture and the sound of a clip together. The other side of this one was "
     "deleted, or its id was changed.",
     "Programs drop the link: picture and sound no longer move together. Some refuse the clip.",
     "Take the link out, or write the id of the clip item that is meant.",
     "Final Cut Pro XML Interchange Format, topics, Linking; 4 of 103 real files"},
    {"references-link-numbers", RuleGroup::references, Severity::warning,
     "{thing} is linked to {target}, and the link says {media} track {track}, clip {clip}; it "
     "should say {rightmedia} track {righttrack}, clip {rightclip}",
     "A link names the other clip item twice: by its id, and by track and position. The two lead "
     "to "
     "different clips.",
     "Programs that go by the position link the wrong clips.",
     "Write the numbers of the clip item that the id names.",
     "Final Cut Pro XML Interchange Format, topics, Linking"},
    {"references-clip-item-repeated", RuleGroup::references, Severity::warning,
     "{thing} has the id \"{id}\", which is also that of {other}; each clip item should have an id "
     "of its own",
     "Links and effects find a clip item by its id. Where two have the same, the first one answers "
     "for both.",
     "Programs link picture and sound of different clips, or drop one of the two clip items.",
     "Give one of them another id, and correct the links that mean it.",
     "Final Cut Pro XML Interchange Format, basics, The id Attribute"},
    {"references-master-clip-missing", RuleGroup::references, Severity::info,
     "{thing} belongs to the master clip \"{id}\", which is not in the file; where clips should "
     "find their masters again, it should be exported with them",
     "Clips in a sequence name the clip of the browser that they come from. A file with a sequence "
     "alone does not hold it.",
     "Programs make a master clip of their own. This is normal.",
     "Nothing, unless the link to the master matters; then export the project with its clips.",
     "59 of 103 real files"},
};

}  // namespace vornic::rules

#endif
