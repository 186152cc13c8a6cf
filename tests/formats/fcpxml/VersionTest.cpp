#include <gtest/gtest.h>

#include "formats/fcpxml/Version.h"

namespace vornic::fcpxml {

TEST(FCPXMLVersion, comparesTheNumberBehindThePoint) {
    EXPECT_LT(Version::parse("1.9"), Version::parse("1.10"));
}

TEST(FCPXMLVersion, readsEveryVersionOfTheCatalogue) {
    for (int minor = 0; minor <= Version::kNewestMinor; ++minor) {
        const std::string text = "1." + std::to_string(minor);
        ASSERT_TRUE(Version::parse(text)) << text;
        EXPECT_EQ(Version::parse(text)->text(), text);
    }
}

TEST(FCPXMLVersion, knowsNoOtherText) {
    for (const char* text : {"", "1", "1.", "1.15", "1.09", "1.+9", "1.9 ", " 1.9", "2.0", "1.9.1",
                             "1.99999999999999999999", "1.-1", "0.9"}) {
        EXPECT_FALSE(Version::parse(text)) << text;
    }
}

}  // namespace vornic::fcpxml
