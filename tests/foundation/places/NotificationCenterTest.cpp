#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "foundation/places/NotificationCenter.h"

namespace vornic {
namespace {

using Observation = NotificationCenter::Observation;
using UserInfo = NotificationCenter::UserInfo;

TEST(NotificationCenter, callsTheObserversOfTheNameInOrder) {
    std::vector<std::string> calls;
    const Observation first("changed", [&](const UserInfo&) { calls.emplace_back("first"); });
    const Observation other("cleared", [&](const UserInfo&) { calls.emplace_back("other"); });
    const Observation second("changed", [&](const UserInfo&) { calls.emplace_back("second"); });
    NotificationCenter::post("changed");
    EXPECT_EQ(calls, (std::vector<std::string>{"first", "second"}));
}

TEST(NotificationCenter, handsOnWhatThePosterSays) {
    UserInfo told;
    const Observation observation("changed", [&](const UserInfo& info) { told = info; });
    NotificationCenter::post("changed", {{"keycode", 71}});
    EXPECT_EQ(told, (UserInfo{{"keycode", 71}}));
}

TEST(NotificationCenter, callsNobodyWhoHasLetGo) {
    int calls = 0;
    {
        const Observation observation("changed", [&](const UserInfo&) { ++calls; });
    }
    NotificationCenter::post("changed");
    EXPECT_EQ(calls, 0);
}

TEST(NotificationCenter, letsAnObserverLetGoOfOthersAndOfItself) {
    int calls = 0;
    std::unique_ptr<Observation> later;
    std::unique_ptr<Observation> first =
        std::make_unique<Observation>("changed", [&](const UserInfo&) {
            ++calls;
            later.reset();
            first.reset();
        });
    later = std::make_unique<Observation>("changed", [&](const UserInfo&) { calls += 100; });
    NotificationCenter::post("changed");
    NotificationCenter::post("changed");
    EXPECT_EQ(calls, 1);
}

TEST(NotificationCenter, letsAnObserverPost) {
    std::vector<std::string> calls;
    const Observation changed("changed", [&](const UserInfo&) {
        NotificationCenter::post("reload");
        calls.emplace_back("changed");
    });
    const Observation reload("reload", [&](const UserInfo&) { calls.emplace_back("reload"); });
    NotificationCenter::post("changed");
    EXPECT_EQ(calls, (std::vector<std::string>{"reload", "changed"}));
}

}  // namespace
}  // namespace vornic
