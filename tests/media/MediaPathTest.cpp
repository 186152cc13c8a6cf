#include <string>

#include <gtest/gtest.h>

#include "media/MediaPath.h"

namespace vornic::test {

namespace {

struct Written {
    std::string_view url;
    PathForm form;
    PathStyle style;
    std::string_view path;
};

class MediaPathForms : public ::testing::TestWithParam<Written> {};

TEST_P(MediaPathForms, areTakenApart) {
    const WrittenPath read = readMediaPath(GetParam().url);
    EXPECT_EQ(read.form, GetParam().form) << nameOf(read.form);
    EXPECT_EQ(read.path.style, GetParam().style);
    EXPECT_EQ(read.path.text(), GetParam().path);
}

INSTANTIATE_TEST_SUITE_P(
    ThatExportersWrite, MediaPathForms,
    ::testing::Values(
        Written{"file://localhost/Volumes/A%20B/x.mov", PathForm::localhost, PathStyle::posix,
                "/Volumes/A B/x.mov"},
        Written{"FILE://LOCALHOST/a/x.mov", PathForm::localhost, PathStyle::posix, "/a/x.mov"},
        Written{"file:///a/b.mov", PathForm::tripleSlash, PathStyle::posix, "/a/b.mov"},
        Written{"file:/a/b.mov", PathForm::singleSlash, PathStyle::posix, "/a/b.mov"},
        Written{"file:///a//./b.mov", PathForm::tripleSlash, PathStyle::posix, "/a/b.mov"},
        Written{"file:////Volumes/A/x.mov", PathForm::tripleSlash, PathStyle::posix,
                "/Volumes/A/x.mov"},
        Written{"file:///100%/a#1?.mov", PathForm::tripleSlash, PathStyle::posix, "/100%/a#1?.mov"},
        Written{"file:///a%25b%23.mov", PathForm::tripleSlash, PathStyle::posix, "/a%b#.mov"},
        Written{"file://localhost/C%3a/A/x.mov", PathForm::windows, PathStyle::windows,
                "C:/A/x.mov"},
        Written{"file://localhost/D:/A/x.mov", PathForm::localhost, PathStyle::windows,
                "D:/A/x.mov"},
        Written{"file:///C:/A/x.mov", PathForm::tripleSlash, PathStyle::windows, "C:/A/x.mov"},
        Written{"file://C:\\A\\x.mov", PathForm::tripleSlash, PathStyle::windows, "C:/A/x.mov"},
        Written{"file://localhostC:\\A\\x.mov", PathForm::localhost, PathStyle::windows,
                "C:/A/x.mov"},
        Written{"C:\\A B\\100%.mov", PathForm::plain, PathStyle::windows, "C:/A B/100%.mov"},
        Written{"\\\\server\\share\\x.mov", PathForm::plain, PathStyle::unc,
                "//server/share/x.mov"},
        Written{"file://server/share/x.mov", PathForm::host, PathStyle::unc,
                "//server/share/x.mov"},
        Written{"file://localhost//server/share/x.mov", PathForm::localhost, PathStyle::unc,
                "//server/share/x.mov"},
        Written{"file:////server/share/x.mov", PathForm::tripleSlash, PathStyle::unc,
                "//server/share/x.mov"},
        Written{"/Volumes/A%20B/x.mov", PathForm::plain, PathStyle::posix, "/Volumes/A%20B/x.mov"},
        Written{"sub%20folder/x.mov", PathForm::relative, PathStyle::relative, "sub folder/x.mov"},
        Written{" file:///a/b.mov", PathForm::tripleSlash, PathStyle::posix, "/a/b.mov"},
        Written{"./x.mov", PathForm::relative, PathStyle::relative, "x.mov"},
        Written{"https://server/x.mov", PathForm::other, PathStyle::none, "https://server/x.mov"},
        Written{"", PathForm::other, PathStyle::none, ""}));

std::string moved(std::string_view url, std::string_view newPath, std::size_t kept) {
    return writtenLike(url, readTypedPath(newPath), kept, PathForm::tripleSlash);
}

TEST(MediaPath, keepsTheFormThatItHad) {
    EXPECT_EQ(moved("file://localhost/V/a.mov", "/N/a.mov", 1), "file://localhost/N/a.mov");
    EXPECT_EQ(moved("file:///V/a.mov", "/N/a.mov", 1), "file:///N/a.mov");
    EXPECT_EQ(moved("file:/V/a.mov", "/N/a.mov", 1), "file:/N/a.mov");
    EXPECT_EQ(moved("/V/a.mov", "/N O/a.mov", 1), "/N O/a.mov");
    EXPECT_EQ(moved("C:\\V\\a.mov", "D:/N/a.mov", 1), "D:\\N\\a.mov");
    EXPECT_EQ(moved("C:/V/a.mov", "D:/N/a.mov", 1), "D:/N/a.mov");
    EXPECT_EQ(moved("C:\\V\\a.mov", "/N/a.mov", 1), "/N/a.mov");
    EXPECT_EQ(moved("/V/a.mov", "C:\\N\\a.mov", 1), "C:\\N\\a.mov");
    EXPECT_EQ(moved("file://localhost/C%3a/V/a.mov", "D:/N/a.mov", 1),
              "file://localhost/D%3a/N/a.mov");
    EXPECT_EQ(moved("file://server/share/a.mov", "//other/media/a.mov", 1),
              "file://other/media/a.mov");
}

TEST(MediaPath, takesTheNearestFormWhereItsOwnHasNoRoom) {
    EXPECT_EQ(moved("file://localhost/C%3a/V/a.mov", "/N/a.mov", 1), "file://localhost/N/a.mov");
    EXPECT_EQ(moved("file://server/share/a.mov", "/N/a.mov", 1), "file:///N/a.mov");
    EXPECT_EQ(moved("a.mov", "/N/a.mov", 1), "file:///N/a.mov");
    EXPECT_EQ(moved("file:/V/a.mov", "//s/t/a.mov", 1), "file:////s/t/a.mov");
    EXPECT_EQ(moved("file://localhost/V/a.mov", "//s/t/a.mov", 1), "file://localhost//s/t/a.mov");
}

TEST(MediaPath, leavesTheEncodingOfWhatStays) {
    EXPECT_EQ(moved("file:///V/a%2db%c3%a9.mov", "/N/a-b\u00E9.mov", 1),
              "file:///N/a%2db%c3%a9.mov");
    EXPECT_EQ(moved("file:///V/a b.mov", "/N/a b.mov", 1), "file:///N/a%20b.mov")
        << "what has to be encoded is";
    EXPECT_EQ(moved("file:///V%2fa.mov", "/N/a.mov", 1), "file:///N/a.mov")
        << "an encoded slash parts names, too";
}

TEST(MediaPath, everyNameComesBackFromItsURL) {
    for (const std::string name :
         {"a b", "a#b", "100%", "%41", "what?", "\u4E2D\u6587", "\U0001F600", "e\u0301", "\xFF\xFE",
          "a'b\"c", "<&>", "a;b=c", "tab\tline\n", "a\\b", "[x]", "C:"}) {
        const MediaPath path{PathStyle::posix, {"N", name, name + ".mov"}, ""};
        for (const PathForm form : {PathForm::localhost, PathForm::tripleSlash, PathForm::windows,
                                    PathForm::singleSlash, PathForm::host, PathForm::relative}) {
            const std::string url = writtenAs(form, path, PathForm::tripleSlash);
            EXPECT_EQ(readMediaPath(url).path, path) << url;
            EXPECT_EQ(url.find_first_of(" #?<>\"\\"), std::string::npos) << url;
        }
    }
}

TEST(MediaPath, isWrittenInAForm) {
    const MediaPath drive = readTypedPath("C:\\A\\x.mov");
    EXPECT_EQ(writtenAs(PathForm::windows, drive, PathForm::tripleSlash),
              "file://localhost/C%3a/A/x.mov");
    EXPECT_EQ(writtenAs(PathForm::localhost, drive, PathForm::tripleSlash),
              "file://localhost/C:/A/x.mov");
    const MediaPath share = readTypedPath("\\\\s\\t\\x.mov");
    EXPECT_EQ(writtenAs(PathForm::windows, share, PathForm::tripleSlash), "file://s/t/x.mov");
}

}  // namespace

}  // namespace vornic::test
