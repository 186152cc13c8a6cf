#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/items/ImmutableFlag.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/machine/Unprivileged.h"

namespace vornic::platform {
namespace {

namespace fs = std::filesystem;

/// As root, on a volume that knows the attribute; else there is nothing to be seen.
class ImmutableFlagTest : public test::SandboxTest {
  protected:
    void SetUp() override {
        ErrorSlot refused;
        if (!setImmutable(sandbox.write("probe", ""), true, refused)) {
            GTEST_SKIP() << refused->description;
        }
        ASSERT_TRUE(setImmutable(sandbox.path("probe"), false, refused));
    }
    ErrorSlot error;
};

TEST_F(ImmutableFlagTest, keepsAFileFromBeingChangedAndRemoved) {
    const std::string path = sandbox.write("file", "x");
    EXPECT_FALSE(isImmutable(path));
    ASSERT_TRUE(setImmutable(path, true, error));
    EXPECT_TRUE(isImmutable(path));
    EXPECT_NE(unlink(path.c_str()), 0);
    EXPECT_EQ(errno, EPERM);
    EXPECT_NE(truncate(path.c_str(), 0), 0);
    ASSERT_TRUE(setImmutable(path, false, error));
    EXPECT_FALSE(isImmutable(path));
    EXPECT_EQ(unlink(path.c_str()), 0);
}

TEST_F(ImmutableFlagTest, leavesThePermissionsAlone) {
    const std::string path = sandbox.write("file", "x");
    ASSERT_EQ(chmod(path.c_str(), 0640), 0);
    ASSERT_TRUE(setImmutable(path, true, error));
    EXPECT_EQ(fs::status(path).permissions(), fs::perms(0640));
    ASSERT_TRUE(setImmutable(path, false, error));
    EXPECT_EQ(fs::status(path).permissions(), fs::perms(0640));
}

TEST_F(ImmutableFlagTest, locksFolders) {
    fs::create_directory(sandbox.path("folder"));
    ASSERT_TRUE(setImmutable(sandbox.path("folder"), true, error));
    EXPECT_TRUE(isImmutable(sandbox.path("folder")));
    EXPECT_EQ(std::fopen(sandbox.path("folder/new").c_str(), "w"), nullptr);
    ASSERT_TRUE(setImmutable(sandbox.path("folder"), false, error));
}

TEST_F(ImmutableFlagTest, neitherLocksALinkNorItsTarget) {
    sandbox.write("target", "x");
    fs::create_symlink("target", sandbox.path("link"));
    EXPECT_FALSE(setImmutable(sandbox.path("link"), true, error));
    EXPECT_FALSE(isImmutable(sandbox.path("target")));
    ASSERT_TRUE(setImmutable(sandbox.path("target"), true, error));
    EXPECT_FALSE(isImmutable(sandbox.path("link")));
    EXPECT_TRUE(setImmutable(sandbox.path("link"), false, error)) << "nothing to do";
    EXPECT_TRUE(isImmutable(sandbox.path("target")));
    ASSERT_TRUE(setImmutable(sandbox.path("target"), false, error));
}

TEST_F(ImmutableFlagTest, canBeSeenByAUserWhoMayNotOpenTheFile) {
    const std::string path = sandbox.write("file", "x");
    const fs::path root = fs::path(sandbox.folder()).parent_path();
    fs::permissions(root, fs::perms(0755));
    ASSERT_EQ(chmod(path.c_str(), 0), 0);
    ASSERT_TRUE(setImmutable(path, true, error));
    {
        const test::Unprivileged user;
        EXPECT_TRUE(isImmutable(path));
        EXPECT_FALSE(setImmutable(path, false, error));
        EXPECT_TRUE(isImmutable(path));
    }
    ASSERT_TRUE(setImmutable(path, false, error));
}

TEST(ImmutableFlagOfUserTest, cannotBeSetButNeedsNoClearing) {
    const test::Unprivileged user;
    const test::Sandbox sandbox;
    const std::string path = sandbox.write("file", "x");
    ASSERT_EQ(chmod(path.c_str(), 0444), 0);
    ErrorSlot error;
    EXPECT_FALSE(setImmutable(path, true, error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->description,
              "The file " + path + " cannot be locked: the operation is not permitted.");
    EXPECT_FALSE(isImmutable(path));
    EXPECT_TRUE(setImmutable(path, false, error));
    EXPECT_EQ(fs::status(path).permissions(), fs::perms(0444));
}

TEST(ImmutableFlagOfUserTest, failsForWhatIsMissing) {
    const test::Sandbox sandbox;
    ErrorSlot error;
    EXPECT_FALSE(setImmutable(sandbox.path("missing"), false, error));
    EXPECT_EQ(error->code, ENOENT);
    EXPECT_FALSE(isImmutable(sandbox.path("missing")));
    EXPECT_FALSE(setImmutable(std::string("a\0b", 3), true, error));
    EXPECT_EQ(error->code, EINVAL);
    EXPECT_FALSE(isImmutable(std::string("a\0b", 3)));
}

TEST(ImmutableFlagOfUserTest, isUnknownWhereTheVolumeHasNoAttributes) {
    ErrorSlot error;
    EXPECT_FALSE(isImmutable("/proc/self/status"));
    EXPECT_FALSE(setImmutable("/proc/self/status", true, error));
    EXPECT_EQ(error->code, EOPNOTSUPP);
    EXPECT_TRUE(setImmutable("/proc/self/status", false, error));
}

}  // namespace
}  // namespace vornic::platform
