#ifndef VORNIC_REPORT_RULES_FCPXML_REFERENCE_RULES_H
#define VORNIC_REPORT_RULES_FCPXML_REFERENCE_RULES_H

#include "report/Rule.h"

namespace vornic::rules {

/// What the ids of an FCPXML file lead to, beyond what its definition sees.
inline constexpr Rule kFCPXMLReferenceRules[] = {
    {"references-dangling", RuleGroup::references, Severity::error,
     "{attribute} of {clip} is \"{id}\", and nothing has that id; it should name something that is "
     "in the file",
     "The element says by an id what it uses, and what it names is not there. The rule speaks "
     "where no definition of the file's version is known; elsewhere structure-dangling-reference "
     "says the same.",
     "The file is refused, or the clip is left out without a word.",
     "Add what is missing among the resources, correct the reference, or take the element out.",
     "XML 1.0 (fifth edition), section 3.3.1, IDREF; FCPXML document type definitions 1.0 to 1.14"},
    {"references-wrong-kind", RuleGroup::references, Severity::error,
     "{attribute} of {clip} is \"{id}\", which is {found}; it should name {instead}",
     "A clip names its asset, a compound clip its media, a title or a filter its effect, and so "
     "on. The id exists, but it is that of another kind of thing.",
     "A definition cannot see this, so that the file passes validation; the clip is then missing, "
     "or the import ends with an error.",
     "Write the id of the thing that is meant. Scripts that number their resources anew often miss "
     "a reference.",
     "The descriptions of ref, format, tracking, dataLocator and projectRef in the FCPXML document "
     "type definitions"},
    {"references-wrong-media", RuleGroup::references, Severity::error,
     "{clip} names the media \"{id}\", which holds a <{found}>; it should hold a <{instead}>",
     "An mc-clip shows a multicam, a ref-clip a compound clip, which is a sequence. The media that "
     "this clip names is the other one.",
     "The clip is missing after the import, or the import ends with an error.",
     "Write the id of the media that is meant, or make the clip a ref-clip or an mc-clip as the "
     "media asks.",
     "The descriptions of mc-clip, ref-clip and media in the FCPXML document type definitions"},
    {"references-unknown-angle", RuleGroup::references, Severity::error,
     "{clip} shows the angle \"{angle}\", and its multicam has no such angle; it should name one "
     "of the multicam's",
     "The angleID of an mc-source is that of an mc-angle in the multicam that the clip refers to. "
     "A definition cannot see it, since angle ids are no ids in the sense of XML.",
     "The clip shows black or nothing, or the import ends with an error.",
     "Write the angleID of the angle that is meant. The multicam among the resources lists them.",
     "The descriptions of mc-source and mc-angle in the FCPXML document type definitions"},
    {"references-repeated-angle", RuleGroup::references, Severity::error,
     "the angle id \"{angle}\" stands twice in the multicam of {multicam}; each angle should have "
     "an id of its own",
     "Clips say by the angleID which angle they show. With two of the same id nobody knows which "
     "one is meant.",
     "One of the two angles is shown for both.",
     "Give one of the two angles another angleID, and correct the clips that mean it.",
     "The description of mc-angle in the FCPXML document type definitions"},
    {"references-uid-clash", RuleGroup::references, Severity::error,
     "{thing} has the uid of {other}; two different media should have different uids",
     "A uid stands for one media file, or for one compound or multicam clip. Two different ones "
     "share it here.",
     "Programs that know media by their uid take both for the same, and clips show the wrong one.",
     "Take the attribute uid out of one of the two: it gets a new one at the import.",
     "The description of uid in the FCPXML document type definitions; found once in 70 real files"},
};

}  // namespace vornic::rules

#endif
