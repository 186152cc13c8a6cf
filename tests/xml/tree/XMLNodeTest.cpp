#include <string>
#include <unordered_set>

#include <gtest/gtest.h>

#include "xml/tree/XMLDocument.h"
#include "xml/tree/XMLNode.h"

namespace vornic::test {

namespace {

class XMLNodeTest : public ::testing::Test {
  protected:
    void parse(const char* text) {
        ErrorSlot error;
        document_ = XMLDocument::parse(text, XMLMode::strict, error);
        ASSERT_NE(document_, nullptr) << error->description;
        root_ = document_->rootElement();
    }

    std::unique_ptr<XMLDocument> document_;
    XMLNode root_;
};

}  // namespace

TEST_F(XMLNodeTest, yieldsNothingWhenItIsNoNode) {
    const XMLNode none;
    EXPECT_FALSE(none);
    EXPECT_EQ(none.kind(), XMLNode::Kind::none);
    EXPECT_EQ(none.name(), "");
    EXPECT_EQ(none.stringValue(), "");
    EXPECT_FALSE(none.parent());
    EXPECT_FALSE(none.firstChild());
    EXPECT_FALSE(none.nextSibling());
    EXPECT_FALSE(none.previousSibling());
    EXPECT_EQ(none.attribute("a"), std::nullopt);
    EXPECT_TRUE(none.attributes().empty());
    none.setAttribute("a", "b");
    EXPECT_FALSE(none.addAttribute("a", "b"));
}

TEST_F(XMLNodeTest, reportsItsKindAndName) {
    parse("<?xml version='1.0'?><!DOCTYPE a><a b='c'>x<![CDATA[y]]><!--z--><?p q?></a>");
    EXPECT_EQ(document_->documentNode().kind(), XMLNode::Kind::document);
    EXPECT_EQ(document_->documentNode().name(), "");
    EXPECT_EQ(root_.kind(), XMLNode::Kind::element);
    EXPECT_EQ(root_.name(), "a");
    XMLNode child = root_.firstChild();
    EXPECT_EQ(child.kind(), XMLNode::Kind::text);
    EXPECT_EQ(child.name(), "");
    child = child.nextSibling();
    EXPECT_EQ(child.kind(), XMLNode::Kind::cdata);
    child = child.nextSibling();
    EXPECT_EQ(child.kind(), XMLNode::Kind::comment);
    child = child.nextSibling();
    EXPECT_EQ(child.kind(), XMLNode::Kind::processingInstruction);
    EXPECT_EQ(child.name(), "p");
    EXPECT_EQ(child.stringValue(), "q");
    EXPECT_EQ(root_.previousSibling().kind(), XMLNode::Kind::documentType);
    EXPECT_EQ(document_->documentNode().firstChild().kind(), XMLNode::Kind::declaration);
}

TEST_F(XMLNodeTest, findsItsWayAboutTheTree) {
    parse("<a><b/><c/></a>");
    const XMLNode b = root_.firstChild();
    EXPECT_EQ(b.nextSibling().name(), "c");
    EXPECT_EQ(b.nextSibling().previousSibling(), b);
    EXPECT_FALSE(b.previousSibling());
    EXPECT_EQ(b.parent(), root_);
    EXPECT_EQ(root_.parent(), document_->documentNode());
    EXPECT_FALSE(document_->documentNode().parent());
}

TEST_F(XMLNodeTest, joinsAllTextBelowAnElement) {
    parse("<a>x<b>y<![CDATA[<&]]></b><!-- no --><?no no?><c><d> z</d></c>&#33;</a>");
    EXPECT_EQ(root_.stringValue(), "xy<& z!");
    EXPECT_EQ(document_->documentNode().stringValue(), "xy<& z!");
    EXPECT_EQ(root_.firstChild().nextSibling().stringValue(), "y<&");
}

TEST_F(XMLNodeTest, leavesTextAfterAnElementOutOfItsValue) {
    parse("<a><b>x</b>y</a>");
    EXPECT_EQ(root_.firstChild().stringValue(), "x");
    EXPECT_EQ(root_.firstChild().nextSibling().stringValue(), "y");
}

TEST_F(XMLNodeTest, replacesReferencesInValues) {
    parse("<a b='&lt;&#233;&#x20AC;&#10;\t'>&amp;&#x1F600;\r\n</a>");
    EXPECT_EQ(root_.attribute("b"), "<é€\n ");
    EXPECT_EQ(root_.stringValue(), "&\xF0\x9F\x98\x80\n");
}

TEST_F(XMLNodeTest, listsAttributesInTheirOrder) {
    parse("<a z='1' b='2' m='3'/>");
    const std::vector<XMLNode> attributes = root_.attributes();
    ASSERT_EQ(attributes.size(), 3U);
    EXPECT_EQ(attributes[0].name(), "z");
    EXPECT_EQ(attributes[1].name(), "b");
    EXPECT_EQ(attributes[2].stringValue(), "3");
    EXPECT_EQ(attributes[2].kind(), XMLNode::Kind::attribute);
    EXPECT_EQ(attributes[2].parent(), root_);
    EXPECT_FALSE(attributes[2].firstChild());
    EXPECT_FALSE(attributes[2].nextSibling());
    EXPECT_FALSE(attributes[2].previousSibling());
    EXPECT_EQ(attributes[2].attribute("z"), std::nullopt);
}

TEST_F(XMLNodeTest, distinguishesAMissingAttributeFromAnEmptyOne) {
    parse("<a b=''/>");
    EXPECT_EQ(root_.attribute("b"), "");
    EXPECT_EQ(root_.attribute("c"), std::nullopt);
}

TEST_F(XMLNodeTest, setsAnAttributeInItsPlace) {
    parse("<a b='1' c='2'/>");
    root_.setAttribute("b", "<3>");
    EXPECT_EQ(root_.attribute("b"), "<3>");
    EXPECT_EQ(root_.attributes().front().name(), "b");
}

TEST_F(XMLNodeTest, setsAMissingAttributeAtTheEnd) {
    parse("<a b='1'/>");
    root_.setAttribute("c", std::string_view("two-not-this", 3));
    EXPECT_EQ(root_.attributes().back().name(), "c");
    EXPECT_EQ(root_.attribute("c"), "two");
}

TEST_F(XMLNodeTest, addsAnAttributeOnlyWhereItIsMissing) {
    parse("<a b='1'/>");
    EXPECT_FALSE(root_.addAttribute("b", "2"));
    EXPECT_TRUE(root_.addAttribute("c", "3"));
    EXPECT_EQ(root_.attribute("b"), "1");
    EXPECT_EQ(root_.attribute("c"), "3");
}

TEST_F(XMLNodeTest, canBeKeptInASet) {
    parse("<a b='1' c='2'><d/></a>");
    std::unordered_set<XMLNode> nodes = {root_, root_.firstChild(), root_.attributes()[0]};
    EXPECT_EQ(nodes.count(root_.attributes()[0]), 1U);
    EXPECT_EQ(nodes.count(root_.attributes()[1]), 0U);
    EXPECT_EQ(nodes.count(root_.firstChild()), 1U);
}

}  // namespace vornic::test
