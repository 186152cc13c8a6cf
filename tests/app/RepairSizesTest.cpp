// Files of unusual size and shape: nothing but memory bounds them.

#include <cstdint>
#include <fstream>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/app/ProgramTest.h"
#include "tests/support/machine/FileState.h"

namespace vornic::test {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kMemoryIsMeasurable = false;
#else
constexpr bool kMemoryIsMeasurable = true;
#endif

std::string repeated(const std::string& piece, std::size_t count) {
    std::string text;
    text.reserve(piece.size() * count);
    for (std::size_t i = 0; i < count; ++i) {
        text += piece;
    }
    return text;
}

std::string sequenceWith(const std::string& content) {
    return "<xmeml version=\"5\"><sequence>" + content + "</sequence></xmeml>";
}

}  // namespace

class RepairSizesTest : public ProgramTest {
  protected:
    /// Writes a file block by block, so that the test itself stays small.
    [[nodiscard]] std::string writeLarge(char byte, std::size_t size) const {
        constexpr std::size_t kBlock = 1'000'000;
        const std::string path = files.path("cut.xml");
        std::ofstream stream(path, std::ios::binary);
        const std::string block(kBlock, byte);
        for (std::size_t written = 0; written < size; written += kBlock) {
            stream << block;
        }
        stream.close();
        EXPECT_TRUE(stream.good());
        return path;
    }

    /// Repairs a file that lacks a document type declaration, and then once more.
    void expectRepairedAndThenSound(const std::string& bytes) const {
        const std::string path = files.write("cut.xml", bytes);
        const ProgramResult result = files.repair({path});
        EXPECT_TRUE(tellsOriginal(result.errors, files.trash())) << result.errors;
        EXPECT_EQ(result.status, 0);
        EXPECT_THAT(result.output, HasSubstr("Invalid DTD... repairing\n"));
        EXPECT_TRUE(readBytes(files.trash() + "/cut.xml") == bytes);
        EXPECT_EQ(files.repair({path}).output, soundReport(path));
    }
};

TEST_F(RepairSizesTest, aHundredMegabytesOfLessThanSignsNeedBoundedMemory) {
    constexpr std::size_t kSize = 100'000'000;
    constexpr std::int64_t kMost = 10 * static_cast<std::int64_t>(kSize);
    const std::string path = writeLarge('<', kSize);
    const ProgramResult result = files.repair({path});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.output,
                HasSubstr("Line 1, column 1: there is text before the root element.\n"));
    EXPECT_THAT(result.output, HasSubstr("Unable to repair file."));
    if (kMemoryIsMeasurable) {
        EXPECT_LT(result.peakMemory, kMost);
    }
    EXPECT_THAT(namesIn(files.folder()), ElementsAre("cut.xml"));
    EXPECT_TRUE(readBytes(path) == std::string(kSize, '<'));
}

TEST_F(RepairSizesTest, aHundredMegabytesOfLessThanSignsAreNotConverted) {
    constexpr std::size_t kSize = 100'000'000;
    const std::string path = writeLarge('<', kSize);
    const ProgramResult result = files.convert({"-convertxmeml", "3", path});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.errors, HasSubstr("Unable to load XML file"));
    EXPECT_TRUE(readBytes(path) == std::string(kSize, '<'));
}

TEST_F(RepairSizesTest, millionsOfBytesThatAreNoTextAreStrippedOnce) {
    constexpr std::size_t kSize = 20'000'000;
    const std::string path = writeLarge('\xFF', kSize);
    const ProgramResult result = files.repair({path});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.output, HasSubstr("the file ends without a root element.\n"));
    EXPECT_THAT(files.log(),
                ::testing::Contains("Stripping invalid characters from data...").Times(1));
}

TEST_F(RepairSizesTest, aFileOfZerosIsReportedByteByByteAndLeft) {
    constexpr std::size_t kSize = 4'096;
    const std::string text(kSize, '\0');
    const std::string path = files.write("cut.xml", text);
    const ProgramResult result = files.repair({path});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.output, HasSubstr("Invalid character at byte 0 removed.\n"));
    EXPECT_THAT(result.output, HasSubstr("Invalid character at byte 4095 removed.\n"));
    EXPECT_THAT(result.output, ::testing::Not(HasSubstr("Invalid character at byte 4096")));
    EXPECT_EQ(readBytes(path), text);
}

TEST_F(RepairSizesTest, aHundredThousandNestedElementsAreRepaired) {
    constexpr std::size_t kDepth = 100'000;
    expectRepairedAndThenSound(
        sequenceWith(repeated("<b>", kDepth) + "x" + repeated("</b>", kDepth)));
}

TEST_F(RepairSizesTest, aMillionOpenElementsAreRefused) {
    constexpr std::size_t kDepth = 1'000'000;
    const std::string text = repeated("<b>", kDepth);
    const std::string path = files.write("cut.xml", text);
    const ProgramResult result = files.repair({path});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.output, HasSubstr("the file ends before the element <b>"));
    EXPECT_TRUE(readBytes(path) == text);
}

TEST_F(RepairSizesTest, aHundredThousandAttributesOfOneElementAreRepaired) {
    constexpr std::size_t kCount = 100'000;
    std::string attributes;
    for (std::size_t i = 0; i < kCount; ++i) {
        attributes += " a" + std::to_string(i) + "=\"" + std::to_string(i) + "\"";
    }
    expectRepairedAndThenSound(sequenceWith("<clip" + attributes + "/>"));
}

TEST_F(RepairSizesTest, aLineOfTenMillionCharactersIsRepaired) {
    constexpr std::size_t kLength = 10'000'000;
    expectRepairedAndThenSound(sequenceWith("<note>" + std::string(kLength, 'n') + "</note>"));
}

TEST_F(RepairSizesTest, aHundredThousandStrayAmpersandsAreMendedAndReportedOneByOne) {
    constexpr std::size_t kCount = 100'000;
    const std::string path = files.write(
        "cut.xml",
        "<!DOCTYPE xmeml>" + sequenceWith("<note>" + repeated("a & b\n", kCount) + "</note>"));
    const ProgramResult result = files.repair({path});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.output, HasSubstr("Line 100000, column 3: an ampersand that begins no "
                                         "entity was read as text\n"));
    EXPECT_THAT(readBytes(path), HasSubstr("<note>" + repeated("a &amp; b\n", kCount) + "</note>"));
}

TEST_F(RepairSizesTest, aSingleByteOfEveryKindIsRefusedAndLeft) {
    constexpr int kBytes = 256;
    for (int value = 0; value < kBytes; ++value) {
        SCOPED_TRACE("byte " + std::to_string(value));
        const std::string text(1, static_cast<char>(value));
        const std::string path = files.write("cut.xml", text);
        const ProgramResult result = files.repair({path});
        EXPECT_EQ(result.status, 1);
        EXPECT_THAT(result.output, StartsWith("Starting repair for file "));
        EXPECT_EQ(readBytes(path), text);
        EXPECT_THAT(namesIn(files.folder()), ElementsAre("cut.xml"));
        EXPECT_FALSE(exists(files.trash()));
    }
}

}  // namespace vornic::test
