#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/xml/reader/XMLSideBySide.h"
#include "xml/tree/XMLDocument.h"

// What `XMLDocument::serialize` writes.

namespace vornic::test {

namespace {

const std::string kDeclaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";

std::unique_ptr<XMLDocument> parsed(const std::string& text) {
    ErrorSlot error;
    auto document = XMLDocument::parse(text, XMLMode::strict, error);
    EXPECT_NE(document, nullptr) << (error ? error->description : "");
    return document;
}

// The text written for a text, without the declaration that every text begins with. What was
// written has the same content and is not changed by being read and written again, and it is the
// same whether there is a tree or not.
std::string written(const std::string& text) {
    const auto document = parsed(text);
    const std::string result = document->xmlString();
    EXPECT_TRUE(document->documentNode());
    EXPECT_EQ(document->xmlString(), result);
    const auto again = parsed(result);
    EXPECT_EQ(again->xmlString(), result);
    EXPECT_EQ(contentLinesOfTree(again->documentNode()),
              contentLinesOfTree(parsed(text)->documentNode()));
    EXPECT_TRUE(result.starts_with("<?xml "));
    return result.starts_with(kDeclaration) ? result.substr(kDeclaration.size()) : result;
}

}  // namespace

TEST(XMLWriter, putsEachElementOnItsOwnLine) {
    EXPECT_EQ(written("<a><b><c/></b><d>x</d></a>"),
              "<a>\n    <b>\n        <c/>\n    </b>\n    <d>x</d>\n</a>\n");
}

TEST(XMLWriter, replacesTheIndentationOfTheSource) {
    EXPECT_EQ(written("<a>\n\t<b>\r\n\n<c/>  </b>\n</a>"),
              "<a>\n    <b>\n        <c/>\n    </b>\n</a>\n");
}

TEST(XMLWriter, tidiesTagsUp) {
    EXPECT_EQ(written("<a  b = 'c\"d'\n\te=\"f'\"\t><g h='1' /><i\n></i\n></a >"),
              "<a b=\"c&quot;d\" e=\"f'\">\n    <g h=\"1\"/>\n    <i></i>\n</a>\n");
    EXPECT_EQ(written("<a><b c='1\t2\r\n3\n4&#9;5&#10;6&#13;7&#x41;8&apos;&quot;&lt;>'/></a>"),
              "<a>\n    <b c=\"1 2 3 4&#9;5&#10;6&#13;7A8'&quot;&lt;&gt;\"/>\n</a>\n");
}

TEST(XMLWriter, replacesReferencesAndLineEndsInText) {
    EXPECT_EQ(
        written("<a>1&amp;2&lt;3&gt;4>5&quot;6&apos;7&#65;8&#x1F600;9&#38;0&#13;1\r\n2\r3</a>"),
        "<a>1&amp;2&lt;3&gt;4&gt;5\"6'7A8\U0001F6009&amp;0&#13;1\n2\n3</a>\n");
    EXPECT_EQ(written("<a>\r\n<b>\r\n</b>\r\n</a>"), "<a>\n    <b>\n</b>\n</a>\n");
    EXPECT_EQ(written("<a><b>&#32;</b></a>"), "<a>\n    <b> </b>\n</a>\n");
}

TEST(XMLWriter, takesLineEndsInOtherMarkup) {
    EXPECT_EQ(written("<a><!--1\r\n2\r3--><?p  1\r\n2 ?><?q?><?r ?><b><![CDATA[1\r\n>]]></b></a>"
                      "<!--d--><?e f?>\n\n"),
              "<a>\n    <!--1\n2\n3-->\n    <?p 1\n2 ?>\n    <?q?>\n    <?r?>\n"
              "    <b><![CDATA[1\n>]]></b>\n</a>\n<!--d-->\n<?e f?>\n");
}

TEST(XMLWriter, keepsEmptyElementsAsTheyWere) {
    EXPECT_EQ(written("<a><b/><c></c><d ></d ><e f='g'></e><h i='j' /></a>"),
              "<a>\n    <b/>\n    <c></c>\n    <d></d>\n    <e f=\"g\"></e>\n    <h i=\"j\"/>\n"
              "</a>\n");
    EXPECT_EQ(written("<a></a>"), "<a></a>\n");
    EXPECT_EQ(written("<a/>"), "<a/>\n");
}

TEST(XMLWriter, closesAnElementAtOnceThatTheProgramEmptied) {
    const auto document = parsed("<a><b><c></c></b><d></d></a>");
    document->removeNode(document->rootElement().firstChild().firstChild());
    EXPECT_EQ(document->xmlString(), kDeclaration + "<a>\n    <b/>\n    <d></d>\n</a>\n");
}

TEST(XMLWriter, knowsEmptyPairsAfterRemovals) {
    const auto document = parsed("<a><b></b><c></c><d></d><e/></a>");
    document->removeNode(document->rootElement().firstChild());
    document->removeNode(document->rootElement().firstChild().nextSibling());
    EXPECT_EQ(document->xmlString(), kDeclaration + "<a>\n    <c></c>\n    <e/>\n</a>\n");
}

TEST(XMLWriter, keepsWhiteSpaceThatIsAnElementsOnlyContent) {
    EXPECT_EQ(written("<a><b> </b><c>\n</c></a>"), "<a>\n    <b> </b>\n    <c>\n</c>\n</a>\n");
}

TEST(XMLWriter, keepsTextToTheLetter) {
    EXPECT_EQ(written("<a> x\n  y\t</a>"), "<a> x\n  y\t</a>\n");
}

TEST(XMLWriter, keepsMixedContentToTheLetter) {
    const std::string mixed =
        "<a>\n    <b>one <i>two</i> <j> <k/>  <l></l> </j>\n three</b>\n</a>\n";
    EXPECT_EQ(written(mixed), mixed);
}

TEST(XMLWriter, indentsWhatStandsBesideMixedContent) {
    EXPECT_EQ(written("<a><b> <c/> </b><d>x<e/> </d><f> <g/> </f></a>"),
              "<a>\n    <b>\n        <c/>\n    </b>\n    <d>x<e/> </d>\n    <f>\n        <g/>\n"
              "    </f>\n</a>\n");
}

TEST(XMLWriter, keepsWhiteSpaceBesideCDATA) {
    EXPECT_EQ(written("<a> <![CDATA[x]]>\n</a>"), "<a> <![CDATA[x]]>\n</a>\n");
    EXPECT_EQ(written("<a> <![CDATA[]]><b/></a>"), "<a> <![CDATA[]]><b/></a>\n");
}

TEST(XMLWriter, keepsWhiteSpaceThatWasWrittenAsReferences) {
    EXPECT_EQ(written("<a>&#32;<b/>\n<c/>&#x9;&#32;</a>"), "<a>&#32;<b/>&#10;<c/>&#9; </a>\n");
    EXPECT_EQ(written("<a>&#32;</a>"), "<a> </a>\n");
}

TEST(XMLWriter, keepsWhiteSpaceThatIsToBePreserved) {
    EXPECT_EQ(written("<a xml:space='preserve'> <b><c/> </b>\n</a>"),
              "<a xml:space=\"preserve\"> <b><c/> </b>\n</a>\n");
    EXPECT_EQ(written("<a><b xml:space='preserve'><c/></b></a>"),
              "<a>\n    <b xml:space=\"preserve\"><c/></b>\n</a>\n");
}

TEST(XMLWriter, keepsCommentsAndInstructions) {
    EXPECT_EQ(written("<?p   q r?><!-- one\n two --><a><!--x--><?s?><b/></a><!--y--><?t u?>"),
              "<?p q r?>\n<!-- one\n two -->\n<a>\n    <!--x-->\n    <?s?>\n    <b/>\n</a>\n"
              "<!--y-->\n<?t u?>\n");
}

TEST(XMLWriter, keepsCDATASections) {
    EXPECT_EQ(written("<a><![CDATA[<&]] >]]></a>"), "<a><![CDATA[<&]] >]]></a>\n");
    EXPECT_EQ(written("<a><![CDATA[]]></a>"), "<a><![CDATA[]]></a>\n");
    EXPECT_EQ(written("<a><![CDATA[x]]><![CDATA[y]]></a>"), "<a><![CDATA[x]]><![CDATA[y]]></a>\n");
}

TEST(XMLWriter, escapesText) {
    EXPECT_EQ(written("<a>&lt;&amp;&gt;\"'&#13;\t]]&gt;&#133;é</a>"),
              "<a>&lt;&amp;&gt;\"'&#13;\t]]&gt;\xC2\x85é</a>\n");
}

TEST(XMLWriter, escapesAttributeValues) {
    EXPECT_EQ(written("<a b='&lt;&amp;>\"&apos;&#9;&#10;&#13;\t é'/>"),
              "<a b=\"&lt;&amp;&gt;&quot;'&#9;&#10;&#13;  é\"/>\n");
}

TEST(XMLWriter, leavesForbiddenCharactersOutOfValues) {
    const auto document = parsed("<a/>");
    document->rootElement().setAttribute("b", "x\x01y\x1F");
    EXPECT_EQ(document->xmlString(), kDeclaration + "<a b=\"xy\"/>\n");
}

TEST(XMLWriter, writesLineEndsAsLineFeeds) {
    EXPECT_EQ(written("<!DOCTYPE a [\r\n]>\r\n<?p q\rr?>\r<a>x\r\ny\rz<!--\r--><![CDATA[\r\n]]>"
                      "</a>"),
              "<!DOCTYPE a [\n]>\n<?p q\nr?>\n<a>x\ny\nz<!--\n--><![CDATA[\n]]></a>\n");
}

TEST(XMLWriter, keepsVersionAndStandaloneOfTheDeclaration) {
    EXPECT_EQ(written("<?xml version='1.1' encoding='ISO-8859-1' standalone='yes'?><a/>"),
              "<?xml version=\"1.1\" encoding=\"UTF-8\" standalone=\"yes\"?>\n<a/>\n");
    EXPECT_EQ(written("<?xml version='1.0' standalone='no'?><a/>"),
              "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"no\"?>\n<a/>\n");
}

TEST(XMLWriter, keepsTheDocumentTypeDeclaration) {
    EXPECT_EQ(written("<!DOCTYPE a SYSTEM \"b>\" [\n<!ELEMENT a ANY><!-- ]> -->\n] ><a/>"),
              "<!DOCTYPE a SYSTEM \"b>\" [\n<!ELEMENT a ANY><!-- ]> -->\n] >\n<a/>\n");
}

TEST(XMLWriter, keepsTheOrderOfAttributes) {
    EXPECT_EQ(written("<a z='1'  b = '2'\nm=\"3\"/>"), "<a z=\"1\" b=\"2\" m=\"3\"/>\n");
}

TEST(XMLWriter, indentsNoDeeperThanLevel64) {
    std::string text;
    for (int level = 0; level < 70; ++level) {
        text += "<a>";
    }
    text += "<b/>";
    for (int level = 0; level < 70; ++level) {
        text += "</a>";
    }
    const std::string result = written(text);
    const std::string deepest(std::size_t{64} * 4, ' ');
    EXPECT_NE(result.find("\n" + deepest + "<b/>\n" + deepest + "</a>"), std::string::npos);
    EXPECT_EQ(result.find(deepest + " "), std::string::npos);
    EXPECT_NE(result.find("\n" + std::string(std::size_t{63} * 4, ' ') + "<a>\n" + deepest + "<a>"),
              std::string::npos);
}

TEST(XMLWriter, writesLargePieces) {
    std::string text = "<a>";
    for (int i = 0; i < 100'000; ++i) {
        text += "<b>text</b>";
    }
    text += "<c>" + std::string(1'000'000, 'x') + "</c></a>";
    const auto document = parsed(text);
    std::vector<std::size_t> pieces;
    std::string joined;
    EXPECT_TRUE(document->serialize([&](std::string_view piece) {
        pieces.push_back(piece.size());
        joined += piece;
        return true;
    }));
    ASSERT_GT(pieces.size(), 1U);
    for (std::size_t i = 0; i + 1 < pieces.size(); ++i) {
        EXPECT_GE(pieces[i], 100'000U);
        EXPECT_LE(pieces[i], 1'000'000U);
    }
    EXPECT_EQ(joined, document->xmlString());
}

TEST(XMLWriter, stopsWhenTheSinkDoes) {
    std::string text = "<a>";
    for (int i = 0; i < 100'000; ++i) {
        text += "<b>text</b>";
    }
    const auto document = parsed(text + "</a>");
    int calls = 0;
    EXPECT_FALSE(document->serialize([&calls](std::string_view) {
        ++calls;
        return calls < 2;
    }));
    EXPECT_EQ(calls, 2);
}

TEST(XMLWriter, reportsWhenTheSinkStopsAtTheLastPiece) {
    EXPECT_FALSE(parsed("<a/>")->serialize([](std::string_view) { return false; }));
}

}  // namespace vornic::test
