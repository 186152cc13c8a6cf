#include <string>

#include <gtest/gtest.h>

#include "tests/support/machine/Sandbox.h"
#include "tests/support/texts/SampleFiles.h"
#include "tests/xml/reader/MendedText.h"
#include "tests/xml/reader/XMLSideBySide.h"
#include "xml/reader/XMLReader.h"
#include "xml/text/TextDecoding.h"

// The seeds of the fuzz targets, through the same checks.

namespace vornic::test {

TEST(XMLSeeds, breakNoRule) {
    std::size_t seeds = 0;
    for (const std::string& path : filesBelow(VORNIC_SOURCE_DIR "/fuzz/seeds/xml")) {
        const std::string bytes = readBytes(path);
        EXPECT_EQ(brokenRuleOfMending(bytes), "") << path;
        ErrorSlot error;
        const std::string text = decodeXMLBytes(bytes, error).value_or(bytes);
        const XMLReading reading = readXML(text, XMLMode::tolerant);
        const std::string mended = applyXMLEdits(text, reading.edits);
        EXPECT_EQ(differenceOfReaderAndTree(mended), "") << path;
        EXPECT_EQ(differenceAfterWriting(mended), "") << path;
        ++seeds;
    }
    EXPECT_GT(seeds, 20U);
}

}  // namespace vornic::test
