#ifndef VORNIC_REPORT_RULES_XML_RULES_H
#define VORNIC_REPORT_RULES_XML_RULES_H

#include "report/Rule.h"

namespace vornic::rules {

namespace detail {

inline constexpr std::string_view kRefused =
    "Every program refuses the whole file, mostly without saying where the fault is.";

/// A fault of markup: nothing reads such a file.
[[nodiscard]] constexpr Rule markupFault(XMLErrorCode code, std::string_view id,
                                         std::string_view message, std::string_view meaning,
                                         std::string_view remedy, std::string_view source) {
    return {id, RuleGroup::xml, Severity::error, message, meaning, kRefused, remedy, source, code};
}

}  // namespace detail

/// The file as XML. One rule for each code of `XMLErrorCode` that tells of a file; those that a
/// reading can mend come first.
inline constexpr Rule kXMLRules[] = {
    detail::markupFault(
        XMLErrorCode::malformedReference, "xml-stray-ampersand",
        "an ampersand begins no character reference; it should be written as &amp;",
        "An ampersand begins a reference such as &amp; or &#233;. Alone, as in \"Ben & Sons\", it "
        "makes the file unreadable. Scripts that put names into a file without escaping them are "
        "the usual cause.",
        "Write &amp; in its place.", "XML 1.0 (fifth edition), section 4.1"),
    detail::markupFault(
        XMLErrorCode::undefinedEntity, "xml-undefined-entity",
        "&{name}; is no entity that the file defines; the character itself, or its number as in "
        "&#233;, should stand there",
        "Only &amp; &lt; &gt; &quot; and &apos; are known in every file. Names such as &nbsp; or "
        "&eacute; belong to web pages.",
        "Write the character itself, its number, or &amp; for an ampersand that is meant as one.",
        "XML 1.0 (fifth edition), section 4.1, Entity Declared"),
    detail::markupFault(XMLErrorCode::strayLessThan, "xml-stray-less-than",
                        "a less-than sign begins no tag; it should be written as &lt;",
                        "A less-than sign begins a tag. In a name or a note it has to be escaped.",
                        "Write &lt; in its place.", "XML 1.0 (fifth edition), section 2.4"),
    detail::markupFault(
        XMLErrorCode::lessThanInAttributeValue, "xml-less-than-in-value",
        "a less-than sign stands in an attribute's value; it should be written as &lt;",
        "Inside the quotes of an attribute a less-than sign has to be escaped, too.",
        "Write &lt; in its place.",
        "XML 1.0 (fifth edition), section 3.1, No < in Attribute Values"),
    detail::markupFault(XMLErrorCode::cdataEndInText, "xml-cdata-end-in-text",
                        "]]> stands in text; it should be written as ]]&gt;",
                        "]]> ends a CDATA section and may stand nowhere else in text.",
                        "Write ]]&gt; in its place.", "XML 1.0 (fifth edition), section 2.4"),
    detail::markupFault(
        XMLErrorCode::malformedAttribute, "xml-unquoted-value",
        "an attribute's value has no quotes; it should stand between two quotation marks",
        "Values of attributes stand in quotes: start=\"0s\", not start=0s.",
        "Put the value in quotes.", "XML 1.0 (fifth edition), section 3.1"),
    detail::markupFault(
        XMLErrorCode::attributeWithoutValue, "xml-attribute-without-value",
        "the attribute {name} has no value; one in quotes should follow it",
        "An attribute is a name, an equals sign and a value in quotes. Web pages may leave the "
        "value out, project files may not.",
        "Give it a value, or take it out.", "XML 1.0 (fifth edition), section 3.1"),
    detail::markupFault(
        XMLErrorCode::missingSpace, "xml-missing-space",
        "two attributes stand without white space between them; a blank should part them",
        "Attributes of a tag are parted by white space.", "Put a blank between them.",
        "XML 1.0 (fifth edition), section 3.1"),
    detail::markupFault(XMLErrorCode::doubleHyphenInComment, "xml-double-hyphen-in-comment",
                        "two hyphens stand in a row inside a comment; they should be set apart",
                        "Two hyphens end a comment, so that they may not stand inside one.",
                        "Put a blank between the hyphens.", "XML 1.0 (fifth edition), section 2.5"),
    detail::markupFault(
        XMLErrorCode::misplacedXMLDeclaration, "xml-misplaced-declaration",
        "white space, a byte order mark or other text stands before the XML declaration; the "
        "declaration should be the very first thing in the file",
        "<?xml version=\"1.0\"?> may stand only at the very beginning. A blank line in front of it "
        "is enough for the file to be refused.",
        "Remove what stands before it.", "XML 1.0 (fifth edition), section 2.8"),
    detail::markupFault(XMLErrorCode::misplacedByteOrderMark, "xml-misplaced-byte-order-mark",
                        "a byte order mark stands before the root element; it should be the very "
                        "first thing in the "
                        "file or not be there",
                        "A byte order mark (U+FEFF) says how the file is written and cannot be "
                        "seen. Where files were "
                        "joined, that of the second one stands in the middle.",
                        "Remove it.", "XML 1.0 (fifth edition), section 4.3.3"),
    detail::markupFault(
        XMLErrorCode::malformedXMLDeclaration, "xml-malformed-declaration",
        "the XML declaration is malformed; it should be <?xml version=\"1.0\" "
        "encoding=\"UTF-8\"?> with the file's encoding",
        "The first line names the XML version, the encoding and standalone, in this order and in "
        "quotes.",
        "Replace it by <?xml version=\"1.0\" encoding=\"UTF-8\"?>, with the encoding that the file "
        "has.",
        "XML 1.0 (fifth edition), section 2.8"),
    detail::markupFault(
        XMLErrorCode::forbiddenCharacter, "xml-forbidden-character",
        "the character {code} stands here, which XML does not allow; it should not be there",
        "XML has no way to hold control characters, and a few others. They come into files through "
        "clip names that were copied from elsewhere.",
        "Delete the character.", "XML 1.0 (fifth edition), section 2.2"),
    detail::markupFault(
        XMLErrorCode::invalidUTF8, "xml-invalid-utf8",
        "the bytes here are not UTF-8 text; the file should be saved as what it says it is",
        "A file without another declaration is UTF-8. Bytes of another encoding, such as Latin-1, "
        "make it unreadable, and so does a file that was damaged.",
        "Save the file as UTF-8, or declare the encoding that it has.",
        "XML 1.0 (fifth edition), section 4.3.3"),
    detail::markupFault(
        XMLErrorCode::textOutsideRoot, "xml-text-outside-root",
        "there is text outside the root element; everything should stand inside of it",
        "All of a file is inside one element. Text before or after it is often the rest of a mail, "
        "of a web page or of another file.",
        "Remove the text.", "XML 1.0 (fifth edition), section 2.1"),
    detail::markupFault(XMLErrorCode::noRootElement, "xml-no-root-element",
                        "the file ends without a root element; it should hold a project",
                        "The file is empty or holds nothing but comments.",
                        "Export the project again.", "XML 1.0 (fifth edition), section 2.1"),
    detail::markupFault(XMLErrorCode::secondRootElement, "xml-second-root-element",
                        "a second root element, <{name}>, begins here; a file should have only one",
                        "Two files were put together into one, or an end tag stands too early.",
                        "Cut the file in two, or move the end tag of the first element to the end.",
                        "XML 1.0 (fifth edition), section 2.1"),
    detail::markupFault(
        XMLErrorCode::unclosedElement, "xml-unclosed-element",
        "the file {ends} before {open} closed; {closing} should stand at its end",
        "The end of the file is missing (a copy or a download that broke off), or an end tag was "
        "lost.",
        "Fetch the file again. If only end tags are missing, write them.",
        "XML 1.0 (fifth edition), section 3"),
    detail::markupFault(
        XMLErrorCode::mismatchedEndTag, "xml-mismatched-end-tag",
        "the end tag </{name}> does not match the start tag <{other}> of line {line}; </{other}> "
        "should close it first",
        "Tags were crossed, misspelt, or one was lost.",
        "Write the end tag that is missing, or correct the one that is misspelt.",
        "XML 1.0 (fifth edition), section 3, Element Type Match"),
    detail::markupFault(
        XMLErrorCode::strayEndTag, "xml-stray-end-tag",
        "the end tag </{name}> belongs to no start tag; it should go, or its start tag should "
        "stand before it",
        "An end tag stands twice, or its start tag was lost.",
        "Remove the end tag, or write the start tag.", "XML 1.0 (fifth edition), section 3"),
    detail::markupFault(
        XMLErrorCode::malformedEndTag, "xml-malformed-end-tag",
        "the end tag </{name}> is malformed; its name and > should follow </ at once",
        "An end tag is </, the name and >. Nothing else stands in it.", "Correct the end tag.",
        "XML 1.0 (fifth edition), section 3.1"),
    detail::markupFault(
        XMLErrorCode::malformedStartTag, "xml-malformed-start-tag",
        "the tag <{name}> is malformed here; attributes, each with a value in quotes, should stand "
        "in it and nothing else",
        "Something stands in a tag that is no attribute, or it is not clear where a value ends.",
        "Look at the quotes of the tag.", "XML 1.0 (fifth edition), section 3.1"),
    detail::markupFault(XMLErrorCode::unclosedTag, "xml-unclosed-tag",
                        "the tag <{name}> is never closed; > should end it",
                        "The > of a tag was lost.", "Write the >.",
                        "XML 1.0 (fifth edition), section 3.1"),
    detail::markupFault(
        XMLErrorCode::repeatedAttribute, "xml-repeated-attribute",
        "the attribute {name} stands twice in the same tag; it should stand there once",
        "A tag can have only one attribute of a name.", "Remove the one that is wrong.",
        "XML 1.0 (fifth edition), section 3.1, Unique Att Spec"),
    detail::markupFault(
        XMLErrorCode::unclosedAttributeValue, "xml-unclosed-value",
        "the attribute value that begins here is never closed, or it is not clear where; a "
        "quotation mark should end it",
        "A quotation mark was lost, so that the rest of the file would belong to the value.",
        "Write the quotation mark.", "XML 1.0 (fifth edition), section 3.1"),
    detail::markupFault(XMLErrorCode::unclosedComment, "xml-unclosed-comment",
                        "the comment that begins here is never closed; --> should end it",
                        "A comment is between <!-- and -->.", "Write the -->.",
                        "XML 1.0 (fifth edition), section 2.5"),
    detail::markupFault(XMLErrorCode::unclosedCDATA, "xml-unclosed-cdata",
                        "the CDATA section that begins here is never closed; ]]> should end it",
                        "A CDATA section is between <![CDATA[ and ]]>.", "Write the ]]>.",
                        "XML 1.0 (fifth edition), section 2.7"),
    detail::markupFault(
        XMLErrorCode::unclosedProcessingInstruction, "xml-unclosed-instruction",
        "the processing instruction that begins here is never closed; ?> should end it",
        "A processing instruction is between <? and ?>.", "Write the ?>.",
        "XML 1.0 (fifth edition), section 2.6"),
    detail::markupFault(
        XMLErrorCode::malformedProcessingInstruction, "xml-malformed-instruction",
        "the processing instruction is malformed; a name should follow <? at once, and white space "
        "the name",
        "A processing instruction is <?, a name, white space and data, and ?>.",
        "Correct it, or remove it.", "XML 1.0 (fifth edition), section 2.6"),
    detail::markupFault(
        XMLErrorCode::misplacedDocumentType, "xml-misplaced-document-type",
        "a document type declaration stands in a wrong place; there should be one only, before the "
        "root element",
        "<!DOCTYPE …> stands between the XML declaration and the root element.",
        "Move it there, or remove the second one.", "XML 1.0 (fifth edition), section 2.8"),
    detail::markupFault(
        XMLErrorCode::malformedDocumentType, "xml-malformed-document-type",
        "the document type declaration is malformed here; <!DOCTYPE fcpxml> or <!DOCTYPE xmeml> "
        "should be enough",
        "What stands in the document type declaration is not what XML knows there.",
        "Write <!DOCTYPE fcpxml> or <!DOCTYPE xmeml>.", "XML 1.0 (fifth edition), section 2.8"),
    detail::markupFault(
        XMLErrorCode::entityDeclaration, "xml-entity-declaration",
        "the file declares entities, which are not read; the declarations should go and their text "
        "stand where they are used",
        "Entity declarations can make a small file huge or read other files. No exporter of "
        "project "
        "files writes them.",
        "Put the text in the place of each entity and remove the declarations.",
        "XML 1.0 (fifth edition), section 4.2; a deliberate limit of this program"),
    detail::markupFault(
        XMLErrorCode::unknownMarkup, "xml-unknown-markup",
        "the markup that begins here is not known at this place; after <! a comment or a CDATA "
        "section should follow",
        "<! begins a comment, a CDATA section or the document type declaration.",
        "Correct it, or write &lt; if a less-than sign is meant.",
        "XML 1.0 (fifth edition), section 3.1"),
    detail::markupFault(
        XMLErrorCode::tooManyMends, "xml-too-many-faults",
        "there are so many faults up to here that the file can't be read on; it should be exported "
        "again",
        "The file is no damaged project but something else.", "Export the project again.",
        "a deliberate limit of this program"),
    detail::markupFault(XMLErrorCode::unknownEncoding, "xml-unknown-encoding",
                        "the file's encoding, {name}, is not supported; it should be UTF-8",
                        "The encoding that the first line names, or that the first bytes show, is "
                        "none that project "
                        "files are written in.",
                        "Save the file as UTF-8.", "XML 1.0 (fifth edition), section 4.3.3"),
    detail::markupFault(
        XMLErrorCode::undecodableBytes, "xml-undecodable-bytes",
        "the bytes here do not belong to the file's encoding, {name}; the file should be saved as "
        "what it says it is",
        "The file's text is in another encoding than its first line says, or it was damaged.",
        "Save the file as UTF-8, or declare the encoding that it has.",
        "XML 1.0 (fifth edition), section 4.3.3"),
};

/// The file as a whole, which the reader has no fault for.
inline constexpr Rule kXMLFileRules[] = {
    {"xml-declared-encoding", RuleGroup::xml, Severity::error,
     "the first line names the encoding {declared}, but the file is in {real}; it should name "
     "{right}",
     "The first line says in which encoding the characters of the file are written, and its bytes "
     "show another one. An editor or a script that changed the encoding and not the line is the "
     "usual cause.",
     "Most programs refuse a file that says UTF-16 and is not; where they believe another wrong "
     "name, letters with accents come out as two wrong ones.",
     "Write the encoding that the file has into its first line.",
     "XML 1.0 (fifth edition), section 4.3.3, Character Encoding in Entities"},
    {"xml-other-root", RuleGroup::xml, Severity::error,
     "the root element is <{name}>; it should be {right}",
     "The name of the first element tells what a file is: <fcpxml> or <xmeml>, in small letters "
     "and "
     "without a prefix.",
     "Editing programs do not take the file for a project.",
     "Correct the name of the root element and of its end tag, or look for the file that was "
     "meant.",
     "XML 1.0 (fifth edition), section 2.8, Root Element Type"},
};

}  // namespace vornic::rules

#endif
