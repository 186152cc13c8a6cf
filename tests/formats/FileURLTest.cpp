#include <gtest/gtest.h>

#include "formats/FileURL.h"

namespace vornic {

TEST(FileURL, isAbsoluteWithTheSchemeOfFiles) {
    EXPECT_EQ(faultOfFileURL("file:///a/b.mov"), FileURLFault::none);
    EXPECT_EQ(faultOfFileURL("FILE:///a/b.mov"), FileURLFault::none);
    EXPECT_EQ(faultOfFileURL("file://localhost/a/b.mov"), FileURLFault::none);
    EXPECT_EQ(faultOfFileURL("b.mov"), FileURLFault::notAbsolute);
    EXPECT_EQ(faultOfFileURL("/a/b.mov"), FileURLFault::notAbsolute);
    EXPECT_EQ(faultOfFileURL("http://a/b.mov"), FileURLFault::notAbsolute);
    EXPECT_EQ(faultOfFileURL("file://"), FileURLFault::notAbsolute);
    EXPECT_EQ(faultOfFileURL("file:/a/b.mov"), FileURLFault::notAbsolute);
    EXPECT_EQ(faultOfFileURL("file:a.mov"), FileURLFault::notAbsolute);
    EXPECT_EQ(faultOfFileURL(""), FileURLFault::notAbsolute);
}

TEST(FileURL, hasNoWindowsPathInIt) {
    EXPECT_EQ(faultOfFileURL("file://localhostC:\\a\\b.mov"), FileURLFault::windowsPath);
    EXPECT_EQ(faultOfFileURL("file://localhostC:/a/b.mov"), FileURLFault::windowsPath);
    EXPECT_EQ(faultOfFileURL("file://C:/a/b.mov"), FileURLFault::windowsPath);
    EXPECT_EQ(faultOfFileURL("C:\\a\\b.mov"), FileURLFault::windowsPath);
    EXPECT_EQ(faultOfFileURL("\\\\server\\b.mov"), FileURLFault::windowsPath);
    EXPECT_EQ(faultOfFileURL("file:///C:/a/b.mov"), FileURLFault::none);
}

TEST(FileURL, hasWhatIsNotPlainEncoded) {
    for (const char* const url :
         {"file:///a b.mov", "file:///a%b.mov", "file:///a%2.mov", "file:///a#b.mov",
          "file:///a?b.mov", "file:///\xC3\xA9.mov", "file:///[a].mov", "file:///a%"}) {
        EXPECT_EQ(faultOfFileURL(url), FileURLFault::notEncoded) << url;
    }
    EXPECT_EQ(faultOfFileURL("file:///a%20b's%C3%A9(1)&,;=+$!~.mov"), FileURLFault::none);
}

TEST(FileURL, namesThisComputerAndAFileWithAnExtension) {
    EXPECT_EQ(faultOfFileURL("file://Volumes/a.mov"), FileURLFault::otherHost);
    EXPECT_EQ(faultOfFileURL("file:///a/b"), FileURLFault::noExtension);
    EXPECT_EQ(faultOfFileURL("file:///a.b/"), FileURLFault::noExtension);
    EXPECT_EQ(faultOfFileURL("file:///a/.mov"), FileURLFault::noExtension);
    EXPECT_EQ(faultOfFileURL("file:///a/b."), FileURLFault::noExtension);
}

TEST(FileURL, isMadeOfWhatWasMeant) {
    EXPECT_EQ(encodedURL("file:///a b%20c%.mov"), "file:///a%20b%20c%25.mov");
    EXPECT_EQ(encodedURL("file:///\xC3\xA9#1.mov"), "file:///%C3%A9%231.mov");
    EXPECT_EQ(fileURLOfPath("/a b.mov"), "file:///a%20b.mov");
    EXPECT_EQ(fileURLOfPath("file:/a%20b.mov"), "file:///a%20b.mov");
    EXPECT_EQ(fileURLOfPath("file:a.mov"), "");
    EXPECT_EQ(fileURLOfPath("a.mov"), "");
    EXPECT_EQ(fileURLOfPath("//server/a.mov"), "");
    EXPECT_EQ(fileURLOfWindowsPath("file://localhostC:\\a b\\c.mov"), "file:///C:/a%20b/c.mov");
    EXPECT_EQ(fileURLOfWindowsPath("file://localhost/C:\\c.mov"), "file:///C:/c.mov");
    EXPECT_EQ(fileURLOfWindowsPath("d:/c.mov"), "file:///d:/c.mov");
    EXPECT_EQ(fileURLOfWindowsPath("\\\\server\\c.mov"), "");
}

}  // namespace vornic
