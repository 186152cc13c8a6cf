#include <cerrno>
#include <clocale>

#include <gtest/gtest.h>

#include "base/Error.h"

namespace vornic {
namespace {

TEST(ErrorTest, namesWhatFailedAndWhyInOneSentence) {
    const Error error = posixError("The file /a/b.xml cannot be opened", EACCES);
    EXPECT_EQ(error.description, "The file /a/b.xml cannot be opened: permission denied.");
    EXPECT_EQ(error.localizedDescription(), error.description);
}

TEST(ErrorTest, carriesDomainAndNumberAndNoPlace) {
    const Error error = posixError("The file x cannot be read", EIO);
    EXPECT_EQ(error.domain, "POSIX");
    EXPECT_EQ(error.code, EIO);
    EXPECT_EQ(error.line, 0U);
    EXPECT_EQ(error.column, 0U);
}

TEST(ErrorTest, reportsTheNumberOfAReasonItDoesNotKnow) {
    EXPECT_EQ(posixError("It cannot be done", 4711).description,
              "It cannot be done: system error 4711.");
}

TEST(ErrorTest, beginsEveryReasonWithASmallLetter) {
    for (int number = 1; number < 134; ++number) {
        const std::string text = posixError("", number).description;
        ASSERT_GT(text.size(), 3U);
        EXPECT_TRUE(text[2] >= 'a' && text[2] <= 'z') << text;
        EXPECT_EQ(text.back(), '.') << text;
    }
}

TEST(ErrorTest, keepsPathsThatAreNoTextByteForByte) {
    EXPECT_EQ(posixError("The file /a\xFF%s cannot be read", ENOENT).description,
              "The file /a\xFF%s cannot be read: no such file or folder.");
}

}  // namespace
}  // namespace vornic
