#include <gtest/gtest.h>

#include "formats/fcpxml/Bundle.h"

namespace vornic::fcpxml {

TEST(FCPXMLBundle, isKnownByItsExtensionInAnyCase) {
    for (const char* path : {"Cut.fcpxmld", "/in/Cut.FCPXMLD", "/in/Cut.FcpXmlD/"}) {
        EXPECT_TRUE(isBundleName(path)) << path;
    }
}

TEST(FCPXMLBundle, isNotKnownByAnythingElse) {
    for (const char* path : {"", "/", "Cut.fcpxml", "Cut.fcpxmld.xml", ".fcpxmld", "fcpxmld",
                             "/in/Cut.fcpxmld/Info.fcpxml"}) {
        EXPECT_FALSE(isBundleName(path)) << path;
    }
}

TEST(FCPXMLBundle, isWhatAUserTakesForTheFile) {
    EXPECT_EQ(bundleAround("/in/Cut.fcpxmld/Info.fcpxml"), "/in/Cut.fcpxmld");
    EXPECT_EQ(bundleAround("/in/Cut.fcpxml"), "/in/Cut.fcpxml");
    EXPECT_EQ(bundleAround("Info.fcpxml"), "Info.fcpxml");
}

TEST(FCPXMLBundle, hasItsProjectInInfo) {
    EXPECT_EQ(contentOfBundle("/in/Cut.fcpxmld"), "/in/Cut.fcpxmld/Info.fcpxml");
    EXPECT_EQ(contentOfBundle("Cut.fcpxmld/"), "Cut.fcpxmld/Info.fcpxml");
}

}  // namespace vornic::fcpxml
