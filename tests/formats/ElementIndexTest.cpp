#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "formats/ElementIndexBuilder.h"
#include "tests/formats/IndexRules.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/texts/SampleFiles.h"
#include "xml/text/TextDecoding.h"

namespace vornic {
namespace {

using Elements = std::vector<ElementNumber>;

ElementIndex indexOf(std::string_view text) {
    ElementIndexBuilder builder(text);
    (void)readXML(text, XMLMode::tolerant, &builder);
    return std::move(builder).finish();
}

constexpr std::string_view kProject =
    "<?xml version='1.0'?>\n<fcpxml version=\"1.10\">\n  <resources>\n"
    "    <format id=\"r1\" name=\"F\"/>\n"
    "    <asset id=\" r2 \" format=\"r1\"><media-rep src=\"file:///a.mov\"/></asset>\n"
    "  </resources>\n  <project name=\"Cut\"><sequence format='r1'><spine>\n"
    "    <asset-clip ref=\"r2\" name=\"Harbour\"></asset-clip><asset-clip ref=\"r9\"/>\n"
    "  </spine></sequence></project>\n</fcpxml>\n";

TEST(ElementIndex, knowsWhatLiesInWhat) {
    const std::string text = "<a><b><c/></b><b/>x<d>y</d></a>";
    const ElementIndex index = indexOf(text);
    ASSERT_EQ(index.size(), 5U);
    EXPECT_EQ(index.parentOf(0), kNoElement);
    EXPECT_EQ(index.parentOf(2), 1U);
    EXPECT_EQ(index.firstChildOf(0), 1U);
    EXPECT_EQ(index.firstChildOf(2), kNoElement);
    EXPECT_EQ(index.nextSiblingOf(1), 3U);
    EXPECT_EQ(index.nextSiblingOf(4), kNoElement);
    EXPECT_EQ(index.nextSiblingOf(0), kNoElement);
    EXPECT_EQ(index.endOf(1), 3U);
    EXPECT_EQ(index.childOf(0, "d"), 4U);
    EXPECT_EQ(index.childOf(0, "c"), kNoElement);
    EXPECT_EQ(index.ancestorOf(2, "a"), 0U);
    EXPECT_EQ(index.ancestorOf(0, "a"), kNoElement);
    EXPECT_EQ(index.nameOf(2), "c");
}

TEST(ElementIndex, numbersDifferentNames) {
    const ElementIndex index = indexOf("<a><b/><a/><c/><b/></a>");
    ASSERT_EQ(index.nameCount(), 3U);
    EXPECT_EQ(index.nameNumberOf(1), index.nameNumberOf(4));
    EXPECT_NE(index.nameNumberOf(1), index.nameNumberOf(3));
    EXPECT_EQ(index.nameNumbered(index.nameNumberOf(3)), "c");
}

TEST(ElementIndex, knowsWhatTheReadingEndedIn) {
    const ElementIndex index = indexOf("<a><b>x</b><c><d/>");
    EXPECT_FALSE(index.isClosed(0));
    EXPECT_TRUE(index.isClosed(1));
    EXPECT_FALSE(index.isClosed(2));
    EXPECT_TRUE(index.isClosed(3));
}

TEST(ElementIndex, knowsWhereEachElementIs) {
    const std::string text = "<a ><b c='>'>x<!-- </b> --></b ><d/></a>";
    const ElementIndex index = indexOf(text);
    EXPECT_EQ(index.spanOf(1).of(text), "<b c='>'>x<!-- </b> --></b >");
    EXPECT_EQ(index.startTagOf(0).of(text), "<a >");
    EXPECT_EQ(index.startTagOf(1).of(text), "<b c='>'>");
    EXPECT_EQ(index.contentOf(1).of(text), "x<!-- </b> -->");
    EXPECT_EQ(index.startTagOf(2).of(text), "<d/>");
    EXPECT_TRUE(index.isEmpty(2));
    EXPECT_FALSE(index.isEmpty(1));
}

TEST(ElementIndex, findsValuesInTheText) {
    const std::string text = "<a b='1' c = \"2 &amp; 3\" d=4 e><f> x\n</f><f/><g><h/></g></a>";
    const ElementIndex index = indexOf(text);
    EXPECT_EQ(index.attributeTextOf(0, "b"), "1");
    EXPECT_EQ(index.attributeTextOf(0, "c"), "2 &amp; 3");
    EXPECT_EQ(index.attributeTextOf(0, "d"), "4");
    EXPECT_EQ(index.attributeOf(0, "e")->length, 0U);
    EXPECT_EQ(index.attributeOf(0, "f"), std::nullopt);
    EXPECT_EQ(index.childTextOf(0, "f"), "x");
    EXPECT_EQ(index.textOf(1)->of(text), "x");
    EXPECT_EQ(index.textOf(2)->length, 0U);
    EXPECT_EQ(index.textOf(3), std::nullopt);
    EXPECT_EQ(index.childTextOf(0, "g"), "");
}

TEST(ElementIndex, knowsTheElementOfAnOffset) {
    const std::string text = " <a><b>x</b>y</a> ";
    const ElementIndex index = indexOf(text);
    EXPECT_EQ(index.elementAt(0), kNoElement);
    EXPECT_EQ(index.elementAt(1), 0U);
    EXPECT_EQ(index.elementAt(text.find('x')), 1U);
    EXPECT_EQ(index.elementAt(text.find('y')), 0U);
    EXPECT_EQ(index.elementAt(text.size() - 1), kNoElement);
}

TEST(ElementIndex, ofFCPXMLListsReferencesMediaAndIds) {
    const ElementIndex index = indexOf(kProject);
    EXPECT_EQ(index.kind(), FileKind::fcpxml);
    EXPECT_EQ(index.version(), "1.10");
    EXPECT_EQ(index.elementsWithAttribute("ref"), (Elements{8, 9}));
    EXPECT_EQ(index.elementsWithAttribute("format"), (Elements{3, 6}));
    EXPECT_EQ(index.elementsWithAttribute("src"), Elements{4});
    EXPECT_EQ(index.elementsNamed("spine"), Elements{7});
    EXPECT_EQ(index.elementWithId("r2"), 3U);
    EXPECT_EQ(index.elementWithId("r9"), kNoElement);
    EXPECT_EQ(index.idCount(), 2U);
    EXPECT_EQ(index.titleOf(8), "Harbour");
}

TEST(ElementIndex, ofXMEMLListsFilesLinksAndPaths) {
    const ElementIndex index = indexOf(
        "<xmeml version='5'><clipitem id='c1'><name>Quay &amp; pier</name><file id='f'>"
        "<pathurl>file://localhost/a.mov</pathurl></file><link><linkclipref>c1</linkclipref></link>"
        "</clipitem><clipitem id='c2'><file id='f'/></clipitem></xmeml>");
    EXPECT_EQ(index.kind(), FileKind::xmeml);
    EXPECT_EQ(index.elementsNamed("file"), (Elements{3, 8}));
    EXPECT_FALSE(index.isEmpty(3));
    EXPECT_TRUE(index.isEmpty(8));
    EXPECT_EQ(index.elementsNamed("linkclipref"), Elements{6});
    EXPECT_EQ(index.elementsNamed("pathurl"), Elements{4});
    EXPECT_EQ(index.elementsWithId("f"), (Elements{3, 8}));
    EXPECT_EQ(index.repeatedIds(10), (std::vector<Elements>{{3, 8}}));
    EXPECT_EQ(index.titleOf(1), "Quay &amp; pier");
    EXPECT_EQ(index.titleOf(7), "");
}

TEST(ElementIndex, followsThePathsThatEditingProgramsPrint) {
    const ElementIndex index = indexOf(kProject);
    const auto textAt = [&index](std::string_view path) {
        const std::optional<TextSpan> found = index.find(path);
        return found ? std::string(found->of(index.text())) : "none";
    };
    EXPECT_EQ(textAt("/fcpxml[1]/resources[1]/format[1]"), "<format id=\"r1\" name=\"F\"/>");
    EXPECT_EQ(textAt("/fcpxml/project/sequence/spine/asset-clip[2]/@ref"), "r9");
    EXPECT_EQ(textAt("/fcpxml[1]/resources[1]/format[2]"), "none");
    EXPECT_EQ(textAt("/fcpxml[2]"), "none");
    for (const char* malformed : {"", "fcpxml", "/", "/fcpxml[", "/fcpxml[x]", "/fcpxml[0]", "//a",
                                  "/@version", "/fcpxml/@version/x"}) {
        EXPECT_EQ(textAt(malformed), "none") << malformed;
    }
}

TEST(ElementIndex, ofATextThatIsCutOffHoldsWhatWasRead) {
    const std::string text = "<a><b c='1'>x</b><d";
    const ElementIndex index = indexOf(text);
    ASSERT_EQ(index.size(), 3U);
    EXPECT_EQ(index.spanOf(0).of(text), text);
    EXPECT_EQ(index.endOf(0), 3U);
    EXPECT_EQ(index.attributeTextOf(1, "c"), "1");
    EXPECT_EQ(indexOf("").size(), 0U);
    EXPECT_EQ(indexOf("").kind(), FileKind::none);
    EXPECT_EQ(indexOf("<a/>").kind(), FileKind::other);
}

TEST(ElementIndex, readsNamesInTheTextWhenThereAreTooManyToKeep) {
    std::string text = "<r>";
    constexpr int kNames = 70'000;
    for (int number = 0; number < kNames; ++number) {
        text += "<n" + std::to_string(number) + "/>";
    }
    text += "</r>";
    const ElementIndex index = indexOf(text);
    EXPECT_EQ(index.nameOf(kNames), "n" + std::to_string(kNames - 1));
    EXPECT_EQ(index.nameOf(1), "n0");
}

TEST(ElementIndex, measuresAStartTagThatIsLongerThanItKeeps) {
    const std::string tag = "<a b='" + std::string(70'000, '>') + "'>";
    const std::string text = tag + "x</a>";
    const ElementIndex index = indexOf(text);
    EXPECT_EQ(index.startTagOf(0).length, tag.size());
    EXPECT_EQ(index.contentOf(0).of(text), "x");
}

TEST(ElementIndex, keepsTheRulesOverDamagedTexts) {
    for (const std::string_view text :
         {"<a b=c d e='f'g=\"h\"><i/></a>", "<a>\x01<b\x02 c\x03='\x04'/></a>", "<a><b></a>",
          "<a b='<'/>", "<a\n=\n'1'/>", "<a b = c/>", "<a b=/>", "<a><![CDATA[</a>]]></a>",
          "<a><!--</a>--></a>", "x", "<a b='1' c", "<a b='1' c='2"}) {
        EXPECT_EQ(test::brokenRuleOfIndex(text), "") << text;
    }
    EXPECT_EQ(test::brokenRuleOfIndex(kProject), "");
}

TEST(ElementIndex, keepsTheRulesOverTheSeedsOfItsFuzzTarget) {
    const std::vector<std::string> seeds = test::filesBelow(VORNIC_SOURCE_DIR "/fuzz/seeds/index");
    EXPECT_GT(seeds.size(), 3U);
    for (const std::string& seed : seeds) {
        EXPECT_EQ(test::brokenRuleOfIndex(test::readBytes(seed)), "") << seed;
    }
}

TEST(ElementIndex, ofRealProjectsKeepsTheRulesInTwentyFourBytesAnElement) {
    const std::optional<std::string> samples = test::samplesFolder();
    if (!samples) {
        GTEST_SKIP() << "no samples";
    }
    std::vector<std::string> files = test::filesBelow(*samples + "/fcpxml");
    const std::vector<std::string> others = test::filesBelow(*samples + "/xmeml");
    files.insert(files.end(), others.begin(), others.end());
    ASSERT_FALSE(files.empty());
    for (const std::string& file : files) {
        ErrorSlot error;
        const auto text = decodeXMLBytes(test::readBytes(file), error);
        ASSERT_TRUE(text.has_value()) << file;
        EXPECT_EQ(test::brokenRuleOfIndex(*text), "") << file;
        const ElementIndex index = indexOf(*text);
        EXPECT_LE(index.memory(), 24 * index.size() + 64) << file << " " << index.size();
    }
}

}  // namespace
}  // namespace vornic
