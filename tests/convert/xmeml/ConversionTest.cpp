#include <string>

#include <gtest/gtest.h>

#include "convert/ProjectConversion.h"
#include "convert/xmeml/Conversion.h"
#include "tests/support/texts/EngineTest.h"

namespace vornic::test {

namespace {

class XMEMLVersions : public EngineTest {
  protected:
    void SetUp() override { writeUsualCatalogue(); }

    static std::string converted(const std::string& bytes, const ConversionRequest& request) {
        const ProjectConversion conversion = ProjectConversion::of(bytes, request);
        std::string result = conversion.refusal;
        if (result.empty()) {
            EXPECT_TRUE(conversion.write([&](std::string_view piece) {
                result += piece;
                return true;
            }));
        }
        return result;
    }
};

const std::string kCut =
    "\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n<!DOCTYPE xmeml>\r\n"
    "<xmeml version='5'>\r\n\t<bin><name>\xC3\x84</name>\r\n"
    "\t\t<metadata><storage>QuickTime</storage></metadata>\r\n"
    "\t\t<angle>1</angle>\r\n\t</bin></xmeml>\r\n";

}  // namespace

TEST_F(XMEMLVersions, areRefusedWhereSomethingIsNewer) {
    EXPECT_EQ(converted(kCut, {.to = "1"}),
              "2 elements are newer than version 1; --strip leaves them out.");
    const ProjectConversion refused = ProjectConversion::of(kCut, {.to = "2"});
    ASSERT_EQ(refused.report.findings.kept().size(), 1U);
    EXPECT_EQ(refused.report.findings.kept()[0].message(),
              "<metadata> came with version 3, and is left out: "
              "<metadata><storage>QuickTime</storage></metadata>");
    EXPECT_EQ(refused.report.findings.kept()[0].where.line, 5U);
}

TEST_F(XMEMLVersions, loseWhatIsNewerAndKeepEveryOtherByte) {
    EXPECT_EQ(converted(kCut, {.to = "1", .strips = true}),
              "\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n<!DOCTYPE xmeml>\r\n"
              "<xmeml version='1'>\r\n\t<bin><name>\xC3\x84</name>\r\n\t</bin></xmeml>\r\n");
    std::string other = kCut;
    EXPECT_EQ(converted(kCut, {.to = "3"}), other.replace(other.find("'5'"), 3, "'3'"));
    EXPECT_EQ(converted(kCut, {.to = "5"}), kCut);
}

TEST_F(XMEMLVersions, haveALowestOne) {
    const auto lowest = [](const std::string& text) {
        return ProjectConversion::of(text, {}).report.conversion->lowest;
    };
    EXPECT_EQ(lowest(kCut), "3");
    EXPECT_EQ(lowest("<xmeml version=\"4\"><bin/></xmeml>"), "1");
}

TEST_F(XMEMLVersions, areNotThoseOfTheOtherFormat) {
    EXPECT_EQ(converted(kCut, {.to = "1.10"}),
              "It is XMEML, which is not converted to FCPXML 1.10.");
    EXPECT_EQ(converted("<fcpxml version=\"1.9\"/>", {.to = "5"}),
              "It is FCPXML, which is not converted to XMEML 5.");
    EXPECT_EQ(converted("<html/>", {.to = "5"}), "It is neither FCPXML nor XMEML.");
}

TEST_F(XMEMLVersions, thatAreUnknownAreAssumedOnlyWhenAsked) {
    EXPECT_EQ(converted("<xmeml version=\"6\"/>", {.to = "5"}),
              "It says that it is in version 6, and the newest one known is 5; --assume VERSION "
              "reads it as another one.");
    EXPECT_EQ(converted("<fcpxml/>", {.to = "1.9"}),
              "It does not say which version it is in; --assume VERSION says so.");
    EXPECT_EQ(converted("<fcpxml/>", {.to = "1.9", .assumed = "1.10"}),
              "<fcpxml version=\"1.9\"/>");
    EXPECT_EQ(converted("<fcpxml version=\"1.99\"/>", {.to = "1.9", .assumed = "1.14"}),
              "<fcpxml version=\"1.9\"/>");
    EXPECT_EQ(converted("<fcpxml version=\"1.9\"/>", {.to = "1.9", .assumed = "4"}),
              "It is FCPXML, which has no version 4.");
}

TEST_F(XMEMLVersions, keepTheEncodingOfTheFile) {
    EXPECT_EQ(
        converted("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><xmeml version=\"5\"><name>"
                  "\xE4</name></xmeml>",
                  {.to = "4"}),
        "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><xmeml version=\"4\"><name>\xE4</name>"
        "</xmeml>");
}

TEST_F(XMEMLVersions, keepEveryByteThatAnEncodingHas) {
    for (const std::string encoding : {"ISO-8859-1", "windows-1252", "macintosh"}) {
        const std::string start =
            "<?xml version=\"1.0\" encoding=\"" + encoding + "\"?><xmeml version=\"";
        std::string rest = "\"><name>";
        for (int byte = 0x80; byte <= 0xFF; ++byte) {
            // Those that windows-1252 leaves open.
            const bool isOpen =
                byte == 0x81 || byte == 0x8D || byte == 0x8F || byte == 0x90 || byte == 0x9D;
            if (encoding != "windows-1252" || !isOpen) {
                rest += static_cast<char>(byte);
            }
        }
        rest += "</name></xmeml>";
        std::string bytes = start;
        bytes += "5" + rest;
        std::string wanted = start;
        wanted += "4" + rest;
        EXPECT_EQ(converted(bytes, {.to = "4"}), wanted) << encoding;
    }
}

TEST_F(XMEMLVersions, ofAFileThatEndsEarlyAreRefusedWithThePlace) {
    const ProjectConversion conversion =
        ProjectConversion::of("<xmeml version=\"5\">\n<bin>", {.to = "4"});
    EXPECT_EQ(conversion.refusal, "It cannot be read to its end; mend it first.");
    EXPECT_EQ(conversion.line, 2U);
}

}  // namespace vornic::test
