#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/machine/Sandbox.h"
#include "xml/text/XMLErrorCode.h"
#include "xml/tree/XMLDocument.h"

namespace vornic::test {

namespace {

std::unique_ptr<XMLDocument> parsed(std::string text, XMLMode mode = XMLMode::strict) {
    ErrorSlot error;
    std::unique_ptr<XMLDocument> document = XMLDocument::parse(std::move(text), mode, error);
    EXPECT_NE(document, nullptr) << (error ? error->description : "");
    EXPECT_FALSE(error.has_value());
    return document;
}

std::vector<std::string> valuesOf(const std::vector<XMLNode>& nodes) {
    std::vector<std::string> values;
    values.reserve(nodes.size());
    for (const XMLNode& node : nodes) {
        values.push_back(node.stringValue());
    }
    return values;
}

std::vector<XMLNode> nodesOf(const char* query, XMLNode context) {
    ErrorSlot error;
    std::vector<XMLNode> nodes = XMLDocument::nodesForXPath(query, context, error);
    EXPECT_FALSE(error.has_value()) << error->description;
    return nodes;
}

using Values = std::vector<std::string>;

}  // namespace

TEST(XMLDocumentParse, leavesTheSlotAsItWasWhenItSucceeds) {
    ErrorSlot error = Error{"x", 1, "an earlier error"};
    EXPECT_NE(XMLDocument::parse("<a/>", XMLMode::strict, error), nullptr);
    ASSERT_TRUE(error.has_value());
    EXPECT_EQ(error->description, "an earlier error");
}

TEST(XMLDocumentParse, fillsTheSlotWithThePlaceOfAFault) {
    ErrorSlot error;
    EXPECT_EQ(XMLDocument::parse("<a>\n</b>", XMLMode::tolerant, error), nullptr);
    ASSERT_TRUE(error.has_value());
    EXPECT_EQ(error->localizedDescription(),
              "Line 2, column 1: the end tag </b> does not match the start tag <a> of line 1.");
    EXPECT_EQ(error->line, 2U);
}

TEST(XMLDocumentFromReading, isTheDocumentThatParsingTheTextGives) {
    for (const std::string text :
         {"<?xml version='1.0'?><!DOCTYPE a><a b='&lt;'><c></c><d/>x<!-- y --></a>",
          "<a>\n<c></c><d/>&#32;<e>&#32;</e></a>", "<a/>"}) {
        const auto read = XMLDocument::fromReading(text, readXML(text, XMLMode::tolerant));
        const auto document = parsed(text);
        EXPECT_EQ(read->xmlString(), document->xmlString());
        EXPECT_EQ(read->rootName(), "a");
        read->setRootAttribute("f", "g");
        document->setRootAttribute("f", "g");
        EXPECT_EQ(read->xmlString(), document->xmlString());
        EXPECT_EQ(read->rootElement().stringValue(), document->rootElement().stringValue());
    }
}

TEST(XMLDocumentParse, refusesAnEmptyText) {
    ErrorSlot error;
    EXPECT_EQ(XMLDocument::parse("", XMLMode::strict, error), nullptr);
    EXPECT_TRUE(error.has_value());
    EXPECT_EQ(XMLDocument::parse("\xEF\xBB\xBF", XMLMode::strict, error), nullptr);
}

TEST(XMLDocumentParse, passesOverAByteOrderMark) {
    const auto document = parsed("\xEF\xBB\xBF<?xml version='1.0'?><a><b></b><c/></a>");
    EXPECT_EQ(document->rootElement().name(), "a");
    EXPECT_NE(document->xmlString().find("<b></b>\n    <c/>"), std::string::npos);
}

TEST(XMLDocumentParse, ignoresWhatEncodingTheTextNames) {
    EXPECT_EQ(
        parsed("<?xml version='1.0' encoding='UTF-16'?><a>é</a>")->rootElement().stringValue(),
        "é");
    EXPECT_EQ(
        parsed("<?xml version='1.0' encoding='no-such'?><a>é</a>")->rootElement().stringValue(),
        "é");
}

TEST(XMLDocumentParse, keepsTheMendsAndBuildsTheTreeFromTheMendedText) {
    const auto document = parsed("\xEF\xBB\xBF<a>\n<b c=d>x & y</b><e></e></a>", XMLMode::tolerant);
    ASSERT_EQ(document->mends().size(), 2U);
    EXPECT_EQ(document->mends()[0].line, 2U);
    EXPECT_EQ(document->mends()[0].column, 6U);
    EXPECT_EQ(document->rootElement().stringValue(), "x & y");
    EXPECT_EQ(document->xmlString(),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<a>\n    <b c=\"d\">x &amp; y</b>\n"
              "    <e></e>\n</a>\n");
    EXPECT_EQ(document->mends().size(), 2U);
}

TEST(XMLDocumentParse, leavesDroppedCharactersOut) {
    const auto document = parsed("<a>x\x01y</a>", XMLMode::tolerant);
    EXPECT_TRUE(document->mends().empty());
    EXPECT_EQ(document->rootElement().stringValue(), "xy");
}

class XMLDocumentLoad : public SandboxTest {};

TEST_F(XMLDocumentLoad, decodesAFileByItsDeclaration) {
    const std::string path =
        sandbox.write("a.xml", "<?xml version='1.0' encoding='ISO-8859-1'?><a>caf\xE9</a>");
    ErrorSlot error;
    const auto document = XMLDocument::load(path, XMLMode::strict, error);
    ASSERT_NE(document, nullptr) << error->description;
    EXPECT_EQ(document->rootElement().stringValue(), "café");
    EXPECT_EQ(document->xmlString(), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<a>café</a>\n");
}

TEST_F(XMLDocumentLoad, reportsAFileThatIsNotThere) {
    ErrorSlot error;
    EXPECT_EQ(XMLDocument::load(sandbox.path("none.xml"), XMLMode::strict, error), nullptr);
    ASSERT_TRUE(error.has_value());
    EXPECT_EQ(error->domain, kPosixErrorDomain);
}

TEST_F(XMLDocumentLoad, reportsBytesThatAreNotTheEncoding) {
    ErrorSlot error;
    EXPECT_EQ(XMLDocument::load(sandbox.write("a.xml", "<a>\xE9</a>"), XMLMode::tolerant, error),
              nullptr);
    ASSERT_TRUE(error.has_value());
    EXPECT_EQ(error->column, 4U);
}

TEST(XMLDocumentType, namesTheDeclaredType) {
    EXPECT_EQ(parsed("<a/>")->documentTypeName(), std::nullopt);
    EXPECT_EQ(parsed("<!DOCTYPE xmeml><a/>")->documentTypeName(), "xmeml");
    EXPECT_EQ(parsed("<!DOCTYPE\n xmeml SYSTEM 'x'><a/>")->documentTypeName(), "xmeml");
    EXPECT_EQ(parsed("<!DOCTYPE xmeml[]><a/>")->documentTypeName(), "xmeml");
}

TEST(XMLDocumentType, isAddedBeforeTheRootElement) {
    const auto document = parsed("<?xml version='1.0'?><!-- b --><a/><!-- c -->");
    document->setDocumentType("xmeml");
    EXPECT_EQ(document->documentTypeName(), "xmeml");
    EXPECT_EQ(document->xmlString(),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!-- b -->\n<!DOCTYPE xmeml>\n<a/>\n"
              "<!-- c -->\n");
}

TEST(XMLDocumentType, isReplacedWithEverythingInIt) {
    const auto document = parsed("<!DOCTYPE a SYSTEM 'b' [<!ELEMENT a ANY>]><a/>");
    document->setDocumentType("fcpxml");
    EXPECT_EQ(document->xmlString(),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE fcpxml>\n<a/>\n");
}

TEST(XMLDocumentHead, isReadAndChangedWithoutATree) {
    const auto document = parsed("<?xml version='1.0'?><!--c--><a b = 'c&amp;' ><d/></a>");
    EXPECT_EQ(document->rootName(), "a");
    EXPECT_EQ(document->rootAttribute("b"), "c&");
    EXPECT_EQ(document->rootAttribute("e"), std::nullopt);
    document->setRootAttribute("b", "<");
    document->setRootAttribute("e", "f");
    document->setDocumentType("a");
    EXPECT_EQ(document->rootAttribute("b"), "<");
    EXPECT_EQ(document->documentTypeName(), "a");
    EXPECT_EQ(document->xmlString(),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!--c-->\n<!DOCTYPE a>\n"
              "<a b=\"&lt;\" e=\"f\">\n    <d/>\n</a>\n");
}

TEST(XMLDocumentHead, keepsItsChangesWhenTheTreeIsBuilt) {
    const auto document = parsed("<!DOCTYPE x><a b='c'><d/></a>");
    document->setDocumentType("a");
    document->setRootAttribute("b", "1");
    document->setRootAttribute("e", "2");
    const std::string written = document->xmlString();
    EXPECT_EQ(document->rootElement().attribute("b"), "1");
    EXPECT_EQ(document->rootElement().attribute("e"), "2");
    EXPECT_EQ(document->documentTypeName(), "a");
    EXPECT_EQ(document->xmlString(), written);
    document->setRootAttribute("b", "3");
    EXPECT_EQ(document->rootAttribute("b"), "3");
}

TEST(XMLDocumentHead, keepsTheOrderOfItsAttributesWhenTheTreeIsBuilt) {
    const auto document = parsed("<a b='&lt;' c='\t' d=''><e/></a>");
    document->setRootAttribute("f", "1");
    document->setRootAttribute("c", "2");
    document->setRootAttribute("g", "");
    EXPECT_TRUE(document->rootElement());
    EXPECT_TRUE(document->xmlString().ends_with(
        "<a b=\"&lt;\" c=\"2\" d=\"\" f=\"1\" g=\"\">\n    <e/>\n</a>\n"));
}

TEST(XMLDocumentHead, showsWhatHasBeenChangedInTheTree) {
    const auto document = parsed("<a b='c'><d/></a>");
    document->rootElement().setAttribute("b", "1");
    EXPECT_EQ(document->rootAttribute("b"), "1");
    EXPECT_EQ(document->rootName(), "a");
}

TEST(XMLDocumentHead, isTheWholeOfAnEmptyDocument) {
    const auto document = parsed("<a b='c'/>");
    EXPECT_EQ(document->rootName(), "a");
    EXPECT_EQ(document->rootAttribute("b"), "c");
    EXPECT_FALSE(document->hasElementInRoot("a"));
    EXPECT_TRUE(document->xmlString().ends_with("<a b=\"c\"/>\n"));
}

TEST(XMLDocumentHead, isThatOfTheMendedText) {
    ErrorSlot error;
    const auto document = XMLDocument::parse("\n<?xml version='1.0'?><a b=c d><e>&f</e></a>",
                                             XMLMode::tolerant, error);
    ASSERT_NE(document, nullptr);
    EXPECT_EQ(document->rootAttribute("b"), "c");
    EXPECT_EQ(document->rootAttribute("d"), "");
    EXPECT_TRUE(document->hasElementInRoot("e"));
    EXPECT_TRUE(document->xmlString().ends_with("<a b=\"c\" d=\"\">\n    <e>&amp;f</e>\n</a>\n"));
}

TEST(XMLDocumentHead, knowsTheElementsInTheRoot) {
    const std::string text =
        "<!--<c/>--><a c='&lt;c>'><!-- <c/> --><![CDATA[<c>]]><?p <c/>?><cc/><b:c/>"
        "<d>&lt;c/></d><e\n/></a><!--<c/>-->";
    for (const bool withTree : {false, true}) {
        const auto document = parsed(text);
        EXPECT_TRUE(!withTree || document->rootElement());
        EXPECT_FALSE(document->hasElementInRoot("c"));
        EXPECT_FALSE(document->hasElementInRoot("a"));
        EXPECT_FALSE(document->hasElementInRoot("p"));
        EXPECT_TRUE(document->hasElementInRoot("cc"));
        EXPECT_TRUE(document->hasElementInRoot("d"));
        EXPECT_TRUE(document->hasElementInRoot("e"));
    }
}

TEST(XMLDocumentHead, knowsWhereACommentEndsThatBeginsWithItsEnd) {
    for (const char* text :
         {"<a><!--><sequence/>--></a>", "<a><!-- --><!--><c/><sequence>--></a>"}) {
        EXPECT_FALSE(parsed(text)->hasElementInRoot("sequence")) << text;
    }
    EXPECT_FALSE(
        parsed("<a><!---><sequence/>--></a>", XMLMode::tolerant)->hasElementInRoot("sequence"));
    EXPECT_TRUE(parsed("<a><!----><sequence/></a>")->hasElementInRoot("sequence"));
    EXPECT_TRUE(parsed("<a><!-->--><sequence/></a>")->hasElementInRoot("sequence"));
}

TEST(XMLDocumentXPath, findsNodesInDocumentOrder) {
    const auto document = parsed("<a><b>1</b><c><b>2</b></c><b>3</b></a>");
    EXPECT_EQ(valuesOf(nodesOf(".//b", document->rootElement())), (Values{"1", "2", "3"}));
    EXPECT_EQ(valuesOf(nodesOf("/a/b[last()]/preceding::b", document->rootElement())),
              (Values{"1", "2"}));
    EXPECT_EQ(valuesOf(nodesOf("//c/b | /a/b", document->rootElement())), (Values{"1", "2", "3"}));
    EXPECT_EQ(valuesOf(nodesOf("//b/ancestor::c/b", document->rootElement())), (Values{"2"}));
}

TEST(XMLDocumentXPath, beginsAtItsContext) {
    const auto document = parsed("<a><b>1</b><c><b>2</b></c></a>");
    const XMLNode c = document->rootElement().firstChild().nextSibling();
    EXPECT_EQ(valuesOf(nodesOf("./b", c)), (Values{"2"}));
    EXPECT_EQ(valuesOf(nodesOf(".//b", document->documentNode())), (Values{"1", "2"}));
    EXPECT_EQ(valuesOf(nodesOf("./a/b", document->documentNode())), (Values{"1"}));
    EXPECT_TRUE(nodesOf("./a", document->rootElement()).empty());
}

TEST(XMLDocumentXPath, findsAttributesWithTheirElements) {
    const auto document = parsed("<a><b ref='x'/><b/><b ref='y'/></a>");
    const std::vector<XMLNode> found = nodesOf("./b/@ref", document->rootElement());
    EXPECT_EQ(valuesOf(found), (Values{"x", "y"}));
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found[1].kind(), XMLNode::Kind::attribute);
    EXPECT_EQ(found[1].name(), "ref");
    EXPECT_EQ(found[1].parent(), document->rootElement().firstChild().nextSibling().nextSibling());
}

TEST(XMLDocumentXPath, takesAnAttributeAsContext) {
    const auto document = parsed("<a b='x' c='y'/>");
    const XMLNode attribute = document->rootElement().attributes().at(1);
    EXPECT_EQ(valuesOf(nodesOf("../@b", attribute)), (Values{"x"}));
    EXPECT_EQ(valuesOf(nodesOf(".", attribute)), (Values{"y"}));
}

TEST(XMLDocumentXPath, findsAddedAttributesInOrder) {
    const auto document = parsed("<a><b/><b ref='y'/><b/></a>");
    const std::vector<XMLNode> elements = nodesOf("./b", document->rootElement());
    elements[2].setAttribute("ref", "z");
    elements[0].setAttribute("ref", "x");
    EXPECT_EQ(valuesOf(nodesOf(".//@ref", document->rootElement())), (Values{"x", "y", "z"}));
}

TEST(XMLDocumentXPath, putsManyNodesInOrder) {
    std::string text = "<a>";
    for (int i = 0; i < 500; ++i) {
        text += "<b c='" + std::to_string(3 * i) + "'>" + std::to_string(3 * i + 1) + "</b><d>" +
                std::to_string(3 * i + 2) + "</d>";
    }
    const auto document = parsed(text + "</a>");
    const std::vector<XMLNode> found = nodesOf("//d | //b | //b/@c", document->rootElement());
    ASSERT_EQ(found.size(), 1500U);
    // An attribute comes after its element and before what is in it.
    for (std::size_t i = 0; i < 500; ++i) {
        EXPECT_EQ(found[3 * i].stringValue(), std::to_string(3 * i + 1));
        EXPECT_EQ(found[3 * i + 1].stringValue(), std::to_string(3 * i));
        EXPECT_EQ(found[3 * i + 2].stringValue(), std::to_string(3 * i + 2));
    }
}

TEST(XMLDocumentXPath, putsManyNodesInOrderThatItFoundBackwards) {
    std::string text = "<a>";
    for (int i = 0; i < 500; ++i) {
        text += "<b>" + std::to_string(i) + "</b>";
    }
    const auto document = parsed(text + "<c/></a>");
    const std::vector<XMLNode> found = nodesOf("c/preceding-sibling::b", document->rootElement());
    ASSERT_EQ(found.size(), 500U);
    EXPECT_EQ(found.front().stringValue(), "0");
    EXPECT_EQ(found.back().stringValue(), "499");
}

TEST(XMLDocumentXPath, knowsNoDeclarations) {
    const auto document = parsed("<?xml version='1.0'?><!DOCTYPE a><!--b--><a/>");
    EXPECT_EQ(nodesOf("/node()", document->documentNode()).size(), 2U);
    EXPECT_TRUE(XMLDocument::hasNodeForXPath("/node()", document->documentNode()));
    EXPECT_FALSE(XMLDocument::hasNodeForXPath("/a/preceding::node()[not(self::comment())]",
                                              document->documentNode()));
}

TEST(XMLDocumentXPath, fillsTheSlotForAMalformedQuery) {
    const auto document = parsed("<a/>");
    for (const char* query : {"", "b[", "//", "b]", "no-such-function()", "$variable"}) {
        ErrorSlot error;
        EXPECT_TRUE(XMLDocument::nodesForXPath(query, document->rootElement(), error).empty());
        ASSERT_TRUE(error.has_value()) << query;
        EXPECT_EQ(error->code, static_cast<int>(XMLErrorCode::malformedQuery));
        EXPECT_FALSE(XMLDocument::hasNodeForXPath(query, document->rootElement()));
    }
}

TEST(XMLDocumentXPath, fillsTheSlotForAQueryThatYieldsNoNodes) {
    const auto document = parsed("<a/>");
    for (const char* query : {"count(//a)", "'x'", "1 = 1", "string(.)"}) {
        ErrorSlot error;
        EXPECT_TRUE(XMLDocument::nodesForXPath(query, document->rootElement(), error).empty());
        EXPECT_TRUE(error.has_value()) << query;
        EXPECT_FALSE(XMLDocument::hasNodeForXPath(query, document->rootElement()));
    }
}

TEST(XMLDocumentXPath, refusesAQueryThatNestsTooDeeply) {
    const auto document = parsed("<a/>");
    ErrorSlot error;
    EXPECT_TRUE(
        XMLDocument::nodesForXPath(std::string(100'000, '('), document->rootElement(), error)
            .empty());
    EXPECT_TRUE(error.has_value());
}

TEST(XMLDocumentXPath, findsNothingWithoutAContext) {
    ErrorSlot error;
    EXPECT_TRUE(XMLDocument::nodesForXPath("//a", XMLNode(), error).empty());
    EXPECT_FALSE(error.has_value());
    EXPECT_FALSE(XMLDocument::hasNodeForXPath("//a", XMLNode()));
}

TEST(XMLDocumentXPath, reportsWhetherThereIsANode) {
    const auto document = parsed("<a><b><c d='e'/></b>x</a>");
    const auto has = [&document](const char* query) {
        return XMLDocument::hasNodeForXPath(query, document->rootElement());
    };
    EXPECT_TRUE(has(".//c"));
    EXPECT_TRUE(has(".//c[1]"));
    EXPECT_TRUE(has(".//*[1][1]"));
    EXPECT_TRUE(has(".//c/@d[1]"));
    EXPECT_TRUE(has("text()[1]"));
    EXPECT_TRUE(has("(b | c)[1]"));
    EXPECT_TRUE(has(".//c[@d='e'][1]"));
    EXPECT_FALSE(has(".//d[1]"));
    EXPECT_FALSE(has(".//c[2]"));
    EXPECT_FALSE(has(".//c[@d='f'][1]"));
    EXPECT_FALSE(has("..[1]"));
    EXPECT_FALSE(has("[1]"));
}

TEST(XMLDocumentRemoval, takesANodeOutWithEverythingBelow) {
    const auto document = parsed("<a><b><c/>x</b><d/></a>");
    document->removeNode(document->rootElement().firstChild());
    EXPECT_EQ(document->rootElement().firstChild().name(), "d");
    EXPECT_FALSE(document->rootElement().firstChild().nextSibling());
}

TEST(XMLDocumentRemoval, takesAttributesOut) {
    const auto document = parsed("<a b='1' c='2'/>");
    document->removeNode(document->rootElement().attributes().front());
    EXPECT_EQ(document->rootElement().attribute("b"), std::nullopt);
    EXPECT_EQ(document->rootElement().attribute("c"), "2");
}

TEST(XMLDocumentRemoval, takesNodesOutThatLieInsideOthers) {
    const auto document = parsed("<r><a><a><a/></a><b/></a><c><a/></c><b/></r>");
    document->removeNodes(nodesOf(".//a", document->rootElement()));
    EXPECT_EQ(document->xmlString(),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<r>\n    <c/>\n    <b/>\n</r>\n");
}

TEST(XMLDocumentRemoval, takesNodesOutInAnyOrderAndTwice) {
    const auto document = parsed("<r><a x='1'><a><a/></a><b/></a><c><a/></c><b/></r>");
    std::vector<XMLNode> nodes = nodesOf(".//a | .//a/@x | .//b", document->rootElement());
    std::vector<XMLNode> twice(nodes.rbegin(), nodes.rend());
    twice.insert(twice.end(), nodes.begin() + 2, nodes.end());
    document->removeNodes(twice);
    EXPECT_EQ(document->xmlString(),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<r>\n    <c/>\n</r>\n");
}

TEST(XMLDocumentRemoval, doesNothingForAnEmptyList) {
    const auto document = parsed("<a/>");
    document->removeNodes({});
    EXPECT_EQ(document->rootElement().name(), "a");
}

}  // namespace vornic::test
