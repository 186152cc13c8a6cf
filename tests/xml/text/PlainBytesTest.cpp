#include <string>

#include <gtest/gtest.h>

#include "xml/text/PlainBytes.h"

namespace vornic::xmlchars {
namespace {

template <ByteClass kClass>
void expectStopsWhereTheTableSays() {
    for (unsigned byte = 0; byte < 0x100; ++byte) {
        for (std::size_t length = 1; length <= 40; ++length) {
            for (std::size_t at = 0; at < length; ++at) {
                std::string text(length, 'a');
                text[at] = static_cast<char>(byte);
                const char* const end = text.data() + length;
                const std::size_t expected = is(text[at], kClass) ? length : at;
                ASSERT_EQ(afterBytes<kClass>(text.data(), end) - text.data(),
                          static_cast<std::ptrdiff_t>(expected))
                    << "byte " << byte << " at " << at << " of " << length;
            }
        }
    }
}

TEST(PlainBytesTest, stopsAtTheBytesThatTheTableOfTheClassExcludes) {
    expectStopsWhereTheTableSays<kPlainText>();
    expectStopsWhereTheTableSays<kPlainValue>();
    expectStopsWhereTheTableSays<kPlainData>();
    expectStopsWhereTheTableSays<kName>();
}

TEST(PlainBytesTest, goesOnBehindLineEndsInPlainText) {
    const std::string text = "one\nline\tand another one, longer than a block\r\n<";
    EXPECT_EQ(afterBytes<kPlainText>(text.data(), text.data() + text.size()),
              text.data() + text.size() - 1);
}

TEST(PlainBytesTest, comparesNamesOfAnyLengthUpToTheEndOfTheText) {
    for (std::size_t length = 1; length <= 20; ++length) {
        for (std::size_t rest = 0; rest <= 20; ++rest) {
            const std::string name(length, 'n');
            const std::string text = name + "/" + name + std::string(rest, '>');
            const char* const at = text.data() + length + 1;
            const char* const end = text.data() + text.size();
            const std::string_view first(text.data(), length);
            EXPECT_TRUE(startsWithName(at, end, first));
            EXPECT_FALSE(startsWithName(at + 1, end, first));
            EXPECT_FALSE(startsWithName(at, end - rest - 1, first));
        }
    }
}

}  // namespace
}  // namespace vornic::xmlchars
