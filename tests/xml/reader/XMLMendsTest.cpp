#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/xml/reader/XMLSideBySide.h"
#include "xml/reader/XMLReader.h"
#include "xml/text/XMLErrorCode.h"
#include "xml/tree/XMLDocument.h"

// What the tolerant mode mends, one fault at a time, and where it refuses to.

namespace vornic::test {

namespace {

using namespace std::string_view_literals;

constexpr const char* kAmpersand = "an ampersand that begins no entity was read as text";
constexpr const char* kLessThan = "a less-than sign that begins no tag was read as text";
constexpr const char* kLessThanInValue = "a less-than sign in an attribute value was read as text";
constexpr const char* kCDATAEnd = "]]> outside a CDATA section was read as text";
constexpr const char* kQuotes = "an attribute value without quotes was read as one in quotes";
constexpr const char* kEmptyValue = "an attribute without a value was read as an empty one";
constexpr const char* kSpace = "two attributes without a blank between them were read as two";
constexpr const char* kHyphens =
    "two hyphens in a row inside a comment were read with a blank between them";
constexpr const char* kBeginning =
    "white space or a byte order mark before the XML declaration was passed over";
constexpr const char* kMark = "a byte order mark before the root element was passed over";
constexpr const char* kDeclaration = "a malformed XML declaration was read as a right one";

struct Mend {
    std::size_t line;
    std::size_t column;
    std::string what;
    bool operator==(const Mend&) const = default;
};

std::ostream& operator<<(std::ostream& stream, const Mend& mend) {
    return stream << mend.line << ":" << mend.column << " " << mend.what;
}

// The text is faulty in strict mode, mended in tolerant mode with exactly these mends, and then
// sound.
void expectMends(std::string_view text, std::string_view mended, const std::vector<Mend>& mends,
                 std::size_t droppedCharacters = 0) {
    EXPECT_TRUE(readXML(text, XMLMode::strict).fault.has_value()) << text;
    const XMLReading reading = readXML(text, XMLMode::tolerant);
    ASSERT_FALSE(reading.fault.has_value()) << reading.fault->description;
    std::vector<Mend> found;
    for (const XMLMend& mend : reading.mends) {
        found.push_back({mend.line, mend.column, std::string(mend.what)});
    }
    EXPECT_EQ(found, mends) << text;
    EXPECT_EQ(applyXMLEdits(text, reading.edits), mended);
    EXPECT_EQ(reading.droppedCharacters, droppedCharacters);
    const XMLReading again = readXML(mended, XMLMode::strict);
    EXPECT_FALSE(again.fault.has_value()) << again.fault->description;
    EXPECT_EQ(differenceOfReaderAndTree(std::string(mended)), "");
}

void expectRefusal(std::string_view text, XMLErrorCode code, std::size_t column) {
    const XMLReading reading = readXML(text, XMLMode::tolerant);
    ASSERT_TRUE(reading.fault.has_value()) << text;
    EXPECT_EQ(reading.fault->code, static_cast<int>(code)) << reading.fault->description;
    EXPECT_EQ(reading.fault->column, column) << reading.fault->description;
}

}  // namespace

TEST(XMLMends, readsAStrayAmpersandInTextAsText) {
    expectMends("<a>\n  b & c</a>", "<a>\n  b &amp; c</a>", {{2, 5, kAmpersand}});
}

TEST(XMLMends, readsAStrayAmpersandInAnAttributeValueAsText) {
    expectMends("<a b='c&d'/>", "<a b='c&amp;d'/>", {{1, 8, kAmpersand}});
}

TEST(XMLMends, readsAReferenceToAnUnknownEntityAsText) {
    expectMends("<a>&nbsp;&eacute;</a>", "<a>&amp;nbsp;&amp;eacute;</a>",
                {{1, 4, kAmpersand}, {1, 10, kAmpersand}});
}

TEST(XMLMends, readsAReferenceWithoutASemicolonAsText) {
    expectMends("<a>&amp &lt</a>", "<a>&amp;amp &amp;lt</a>",
                {{1, 4, kAmpersand}, {1, 9, kAmpersand}});
}

TEST(XMLMends, readsReferencesToForbiddenCharactersAsText) {
    expectMends(
        "<a b='&#xFFFE;'>&#1;&#0;&#xD800;</a>",
        "<a b='&amp;#xFFFE;'>&amp;#1;&amp;#0;&amp;#xD800;</a>",
        {{1, 7, kAmpersand}, {1, 17, kAmpersand}, {1, 21, kAmpersand}, {1, 25, kAmpersand}});
}

TEST(XMLMends, readsMalformedCharacterReferencesAsText) {
    expectMends("<a>&#;&#x;&#X41;&#6x;</a>", "<a>&amp;#;&amp;#x;&amp;#X41;&amp;#6x;</a>",
                {{1, 4, kAmpersand}, {1, 7, kAmpersand}, {1, 11, kAmpersand}, {1, 17, kAmpersand}});
}

TEST(XMLMends, readsALessThanSignThatBeginsNoMarkupAsText) {
    expectMends("<a>1 < 2 <3 <<b/>é<\n</a>", "<a>1 &lt; 2 &lt;3 &lt;<b/>é&lt;\n</a>",
                {{1, 6, kLessThan}, {1, 10, kLessThan}, {1, 13, kLessThan}, {1, 19, kLessThan}});
}

TEST(XMLMends, readsALessThanSignInAnAttributeValueAsText) {
    expectMends("<a b='1 <2' c=\"<x>\"/>", "<a b='1 &lt;2' c=\"&lt;x>\"/>",
                {{1, 9, kLessThanInValue}, {1, 16, kLessThanInValue}});
}

TEST(XMLMends, refusesALessThanSignInAValueThatGoesOverALineEnd) {
    expectRefusal("<a b='c>\n<d e='f'/></a>", XMLErrorCode::unclosedAttributeValue, 6);
}

TEST(XMLMends, refusesAnAttributeRightAfterAValueWithALessThanSign) {
    expectRefusal("<r><a b='c><d e='f'/></r>", XMLErrorCode::malformedStartTag, 18);
}

TEST(XMLMends, readsTheEndOfACDATASectionAsText) {
    expectMends("<a>]]>b]]]></a>", "<a>]]&gt;b]]]&gt;</a>", {{1, 4, kCDATAEnd}, {1, 9, kCDATAEnd}});
}

TEST(XMLMends, putsQuotesAroundAValue) {
    expectMends("<a b=c d=5/>", "<a b=\"c\" d=\"5\"/>", {{1, 6, kQuotes}, {1, 10, kQuotes}});
    expectMends("<a b = c></a>", "<a b = \"c\"></a>", {{1, 8, kQuotes}});
}

TEST(XMLMends, takesAnAddressWithoutQuotesWhole) {
    expectMends("<a b=http://c/d?e=f&g=h/>", "<a b=\"http://c/d?e=f&amp;g=h\"/>",
                {{1, 6, kQuotes}, {1, 20, kAmpersand}});
}

TEST(XMLMends, refusesAValueWithoutQuotesWhoseEndIsNotClear) {
    expectRefusal("<a b=c\" d=\"e\"/>", XMLErrorCode::malformedAttribute, 6);
    expectRefusal("<a b=it's/>", XMLErrorCode::malformedAttribute, 6);
    expectRefusal("<a b=c<d/>", XMLErrorCode::malformedAttribute, 6);
    expectRefusal("<a b= c=d/>", XMLErrorCode::malformedAttribute, 7);
    expectRefusal("<a b=c", XMLErrorCode::unclosedTag, 1);
}

TEST(XMLMends, givesAnAttributeWithoutAValueAnEmptyOne) {
    expectMends("<a b/>", "<a b=\"\"/>", {{1, 4, kEmptyValue}});
    expectMends("<a b c='d' e ></a>", "<a b=\"\" c='d' e=\"\" ></a>",
                {{1, 4, kEmptyValue}, {1, 12, kEmptyValue}});
    expectMends("<a b=></a>", "<a b=\"\"></a>", {{1, 4, kEmptyValue}});
    expectMends("<a b= />", "<a b= \"\"/>", {{1, 4, kEmptyValue}});
}

TEST(XMLMends, setsAttributesApart) {
    expectMends("<a b='c'd=\"e\"f='g'/>", "<a b='c' d=\"e\" f='g'/>",
                {{1, 9, kSpace}, {1, 14, kSpace}});
}

TEST(XMLMends, refusesAttributesWhoseQuotesSeemToBeMissing) {
    // In each, a quote is missing somewhere before.
    expectRefusal("<a b='c d='e' f='g'/>", XMLErrorCode::malformedStartTag, 12);
    expectRefusal("<a b='c'd/>", XMLErrorCode::malformedStartTag, 9);
    expectRefusal("<a b='c'd=e=f/>", XMLErrorCode::malformedAttribute, 11);
    expectRefusal("<a b='c''/>", XMLErrorCode::malformedStartTag, 9);
}

TEST(XMLMends, setsHyphensInCommentsApart) {
    expectMends("<a><!-- b -- c --></a>", "<a><!-- b - - c --></a>", {{1, 11, kHyphens}});
    expectMends("<a><!-- b---c --></a>", "<a><!-- b- - -c --></a>", {{1, 10, kHyphens}});
}

TEST(XMLMends, setsHyphensApartFromTheEndOfAComment) {
    expectMends("<a><!-- b ---></a>", "<a><!-- b - --></a>", {{1, 11, kHyphens}});
    expectMends("<!----- b -----><a/>", "<!--- - - b - - - --><a/>",
                {{1, 5, kHyphens}, {1, 11, kHyphens}});
    expectMends("<a><!-----></a>", "<a><!--- --></a>", {{1, 8, kHyphens}});
}

TEST(XMLMends, setsHyphensApartInCommentsOfTheDocumentType) {
    expectMends("<!DOCTYPE a [<!-- b -- c -->]><a/>", "<!DOCTYPE a [<!-- b - - c -->]><a/>",
                {{1, 21, kHyphens}});
}

TEST(XMLMends, dropsWhatStandsBeforeTheDeclaration) {
    expectMends(" \n<?xml version='1.0'?><a/>", "<?xml version='1.0'?><a/>", {{1, 1, kBeginning}});
    expectMends("\xEF\xBB\xBF<?xml version='1.0'?><a/>", "<?xml version='1.0'?><a/>",
                {{1, 1, kBeginning}});
    expectMends("\xEF\xBB\xBF\n\xEF\xBB\xBF <?xml version='1.0'?><a/>", "<?xml version='1.0'?><a/>",
                {{1, 1, kBeginning}});
}

TEST(XMLMends, dropsAByteOrderMarkBehindTheDeclaration) {
    expectMends("<?xml version='1.0'?>\xEF\xBB\xBF<a/>", "<?xml version='1.0'?><a/>",
                {{1, 22, kMark}});
    expectMends("<?xml version='1.0'?>\n\xEF\xBB\xBF\n<!DOCTYPE a>\xEF\xBB\xBF\xEF\xBB\xBF<a/>",
                "<?xml version='1.0'?>\n\n<!DOCTYPE a><a/>",
                {{2, 1, kMark}, {3, 13, kMark}, {3, 14, kMark}});
    expectMends("<?xml?>\n\xEF\xBB\xBF<!--b-->\x0C<a><c></c></a>",
                "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!--b--><a><c></c></a>",
                {{1, 1, kDeclaration}, {2, 1, kMark}}, 1);
}

TEST(XMLMends, keepsAByteOrderMarkThatIsContent) {
    EXPECT_EQ(readXML("<a>\xEF\xBB\xBF</a>", XMLMode::tolerant).edits.size(), 0U);
    expectRefusal("<a/>\xEF\xBB\xBF", XMLErrorCode::textOutsideRoot, 5);
    expectRefusal("<?xml version='1.0'?>\xEF\xBB\xBF<?xml version='1.0'?><a/>",
                  XMLErrorCode::misplacedXMLDeclaration, 23);
}

TEST(XMLMends, dropsAByteOrderMarkWhereThereIsNoDeclaration) {
    expectMends("\n\xEF\xBB\xBF\n<a/>", "\n<a/>", {{1, 1, kBeginning}});
}

TEST(XMLMends, leavesWhiteSpaceWhereThereIsNoDeclaration) {
    const XMLReading reading = readXML(" \n<a/>", XMLMode::tolerant);
    EXPECT_TRUE(reading.mends.empty());
    EXPECT_TRUE(reading.edits.empty());
}

TEST(XMLMends, replacesAMalformedDeclaration) {
    const std::string right = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>";
    for (const char* declaration : {"<?xml?>",
                                    "<?xml ?>",
                                    "<?xml version=1.0?>",
                                    "<?xml version='2.0'?>",
                                    "<?xml version='1.'?>",
                                    "<?xml version='1.0' encoding=UTF-8?>",
                                    "<?xml version='1.0' encoding='UTF 8'?>",
                                    "<?xml version='1.0' encoding='8UTF'?>",
                                    "<?xml version='1.0' encoding=''?>",
                                    "<?xml encoding='UTF-8'?>",
                                    "<?xml encoding='UTF-8' version='1.0'?>",
                                    "<?xml version='1.0'encoding='UTF-8'?>",
                                    "<?xml version='1.0' standalone='maybe'?>",
                                    "<?xml version='1.0' standalone='yes' encoding='UTF-8'?>",
                                    "<?xml version='1.0' other='x'?>",
                                    "<?xml version='1.0' version='1.0'?>",
                                    "<?xml version='1.0\"?>",
                                    "<?xml\nversion?>",
                                    "<?XML version='1.0'?>",
                                    "<?Xml version='1.0' encoding='UTF-8'?>",
                                    "<?xml version='1.0' encoding='UTF-8'>",
                                    "<?xml version='1.0'\n>",
                                    "<?xml version='1.0' ? ?>"}) {
        expectMends(declaration + std::string("\n<a/>"), right + "\n<a/>", {{1, 1, kDeclaration}});
    }
}

TEST(XMLMends, replacesAMalformedDeclarationAfterWhiteSpace) {
    expectMends("\n<?xml?><a/>", "<?xml version=\"1.0\" encoding=\"UTF-8\"?><a/>",
                {{1, 1, kBeginning}, {2, 1, kDeclaration}});
}

TEST(XMLMends, refusesADeclarationWhoseEndIsNotClear) {
    expectRefusal("<?xml version='1.0'<a/>", XMLErrorCode::malformedXMLDeclaration, 1);
    expectRefusal("<?xml version='1.0' a version='5'></a>", XMLErrorCode::malformedXMLDeclaration,
                  1);
    expectRefusal("<?xml>", XMLErrorCode::malformedXMLDeclaration, 1);
    expectRefusal("<?xml", XMLErrorCode::malformedXMLDeclaration, 1);
}

TEST(XMLMends, takesDeclarationsThatAreRight) {
    for (const char* declaration :
         {"<?xml version='1.0'?>", "<?xml version=\"1.1\"?>", "<?xml version='1.10' ?>",
          "<?xml\tversion = '1.0'\r\nencoding\n=\n'x-Mac.Roman_1'?>",
          "<?xml version='1.0' standalone='no'?>",
          "<?xml version='1.0' encoding='UTF-8' standalone=\"yes\" ?>"}) {
        for (const XMLMode mode : {XMLMode::strict, XMLMode::tolerant}) {
            const XMLReading reading = readXML(declaration + std::string("<a/>"), mode);
            EXPECT_FALSE(reading.fault.has_value()) << reading.fault->description;
            EXPECT_TRUE(reading.mends.empty()) << declaration;
        }
    }
}

TEST(XMLMends, dropsForbiddenCharactersWithoutNotingThem) {
    const std::string_view text = "<a b='\x01'>x\0\x1F\xEF\xBF\xBFy<!--\x02--></a\x03>"sv;
    const XMLReading reading = readXML(text, XMLMode::tolerant);
    ASSERT_FALSE(reading.fault.has_value()) << reading.fault->description;
    EXPECT_TRUE(reading.mends.empty());
    EXPECT_EQ(reading.droppedCharacters, 6U);
    EXPECT_EQ(reading.edits.size(), 4U);
    EXPECT_EQ(applyXMLEdits(text, reading.edits), "<a b=''>xy<!----></a>");
}

TEST(XMLMends, placesMendsInTheTextThatHoldsTheForbiddenCharacters) {
    const std::string_view text = "\x01<a>\x02\n\x03& é\x04]]>\x05</a>\x06";
    const XMLReading reading = readXML(text, XMLMode::tolerant);
    ASSERT_FALSE(reading.fault.has_value()) << reading.fault->description;
    ASSERT_EQ(reading.mends.size(), 2U);
    EXPECT_EQ(reading.mends[0].offset, text.find('&'));
    EXPECT_EQ(reading.mends[0].line, 2U);
    EXPECT_EQ(reading.mends[0].column, 2U);
    EXPECT_EQ(reading.mends[1].offset, text.find("]]>"));
    EXPECT_EQ(reading.mends[1].line, 2U);
    EXPECT_EQ(reading.mends[1].column, 6U);
    EXPECT_EQ(applyXMLEdits(text, reading.edits), "<a>\n&amp; é]]&gt;</a>");
    EXPECT_EQ(reading.droppedCharacters, 6U);
}

TEST(XMLMends, placesFaultsInTheTextThatHoldsTheForbiddenCharacters) {
    const XMLReading reading = readXML("\x01<a>\x02\n\x03 </b>", XMLMode::tolerant);
    ASSERT_TRUE(reading.fault.has_value());
    EXPECT_EQ(reading.fault->line, 2U);
    EXPECT_EQ(reading.fault->column, 3U);
}

TEST(XMLMends, readsWhatIsLeftWhenCharactersAreDropped) {
    // The forbidden characters split a reference, a name, the end of a comment and a declaration.
    const std::string_view text =
        "<?x\x01ml version='1.0'?\x02><a\x03"
        "b>&am\x04p;<!-- -\x05-><\x06/ab>";
    const XMLReading reading = readXML(text, XMLMode::tolerant);
    ASSERT_FALSE(reading.fault.has_value()) << reading.fault->description;
    EXPECT_TRUE(reading.mends.empty());
    EXPECT_EQ(applyXMLEdits(text, reading.edits), "<?xml version='1.0'?><ab>&amp;<!-- --></ab>");
}

TEST(XMLMends, takesForbiddenCharactersInsideAReplacedPieceOut) {
    const std::string_view text = "\x01 \x02<?xml \x03?>\x04<a/>";
    const XMLReading reading = readXML(text, XMLMode::tolerant);
    ASSERT_FALSE(reading.fault.has_value()) << reading.fault->description;
    EXPECT_EQ(reading.mends.size(), 2U);
    EXPECT_EQ(applyXMLEdits(text, reading.edits), "<?xml version=\"1.0\" encoding=\"UTF-8\"?><a/>");
}

TEST(XMLMends, notesSeveralMendsInTheOrderOfTheText) {
    expectMends("<?xml?>\n<a b=c&d e>\n<!-- -- -->&<\n]]></a>",
                "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<a b=\"c&amp;d\" e=\"\">\n"
                "<!-- - - -->&amp;&lt;\n]]&gt;</a>",
                {{1, 1, kDeclaration},
                 {2, 6, kQuotes},
                 {2, 7, kAmpersand},
                 {2, 10, kEmptyValue},
                 {3, 6, kHyphens},
                 {3, 12, kAmpersand},
                 {3, 13, kLessThan},
                 {4, 1, kCDATAEnd}});
}

TEST(XMLMends, findsNothingToMendInSoundText) {
    const XMLReading reading = readXML("<a b='c'>d &amp; e<!-- f --></a>", XMLMode::tolerant);
    EXPECT_FALSE(reading.fault.has_value());
    EXPECT_TRUE(reading.mends.empty());
    EXPECT_TRUE(reading.edits.empty());
    EXPECT_EQ(reading.droppedCharacters, 0U);
}

TEST(XMLMends, refusesAnUnclosedValueWithMarkupInIt) {
    expectRefusal("<a><b c=\"d></b></a>", XMLErrorCode::unclosedAttributeValue, 9);
}

TEST(XMLMends, leavesAPieceOfTextBetweenTagLikeSignsToTheReader) {
    // "<b" begins a tag, so this is not a stray sign but a tag that is never closed.
    expectRefusal("<a>if a<b then</a>", XMLErrorCode::unclosedTag, 8);
}

}  // namespace vornic::test
