#include <gtest/gtest.h>

#include "platform/processes/ShellAssignments.h"

namespace vornic::platform {
namespace {

using Assignments = std::map<std::string, std::string>;

TEST(ShellAssignmentsTest, readsPlainAndQuotedValues) {
    EXPECT_EQ(parseShellAssignments("A=one\nB=\"two words\"\nC='three words'\nD=\n", ""),
              (Assignments{{"A", "one"}, {"B", "two words"}, {"C", "three words"}, {"D", ""}}));
}

TEST(ShellAssignmentsTest, putsTheHomeFolderInPlace) {
    EXPECT_EQ(parseShellAssignments("A=\"$HOME/Desktop\"\nB=${HOME}\nC='$HOME'\nD=\"\\$HOME\"\n"
                                    "E=$HOMES\nF=$OTHER",
                                    "/home/me"),
              (Assignments{{"A", "/home/me/Desktop"},
                           {"B", "/home/me"},
                           {"C", "$HOME"},
                           {"D", "$HOME"},
                           {"E", "$HOMES"},
                           {"F", "$OTHER"}}));
}

TEST(ShellAssignmentsTest, takesBackslashesAsAShellDoes) {
    EXPECT_EQ(parseShellAssignments(R"(A=a\ b
B="\"\\\`\$ \a"
C='\a')",
                                    ""),
              (Assignments{{"A", "a b"}, {"B", "\"\\`$ \\a"}, {"C", "\\a"}}));
}

TEST(ShellAssignmentsTest, joinsPiecesOfAValue) {
    EXPECT_EQ(parseShellAssignments("A=a\"b c\"'d e'f", ""), (Assignments{{"A", "ab cd ef"}}));
}

TEST(ShellAssignmentsTest, passesOverCommentsAndEverythingElse) {
    EXPECT_EQ(
        parseShellAssignments("# A=1\n\n  B=2 # note\nC = 3\n=4\nexport D=5\nE=\"open\nF=6 7\n"
                              "nothing\nG-H=1\r\n\tI=\"8\"\r\n",
                              ""),
        (Assignments{{"B", "2"}, {"I", "8"}}));
}

TEST(ShellAssignmentsTest, letsTheLaterAssignmentCount) {
    EXPECT_EQ(parseShellAssignments("A=1\nA=2", ""), (Assignments{{"A", "2"}}));
}

TEST(ShellAssignmentsTest, readsALastLineWithoutAnEnd) {
    EXPECT_EQ(parseShellAssignments("A=1", ""), (Assignments{{"A", "1"}}));
    EXPECT_EQ(parseShellAssignments("", ""), Assignments{});
    EXPECT_EQ(parseShellAssignments("A=\\", ""), (Assignments{{"A", "\\"}}));
}

}  // namespace
}  // namespace vornic::platform
