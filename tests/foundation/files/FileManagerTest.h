#ifndef VORNIC_TESTS_FOUNDATION_FILES_FILE_MANAGER_TEST_H
#define VORNIC_TESTS_FOUNDATION_FILES_FILE_MANAGER_TEST_H

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "foundation/files/QMFileManager.h"
#include "foundation/rights/QMAuthorization.h"
#include "tests/support/fakes/RecordingAuthorizationHost.h"
#include "tests/support/machine/FileState.h"
#include "tests/support/machine/PrivateMounts.h"
#include "tests/support/machine/RightsOfRoot.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/machine/Unprivileged.h"
#include "tests/support/texts/LogCapture.h"

namespace vornic::test {

/// Tests of operations on real files by an ordinary user. What they ask for with administrator
/// rights is recorded and never run.
class FileManagerTest : public ::testing::Test {
  protected:
    FileManagerTest() {
        QMAuthorization::setSharedController(std::make_shared<QMAuthorization>(true, host));
    }
    ~FileManagerTest() override {
        openFolders();
        QMAuthorization::setSharedController(nullptr);
    }

    /// A file in a folder in which the user may change nothing.
    std::string writeInClosedFolder(std::string_view name) {
        const std::string folder = sandbox.path("closed");
        std::filesystem::create_directory(folder);
        std::string path = sandbox.write("closed/" + std::string(name), "x");
        std::filesystem::permissions(folder, std::filesystem::perms(0500));
        return path;
    }
    std::string makeFolder(std::string_view name) const {
        std::string path = sandbox.path(name);
        std::filesystem::create_directories(path);
        return path;
    }
    [[nodiscard]] std::string trash(std::string_view name = "") const {
        return sandbox.home() + "/.Trash" + (name.empty() ? "" : "/" + std::string(name));
    }
    /// What would have run with administrator rights.
    [[nodiscard]] std::vector<std::string> runs() const { return host->runs(); }

    Unprivileged user;
    Sandbox sandbox;
    LogCapture log;
    std::shared_ptr<RecordingAuthorizationHost> host =
        std::make_shared<RecordingAuthorizationHost>();

  private:
    void openFolders() const {
        std::error_code missing;
        std::filesystem::permissions(sandbox.path("closed"), std::filesystem::perms(0700), missing);
    }
};

/// `FileManagerTest` with a second volume.
class SecondVolumeTest : protected OwnMounts, public FileManagerTest {
  protected:
    void SetUp() override {
        const RightsOfRoot root;
        mounted_ = mounts.mountVolume(makeFolder("volume"), "tmpfs", "mode=1777,size=16m");
        if (!mounted_) {
            GTEST_SKIP() << "needs root and the right to mount";
        }
    }
    void TearDown() override {
        const RightsOfRoot root;
        EXPECT_TRUE(!mounted_ || mounts.unmountVolume(sandbox.path("volume")));
    }

  private:
    bool mounted_ = false;
};

}  // namespace vornic::test

#endif
