#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "media/MediaMatch.h"

namespace vornic::test {

namespace {

using ::testing::SizeIs;

// The searched folder is "/s".
std::string found(std::string_view medium, const std::vector<std::string>& paths,
                  std::optional<Pick> pick = std::nullopt) {
    std::vector<FoundFile> files;
    for (const std::string& path : paths) {
        files.push_back({path, 1, static_cast<std::int64_t>(files.size())});
    }
    const MediaMatch match = matchOf(localPath(medium), files, pick);
    EXPECT_TRUE(!match.file || match.candidates.empty());
    return match.file ? paths[*match.file] : std::to_string(match.candidates.size());
}

TEST(MediaMatch, theExactNameComesFirst) {
    EXPECT_EQ(found("/V/a.mov", {"/s/V/A.MOV", "/s/x/a.mov"}), "/s/x/a.mov");
    EXPECT_EQ(found("/V/a.mov", {"/s/A.MOV"}), "/s/A.MOV");
    EXPECT_EQ(found("/V/a.mov", {}), "0");
}

TEST(MediaMatch, aWholeWayIsTheEndOfThePath) {
    EXPECT_EQ(found("/V/R1/C/a.mov", {"/s/R1/C/a.mov", "/s/R2/C/a.mov"}), "/s/R1/C/a.mov");
    EXPECT_EQ(found("/V/r1/c/a.mov", {"/s/R1/C/a.mov", "/s/R2/C/a.mov"}), "/s/R1/C/a.mov");
}

TEST(MediaMatch, whatIsNotPlainIsListed) {
    EXPECT_EQ(found("/V/R3/C/a.mov", {"/s/R1/C/a.mov", "/s/R2/C/a.mov"}), "2");
    EXPECT_EQ(found("/V/R1/C/a.mov", {"/s/new/R1/C/a.mov", "/s/R2/C/a.mov"}), "2")
        << "the way goes on above what they have in common";
    EXPECT_EQ(found("/V/a.mov", {"/s/a.mov", "/s/b/a.mov"}), "2") << "a name alone is no way";
}

TEST(MediaMatch, aPickDecides) {
    const std::vector<std::string> files = {"/s/new/R1/C/a.mov", "/s/R2/C/a.mov", "/s/x/a.mov"};
    EXPECT_EQ(found("/V/R1/C/a.mov", files, Pick::longestTail), files[0]);
    EXPECT_EQ(found("/V/R1/C/a.mov", files, Pick::newest), files[2]);
    EXPECT_EQ(found("/V/R3/C/a.mov", {files[1], "/s/R4/C/a.mov"}, Pick::longestTail), "2")
        << "none is longest";
}

}  // namespace

}  // namespace vornic::test
