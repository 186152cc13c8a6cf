#include <gtest/gtest.h>

#include "platform/files/DamagedFile.h"
#include "tests/support/machine/FileState.h"
#include "tests/support/machine/Sandbox.h"

namespace vornic::platform {
namespace {

class DamagedFileTest : public test::SandboxTest {
  protected:
    ErrorSlot error;
};

TEST_F(DamagedFileTest, isCopiedBesideItselfUnderAFreeName) {
    const std::string path = sandbox.write("a.b.plist", "one");
    EXPECT_EQ(keepDamagedList(path, error), sandbox.path("a.b-damaged.plist"));
    test::writeBytes(path, "two");
    EXPECT_EQ(keepDamagedList(path, error), sandbox.path("a.b-damaged-2.plist"));
    EXPECT_EQ(test::readBytes(sandbox.path("a.b-damaged.plist")), "one");
    EXPECT_EQ(test::readBytes(sandbox.path("a.b-damaged-2.plist")), "two");
    EXPECT_EQ(test::readBytes(path), "two");
}

TEST_F(DamagedFileTest, isReportedWhenItCannotBeCopied) {
    EXPECT_EQ(keepDamagedList(sandbox.path("gone.plist"), error), std::nullopt);
    EXPECT_TRUE(error);
}

}  // namespace
}  // namespace vornic::platform
