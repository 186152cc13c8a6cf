#include <string>

#include "formats/FileCodes.h"
#include "platform/items/FileAttributes.h"
#include "tests/support/texts/EngineTest.h"

namespace vornic {
namespace {

class FileCodesTest : public test::EngineTest {
  protected:
    ErrorSlot error;
};

TEST_F(FileCodesTest, setsBothCodesAndKeepsTheContents) {
    const std::string path = sandbox.write("Cut.xml", "text");
    ASSERT_EQ(setFinalCutFileCodes(path, error), FileCodes::set);
    EXPECT_FALSE(error.has_value());
    const auto attributes = platform::readFileAttributes(path, error);
    ASSERT_TRUE(attributes.has_value());
    if (attributes->hfsTypeCode == 0) {
        GTEST_SKIP() << "this volume has no extended attributes";
    }
    EXPECT_EQ(attributes->hfsTypeCode, 0x584D4C20U);
    EXPECT_EQ(attributes->hfsCreatorCode, 0x4B657947U);
}

TEST_F(FileCodesTest, reportsThatTheFileIsGone) {
    EXPECT_EQ(setFinalCutFileCodes(sandbox.path("None.xml"), error), FileCodes::unread);
    EXPECT_TRUE(error.has_value());
}

TEST_F(FileCodesTest, takesAnEarlierErrorForOneOfTheReadingAndWritesNothing) {
    const std::string path = sandbox.write("Cut.xml", "text");
    error = Error{"domain", 1, "earlier"};
    EXPECT_EQ(setFinalCutFileCodes(path, error), FileCodes::unread);
    EXPECT_EQ(error->description, "earlier");
    ErrorSlot own;
    EXPECT_EQ(platform::readFileAttributes(path, own)->hfsTypeCode, 0U);
}

}  // namespace
}  // namespace vornic
