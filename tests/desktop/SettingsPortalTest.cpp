#include <optional>
#include <vector>

#include "desktop/SettingsPortal.h"
#include "tests/desktop/PortalTest.h"
#include "tests/support/machine/ScopedEnvironment.h"

namespace vornic::test {
namespace {

using Scheme = std::optional<ColorScheme>;

class SettingsPortalTest : public PortalTest {
  protected:
    SettingsPortal::Listener listener() {
        return [this](Scheme scheme) { told.push_back(scheme); };
    }

    std::vector<Scheme> told;
};

TEST_F(SettingsPortalTest, reportsWhatTheUserHasChosen) {
    const std::vector<std::pair<uint, Scheme>> choices{
        {1, ColorScheme::dark}, {2, ColorScheme::light}, {0, std::nullopt}, {7, std::nullopt}};
    for (const auto& [value, scheme] : choices) {
        told.clear();
        const FakePortal desktop(connection("desktop"), value);
        const SettingsPortal portal(connection("program"), listener());
        EXPECT_TRUE(told.empty());
        ASSERT_TRUE(waitUntil([this] { return !told.empty(); }));
        EXPECT_EQ(told, std::vector<Scheme>{scheme});
    }
}

TEST_F(SettingsPortalTest, reportsWhatTheUserChoosesLater) {
    FakePortal desktop(connection("desktop"), 2);
    const SettingsPortal portal(connection("program"), listener());
    ASSERT_TRUE(waitUntil([this] { return told.size() == 1; }));
    desktop.choose(QStringLiteral("org.freedesktop.appearance"), QStringLiteral("contrast"), 1);
    desktop.choose(QStringLiteral("org.example.appearance"), QStringLiteral("color-scheme"), 1);
    desktop.choose(1);
    desktop.choose(0);
    ASSERT_TRUE(waitUntil([this] { return told.size() == 3; }));
    EXPECT_EQ(told, (std::vector<Scheme>{ColorScheme::light, ColorScheme::dark, std::nullopt}));
}

TEST_F(SettingsPortalTest, reportsNothingWhereThereIsNoSuchService) {
    const SettingsPortal portal(connection("program"), listener());
    EXPECT_FALSE(waitUntil([this] { return !told.empty(); }, std::chrono::milliseconds(500)));
}

TEST_F(SettingsPortalTest, reportsNothingOnceItHasGone) {
    const FakePortal desktop(connection("desktop"), 1);
    { const SettingsPortal portal(connection("program"), listener()); }
    EXPECT_FALSE(waitUntil([this] { return !told.empty(); }, std::chrono::milliseconds(500)));
}

TEST_F(SettingsPortalTest, triesNoBusWhereThereIsNone) {
    const ScopedEnvironment address("DBUS_SESSION_BUS_ADDRESS", "");
    const ScopedEnvironment folder("XDG_RUNTIME_DIR", sandbox.folder() + "/none");
    EXPECT_FALSE(SettingsPortal::sessionBus());
}

}  // namespace
}  // namespace vornic::test
