#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "job/ResultFile.h"
#include "tests/support/machine/FileState.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/machine/Unprivileged.h"

namespace vornic {

namespace {

class ResultFileTest : public test::SandboxTest {
  protected:
    ErrorSlot error;
    std::string source = sandbox.write("Cut.xml", "old");
};

TEST_F(ResultFileTest, hasTheModeAndAttributesOfWhatItWasMadeFrom) {
    ASSERT_EQ(chmod(source.c_str(), 0604), 0);
    const bool hasAttributes = test::setAttribute(source, "user.note", "kept");
    const auto result = writeResultFile(sandbox.path("New.xml"), "new", source, error);
    ASSERT_TRUE(result);
    const test::FileState made = test::fileState(result->path);
    EXPECT_EQ(made.bytes, "new");
    EXPECT_EQ(made.mode & 07777U, 0604U);
    EXPECT_EQ(made.attributes.contains("user.note"), hasAttributes);
    EXPECT_THAT(test::namesIn(sandbox.folder()), ::testing::ElementsAre("Cut.xml", "New.xml"));
}

TEST_F(ResultFileTest, leavesWhatStandsThereAndGetsANumber) {
    EXPECT_EQ(writeResultFile(source, "new", source, error)->path, sandbox.path("Cut 2.xml"));
    EXPECT_EQ(writeResultFile(source, "newer", source, error)->path, sandbox.path("Cut 3.xml"));
    EXPECT_EQ(test::readBytes(source), "old");
    EXPECT_EQ(test::readBytes(sandbox.path("Cut 2.xml")), "new");
}

TEST_F(ResultFileTest, followsNoLinkAtThePath) {
    const std::string link = sandbox.path("New.xml");
    ASSERT_EQ(symlink("Cut.xml", link.c_str()), 0);
    EXPECT_EQ(writeResultFile(link, "new", source, error)->path, sandbox.path("New 2.xml"));
    EXPECT_EQ(test::readBytes(source), "old");
}

TEST_F(ResultFileTest, leavesNothingBehindWhereItCannotBeWritten) {
    EXPECT_FALSE(writeResultFile(sandbox.path("none/New.xml"), "new", source, error));
    ASSERT_TRUE(error);
    EXPECT_NE(error->localizedDescription().find("none/New.xml"), std::string::npos);
    error.reset();
    EXPECT_FALSE(writeResultFile(sandbox.path("New.xml"), "new", sandbox.path("gone"), error));
    EXPECT_THAT(test::namesIn(sandbox.folder()), ::testing::ElementsAre("Cut.xml"));
}

}  // namespace

}  // namespace vornic
