#include <string>

#include <gtest/gtest.h>

#include "xml/reader/XMLReader.h"
#include "xml/text/XMLErrorCode.h"

// Document type declarations, as the reader takes them in both modes.

namespace vornic::test {

namespace {

constexpr int kMalformed = static_cast<int>(XMLErrorCode::malformedDocumentType);
constexpr int kEntity = static_cast<int>(XMLErrorCode::entityDeclaration);

// The code of the fault, which both modes agree on; 0 when the declaration is well-formed.
int codeOf(const std::string& declaration) {
    const std::string text = declaration + "<a/>";
    const XMLReading strict = readXML(text, XMLMode::strict);
    const XMLReading tolerant = readXML(text, XMLMode::tolerant);
    EXPECT_EQ(strict.fault.has_value(), tolerant.fault.has_value()) << text;
    EXPECT_TRUE(tolerant.edits.empty()) << text;
    return strict.fault ? strict.fault->code : 0;
}

int codeOfSubset(const std::string& declarations) {
    return codeOf("<!DOCTYPE a [" + declarations + "]>");
}

int codeOfContent(const std::string& content) {
    return codeOfSubset("<!ELEMENT b " + content + ">");
}

int codeOfAttribute(const std::string& definition) {
    return codeOfSubset("<!ATTLIST b " + definition + ">");
}

}  // namespace

TEST(XMLDoctypeReader, takesANameAlone) {
    EXPECT_EQ(codeOf("<!DOCTYPE xmeml>"), 0);
    EXPECT_EQ(codeOf("<!DOCTYPE\n\txmeml \r\n>"), 0);
    EXPECT_EQ(codeOf("<!DOCTYPE é:a-1.>"), 0);
}

TEST(XMLDoctypeReader, refusesADeclarationWithoutAName) {
    EXPECT_EQ(codeOf("<!DOCTYPE>"), kMalformed);
    EXPECT_EQ(codeOf("<!DOCTYPE >"), kMalformed);
    EXPECT_EQ(codeOf("<!DOCTYPEa>"), kMalformed);
    EXPECT_EQ(codeOf("<!DOCTYPE 1a>"), kMalformed);
}

TEST(XMLDoctypeReader, refusesADeclarationThatIsNeverClosed) {
    EXPECT_EQ(codeOf("<!DOCTYPE a"), kMalformed);
    EXPECT_EQ(codeOf("<!DOCTYPE a ["), kMalformed);
    EXPECT_EQ(codeOf("<!DOCTYPE a [ <!ELEMENT b ANY>"), kMalformed);
    EXPECT_EQ(codeOf("<!DOCTYPE a [] "), kMalformed);
    EXPECT_EQ(codeOf("<!DOCTYPE a SYSTEM 'b"), kMalformed);
    EXPECT_EQ(codeOf("<!DOCTYPE a [<!-- b ]>"), static_cast<int>(XMLErrorCode::unclosedComment));
}

TEST(XMLDoctypeReader, takesExternalIdentifiers) {
    EXPECT_EQ(codeOf("<!DOCTYPE a SYSTEM 'b\"é<>&%'>"), 0);
    EXPECT_EQ(codeOf("<!DOCTYPE a SYSTEM \"\" >"), 0);
    EXPECT_EQ(codeOf("<!DOCTYPE a PUBLIC \"-//B//C d'e (1)+,./:=?;!*#@$_%//EN\"\n'f'>"), 0);
    EXPECT_EQ(codeOf("<!DOCTYPE a SYSTEM 'b'[]>"), 0);
}

TEST(XMLDoctypeReader, refusesMalformedExternalIdentifiers) {
    EXPECT_EQ(codeOf("<!DOCTYPE a 'b'>"), kMalformed);
    EXPECT_EQ(codeOf("<!DOCTYPE a SYSTEM>"), kMalformed);
    EXPECT_EQ(codeOf("<!DOCTYPE a SYSTEM b>"), kMalformed);
    EXPECT_EQ(codeOf("<!DOCTYPE a SYSTEM'b'>"), kMalformed);
    EXPECT_EQ(codeOf("<!DOCTYPE a PUBLIC 'b'>"), kMalformed);
    EXPECT_EQ(codeOf("<!DOCTYPE a PUBLIC 'b''c'>"), kMalformed);
    EXPECT_EQ(codeOf("<!DOCTYPE a PUBLIC 'b{' 'c'>"), kMalformed);
    EXPECT_EQ(codeOf("<!DOCTYPE a PUBLIC 'b\t' 'c'>"), kMalformed);
    EXPECT_EQ(codeOf("<!DOCTYPE a PUBLIC 'é' 'c'>"), kMalformed);
    EXPECT_EQ(codeOf("<!DOCTYPE a system 'b'>"), kMalformed);
    EXPECT_EQ(codeOf("<!DOCTYPE a SYSTEM 'b' 'c'>"), kMalformed);
}

TEST(XMLDoctypeReader, takesAnEmptySubset) {
    EXPECT_EQ(codeOf("<!DOCTYPE a[]>"), 0);
    EXPECT_EQ(codeOf("<!DOCTYPE a [ \n ] >"), 0);
}

TEST(XMLDoctypeReader, refusesWhatFollowsTheSubset) {
    EXPECT_EQ(codeOf("<!DOCTYPE a [] b>"), kMalformed);
    EXPECT_EQ(codeOf("<!DOCTYPE a []]>"), kMalformed);
    EXPECT_EQ(codeOf("<!DOCTYPE a -- b -- []>"), kMalformed);
}

TEST(XMLDoctypeReader, takesCommentsAndInstructionsInTheSubset) {
    EXPECT_EQ(codeOfSubset("<!-- ]> ' \" --><?b ]> ' \" ?>"), 0);
}

TEST(XMLDoctypeReader, refusesAnXMLDeclarationInTheSubset) {
    EXPECT_EQ(codeOfSubset("<?xml version='1.0'?>"),
              static_cast<int>(XMLErrorCode::misplacedXMLDeclaration));
}

TEST(XMLDoctypeReader, refusesWhatIsNoDeclaration) {
    EXPECT_EQ(codeOfSubset("b"), kMalformed);
    EXPECT_EQ(codeOfSubset("<b/>"), kMalformed);
    EXPECT_EQ(codeOfSubset("<!element b ANY>"), kMalformed);
    EXPECT_EQ(codeOfSubset("<!ELEMENTb ANY>"), kMalformed);
    EXPECT_EQ(codeOfSubset("<!SHORTREF b>"), kMalformed);
    EXPECT_EQ(codeOfSubset("&amp;"), kMalformed);
    EXPECT_EQ(codeOfSubset("% "), kMalformed);
}

TEST(XMLDoctypeReader, refusesConditionalSections) {
    EXPECT_EQ(codeOfSubset("<![INCLUDE[<!ELEMENT b ANY>]]>"), kMalformed);
    EXPECT_EQ(codeOfSubset("<![IGNORE[]]>"), kMalformed);
    EXPECT_EQ(codeOfSubset("<![CDATA[]]>"), kMalformed);
}

TEST(XMLDoctypeReader, refusesEntityDeclarationsWithACodeOfTheirOwn) {
    EXPECT_EQ(codeOfSubset("<!ENTITY b 'c'>"), kEntity);
    EXPECT_EQ(codeOfSubset("<!ENTITY b SYSTEM 'file:///etc/passwd'>"), kEntity);
    EXPECT_EQ(codeOfSubset("<!ENTITY % b 'c'>"), kEntity);
    EXPECT_EQ(codeOfSubset("<!ELEMENT b ANY><!ENTITY"), kEntity);
}

TEST(XMLDoctypeReader, refusesParameterEntitiesWithTheSameCode) {
    EXPECT_EQ(codeOfSubset("%b;"), kEntity);
    EXPECT_EQ(codeOfContent("%b;"), kEntity);
    EXPECT_EQ(codeOfContent("(%b;)"), kEntity);
    EXPECT_EQ(codeOfContent("(c%b;)"), kEntity);
    EXPECT_EQ(codeOfAttribute("%b;"), kEntity);
    EXPECT_EQ(codeOfAttribute("c %b; 'd'"), kEntity);
    EXPECT_EQ(codeOfAttribute("c CDATA %b;"), kEntity);
    EXPECT_EQ(codeOfSubset("<!NOTATION b %c;>"), kEntity);
}

TEST(XMLDoctypeReader, reportsThatEntitiesAreNotSupported) {
    const XMLReading reading = readXML("<!DOCTYPE a [\n <!ENTITY b 'c'>]><a/>", XMLMode::tolerant);
    ASSERT_TRUE(reading.fault.has_value());
    EXPECT_EQ(reading.fault->description,
              "Line 2, column 2: entity declarations are not supported; the file is not read any "
              "further.");
}

TEST(XMLDoctypeReader, takesPercentSignsInLiterals) {
    EXPECT_EQ(codeOf("<!DOCTYPE a SYSTEM '%b;' [<!-- %b; --><?c %b;?><!ATTLIST a d CDATA '%b;'>]>"),
              0);
}

TEST(XMLDoctypeReader, takesContentModels) {
    for (const char* content :
         {"EMPTY", "ANY", "(#PCDATA)", "( #PCDATA )", "(#PCDATA)*", "(#PCDATA|b)*",
          "( #PCDATA | b\n| c )*", "(b)", "(b)?", "(b)*", "(b)+", "(b?)", "( b , c? , d* , e+ )",
          "(b|c)", "( b | (c,d) | (e|f)+ )*", "((((b))))", "((b,c)|(d))", "(b,(c|d),(e,f)?)"}) {
        EXPECT_EQ(codeOfContent(content), 0) << content;
    }
}

TEST(XMLDoctypeReader, refusesMalformedContentModels) {
    for (const char* content : {"",
                                "empty",
                                "CDATA",
                                "b",
                                "()",
                                "( )",
                                "(b",
                                "(b))",
                                "(b,)",
                                "(,b)",
                                "(b c)",
                                "(b|)",
                                "(b,c|d)",
                                "(b|c,d)",
                                "(b&c)",
                                "(b) ?",
                                "(b ?)",
                                "(b?"
                                "?)",
                                "(#PCDATA",
                                "(#PCDATA)+",
                                "(#PCDATA)?",
                                "(#PCDATA|b)",
                                "(#PCDATA|b)+",
                                "(#PCDATA,b)*",
                                "(#PCDATA|)*",
                                "(#PCDATA|b?)*",
                                "(#PCDATA|(b))*",
                                "((#PCDATA))",
                                "(b|#PCDATA)*",
                                "(#pcdata)",
                                "- - (b)",
                                "EMPTY (b)",
                                "(b) +(c)",
                                "(b,-c)"}) {
        EXPECT_EQ(codeOfContent(content), kMalformed) << content;
    }
}

TEST(XMLDoctypeReader, refusesElementDeclarationsForSeveralElements) {
    EXPECT_EQ(codeOfSubset("<!ELEMENT (b|c) ANY>"), kMalformed);
    EXPECT_EQ(codeOfSubset("<!ELEMENT b -- c -- ANY>"), kMalformed);
    EXPECT_EQ(codeOfSubset("<!ELEMENT b(c)>"), kMalformed);
}

TEST(XMLDoctypeReader, takesAttributeDefinitions) {
    for (const char* definition :
         {"", "c CDATA #IMPLIED", "c CDATA #REQUIRED", "c CDATA 'd'", "c CDATA #FIXED \"d\"",
          "c ID #IMPLIED d IDREF #IMPLIED e IDREFS #IMPLIED", "c ENTITY #IMPLIED",
          "c ENTITIES #IMPLIED", "c NMTOKEN 'd'\nd NMTOKENS 'e f'", "c (d|1| -e ) 'd'",
          "c ( d ) #REQUIRED", "c NOTATION (d | e) #IMPLIED", "c CDATA '&lt;&#10;&#xe9;>é\"'"}) {
        EXPECT_EQ(codeOfAttribute(definition), 0) << definition;
    }
}

TEST(XMLDoctypeReader, refusesMalformedAttributeDefinitions) {
    for (const char* definition : {"c",
                                   "c CDATA",
                                   "c cdata #IMPLIED",
                                   "c NUMBER #IMPLIED",
                                   "c NAME #IMPLIED",
                                   "c NUTOKEN '1'",
                                   "c CDATA implied",
                                   "c CDATA #CURRENT",
                                   "c CDATA #CONREF",
                                   "c CDATA #FIXED",
                                   "c CDATA #FIXED'd'",
                                   "c CDATA d",
                                   "c CDATA'd'",
                                   "c(d) 'd'",
                                   "c (d)'d'",
                                   "c () 'd'",
                                   "c (d,e) 'd'",
                                   "c (d e) 'd'",
                                   "c (d|) 'd'",
                                   "c (d 'd'",
                                   "c NOTATION(d) #IMPLIED",
                                   "c NOTATION (1) #IMPLIED",
                                   "c NOTATION d #IMPLIED",
                                   "c CDATA 'd'e CDATA 'f'",
                                   "c CDATA #IMPLIEDd CDATA 'f'",
                                   "c CDATA 'd' -- e --"}) {
        EXPECT_EQ(codeOfAttribute(definition), kMalformed) << definition;
    }
    EXPECT_EQ(codeOfSubset("<!ATTLIST b"), kMalformed);
    EXPECT_EQ(codeOfSubset("<!ATTLIST (b|c) d CDATA 'e'>"), kMalformed);
}

TEST(XMLDoctypeReader, refusesALessThanSignInADefaultValue) {
    EXPECT_EQ(codeOfAttribute("c CDATA 'd<e'"),
              static_cast<int>(XMLErrorCode::lessThanInAttributeValue));
}

TEST(XMLDoctypeReader, refusesADefaultValueThatNeverEnds) {
    const XMLReading reading = readXML("<!DOCTYPE a [<!ATTLIST a b CDATA 'c", XMLMode::strict);
    ASSERT_TRUE(reading.fault.has_value());
    EXPECT_EQ(reading.fault->code, static_cast<int>(XMLErrorCode::unclosedAttributeValue));
}

TEST(XMLDoctypeReader, takesAmpersandsInDefaultValuesAsInAttributes) {
    const std::string text = "<!DOCTYPE a [<!ATTLIST a b CDATA 'c & d &e;'>]><a/>";
    EXPECT_TRUE(readXML(text, XMLMode::strict).fault.has_value());
    const XMLReading reading = readXML(text, XMLMode::tolerant);
    EXPECT_FALSE(reading.fault.has_value());
    EXPECT_EQ(applyXMLEdits(text, reading.edits),
              "<!DOCTYPE a [<!ATTLIST a b CDATA 'c &amp; d &amp;e;'>]><a/>");
}

TEST(XMLDoctypeReader, takesNotations) {
    EXPECT_EQ(codeOfSubset("<!NOTATION b SYSTEM 'c'>"), 0);
    EXPECT_EQ(codeOfSubset("<!NOTATION b PUBLIC 'c' >"), 0);
    EXPECT_EQ(codeOfSubset("<!NOTATION b PUBLIC 'c'>"), 0);
    EXPECT_EQ(codeOfSubset("<!NOTATION b PUBLIC 'c' 'd'>"), 0);
}

TEST(XMLDoctypeReader, refusesMalformedNotations) {
    EXPECT_EQ(codeOfSubset("<!NOTATION b>"), kMalformed);
    EXPECT_EQ(codeOfSubset("<!NOTATION b 'c'>"), kMalformed);
    EXPECT_EQ(codeOfSubset("<!NOTATION b PUBLIC>"), kMalformed);
    EXPECT_EQ(codeOfSubset("<!NOTATION b PUBLIC 'c''d'>"), kMalformed);
    EXPECT_EQ(codeOfSubset("<!NOTATION b SYSTEM 'c' 'd'>"), kMalformed);
    EXPECT_EQ(codeOfSubset("<!NOTATION b SYSTEM 'c'"), kMalformed);
}

}  // namespace vornic::test
