#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/settings/InstallFolders.h"

namespace vornic::platform {
namespace {

using ::testing::ElementsAre;

// The layout that the build was told, without the programs' own folder.
const std::string kHelpers = VORNIC_LIBEXECDIR "/vornic";
const std::string kLibraries = VORNIC_LIBDIR "/vornic";
const std::string kData = VORNIC_DATADIR "/vornic";

TEST(InstallFoldersTest, ofAUsersProgramLieBelowThePrefix) {
    const std::string folder = "/opt/tools/" VORNIC_BINDIR;
    EXPECT_THAT(installFoldersFor(folder, InstallFolder::programs), ElementsAre(folder));
    EXPECT_THAT(installFoldersFor(folder, InstallFolder::helpers),
                ElementsAre("/opt/tools/" + kHelpers));
    EXPECT_THAT(installFoldersFor(folder, InstallFolder::libraries),
                ElementsAre("/opt/tools/" + kLibraries));
    EXPECT_THAT(installFoldersFor(folder, InstallFolder::data), ElementsAre("/opt/tools/" + kData));
}

TEST(InstallFoldersTest, ofAHelperLieBelowTheSamePrefix) {
    const std::string folder = "/opt/tools/" + kHelpers;
    EXPECT_THAT(installFoldersFor(folder, InstallFolder::programs),
                ElementsAre("/opt/tools/" VORNIC_BINDIR));
    EXPECT_THAT(installFoldersFor(folder, InstallFolder::data), ElementsAre("/opt/tools/" + kData));
}

TEST(InstallFoldersTest, ofTheRootAreFound) {
    EXPECT_THAT(installFoldersFor("/" VORNIC_BINDIR, InstallFolder::data),
                ElementsAre("/" + kData));
}

TEST(InstallFoldersTest, ofAProgramElsewhereMayBeBelowTheTwoFoldersAbove) {
    EXPECT_THAT(installFoldersFor("/home/anna/tools", InstallFolder::helpers),
                ElementsAre("/home/anna/" + kHelpers, "/home/" + kHelpers));
}

TEST(InstallFoldersTest, aFolderWhoseNameOnlyEndsAlikeIsNone) {
    EXPECT_THAT(installFoldersFor("/opt/tools/x" VORNIC_BINDIR, InstallFolder::data),
                ElementsAre("/opt/tools/" + kData, "/opt/" + kData));
}

}  // namespace
}  // namespace vornic::platform
