#include <cerrno>
#include <filesystem>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "platform/items/FileAttributes.h"
#include "tests/support/machine/PrivateMounts.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/machine/Unprivileged.h"

namespace vornic::platform {
namespace {

constexpr FileAttributes kXMLOfKeyG{.hfsTypeCode = 0x584D4C20, .hfsCreatorCode = 0x4B657947};

/// The raw attribute, "" when there is none.
std::string finderInfo(const std::string& path) {
    std::string bytes(100, '\0');
    const ssize_t length = getxattr(path.c_str(), kFinderInfoAttribute, bytes.data(), bytes.size());
    bytes.resize(length > 0 ? static_cast<std::size_t>(length) : 0);
    return bytes;
}

mode_t modeOf(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(stat(path.c_str(), &status), 0);
    return status.st_mode & 07777;
}

/// As a user whom permissions hold for.
class FileAttributesTest : public ::testing::Test {
  protected:
    void SetUp() override {
        path = sandbox.write("file", "x");
        if (setxattr(path.c_str(), "user.probe", "x", 1, 0) != 0) {
            GTEST_SKIP() << "the volume has no extended attributes";
        }
    }

    test::Unprivileged user;
    test::Sandbox sandbox;
    std::string path;
    ErrorSlot error;
};

TEST_F(FileAttributesTest, readsZerosWhereNothingIsStored) {
    EXPECT_EQ(readFileAttributes(path, error), FileAttributes{});
    EXPECT_FALSE(error);
}

TEST_F(FileAttributesTest, readsWhatItStored) {
    EXPECT_TRUE(writeFileAttributes(path, kXMLOfKeyG, error));
    EXPECT_EQ(readFileAttributes(path, error), kXMLOfKeyG);
}

TEST_F(FileAttributesTest, storesTypeAndCreatorWithTheHighestByteFirst) {
    EXPECT_TRUE(writeFileAttributes(path, kXMLOfKeyG, error));
    EXPECT_EQ(finderInfo(path), "XML KeyG" + std::string(24, '\0'));
}

TEST_F(FileAttributesTest, keepsEveryOtherByte) {
    std::string info;
    for (char byte = 1; byte <= 32; ++byte) {
        info += byte;
    }
    ASSERT_EQ(setxattr(path.c_str(), kFinderInfoAttribute, info.data(), info.size(), 0), 0);
    EXPECT_TRUE(writeFileAttributes(path, kXMLOfKeyG, error));
    EXPECT_EQ(finderInfo(path), "XML KeyG" + info.substr(8));
}

TEST_F(FileAttributesTest, fillsAShorterAttributeAndKeepsALongerOne) {
    ASSERT_EQ(setxattr(path.c_str(), kFinderInfoAttribute, "ab", 2, 0), 0);
    EXPECT_EQ(readFileAttributes(path, error), (FileAttributes{.hfsTypeCode = 0x61620000}));
    EXPECT_TRUE(writeFileAttributes(path, kXMLOfKeyG, error));
    EXPECT_EQ(finderInfo(path).size(), 32U);
    const std::string longer(40, 'z');
    ASSERT_EQ(setxattr(path.c_str(), kFinderInfoAttribute, longer.data(), longer.size(), 0), 0);
    EXPECT_TRUE(writeFileAttributes(path, kXMLOfKeyG, error));
    EXPECT_EQ(finderInfo(path), "XML KeyG" + std::string(32, 'z'));
}

TEST_F(FileAttributesTest, clearsCodesButAddsNoEmptyAttribute) {
    EXPECT_TRUE(writeFileAttributes(path, {}, error));
    EXPECT_EQ(finderInfo(path), "");
    EXPECT_TRUE(writeFileAttributes(path, kXMLOfKeyG, error));
    EXPECT_TRUE(writeFileAttributes(path, {}, error));
    EXPECT_EQ(readFileAttributes(path, error), FileAttributes{});
}

TEST_F(FileAttributesTest, followsLinks) {
    std::filesystem::create_symlink("file", sandbox.path("link"));
    EXPECT_TRUE(writeFileAttributes(sandbox.path("link"), kXMLOfKeyG, error));
    EXPECT_EQ(readFileAttributes(sandbox.path("link"), error), kXMLOfKeyG);
    EXPECT_EQ(readFileAttributes(path, error), kXMLOfKeyG);
}

TEST_F(FileAttributesTest, writesAFileWhoseModeForbidsItAndPutsTheModeBack) {
    for (const mode_t mode : {0444U, 0200U, 0000U, 0111U}) {
        const std::string file = sandbox.write("closed", "x");
        ASSERT_EQ(chmod(file.c_str(), mode), 0);
        EXPECT_TRUE(writeFileAttributes(file, kXMLOfKeyG, error)) << std::oct << mode;
        EXPECT_EQ(modeOf(file), mode);
        ASSERT_EQ(chmod(file.c_str(), 0600), 0);
        EXPECT_EQ(readFileAttributes(file, error), kXMLOfKeyG) << std::oct << mode;
        std::filesystem::remove(file);
    }
}

TEST_F(FileAttributesTest, changesNeitherContentsNorModificationTime) {
    struct stat before {};
    ASSERT_EQ(stat(path.c_str(), &before), 0);
    EXPECT_TRUE(writeFileAttributes(path, kXMLOfKeyG, error));
    struct stat after {};
    ASSERT_EQ(stat(path.c_str(), &after), 0);
    EXPECT_EQ(before.st_mtim.tv_sec, after.st_mtim.tv_sec);
    EXPECT_EQ(before.st_mtim.tv_nsec, after.st_mtim.tv_nsec);
    EXPECT_EQ(test::readBytes(path), "x");
}

TEST_F(FileAttributesTest, reportsThatAFileIsMissing) {
    EXPECT_EQ(readFileAttributes(sandbox.path("missing"), error), std::nullopt);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, ENOENT);
    error.reset();
    EXPECT_FALSE(writeFileAttributes(sandbox.path("missing"), kXMLOfKeyG, error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->description,
              "The file " + sandbox.path("missing") + " cannot be opened: no such file or folder.");
}

TEST_F(FileAttributesTest, neverHangsOnAPipe) {
    ASSERT_EQ(mkfifo(sandbox.path("pipe").c_str(), 0600), 0);
    EXPECT_EQ(readFileAttributes(sandbox.path("pipe"), error), FileAttributes{});
    EXPECT_FALSE(writeFileAttributes(sandbox.path("pipe"), kXMLOfKeyG, error));
}

TEST_F(FileAttributesTest, reportsThatAnotherUsersFileCannotBeWritten) {
    if (access("/etc/hostname", F_OK) != 0 || access("/etc/hostname", W_OK) == 0) {
        GTEST_SKIP() << "needs a file of another user";
    }
    EXPECT_FALSE(writeFileAttributes("/etc/hostname", kXMLOfKeyG, error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->description,
              "The file /etc/hostname cannot be given its type code: permission denied.");
}

class FileAttributesVolumeTest : public test::SandboxTest {};

TEST_F(FileAttributesVolumeTest, leavesTheCodesOutOnAVolumeWithoutAttributes) {
    const test::PrivateMounts mounts;
    if (!mounts.isAvailable() || !mounts.mountVolume(sandbox.folder(), "ramfs", "")) {
        GTEST_SKIP() << "needs the right to mount a volume";
    }
    const std::string path = sandbox.write("file", "x");
    ErrorSlot error;
    EXPECT_TRUE(writeFileAttributes(path, kXMLOfKeyG, error));
    EXPECT_EQ(readFileAttributes(path, error), FileAttributes{});
    EXPECT_FALSE(error);
}

TEST_F(FileAttributesTest, readsNoColorLabelWhereNoneIsStored) {
    EXPECT_EQ(readColorLabel(path, error), 0);
    ASSERT_EQ(setxattr(path.c_str(), kFinderInfoAttribute, "XML KeyG\xFF", 9, 0), 0);
    EXPECT_EQ(readColorLabel(path, error), 0);
    EXPECT_FALSE(error);
}

TEST_F(FileAttributesTest, storesAColorLabelInThreeBitsAndKeepsEveryOther) {
    std::string info(32, '\xFF');
    ASSERT_EQ(setxattr(path.c_str(), kFinderInfoAttribute, info.data(), info.size(), 0), 0);
    EXPECT_EQ(readColorLabel(path, error), 7);
    EXPECT_TRUE(writeColorLabel(path, 5, error));
    info[9] = '\xFB';
    EXPECT_EQ(finderInfo(path), info);
    EXPECT_EQ(readColorLabel(path, error), 5);
    EXPECT_TRUE(writeColorLabel(path, 0, error));
    info[9] = '\xF1';
    EXPECT_EQ(finderInfo(path), info);
}

TEST_F(FileAttributesTest, storesNoColorLabelThatIsNone) {
    for (const int label : {-1, 8, 256}) {
        error.reset();
        EXPECT_FALSE(writeColorLabel(path, label, error)) << label;
        ASSERT_TRUE(error);
        EXPECT_EQ(error->code, EINVAL);
    }
    EXPECT_EQ(finderInfo(path), "");
}

TEST_F(FileAttributesTest, makesNoAttributeForNoColorLabel) {
    EXPECT_TRUE(writeColorLabel(path, 0, error));
    EXPECT_EQ(getxattr(path.c_str(), kFinderInfoAttribute, nullptr, 0), -1);
}

TEST_F(FileAttributesTest, labelsAReadOnlyFileAndLeavesItSo) {
    ASSERT_EQ(chmod(path.c_str(), 0400), 0);
    EXPECT_TRUE(writeColorLabel(path, 4, error));
    EXPECT_EQ(readColorLabel(path, error), 4);
    EXPECT_EQ(modeOf(path), 0400U);
}

TEST_F(FileAttributesTest, reportsWhyAMissingFileHasNoColorLabel) {
    EXPECT_EQ(readColorLabel(sandbox.path("missing"), error), std::nullopt);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, ENOENT);
    error.reset();
    EXPECT_FALSE(writeColorLabel(sandbox.path("missing"), 1, error));
    EXPECT_TRUE(error);
}

}  // namespace
}  // namespace vornic::platform
