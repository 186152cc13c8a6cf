#include <chrono>
#include <string>

#include <gtest/gtest.h>

#include "xml/reader/XMLReader.h"
#include "xml/text/XMLErrorCode.h"
#include "xml/tree/XMLDocument.h"

// Sizes that are bounded by memory alone. An operation that recursed on the depth would crash here,
// and one that took the square of the size would not end.

namespace vornic::test {

namespace {

constexpr std::size_t kDepth = 5'000'000;
constexpr std::size_t kMostBlanks = std::size_t{64} << 20U;
constexpr std::size_t kManyBytes = 100'000'000;

std::string nested(const std::string& name, std::size_t depth, const std::string& inside) {
    std::string text;
    text.reserve(depth * (2 * name.size() + 5) + inside.size());
    for (std::size_t level = 0; level < depth; ++level) {
        text += "<" + name + ">";
    }
    text += inside;
    for (std::size_t level = 0; level < depth; ++level) {
        text += "</" + name + ">";
    }
    return text;
}

std::string repeated(std::string_view piece, std::size_t count) {
    std::string text;
    text.reserve(piece.size() * count);
    for (std::size_t i = 0; i < count; ++i) {
        text += piece;
    }
    return text;
}

std::unique_ptr<XMLDocument> parsed(std::string text) {
    ErrorSlot error;
    auto document = XMLDocument::parse(std::move(text), XMLMode::tolerant, error);
    EXPECT_NE(document, nullptr) << error->description;
    return document;
}

std::size_t writtenSize(const XMLDocument& document) {
    std::size_t size = 0;
    EXPECT_TRUE(document.serialize([&size](std::string_view piece) {
        size += piece.size();
        return true;
    }));
    return size;
}

int faultCode(std::string_view text, XMLMode mode) {
    const XMLReading reading = readXML(text, mode);
    return reading.fault ? reading.fault->code : 0;
}

}  // namespace

TEST(XMLLimits, takeFiveMillionNestedElements) {
    const auto document = parsed(nested("a", kDepth, "<sequence>x</sequence>"));
    const XMLNode root = document->rootElement();
    EXPECT_EQ(root.stringValue(), "x");
    EXPECT_TRUE(XMLDocument::hasNodeForXPath(".//sequence", root));
    EXPECT_TRUE(XMLDocument::hasNodeForXPath(".//sequence[1]", root));
    EXPECT_FALSE(XMLDocument::hasNodeForXPath(".//project[1]", root));
    ErrorSlot error;
    const std::vector<XMLNode> found = XMLDocument::nodesForXPath(".//sequence", root, error);
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found[0].stringValue(), "x");
    // Each level has two lines; the outer ones are indented, up to 64 MiB.
    EXPECT_GT(writtenSize(*document), kMostBlanks);
    EXPECT_LT(writtenSize(*document), kMostBlanks + 2 * nested("a", kDepth, "").size());
    document->removeNode(root.firstChild());
    EXPECT_EQ(document->xmlString(), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<a/>\n");
}

TEST(XMLLimits, boundTheIndentationOfManySmallElementsFarInside) {
    constexpr std::size_t kCount = 1'000'000;
    const std::string text = nested("a", 64, repeated("<b/>", kCount));
    const auto document = parsed(text);
    const std::string written = document->xmlString();
    EXPECT_LT(written.size(), kMostBlanks + 2 * text.size());
    EXPECT_TRUE(written.ends_with("\n<b/>\n<b/>\n" + [] {
        std::string ends;
        for (int level = 0; level < 64; ++level) {
            ends += "</a>\n";
        }
        return ends;
    }()));
    // What was written is written the same once more, with a tree and without one.
    EXPECT_EQ(parsed(written)->xmlString(), written);
    EXPECT_TRUE(document->rootElement());
    EXPECT_EQ(document->xmlString(), written);
}

TEST(XMLLimits, indentWhatHasEnoughBesideItsBlanks) {
    // More than 64 MiB of blanks, four for each other byte at the most.
    const std::string text =
        nested("a", 64, repeated("<b>" + std::string(60, 'x') + "</b>", 400'000));
    const std::string written = parsed(text)->xmlString();
    EXPECT_GT(written.size(), text.size() + 400'000U * 256);
    EXPECT_EQ(written.find("\n<b>"), std::string::npos);
}

TEST(XMLLimits, adoptAHundredThousandAttributesOfTheRootElement) {
    std::string text = "<a";
    for (int i = 0; i < 100'000; ++i) {
        text += " b" + std::to_string(i) + "='" + std::to_string(i) + "'";
    }
    const auto document = parsed(text + "><c/></a>");
    document->setRootAttribute("b99999", "changed");
    document->setRootAttribute("added", "d");
    const auto start = std::chrono::steady_clock::now();
    EXPECT_TRUE(document->rootElement());
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
    EXPECT_EQ(document->rootElement().attributes().size(), 100'001U);
    EXPECT_EQ(document->rootAttribute("b99999"), "changed");
    EXPECT_EQ(document->rootAttribute("b99998"), "99998");
}

TEST(XMLLimits, findAndRemoveFiveMillionElementsInsideEachOther) {
    const auto document = parsed("<r>" + nested("a", kDepth, "") + "</r>");
    ErrorSlot error;
    const std::vector<XMLNode> found =
        XMLDocument::nodesForXPath(".//a", document->rootElement(), error);
    EXPECT_EQ(found.size(), kDepth);
    document->removeNodes(found);
    EXPECT_FALSE(document->rootElement().firstChild());
}

TEST(XMLLimits, removeNodesInsideEachOtherInTheWrongOrder) {
    const auto document = parsed("<r>" + nested("a", 200'000, "<b/><b/>") + "</r>");
    ErrorSlot error;
    std::vector<XMLNode> found =
        XMLDocument::nodesForXPath(".//b | .//a[b]", document->rootElement(), error);
    ASSERT_EQ(found.size(), 3U);
    std::swap(found.front(), found.back());
    document->removeNodes(found);
    EXPECT_FALSE(XMLDocument::hasNodeForXPath(".//b", document->rootElement()));
    EXPECT_TRUE(XMLDocument::hasNodeForXPath(".//a", document->rootElement()));
}

TEST(XMLLimits, orderAHundredThousandAddedAttributes) {
    const auto document = parsed("<r>" + repeated("<a/>", 100'000) + "</r>");
    for (XMLNode node = document->rootElement().firstChild(); node; node = node.nextSibling()) {
        node.setAttribute("b", "c");
    }
    ErrorSlot error;
    const std::vector<XMLNode> found =
        XMLDocument::nodesForXPath(".//@b", document->rootElement(), error);
    ASSERT_EQ(found.size(), 100'000U);
    EXPECT_EQ(found.back().parent().nextSibling(), XMLNode());
}

TEST(XMLLimits, takeMixedContentAtAnyDepth) {
    const auto document = parsed(nested("a", 1'000'000, " x <b/>"));
    EXPECT_EQ(document->rootElement().stringValue(), " x ");
    EXPECT_GT(writtenSize(*document), 1'000'000U);
}

TEST(XMLLimits, refuseFiveMillionElementsThatAreNeverClosed) {
    std::string text;
    for (std::size_t level = 0; level < kDepth; ++level) {
        text += "<a>";
    }
    EXPECT_EQ(faultCode(text, XMLMode::strict), static_cast<int>(XMLErrorCode::unclosedElement));
    EXPECT_EQ(faultCode(text, XMLMode::tolerant), static_cast<int>(XMLErrorCode::unclosedElement));
}

TEST(XMLLimits, takeAMillionAttributes) {
    std::string text = "<a";
    for (int i = 0; i < 1'000'000; ++i) {
        text += " b" + std::to_string(i) + "='" + std::to_string(i) + "'";
    }
    const auto document = parsed(text + "/>");
    EXPECT_EQ(document->rootElement().attributes().size(), 1'000'000U);
    EXPECT_EQ(document->rootElement().attribute("b999999"), "999999");
    EXPECT_GT(writtenSize(*document), text.size());
    EXPECT_EQ(faultCode(text + " b500000=''/>", XMLMode::strict),
              static_cast<int>(XMLErrorCode::repeatedAttribute));
}

TEST(XMLLimits, takeGroupsOfAnyDepthInTheDocumentType) {
    const std::string opening(1'000'000, '(');
    const std::string closing(1'000'000, ')');
    EXPECT_EQ(faultCode("<!DOCTYPE a [<!ELEMENT a " + opening + "b" + closing + ">]><a/>",
                        XMLMode::strict),
              0);
    EXPECT_NE(faultCode("<!DOCTYPE a [<!ELEMENT a " + opening + "b>]><a/>", XMLMode::strict), 0);
}

TEST(XMLLimits, refuseAHundredMegabytesOfLessThanSigns) {
    const std::string text(kManyBytes, '<');
    EXPECT_EQ(faultCode(text, XMLMode::strict), static_cast<int>(XMLErrorCode::textOutsideRoot));
    EXPECT_EQ(faultCode(text, XMLMode::tolerant), static_cast<int>(XMLErrorCode::textOutsideRoot));
}

TEST(XMLLimits, refuseMoreFaultsThanAreWorthMending) {
    for (const char* fault : {"<", "&", "]]>", "<b c/>"}) {
        EXPECT_EQ(faultCode("<a>" + repeated(fault, kXMLMendLimit + 1) + "</a>", XMLMode::tolerant),
                  static_cast<int>(XMLErrorCode::tooManyMends))
            << fault;
    }
    EXPECT_EQ(
        faultCode("<a><!--" + repeated("-", kXMLMendLimit + 2) + "--></a>", XMLMode::tolerant),
        static_cast<int>(XMLErrorCode::tooManyMends));
}

TEST(XMLLimits, mendAsManyFaultsAsTheyAllow) {
    EXPECT_EQ(faultCode("<a>" + repeated("&", kXMLMendLimit) + "</a>", XMLMode::tolerant), 0);
}

TEST(XMLLimits, refuseMoreForbiddenCharactersThanAreWorthDropping) {
    EXPECT_EQ(faultCode("<a>" + repeated("x\x01", kXMLMendLimit + 1) + "</a>", XMLMode::tolerant),
              static_cast<int>(XMLErrorCode::tooManyMends));
}

TEST(XMLLimits, dropARunOfForbiddenCharactersOfAnyLength) {
    const std::string text = "<a>" + repeated("\x01", 20'000'000) + "</a>";
    const XMLReading reading = readXML(text, XMLMode::tolerant);
    EXPECT_FALSE(reading.fault.has_value());
    EXPECT_EQ(reading.edits.size(), 1U);
    EXPECT_EQ(reading.droppedCharacters, 20'000'000U);
}

TEST(XMLLimits, placeManyMendsInOneLine) {
    std::string text = "<a>";
    for (int i = 0; i < 1'000'000; ++i) {
        text += "é & ";
    }
    const XMLReading reading = readXML(text + "</a>", XMLMode::tolerant);
    ASSERT_EQ(reading.mends.size(), 1'000'000U);
    EXPECT_EQ(reading.mends.back().line, 1U);
    EXPECT_EQ(reading.mends.back().column, 4U + 999'999U * 4U + 2U);
}

}  // namespace vornic::test
