#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/cli/PathLookup.h"

namespace vornic {

using ::testing::HasSubstr;
using ::testing::StartsWith;

namespace {

const std::string kText =
    "<fcpxml version=\"1.10\">\n  <event name=\"A\"/>\r\n\t<event name=\"B\">\n    <project/>\r"
    "    <project name=\"C\"/>\n  </event>\n</fcpxml>";

PathLookup lookUp(std::string_view path, std::string text = kText) {
    return lookUpPath(std::move(text), "a.fcpxml", path);
}

}  // namespace

TEST(PathLookup, showsTheLineAndThoseAroundIt) {
    const PathLookup lookup = lookUp("/fcpxml[1]/event[2]");
    EXPECT_TRUE(lookup.isFound);
    EXPECT_EQ(lookup.text,
              "a.fcpxml(3,2): /fcpxml[1]/event[2]\n"
              "      1 | <fcpxml version=\"1.10\">\n"
              "      2 |   <event name=\"A\"/>\n"
              "      3 |  <event name=\"B\">\n"
              "        |  ^\n"
              "      4 |     <project/>\n"
              "      5 |     <project name=\"C\"/>\n");
}

TEST(PathLookup, findsAttributesByTheirValues) {
    EXPECT_THAT(lookUp("/fcpxml/event[2]/project[2]/@name").text,
                StartsWith("a.fcpxml(5,20): /fcpxml/event[2]/project[2]/@name\n"));
}

TEST(PathLookup, endsWithTheLastLine) {
    const std::string text = lookUp("/fcpxml", "<fcpxml>\n</fcpxml>\n").text;
    EXPECT_TRUE(text.ends_with("      2 | </fcpxml>\n")) << text;
}

TEST(PathLookup, saysWhereAPathEndsAndWhy) {
    EXPECT_EQ(lookUp("/fcpxml/event[2]/project[3]/sequence").isFound, false);
    EXPECT_THAT(lookUp("/fcpxml/event[2]/project[3]/sequence").text,
                StartsWith("a.fcpxml: the path ends at /fcpxml/event[2]: it has 2 <project>, not "
                           "3\na.fcpxml(3,2): /fcpxml/event[2]\n"));
    EXPECT_THAT(lookUp("/fcpxml/evnt").text,
                StartsWith("a.fcpxml: the path ends at /fcpxml: there is no <evnt> in it; perhaps "
                           "<event> is meant\n"));
    EXPECT_THAT(lookUp("/fcpxml/event/@ref").text,
                StartsWith("a.fcpxml: the path ends at /fcpxml/event: <event> has no attribute "
                           "ref\n"));
    EXPECT_EQ(lookUp("/xmeml[1]/sequence").text,
              "a.fcpxml: the root element is <fcpxml>, not xmeml[1]\n");
    EXPECT_THAT(lookUp("/fcpxml", "").text, StartsWith("a.fcpxml: the file has no root element\n"));
}

TEST(PathLookup, reportsHowFarADamagedFileCanBeRead) {
    EXPECT_TRUE(lookUp("/a/b", "<a>\n<b></a>").isFound);
    EXPECT_THAT(lookUp("/a/c", "<a>\n<b></a>").text,
                HasSubstr("The file can be read only this far: Line 2, column 4: "));
    EXPECT_FALSE(lookUp("/a", "\xFF").isFound);
}

TEST(PathLookup, cutsALongLineAroundThePlace) {
    std::string text = "<a>";
    for (int i = 0; i < 500; ++i) {
        text += "<b n=\"\xC3\xA9\"/>";
    }
    const std::string shown = lookUp("/a/b[250]", text + "</a>").text;
    const std::size_t line = shown.find("1 | ") + 4;
    const std::string cut = shown.substr(line, shown.find('\n', line) - line);
    EXPECT_LT(cut.size(), 150U);
    EXPECT_TRUE(cut.starts_with("\xE2\x80\xA6") && cut.ends_with("\xE2\x80\xA6")) << cut;
    EXPECT_THAT(shown, HasSubstr("        | " + std::string(41, ' ') + "^\n"));
}

TEST(PathLookup, escapesWhatCouldSteerATerminal) {
    const std::string shown = lookUp("/a/@n", "<a m=\"\xE2\x80\xAE\" n=\"1\"/>").text;
    EXPECT_THAT(shown, HasSubstr("<a m=\"<U+202E>\" n=\"1\"/>\n"));
    EXPECT_THAT(shown, HasSubstr("        | " + std::string(19, ' ') + "^\n"));
}

TEST(PathLookup, knowsWhatAPathIs) {
    for (const char* path : {"/a", "/a[1]", "/a/b[20]/@c", "/a/@c"}) {
        EXPECT_TRUE(isElementPath(path)) << path;
    }
    for (const char* path : {"", "/", "a", "/a/", "/a[0]", "/a[x]", "/a[1", "/a]1[", "/@a", "/a/@",
                             "/a/@b/c", "/a/@b[1]", "//a", "/a[99999999999]"}) {
        EXPECT_FALSE(isElementPath(path)) << path;
    }
}

}  // namespace vornic
