#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "convert/catalogue/VersionCatalogue.h"
#include "formats/xmeml/Version.h"
#include "platform/settings/PropertyList.h"
#include "tests/support/machine/Sandbox.h"

namespace vornic::xmeml {
namespace {

TEST(XMEMLVersion, knowsTheElementsOfTheCatalogueThatConversionsRead) {
    const std::string path = VORNIC_SOURCE_DIR "/resources/xml_versions.plist";
    const auto list = platform::PropertyList::parse(test::readBytes(path));
    ASSERT_TRUE(list && list->dictionary());
    const VersionCatalogue catalogue(*list->dictionary());
    EXPECT_EQ(catalogue.sortedKeys().size(), static_cast<std::size_t>(kNewestVersion));
    std::size_t count = 0;
    for (int version = 1; version <= kNewestVersion; ++version) {
        for (const std::string& element : catalogue.elements(std::to_string(version))) {
            EXPECT_EQ(versionOfElement(element.substr(1)), version) << element;
            ++count;
        }
    }
    EXPECT_EQ(count, 49U);
}

TEST(XMEMLVersion, takesNamesThatNoVersionDeclaresForOldOnes) {
    EXPECT_EQ(versionOfElement("clipitem"), 1);
    EXPECT_EQ(versionOfElement("pproTicksIn"), 1);
    EXPECT_EQ(versionOfElement("Uuid"), 1);
}

TEST(XMEMLVersion, readsPlainNumbersAlone) {
    EXPECT_EQ(parseVersion("1"), 1);
    EXPECT_EQ(parseVersion("5"), 5);
    for (const char* const text : {"", "0", "6", "5.0", "05", " 5", "1.10", "x"}) {
        EXPECT_EQ(parseVersion(text), std::nullopt) << text;
    }
}

}  // namespace
}  // namespace vornic::xmeml
