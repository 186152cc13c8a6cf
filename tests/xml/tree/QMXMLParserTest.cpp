#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "base/Exception.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/machine/Unprivileged.h"
#include "tests/support/texts/LogCapture.h"
#include "xml/tree/QMXMLParser.h"
#include "xml/tree/XMLDocument.h"

namespace vornic {
namespace {

using Nodes = QMXMLParser::Nodes;
using Strings = std::vector<std::string>;

std::unique_ptr<XMLDocument> parsed(std::string_view text) {
    ErrorSlot error;
    std::unique_ptr<XMLDocument> document =
        XMLDocument::parse(std::string(text), XMLMode::strict, error);
    EXPECT_NE(document, nullptr) << (error ? error->localizedDescription() : "no error");
    return document;
}

/// Tests that look at the log.
class QMXMLParserTest : public ::testing::Test {
  protected:
    /// Makes a document with this in its root element `r` the one that is queried.
    void use(std::string_view content) {
        document = parsed("<r>" + std::string(content) + "</r>");
        root = document->rootElement();
    }
    [[nodiscard]] XMLNode first(std::string_view query) const {
        ErrorSlot error;
        const Nodes nodes = XMLDocument::nodesForXPath(query, root, error);
        EXPECT_FALSE(nodes.empty()) << query;
        return nodes.empty() ? XMLNode() : nodes.front();
    }
    /// The value of the attribute "n" of each node.
    static Strings numbers(const Nodes& nodes) {
        Strings values;
        for (const XMLNode& node : nodes) {
            values.push_back(node.attribute("n").value_or("none"));
        }
        return values;
    }

    test::Unprivileged unprivileged;
    test::Sandbox sandbox;
    test::LogCapture log;
    std::unique_ptr<XMLDocument> document;
    XMLNode root;
};

using EscapeQueryString = QMXMLParserTest;

TEST_F(EscapeQueryString, yieldsAnEmptyStringForAnEmptyOne) {
    EXPECT_EQ(QMXMLParser::escapeQueryString(""), "");
}

TEST_F(EscapeQueryString, keepsOrdinaryQueries) {
    EXPECT_EQ(QMXMLParser::escapeQueryString(".//a[@b='<c>' and d=\"e\"]"),
              ".//a[@b='<c>' and d=\"e\"]");
}

TEST_F(EscapeQueryString, writesUnitsFrom160OnAsReferences) {
    EXPECT_EQ(QMXMLParser::escapeQueryString("caf\xC3\xA9"), "caf&#233;");
    EXPECT_EQ(QMXMLParser::escapeQueryString("\xC2\xA0"), "&#160;");
    EXPECT_EQ(QMXMLParser::escapeQueryString("\xEF\xBF\xBD"), "&#65533;");
}

TEST_F(EscapeQueryString, keepsUnitsFrom127To159) {
    EXPECT_EQ(QMXMLParser::escapeQueryString("\x7F\xC2\x80\xC2\x9F"), "\x7F\xC2\x80\xC2\x9F");
}

TEST_F(EscapeQueryString, writesACharacterOutsideTheBasicPlaneAsItsTwoUnits) {
    EXPECT_EQ(QMXMLParser::escapeQueryString("\xF0\x9F\x98\x80"), "&#55357;&#56832;");
}

TEST_F(EscapeQueryString, takesAByteThatIsNoUtf8ForTheReplacementCharacter) {
    EXPECT_EQ(QMXMLParser::escapeQueryString("a\xE9z"), "a&#65533;z");
}

TEST_F(EscapeQueryString, keepsAnEscapedAmpersand) {
    EXPECT_EQ(QMXMLParser::escapeQueryString("&amp;"), "&amp;");
    EXPECT_EQ(QMXMLParser::escapeQueryString("a&amp;b&amp;"), "a&amp;b&amp;");
}

TEST_F(EscapeQueryString, escapesALoneAmpersand) {
    EXPECT_EQ(QMXMLParser::escapeQueryString("R&D x"), "R&amp;D x");
    EXPECT_EQ(QMXMLParser::escapeQueryString("&lt;a"), "&amp;lt;a");
    EXPECT_EQ(QMXMLParser::escapeQueryString("&amp a"), "&amp;amp a");
}

TEST_F(EscapeQueryString, escapesAnAmpersandTooNearTheEndToLookAhead) {
    EXPECT_EQ(QMXMLParser::escapeQueryString("abc&"), "abc&amp;");
    EXPECT_EQ(QMXMLParser::escapeQueryString("&abc"), "&amp;abc");
    EXPECT_EQ(QMXMLParser::escapeQueryString("abcd&amp"), "abcd&amp;amp");
}

TEST_F(EscapeQueryString, raisesForAShortStringWithAnAmpersand) {
    for (const char* query : {"&", "&a", "a&", "&ab", "a&b", "ab&", "&&&"}) {
        EXPECT_THROW(QMXMLParser::escapeQueryString(query), platform::RangeException) << query;
    }
}

TEST_F(EscapeQueryString, countsUnitsAndNotBytesForTheShortString) {
    // Three units, six bytes.
    EXPECT_THROW(QMXMLParser::escapeQueryString("\xC3\xA9&\xE2\x82\xAC"), platform::RangeException);
    // Four units, five and seven bytes.
    EXPECT_EQ(QMXMLParser::escapeQueryString("\xC3\xA9&ab"), "&#233;&amp;ab");
    EXPECT_EQ(QMXMLParser::escapeQueryString("\xF0\x9F\x98\x80&a"), "&#55357;&#56832;&amp;a");
}

TEST_F(EscapeQueryString, countsUnitsForTheLookAhead) {
    EXPECT_EQ(QMXMLParser::escapeQueryString("\xF0\x9F\x98\x80&amp;"), "&#55357;&#56832;&amp;");
}

TEST_F(EscapeQueryString, writesACarriageReturnAsAReference) {
    EXPECT_EQ(QMXMLParser::escapeQueryString("a\rb"), "a&#13;b");
    EXPECT_EQ(log.entries(), Strings{});
}

TEST_F(EscapeQueryString, dropsAndLogsOtherUnitsBelow20) {
    EXPECT_EQ(QMXMLParser::escapeQueryString(std::string_view("a\t\n\x13"
                                                              "b\0c",
                                                              7)),
              "abc");
    const Strings entries = log.entries();
    ASSERT_EQ(entries.size(), 4U);
    EXPECT_EQ(entries[2], "Stripped character \x13");
    for (const std::string& entry : entries) {
        EXPECT_TRUE(entry.starts_with("Stripped character")) << entry;
    }
}

TEST_F(EscapeQueryString, keepsUnitsFrom20To31) {
    EXPECT_EQ(QMXMLParser::escapeQueryString("\x14\x1F"), "\x14\x1F");
    EXPECT_EQ(log.entries(), Strings{});
}

using NodesForQuery = QMXMLParserTest;

TEST_F(NodesForQuery, findsNodesInDocumentOrder) {
    use("<a n='1'/><b><a n='2'/></b><a n='3'/>");
    EXPECT_EQ(numbers(QMXMLParser::nodesForQuery(".//a", root).value()), (Strings{"1", "2", "3"}));
}

TEST_F(NodesForQuery, findsAnEmptyListWhenNothingMatches) {
    use("<a/>");
    EXPECT_EQ(QMXMLParser::nodesForQuery("./b", root), Nodes{});
    EXPECT_EQ(log.entries(), Strings{});
}

TEST_F(NodesForQuery, logsAnErrorAndYieldsNone) {
    use("<a/>");
    EXPECT_EQ(QMXMLParser::nodesForQuery("./[", root), std::nullopt);
    ASSERT_EQ(log.entries().size(), 1U);
    EXPECT_TRUE(log.entries()[0].starts_with("XML parsing error: ")) << log.entries()[0];
    EXPECT_GT(log.entries()[0].size(), std::string("XML parsing error: ").size());
}

TEST_F(NodesForQuery, runsTheEscapedQuery) {
    use("<a>R&amp;D</a><a>R&amp;amp;D</a>");
    // The ampersand of the query is escaped, so it finds the text that holds the escape.
    const Nodes nodes = QMXMLParser::nodesForQuery("./a[.='R&D']", root).value();
    ASSERT_EQ(nodes.size(), 1U);
    EXPECT_EQ(nodes[0].stringValue(), "R&amp;D");
}

TEST_F(NodesForQuery, runsFromTheDocumentNodeToo) {
    use("<a n='1'/>");
    EXPECT_EQ(numbers(QMXMLParser::nodesForQuery("./r/a", document->documentNode()).value()),
              Strings{"1"});
}

TEST_F(NodesForQuery, findsNothingWithoutANode) {
    EXPECT_EQ(QMXMLParser::nodesForQuery("./a", XMLNode()).value_or(Nodes()), Nodes{});
    EXPECT_FALSE(QMXMLParser::nodeForQuery("./a", XMLNode()));
    EXPECT_EQ(QMXMLParser::stringValueForQuery("./a", XMLNode()), std::nullopt);
    EXPECT_EQ(QMXMLParser::stringValuesForQuery("./a", XMLNode()), std::nullopt);
    EXPECT_EQ(QMXMLParser::nameForNode(XMLNode()), std::nullopt);
    EXPECT_EQ(QMXMLParser::uuidForNode(XMLNode()), std::nullopt);
    EXPECT_EQ(QMXMLParser::idAttributeForNode(XMLNode()), std::nullopt);
    EXPECT_FALSE(QMXMLParser::nodeParentWithName(XMLNode(), "a"));
    EXPECT_FALSE(QMXMLParser::nextSiblingForNode(XMLNode()));
}

TEST_F(NodesForQuery, nodeForQueryYieldsTheFirstOrNone) {
    use("<a n='1'/><a n='2'/>");
    EXPECT_EQ(QMXMLParser::nodeForQuery("./a", root).attribute("n"), "1");
    EXPECT_FALSE(QMXMLParser::nodeForQuery("./b", root));
    EXPECT_FALSE(QMXMLParser::nodeForQuery("./[", root));
    EXPECT_EQ(log.entries().size(), 1U);
}

using StringValues = QMXMLParserTest;

TEST_F(StringValues, yieldsTheFirstValue) {
    use("<a>one<b>two</b></a><a>three</a>");
    EXPECT_EQ(QMXMLParser::stringValueForQuery("./a", root), "onetwo");
    EXPECT_EQ(QMXMLParser::stringValueForQuery("./a[2]", root), "three");
}

TEST_F(StringValues, distinguishesAnEmptyValueFromNone) {
    use("<a/>");
    EXPECT_EQ(QMXMLParser::stringValueForQuery("./a", root), "");
    EXPECT_EQ(QMXMLParser::stringValueForQuery("./b", root), std::nullopt);
}

TEST_F(StringValues, ignoresErrors) {
    use("<a/>");
    EXPECT_EQ(QMXMLParser::stringValueForQuery("./[", root), std::nullopt);
    EXPECT_EQ(QMXMLParser::stringValuesForQuery("./[", root), std::nullopt);
    EXPECT_EQ(log.entries(), Strings{});
}

TEST_F(StringValues, yieldsAllValuesOrNoneAtAll) {
    use("<a>one</a><a b='x'/><a>two</a>");
    EXPECT_EQ(QMXMLParser::stringValuesForQuery("./a", root), (Strings{"one", "", "two"}));
    EXPECT_EQ(QMXMLParser::stringValuesForQuery("./a/@b", root), Strings{"x"});
    EXPECT_EQ(QMXMLParser::stringValuesForQuery("./b", root), std::nullopt);
}

TEST_F(StringValues, escapesTheQuery) {
    use("<a>R&amp;amp;D</a>");
    EXPECT_EQ(QMXMLParser::stringValueForQuery("./a[.='R&D']", root), "R&amp;D");
    EXPECT_EQ(QMXMLParser::stringValuesForQuery("./a[.='R&D']", root), Strings{"R&amp;D"});
    EXPECT_THROW(static_cast<void>(QMXMLParser::stringValueForQuery("&a", root)),
                 platform::RangeException);
}

using SeveralQueries = QMXMLParserTest;

TEST_F(SeveralQueries, queryNodesKeepsDuplicatesInTheOrderOfTheNodes) {
    use("<b><a n='1'/></b><a n='2'/>");
    EXPECT_EQ(numbers(QMXMLParser::queryNodes({first("./b"), root, first("./b")}, ".//a")),
              (Strings{"1", "1", "2", "1"}));
}

TEST_F(SeveralQueries, queryNodesYieldsAnEmptyListForNothing) {
    use("<a/>");
    EXPECT_EQ(QMXMLParser::queryNodes({}, "./a"), Nodes{});
    EXPECT_EQ(QMXMLParser::queryNodes({root}, "./b"), Nodes{});
    EXPECT_EQ(QMXMLParser::queryNodes({root}, "./["), Nodes{});
    EXPECT_EQ(log.entries(), Strings{});
}

TEST_F(SeveralQueries, queryNodesEscapesTheQuery) {
    use("<a n='1'>R&amp;amp;D</a>");
    EXPECT_EQ(numbers(QMXMLParser::queryNodes({root}, "./a[.='R&D']")), Strings{"1"});
}

TEST_F(SeveralQueries, unitesResultsInFirstSeenOrder) {
    use("<a n='1'/><b n='2'/><a n='3'/>");
    EXPECT_EQ(numbers(QMXMLParser::nodeNodesFromQueries(root, {"./b", "./*", "./a[2]"})),
              (Strings{"2", "1", "3"}));
    EXPECT_EQ(QMXMLParser::nodeNodesFromQueries(root, {}), Nodes{});
}

TEST_F(SeveralQueries, distinguishesAttributesOfOneElement) {
    use("<a b='1' c='2'/>");
    EXPECT_EQ(QMXMLParser::nodeNodesFromQueries(root, {"./a/@b", "./a/@*", "./a"}).size(), 3U);
}

TEST_F(SeveralQueries, logsAnErrorAgainAfterEachLaterQuery) {
    use("<a n='1'/>");
    EXPECT_EQ(numbers(QMXMLParser::nodeNodesFromQueries(root, {"./a", "./[", "./a", "./b"})),
              Strings{"1"});
    const Strings entries = log.entries();
    ASSERT_EQ(entries.size(), 3U);
    EXPECT_TRUE(entries[0].starts_with("XML parsing error: ")) << entries[0];
    EXPECT_EQ(entries[1], entries[0]);
    EXPECT_EQ(entries[2], entries[0]);
}

TEST_F(SeveralQueries, clearsTheSlotForEachCall) {
    use("<a/>");
    EXPECT_EQ(QMXMLParser::nodeNodesFromQueries(root, {"./["}), Nodes{});
    EXPECT_EQ(QMXMLParser::nodeNodesFromQueries(root, {"./a"}).size(), 1U);
    EXPECT_EQ(log.entries().size(), 1U);
}

TEST_F(SeveralQueries, escapesEachOfThem) {
    use("<a n='1'>R&amp;amp;D</a>");
    EXPECT_EQ(numbers(QMXMLParser::nodeNodesFromQueries(root, {"./a[.='R&D']"})), Strings{"1"});
}

using NamesAndIdentifiers = QMXMLParserTest;

TEST_F(NamesAndIdentifiers, decodesTheAttributeId) {
    use("<a id='my%20clip'/><a id='100%'/><a id='%C3%A9'/><a/><a id=''/>");
    EXPECT_EQ(QMXMLParser::idAttributeForNode(first("./a[1]")), "my clip");
    EXPECT_EQ(QMXMLParser::idAttributeForNode(first("./a[2]")), std::nullopt);
    EXPECT_EQ(QMXMLParser::idAttributeForNode(first("./a[3]")), std::nullopt);
    EXPECT_EQ(QMXMLParser::idAttributeForNode(first("./a[4]")), std::nullopt);
    EXPECT_EQ(QMXMLParser::idAttributeForNode(first("./a[5]")), "");
}

TEST_F(NamesAndIdentifiers, readsTheNameOfTheImmediateChildFirst) {
    use("<a id='3'><b><name>inner</name></b><name>my%20clip</name><name>second</name></a>");
    EXPECT_EQ(QMXMLParser::nameForNode(first("./a")), "my clip");
    EXPECT_EQ(QMXMLParser::nameForNode(first("./a"), true), "my clip");
}

TEST_F(NamesAndIdentifiers, looksDeeperForTheNameUnlessToldNotTo) {
    use("<a id='3'><b><name>inner%21</name></b></a>");
    EXPECT_EQ(QMXMLParser::nameForNode(first("./a")), "inner!");
    EXPECT_EQ(QMXMLParser::nameForNode(first("./a"), false), "inner!");
    EXPECT_EQ(QMXMLParser::nameForNode(first("./a"), true), std::nullopt);
}

TEST_F(NamesAndIdentifiers, takesTheAttributeIdForTheNameAtLast) {
    use("<a id='clip%2D1'/><a id='50%'/><a/>");
    EXPECT_EQ(QMXMLParser::nameForNode(first("./a[1]")), "clip-1");
    EXPECT_EQ(QMXMLParser::nameForNode(first("./a[1]"), true), std::nullopt);
    EXPECT_EQ(QMXMLParser::nameForNode(first("./a[2]")), "50%");
    EXPECT_EQ(QMXMLParser::nameForNode(first("./a[3]")), std::nullopt);
}

TEST_F(NamesAndIdentifiers, looksNoFurtherAmongSiblingsThanTheFirstName) {
    use("<a id='3'><name/><b><name>inner</name></b></a><a id='4'><name/><name>second</name></a>");
    EXPECT_EQ(QMXMLParser::nameForNode(first("./a")), "inner");
    EXPECT_EQ(QMXMLParser::nameForNode(first("./a[2]")), "4");
}

TEST_F(NamesAndIdentifiers, readsANameInASection) {
    use("<a><name><![CDATA[a<b]]></name></a>");
    EXPECT_EQ(QMXMLParser::nameForNode(first("./a")), "a<b");
}

TEST_F(NamesAndIdentifiers, keepsANameThatCannotBeDecoded) {
    use("<a><name>100% caf%C3%A9</name></a><a><name>caf%C3%A9</name></a>"
        "<a><name>caf\xC3\xA9%20x</name></a>");
    EXPECT_EQ(QMXMLParser::nameForNode(first("./a[1]")), "100% caf%C3%A9");
    EXPECT_EQ(QMXMLParser::nameForNode(first("./a[2]")), "caf%C3%A9");
    EXPECT_EQ(QMXMLParser::nameForNode(first("./a[3]")), "caf\xC3\xA9 x");
}

TEST_F(NamesAndIdentifiers, readsTheUuidLikeTheNameButNoAttribute) {
    use("<a id='3'><b><uuid>in%20ner</uuid></b><uuid>A%2D1</uuid></a>"
        "<a id='3'><b><uuid>in%20ner</uuid></b></a><a id='3' uuid='4'/>"
        "<a><uuid>5%</uuid></a>");
    EXPECT_EQ(QMXMLParser::uuidForNode(first("./a[1]")), "A-1");
    EXPECT_EQ(QMXMLParser::uuidForNode(first("./a[1]"), true), "A-1");
    EXPECT_EQ(QMXMLParser::uuidForNode(first("./a[2]")), "in ner");
    EXPECT_EQ(QMXMLParser::uuidForNode(first("./a[2]"), true), std::nullopt);
    EXPECT_EQ(QMXMLParser::uuidForNode(first("./a[3]")), std::nullopt);
    EXPECT_EQ(QMXMLParser::uuidForNode(first("./a[4]")), "5%");
}

using FilenameFromPathURL = QMXMLParserTest;

TEST_F(FilenameFromPathURL, yieldsNoneForNone) {
    EXPECT_EQ(QMXMLParser::filenameFromPathURLString(std::nullopt), std::nullopt);
    EXPECT_EQ(QMXMLParser::filenameFromPathURLString(""), "");
}

TEST_F(FilenameFromPathURL, yieldsTheDecodedPathOfAURL) {
    EXPECT_EQ(QMXMLParser::filenameFromPathURLString("file://localhost/Volumes/My%20Disk/a%23.mov"),
              "/Volumes/My Disk/a#.mov");
    EXPECT_EQ(QMXMLParser::filenameFromPathURLString("file:///a/caf%C3%A9%FF"),
              "/a/caf\xC3\xA9\xFF");
    EXPECT_EQ(QMXMLParser::filenameFromPathURLString("/a%20b"), "/a b");
}

using Ancestors = QMXMLParserTest;

TEST_F(Ancestors, findsTheNearestElementOfTheName) {
    use("<a n='1'><b><a n='2'><c/></a></b></a>");
    EXPECT_EQ(QMXMLParser::nodeParentWithName(first(".//c"), "a").attribute("n"), "2");
    EXPECT_EQ(QMXMLParser::nodeParentWithName(first(".//b"), "a").attribute("n"), "1");
    EXPECT_EQ(QMXMLParser::nodeParentWithName(first(".//c"), "r"), root);
}

TEST_F(Ancestors, startsAboveTheNode) {
    use("<a n='1'><a n='2'/></a>");
    EXPECT_EQ(QMXMLParser::nodeParentWithName(first("./a/a"), "a").attribute("n"), "1");
    EXPECT_FALSE(QMXMLParser::nodeParentWithName(first("./a"), "a"));
    EXPECT_FALSE(QMXMLParser::nodeParentWithName(root, "r"));
}

TEST_F(Ancestors, stopsAtALimit) {
    use("<a><b><c/></b></a>");
    EXPECT_FALSE(QMXMLParser::nodeParentWithName(first(".//c"), "a", {"x", "b"}));
    EXPECT_TRUE(QMXMLParser::nodeParentWithName(first(".//c"), "b", {"a"}));
    EXPECT_TRUE(QMXMLParser::nodeParentWithName(first(".//c"), "a", {}));
}

TEST_F(Ancestors, neverFindsANameThatIsALimit) {
    use("<a><b><c/></b></a>");
    EXPECT_FALSE(QMXMLParser::nodeParentWithName(first(".//c"), "b", {"b"}));
}

TEST_F(Ancestors, findsTheElementOfAnAttributeAndOfAText) {
    use("<a n='1' id='x'>text</a>");
    EXPECT_EQ(QMXMLParser::nodeParentWithName(first("./a/@id"), "a").attribute("n"), "1");
    EXPECT_EQ(QMXMLParser::nodeParentWithName(first("./a/text()"), "a").attribute("n"), "1");
}

TEST_F(Ancestors, doesNotFindTheDocument) {
    use("<a/>");
    EXPECT_FALSE(QMXMLParser::nodeParentWithName(first("./a"), ""));
}

using NextSibling = QMXMLParserTest;

TEST_F(NextSibling, yieldsTheSiblingAndElseThatOfTheNearestAncestor) {
    use("<a><b><c/></b></a><d n='1'/>");
    EXPECT_EQ(QMXMLParser::nextSiblingForNode(first("./a")).attribute("n"), "1");
    EXPECT_EQ(QMXMLParser::nextSiblingForNode(first(".//c")).attribute("n"), "1");
    EXPECT_FALSE(QMXMLParser::nextSiblingForNode(first("./d")));
    EXPECT_FALSE(QMXMLParser::nextSiblingForNode(root));
}

TEST_F(NextSibling, takesTextAndCommentsForNodes) {
    use("<a/>text<b/><!--c-->");
    EXPECT_EQ(QMXMLParser::nextSiblingForNode(first("./a")).kind(), XMLNode::Kind::text);
    EXPECT_EQ(QMXMLParser::nextSiblingForNode(first("./b")).kind(), XMLNode::Kind::comment);
}

TEST_F(NextSibling, findsNoIndentationWhateverElseTheDocumentHolds) {
    for (const char* rest : {"", "<p>mixed <b/> content</p>"}) {
        use(std::string("<x>\n <a/>\n </x>\n <d n='1'/>") + rest);
        EXPECT_EQ(QMXMLParser::nextSiblingForNode(first("./x/a")).attribute("n"), "1") << rest;
    }
}

class AffectedNodes : public QMXMLParserTest {
  protected:
    /// A clip item with its number and edges; no edge for "".
    static std::string item(const char* name, int number, const std::string& start,
                            const std::string& end) {
        std::string text = "<" + std::string(name) + " n='" + std::to_string(number) + "'>";
        text += start.empty() ? "" : "<start>" + start + "</start>";
        text += end.empty() ? "" : "<end>" + end + "</end>";
        return text + "</" + name + ">\n";
    }
    static std::string clip(int number, const std::string& start, const std::string& end) {
        return item("clipitem", number, start, end);
    }
    static std::string transition(int number, const std::string& start, const std::string& end) {
        return item("transitionitem", number, start, end);
    }
    /// The numbers of the chain of the clip with the number; its range goes to the members.
    Strings chainOf(int number) {
        return numbers(QMXMLParser::affectedNodesForClip(
            first("./*[@n='" + std::to_string(number) + "']"), &rangeStart, &rangeEnd));
    }
    void expectRange(std::int64_t start, std::int64_t end) const {
        EXPECT_EQ(rangeStart, start);
        EXPECT_EQ(rangeEnd, end);
    }

    std::int64_t rangeStart = 4711;
    std::int64_t rangeEnd = 4711;
};

TEST_F(AffectedNodes, yieldsAClipWithoutTransitionsAlone) {
    use(clip(1, "0", "10") + clip(2, "10", "20") + clip(3, "20", "30"));
    EXPECT_EQ(chainOf(2), Strings{"2"});
    expectRange(10, 20);
}

TEST_F(AffectedNodes, followsATransitionBackwardsToTheClipBeforeIt) {
    use(clip(1, "100", "-1") + transition(2, "140", "160") + clip(3, "-1", "200"));
    EXPECT_EQ(chainOf(3), (Strings{"1", "2", "3"}));
    expectRange(100, 200);
}

TEST_F(AffectedNodes, followsATransitionForwardsToTheClipAfterIt) {
    use(clip(1, "100", "-1") + transition(2, "140", "160") + clip(3, "-1", "200"));
    EXPECT_EQ(chainOf(1), (Strings{"1", "2", "3"}));
    expectRange(100, 200);
}

TEST_F(AffectedNodes, followsAWholeChainInBothDirections) {
    use(clip(1, "0", "50") + clip(2, "50", "-1") + transition(3, "60", "70") + clip(4, "-1", "-1") +
        transition(5, "80", "90") + clip(6, "-1", "-1") + transition(7, "95", "99") +
        clip(8, "-1", "120") + clip(9, "120", "130"));
    EXPECT_EQ(chainOf(4), (Strings{"2", "3", "4", "5", "6", "7", "8"}));
    expectRange(50, 120);
}

TEST_F(AffectedNodes, endsAtATransitionThatBeginsOrEndsTheChain) {
    use(clip(1, "0", "50") + transition(2, "60", "70") + clip(3, "-1", "-1") +
        transition(4, "80", "90") + clip(5, "95", "100"));
    EXPECT_EQ(chainOf(3), (Strings{"2", "3", "4"}));
    expectRange(60, 90);
}

TEST_F(AffectedNodes, takesTheEdgeOfANeighbourThatIsNoTransition) {
    use(clip(1, "5", "-1") + clip(2, "-1", "-1") + clip(3, "-1", "33"));
    EXPECT_EQ(chainOf(2), (Strings{"1", "2", "3"}));
    expectRange(5, 33);
}

TEST_F(AffectedNodes, staysJoinedOnlyAcrossATransition) {
    use(clip(1, "1", "-1") + clip(2, "5", "6") + clip(3, "-1", "-1") + clip(4, "7", "8") +
        clip(5, "-1", "9"));
    EXPECT_EQ(chainOf(3), (Strings{"2", "3", "4"}));
    expectRange(5, 8);
}

TEST_F(AffectedNodes, keepsMinusOneWhenTheSiblingsRunOut) {
    use(transition(1, "-1", "-1") + clip(2, "-1", "-1") + transition(3, "-1", "-1"));
    EXPECT_EQ(chainOf(2), (Strings{"1", "2", "3"}));
    expectRange(-1, -1);
    use(clip(1, "-1", "-1"));
    EXPECT_EQ(chainOf(1), Strings{"1"});
    expectRange(-1, -1);
}

TEST_F(AffectedNodes, stopsAtAnItemWithoutEdges) {
    use(clip(1, "1", "2") + item("generatoritem", 2, "", "") + clip(3, "-1", "-1") +
        item("generatoritem", 4, "", "") + clip(5, "9", "10"));
    EXPECT_EQ(chainOf(3), (Strings{"2", "3", "4"}));
    expectRange(0, 0);
}

TEST_F(AffectedNodes, readsEdgesThatAreNoNumbersAsZero) {
    use(clip(1, "soon", "12 frames"));
    EXPECT_EQ(chainOf(1), Strings{"1"});
    expectRange(0, 12);
    use(clip(1, "", ""));
    EXPECT_EQ(chainOf(1), Strings{"1"});
    expectRange(0, 0);
}

TEST_F(AffectedNodes, takesOnlyMinusOneToTheLetterForAJoint) {
    use(clip(1, "5", "-1") + transition(2, "6", "7") + clip(3, " -1", "-01"));
    EXPECT_EQ(chainOf(3), Strings{"3"});
    expectRange(-1, -1);
}

TEST_F(AffectedNodes, passesOverCommentsAndTextBetweenItems) {
    use(clip(1, "100", "-1") + "<!-- cut -->" + transition(2, "140", "160") + " text " +
        clip(3, "-1", "200"));
    EXPECT_EQ(chainOf(3), (Strings{"1", "2", "3"}));
    expectRange(100, 200);
}

TEST_F(AffectedNodes, needsNoOutputs) {
    use(clip(1, "100", "-1") + transition(2, "140", "160") + clip(3, "-1", "200"));
    const XMLNode node = first("./*[@n='3']");
    EXPECT_EQ(numbers(QMXMLParser::affectedNodesForClip(node)), (Strings{"1", "2", "3"}));
    EXPECT_EQ(numbers(QMXMLParser::affectedNodesForClip(node, &rangeStart, nullptr)),
              (Strings{"1", "2", "3"}));
    expectRange(100, 4711);
    rangeStart = 4711;
    static_cast<void>(QMXMLParser::affectedNodesForClip(node, nullptr, &rangeEnd));
    expectRange(4711, 200);
}

TEST_F(AffectedNodes, followsAVeryLongChain) {
    std::string track = clip(0, "0", "-1");
    constexpr int kItems = 3000;
    for (int number = 1; number < kItems; ++number) {
        track += transition(number, "1", "2") + clip(number, "-1", "-1");
    }
    use(track + transition(kItems, "7", "8"));
    EXPECT_EQ(
        QMXMLParser::affectedNodesForClip(first("./clipitem[1500]"), &rangeStart, &rangeEnd).size(),
        2U * kItems);
    expectRange(0, 8);
}

}  // namespace
}  // namespace vornic
