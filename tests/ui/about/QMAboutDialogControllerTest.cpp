#include <algorithm>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <gmock/gmock.h>
#include <sys/stat.h>

#include "base/FormatString.h"
#include "platform/settings/Bundle.h"
#include "platform/settings/PropertyList.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/machine/Unprivileged.h"
#include "ui/about/QMAboutDialogController.h"
#include "ui/about/RichTextReader.h"

namespace vornic {
namespace {

using platform::PropertyList;
using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::MatchesRegex;

/// A panel that writes down what it is told, in words.
class RecordingAboutPanel : public AboutPanel {
  public:
    std::optional<PanelFrame> currentFrame =
        PanelFrame{.x = 10, .y = 20, .width = 300, .height = 400};
    std::vector<std::string> calls;
    std::string version;

    [[nodiscard]] std::optional<PanelFrame> frame() const override { return currentFrame; }
    void setFrame(const PanelFrame& frame) override {
        calls.push_back(
            formatString("frame %g %g %g %g", frame.x, frame.y, frame.width, frame.height));
    }
    void setTitle(std::string_view title) override { note("title ", title); }
    void setAppName(std::string_view name) override { note("name ", name); }
    void setVersion(std::string_view text) override {
        version = text;
        note("version");
    }
    void showApplicationIcon() override { note("icon"); }
    void setCreditsHidden(bool hidden) override { note(hidden ? "hide credits" : "show credits"); }
    void setCreditsEditable(bool editable) override { note(editable ? "editable" : "read-only"); }
    void insertCredits(std::string_view rtf) override { note("insert ", rtf); }
    void scrollCreditsToBeginning() override { note("scroll to the beginning"); }

  private:
    void note(std::string_view kind, std::string_view text = {}) {
        calls.push_back(std::string(kind).append(text));
    }
};

class QMAboutDialogControllerTest : public ::testing::Test {
  protected:
    static constexpr const char* kInformation = "Info.plist";
    static constexpr const char* kUpdates = "Resources/QMUpdates.plist";
    static constexpr const char* kCredits = "Resources/Credits.rtf";

    void SetUp() override {
        std::filesystem::create_directories(contents + "/Resources");
        platform::Bundle::setMainBundle(platform::Bundle(sandbox.path("Vornic.app")));
        write(kInformation, {{"CFBundleExecutable", "Vornic"},
                             {"CFBundleShortVersionString", "2.1"},
                             {"CFBundleVersion", "347"}});
        write(kUpdates, {{"QMGroupVersionString", "5.0"}, {"QMGroupVersion", "88"}});
    }
    void TearDown() override { platform::Bundle::setMainBundle(std::nullopt); }

    void write(const std::string& name, const PropertyList::Dictionary& entries) const {
        ErrorSlot error;
        ASSERT_TRUE(PropertyList(entries).writeFile(contents + "/" + name, error));
    }
    void writeBytes(const std::string& name, std::string_view bytes) const {
        static_cast<void>(sandbox.write("Vornic.app/Contents/" + name, bytes));
    }
    void remove(const std::string& name) const {
        ASSERT_TRUE(std::filesystem::remove(contents + "/" + name));
    }

    /// Fills a panel. @return what it was told.
    const std::vector<std::string>& fill() {
        QMAboutDialogController(panel).awakeFromNib();
        return panel.calls;
    }

    test::Unprivileged user;
    test::Sandbox sandbox;
    std::string contents = sandbox.path("Vornic.app/Contents");
    RecordingAboutPanel panel;
};

TEST_F(QMAboutDialogControllerTest, fillsThePanelInItsOrder) {
    writeBytes(kCredits, R"({\rtf1 Thanks})");
    EXPECT_THAT(fill(), ElementsAre("editable", R"(insert {\rtf1 Thanks})", "read-only",
                                    "scroll to the beginning", "icon", "title About Vornic",
                                    "name Vornic", "version"));
    EXPECT_EQ(panel.version, "2.1 (347)\n\nBrindle Tools 5.0 (88)");
}

TEST_F(QMAboutDialogControllerTest, hidesTheCreditsAndShrinksThePanelWithoutThem) {
    EXPECT_THAT(fill(), ElementsAre("hide credits", "frame 10 20 300 250", "icon",
                                    "title About Vornic", "name Vornic", "version"));
}

TEST_F(QMAboutDialogControllerTest, shrinksAFrameOfNothingWhereThereIsNoPanel) {
    panel.currentFrame = std::nullopt;
    EXPECT_THAT(fill(), Contains("frame 0 0 0 250"));
}

TEST_F(QMAboutDialogControllerTest, leavesTheCreditsAloneThatItCannotRead) {
    writeBytes(kCredits, R"({\rtf1 Thanks})");
    ASSERT_EQ(chmod((contents + "/" + kCredits).c_str(), 0), 0);
    EXPECT_THAT(fill(), ElementsAre("icon", "title About Vornic", "name Vornic", "version"));
}

TEST_F(QMAboutDialogControllerTest, handsTheBytesOfTheCreditsOnAsTheyAre) {
    writeBytes(kCredits, std::string_view("no \0 text\xFF", 10));
    EXPECT_THAT(fill(), Contains(std::string("insert no \0 text\xFF", 17)));
}

TEST_F(QMAboutDialogControllerTest, showsNothingForAMissingVersion) {
    write(kInformation, {{"CFBundleVersion", "347"}});
    fill();
    EXPECT_EQ(panel.version, " (347)\n\nBrindle Tools 5.0 (88)");
}

TEST_F(QMAboutDialogControllerTest, showsNothingForAMissingBuild) {
    write(kInformation, {{"CFBundleShortVersionString", "2.1"}});
    fill();
    EXPECT_EQ(panel.version, "2.1 ()\n\nBrindle Tools 5.0 (88)");
}

TEST_F(QMAboutDialogControllerTest, showsNothingForAMissingVersionOfTheFamily) {
    write(kUpdates, {{"QMGroupVersion", "88"}});
    fill();
    EXPECT_EQ(panel.version, "2.1 (347)\n\nBrindle Tools  (88)");
}

TEST_F(QMAboutDialogControllerTest, showsNothingForAMissingBuildOfTheFamily) {
    write(kUpdates, {{"QMGroupVersionString", "5.0"}});
    fill();
    EXPECT_EQ(panel.version, "2.1 (347)\n\nBrindle Tools 5.0 ()");
}

TEST_F(QMAboutDialogControllerTest, keepsTheFamilysLineWithoutItsPropertyList) {
    remove(kUpdates);
    fill();
    EXPECT_EQ(panel.version, "2.1 (347)\n\nBrindle Tools  ()");
}

TEST_F(QMAboutDialogControllerTest, findsWhatIsInstalledBesideTheBundle) {
    remove(kUpdates);
    static_cast<void>(sandbox.write("Credits.rtf", "installed"));
    ErrorSlot error;
    ASSERT_TRUE(PropertyList(PropertyList::Dictionary{{"QMGroupVersion", "9"}})
                    .writeFile(sandbox.path("QMUpdates.plist"), error));
    platform::Bundle::setMainBundle(
        platform::Bundle(sandbox.path("Vornic.app"), {sandbox.folder()}));
    EXPECT_THAT(fill(), Contains("insert installed"));
    EXPECT_EQ(panel.version, "2.1 (347)\n\nBrindle Tools  (9)");
}

TEST_F(QMAboutDialogControllerTest, showsNothingForAPropertyListThatIsDamaged) {
    writeBytes(kUpdates, "<plist");
    fill();
    EXPECT_EQ(panel.version, "2.1 (347)\n\nBrindle Tools  ()");
}

TEST_F(QMAboutDialogControllerTest, showsABuildThatIsANumber) {
    write(kUpdates, {{"QMGroupVersionString", "5.0"}, {"QMGroupVersion", 88}});
    fill();
    EXPECT_EQ(panel.version, "2.1 (347)\n\nBrindle Tools 5.0 (88)");
}

TEST_F(QMAboutDialogControllerTest, showsNothingButTheFamilysNameWithoutAnything) {
    remove(kUpdates);
    remove(kInformation);
    EXPECT_THAT(fill(), AllOf(Contains("title About Vornic"), Contains("name Vornic")));
    EXPECT_EQ(panel.version, " ()\n\nBrindle Tools  ()");
}

TEST_F(QMAboutDialogControllerTest, showsTheNameOfTheExecutableWithoutItsExtension) {
    write(kInformation, {{"CFBundleExecutable", "Vornic Beta.bin"}});
    EXPECT_THAT(fill(), AllOf(Contains("title About Vornic Beta"), Contains("name Vornic Beta")));
}

TEST_F(QMAboutDialogControllerTest, takesPercentSignsAsText) {
    write(kInformation, {{"CFBundleExecutable", "100%@"}, {"CFBundleShortVersionString", "%d"}});
    EXPECT_THAT(fill(), Contains("title About 100%@"));
    EXPECT_EQ(panel.version, "%d ()\n\nBrindle Tools 5.0 (88)");
}

// What the program ships with, in the bundle of the build tree

TEST(ShippedAboutBoxTest, hasAllVersions) {
    RecordingAboutPanel panel;
    QMAboutDialogController(panel).awakeFromNib();
    EXPECT_THAT(panel.version,
                MatchesRegex("[0-9.]+ \\([0-9]+\\)\n\nBrindle Tools [0-9.]+ \\([0-9]+\\)"));
    EXPECT_THAT(panel.calls, Contains("title About Vornic"));
}

TEST(ShippedAboutBoxTest, hasCreditsThatBeginWithABoldName) {
    RecordingAboutPanel panel;
    QMAboutDialogController(panel).awakeFromNib();
    const auto insertion =
        std::find_if(panel.calls.begin(), panel.calls.end(),
                     [](const std::string& call) { return call.starts_with("insert "); });
    ASSERT_NE(insertion, panel.calls.end());
    const auto runs = readRichText(insertion->substr(std::string("insert ").size()));
    ASSERT_TRUE(runs);
    ASSERT_GT(runs->size(), 1U);
    EXPECT_EQ(runs->front().text, "Vornic");
    EXPECT_TRUE(runs->front().isBold);
    std::string text;
    for (const StyledRun& run : *runs) {
        text += run.text;
    }
    EXPECT_THAT(text, HasSubstr("\npugixml \u2013 the XML tree"));
    EXPECT_THAT(text, HasSubstr("the desktop\u2019s database"));
    EXPECT_EQ(text.find_first_of("\\{}"), std::string::npos) << text;
}

}  // namespace
}  // namespace vornic
