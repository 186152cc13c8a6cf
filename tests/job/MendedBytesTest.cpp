#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "job/MendedBytes.h"
#include "report/RuleTable.h"

namespace vornic {

namespace {

constexpr std::string_view kHead = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n";

std::string project(std::string_view name) {
    return std::string(kHead)
        .append(
            "<!DOCTYPE fcpxml>\r\n<fcpxml version=\"1.10\">\r\n\t<resources/>\r\n\t<event name=\"")
        .append(name)
        .append("\"/>\r\n</fcpxml>\r\n");
}

std::vector<std::string> madeIn(const MendedBytes& mended) {
    std::vector<std::string> made;
    for (const MendRecord& record : mended.records) {
        if (record.isMade) {
            made.push_back(std::string(ruleOf(record.finding.rule).id) + " " +
                           std::to_string(record.finding.where.line));
        }
    }
    return made;
}

TEST(MendedBytes, changesNothingInASoundFile) {
    const MendedBytes mended = MendedBytes::of(project("Cut"), {});
    EXPECT_EQ(mended.bytes, project("Cut"));
    EXPECT_TRUE(mended.edits.empty());
    EXPECT_TRUE(mended.records.empty());
    EXPECT_EQ(mended.report.valid, true);
}

TEST(MendedBytes, changesTheBytesOfTheMendsAlone) {
    const MendedBytes mended = MendedBytes::of(project("Tom & \xF0\x9F\x98\x80 < Ann"), {});
    EXPECT_EQ(mended.bytes, project("Tom &amp; \xF0\x9F\x98\x80 &lt; Ann"));
    EXPECT_THAT(madeIn(mended),
                ::testing::ElementsAre("xml-stray-ampersand 5", "xml-less-than-in-value 5"));
    EXPECT_EQ(mended.report.findings.count(Severity::error), 0U);
    EXPECT_EQ(applyEdits(project("Tom & \xF0\x9F\x98\x80 < Ann"), mended.edits), mended.bytes);
}

TEST(MendedBytes, writesInTheEncodingOfTheFile) {
    std::string bytes =
        "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n<xmeml version=\"5\">\n"
        "<!-- caf\xE9 & --><clip><name>caf\xE9 & bar</name></clip></xmeml>\n";
    const MendedBytes mended = MendedBytes::of(bytes, {});
    bytes.replace(bytes.rfind('&'), 1, "&amp;");
    EXPECT_EQ(mended.bytes, bytes);
}

TEST(MendedBytes, writesUTF8WhenAsked) {
    const std::string bytes =
        "<?xml version='1.0' encoding='ISO-8859-1'?>\n<xmeml version=\"5\">\n"
        "<clip><name>caf\xE9 & bar</name></clip></xmeml>\n";
    MendRequest request;
    EXPECT_EQ(MendedBytes::of(bytes, request).report.encoding, "ISO-8859-1");
    request.toUTF8 = true;
    const MendedBytes mended = MendedBytes::of(bytes, request);
    EXPECT_EQ(mended.bytes,
              "<?xml version='1.0' encoding='UTF-8'?>\n<xmeml version=\"5\">\n"
              "<clip><name>caf\xC3\xA9 &amp; bar</name></clip></xmeml>\n");
    EXPECT_EQ(mended.report.encoding, "UTF-8");
    EXPECT_THAT(madeIn(mended),
                ::testing::ElementsAre("values-encoding 1", "xml-stray-ampersand 3"));
    EXPECT_EQ(mended.records.back().finding.where.offset, bytes.find('&'));
    EXPECT_EQ(mended.difference("a", "b"),
              "--- a\n+++ b\n@@ -1,3 +1,3 @@\n-<?xml version='1.0' encoding='ISO-8859-1'?>\n"
              "+<?xml version='1.0' encoding='UTF-8'?>\n <xmeml version=\"5\">\n"
              "-<clip><name>caf\xC3\xA9 & bar</name></clip></xmeml>\n"
              "+<clip><name>caf\xC3\xA9 &amp; bar</name></clip></xmeml>\n");
    EXPECT_EQ(MendedBytes::of(mended.bytes, request).bytes, mended.bytes);
}

std::string inUTF16(std::string_view ascii, bool isBigEndian) {
    std::string bytes = isBigEndian ? "\xFE\xFF" : "\xFF\xFE";
    for (const char character : ascii) {
        bytes += isBigEndian ? std::string{'\0', character} : std::string{character, '\0'};
    }
    return bytes;
}

constexpr std::string_view kText =
    "<?xml version=\"1.0\" encoding=\"UTF-16\"?>\r\n<xmeml version=\"5\">\r\n"
    "\t<name>a & b</name>\r\n</xmeml>\r\n";

std::string mendedText() {
    std::string text(kText);
    return text.replace(text.find('&'), 1, "&amp;");
}

TEST(MendedBytes, keepsMarkAndOrderOfUTF16) {
    for (const bool isBigEndian : {false, true}) {
        EXPECT_EQ(MendedBytes::of(inUTF16(kText, isBigEndian), {}).bytes,
                  inUTF16(mendedText(), isBigEndian));
    }
}

TEST(MendedBytes, keepsTheByteOrderMarkOfUTF8) {
    const std::string bytes = "\xEF\xBB\xBF" + project("a & b");
    const MendedBytes mended = MendedBytes::of(bytes, {});
    EXPECT_EQ(mended.bytes, "\xEF\xBB\xBF" + project("a &amp; b"));
    ASSERT_EQ(mended.records.size(), 1U);
    EXPECT_EQ(mended.records.front().finding.where.offset, bytes.find('&'));
}

TEST(MendedBytes, writesUTF8ForAFileWhoseBytesTellItsEncoding) {
    MendRequest request;
    request.toUTF8 = true;
    std::string wanted = mendedText();
    wanted.replace(wanted.find("UTF-16"), 6, "UTF-8");
    EXPECT_EQ(MendedBytes::of(inUTF16(kText, true), request).bytes, wanted);
    // It declares no encoding, and is read by its mark alone.
    const std::string undeclared = "<xmeml version=\"5\"><name>a</name></xmeml>";
    EXPECT_EQ(MendedBytes::of(inUTF16(undeclared, false), request).bytes, undeclared);
}

TEST(MendedBytes, mendsInRoundsWhatMeetsAtOnePlace) {
    // Each of the attributes lacks the space before the next one.
    const std::string bytes = std::string(kHead) +
                              "<!DOCTYPE fcpxml>\n<fcpxml version=\"1.10\"><resources><format "
                              "id=\"r1\"name=a&b frameDuration=\"1/25s\"/></resources></fcpxml>\n";
    const MendedBytes mended = MendedBytes::of(bytes, {});
    EXPECT_NE(mended.bytes.find("id=\"r1\" name=\"a&amp;b\" frameDuration"), std::string::npos)
        << mended.bytes;
    EXPECT_EQ(mended.refusal, "");
    EXPECT_EQ(mended.report.findings.count(Severity::error), 0U);
    EXPECT_EQ(applyEdits(bytes, mended.edits), mended.bytes);
    for (const MendRecord& record : mended.records) {
        EXPECT_TRUE(record.isMade);
        EXPECT_EQ(record.finding.where.line, 3U);
    }
}

TEST(MendedBytes, findsWhatAVersionDoesNotAllowOnceItIsSet) {
    MendRequest request;
    request.asked = {"versions-not-declared"_rule};
    const std::string bytes = "<fcpxml><resources/><event name='a & b'/><unknown/></fcpxml>";
    const MendedBytes left = MendedBytes::of(bytes, request);
    ASSERT_EQ(left.records.size(), 2U);
    EXPECT_EQ(left.records.front().why,
              "it needs --set-version with a version of the file's format");
    request.check.missingVersion = "1.9";
    const MendedBytes mended = MendedBytes::of(bytes, request);
    EXPECT_EQ(mended.refusal, "");
    EXPECT_EQ(mended.bytes,
              "<fcpxml version=\"1.9\"><resources/><event name='a &amp; b'/><unknown/></fcpxml>");
    EXPECT_EQ(mended.report.definition, "fcpxml 1.9");
    EXPECT_EQ(mended.report.findings.count("structure-unknown-element"_rule), 1U);
    EXPECT_EQ(applyEdits(bytes, mended.edits), mended.bytes);
}

TEST(MendedBytes, reportsWhatIsNotMended) {
    const MendedBytes mended =
        MendedBytes::of(std::string(kHead) + "<fcpxml version=\"1.10\"><resources></fcpxml>", {});
    EXPECT_TRUE(mended.edits.empty());
    ASSERT_FALSE(mended.records.empty());
    EXPECT_FALSE(mended.records.front().isMade);
    EXPECT_EQ(mended.records.front().why, "no mend is known");
}

TEST(MendedBytes, mendsOnlyWhatIsLookedAt) {
    MendRequest request;
    request.check.ignored = {"xml-stray-ampersand"_rule};
    EXPECT_TRUE(MendedBytes::of(project("a & b"), request).edits.empty());
}

TEST(MendedBytes, showsTheDifferenceOfAFileInAnyEncoding) {
    std::string bytes("\xFF\xFE", 2);
    for (const char character :
         std::string("<xmeml version=\"5\">\n<name>a & b</name>\n</xmeml>\n")) {
        bytes += character;
        bytes += '\0';
    }
    const MendedBytes mended = MendedBytes::of(bytes, {});
    EXPECT_EQ(mended.difference("old", "new"),
              "--- old\n+++ new\n@@ -1,3 +1,3 @@\n <xmeml version=\"5\">\n-<name>a & b</name>\n"
              "+<name>a &amp; b</name>\n </xmeml>\n");
}

TEST(MendedBytes, mendsDefinitionsOfAFileThatAreTheSameOnceTheyAreMended) {
    const auto clip = [](std::string_view name, const std::string& file) {
        return "<clip id=\"" + std::string(name) + "\"><name>c</name><duration>1</duration>" +
               file + "</clip>";
    };
    const auto file = [](const std::string& name) {
        return "<file id=\"f\"><name>" + name + "</name><duration>1</duration></file>";
    };
    const auto bin = [](const std::string& clips) {
        return "<xmeml version=\"5\"><bin><name>b</name><children>" + clips +
               "</children></bin></xmeml>";
    };
    const std::string first = clip("a", file("x &amp; y"));
    const MendedBytes mended = MendedBytes::of(bin(first + clip("b", file("x & y"))), {});
    EXPECT_EQ(mended.refusal, "");
    EXPECT_EQ(mended.bytes, bin(first + clip("b", "<file id=\"f\"/>")));
    EXPECT_THAT(madeIn(mended),
                ::testing::ElementsAre("references-file-repeated 1", "xml-stray-ampersand 1"));
    // Those that differ stay two files.
    const MendedBytes different = MendedBytes::of(bin(first + clip("b", file("z & y"))), {});
    EXPECT_EQ(different.refusal, "");
    EXPECT_EQ(different.bytes, bin(first + clip("b", file("z &amp; y"))));
    EXPECT_EQ(different.report.findings.count("references-file-redefined"_rule), 1U);
}

// Rules that a check is handed beside its own, and the faulty mends of one of them.
struct FaultyMend {
    std::string text;
    bool isGoneAfterwards = false;
};

MendRequest withFaultyMend(const FaultyMend& mend) {
    MendRequest request;
    request.check.media = [mend](const ElementIndex& index, bool, Findings& findings) {
        const TextSpan timebase = *index.textOf(
            index.childOf(index.childOf(index.childOf(0, "sequence"), "rate"), "timebase"));
        if (mend.isGoneAfterwards && timebase.of(index.text()) == mend.text) {
            return;
        }
        Finding* const finding = findings.add("media-folder"_rule, timebase);
        finding->mend = Mend{
            Confidence::safe, "write a timebase", {{timebase.offset, timebase.length, mend.text}}};
    };
    return request;
}

constexpr std::string_view kSequence =
    "<xmeml version=\"5\"><sequence><name>A & B</name><duration>0</duration><rate><timebase>25"
    "</timebase><ntsc>FALSE</ntsc></rate></sequence></xmeml>";

void expectRefusal(const MendedBytes& mended, std::string_view rule) {
    const std::string why =
        "the mends would leave or bring what the rule " + std::string(rule) + " tells";
    EXPECT_EQ(mended.refusal, why);
    EXPECT_EQ(mended.bytes, kSequence);
    EXPECT_TRUE(mended.edits.empty());
    EXPECT_TRUE(madeIn(mended).empty());
    ASSERT_EQ(mended.records.size(), 2U);
    for (const MendRecord& record : mended.records) {
        EXPECT_EQ(record.why, why);
    }
    // Told of the file as it is.
    EXPECT_EQ(mended.report.bytes, kSequence.size());
    EXPECT_EQ(mended.report.findings.count("xml-stray-ampersand"_rule), 1U);
}

TEST(MendedBytes, refusesAMendThatLeavesItsFinding) {
    expectRefusal(MendedBytes::of(std::string(kSequence), withFaultyMend({"24", false})),
                  "media-folder");
}

TEST(MendedBytes, refusesAMendThatBringsAFinding) {
    expectRefusal(MendedBytes::of(std::string(kSequence), withFaultyMend({"none", true})),
                  "timing-timebase");
}

TEST(MendedBytes, makesAMendOfARuleThatIsHandedOver) {
    const MendedBytes mended =
        MendedBytes::of(std::string(kSequence), withFaultyMend({"24", true}));
    EXPECT_EQ(mended.refusal, "");
    EXPECT_THAT(madeIn(mended), ::testing::ElementsAre("xml-stray-ampersand 1", "media-folder 1"));
    EXPECT_NE(mended.bytes.find("<timebase>24<"), std::string::npos);
}

}  // namespace

}  // namespace vornic
