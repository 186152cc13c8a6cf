#include <string>
#include <string_view>
#include <vector>

#include "repair/pipeline/VersionTagCheck.h"
#include "tests/repair/pipeline/CheckOfRepairTest.h"

namespace vornic {
namespace {

using Strings = std::vector<std::string>;

std::string warning(const std::string& element, const std::string& version) {
    return "repair-newer-element " + element + " " + version;
}

class VersionTagCheckTest : public test::CheckOfRepairTest {
  protected:
    VersionTagCheckTest() { writeUsualCatalogue(); }

    void check(std::string_view text) { checkVersionTags(test::parsed(text).get(), found); }
    /// Checks an XMEML file of the version with this in its root element.
    void check(const std::string& version, const std::string& content) {
        check("<xmeml version=\"" + version + "\">" + content + "</xmeml>");
    }
};

TEST_F(VersionTagCheckTest, findsNothingInASoundFile) {
    check("1", "<sequence><name>metadata</name></sequence>");
    EXPECT_EQ(findings(), Strings{});
    expectFlags(false, true);
}

TEST_F(VersionTagCheckTest, warnsInTheOrderOfVersionsAndListsAndChangesNoFlag) {
    check("2",
          "<color>1</color><uuid>2</uuid><itemhistory>3</itemhistory><metadata a=\"4\">5</metadata>"
          "<multiclip>6</multiclip>");
    EXPECT_EQ(findings(), (Strings{warning("<metadata", "2"), warning("<uuid", "2"),
                                   warning("<itemhistory", "2"), warning("<color", "2")}));
    expectFlags(false, true);
    EXPECT_TRUE(alerts->shown.empty());
}

TEST_F(VersionTagCheckTest, warnsOnceHoweverOftenAnElementOccurs) {
    check("4", "<color>1</color><color id=\"2\">3</color><color>4</color>");
    EXPECT_EQ(findings(), Strings{warning("<color", "4")});
}

TEST_F(VersionTagCheckTest, warnsAgainForALaterVersionThatListsTheSameElement) {
    catalogue.write({{"1", {"4", {}}}, {"2", {"5", {{"<a"}}}}, {"3", {"6", {{"<a"}}}}});
    check("1", "<a>1</a>");
    EXPECT_EQ(findings(), (Strings{warning("<a", "1"), warning("<a", "1")}));
}

TEST_F(VersionTagCheckTest, takesAnEmptyPairButNoEmptyElementTag) {
    check("4", "<color></color>");
    EXPECT_EQ(findings(), Strings{warning("<color", "4")});
    check("4", "<color/>");
    EXPECT_EQ(findings(), Strings{warning("<color", "4")});
}

TEST_F(VersionTagCheckTest, takesAnEmptyElementTagWithAttributes) {
    check("4", "<color id=\"1\"/>");
    EXPECT_EQ(findings(), Strings{warning("<color", "4")});
}

TEST_F(VersionTagCheckTest, searchesCommentsAndSectionsToo) {
    check("4", "<!-- <color> --><a><![CDATA[<anchoroffset >]]></a>");
    EXPECT_EQ(findings(), (Strings{warning("<anchoroffset", "4"), warning("<color", "4")}));
}

TEST_F(VersionTagCheckTest, takesElementStringsAsTheyStand) {
    catalogue.write({{"1", {"4", {}}}, {"2", {"5", {{"dog", "id=\"3\""}}}}});
    check("1", "<name>a dog was here</name><clip id=\"3\">b</clip>");
    EXPECT_EQ(findings(), (Strings{warning("dog", "1"), warning("id=\"3\"", "1")}));
}

TEST_F(VersionTagCheckTest, neverSearchesAFileOfTheNewestVersion) {
    catalogue.write({{"1", {"4", {{"<a"}}}}, {"2", {"5", {{"<b"}}}}});
    check("2", "<a>1</a><b>2</b>");
    EXPECT_EQ(findings(), Strings{});
    expectFlags(false, true);
}

TEST_F(VersionTagCheckTest, goesByTheOrderOfTheKeysAsTexts) {
    catalogue.write({{"1", {"4", {}}}, {"2", {"5", {{"<b"}}}}, {"10", {"9", {{"<a"}}}}});
    check("10", "<a>1</a><b>2</b>");
    EXPECT_EQ(findings(), Strings{warning("<b", "10")});
}

TEST_F(VersionTagCheckTest, stopsAtAVersionWithoutAList) {
    catalogue.write(
        {{"1", {"4", {}}}, {"2", {"5", {{"<a"}}}}, {"3", {"6", {}}}, {"4", {"7", {{"<b"}}}}});
    check("1", "<a>1</a><b>2</b>");
    EXPECT_EQ(findings(), Strings{warning("<a", "1")});
}

TEST_F(VersionTagCheckTest, stopsAtAVersionWithAnEmptyList) {
    catalogue.write({{"1", {"4", {}}}, {"2", {"5", Strings{}}}, {"3", {"6", {{"<b"}}}}});
    check("1", "<b>2</b>");
    EXPECT_EQ(findings(), Strings{});
    expectFlags(false, true);
}

TEST_F(VersionTagCheckTest, skipsAVersionWithoutAnEntry) {
    using platform::PropertyList;
    PropertyList::Dictionary root;
    root["1"] = PropertyList();
    root["2"] = PropertyList("no entry");
    root["3"] = PropertyList(PropertyList::Dictionary{
        {"elements", PropertyList(PropertyList::Array{PropertyList("<b")})}});
    catalogue.write(PropertyList(root));
    check("1", "<b>2</b>");
    EXPECT_EQ(findings(), Strings{warning("<b", "1")});
}

TEST_F(VersionTagCheckTest, doesNotRecognizeAnUncataloguedVersion) {
    check("7", "<color>1</color>");
    EXPECT_EQ(findings(), Strings{"repair-version-unknown 7"});
    expectFlags(true, false);
}

TEST_F(VersionTagCheckTest, doesNotRecognizeAVersionInOtherLetterCase) {
    catalogue.write({{"2b", {"4", {}}}, {"3", {"5", {{"<a"}}}}});
    check("2B", "<a>1</a>");
    EXPECT_EQ(findings(), Strings{"repair-version-unknown 2B"});
}

TEST_F(VersionTagCheckTest, doesNotRecognizeAnEmptyVersion) {
    check("", "");
    EXPECT_EQ(findings(), Strings{"repair-version-unknown "});
    expectFlags(true, false);
}

TEST_F(VersionTagCheckTest, reportsAMissingCatalogueWithoutAnAlert) {
    catalogue.remove();
    check("1", "");
    EXPECT_EQ(findings(), Strings{"repair-catalogue-missing"});
    expectFlags(true, false);
    EXPECT_TRUE(alerts->shown.empty());
}

TEST_F(VersionTagCheckTest, reportsAFileWithoutVersionInformation) {
    Strings expected;
    for (const char* text : {"<xmeml/>", "<Xmeml version=\"5\"/>", "<fcpxml version=\"1.8\"/>"}) {
        check(text);
        expected.emplace_back("repair-version-missing");
        EXPECT_EQ(findings(), expected) << text;
        expectFlags(true, false);
    }
}

TEST_F(VersionTagCheckTest, reportsTheSameWithoutADocument) {
    checkVersionTags(nullptr, found);
    EXPECT_EQ(findings(), Strings{"repair-version-missing"});
    expectFlags(true, false);
}

TEST_F(VersionTagCheckTest, endsAfterAnException) {
    raiseAtFinding = warning("<uuid", "2");
    check("2", "<uuid>2</uuid><color>1</color>");
    EXPECT_EQ(findings(), Strings{warning("<uuid", "2")});
    EXPECT_EQ(log.entries().back(), "Exception in -[Document checkVersionTags:]. Test - raised.");
    expectFlags(false, true);
}

TEST_F(VersionTagCheckTest, findsElementsInALargeDocument) {
    std::string content;
    for (int i = 0; i < 50000; ++i) {
        content += "<clipitem id=\"" + std::to_string(i) + "\"><name>a</name></clipitem>";
    }
    check("1", content + "<color>1</color>");
    EXPECT_EQ(findings(), Strings{warning("<color", "1")});
}

}  // namespace
}  // namespace vornic
