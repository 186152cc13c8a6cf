#include <cerrno>
#include <filesystem>
#include <string>

#include <fcntl.h>
#include <gtest/gtest.h>

#include "platform/archives/BeneathFolder.h"
#include "tests/support/machine/Sandbox.h"

namespace vornic::platform {
namespace {

namespace fs = std::filesystem;

using Opening = FileDescriptor (*)(int folder, const std::string& name, int flags, mode_t mode);

/// Both ways to open must agree on everything.
class BeneathFolderTest : public testing::TestWithParam<Opening> {
  protected:
    BeneathFolderTest() {
        fs::create_directories(sandbox.path("top/a/b"));
        fs::create_directory(sandbox.path("outside"));
        sandbox.write("top/a/b/file", "inside");
        sandbox.write("outside/file", "outside");
        fs::create_symlink("a", sandbox.path("top/inner"));
        fs::create_symlink("../outside", sandbox.path("top/outer"));
        fs::create_symlink(sandbox.path("outside/file"), sandbox.path("top/a/link"));
        top = FileDescriptor(::open(sandbox.path("top").c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    }
    [[nodiscard]] FileDescriptor open(const std::string& name, int flags = O_RDONLY) const {
        return GetParam()(top.get(), name, flags, 0600);
    }

    test::Sandbox sandbox;
    FileDescriptor top;
};

TEST_P(BeneathFolderTest, opensFilesFoldersAndTheFolderItself) {
    EXPECT_TRUE(open("a/b/file"));
    EXPECT_TRUE(open("a/b", O_RDONLY | O_DIRECTORY));
    EXPECT_EQ(identityOf(open("", O_PATH).get()), identityOf(top.get()));
}

TEST_P(BeneathFolderTest, followsNoLinkAnywhere) {
    for (const char* name : {"inner/b/file", "outer/file", "a/link", "inner", "outer"}) {
        EXPECT_FALSE(open(name)) << name;
        EXPECT_TRUE(errno == ELOOP || errno == ENOTDIR) << name << " " << errno;
        EXPECT_FALSE(open(name, O_WRONLY | O_CREAT)) << name;
    }
    EXPECT_EQ(test::readBytes(sandbox.path("outside/file")), "outside");
}

TEST_P(BeneathFolderTest, leavesTheFolderOnNoWay) {
    for (const char* name : {"..", "../outside/file", "a/../../outside/file"}) {
        EXPECT_FALSE(open(name)) << name;
        EXPECT_EQ(errno, EXDEV) << name;
    }
}

TEST_P(BeneathFolderTest, staysWithTheFolderThoughAnotherTakesItsPlace) {
    fs::rename(sandbox.path("top"), sandbox.path("moved"));
    fs::create_directory_symlink("outside", sandbox.path("top"));
    EXPECT_TRUE(open("a/b/file"));
    EXPECT_FALSE(open("file"));
}

INSTANTIATE_TEST_SUITE_P(InOneStep, BeneathFolderTest, testing::Values(&openBeneath));
INSTANTIATE_TEST_SUITE_P(Stepwise, BeneathFolderTest, testing::Values(&openBeneathStepwise));

class MakeFoldersBeneathTest : public test::SandboxTest {
  protected:
    FileDescriptor make(const std::string& name, int most = 100) {
        const FileDescriptor top(
            ::open(sandbox.folder().c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
        return makeFoldersBeneath(top.get(), name, [&] { return ++made <= most; });
    }
    int made = 0;
};

TEST_F(MakeFoldersBeneathTest, makesWhatIsMissingAndReportsEach) {
    EXPECT_TRUE(make("a/b"));
    EXPECT_TRUE(fs::is_directory(sandbox.path("a/b")));
    EXPECT_EQ(made, 2);
    EXPECT_TRUE(make("a/b/c"));
    EXPECT_EQ(made, 3);
    EXPECT_TRUE(make("a/b/c"));
    EXPECT_TRUE(make(""));
    EXPECT_EQ(made, 3);
}

TEST_F(MakeFoldersBeneathTest, makesNothingThroughALink) {
    fs::create_directory(sandbox.path("real"));
    fs::create_directory_symlink("real", sandbox.path("link"));
    EXPECT_FALSE(make("link/new"));
    EXPECT_FALSE(make("link"));
    EXPECT_FALSE(make("../new"));
    EXPECT_TRUE(fs::is_empty(sandbox.path("real")));
}

TEST_F(MakeFoldersBeneathTest, stopsWhenItIsToldTo) {
    EXPECT_FALSE(make("a/b/c", 1));
    EXPECT_EQ(errno, EFBIG);
    EXPECT_FALSE(fs::exists(sandbox.path("a/b/c")));
}

TEST_F(MakeFoldersBeneathTest, refusesAFileInTheWay) {
    sandbox.write("file", "x");
    EXPECT_FALSE(make("file/new"));
    EXPECT_FALSE(make("file"));
}

}  // namespace
}  // namespace vornic::platform
