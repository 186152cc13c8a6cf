#include <chrono>
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "platform/archives/ArchivedLinks.h"

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

TEST(LinkOutOfFolderTest, goesOnAfterALinkThatComesFirst) {
    // "z" is followed in the middle of "a", and then again.
    EXPECT_EQ(linkOutOfFolder({{"a", "d/z/z/x"}, {"d/z", "../d"}}), std::nullopt);
    EXPECT_EQ(linkOutOfFolder({{"a", "d/z/../../.."}, {"d/z", "e/f"}}), std::nullopt);
    EXPECT_EQ(linkOutOfFolder({{"a", "d/z/../../../.."}, {"d/z", "e/f"}}), "a");
}

TEST(LinkOutOfFolderTest, takesTimeInProportionToTheTexts) {
    // Each of these links leads through all the ones before it.
    ArchivedLinks links{{"l0", "."}};
    std::string before = "l0";
    for (int number = 1; number < 50'000; ++number) {
        const std::string name = "l" + std::to_string(number);
        links[name] = before + "/" + before + "/" + before;
        before = name;
    }
    links["long"] = "";
    for (int step = 0; step < 1'000'000; ++step) {
        links["long"] += "l49999/";
    }
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(linkOutOfFolder(links), std::nullopt);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
    links["long"] += "..";
    EXPECT_EQ(linkOutOfFolder(links), "long");
}

TEST(EntryBelowLinkTest, findsWhatALinkStandsAbove) {
    EXPECT_EQ(entryBelowLink({"a", "a/b", "a.b", "d"}, {{"a", "d"}}), "a/b");
    EXPECT_EQ(entryBelowLink({"a", "a.b", "ab/c", "d/e"}, {{"a", "d"}}), std::nullopt);
    EXPECT_EQ(entryBelowLink({"a", "a/b/c/d"}, {{"a", "d"}}), "a/b/c/d");
    EXPECT_EQ(entryBelowLink({"a", "a/b"}, {}), std::nullopt);
}

TEST(DepthOfTest, countsComponents) {
    EXPECT_EQ(depthOf(""), 0U);
    EXPECT_EQ(depthOf("a"), 1U);
    EXPECT_EQ(depthOf("a/b/c"), 3U);
}

}  // namespace
}  // namespace vornic::platform
