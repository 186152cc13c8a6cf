#include <cerrno>
#include <string>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "platform/files/CarefulRemoval.h"
#include "platform/files/FileSystem.h"
#include "tests/support/machine/FileState.h"
#include "tests/support/machine/Sandbox.h"

namespace {

// What the next renaming reports although it is done, as some network volumes do; 0 for the truth.
int reportedOfADoneRename = 0;

}  // namespace

// Takes the place of the C library's, since no volume here can be made to do that.
extern "C" int renameat2(int oldFolder, const char* oldPath, int newFolder, const char* newPath,
                         unsigned flags) noexcept {
    const long result = syscall(SYS_renameat2, oldFolder, oldPath, newFolder, newPath, flags);
    if (result == 0 && reportedOfADoneRename != 0) {
        errno = reportedOfADoneRename;
        reportedOfADoneRename = 0;
        return -1;
    }
    return static_cast<int>(result);
}

namespace vornic::platform {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class CarefulRemovalTest : public test::SandboxTest {
  protected:
    FileIdentity written(const std::string& name) const {
        return *fileIdentity(sandbox.write(name, "x"));
    }

    ErrnoOr<Removal> remove(const FileIdentity& identity) {
        return removeWhileIs(sandbox.path("Cut.xml"), identity);
    }
};

TEST_F(CarefulRemovalTest, removesTheFile) {
    const FileIdentity identity = written("Cut.xml");
    EXPECT_EQ(remove(identity).value(), Removal::removed);
    EXPECT_THAT(test::namesIn(sandbox.folder()), IsEmpty());
}

TEST_F(CarefulRemovalTest, leavesAnotherFile) {
    const FileIdentity identity = written("Other.xml");
    const FileIdentity there = written("Cut.xml");
    EXPECT_EQ(remove(identity).value(), Removal::another);
    EXPECT_EQ(fileIdentity(sandbox.path("Cut.xml")), there);
}

TEST_F(CarefulRemovalTest, failsWhereNothingStands) {
    const FileIdentity identity = written("Other.xml");
    EXPECT_EQ(remove(identity).errorNumber(), ENOENT);
}

TEST_F(CarefulRemovalTest, removesAFileWhoseRenamingIsReportedAsFailedAlthoughItIsDone) {
    const FileIdentity identity = written("Cut.xml");
    reportedOfADoneRename = EIO;
    EXPECT_EQ(remove(identity).value(), Removal::removed);
    EXPECT_THAT(test::namesIn(sandbox.folder()), IsEmpty());
}

}  // namespace
}  // namespace vornic::platform
