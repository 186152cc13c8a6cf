#include <string>

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

TEST(SourceText, dropsBlocksOfZerosAndTellsWhereTheyStood) {
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

TEST(SourceText, refusesAnEncodingThatNobodyKnows) {
    EXPECT_FALSE(Read("<?xml version=\"1.0\" encoding=\"martian\"?><a/>").source);
}

}  // namespace vornic::salvage
