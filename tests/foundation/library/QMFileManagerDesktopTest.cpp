#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "foundation/files/QMFileManager.h"
#include "platform/files/FileChangeNotice.h"
#include "platform/settings/PropertyList.h"
#include "tests/support/machine/Sandbox.h"

namespace vornic {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;

constexpr const char* kUnknown = "application/octet-stream";

/// With a MIME database of the test's own.
class QMFileManagerDesktop : public test::SandboxTest {
  protected:
    QMFileManagerDesktop() {
        setenv("XDG_DATA_DIRS", sandbox.path("share").c_str(), 1);
        fs::create_directories(sandbox.path("share/mime"));
        std::ofstream(sandbox.path("share/mime/globs2")) << "50:application/x-fcpxml:*.fcpxml\n";
    }
    ~QMFileManagerDesktop() override { unsetenv("XDG_DATA_DIRS"); }
};

TEST_F(QMFileManagerDesktop, knowsTypesByExtensionInAnyCase) {
    EXPECT_EQ(QMFileManager::mimeTypeForFileExtension("fcpxml"), "application/x-fcpxml");
    EXPECT_EQ(QMFileManager::mimeTypeForFileExtension("FCPXML"), "application/x-fcpxml");
}

TEST_F(QMFileManagerDesktop, takesAnUnknownExtensionForBytes) {
    EXPECT_EQ(QMFileManager::mimeTypeForFileExtension("nosuchextension"), kUnknown);
    EXPECT_EQ(QMFileManager::mimeTypeForFileExtension(""), kUnknown);
}

TEST_F(QMFileManagerDesktop, takesEverythingForBytesWithoutADatabase) {
    fs::remove(sandbox.path("share/mime/globs2"));
    EXPECT_EQ(QMFileManager::mimeTypeForFileExtension("fcpxml"), kUnknown);
}

TEST_F(QMFileManagerDesktop, knowsTheTypeOfAFileByItsNameAlone) {
    EXPECT_EQ(QMFileManager::mimeTypeForFileAtPath(sandbox.write("a.b.fcpxml", "not at all")),
              "application/x-fcpxml");
    EXPECT_EQ(QMFileManager::mimeTypeForFileAtPath(sandbox.write("fcpxml", "")), kUnknown);
    EXPECT_EQ(QMFileManager::mimeTypeForFileAtPath(sandbox.path("missing.fcpxml")), std::nullopt);
}

TEST(QMFileManagerTypes, comeFromTheMachinesDatabase) {
    ASSERT_TRUE(fs::exists("/usr/share/mime/globs2"));
    EXPECT_EQ(QMFileManager::mimeTypeForFileExtension("xml"), "application/xml");
    EXPECT_EQ(QMFileManager::mimeTypeForFileExtension("JPG"), "image/jpeg");
    EXPECT_EQ(QMFileManager::mimeTypeForFileExtension("nosuchextension"), kUnknown);
}

TEST_F(QMFileManagerDesktop, notifiesTheDesktopOfChanges) {
    std::vector<std::optional<std::string>> notices;
    platform::setFileChangeObserver(
        [&](const std::optional<std::string>& path) { notices.push_back(path); });
    QMFileManager::notifyFileSystemChanged("/a/b");
    QMFileManager::notifyFileSystemChanged(std::nullopt);
    platform::setFileChangeObserver({});
    QMFileManager::notifyFileSystemChanged("/c");
    EXPECT_THAT(notices, ElementsAre("/a/b", std::nullopt));
}

TEST_F(QMFileManagerDesktop, registersApplicationBundlesAlone) {
    const platform::PropertyList information(
        platform::PropertyList::Dictionary{{"CFBundleIdentifier", "com.example.cutter"}});
    ErrorSlot error;
    const std::string path = sandbox.path("Cutter.app");
    ASSERT_TRUE(information.writeFile(path + "/Contents/Info.plist", error));
    EXPECT_TRUE(QMFileManager::registerApplicationWithLaunchServices(path));
    EXPECT_FALSE(QMFileManager::registerApplicationWithLaunchServices(sandbox.folder()));
    EXPECT_FALSE(QMFileManager::registerApplicationWithLaunchServices(sandbox.write("file", "x")));
    EXPECT_FALSE(QMFileManager::registerApplicationWithLaunchServices(sandbox.path("missing.app")));
}

}  // namespace
}  // namespace vornic
