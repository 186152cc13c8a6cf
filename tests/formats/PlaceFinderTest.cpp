#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "formats/ElementIndexBuilder.h"
#include "formats/PlaceFinder.h"
#include "report/XMLFindings.h"

namespace vornic {
namespace {

struct Indexed {
    explicit Indexed(std::string content, TextDecoding how = {})
        : text(std::move(content)), index(indexOf(text)), decoding(std::move(how)) {}

    static ElementIndex indexOf(std::string_view text) {
        ElementIndexBuilder builder(text);
        (void)readXML(text, XMLMode::tolerant, &builder);
        return std::move(builder).finish();
    }
    [[nodiscard]] Place placeOf(std::string_view what) const {
        PlaceFinder finder(index, decoding);
        return finder.placeOf({text.find(what), what.size()});
    }

    std::string text;
    ElementIndex index;
    TextDecoding decoding;
};

TEST(PlaceFinder, reportsLineColumnPathAndName) {
    const Indexed file(
        "<fcpxml>\r\n<project name=\"Caf\xC3\xA9 &amp; bar\"><gap/>\n é <gap x='1'/></project>\n"
        "</fcpxml>");
    const Place place = file.placeOf("x='1'");
    EXPECT_EQ(place.line, 3U);
    EXPECT_EQ(place.column, 9U);
    EXPECT_EQ(place.path, "/fcpxml[1]/project[1]/gap[2]");
    EXPECT_EQ(place.name, "Caf\xC3\xA9 & bar");
    EXPECT_EQ(place.offset, file.text.find("x='1'"));
    EXPECT_EQ(place.length, 5U);
}

TEST(PlaceFinder, reportsTheNameThatXMEMLHasAsAnElement) {
    const Indexed file(
        "<xmeml><clipitem><name>Quay</name><rate><timebase>30/1</timebase></rate></clipitem>"
        "</xmeml>");
    EXPECT_EQ(file.placeOf("30/1").name, "Quay");
    EXPECT_EQ(file.placeOf("30/1").path, "/xmeml[1]/clipitem[1]/rate[1]/timebase[1]");
}

TEST(PlaceFinder, reportsTheBeginningOfANameThatIsTooLongToRead) {
    std::string name;
    while (name.size() < 100000) {
        name += "\xC3\xA9";
    }
    const Indexed file("<fcpxml><project name=\"x" + name + "\"><gap/></project></fcpxml>");
    const Place place = file.placeOf("<gap/>");
    EXPECT_EQ(place.name, "x" + name.substr(0, 998));
}

TEST(PlaceFinder, reportsNoElementOutsideTheRoot) {
    const Indexed file("<a/>\nx");
    const Place place = file.placeOf("x");
    EXPECT_EQ(place.path, "");
    EXPECT_EQ(place.name, "");
    EXPECT_EQ(place.line, 2U);
}

TEST(PlaceFinder, reportsTheBytesOfTheFile) {
    const std::string text = "<a>\xC3\xA9\xF0\x9F\x98\x80<b/></a>";
    EXPECT_EQ(Indexed(text, {"UTF-8", 3}).placeOf("<b/>").offset, 12U);
    const Place wide = Indexed(text, {"UTF-16LE", 2}).placeOf("<b/>");
    EXPECT_EQ(wide.offset, 2U + 3 * 2 + 2 + 4);
    EXPECT_EQ(wide.length, 8U);
    EXPECT_EQ(Indexed("<a>\xC3\xA9<b/></a>", {"ISO-8859-1", 0}).placeOf("<b/>").offset, 4U);
}

TEST(PlaceFinder, placesFindingsAndTheEditsOfTheirMends) {
    const Indexed file("<a>\xC3\xA9 & <b c=1/></a>", {"UTF-16BE", 2});
    Findings findings;
    XMLFindings sink(file.text, findings);
    (void)readXML(file.text, XMLMode::tolerant, nullptr, &sink);
    PlaceFinder(file.index, file.decoding).place(findings);
    ASSERT_EQ(findings.kept().size(), 2U);
    EXPECT_EQ(findings.kept()[0].where.column, 6U);
    EXPECT_EQ(findings.kept()[0].mend->edits, (std::vector<Edit>{{12, 2, "&amp;"}}));
    EXPECT_EQ(findings.kept()[1].where.path, "/a[1]/b[1]");
    EXPECT_EQ(findings.kept()[1].mend->edits, (std::vector<Edit>{{26, 0, "\""}, {28, 0, "\""}}));
}

TEST(PlaceFinder, countsManySiblingsOnce) {
    std::string text = "<a>";
    constexpr std::size_t kSiblings = 300'000;
    for (std::size_t count = 0; count < kSiblings; ++count) {
        text += count % 2 == 0 ? "<b/>" : "<c/>";
    }
    const Indexed file(text + "</a>");
    PlaceFinder finder(file.index, {});
    for (ElementNumber element = 1; element <= kSiblings; ++element) {
        const std::string expected =
            (element % 2 == 1 ? "/a[1]/b[" : "/a[1]/c[") + std::to_string((element + 1) / 2) + "]";
        ASSERT_EQ(finder.pathOf(element), expected);
    }
    EXPECT_EQ(finder.pathOf(1), "/a[1]/b[1]");
}

TEST(PlaceFinder, givesNoPathToWhatLiesTooDeep) {
    std::string text;
    for (int depth = 0; depth < 1000; ++depth) {
        text += "<a>";
    }
    const Indexed file(text);
    PlaceFinder finder(file.index, {});
    EXPECT_EQ(finder.pathOf(999), "");
    EXPECT_EQ(finder.pathOf(1), "/a[1]/a[1]");
}

}  // namespace
}  // namespace vornic
