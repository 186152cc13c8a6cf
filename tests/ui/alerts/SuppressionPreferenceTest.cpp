#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include <gmock/gmock.h>

#include "foundation/log/QMLog.h"
#include "platform/settings/UserPreferences.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/machine/Unprivileged.h"
#include "tests/support/programs/CapturedChild.h"
#include "tests/ui/alerts/HeldAlertPanels.h"
#include "ui/alerts/SuppressionPreference.h"

namespace vornic {
namespace {

class SuppressionPreferenceTest : public ::testing::Test {
  protected:
    test::Unprivileged user;
    test::Sandbox sandbox;

    static void store(const platform::PropertyList& value) {
        ErrorSlot error;
        ASSERT_TRUE(platform::UserPreferences().setValue("dontAsk", value, error));
    }
};

TEST_F(SuppressionPreferenceTest, isStoredAsABoolean) {
    SuppressionPreference("dontAsk").setTicked(true);
    const auto stored = platform::UserPreferences().value("dontAsk");
    ASSERT_TRUE(stored.has_value());
    ASSERT_NE(stored->boolean(), nullptr);
    EXPECT_TRUE(*stored->boolean());
}

TEST_F(SuppressionPreferenceTest, isNotTickedUntilThePreferenceIsSet) {
    EXPECT_FALSE(SuppressionPreference("dontAsk").isTicked());
}

TEST_F(SuppressionPreferenceTest, readsEveryKindOfTruth) {
    for (const platform::PropertyList& value :
         {platform::PropertyList(true), platform::PropertyList(1), platform::PropertyList(2),
          platform::PropertyList("1"), platform::PropertyList("yes"),
          platform::PropertyList("TRUE")}) {
        store(value);
        EXPECT_TRUE(SuppressionPreference("dontAsk").isTicked());
    }
    for (const platform::PropertyList& value :
         {platform::PropertyList(false), platform::PropertyList(0), platform::PropertyList("0"),
          platform::PropertyList("no"), platform::PropertyList("")}) {
        store(value);
        EXPECT_FALSE(SuppressionPreference("dontAsk").isTicked());
    }
}

TEST_F(SuppressionPreferenceTest, writesABooleanAtOnceAndKeepsTheOtherKeys) {
    const platform::UserPreferences preferences;
    ErrorSlot error;
    ASSERT_TRUE(preferences.setValue("filepath", "/a", error));
    SuppressionPreference("dontAsk").setTicked(true);
    ASSERT_TRUE(preferences.value("dontAsk"));
    EXPECT_NE(preferences.value("dontAsk")->boolean(), nullptr);
    EXPECT_EQ(preferences.value("dontAsk"), platform::PropertyList(true));
    SuppressionPreference("dontAsk").setTicked(false);
    EXPECT_EQ(preferences.value("dontAsk"), platform::PropertyList(false));
    EXPECT_EQ(preferences.value("filepath"), platform::PropertyList("/a"));
}

/// A panel whose check box is a suppression preference, as every toolkit's is.
class TickablePanels : public test::HeldAlertPanels {
  public:
    class Panel : public test::HeldPanel {
      public:
        using HeldPanel::HeldPanel;
        void showSuppressionCheckBox(const std::string& preferenceKey) override {
            checkBox = std::make_unique<SuppressionPreference>(preferenceKey);
        }
        std::unique_ptr<SuppressionPreference> checkBox;
    };
    [[nodiscard]] std::shared_ptr<AlertPanel> makePanel(const AlertContents& contents) override {
        panel = std::make_shared<Panel>(contents, happenings);
        return panel;
    }
    std::shared_ptr<Panel> panel;
};

TEST_F(SuppressionPreferenceTest, isSetBeforeTheAlertIsDismissed) {
    const auto panels = std::make_shared<TickablePanels>();
    QMAlert::setPanelFactory(panels);
    const auto object = std::make_shared<QMAlert>();
    QMAlert::alertSheetWithMessageText("m", std::nullopt, std::nullopt, std::nullopt, "i", nullptr,
                                       nullptr, std::nullopt, false, object, "dontAsk");
    ASSERT_TRUE(panels->panel && panels->panel->checkBox);
    EXPECT_FALSE(panels->panel->checkBox->isTicked());
    panels->panel->checkBox->setTicked(true);
    EXPECT_TRUE(panels->panel->isOnScreen);
    EXPECT_EQ(platform::UserPreferences().value("dontAsk"), platform::PropertyList(true));
    panels->panel->answer(1);
    object->closeAlert();
    QMAlert::setPanelFactory(nullptr);
}

TEST_F(SuppressionPreferenceTest, logsWhenItCannotBeSaved) {
    const std::string library = sandbox.home() + "/.local/share/quillmark";
    std::filesystem::create_directories(library);
    std::ofstream(library + "/Preferences") << "in the way";
    static_cast<void>(test::runInChild([] {
        QMLog::createNewLog();
        SuppressionPreference("dontAsk").setTicked(true);
        QMLog::finishWriting();
    }));
    EXPECT_THAT(test::readBytes(library + "/Logs/Quillmark/Vornic.1.log"),
                ::testing::ContainsRegex("Unable to save preference dontAsk\\. .+\n"));
}

}  // namespace
}  // namespace vornic
