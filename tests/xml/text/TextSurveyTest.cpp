#include <cstddef>
#include <random>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "base/Utf8.h"
#include "xml/reader/ForbiddenCharacters.h"
#include "xml/text/TextDecoding.h"
#include "xml/text/TextSurvey.h"

namespace vornic {

namespace {

struct Seen {
    bool isUTF8 = false;
    bool hasForbidden = false;
    friend bool operator==(const Seen&, const Seen&) = default;
};

Seen seenIn(const TextSurvey& survey) {
    return {survey.isUTF8(), survey.isUTF8() && survey.forbidden() != XMLForbidden::none};
}

// By the functions that look at a whole text.
Seen expectedOf(std::string_view bytes) {
    const bool isUTF8 = !firstInvalidUTF8(bytes);
    return {isUTF8, isUTF8 && ForbiddenCharacters::runsIn(bytes) != 0};
}

Seen seenInPieces(std::string_view bytes, std::size_t length) {
    TextSurvey survey;
    for (; !bytes.empty(); bytes.remove_prefix(std::min(length, bytes.size()))) {
        survey.take(bytes.substr(0, length));
    }
    return seenIn(survey);
}

TEST(TextSurvey, seesInPiecesOfAnyLengthWhatAWholeTextHolds) {
    using namespace std::string_literals;
    const std::string plain(100, 'a');
    for (const std::string& middle : {""s,
                                      "\t\r\n\x7F"s,
                                      "\v"s,
                                      "\0"s,
                                      "\xC3\xA9"s,
                                      "\xE2\x82\xAC"s,
                                      "\xF0\x9F\x8E\xAC"s,
                                      "\xEF\xBF\xBD"s,
                                      "\xEF\xBF\xBE"s,
                                      "\xEF\xBF\xBF"s,
                                      "\xEF\xBB\xBF"s,
                                      "\xC3"s,
                                      "\xE2\x82"s,
                                      "\xF0\x9F\x8E"s,
                                      "\xC3("s,
                                      "\x80"s,
                                      "\xFF"s,
                                      "\xC0\x80"s,
                                      "\xED\xA0\x80"s,
                                      "\xF4\x90\x80\x80"s}) {
        for (const std::string& text :
             {middle, plain + middle, middle + plain, plain + middle + plain, middle + middle}) {
            EXPECT_EQ(seenIn(TextSurvey(text)), expectedOf(text)) << testing::PrintToString(text);
            for (std::size_t length = 1; length <= 5; ++length) {
                EXPECT_EQ(seenInPieces(text, length), expectedOf(text))
                    << testing::PrintToString(text) << " by " << length;
            }
        }
    }
}

TEST(TextSurvey, agreesWithTheWholeTextOnRandomOnes) {
    std::mt19937 random(15);  // NOLINT: the same texts each time
    int sound = 0;
    for (int round = 0; round < 2000; ++round) {
        std::string text;
        for (std::size_t count = random() % 60; count != 0; --count) {
            switch (random() % 40) {
                case 0:
                    text += static_cast<char>(random());
                    break;
                case 1:
                case 2:
                case 3:
                    appendUtf8(text, static_cast<char32_t>(random() % 0x11000));
                    break;
                default:
                    text += static_cast<char>(' ' + random() % 90);
            }
        }
        const Seen expected = expectedOf(text);
        sound += expected.isUTF8 ? 1 : 0;
        ASSERT_EQ(seenIn(TextSurvey(text)), expected) << testing::PrintToString(text);
        ASSERT_EQ(seenInPieces(text, 1 + random() % 20), expected) << testing::PrintToString(text);
    }
    EXPECT_GT(sound, 200);
    EXPECT_LT(sound, 1800);
}

TEST(TextSurvey, forgetsWhatCameBeforeABeginning) {
    TextSurvey survey("\xFF\v\xC3");
    survey.begin();
    survey.take("a");
    EXPECT_TRUE(survey.isUTF8());
    EXPECT_EQ(survey.forbidden(), XMLForbidden::none);
}

}  // namespace

}  // namespace vornic
