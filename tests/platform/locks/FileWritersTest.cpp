#include <fcntl.h>
#include <gtest/gtest.h>

#include "platform/files/FileDescriptor.h"
#include "platform/locks/FileWriters.h"
#include "tests/support/machine/Sandbox.h"

namespace vornic::platform {

namespace {

class FileWritersTest : public test::SandboxTest {
  protected:
    std::string path = sandbox.write("Cut.xml", "text");
    FileDescriptor file{open(path.c_str(), O_RDONLY | O_CLOEXEC)};
};

TEST_F(FileWritersTest, areSeenAsLongAsTheyHaveTheFileOpen) {
    EXPECT_FALSE(isOpenForWriting(file.get()));
    FileDescriptor writer(open(path.c_str(), O_WRONLY | O_CLOEXEC));
    EXPECT_TRUE(isOpenForWriting(file.get()));
    writer = FileDescriptor();
    EXPECT_FALSE(isOpenForWriting(file.get()));
}

TEST_F(FileWritersTest, areNotKeptOutAfterwards) {
    EXPECT_FALSE(isOpenForWriting(file.get()));
    // With a lease on the file this would end with EAGAIN.
    EXPECT_TRUE(FileDescriptor(open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC)));
}

TEST_F(FileWritersTest, areUnknownWhereThereIsNoLease) {
    EXPECT_FALSE(isOpenForWriting(-1));
    const FileDescriptor folder(open(sandbox.folder().c_str(), O_RDONLY | O_CLOEXEC));
    EXPECT_FALSE(isOpenForWriting(folder.get()));
}

}  // namespace

}  // namespace vornic::platform
