#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "platform/ArchivedLinks.h"

namespace vornic::platform {
namespace {

TEST(NameInsideFolderTest, takesSuperfluousPartsOut) {
    EXPECT_EQ(nameInsideFolder("a/b.xml"), "a/b.xml");
    EXPECT_EQ(nameInsideFolder("./a//b/"), "a/b");
    EXPECT_EQ(nameInsideFolder("a/..b/c..."), "a/..b/c...");
    EXPECT_EQ(nameInsideFolder("./"), "");
}

TEST(NameInsideFolderTest, refusesAbsoluteNamesAndDots) {
    for (const char* name :
         {"/", "/etc/hosts", "//a", "..", "../a", "a/../b", "a/..", "a/../../b"}) {
        EXPECT_EQ(nameInsideFolder(name), std::nullopt) << name;
    }
}

TEST(LinkOutOfFolderTest, allowsLinksThatStayInside) {
    EXPECT_EQ(linkOutOfFolder({}), std::nullopt);
    EXPECT_EQ(linkOutOfFolder({{"a", "b"},
                               {"d/e/up", "../../x"},
                               {"d/e/top", "../.."},
                               {"d/round", "../d/./e/../e"},
                               {"dangling", "no/such"}}),
              std::nullopt);
}

TEST(LinkOutOfFolderTest, findsALinkThatLeadsOutByItself) {
    EXPECT_EQ(linkOutOfFolder({{"a", "/etc"}}), "a");
    EXPECT_EQ(linkOutOfFolder({{"a", ".."}}), "a");
    EXPECT_EQ(linkOutOfFolder({{"d/a", "../.."}}), "d/a");
    EXPECT_EQ(linkOutOfFolder({{"d/a", "x/../../../y"}}), "d/a");
}

TEST(LinkOutOfFolderTest, findsALinkThatLeadsOutThroughAnother) {
    // By its text alone "d/e/f/x" stays inside: "up" is shorter than it looks.
    EXPECT_EQ(linkOutOfFolder({{"d/e/f/up", "../../.."}, {"d/e/f/x", "up/../.."}}), "d/e/f/x");
    EXPECT_EQ(linkOutOfFolder({{"short", "."}, {"x", "short/../y"}}), "x");
}

TEST(LinkOutOfFolderTest, endsOnLinksThatLeadInACircle) {
    EXPECT_EQ(linkOutOfFolder({{"a", "b"}, {"b", "a"}, {"self", "self/x"}}), std::nullopt);
}

}  // namespace
}  // namespace vornic::platform
