#include <cerrno>
#include <filesystem>

#include <gtest/gtest.h>

#include "platform/files/FileDescriptor.h"
#include "platform/items/OwnerAccess.h"
#include "tests/support/machine/Sandbox.h"

namespace vornic::platform {
namespace {

namespace fs = std::filesystem;

class OwnerAccessTest : public test::SandboxTest {
  protected:
    OwnerAccessTest() { fs::permissions(path, fs::perms::group_read); }

    [[nodiscard]] fs::perms mode() const { return fs::status(path).permissions(); }

    std::string path = sandbox.write("file", "x");
    FileDescriptor file = *openForMetadata(path, true);
    int runs = 0;
};

TEST_F(OwnerAccessTest, isNotGivenWhereTheChangeSucceedsWithoutIt) {
    EXPECT_EQ(withOwnerAccess(file.get(),
                              [&] {
                                  EXPECT_EQ(mode(), fs::perms::group_read);
                                  ++runs;
                                  return 0;
                              }),
              0);
    EXPECT_EQ(runs, 1);
}

TEST_F(OwnerAccessTest, isNotGivenForOtherFaultsThanTheMode) {
    EXPECT_EQ(withOwnerAccess(file.get(),
                              [&] {
                                  ++runs;
                                  return ENOSPC;
                              }),
              ENOSPC);
    EXPECT_EQ(runs, 1);
}

TEST_F(OwnerAccessTest, isGivenForOneMoreRunAndTakenBack) {
    EXPECT_EQ(withOwnerAccess(file.get(),
                              [&] {
                                  if (++runs == 1) {
                                      return EACCES;
                                  }
                                  EXPECT_EQ(mode(), fs::perms::group_read | fs::perms::owner_read |
                                                        fs::perms::owner_write);
                                  return 0;
                              }),
              0);
    EXPECT_EQ(runs, 2);
    EXPECT_EQ(mode(), fs::perms::group_read);
}

TEST_F(OwnerAccessTest, isTakenBackAfterAFailureToo) {
    EXPECT_EQ(withOwnerAccess(file.get(),
                              [&] {
                                  ++runs;
                                  return EACCES;
                              }),
              EACCES);
    EXPECT_EQ(runs, 2);
    EXPECT_EQ(mode(), fs::perms::group_read);
}

}  // namespace
}  // namespace vornic::platform
