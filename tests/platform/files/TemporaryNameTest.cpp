#include <set>
#include <string>

#include <gtest/gtest.h>

#include "platform/files/TemporaryName.h"

namespace vornic::platform {
namespace {

TEST(TemporaryName, makesTemporaryNamesThatAreNewAndRecognisable) {
    std::set<std::string> names;
    for (int count = 0; count < 1000; ++count) {
        names.insert(temporaryName("Cut.xml"));
    }
    EXPECT_EQ(names.size(), 1000U);
    EXPECT_TRUE(names.begin()->starts_with(".Cut.xml.vornic-")) << *names.begin();
}

TEST(TemporaryName, knowsTemporaryNames) {
    EXPECT_TRUE(isTemporaryName(temporaryName("Cut.xml")));
    EXPECT_TRUE(isTemporaryName(temporaryName(".Cut.xml.vornic-abcdefgh01")));
    for (const char* name : {"Cut.xml", "", "Cut.xml.vornic-abcdefgh01", ".Cut.xml.vornic.swap",
                             ".Cut.xml.vornic-abcdefgh0", ".Cut.xml.vornic-abcdefgh012",
                             ".Cut.xml.vornic-ABCDEFGH01", ".Cut.xml.vornic-abcdefgh01.part"}) {
        EXPECT_FALSE(isTemporaryName(name)) << name;
    }
}

TEST(TemporaryName, keepsTemporaryNamesShort) {
    EXPECT_LE(temporaryName(std::string(255, 'x')).size(), 143U);
}

}  // namespace
}  // namespace vornic::platform
