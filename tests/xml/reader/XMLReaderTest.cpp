#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "xml/reader/XMLReader.h"
#include "xml/text/XMLErrorCode.h"

namespace vornic::test {

namespace {

using Lines = std::vector<std::string>;

// What the strict mode makes of a text: "" when it is well-formed.
std::string faultOf(std::string_view text) {
    const XMLReading reading = readXML(text, XMLMode::strict);
    EXPECT_TRUE(reading.mends.empty());
    EXPECT_TRUE(reading.edits.empty());
    return reading.fault ? reading.fault->description : "";
}

struct Place {
    std::size_t line;
    std::size_t column;
};

// Refused in both modes, with the same code and place.
void expectRefusal(std::string_view text, XMLErrorCode code, Place place) {
    for (const XMLMode mode : {XMLMode::strict, XMLMode::tolerant}) {
        const XMLReading reading = readXML(text, mode);
        ASSERT_TRUE(reading.fault.has_value()) << text;
        EXPECT_EQ(reading.fault->domain, kXMLErrorDomain);
        EXPECT_EQ(reading.fault->code, static_cast<int>(code)) << reading.fault->description;
        EXPECT_EQ(reading.fault->line, place.line) << reading.fault->description;
        EXPECT_EQ(reading.fault->column, place.column) << reading.fault->description;
    }
}

class Recorder : public XMLReaderEvents {
  public:
    void startElement(std::string_view name) override { add("start ", name); }
    void attribute(std::string_view name, std::string_view rawValue) override {
        add("attribute ", std::string(name) + "=" + std::string(rawValue));
    }
    void endElement(std::string_view name, bool selfClosed) override {
        add(selfClosed ? "self-closed " : "end ", name);
    }
    void text(std::string_view rawText) override { add("text ", rawText); }
    void cdata(std::string_view content) override { add("cdata ", content); }
    void comment(std::string_view content) override { add("comment ", content); }
    void processingInstruction(std::string_view target, std::string_view data) override {
        add("instruction ", std::string(target) + "|" + std::string(data));
    }
    void documentType(std::string_view name, std::string_view rawDeclaration) override {
        add("type ", std::string(name) + "|" + std::string(rawDeclaration));
    }
    Lines lines;

  private:
    void add(const char* kind, std::string_view what) { lines.push_back(kind + std::string(what)); }
};

Lines eventsOf(std::string_view text, XMLMode mode = XMLMode::strict) {
    Recorder recorder;
    (void)readXML(text, mode, &recorder);
    return recorder.lines;
}

}  // namespace

TEST(XMLReader, takesTheSmallestDocuments) {
    EXPECT_EQ(faultOf("<a/>"), "");
    EXPECT_EQ(faultOf("<a></a>"), "");
    EXPECT_EQ(faultOf("<a ></a >"), "");
    EXPECT_EQ(faultOf("<a\n/>"), "");
}

TEST(XMLReader, takesADocumentWithEverythingInIt) {
    EXPECT_EQ(faultOf("<?xml version='1.0' encoding=\"utf-8\" standalone = 'yes' ?>\r\n"
                      "<!-- c --><?p i?><!DOCTYPE xmeml SYSTEM 'x.dtd' [ <!ELEMENT a ANY> ]>\n"
                      "<xmeml version=\"5\" a:b='\"&lt;&#60;&#x3C;'> t &amp;&quot;&apos;&gt; ]] > "
                      "<![CDATA[ <&]] > ]]]]><é·/><!----><?p?></xmeml>\n<!-- end --><?q  r ?>\n"),
              "");
}

TEST(XMLReader, reportsEverythingInItsOrder) {
    EXPECT_EQ(eventsOf("<!DOCTYPE a SYSTEM 'b' ><?p  q ?><a b='&lt;' c=\"\">x&amp;<!--y-->"
                       "<![CDATA[z]]>\n<d/><e></e></a>"),
              (Lines{"type a|a SYSTEM 'b' ", "instruction p|q ", "start a", "attribute b=&lt;",
                     "attribute c=", "text x&amp;", "comment y", "cdata z", "text \n", "start d",
                     "self-closed d", "start e", "end e", "end a"}));
}

TEST(XMLReader, reportsWhatStandsBeforeAFault) {
    EXPECT_EQ(eventsOf("<a><b>x</c></a>"), (Lines{"start a", "start b", "text x"}));
}

TEST(XMLReader, reportsTheTextAsItStandsWhenItIsMended) {
    EXPECT_EQ(eventsOf("<a b=c>x & y < z</a>", XMLMode::tolerant),
              (Lines{"start a", "attribute b=c", "text x & y < z", "end a"}));
}

TEST(XMLReader, reportsNothingAboutDroppedCharacters) {
    EXPECT_EQ(eventsOf("<a\x01 b\x02='\x03'>\x04</a>", XMLMode::tolerant),
              (Lines{"start a", "attribute b=", "end a"}));
}

TEST(XMLReader, refusesAnEmptyText) {
    expectRefusal("", XMLErrorCode::noRootElement, {1, 1});
}

TEST(XMLReader, refusesATextOfWhiteSpaceAndComments) {
    expectRefusal(" \n<!-- c -->\n", XMLErrorCode::noRootElement, {3, 1});
}

TEST(XMLReader, refusesTextBeforeTheRootElement) {
    expectRefusal("\n x<a/>", XMLErrorCode::textOutsideRoot, {2, 2});
}

TEST(XMLReader, refusesALessThanSignThatBeginsNoRootElement) {
    expectRefusal("< a/>", XMLErrorCode::textOutsideRoot, {1, 1});
}

TEST(XMLReader, refusesTextAfterTheRootElement) {
    expectRefusal("<a/>x", XMLErrorCode::textOutsideRoot, {1, 5});
}

TEST(XMLReader, refusesReferencesOutsideTheRootElement) {
    expectRefusal("<a/>&#32;", XMLErrorCode::textOutsideRoot, {1, 5});
}

TEST(XMLReader, refusesCDATAOutsideTheRootElement) {
    expectRefusal("<a/><![CDATA[]]>", XMLErrorCode::unknownMarkup, {1, 5});
}

TEST(XMLReader, refusesASecondRootElement) {
    expectRefusal("<a/>\n<b/>", XMLErrorCode::secondRootElement, {2, 1});
}

TEST(XMLReader, refusesAnEndTagWithoutAStartTag) {
    expectRefusal("</a>", XMLErrorCode::strayEndTag, {1, 1});
    expectRefusal("<a></a></a>", XMLErrorCode::strayEndTag, {1, 8});
}

TEST(XMLReader, refusesCrossedEndTags) {
    expectRefusal("<a>\n<b></a></b>", XMLErrorCode::mismatchedEndTag, {2, 4});
}

TEST(XMLReader, namesBothTagsAndTheLineOfTheStartTag) {
    EXPECT_EQ(faultOf("<a>\n<clipitem>\n  </clip></a>"),
              "Line 3, column 3: the end tag </clip> does not match the start tag <clipitem> of "
              "line 2.");
}

TEST(XMLReader, refusesAnEndTagWhoseNameGoesOn) {
    expectRefusal("<name></names>", XMLErrorCode::mismatchedEndTag, {1, 7});
    expectRefusal("<names></name>", XMLErrorCode::mismatchedEndTag, {1, 8});
}

TEST(XMLReader, refusesAMissingEndTag) {
    expectRefusal("<a>\n<b></b>\n", XMLErrorCode::unclosedElement, {3, 1});
    EXPECT_EQ(faultOf("<a>\n<b>"),
              "Line 2, column 4: the file ends before the element <b> of line 2 is closed.");
}

TEST(XMLReader, refusesAnEndTagWithoutAName) {
    expectRefusal("<a></ a>", XMLErrorCode::malformedEndTag, {1, 4});
    expectRefusal("<a></></a>", XMLErrorCode::malformedEndTag, {1, 4});
}

TEST(XMLReader, refusesAnEndTagWithAttributes) {
    expectRefusal("<a></a b='c'>", XMLErrorCode::malformedEndTag, {1, 4});
}

TEST(XMLReader, refusesTagsThatAreNeverClosed) {
    expectRefusal("<a", XMLErrorCode::unclosedTag, {1, 1});
    expectRefusal("<a ", XMLErrorCode::unclosedTag, {1, 1});
    expectRefusal("<a b='c'", XMLErrorCode::unclosedTag, {1, 1});
    expectRefusal("<a>\n <b <c/></a>", XMLErrorCode::unclosedTag, {2, 2});
    expectRefusal("<a></a", XMLErrorCode::unclosedTag, {1, 4});
    expectRefusal("<a></a  ", XMLErrorCode::unclosedTag, {1, 4});
}

TEST(XMLReader, refusesSlashesInsideATag) {
    expectRefusal("<a / >", XMLErrorCode::malformedStartTag, {1, 4});
    expectRefusal("<a/b/>", XMLErrorCode::malformedStartTag, {1, 3});
}

TEST(XMLReader, refusesNamesThatBeginWithNoLetter) {
    EXPECT_EQ(faultOf("<a><-b/></a>"),
              "Line 1, column 4: a less-than sign begins no tag here; it should be written as "
              "&lt;.");
    expectRefusal("<a -b='c'/>", XMLErrorCode::malformedStartTag, {1, 4});
    expectRefusal("<a·/>x", XMLErrorCode::textOutsideRoot, {1, 6});
    expectRefusal("<·a/>", XMLErrorCode::textOutsideRoot, {1, 1});
}

TEST(XMLReader, takesNamesOfTheFifthEdition) {
    EXPECT_EQ(faultOf("<\xF0\x90\x80\x80:\xE2\x81\xA0/>"),
              "Line 1, column 4: the tag <\xF0\x90\x80\x80:> is malformed here.");
    EXPECT_EQ(faultOf("<\xF0\x90\x80\x80_é̀‿9.-·/>"), "");
}

TEST(XMLReader, refusesARepeatedAttribute) {
    expectRefusal("<a b='1' c='2'\n  b='3'/>", XMLErrorCode::repeatedAttribute, {2, 3});
    EXPECT_EQ(faultOf("<a b='1' b='3'/>"),
              "Line 1, column 10: the attribute b appears twice in the same tag.");
}

TEST(XMLReader, takesTheSameAttributeInDifferentTags) {
    EXPECT_EQ(faultOf("<a b=''><a b=''/></a>"), "");
}

TEST(XMLReader, findsARepeatedAttributeAmongMany) {
    for (const int count : {15, 16, 17, 18, 40}) {
        std::string tag = "<a";
        for (int i = 0; i < count; ++i) {
            tag.append(" b").append(std::to_string(i)).append("=''");
        }
        EXPECT_EQ(faultOf(tag + "/>"), "") << count;
        const std::size_t column = tag.size() + 2;
        expectRefusal(tag + " b3=''/>", XMLErrorCode::repeatedAttribute, {1, column});
        expectRefusal(tag + " c='' b" + std::to_string(count - 1) + "=''/>",
                      XMLErrorCode::repeatedAttribute, {1, column + 5});
        // The names of one tag are forgotten in the next.
        EXPECT_EQ(faultOf("<r>" + tag + "/>" + tag + "/></r>"), "") << count;
    }
}

TEST(XMLReader, refusesAnAttributeValueThatIsNeverClosed) {
    expectRefusal("<a>\n<b c=\"d>", XMLErrorCode::unclosedAttributeValue, {2, 6});
    expectRefusal("<a b='", XMLErrorCode::unclosedAttributeValue, {1, 6});
}

TEST(XMLReader, refusesCommentsAndSectionsThatAreNeverClosed) {
    expectRefusal("<a><!-- b </a>", XMLErrorCode::unclosedComment, {1, 4});
    expectRefusal("<a><!-", XMLErrorCode::unknownMarkup, {1, 4});
    expectRefusal("<a><![CDATA[ b ]]</a>", XMLErrorCode::unclosedCDATA, {1, 4});
    expectRefusal("<a><?p b ></a>", XMLErrorCode::unclosedProcessingInstruction, {1, 4});
    expectRefusal("<!--", XMLErrorCode::unclosedComment, {1, 1});
}

TEST(XMLReader, refusesACommentThatHoldsTheBeginningOfAnother) {
    const XMLReading reading = readXML("<a>\n<!-- b <c/> <!-- d --></a>", XMLMode::tolerant);
    ASSERT_TRUE(reading.fault.has_value());
    EXPECT_EQ(reading.fault->code, static_cast<int>(XMLErrorCode::unclosedComment));
    EXPECT_EQ(reading.fault->line, 2U);
    EXPECT_EQ(reading.fault->column, 1U);
}

TEST(XMLReader, refusesMarkupThatItDoesNotKnow) {
    expectRefusal("<a><!ELEMENT b ANY></a>", XMLErrorCode::unknownMarkup, {1, 4});
    expectRefusal("<a><![cdata[b]]></a>", XMLErrorCode::unknownMarkup, {1, 4});
    expectRefusal("<!>", XMLErrorCode::unknownMarkup, {1, 1});
}

TEST(XMLReader, refusesAnInstructionWithoutAName) {
    expectRefusal("<a><? b?></a>", XMLErrorCode::malformedProcessingInstruction, {1, 4});
    expectRefusal("<a><?\?></a>", XMLErrorCode::malformedProcessingInstruction, {1, 4});
}

TEST(XMLReader, refusesAnInstructionWhoseNameRunsIntoItsData) {
    expectRefusal("<a><?b+c?></a>", XMLErrorCode::malformedProcessingInstruction, {1, 7});
}

TEST(XMLReader, takesQuestionMarksInsideAnInstruction) {
    EXPECT_EQ(faultOf("<a><?b ? > ?\?></a>"), "");
}

TEST(XMLReader, refusesAnXMLDeclarationInsideTheText) {
    expectRefusal("<a><?xml version='1.0'?></a>", XMLErrorCode::misplacedXMLDeclaration, {1, 4});
    expectRefusal("<!-- c --><?xml version='1.0'?><a/>", XMLErrorCode::misplacedXMLDeclaration,
                  {1, 11});
    expectRefusal("<a/><?XmL version='1.0'?>", XMLErrorCode::misplacedXMLDeclaration, {1, 5});
}

TEST(XMLReader, takesInstructionsWhoseNamesOnlyBeginLikeADeclaration) {
    EXPECT_EQ(faultOf("<?xml-stylesheet href='a'?><?xmlx?><a/>"), "");
}

TEST(XMLReader, refusesADocumentTypeDeclarationInTheWrongPlace) {
    expectRefusal("<!DOCTYPE a><!DOCTYPE a><a/>", XMLErrorCode::misplacedDocumentType, {1, 13});
    expectRefusal("<a/><!DOCTYPE a>", XMLErrorCode::misplacedDocumentType, {1, 5});
    expectRefusal("<a><!DOCTYPE a></a>", XMLErrorCode::misplacedDocumentType, {1, 4});
}

TEST(XMLReader, refusesBytesThatAreNotUTF8) {
    expectRefusal("<a>é\xFF</a>", XMLErrorCode::invalidUTF8, {1, 5});
    expectRefusal("<a>\xE9</a>", XMLErrorCode::invalidUTF8, {1, 4});
    expectRefusal("<a>\xC0\x80</a>", XMLErrorCode::invalidUTF8, {1, 4});
    expectRefusal("<a>\xED\xA0\x80</a>", XMLErrorCode::invalidUTF8, {1, 4});
    expectRefusal("<a>\xF4\x90\x80\x80</a>", XMLErrorCode::invalidUTF8, {1, 4});
    expectRefusal("<a b='\xFF'/>", XMLErrorCode::invalidUTF8, {1, 7});
    expectRefusal("<a><!-- \xFF --></a>", XMLErrorCode::invalidUTF8, {1, 9});
    expectRefusal("<a><![CDATA[\xFF]]></a>", XMLErrorCode::invalidUTF8, {1, 13});
    expectRefusal("<a><?b \xFF?></a>", XMLErrorCode::invalidUTF8, {1, 8});
    expectRefusal("<a \xFF/>", XMLErrorCode::invalidUTF8, {1, 4});
    expectRefusal("<a/>\xFF", XMLErrorCode::invalidUTF8, {1, 5});
    expectRefusal("<!DOCTYPE a SYSTEM '\xFF'><a/>", XMLErrorCode::invalidUTF8, {1, 21});
}

TEST(XMLReader, refusesBytesThatAreNotUTF8WhenItDropsCharactersToo) {
    const XMLReading reading = readXML("<a>\x01\xE2\x01\x82\xAC</a>", XMLMode::tolerant);
    ASSERT_TRUE(reading.fault.has_value());
    EXPECT_EQ(reading.fault->code, static_cast<int>(XMLErrorCode::invalidUTF8));
    EXPECT_EQ(reading.fault->column, 5U);
}

TEST(XMLReader, refusesForbiddenCharactersInStrictMode) {
    EXPECT_EQ(faultOf("<a>\n\x01</a>"),
              "Line 2, column 1: there is a character here that XML does not allow.");
    EXPECT_NE(faultOf(std::string_view("<a>\0</a>", 8)), "");
    EXPECT_NE(faultOf("<a>\xEF\xBF\xBE</a>"), "");
    EXPECT_NE(faultOf("<a>\xEF\xBF\xBF</a>"), "");
    EXPECT_NE(faultOf("<a b='\x0B'/>"), "");
    EXPECT_NE(faultOf("<a\f/>"), "");
    EXPECT_NE(faultOf("<a><!--\x1F--></a>"), "");
    EXPECT_NE(faultOf("<a><![CDATA[\x02]]></a>"), "");
    EXPECT_NE(faultOf("<a><?b \x03?></a>"), "");
}

TEST(XMLReader, takesCharactersAtTheBordersOfWhatIsAllowed) {
    EXPECT_EQ(faultOf("<a>\t\r\n \x7F\xC2\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBD\xF0\x90\x80\x80"
                      "\xF0\x9F\xBF\xBE\xF4\x8F\xBF\xBF</a>"),
              "");
}

TEST(XMLReader, takesAByteOrderMarkInsideTextAsACharacter) {
    EXPECT_EQ(faultOf("<a>\xEF\xBB\xBF</a>"), "");
}

TEST(XMLReader, refusesStrayAmpersandsInStrictMode) {
    EXPECT_EQ(faultOf("<a>b & c</a>"),
              "Line 1, column 6: an ampersand begins no entity here; it should be written as "
              "&amp;.");
    EXPECT_NE(faultOf("<a b='&'/>"), "");
    EXPECT_NE(faultOf("<a>&amp</a>"), "");
    EXPECT_NE(faultOf("<a>&AMP;</a>"), "");
    EXPECT_NE(faultOf("<a>&"), "");
}

TEST(XMLReader, namesAnUndefinedEntityInStrictMode) {
    const XMLReading reading = readXML("<a>&nbsp;</a>", XMLMode::strict);
    ASSERT_TRUE(reading.fault.has_value());
    EXPECT_EQ(reading.fault->code, static_cast<int>(XMLErrorCode::undefinedEntity));
    EXPECT_EQ(reading.fault->description, "Line 1, column 4: the entity &nbsp; is not defined.");
}

TEST(XMLReader, takesCharacterReferencesToAllowedCharacters) {
    EXPECT_EQ(faultOf("<a b='&#9;&#xA;&#13;'>&#32;&#xd7ff;&#xE000;&#65533;&#x10000;&#1114111;"
                      "&#00000000000000000000000065;&#x0000000000000000000000041;</a>"),
              "");
}

TEST(XMLReader, refusesCharacterReferencesToOtherCharactersInStrictMode) {
    for (const char* reference :
         {"&#0;", "&#1;", "&#x1F;", "&#xD800;", "&#xDFFF;", "&#xFFFE;", "&#65535;", "&#x110000;",
          "&#99999999999999999999999999;", "&#;", "&#x;", "&#X41;", "&#6a;", "&#x4g;", "&#65",
          "&# 65;", "&#-65;"}) {
        EXPECT_NE(faultOf("<a>" + std::string(reference) + "</a>"), "") << reference;
        EXPECT_NE(faultOf("<a b='" + std::string(reference) + "'/>"), "") << reference;
    }
}

TEST(XMLReader, refusesTheEndOfACDATASectionInTextInStrictMode) {
    EXPECT_EQ(faultOf("<a>b]]>c</a>"),
              "Line 1, column 5: ]]> stands in text; it should be written as ]]&gt;.");
    EXPECT_NE(faultOf("<a>]]]>c</a>"), "");
    EXPECT_EQ(faultOf("<a b=']]>'>]] ]>&#93;]></a>"), "");
}

TEST(XMLReader, refusesHyphensInCommentsInStrictMode) {
    EXPECT_NE(faultOf("<a><!-- b -- c --></a>"), "");
    EXPECT_NE(faultOf("<a><!-- b ---></a>"), "");
    EXPECT_NE(faultOf("<a><!-----></a>"), "");
    EXPECT_EQ(faultOf("<a><!-- - b- -c->- --></a>"), "");
    EXPECT_EQ(faultOf("<a><!--->--></a>"), "");
}

TEST(XMLReader, refusesFaultyAttributesInStrictMode) {
    EXPECT_EQ(faultOf("<a b='1'c='2'/>"),
              "Line 1, column 9: white space is missing between two attributes.");
    EXPECT_EQ(faultOf("<a b/>"), "Line 1, column 4: an attribute has no value.");
    EXPECT_EQ(faultOf("<a b=/>"), "Line 1, column 4: an attribute has no value.");
    EXPECT_EQ(faultOf("<a b=c/>"),
              "Line 1, column 6: quotes are missing around an attribute value.");
    EXPECT_EQ(faultOf("<a b='<'/>"),
              "Line 1, column 7: a less-than sign stands in an attribute value; it should be "
              "written as &lt;.");
}

TEST(XMLReader, countsLineEndsOfEveryKind) {
    expectRefusal("<a>\r\n\n\r\r\n  </b>", XMLErrorCode::mismatchedEndTag, {5, 3});
}

TEST(XMLReader, countsColumnsInCharacters) {
    expectRefusal("<a>é\xF0\x9F\x98\x80€</b>", XMLErrorCode::mismatchedEndTag, {1, 7});
}

TEST(XMLReader, cutsLongNamesInMessages) {
    std::string name;
    for (int i = 0; i < 100; ++i) {
        name += "é";
    }
    const std::string fault = faultOf("<" + name + ">");
    EXPECT_LT(fault.size(), 220U);
    EXPECT_NE(fault.find("é…>"), std::string::npos) << fault;
}

TEST(XMLReader, saysWhetherWhiteSpaceHasAMeaning) {
    const auto isMixed = [](std::string_view text) {
        const XMLReading reading = readXML(text, XMLMode::strict);
        EXPECT_FALSE(reading.fault.has_value()) << text;
        return reading.hasMixedContent;
    };
    EXPECT_FALSE(isMixed("<a> <b>text</b> <c> </c> <!-- d --> <?e?> </a>"));
    EXPECT_FALSE(isMixed("<a><![CDATA[only]]></a>"));
    EXPECT_FALSE(isMixed("<a>&#32;</a>"));
    EXPECT_TRUE(isMixed("<a>text<b/></a>"));
    EXPECT_TRUE(isMixed("<a><b/>text</a>"));
    EXPECT_TRUE(isMixed("<a> <!-- b -->text</a>"));
    EXPECT_TRUE(isMixed("<a>text<?b?></a>"));
    EXPECT_TRUE(isMixed("<a> <![CDATA[b]]></a>"));
    EXPECT_TRUE(isMixed("<a><![CDATA[b]]> </a>"));
    EXPECT_TRUE(isMixed("<a><![CDATA[]]><b/></a>"));
    EXPECT_TRUE(isMixed("<a>&#32;<b/></a>"));
    EXPECT_TRUE(isMixed("<a xml:space='preserve'> <b/> </a>"));
    EXPECT_FALSE(isMixed("<a xml:space='default'> <b/> </a>"));
}

TEST(XMLReader, reportsWhichElementsAreEmptyPairs) {
    const XMLReading reading =
        readXML("<a><b/><c></c><d> </d><e f='g'></e ><b></b></a>", XMLMode::strict);
    EXPECT_EQ(reading.emptyPairs, (std::vector<std::size_t>{8, 23, 37}));
}

TEST(XMLReader, reportsEmptyPairsByTheirPlaceInTheMendedText) {
    const std::string_view text = "<a>& \x01<b c=d></b>&<e></e></a>";
    const XMLReading reading = readXML(text, XMLMode::tolerant);
    const std::string mended = applyXMLEdits(text, reading.edits);
    EXPECT_EQ(mended, "<a>&amp; <b c=\"d\"></b>&amp;<e></e></a>");
    EXPECT_EQ(reading.emptyPairs,
              (std::vector<std::size_t>{mended.find("b c"), mended.find("e></e>")}));
}

TEST(XMLReader, reportsWhiteSpaceThatIsWrittenAsReferences) {
    const XMLReading reading =
        readXML("<a>&#32;<b/> &#x9;\n<c/>&#10;x<d/>&#160;<e/>&amp;</a>", XMLMode::strict);
    EXPECT_EQ(reading.referencedBlanks, (std::vector<std::size_t>{3, 12}));
}

}  // namespace vornic::test
