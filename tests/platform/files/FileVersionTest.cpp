#include <cerrno>
#include <filesystem>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/files/FileDescriptor.h"
#include "platform/files/FileVersion.h"
#include "tests/support/machine/Sandbox.h"

namespace vornic::platform {
namespace {

class FileVersionTest : public test::SandboxTest {
  protected:
    FileVersion version(const std::string& at) {
        const ErrnoOr<FileVersion> found = versionAt(at);
        EXPECT_TRUE(found);
        return found.value().value_or(FileVersion{});
    }
    /// Gives the file times of long ago, so that the next change shows whatever the clock does.
    void makeOld() const {
        const struct timespec times[2]{{1000, 1}, {1000, 1}};
        ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
    }

    std::string path = sandbox.write("Cut.xml", "contents");
};

TEST_F(FileVersionTest, ofAnUntouchedFileStaysTheSame) {
    const FileVersion before = version(path);
    EXPECT_EQ(before.size, 8U);
    EXPECT_EQ(compareVersions(before, version(path)), VersionMatch::same);
}

TEST_F(FileVersionTest, isTheSameByPathAndByDescriptor) {
    const FileDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    EXPECT_EQ(versionOf(file.get()).value(), versionAt(path).value());
}

TEST_F(FileVersionTest, differsInItsTimesAloneWhenAsManyBytesWereWritten) {
    makeOld();
    const FileVersion before = version(path);
    const FileDescriptor file(open(path.c_str(), O_WRONLY | O_CLOEXEC));
    ASSERT_EQ(write(file.get(), "CONTENTS", 8), 8);
    EXPECT_EQ(compareVersions(before, version(path)), VersionMatch::timesDiffer);
}

TEST_F(FileVersionTest, isAnotherAfterAnotherSize) {
    const FileVersion before = version(path);
    ASSERT_EQ(truncate(path.c_str(), 3), 0);
    EXPECT_EQ(compareVersions(before, version(path)), VersionMatch::different);
}

TEST_F(FileVersionTest, isAnotherForAnotherFileWithTheSameContents) {
    const FileVersion before = version(path);
    const std::string other = sandbox.write("other", "contents");
    EXPECT_EQ(compareVersions(before, version(other)), VersionMatch::different);
    std::filesystem::rename(other, path);
    EXPECT_EQ(compareVersions(before, version(path)), VersionMatch::different);
}

TEST_F(FileVersionTest, ofALinkIsItsOwn) {
    const std::string link = sandbox.path("link");
    std::filesystem::create_symlink("Cut.xml", link);
    EXPECT_EQ(compareVersions(version(link), version(path)), VersionMatch::different);
}

TEST_F(FileVersionTest, ofNothingIsNone) {
    EXPECT_EQ(versionAt(sandbox.path("none")).errorNumber(), ENOENT);
    EXPECT_EQ(versionOf(-1).errorNumber(), EBADF);
    EXPECT_EQ(versionAt(std::string("a\0b", 3)).errorNumber(), EINVAL);
}

}  // namespace
}  // namespace vornic::platform
