#ifndef VORNIC_REPORT_RULES_CHARACTER_RULES_H
#define VORNIC_REPORT_RULES_CHARACTER_RULES_H

#include "report/Rule.h"

namespace vornic::rules {

/// Characters that programs take out or stumble over, in files of either format.
inline constexpr Rule kCharacterRules[] = {
    {"characters-half-pair", RuleGroup::characters, Severity::error,
     "{reference} stands for no character but for half of one; it should {right}",
     "Emoji and other characters beyond the first 65536 have a number of their own. Some programs "
     "write each of the two halves that they are kept in as a number, which XML does not allow.",
     "Every program refuses the whole file, mostly without saying where the fault is.",
     "Write the character itself, or its one number. A half that stands alone is lost: take it "
     "out.",
     "XML 1.0 (fifth edition), section 4.1, Legal Character"},
    {"characters-forbidden-reference", RuleGroup::characters, Severity::error,
     "{name} stands for a character that XML does not allow; it should go, or stand for another",
     "What may not stand in a file, such as most control characters, may not be written by its "
     "number, either.",
     "Every program refuses the whole file, mostly without saying where the fault is.",
     "Take it out. With &amp; in place of its ampersand the file shows it letter by letter.",
     "XML 1.0 (fifth edition), section 4.1, Legal Character"},
    {"characters-control", RuleGroup::characters, Severity::warning,
     "the control character {code} stands here; it should {right}",
     "The character cannot be seen. Text that was in Windows-1252 and taken for something else has "
     "such characters instead of quotation marks and dashes.",
     "Programs show nothing, a box or a question mark in its place; some refuse the file.",
     "Write the character that is meant, or take it out.",
     "XML 1.0 (fifth edition), section 2.2: discouraged characters"},
    {"characters-removed-by-repair", RuleGroup::characters, Severity::info,
     "the character {character} ({code}) would be taken out by vornic-repair; where it should "
     "stay, "
     "the file should be mended by vornic-check alone",
     "The character is legal. The filter of a repair takes out everything from U+E000 on: the "
     "full-width punctuation of Chinese and Japanese titles, emoji, private characters.",
     "Editing programs of today read it. Old ones show a box.",
     "Nothing, unless the file goes through a repair.",
     "the character filter of vornic-repair; 6 of 271 real files"},
    {"characters-long-reference", RuleGroup::characters, Severity::info,
     "vornic-repair would show {reference} letter by letter; where the file may be repaired, the "
     "character itself should stand here",
     "The reference is legal. The filter of a repair knows only references of up to six characters "
     "and takes the ampersand of a longer one for text.",
     "Editing programs read the character.",
     "Nothing, unless the file goes through a repair; then write the character itself.",
     "the character filter of vornic-repair"},
};

}  // namespace vornic::rules

#endif
