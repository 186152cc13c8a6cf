#include <gmock/gmock.h>

#include "platform/session/LinuxWorkspaceOpener.h"
#include "platform/session/WorkspaceOpener.h"
#include "tests/support/fakes/RecordingWorkspaceOpener.h"

namespace vornic::platform {
namespace {

TEST(WorkspaceOpenerTest, isTheSystemsOwnUnlessAnotherIsPutInPlace) {
    const auto isSystems = [] {
        return dynamic_cast<LinuxWorkspaceOpener*>(WorkspaceOpener::shared().get()) != nullptr;
    };
    EXPECT_TRUE(isSystems());
    {
        const test::InstalledWorkspaceOpener opener;
        EXPECT_FALSE(isSystems());
        ErrorSlot error;
        EXPECT_TRUE(WorkspaceOpener::shared()->openURL("https://a.example", error));
        EXPECT_THAT(opener->opened, ::testing::ElementsAre("URL https://a.example"));
    }
    EXPECT_TRUE(isSystems());
}

}  // namespace
}  // namespace vornic::platform
