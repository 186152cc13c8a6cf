// That a text which was read need not be read again once its characters are references.

#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/repair/pipeline/FilterRules.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/texts/SampleFiles.h"

namespace vornic::test {

namespace {

bool isMoved(const std::string& text) {
    bool moved = false;
    EXPECT_EQ(brokenRuleOfMovedReading(text, moved), "") << text;
    return moved;
}

TEST(MovedReading, standsWhereOnlyTextHasChanged) {
    EXPECT_TRUE(isMoved("<?xml version=\"1.0\"?><!DOCTYPE a><a b=\"c\">\u00E9<d></d></a>"));
    EXPECT_TRUE(isMoved("<a>\u00E9\u20AC<d></d><e>\"'></e><f/>&#32;</a><!-- end -->"));
    EXPECT_TRUE(isMoved("<a>\u00A0<b>&#9;</b><b c='d\"e'>\u00E9</b><b></b></a>"));
    EXPECT_TRUE(isMoved("<a><![CDATA[\u00E9 > \"x\" ]]>\u00E9<b></b><?p q?>\u00E9<c></c></a>"));
}

TEST(MovedReading, fallsWhereTheFilterTakesMarkupOtherwise) {
    // In a value it ends the tag, in a comment or an instruction that.
    EXPECT_FALSE(isMoved("<a b=\"x>y'z\">\u00E9</a>"));
    EXPECT_FALSE(isMoved("<a b='x>\"'>\u00E9</a>"));
    EXPECT_FALSE(isMoved("<a><!-- 1 > 0 -->\u00E9</a>"));
    EXPECT_FALSE(isMoved("<a><!-->-->\u00E9</a>"));
    EXPECT_FALSE(isMoved("<a><!--->-->\u00E9</a>"));
    EXPECT_FALSE(isMoved("<a><?p 1 > 0 ?>\u00E9</a>"));
    EXPECT_FALSE(isMoved("<!DOCTYPE a [<!ELEMENT a ANY>]><a>\u00E9</a>"));
    // Names and values change, too.
    EXPECT_FALSE(isMoved("<\u00E9/>"));
    EXPECT_FALSE(isMoved("<a b=\"\u00E9\"/>"));
    // What is taken out may have been all that stood there.
    EXPECT_FALSE(isMoved("<a><b>\U0001F600</b></a>"));
    EXPECT_FALSE(isMoved("<a>&#000000032;<b/></a>"));
    EXPECT_FALSE(isMoved("<a>plain</a>"));
}

// Documents that are well-formed throughout, with everything that the filter looks at.
class RandomDocument {
  public:
    explicit RandomDocument(std::uint32_t seed) : random_(seed) {}

    std::string make() {
        std::string text = below(2) == 0 ? "<?xml version='1.0'?>" : "";
        text += below(4) == 0 ? "<!DOCTYPE root SYSTEM \"a>b\">" : "<!DOCTYPE root>";
        return text + "<root>" + content(4) + "</root>" + (below(3) == 0 ? "<!-- \u00E9 -->" : "");
    }

  private:
    std::string content(int depth) {
        std::string text;
        for (std::size_t count = below(6); count != 0; --count) {
            text += depth != 0 && below(2) == 0 ? element(depth) : piece();
        }
        return text;
    }
    std::string element(int depth) {
        static const std::vector<std::string> kTags = {"a", "b c=\"d\"", "b c='\"'",
                                                       "e f=\"'\" g='h'", "a >"};
        static const std::vector<std::string> kOdd = {"a b=\"x>y\"", "a b='\u00E9'"};
        const std::string tag = below(30) == 0 ? kOdd[below(2)] : kTags[below(kTags.size())];
        const bool isOpen = !tag.ends_with('>');
        const std::string name = tag.substr(0, 1);
        return below(4) == 0 && isOpen
                   ? "<" + tag + "/>"
                   : "<" + tag + (isOpen ? ">" : "") + content(depth - 1) + "</" + name + ">";
    }
    std::string piece() {
        static const std::vector<std::string> kPieces = {"\u00E9",
                                                         "\u20AC\u00A0",
                                                         "\u0085",
                                                         "\x7F",
                                                         "plain",
                                                         " ",
                                                         "\n\t",
                                                         "&#32;",
                                                         "&#9;",
                                                         "\"",
                                                         "'",
                                                         ">",
                                                         "]]",
                                                         "&amp;",
                                                         "&lt;",
                                                         "&#233;",
                                                         "<?p q?>",
                                                         "<!-- a 'b' -->",
                                                         "<![CDATA[ > \" \u00E9 ]]>",
                                                         "<![CDATA[]]>"};
        static const std::vector<std::string> kOdd = {"<!-- > -->",    "<?p > ?>",   "<!-- < -->",
                                                      "<![CDATA[<]]>", "\U0001F600", "&#00233;"};
        return below(40) == 0 ? kOdd[below(kOdd.size())] : kPieces[below(kPieces.size())];
    }
    std::size_t below(std::size_t limit) {
        return std::uniform_int_distribution<std::size_t>(0, limit - 1)(random_);
    }

    std::mt19937 random_;
};

TEST(MovedReading, isThatOfTheResult) {
    int moved = 0;
    for (std::uint32_t seed = 0; seed < 4000; ++seed) {
        moved += isMoved(RandomDocument(seed).make()) ? 1 : 0;
    }
    EXPECT_GT(moved, 500);
    EXPECT_LT(moved, 3900);
}

TEST(MovedReading, isThatOfTheResultForRealFiles) {
    const std::optional<std::string> folder = samplesFolder();
    if (!folder) {
        GTEST_SKIP() << "VORNIC_SAMPLES names no folder of samples";
    }
    int moved = 0;
    for (const std::string& file : filesBelow(*folder)) {
        bool isOne = false;
        EXPECT_EQ(brokenRuleOfMovedReading(readBytes(file), isOne), "") << file;
        moved += isOne ? 1 : 0;
    }
    EXPECT_GT(moved, 0);
}

}  // namespace

}  // namespace vornic::test
