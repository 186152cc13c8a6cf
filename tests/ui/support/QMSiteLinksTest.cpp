#include <optional>

#include <gtest/gtest.h>

#include "platform/settings/Bundle.h"
#include "platform/settings/PropertyList.h"
#include "tests/support/machine/Sandbox.h"
#include "ui/support/QMSiteLinks.h"

namespace vornic {
namespace {

using platform::PropertyList;

/// The main bundle is the test's own.
class QMSiteLinksTest : public test::SandboxTest {
  protected:
    QMSiteLinksTest() { platform::Bundle::setMainBundle(platform::Bundle(path_)); }
    ~QMSiteLinksTest() override { platform::Bundle::setMainBundle(std::nullopt); }

    void setInformation(const PropertyList::Dictionary& information) const {
        ErrorSlot error;
        ASSERT_TRUE(PropertyList(information).writeFile(path_ + "/Contents/Info.plist", error));
    }

  private:
    const std::string path_ = sandbox.path("Vornic.app");
};

TEST_F(QMSiteLinksTest, knowsTheHomePage) {
    EXPECT_EQ(QMSiteLinks::quillmarkURL(), "https://www.quillmark.example");
}

TEST_F(QMSiteLinksTest, knowsThePageOfAllProducts) {
    EXPECT_EQ(QMSiteLinks::quillmarkProductsURL(), "https://www.quillmark.example/products");
}

TEST_F(QMSiteLinksTest, knowsThePageOfTheFamily) {
    EXPECT_EQ(QMSiteLinks::brindleToolsURL(), "https://www.quillmark.example/brindletools");
}

TEST_F(QMSiteLinksTest, knowsTheSupportPageOfAnApplication) {
    EXPECT_EQ(QMSiteLinks::supportURLForAppName("brindletools"),
              "https://www.quillmark.example/support/brindletools");
}

// Fault reports

TEST_F(QMSiteLinksTest, namesApplicationAndVersionInAFaultReport) {
    EXPECT_EQ(QMSiteLinks::bugReportURLWithAppName("brindletools", "brindle_tools", "2.1"),
              "https://www.quillmark.example/support/brindletools/bugreport/"
              "?app=brindle_tools&version=2.1");
}

TEST_F(QMSiteLinksTest, escapesTheVersionAlone) {
    EXPECT_EQ(QMSiteLinks::bugReportURLWithAppName("a b", "c d", "2.1 ü&e"),
              "https://www.quillmark.example/support/a b/bugreport/"
              "?app=c d&version=2.1%20%C3%BC%26e");
}

TEST_F(QMSiteLinksTest, beginsTheQueryWithTheVersionWhenNoApplicationIsGiven) {
    EXPECT_EQ(QMSiteLinks::bugReportURLWithAppName("brindletools", std::nullopt, "2.1"),
              "https://www.quillmark.example/support/brindletools/bugreport/?version=2.1");
}

TEST_F(QMSiteLinksTest, leavesOutAVersionThatIsNotGiven) {
    EXPECT_EQ(QMSiteLinks::bugReportURLWithAppName("brindletools", "brindle_tools", std::nullopt),
              "https://www.quillmark.example/support/brindletools/bugreport/?app=brindle_tools");
}

TEST_F(QMSiteLinksTest, asksNothingWhenNothingIsGiven) {
    EXPECT_EQ(QMSiteLinks::bugReportURLWithAppName("brindletools", std::nullopt, std::nullopt),
              "https://www.quillmark.example/support/brindletools/bugreport/");
}

TEST_F(QMSiteLinksTest, distinguishesAnEmptyTextFromNone) {
    EXPECT_EQ(QMSiteLinks::bugReportURLWithAppName("a", "", ""),
              "https://www.quillmark.example/support/a/bugreport/?app=&version=");
}

TEST_F(QMSiteLinksTest, takesNoFormatFromItsTexts) {
    EXPECT_EQ(QMSiteLinks::bugReportURLWithAppName("%@", "%s%@", "%@"),
              "https://www.quillmark.example/support/%@/bugreport/?app=%s%@&version=%25%40");
}

TEST_F(QMSiteLinksTest, takesTheVersionOfTheMainBundle) {
    setInformation({{"CFBundleShortVersionString", "2.1 b3"}, {"CFBundleVersion", "42"}});
    EXPECT_EQ(QMSiteLinks::bugReportURLWithAppName("brindletools", "brindle_tools"),
              "https://www.quillmark.example/support/brindletools/bugreport/"
              "?app=brindle_tools&version=2.1%20b3");
}

TEST_F(QMSiteLinksTest, leavesOutTheVersionThatTheMainBundleDoesNotHave) {
    setInformation({{"CFBundleVersion", "42"}});
    EXPECT_EQ(QMSiteLinks::bugReportURLWithAppName("brindletools", std::nullopt),
              "https://www.quillmark.example/support/brindletools/bugreport/");
}

// Requests

TEST_F(QMSiteLinksTest, namesTheApplicationInARequest) {
    setInformation({{"CFBundleShortVersionString", "2.1"}});
    EXPECT_EQ(
        QMSiteLinks::featureRequestURLWithAppName("brindletools", "brindle_tools"),
        "https://www.quillmark.example/support/brindletools/featurerequest/?app=brindle_tools");
}

TEST_F(QMSiteLinksTest, asksForAFeatureOfNoApplicationInParticular) {
    EXPECT_EQ(QMSiteLinks::featureRequestURLWithAppName("brindletools", std::nullopt),
              "https://www.quillmark.example/support/brindletools/featurerequest/");
}

TEST_F(QMSiteLinksTest, keepsTheNamesInARequestAsTheyAre) {
    EXPECT_EQ(QMSiteLinks::featureRequestURLWithAppName("a b", "c&d %20"),
              "https://www.quillmark.example/support/a b/featurerequest/?app=c&d %20");
}

}  // namespace
}  // namespace vornic
