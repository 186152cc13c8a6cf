#include <cstddef>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "formats/xmeml/ElementSearch.h"

namespace vornic {
namespace {

using Strings = std::vector<std::string>;

bool occurs(std::string_view text, const std::string& element) {
    ElementSearch search({element});
    search.append(text);
    return search.found(0);
}

TEST(ElementSearch, findsAnElementFollowedByABlankOrByAGreaterThanSign) {
    EXPECT_TRUE(occurs("<a><name>b</name></a>", "<name"));
    EXPECT_TRUE(occurs("<a><name id=\"1\">b</name></a>", "<name"));
    EXPECT_TRUE(occurs("<name >", "<name"));
}

TEST(ElementSearch, findsNoLongerNameAndNoEmptyElementTag) {
    EXPECT_FALSE(occurs("<names>", "<name"));
    EXPECT_FALSE(occurs("<name/>", "<name"));
    EXPECT_FALSE(occurs("<name\n>", "<name"));
    EXPECT_FALSE(occurs("<name", "<name"));
    EXPECT_FALSE(occurs("</name>", "<name"));
    EXPECT_TRUE(occurs("<name></name>", "<name"));
}

TEST(ElementSearch, distinguishesCapitalsFromSmallLetters) {
    EXPECT_FALSE(occurs("<uuid>", "<UUID"));
    EXPECT_TRUE(occurs("<UUID>", "<UUID"));
}

TEST(ElementSearch, searchesCommentsAndValuesLikeAnyOtherText) {
    EXPECT_TRUE(occurs("<!-- <name> -->", "<name"));
    EXPECT_TRUE(occurs("<a b='<name '/>", "<name"));
}

TEST(ElementSearch, findsAStringThatABeginningOfItPrecedes) {
    EXPECT_TRUE(occurs("<na<name>", "<name"));
    EXPECT_TRUE(occurs("<<name>", "<name"));
    EXPECT_TRUE(occurs("aaab>", "aab"));
}

TEST(ElementSearch, findsAStringAtTheEndOfALongerOneThatFails) {
    const Strings elements = {"<ab cdef", "b cd", "cd"};
    ElementSearch search(elements);
    search.append("<ab cd>");
    EXPECT_FALSE(search.found(0));
    EXPECT_TRUE(search.found(1));
    EXPECT_TRUE(search.found(2));
}

TEST(ElementSearch, findsAStringInTheMiddleOfALongerOne) {
    ElementSearch search({"<ab cd ef", "cd"});
    search.append("<ab cd ");
    EXPECT_FALSE(search.found(0));
    EXPECT_TRUE(search.found(1));
    search.append("ef>");
    EXPECT_TRUE(search.found(0));
}

TEST(ElementSearch, findsAStringWhereverThePiecesAreCut) {
    const std::string text = "<a><name>b</name></a>";
    for (std::size_t first = 0; first <= text.size(); ++first) {
        for (std::size_t second = first; second <= text.size(); ++second) {
            ElementSearch search({"<name"});
            search.append(std::string_view(text).substr(0, first));
            search.append(std::string_view(text).substr(first, second - first));
            search.append(std::string_view(text).substr(second));
            EXPECT_TRUE(search.found(0)) << first << ", " << second;
        }
    }
}

TEST(ElementSearch, saysWhenMorePiecesChangeNothing) {
    ElementSearch search({"<a", "<b"});
    EXPECT_TRUE(search.append("<a>"));
    EXPECT_TRUE(search.append("<a>"));
    EXPECT_FALSE(search.append("<b "));
    EXPECT_FALSE(search.append("<c>"));
    EXPECT_TRUE(search.found(0));
    EXPECT_TRUE(search.found(1));
}

TEST(ElementSearch, countsAStringOnceThatOccursWithBothEndings) {
    ElementSearch search({"<a", "<b"});
    EXPECT_TRUE(search.append("<a><a >"));
    EXPECT_FALSE(search.append("<b>"));
    EXPECT_TRUE(search.found(1));
}

TEST(ElementSearch, hasNothingToFindWithoutStrings) {
    ElementSearch search({});
    EXPECT_FALSE(search.append("<a>"));
}

TEST(ElementSearch, takesStringsThatBeginWithDifferentBytes) {
    const Strings elements = {"name", "<clip", "\xC3\xA9", " id"};
    ElementSearch search(elements);
    search.append("<name id='1'> <clip \xC3\xA9>");
    EXPECT_TRUE(search.found(0));
    EXPECT_TRUE(search.found(1));
    EXPECT_TRUE(search.found(2));
    EXPECT_FALSE(search.found(3));
}

TEST(ElementSearch, takesTheEmptyStringForTheEndingAlone) {
    EXPECT_TRUE(occurs("a b", ""));
    EXPECT_TRUE(occurs("<a>", ""));
    EXPECT_FALSE(occurs("ab\n", ""));
}

TEST(ElementSearch, marksEachCopyOfARepeatedString) {
    ElementSearch search({"<a", "<a"});
    EXPECT_FALSE(search.append("<a>"));
    EXPECT_TRUE(search.found(0));
    EXPECT_TRUE(search.found(1));
}

TEST(ElementSearch, takesEveryByteValue) {
    std::string all;
    for (int byte = 0; byte < 256; ++byte) {
        all += static_cast<char>(byte);
    }
    EXPECT_TRUE(occurs("x" + all + ">", all));
    EXPECT_FALSE(occurs("x" + all, all));
}

/// A text over few letters, so that strings overlap and repeat.
std::string randomText(std::mt19937& random, std::size_t longest) {
    constexpr std::string_view kLetters = "<ab >";
    std::string text(std::uniform_int_distribution<std::size_t>(0, longest)(random), ' ');
    for (char& letter : text) {
        letter =
            kLetters[std::uniform_int_distribution<std::size_t>(0, kLetters.size() - 1)(random)];
    }
    return text;
}

bool occursPlainly(const std::string& text, const std::string& element) {
    return text.find(element + " ") != std::string::npos ||
           text.find(element + ">") != std::string::npos;
}

TEST(ElementSearch, agreesWithAPlainSearchForEachString) {
    std::mt19937 random(4711);  // NOLINT(cert-msc51-cpp): the same texts in every run
    for (int round = 0; round < 3000; ++round) {
        Strings elements;
        for (int i = 0; i < 4; ++i) {
            elements.push_back(randomText(random, 4));
        }
        const std::string text = randomText(random, 30);
        ElementSearch search(elements);
        const std::size_t cut = std::uniform_int_distribution<std::size_t>(0, text.size())(random);
        search.append(std::string_view(text).substr(0, cut));
        search.append(std::string_view(text).substr(cut));
        for (std::size_t i = 0; i < elements.size(); ++i) {
            EXPECT_EQ(search.found(i), occursPlainly(text, elements[i]))
                << "'" << elements[i] << "' in '" << text << "'";
        }
    }
}

}  // namespace
}  // namespace vornic
