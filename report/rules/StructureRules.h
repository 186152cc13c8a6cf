#ifndef VORNIC_REPORT_RULES_STRUCTURE_RULES_H
#define VORNIC_REPORT_RULES_STRUCTURE_RULES_H

#include "report/Rule.h"

namespace vornic::rules {

namespace detail {

inline constexpr std::string_view kValidationFailed =
    "Final Cut Pro compares the whole file with the definition of the version that it declares and "
    "refuses it for one fault: \"DTD validation failed\", without a place. Other programs may read "
    "the file and leave out what they do not expect.";

/// A fault by the document type definition of FCPXML.
[[nodiscard]] constexpr Rule definitionFault(std::string_view id, std::string_view message,
                                             std::string_view meaning, std::string_view remedy,
                                             std::string_view constraint) {
    return {id,      RuleGroup::structure, Severity::error, message,
            meaning, kValidationFailed,    remedy,          constraint};
}

}  // namespace detail

/// What the definition of the declared version asks for. One rule for each kind of fault that
/// `fcpxml::Validator` tells.
inline constexpr Rule kStructureRules[] = {
    detail::definitionFault(
        "structure-unknown-element", "{thing} is no element of FCPXML; {instead} should stand here",
        "No version of FCPXML has an element of that name. A name that was misspelt, or one that a "
        "script made up, is the usual cause.",
        "Correct the name, or take the element out with all that is in it.",
        "FCPXML document type definitions 1.0 to 1.14; XML 1.0 (fifth edition), section 3, Element "
        "Valid"),
    detail::definitionFault(
        "structure-element-of-other-version",
        "{thing} belongs to FCPXML {versions}, not to {version}; the file should declare a "
        "version that has it, or do without it",
        "The element is sound, but the version that the file declares does not know it, or not at "
        "this place. Changing the version number by hand without converting what is in the file "
        "leads to this.",
        "Declare a version that has the element if the receiver reads it, or convert the file to "
        "the version that it declares.",
        "FCPXML document type definitions 1.0 to 1.14; XML 1.0 (fifth edition), section 3, Element "
        "Valid"),
    detail::definitionFault(
        "structure-misplaced-element",
        "{thing} has no place in <{parent}>; {instead} should stand here",
        "The element exists, but never inside the one that it stands in.",
        "Move it to where it belongs, or take it out.",
        "FCPXML document type definitions 1.0 to 1.14; XML 1.0 (fifth edition), section 3, Element "
        "Valid"),
    detail::definitionFault(
        "structure-element-order",
        "{thing} stands behind <{previous}> in <{parent}>; it should stand before it",
        "Parts of an element have an order, and this one comes too late.",
        "Move it in front of the parts that belong behind it.",
        "FCPXML document type definitions 1.0 to 1.14; XML 1.0 (fifth edition), section 3, Element "
        "Valid, Deterministic Content Models"),
    detail::definitionFault(
        "structure-surplus-element",
        "{thing} stands in <{parent}> once too often; it should go, or become one with the "
        "other",
        "The element may be there, but not as often as it is.", "Keep the one that is meant.",
        "FCPXML document type definitions 1.0 to 1.14; XML 1.0 (fifth edition), section 3, Element "
        "Valid, Repeated Element"),
    detail::definitionFault(
        "structure-missing-element", "{thing} lacks a part; {missing} should stand in it",
        "The element ends before all that it needs is there.",
        "Add what is missing, or take the element out.",
        "FCPXML document type definitions 1.0 to 1.14; XML 1.0 (fifth edition), section 3, Element "
        "Valid, Missing Element"),
    detail::definitionFault(
        "structure-misplaced-text",
        "text stands between the parts of {thing}; only elements should stand there",
        "The element may hold elements and white space between them, but no text and no CDATA "
        "section.",
        "Take the text out, or move it into the element that it is meant for.",
        "XML 1.0 (fifth edition), section 3.2.1"),
    detail::definitionFault(
        "structure-content-in-empty-element",
        "{thing} has content; it should be empty, even of white space and comments",
        "The element says all that it says by its attributes.",
        "Write it as <name/>, with nothing between a start tag and an end tag.",
        "XML 1.0 (fifth edition), section 3, Element Valid, EMPTY"),
    detail::definitionFault(
        "structure-unknown-attribute", "{thing} has no attribute {attribute}; it should {instead}",
        "No version of FCPXML has an attribute of that name at this element.",
        "Correct the name, or take the attribute out.",
        "FCPXML document type definitions 1.0 to 1.14; XML 1.0 (fifth edition), section 3.1, "
        "Attribute Value Type"),
    detail::definitionFault(
        "structure-attribute-of-other-version",
        "the attribute {attribute} of {thing} belongs to FCPXML {versions}, not to {version}; "
        "the file should declare a version that has it, or do without it",
        "The attribute is sound, but the version that the file declares does not know it.",
        "Declare a version that has the attribute if the receiver reads it, or convert the file to "
        "the version that it declares.",
        "FCPXML document type definitions 1.0 to 1.14; XML 1.0 (fifth edition), section 3.1, "
        "Attribute Value Type"),
    detail::definitionFault(
        "structure-missing-attribute",
        "{thing} lacks the attribute {attribute}; every <{element}> should have it",
        "The attribute may not be left out.", "Add the attribute with the value that is meant.",
        "FCPXML document type definitions 1.0 to 1.14; XML 1.0 (fifth edition), section 3.3.2, "
        "Required Attribute"),
    detail::definitionFault(
        "structure-value-not-listed",
        "{attribute} of {thing} is \"{value}\"; it should be {instead}",
        "The definition lists the values that the attribute may have, and this is none of them. "
        "Capital letters count.",
        "Write one of the values that are listed.",
        "FCPXML document type definitions 1.0 to 1.14; XML 1.0 (fifth edition), section 3.3.1, "
        "Enumeration"),
    detail::definitionFault(
        "structure-value-not-fixed",
        "{attribute} of <{element}> is \"{value}\"; it should always be \"{instead}\"",
        "The definition allows one value alone.", "Write that value, or leave the attribute out.",
        "FCPXML document type definitions 1.0 to 1.14; XML 1.0 (fifth edition), section 3.3.2, "
        "Fixed Attribute Default"),
    detail::definitionFault(
        "structure-malformed-id",
        "\"{value}\" cannot be the {attribute} of {thing}; an id should begin with a letter or "
        "an underscore and hold letters, digits, hyphens and full stops alone",
        "Ids and references to them are names in the sense of XML: no blank, no digit in front.",
        "Give it another id, and write that in all references to it.",
        "XML 1.0 (fifth edition), section 3.3.1, ID, IDREF"),
    detail::definitionFault(
        "structure-repeated-id",
        "the id \"{value}\" of {thing} stands at another element, too; each id should be "
        "in "
        "the file once",
        "Elements are told apart by their ids. Files that a script joined often have one twice.",
        "Give one of the two another id, and correct the references that mean it.",
        "XML 1.0 (fifth edition), section 3.3.1, ID"),
    detail::definitionFault(
        "structure-dangling-reference",
        "{attribute} of {thing} is \"{value}\", and nothing has that id; it should name "
        "something that is in the file",
        "The element says by an id what it uses, and what it names is not there: it was taken out, "
        "or its id was changed.",
        "Add what is missing among the resources, correct the reference, or take the element out.",
        "XML 1.0 (fifth edition), section 3.3.1, IDREF"),
    detail::definitionFault(
        "structure-document-type",
        "the document type is {value}, the root element {element}; both should have the same name",
        "The document type declaration at the top of the file names another root element.",
        "Write <!DOCTYPE fcpxml>.", "XML 1.0 (fifth edition), section 2.8, Root Element Type"),
};

}  // namespace vornic::rules

#endif
