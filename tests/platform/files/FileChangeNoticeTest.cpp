#include <vector>

#include <gmock/gmock.h>

#include "platform/files/FileChangeNotice.h"

namespace vornic::platform {
namespace {

using testing::ElementsAre;

TEST(FileChangeNotice, goesToTheObserverUntilThereIsNone) {
    std::vector<std::optional<std::string>> first;
    std::vector<std::optional<std::string>> second;
    setFileChangeObserver([&](const auto& path) { first.push_back(path); });
    noteFileSystemChanged("/a");
    noteFileSystemChanged(std::nullopt);
    setFileChangeObserver([&](const auto& path) { second.push_back(path); });
    noteFileSystemChanged("/b");
    setFileChangeObserver({});
    noteFileSystemChanged("/c");
    EXPECT_THAT(first, ElementsAre("/a", std::nullopt));
    EXPECT_THAT(second, ElementsAre("/b"));
}

TEST(FileChangeNotice, letsAnObserverTakeItselfAway) {
    int notices = 0;
    setFileChangeObserver([&](const auto& /*path*/) {
        ++notices;
        setFileChangeObserver({});
    });
    noteFileSystemChanged("/a");
    noteFileSystemChanged("/a");
    EXPECT_EQ(notices, 1);
}

}  // namespace
}  // namespace vornic::platform
