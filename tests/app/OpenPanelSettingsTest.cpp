#include <string>

#include <gtest/gtest.h>

#include "app/OpenPanelSettings.h"
#include "platform/items/FileAttributes.h"
#include "tests/support/machine/Sandbox.h"

namespace vornic {
namespace {

using Kind = AllowedFileType::Kind;

class OpenPanelSettingsTest : public test::SandboxTest {
  protected:
    /// An empty file with a type code.
    [[nodiscard]] std::string fileOfType(const std::string& name, std::uint32_t code) const {
        const std::string path = sandbox.write(name, "");
        ErrorSlot error;
        EXPECT_TRUE(platform::writeFileAttributes(path, {.hfsTypeCode = code}, error));
        const auto written = platform::readFileAttributes(path, error);
        EXPECT_TRUE(written && written->hfsTypeCode == code) << "needs extended attributes";
        return path;
    }

    OpenPanelSettings settings{.message = "",
                               .allowedFileTypes = {{Kind::extension, "xml"},
                                                    {Kind::typeCode, "XML "},
                                                    {Kind::typeIdentifier, "com.example.cut"}}};
};

TEST_F(OpenPanelSettingsTest, allowsAnExtensionInAnyCase) {
    EXPECT_TRUE(settings.allowsFile("/a/cut.xml"));
    EXPECT_TRUE(settings.allowsFile("/a/cut.XmL"));
    EXPECT_TRUE(settings.allowsFile("/a/cut.b.xml"));
}

TEST_F(OpenPanelSettingsTest, refusesOtherNames) {
    for (const char* path : {"/a/cut.fcpxml", "/a/cut", "/a/xml", "/a/.xml", "/a/cut.xml.bak", "",
                             "/a.xml/cut", "/a/com.example.cut"}) {
        EXPECT_FALSE(settings.allowsFile(path)) << path;
    }
}

TEST_F(OpenPanelSettingsTest, allowsATypeCodeWhateverTheName) {
    EXPECT_TRUE(settings.allowsFile(fileOfType("cut", 0x584D4C20)));
    EXPECT_FALSE(settings.allowsFile(fileOfType("other", 0x54455854)));
    EXPECT_FALSE(settings.allowsFile(sandbox.write("none", "")));
}

TEST_F(OpenPanelSettingsTest, allowsNothingWithoutTypes) {
    settings.allowedFileTypes.clear();
    EXPECT_FALSE(settings.allowsFile("/a/cut.xml"));
    EXPECT_FALSE(settings.allowsFile(fileOfType("cut", 0x584D4C20)));
}

}  // namespace
}  // namespace vornic
