#include <string>

#include <gtest/gtest.h>

#include "media/PathMap.h"

namespace vornic::test {

namespace {

class PathMapTest : public ::testing::Test {
  protected:
    // "" where no rule fits.
    std::string moved(std::string_view url) {
        const auto path = map.apply(readMediaPath(url).path);
        return path ? path->text() : "";
    }
    void add(std::string_view rule) { EXPECT_EQ(map.add(rule), ""); }

    PathMap map;
};

TEST_F(PathMapTest, comparesWholeNames) {
    add("/Volumes/A=/srv");
    EXPECT_EQ(moved("file:///Volumes/A/x/y.mov"), "/srv/x/y.mov");
    EXPECT_EQ(moved("file:///Volumes/A"), "/srv");
    EXPECT_EQ(moved("file:///Volumes/AB/y.mov"), "");
    EXPECT_EQ(moved("file:///volumes/A/y.mov"), "") << "case counts but on Windows";
}

TEST_F(PathMapTest, theLongestOldPathCounts) {
    add("/V=/short");
    add("/V/A/B=/long");
    add("/V/A=/middle");
    EXPECT_EQ(moved("/V/A/B/x.mov"), "/long/x.mov");
    EXPECT_EQ(moved("/V/A/C/x.mov"), "/middle/C/x.mov");
    EXPECT_EQ(moved("/V/x.mov"), "/short/x.mov");
}

TEST_F(PathMapTest, leadsFromAnySystemToAnyOther) {
    add("C:\\Media=/srv");
    add("\\\\server\\share\\=/Volumes/Share");
    add("/Volumes/Back=D:/Back");
    add("file://localhost/Volumes/A%20B=//server/ab");
    EXPECT_EQ(moved("file://localhost/c%3a/MEDIA/x.mov"), "/srv/x.mov");
    EXPECT_EQ(moved("file://SERVER/Share/x.mov"), "/Volumes/Share/x.mov");
    EXPECT_EQ(moved("/Volumes/Back/x.mov"), "D:/Back/x.mov");
    EXPECT_EQ(moved("file:///Volumes/A%20B/x.mov"), "//server/ab/x.mov");
}

TEST_F(PathMapTest, accentsAreTheSameHoweverTheyAreWritten) {
    add("/V/caf\u00E9=/N");
    EXPECT_EQ(moved("file:///V/cafe%CC%81/x.mov"), "/N/x.mov");
}

TEST_F(PathMapTest, anEqualsSignMayBelongToAName) {
    add("/V/a=b=/N");
    EXPECT_EQ(moved("/V/a=b/x.mov"), "/N/x.mov");
    add("/W=/N/c=/d");
    EXPECT_EQ(moved("/W/x.mov"), "/N/c=/d/x.mov");
}

TEST_F(PathMapTest, wantsTwoAbsolutePathsAndOneAnswer) {
    EXPECT_EQ(map.add("/V"), "--map wants OLD=NEW, not /V");
    EXPECT_EQ(map.add("V=/N"), "--map wants two absolute paths, not V=/N");
    EXPECT_EQ(map.add("/V=N"), "--map wants two absolute paths, not /V=N");
    EXPECT_EQ(map.add("=/N"), "--map wants two absolute paths, not =/N");
    add("C:/V=/N");
    EXPECT_EQ(map.add("c:\\v=/M"), "--map gives two new places to c:/v");
    EXPECT_TRUE(PathMap().isEmpty());
}

TEST_F(PathMapTest, theRootMayBeMapped) {
    add("/=/mnt/old");
    EXPECT_EQ(moved("/V/x.mov"), "/mnt/old/V/x.mov");
}

}  // namespace

}  // namespace vornic::test
