#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "salvage/SourceText.h"

namespace vornic::salvage {

namespace {

struct Read {
    Findings findings;
    std::optional<SourceText> source;

    explicit Read(std::string bytes) {
        ErrorSlot error;
        source = SourceText::of(std::move(bytes), findings, error);
        if (source) {
            source->place(findings);
        }
    }
};

}  // namespace

TEST(SourceText, dropsBlocksOfZerosAndReportsWhereTheyStood) {
    const Read read("ab\ncd" + std::string(600, '\0') + "ef");
    ASSERT_TRUE(read.source);
    EXPECT_EQ(read.source->text(), "ab\ncdef");
    ASSERT_EQ(read.findings.kept().size(), 1U);
    const Finding& finding = read.findings.kept()[0];
    EXPECT_EQ(finding.rule, "salvage-characters-dropped"_rule);
    EXPECT_EQ(finding.arguments[0].value, "600");
    EXPECT_EQ(finding.where.line, 2U);
}

TEST(SourceText, readsAByteBetweenLettersAsWindows1252) {
    const Read read("caf\xE9 \x93now\x94 \xC3\xA9");
    ASSERT_TRUE(read.source);
    EXPECT_EQ(read.source->text(), "caf\u00E9 \u201Cnow\u201D \u00E9");
    EXPECT_EQ(read.findings.count("salvage-bytes-read-as-windows"_rule), 3U);
    EXPECT_EQ(read.findings.kept()[0].where.offset, 3U);
    EXPECT_EQ(read.findings.kept()[1].where.offset, 5U);
    EXPECT_EQ(read.findings.kept()[1].where.length, 1U);
}

TEST(SourceText, dropsLongerRunsOfBytesThatAreNoText) {
    const Read read("ab" + std::string(50, '\xFF') + "cd");
    ASSERT_TRUE(read.source);
    EXPECT_EQ(read.source->text(), "abcd");
    EXPECT_EQ(read.findings.count("salvage-bytes-dropped"_rule), 1U);
    EXPECT_EQ(read.findings.kept()[0].arguments[0].value, "50");
}

TEST(SourceText, readsUTF16ThatEndsInsideACharacter) {
    std::string bytes = "\xFF\xFE";
    for (const char c : std::string("<a>")) {
        bytes += {c, '\0'};
    }
    const Read read(bytes + "b");
    ASSERT_TRUE(read.source);
    EXPECT_EQ(read.source->text(), "<a>");
}

TEST(SourceText, readsAFileThatNamesAnUnknownEncodingAsUTF8) {
    const Read read("<?xml version=\"1.0\" encoding=\"UFT-8\"?><a>\u00E9</a>");
    ASSERT_TRUE(read.source);
    EXPECT_THAT(read.source->text(), ::testing::EndsWith("<a>\u00E9</a>"));
    ASSERT_EQ(read.findings.count("salvage-encoding-unknown"_rule), 1U);
    EXPECT_EQ(read.findings.kept()[0].where.offset, 30U);
    EXPECT_EQ(read.findings.kept()[0].where.length, 5U);
}

TEST(SourceText, dropsHalvesOfCharactersInUTF16) {
    const Read read(std::string("\xFF\xFE<\0a\0\x3D\xD8\x00\xDE\x3D\xD8>\0\x00\xDE", 16));
    ASSERT_TRUE(read.source);
    EXPECT_EQ(read.source->text(), "<a\U0001F600>");
    EXPECT_EQ(read.findings.count("salvage-characters-dropped"_rule), 2U);
    EXPECT_EQ(read.findings.kept()[0].where.offset, 12U);
}

// Found by a fuzzer: runs of bytes that are no text between characters that XML forbids.
TEST(SourceText, reportsPlacesWhereBytesAndCharactersAreDroppedSideBySide) {
    const Read read(std::string("\0\xF7\xFF\xFF\xFF\xFF\x08\xFF\xFF\xFF\xFF\xFF\x08", 13));
    ASSERT_TRUE(read.source);
    EXPECT_EQ(read.source->text(), "");
    EXPECT_EQ(read.findings.kept().size(), 3U);
    for (const Finding& finding : read.findings.kept()) {
        EXPECT_LE(finding.where.offset + finding.where.length, 13U);
    }
}

}  // namespace vornic::salvage
