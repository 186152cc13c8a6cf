#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "base/CanonicalText.h"
#include "foundation/places/NameSearch.h"
#include "tests/support/fakes/SilentVolume.h"
#include "tests/support/machine/PrivateMounts.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/machine/Unprivileged.h"

namespace vornic::test {

namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class NameSearchTest : public SandboxTest {
  protected:
    NameSearchResult search(const std::vector<std::string>& names) const {
        std::unordered_set<std::string> folded;
        for (const std::string& name : names) {
            folded.insert(foldedName(name));
        }
        return findNames(sandbox.folder(), folded, std::chrono::milliseconds(500));
    }
    // What was found, below the folder.
    std::vector<std::string> found(const std::vector<std::string>& names) const {
        std::vector<std::string> paths;
        for (const NamedFile& file : search(names).files) {
            EXPECT_GT(file.modified, 0);
            paths.push_back(file.path.substr(sandbox.folder().size() + 1));
        }
        return paths;
    }
    void put(const std::string& name) const {
        fs::create_directories(fs::path(sandbox.path(name)).parent_path());
        sandbox.write(name, "");
    }
};

TEST_F(NameSearchTest, findsNamesInAllFoldersWhateverTheirCase) {
    put("a.mov");
    put("x/A.MOV");
    put("x/y/b.mov");
    put("cafe\u0301/\u00C9.mov");
    EXPECT_THAT(found({"a.mov"}), ElementsAre("a.mov", "x/A.MOV"));
    EXPECT_THAT(found({"B.mov", "none.mov"}), ElementsAre("x/y/b.mov"));
    EXPECT_THAT(found({"e\u0301.MOV"}), ElementsAre("cafe\u0301/\u00C9.mov"));
}

TEST_F(NameSearchTest, passesFoldersLinksAndHiddenFoldersOver) {
    put("real/a.mov");
    put(".hidden/a.mov");
    fs::create_directories(sandbox.path("folder/a.mov"));
    fs::create_directory_symlink(sandbox.folder(), sandbox.path("real/round"));
    fs::create_symlink("a.mov", sandbox.path("real/link.mov"));
    EXPECT_THAT(found({"a.mov", "round"}), ElementsAre("real/a.mov"));
    EXPECT_THAT(found({"link.mov"}), ElementsAre("real/link.mov")) << "a link to a file is one";
}

TEST_F(NameSearchTest, reportsFoldersThatMayNotBeRead) {
    put("closed/a.mov");
    put("open/a.mov");
    ASSERT_EQ(chmod(sandbox.path("closed").c_str(), 0), 0);
    ASSERT_EQ(chmod(fs::path(sandbox.folder()).parent_path().c_str(), 0755), 0);
    ASSERT_EQ(chmod(sandbox.folder().c_str(), 0755), 0);
    {
        const Unprivileged unprivileged;
        EXPECT_THAT(search({"a.mov"}).unread, ElementsAre(sandbox.path("closed")));
        EXPECT_THAT(found({"a.mov"}), ElementsAre("open/a.mov"));
    }
    chmod(sandbox.path("closed").c_str(), 0700);
}

TEST_F(NameSearchTest, goesThroughFoldersOfManyNamesAndDeepOnes) {
    for (int number = 0; number < 5000; ++number) {
        put("many/" + std::to_string(number));
    }
    put("many/a.mov");
    std::string deep = "d";
    for (int level = 0; level < 400; ++level) {
        deep += "/d";
    }
    put(deep + "/a.mov");
    EXPECT_THAT(found({"a.mov"}), ElementsAre(deep + "/a.mov", "many/a.mov"));
}

TEST_F(NameSearchTest, aSilentVolumeEndsItsOwnPartAlone) {
    put("a.mov");
    fs::create_directory(sandbox.path("silent"));
    put("z/a.mov");
    const SilentVolume volume(sandbox.path("silent"));
    if (!volume.isMounted()) {
        GTEST_SKIP() << "may not mount a FUSE volume";
    }
    const auto start = std::chrono::steady_clock::now();
    const NameSearchResult result = search({"a.mov"});
    EXPECT_EQ(result.files.size(), 2U);
    EXPECT_THAT(result.unread, ElementsAre(sandbox.path("silent")));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(1400));
}

TEST_F(NameSearchTest, looksThroughVolumesInTheFolder) {
    fs::create_directory(sandbox.path("volume"));
    const PrivateMounts mounts;
    if (!mounts.mountVolume(sandbox.path("volume"), "tmpfs", "size=1m")) {
        GTEST_SKIP() << "may not mount";
    }
    put("volume/x/a.mov");
    EXPECT_THAT(found({"a.mov"}), ElementsAre("volume/x/a.mov"));
    EXPECT_THAT(search({"a.mov"}).unread, IsEmpty());
}

}  // namespace

}  // namespace vornic::test
