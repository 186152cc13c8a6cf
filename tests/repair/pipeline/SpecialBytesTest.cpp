#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "repair/pipeline/SpecialBytes.h"

namespace vornic {
namespace {

bool isSpecial(unsigned char byte) {
    return byte == '<' || byte == '>' || byte == '&' || byte == '"' || byte == '\'' ||
           byte >= 0x7F || (byte < 0x20 && byte != '\t' && byte != '\n' && byte != '\r');
}

std::vector<std::ptrdiff_t> found(const std::string& text) {
    const auto* begin = reinterpret_cast<const unsigned char*>(text.data());
    const auto* end = begin + text.size();
    SpecialBytes bytes(begin, end);
    std::vector<std::ptrdiff_t> places;
    for (const auto* at = bytes.firstFrom(begin); at != end; at = bytes.firstFrom(at + 1)) {
        places.push_back(at - begin);
    }
    return places;
}

TEST(SpecialBytes, areFoundWhateverTheirValueAndPlace) {
    for (unsigned value = 0; value < 256; ++value) {
        const auto byte = static_cast<unsigned char>(value);
        for (std::size_t length = 1; length <= 40; ++length) {
            for (std::size_t place = 0; place < length; ++place) {
                std::string text(length, 'x');
                text[place] = static_cast<char>(byte);
                const std::vector<std::ptrdiff_t> expected =
                    isSpecial(byte)
                        ? std::vector<std::ptrdiff_t>{static_cast<std::ptrdiff_t>(place)}
                        : std::vector<std::ptrdiff_t>{};
                ASSERT_EQ(found(text), expected) << value << " at " << place << " of " << length;
            }
        }
    }
}

TEST(SpecialBytes, areAllFoundInOrder) {
    std::string text;
    std::vector<std::ptrdiff_t> expected;
    for (unsigned i = 0; i < 5000; ++i) {
        const auto byte = static_cast<unsigned char>((i * 37 + i / 256) % 256);
        if (isSpecial(byte)) {
            expected.push_back(static_cast<std::ptrdiff_t>(text.size()));
        }
        text.push_back(static_cast<char>(byte));
    }
    EXPECT_EQ(found(text), expected);
}

TEST(SpecialBytes, areNoneInAnEmptyText) {
    EXPECT_TRUE(found("").empty());
}

TEST(SpecialBytes, beforeThePlaceThatIsAskedForArePassedOver) {
    const std::string text(64, '<');
    const auto* begin = reinterpret_cast<const unsigned char*>(text.data());
    SpecialBytes bytes(begin, begin + text.size());
    EXPECT_EQ(bytes.firstFrom(begin) - begin, 0);
    EXPECT_EQ(bytes.firstFrom(begin + 5) - begin, 5);
    EXPECT_EQ(bytes.firstFrom(begin + 40) - begin, 40);
    EXPECT_EQ(bytes.firstFrom(begin + 64) - begin, 64);
}

}  // namespace
}  // namespace vornic
