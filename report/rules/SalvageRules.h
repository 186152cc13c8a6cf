#ifndef VORNIC_REPORT_RULES_SALVAGE_RULES_H
#define VORNIC_REPORT_RULES_SALVAGE_RULES_H

#include "report/Rule.h"

namespace vornic::rules {

namespace detail {

inline constexpr std::string_view kNotWellFormed =
    "Every program refuses the whole file, since it is no XML.";
inline constexpr std::string_view kCompare =
    "Look at the place in the copy and correct it where the guess is wrong.";
inline constexpr std::string_view kSalvageSource =
    "measured on real files with seeded faults, docs/salvage.md";

/// Something that was guessed, and where nothing was lost.
[[nodiscard]] constexpr Rule guess(std::string_view id, std::string_view message,
                                   std::string_view meaning) {
    return {id,      RuleGroup::salvage, Severity::warning, message,
            meaning, kNotWellFormed,     kCompare,          kSalvageSource};
}

/// Something that was lost, with the file or with the guess.
[[nodiscard]] constexpr Rule loss(std::string_view id, std::string_view message,
                                  std::string_view meaning, std::string_view remedy) {
    return {id,      RuleGroup::salvage, Severity::error, message,
            meaning, kNotWellFormed,     remedy,          kSalvageSource};
}

}  // namespace detail

/// What a salvage guesses, and what is lost.
inline constexpr Rule kSalvageRules[] = {
    detail::guess("salvage-end-tag-lost", "<{element}> was never closed; </{element}> was put here",
                  "An end tag is missing. Where it stood is told by what the element may hold, by "
                  "the indentation, and by the rest of the file."),
    detail::guess("salvage-end-tag-stray", "</{element}> closed nothing; it was taken out",
                  "An end tag stands twice, or belongs to nothing."),
    detail::guess("salvage-end-tag-misspelt",
                  "</{was}> closed nothing; it was taken for </{element}>",
                  "The name of an end tag differs from that of its start tag."),
    detail::guess("salvage-start-tag-lost",
                  "</{element}> closed an element that was never opened; <{element}> was put here",
                  "A start tag is missing. Where it stood is told by what the element may hold, by "
                  "the indentation, and by the rest of the file."),
    detail::guess("salvage-start-tag-twice", "<{element}> stood twice; one was taken out",
                  "A start tag stands twice, one right behind the other, and is closed once."),
    detail::guess("salvage-start-tag-misspelt",
                  "<{was}> was closed by </{element}>; it was taken for <{element}>",
                  "The name of a start tag differs from that of its end tag and is no name that "
                  "the format knows."),
    detail::loss("salvage-attributes-lost",
                 "<{element}> needs {attributes}, which went with its start tag; they are missing "
                 "in the copy",
                 "The start tag was put back without its attributes, which nobody can guess.",
                 "Write them into the copy, or take the element out."),
    detail::guess("salvage-tag-not-closed", "the > of a tag was missing; it was put here",
                  "A tag without its end runs into what follows."),
    detail::guess("salvage-attribute-twice",
                  "the attribute {attribute} stood twice with the same value; one was taken out",
                  "XML allows an attribute once in an element."),
    detail::loss("salvage-attribute-conflict",
                 "the attribute {attribute} stood twice; {kept} was kept and {dropped} taken out",
                 "XML allows an attribute once in an element. The value that fits the attribute's "
                 "type was kept, else the first.",
                 "Correct the value in the copy where the other one was right."),
    detail::loss("salvage-characters-in-tag",
                 "{text} inside a tag was neither name nor value; it was taken out",
                 "Characters that belong to no attribute.",
                 "Look at the attributes of the element in the copy."),
    detail::guess("salvage-value-not-closed", "a quote of a value was missing; it was put here",
                  "A value without its quote runs into what follows."),
    detail::guess("salvage-comment-not-closed",
                  "a comment was never closed; its end was put here, at the end of its line",
                  "A comment without its end hides the rest of the file."),
    detail::guess("salvage-cdata-not-closed",
                  "a CDATA section was never closed; its end was put here",
                  "A CDATA section without its end hides the rest of the file."),
    detail::guess("salvage-instruction-not-closed",
                  "a declaration or processing instruction was never closed; its end was put here",
                  "What begins with <? ends with ?>."),
    detail::guess("salvage-document-type-not-closed",
                  "the document type declaration was never closed; its > was put here",
                  "What begins with <!DOCTYPE ends with >."),
    detail::loss("salvage-cut-tag", "{text} was cut off; it was taken out",
                 "The file ends inside of a tag, of which the rest is unknown.",
                 "Look for another copy of the file, or a backup, if what is missing is needed."),
    detail::loss("salvage-cut-off",
                 "the file ends while {count} elements are open, <{element}> the innermost; they "
                 "were closed at the end of the copy",
                 "The file was cut off: what stood behind this place is lost.",
                 "Look for another copy of the file, or a backup, if what is missing is needed."),
    detail::guess("salvage-less-than", "a < that began nothing was written as text",
                  "In text a less-than sign is written &lt;."),
    detail::guess("salvage-text-outside-root",
                  "text or elements stood outside of the root element; they became a comment",
                  "A document has one root element and no text beside it."),
    detail::guess("salvage-declaration-misplaced",
                  "a declaration stood inside the document; it was taken out",
                  "The XML declaration stands at the very beginning, the document type in front of "
                  "the root element, and each of them once."),
    detail::guess("salvage-second-root", "a second project begins here; it is a copy of its own",
                  "A document has one root element. Two files in one come from a careless script."),
    detail::loss("salvage-characters-dropped",
                 "characters that XML forbids stood here ({count}); they were taken out",
                 "Blocks of such characters stand where a volume lost what was written to it.",
                 "Look at the place in the copy: what stood there is lost."),
    detail::loss("salvage-bytes-dropped",
                 "bytes that are no text stood here ({count}); they were taken out",
                 "The bytes belong to no character in the encoding of the file.",
                 "Look at the place in the copy: what stood there is lost."),
    detail::guess("salvage-bytes-read-as-windows",
                  "bytes that are no UTF-8 stood here ({count}); they were read as Windows-1252",
                  "A single accented letter that an old program wrote."),
    detail::guess("salvage-encoding-unknown",
                  "the encoding {encoding} is none that is known; the file was read as UTF-8",
                  "The XML declaration names no encoding of text, or its name is damaged."),
    detail::loss("salvage-reference-lost", "{what}",
                 "What the reference leads to is not in the copy. It was kept, so that it finds "
                 "its target once that is put back.",
                 "Put the target back, or take out what refers to it."),
    detail::guess("salvage-part-added",
                  "<{parent}> needs <{element}>, which was cut off; {what} was put here",
                  "The element that the file was cut off in lacks what its readers need and what "
                  "the rest of the file tells."),
};

}  // namespace vornic::rules

#endif
