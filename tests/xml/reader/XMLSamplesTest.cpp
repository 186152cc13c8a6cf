#include <string>

#include <gtest/gtest.h>

#include "tests/support/machine/Sandbox.h"
#include "tests/support/texts/SampleFiles.h"
#include "tests/xml/reader/XMLSideBySide.h"
#include "xml/reader/XMLReader.h"
#include "xml/text/TextDecoding.h"
#include "xml/text/XMLErrorCode.h"
#include "xml/tree/XMLDocument.h"

// What the XML layer makes of files that other people's programs wrote.

namespace vornic::test {

namespace {

class XMLSamples : public ::testing::Test {
  protected:
    void SetUp() override {
        if (!samplesFolder()) {
            GTEST_SKIP() << "VORNIC_SAMPLES is not set";
        }
        folder_ = *samplesFolder();
    }

    std::string folder_;
};

}  // namespace

TEST_F(XMLSamples, areReadAndWrittenWithoutALoss) {
    std::size_t sound = 0;
    for (const std::string& path : filesBelow(folder_)) {
        ErrorSlot error;
        const std::optional<std::string> text = decodeXMLBytes(readBytes(path), error);
        if (!text) {
            continue;
        }
        sound += readXML(*text, XMLMode::strict).fault ? 0U : 1U;
        EXPECT_EQ(differenceOfReaderAndTree(*text), "") << path;
        EXPECT_EQ(differenceAfterWriting(*text), "") << path;
    }
    EXPECT_GT(sound, 200U);
}

TEST_F(XMLSamples, ofProjectsAreSound) {
    for (const char* kind : {"/xmeml", "/fcpxml"}) {
        for (const std::string& path : filesBelow(folder_ + kind)) {
            ErrorSlot error;
            const std::optional<std::string> text = textFromUTF8(readBytes(path), error);
            ASSERT_TRUE(text.has_value()) << path << ": " << error->description;
            const XMLReading reading = readXML(*text, XMLMode::tolerant);
            EXPECT_FALSE(reading.fault.has_value()) << path << ": " << reading.fault->description;
            EXPECT_TRUE(reading.mends.empty()) << path;
        }
    }
}

TEST_F(XMLSamples, thatAreDamagedAreRefusedInStrictMode) {
    for (const std::string& path : filesBelow(folder_ + "/damaged")) {
        EXPECT_TRUE(readXML(readBytes(path), XMLMode::strict).fault.has_value()) << path;
    }
}

TEST_F(XMLSamples, thatDeclareEntitiesAreRefusedForThat) {
    std::size_t refused = 0;
    for (const std::string& path : filesBelow(folder_ + "/bad/entity-bombs")) {
        const std::string text = readBytes(path);
        if (text.find("<!ENTITY") == std::string::npos || !path.ends_with(".xml")) {
            continue;
        }
        for (const XMLMode mode : {XMLMode::strict, XMLMode::tolerant}) {
            const XMLReading reading = readXML(text, mode);
            ASSERT_TRUE(reading.fault.has_value()) << path;
            EXPECT_EQ(reading.fault->code, static_cast<int>(XMLErrorCode::entityDeclaration))
                << path << ": " << reading.fault->description;
            ++refused;
        }
    }
    EXPECT_GT(refused, 20U);
}

}  // namespace vornic::test
