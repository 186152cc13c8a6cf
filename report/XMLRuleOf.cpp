#include "report/XMLRuleOf.h"

#include "report/RuleTable.h"

namespace vornic {

// No default: a code without a rule is a warning of the compiler.
std::optional<RuleId> xmlRuleOf(XMLErrorCode code) {
    switch (code) {
        case XMLErrorCode::invalidUTF8:
            return "xml-invalid-utf8"_rule;
        case XMLErrorCode::forbiddenCharacter:
            return "xml-forbidden-character"_rule;
        case XMLErrorCode::textOutsideRoot:
            return "xml-text-outside-root"_rule;
        case XMLErrorCode::noRootElement:
            return "xml-no-root-element"_rule;
        case XMLErrorCode::secondRootElement:
            return "xml-second-root-element"_rule;
        case XMLErrorCode::unclosedElement:
            return "xml-unclosed-element"_rule;
        case XMLErrorCode::mismatchedEndTag:
            return "xml-mismatched-end-tag"_rule;
        case XMLErrorCode::strayEndTag:
            return "xml-stray-end-tag"_rule;
        case XMLErrorCode::malformedEndTag:
            return "xml-malformed-end-tag"_rule;
        case XMLErrorCode::malformedStartTag:
            return "xml-malformed-start-tag"_rule;
        case XMLErrorCode::unclosedTag:
            return "xml-unclosed-tag"_rule;
        case XMLErrorCode::repeatedAttribute:
            return "xml-repeated-attribute"_rule;
        case XMLErrorCode::unclosedAttributeValue:
            return "xml-unclosed-value"_rule;
        case XMLErrorCode::malformedAttribute:
            return "xml-unquoted-value"_rule;
        case XMLErrorCode::attributeWithoutValue:
            return "xml-attribute-without-value"_rule;
        case XMLErrorCode::missingSpace:
            return "xml-missing-space"_rule;
        case XMLErrorCode::lessThanInAttributeValue:
            return "xml-less-than-in-value"_rule;
        case XMLErrorCode::strayLessThan:
            return "xml-stray-less-than"_rule;
        case XMLErrorCode::malformedReference:
            return "xml-stray-ampersand"_rule;
        case XMLErrorCode::undefinedEntity:
            return "xml-undefined-entity"_rule;
        case XMLErrorCode::cdataEndInText:
            return "xml-cdata-end-in-text"_rule;
        case XMLErrorCode::unclosedComment:
            return "xml-unclosed-comment"_rule;
        case XMLErrorCode::doubleHyphenInComment:
            return "xml-double-hyphen-in-comment"_rule;
        case XMLErrorCode::unclosedCDATA:
            return "xml-unclosed-cdata"_rule;
        case XMLErrorCode::unclosedProcessingInstruction:
            return "xml-unclosed-instruction"_rule;
        case XMLErrorCode::malformedProcessingInstruction:
            return "xml-malformed-instruction"_rule;
        case XMLErrorCode::misplacedXMLDeclaration:
            return "xml-misplaced-declaration"_rule;
        case XMLErrorCode::misplacedByteOrderMark:
            return "xml-misplaced-byte-order-mark"_rule;
        case XMLErrorCode::malformedXMLDeclaration:
            return "xml-malformed-declaration"_rule;
        case XMLErrorCode::misplacedDocumentType:
            return "xml-misplaced-document-type"_rule;
        case XMLErrorCode::malformedDocumentType:
            return "xml-malformed-document-type"_rule;
        case XMLErrorCode::entityDeclaration:
            return "xml-entity-declaration"_rule;
        case XMLErrorCode::unknownMarkup:
            return "xml-unknown-markup"_rule;
        case XMLErrorCode::tooManyMends:
            return "xml-too-many-faults"_rule;
        case XMLErrorCode::unknownEncoding:
            return "xml-unknown-encoding"_rule;
        case XMLErrorCode::undecodableBytes:
            return "xml-undecodable-bytes"_rule;
        case XMLErrorCode::malformedQuery:
            break;
    }
    return std::nullopt;
}

}  // namespace vornic
