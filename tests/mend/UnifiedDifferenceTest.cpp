#include <random>

#include <gtest/gtest.h>

#include "mend/UnifiedDifference.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/programs/ProgramRunner.h"

namespace vornic {

namespace {

std::string difference(std::string_view text, const EditList& edits) {
    return unifiedDifference(text, edits, "a", "b");
}

TEST(UnifiedDifference, showsThreeLinesOfContext) {
    EXPECT_EQ(difference("1\n2\n3\n4\n5\n6\n7\n8\n9\n", {{8, 1, "five"}}),
              "--- a\n+++ b\n@@ -2,7 +2,7 @@\n 2\n 3\n 4\n-5\n+five\n 6\n 7\n 8\n");
}

TEST(UnifiedDifference, showsAddedAndRemovedLinesAlone) {
    EXPECT_EQ(difference("1\n2\n", {{2, 0, "new\n"}}),
              "--- a\n+++ b\n@@ -1,2 +1,3 @@\n 1\n+new\n 2\n");
    EXPECT_EQ(difference("1\n2\n3\n", {{2, 2, ""}}), "--- a\n+++ b\n@@ -1,3 +1,2 @@\n 1\n-2\n 3\n");
    EXPECT_EQ(difference("1\n", {{0, 2, ""}}), "--- a\n+++ b\n@@ -1,1 +0,0 @@\n-1\n");
}

TEST(UnifiedDifference, reportsThatTheLastLineHasNoEnd) {
    EXPECT_EQ(difference("1\n2", {{2, 1, "two"}}),
              "--- a\n+++ b\n@@ -1,2 +1,2 @@\n 1\n-2\n\\ No newline at end of file\n+two\n"
              "\\ No newline at end of file\n");
}

TEST(UnifiedDifference, isNothingWhereNothingChanges) {
    EXPECT_EQ(difference("1\n2\n", {}), "");
    EXPECT_EQ(difference("1\n2\n", {{2, 1, "2"}}), "");
}

class UnifiedDifferencePatchTest : public test::SandboxTest {};

// Other people's program reads it as it is meant.
TEST_F(UnifiedDifferencePatchTest, isWhatPatchApplies) {
    std::mt19937 random(2);
    const auto upTo = [&random](std::size_t most) {
        return std::uniform_int_distribution<std::size_t>(0, most)(random);
    };
    for (int round = 0; round < 100; ++round) {
        std::string text;
        for (std::size_t line = upTo(60); line != 0; --line) {
            text += std::string(upTo(4), static_cast<char>('a' + upTo(3))) + "\n";
        }
        text += round % 2 == 0 ? "" : "end";
        EditList edits;
        for (std::size_t at = upTo(20); at < text.size(); at += 1 + upTo(40)) {
            const std::size_t removed = std::min(upTo(6), text.size() - at);
            edits.push_back({at, removed, upTo(2) == 0 ? "x\ny" : std::string(upTo(2), 'z')});
            at += removed;
        }
        const std::string changed = applyEdits(text, edits);
        const std::string patch = difference(text, edits);
        if (patch.empty()) {
            EXPECT_EQ(changed, text);
            continue;
        }
        const std::string file = sandbox.write("file", text);
        const test::ProgramResult result = test::runProgram(
            {.program = "/usr/bin/patch",
             .arguments = {"--quiet", "--fuzz=0", "--posix", file, sandbox.write("patch", patch)},
             .environment = {"PATH=/usr/bin:/bin"}});
        ASSERT_EQ(result.status, 0) << result.output << result.errors << text << patch;
        ASSERT_EQ(test::readBytes(file), changed) << patch;
    }
}

TEST_F(UnifiedDifferencePatchTest, namesAFileSoThatPatchFindsIt) {
    for (const std::string name :
         {"Cut.xml", "My  Cut.xml", "a\tb\n c.xml", "\"q\" \\.xml", "\xC3\xA9.xml", "-x.xml"}) {
        const std::string file = sandbox.write(name, "1\n2\n");
        const std::string patch = unifiedDifference("1\n2\n", {{2, 1, "3"}}, name, name);
        const test::ProgramResult result = test::runProgram(
            {.program = "/usr/bin/patch",
             .arguments = {"--quiet", "--fuzz=0", "-p0", "--directory", sandbox.folder(), "--input",
                           sandbox.write("patch", patch)},
             .environment = {"PATH=/usr/bin:/bin"}});
        EXPECT_EQ(result.status, 0) << result.output << result.errors << patch;
        EXPECT_EQ(test::readBytes(file), "1\n3\n") << patch;
    }
}

}  // namespace

}  // namespace vornic
