#ifndef VORNIC_XML_TEXT_XML_ERROR_CODE_H
#define VORNIC_XML_TEXT_XML_ERROR_CODE_H

namespace vornic {

/// The codes of errors in `kXMLErrorDomain`.
enum class XMLErrorCode : int {
    /// Bytes that are not UTF-8 in a text that has to be.
    invalidUTF8 = 1,
    /// A character that XML does not allow.
    forbiddenCharacter,
    /// Text before or after the root element.
    textOutsideRoot,
    noRootElement,
    /// A second element after the root element.
    secondRootElement,
    /// The file ends while elements are open.
    unclosedElement,
    mismatchedEndTag,
    /// An end tag that belongs to no start tag.
    strayEndTag,
    malformedEndTag,
    malformedStartTag,
    /// A start tag without its `>`.
    unclosedTag,
    repeatedAttribute,
    /// An attribute value without its closing quote.
    unclosedAttributeValue,
    /// An attribute value without quotes around it.
    malformedAttribute,
    /// Two attributes without white space between them.
    missingSpace,
    lessThanInAttributeValue,
    /// A less-than sign that begins no markup.
    strayLessThan,
    /// An ampersand that begins no reference, or a reference that is not well-formed.
    malformedReference,
    /// A reference to an entity that is not one of the five predefined ones.
    undefinedEntity,
    /// `]]>` in text.
    cdataEndInText,
    unclosedComment,
    doubleHyphenInComment,
    unclosedCDATA,
    unclosedProcessingInstruction,
    malformedProcessingInstruction,
    /// An XML declaration that is not at the very beginning.
    misplacedXMLDeclaration,
    malformedXMLDeclaration,
    /// A document type declaration after the root element's start, or a second one.
    misplacedDocumentType,
    malformedDocumentType,
    /// Entity declarations and references to parameter entities are not supported.
    entityDeclaration,
    /// `<!` that begins nothing that is known at its place.
    unknownMarkup,
    /// So many faults that mending them is pointless.
    tooManyMends,
    /// An XPath expression that cannot be compiled or yields no nodes.
    malformedQuery,
    unknownEncoding,
    /// Bytes that do not belong to the file's encoding.
    undecodableBytes,
    attributeWithoutValue,
    /// A byte order mark between the beginning of the text and the root element.
    misplacedByteOrderMark,
    /// No code: one more than the last one.
    end,
};

}  // namespace vornic

#endif
