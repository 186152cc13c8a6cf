#include <string>

#include <gtest/gtest.h>
#include <unistd.h>

#include "base/TerminalText.h"

namespace vornic {
namespace {

TEST(TerminalText, leavesWhatCanBeReadAsItIs) {
    const std::string text = "Cut 1 \\ \"é\" 日本 😀 {<>}";
    EXPECT_EQ(escapedForTerminal(text), text);
    EXPECT_EQ(escapedForTerminal(""), "");
}

TEST(TerminalText, writesControlCharactersOut) {
    EXPECT_EQ(escapedForTerminal("a\x1B[31mb"), "a<U+001B>[31mb");
    EXPECT_EQ(escapedForTerminal("a\nb\tc\rd\x7F"), "a<U+000A>b<U+0009>c<U+000D>d<U+007F>");
    EXPECT_EQ(escapedForTerminal(std::string("a\0b", 3)), "a<U+0000>b");
    EXPECT_EQ(escapedForTerminal("\xC2\x9B"
                                 "31m"),
              "<U+009B>31m");
}

TEST(TerminalText, writesWhatReordersTextOut) {
    EXPECT_EQ(escapedForTerminal("a\xE2\x80\xAE"
                                 "b"),
              "a<U+202E>b");
    EXPECT_EQ(escapedForTerminal("\xE2\x81\xA6"
                                 "b\xE2\x81\xA9"),
              "<U+2066>b<U+2069>");
    EXPECT_EQ(escapedForTerminal("\xD8\x9C\xE2\x80\x8F\xE2\x80\x8E"), "<U+061C><U+200F><U+200E>");
}

TEST(TerminalText, writesWhatCannotBeSeenOut) {
    EXPECT_EQ(escapedForTerminal("\xE2\x80\x8B\xEF\xBB\xBF\xC2\xAD"), "<U+200B><U+FEFF><U+00AD>");
    EXPECT_EQ(escapedForTerminal("\xE2\x80\xA8"), "<U+2028>");
    EXPECT_EQ(escapedForTerminal("\xF3\xA0\x81\x81"), "<U+E0041>");
}

TEST(TerminalText, writesBytesThatAreNoTextOut) {
    EXPECT_EQ(escapedForTerminal("a\xFF"
                                 "b\xC3"),
              "a<0xFF>b<0xC3>");
}

TEST(TerminalText, isAsItStandsWhereNoTerminalIs) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    EXPECT_EQ(textForStream("a\nb\x1B", ends[1]), "a\nb\x1B");
    close(ends[0]);
    close(ends[1]);
}

}  // namespace
}  // namespace vornic
