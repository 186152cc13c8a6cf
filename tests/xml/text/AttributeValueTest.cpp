#include <gtest/gtest.h>

#include "xml/text/AttributeValue.h"

namespace vornic {

TEST(AttributeValue, keepsPlainTextAsItIs) {
    EXPECT_EQ(normalisedAttributeValue("Scène 1 — Prüfung", false), "Scène 1 — Prüfung");
    EXPECT_EQ(normalisedAttributeValue("", false), "");
}

TEST(AttributeValue, replacesReferences) {
    EXPECT_EQ(normalisedAttributeValue("&lt;&gt;&amp;&quot;&apos;&#65;&#x42;&#x1F600;", false),
              "<>&\"'AB\xF0\x9F\x98\x80");
    EXPECT_EQ(normalisedAttributeValue("&#0000000000000000065;", false), "A");
}

TEST(AttributeValue, keepsWhatIsNoReference) {
    for (const char* text : {"&", "a & b", "&;", "&no;", "&#;", "&#x;", "&#0;", "&#xD800;",
                             "&#99999999999;", "&amp", "&#6 5;", "&&&&", "&#+65;", "&#-65;"}) {
        EXPECT_EQ(normalisedAttributeValue(text, false), text);
    }
}

TEST(AttributeValue, makesWhiteSpaceBlanks) {
    EXPECT_EQ(normalisedAttributeValue("a\tb\nc\r\nd", false), "a b c d");
    // A character that was written as a reference is meant.
    EXPECT_EQ(normalisedAttributeValue("a&#10;b", false), "a\nb");
}

TEST(AttributeValue, dropsNeedlessBlanksOfTokens) {
    EXPECT_EQ(normalisedAttributeValue(" a \n b ", true), "a b");
    EXPECT_EQ(normalisedAttributeValue("&#32;a&#32;", true), "a");
    EXPECT_EQ(normalisedAttributeValue(" \t ", true), "");
    EXPECT_EQ(normalisedAttributeValue(" a  b ", false), " a  b ");
}

}  // namespace vornic
