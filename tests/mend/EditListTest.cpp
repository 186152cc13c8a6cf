#include <algorithm>
#include <random>

#include <gtest/gtest.h>

#include "mend/EditList.h"

namespace vornic {

namespace {

// Edits of a text of the given length that only their offsets keep apart, many of them touching.
EditList randomEdits(std::mt19937& random, std::size_t length) {
    const auto upTo = [&random](std::size_t most) {
        return std::uniform_int_distribution<std::size_t>(0, most)(random);
    };
    EditList edits;
    for (std::size_t at = upTo(3); at <= length; at += upTo(3)) {
        const std::size_t removed = std::min(upTo(3), length - at);
        std::string text;
        for (std::size_t count = upTo(3); count != 0; --count) {
            text += static_cast<char>('A' + upTo(25));
        }
        edits.push_back({at, removed, text});
        at += removed + 1;
    }
    return edits;
}

TEST(EditList, leavesTheBytesAloneThatNoEditNames) {
    EXPECT_EQ(applyEdits("a\r\n\tb\xFF c", {{1, 2, ""}, {5, 0, "<"}, {6, 1, "&amp;"}}),
              "a\tb<\xFF&amp;c");
    EXPECT_EQ(applyEdits("as it is", {}), "as it is");
    EXPECT_EQ(applyEdits("", {{0, 0, "new"}}), "new");
}

TEST(EditList, handsOverInLargePiecesWhatItWouldMake) {
    std::mt19937 random(2);
    std::string text(300'000, 'a');
    EditList edits = randomEdits(random, 100'000);
    for (const Edit& edit : randomEdits(random, 50)) {
        edits.push_back({edit.offset + 200'000, edit.length, edit.text});
    }
    std::string made;
    std::size_t pieces = 0;
    const auto take = [&](std::string_view piece) {
        made += piece;
        ++pieces;
        return true;
    };
    EXPECT_TRUE(forEachPieceAfter(text, edits, take));
    EXPECT_TRUE(made == applyEdits(text, edits));
    EXPECT_LT(pieces, 12U);
    made.clear();
    EXPECT_TRUE(forEachPieceAfter("abc", {{1, 1, "new"}}, take));
    EXPECT_EQ(made, "anewc");
    EXPECT_FALSE(forEachPieceAfter(text, edits, [](std::string_view) { return false; }));
    EXPECT_FALSE(forEachPieceAfter("abc", {}, [](std::string_view) { return false; }));
}

TEST(EditList, composedEditsDoWhatBothListsDo) {
    std::mt19937 random(1);
    for (int round = 0; round < 20000; ++round) {
        const std::string text = std::string("abcdefghijklmnopqrstuvwxyz")
                                     .substr(0, static_cast<std::size_t>(round) % 27);
        const EditList first = randomEdits(random, text.size());
        const std::string between = applyEdits(text, first);
        const EditList second = randomEdits(random, between.size());
        const EditList both = composeEdits(first, second);
        ASSERT_EQ(applyEdits(text, both), applyEdits(between, second)) << text << " " << round;
        for (std::size_t index = 1; index < both.size(); ++index) {
            ASSERT_LT(both[index - 1].offset + both[index - 1].length, both[index].offset);
        }
    }
}

TEST(EditList, writesInTheEncodingOfTheFile) {
    const EditList edits = {{3, 1, "é"}, {9, 0, "€&"}};
    EXPECT_EQ(encodeEdits(edits, "UTF-8"), edits);
    EXPECT_EQ(encodeEdits(edits, "ISO-8859-1"), (EditList{{3, 1, "\xE9"}, {9, 0, "&#x20AC;&"}}));
    EXPECT_EQ(encodeEdits({{0, 0, "é<"}}, "UTF-16LE"),
              (EditList{{0, 0, std::string("\xE9\0<\0", 4)}}));
}

TEST(EditList, findsEditsOfTheBytesInTheText) {
    ErrorSlot error;
    const std::string bytes("\xFF\xFE<\0a\0>\0\x3D\xD8\x00\xDE<\0/\0a\0>\0", 20);
    const std::optional<DecodedText> source = decodeXMLText(bytes, error);
    ASSERT_TRUE(source);
    ASSERT_EQ(source->text, "<a>\xF0\x9F\x98\x80</a>");
    EXPECT_EQ(toTextOffsets({{8, 4, "x"}, {16, 2, "b"}}, *source),
              (EditList{{3, 4, "x"}, {9, 1, "b"}}));
}

}  // namespace

}  // namespace vornic
