#include <algorithm>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "convert/ConversionAnalysis.h"
#include "platform/Exception.h"
#include "tests/support/EngineTest.h"
#include "tests/support/RecordingConversionHost.h"

namespace vornic {
namespace {

using Strings = std::vector<std::string>;
using Menu = std::vector<test::RecordingConversionHost::MenuItem>;

constexpr const char* kNotRecognized =
    "The file has not been recognized as a Final Cut Pro XML file. Please try repairing it before "
    "attempting conversion.";

std::string downgradeText(const std::string& title) {
    return "Can be downgraded without changes to version: " + title;
}

class ConversionAnalysisTest : public test::EngineTest {
  protected:
    ConversionAnalysisTest() { writeUsualCatalogue(); }

    /// Analyses a file with this content.
    void analyse(std::string_view content) {
        file = sandbox.write("Cut.xml", content);
        populateConversionDataForFile(host, file);
    }
    /// Analyses an XMEML file of the version with this in its root element.
    void analyse(std::string_view version, std::string_view content) {
        analyse("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE xmeml>\n<xmeml version=\"" +
                std::string(version) + "\">" + std::string(content) + "</xmeml>\n");
    }
    [[nodiscard]] Strings menuKeys() const {
        Strings keys;
        for (const auto& item : host.menu) {
            keys.push_back(item.key);
        }
        return keys;
    }
    void expectNothingShown() const {
        EXPECT_EQ(host.calls, (Strings{"start spinner", "stop spinner later"}));
        EXPECT_EQ(host.minimum, 0);
    }

    test::RecordingConversionHost host;
    std::string file;
};

TEST_F(ConversionAnalysisTest, onlyStopsTheSpinnerWithoutAFile) {
    populateConversionDataForFile(host, std::nullopt);
    EXPECT_EQ(host.calls, Strings{"stop spinner later"});
    EXPECT_EQ(log.entries(), Strings{});
}

TEST_F(ConversionAnalysisTest, walksTheVersionsFromTheHighestDown) {
    analyse("2", "<sequence><multiclip id=\"1\"/></sequence>");
    EXPECT_EQ(host.calls, (Strings{"start spinner",
                                   "current: Current XML version: 2 (Final Cut Pro 5+)",
                                   "clear menu",
                                   "enable",
                                   "add: 5 (Final Cut Pro 7+)",
                                   "key: 5",
                                   "add: 5 (Final Cut Pro 7+)",
                                   "key: 5",
                                   "enable",
                                   "add: 4 (Final Cut Pro 6+)",
                                   "key: 4",
                                   "add: 4 (Final Cut Pro 6+)",
                                   "key: 4",
                                   "enable",
                                   "add: 3 (Final Cut Pro 5.1.2+)",
                                   "key: 3",
                                   "add: 3 (Final Cut Pro 5.1.2+)",
                                   "key: 3",
                                   "minimum: 2",
                                   "downgrade: " + downgradeText("2 (Final Cut Pro 5+)"),
                                   "enable",
                                   "add: 2 (Final Cut Pro 5+)",
                                   "key: 2",
                                   "enable",
                                   "add: 1 (Final Cut Pro 4+)",
                                   "key: 1",
                                   "add: 1 (Final Cut Pro 4+)",
                                   "key: 1",
                                   "stop spinner later"}));
    EXPECT_EQ(log.entries(), (Strings{"Generating conversion data for file " + file + "...",
                                      "XMEML version: 2", "Final Cut Pro version: 5",
                                      "Found tag: <multiclip", "Minimum downgrade version: 2"}));
    EXPECT_TRUE(alerts->shown.empty());
}

TEST_F(ConversionAnalysisTest, listsTheCurrentVersionOnceAndEveryOtherTwice) {
    analyse("4", "");
    EXPECT_EQ(menuKeys(), (Strings{"5", "5", "4", "3", "3", "2", "2", "1", "1"}));
    EXPECT_EQ(host.menu.at(2), (Menu::value_type{"4 (Final Cut Pro 6+)", "4"}));
    EXPECT_EQ(host.menu.at(7), (Menu::value_type{"1 (Final Cut Pro 4+)", "1"}));
}

TEST_F(ConversionAnalysisTest, takesTheHighestVersionWhoseElementsOccurAsTheMinimum) {
    analyse("5", "<multiclip>1</multiclip><metadata>1</metadata>");
    EXPECT_EQ(host.minimum, 3);
    EXPECT_EQ(host.downgradeVersion, downgradeText("3 (Final Cut Pro 5.1.2+)"));
}

TEST_F(ConversionAnalysisTest, goesOnTestingAfterTheMinimumIsFound) {
    analyse("5", "<multiclip>1</multiclip><metadata>1</metadata>");
    const Strings entries = log.entries();
    EXPECT_EQ(
        Strings(entries.begin() + 3, entries.end()),
        (Strings{"Found tag: <metadata", "Minimum downgrade version: 3", "Found tag: <multiclip"}));
    EXPECT_EQ(std::count(host.calls.begin(), host.calls.end(), "minimum: 3"), 1);
}

TEST_F(ConversionAnalysisTest, findsMinimumOneForAFileWithoutListedElements) {
    analyse("5", "<sequence><name>multiclip</name></sequence>");
    EXPECT_EQ(host.minimum, 1);
    EXPECT_EQ(host.downgradeVersion, downgradeText("1 (Final Cut Pro 4+)"));
    EXPECT_TRUE(log.contains("Minimum downgrade version: 1"));
}

TEST_F(ConversionAnalysisTest, fallsBackToOneWhenTheCatalogueHasNoVersionOne) {
    catalogue.write({{"2", {"5", {{"<multiclip"}}}}});
    analyse("2", "");
    EXPECT_EQ(host.minimum, 1);
    EXPECT_EQ(host.downgradeVersion, downgradeText("1 (Final Cut Pro 4+)"));
    EXPECT_EQ(menuKeys(), Strings{"2"});
    EXPECT_FALSE(log.contains("Minimum downgrade version: 1"));
}

TEST_F(ConversionAnalysisTest, fallsBackToOneForAnEmptyCatalogue) {
    catalogue.write(std::map<std::string, test::CatalogueBundle::Version>{});
    analyse("2", "");
    EXPECT_EQ(
        host.calls,
        (Strings{"start spinner",
                 "current: Current XML version: 2 (Final Cut Pro Unknown Version+)", "clear menu",
                 "minimum: 1", "downgrade: " + downgradeText("1 (Final Cut Pro 4+)"),
                 "stop spinner later"}));
    EXPECT_FALSE(host.isEnabled);
}

TEST_F(ConversionAnalysisTest, namesAnUncataloguedVersionUnknown) {
    analyse("7", "");
    EXPECT_EQ(host.curVersion, "Current XML version: 7 (Final Cut Pro Unknown Version+)");
    EXPECT_TRUE(log.contains("XMEML version: 7"));
    EXPECT_TRUE(log.contains("Final Cut Pro version: Unknown Version"));
    EXPECT_EQ(host.menu.size(), 10U);
}

TEST_F(ConversionAnalysisTest, namesACurrentVersionWithoutLabelUnknownAndShowsNullElsewhere) {
    catalogue.write({{"1", {std::nullopt, {}}}});
    analyse("1", "");
    EXPECT_EQ(host.curVersion, "Current XML version: 1 (Final Cut Pro Unknown Version+)");
    EXPECT_EQ(host.downgradeVersion, downgradeText("1 (Final Cut Pro (null)+)"));
    EXPECT_EQ(host.menu, (Menu{{"1 (Final Cut Pro (null)+)", "1"}}));
}

TEST_F(ConversionAnalysisTest, takesAnEmptyVersionForOneThatIsNotCatalogued) {
    analyse("", "");
    EXPECT_EQ(host.curVersion, "Current XML version:  (Final Cut Pro Unknown Version+)");
    EXPECT_EQ(host.menu.size(), 10U);
}

TEST_F(ConversionAnalysisTest, sortsVersionsAsTexts) {
    catalogue.write({{"1", {"4", {}}}, {"2", {"5", {{"<b"}}}}, {"10", {"9", {{"<a"}}}}});
    analyse("1", "<a>1</a><b>1</b>");
    EXPECT_EQ(menuKeys(), (Strings{"2", "2", "10", "10", "1"}));
    EXPECT_EQ(host.minimum, 2);
}

TEST_F(ConversionAnalysisTest, searchesTheDocumentAsItIsWritten) {
    // In the file the tag ends after a line break; written again it ends at once.
    analyse("5", "<itemhistory\n>1</itemhistory>");
    EXPECT_EQ(host.minimum, 4);
}

TEST_F(ConversionAnalysisTest, loadsStrictly) {
    analyse("5", "<name>R&D</name>");
    expectNothingShown();
    ASSERT_EQ(alerts->shown.size(), 1U);
    const AlertContents& alert = alerts->shown[0].contents;
    EXPECT_EQ(alert.messageText, "Error loading XML file");
    const std::string advice = "\n\nPlease try repairing it first before attempting a conversion.";
    ASSERT_TRUE(alert.informativeText.ends_with(advice)) << alert.informativeText;
    const std::string description =
        alert.informativeText.substr(0, alert.informativeText.size() - advice.size());
    EXPECT_NE(description, "");
    EXPECT_EQ(alerts->shown[0].parentWindow, nullptr);
    EXPECT_EQ(log.entries().at(1), "Error loading XML file - " + description +
                                       ". Please try repairing it first before attempting a "
                                       "conversion.");
}

TEST_F(ConversionAnalysisTest, tellsThatAFileCannotBeLoaded) {
    populateConversionDataForFile(host, sandbox.path("none.xml"));
    expectNothingShown();
    ASSERT_EQ(alerts->shown.size(), 1U);
    EXPECT_EQ(alerts->shown[0].contents.messageText, "Error loading XML file");
}

TEST_F(ConversionAnalysisTest, tellsThatTheCatalogueIsMissing) {
    catalogue.remove();
    analyse("5", "");
    expectNothingShown();
    EXPECT_EQ(alerts->texts(),
              Strings{"Unable to load XML version information | Please reinstall Brindle Tools."});
    EXPECT_EQ(log.entries().at(1),
              "Unable to load XML version information. Please reinstall Brindle Tools.");
}

TEST_F(ConversionAnalysisTest, refusesARootWithoutVersion) {
    analyse("<xmeml><sequence/></xmeml>");
    expectNothingShown();
    EXPECT_EQ(alerts->texts(),
              Strings{std::string("Unable to locate XML Interchange version information | ") +
                      kNotRecognized});
    EXPECT_EQ(alerts->shown.at(0).parentWindow, nullptr);
    EXPECT_EQ(
        log.entries().at(1),
        std::string("Unable to locate XML Interchange version information. ") + kNotRecognized);
}

TEST_F(ConversionAnalysisTest, refusesAnotherRoot) {
    analyse("<fcpxml version=\"1.8\"/>");
    expectNothingShown();
    EXPECT_EQ(alerts->shown.size(), 1U);
}

TEST_F(ConversionAnalysisTest, showsAlertsWithoutParentEvenWhenThereIsAWindow) {
    host.window = std::make_shared<test::PlainAlertWindow>();
    analyse("<fcpxml/>");
    EXPECT_EQ(alerts->shown.at(0).parentWindow, nullptr);
}

TEST_F(ConversionAnalysisTest, leavesWhatAnEarlierRunShowedWhenItFails) {
    analyse("2", "<multiclip>1</multiclip>");
    const Menu menu = host.menu;
    const std::string label = host.curVersion;
    analyse("<xmeml/>");
    EXPECT_EQ(host.menu, menu);
    EXPECT_EQ(host.curVersion, label);
    EXPECT_EQ(host.minimum, 2);
}

TEST_F(ConversionAnalysisTest, readsTheCatalogueAgainForEachVersion) {
    host.onCall = [this](const std::string& call) {
        if (call == "clear menu") {
            catalogue.remove();
        }
    };
    analyse("5", "<multiclip>1</multiclip>");
    // One failure for each version but "1", which needs no catalogue.
    EXPECT_EQ(alerts->shown.size(), 4U);
    EXPECT_EQ(host.minimum, 1);
    EXPECT_EQ(menuKeys().size(), 9U);
}

TEST_F(ConversionAnalysisTest, logsAnExceptionAndStopsTheSpinner) {
    host.onCall = [](const std::string& call) {
        if (call == "clear menu") {
            throw platform::Exception("Test", "raised");
        }
    };
    analyse("2", "");
    EXPECT_EQ(host.calls.back(), "stop spinner later");
    EXPECT_TRUE(
        log.contains("Exception in -[Document populateConversionDataForFile:]. Test - raised."));
}

class RequiresVersionTest : public test::EngineTest {
  protected:
    RequiresVersionTest() { writeUsualCatalogue(); }
};

TEST_F(RequiresVersionTest, requiresVersionOneWithoutLookingAtTheCatalogue) {
    catalogue.remove();
    EXPECT_TRUE(xmlStringRequiresVersion("", "1"));
    EXPECT_EQ(log.entries(), Strings{});
}

TEST_F(RequiresVersionTest, findsATagWithAndWithoutAttributes) {
    EXPECT_TRUE(xmlStringRequiresVersion("<uuid>", "3"));
    EXPECT_TRUE(xmlStringRequiresVersion("<uuid id=\"1\">", "3"));
    EXPECT_FALSE(xmlStringRequiresVersion("<uuids>", "3"));
    EXPECT_FALSE(xmlStringRequiresVersion("<uuid/>", "3"));
    EXPECT_FALSE(xmlStringRequiresVersion("<UUID>", "3"));
}

TEST_F(RequiresVersionTest, logsTheFirstElementOfTheListAndNotOfTheText) {
    EXPECT_TRUE(xmlStringRequiresVersion("<uuid><metadata>", "3"));
    EXPECT_EQ(log.entries(), Strings{"Found tag: <metadata"});
}

TEST_F(RequiresVersionTest, doesNotRequireAVersionWithoutElements) {
    catalogue.write({{"2", {"5", {}}}, {"3", {"6", Strings{}}}});
    EXPECT_FALSE(xmlStringRequiresVersion("<name> <a>", "2"));
    EXPECT_FALSE(xmlStringRequiresVersion("<name> <a>", "3"));
    EXPECT_TRUE(alerts->shown.empty());
    EXPECT_EQ(log.entries(), Strings{});
}

TEST_F(RequiresVersionTest, reportsAMissingEntryLikeAMissingCatalogue) {
    EXPECT_FALSE(xmlStringRequiresVersion("<name>", "7"));
    EXPECT_EQ(alerts->texts(),
              Strings{"Unable to load XML version information | Please reinstall Brindle Tools."});
    EXPECT_EQ(log.entries(),
              Strings{"Unable to load XML version information. Please reinstall Brindle Tools."});
}

TEST_F(RequiresVersionTest, reportsAMissingCatalogue) {
    catalogue.remove();
    EXPECT_FALSE(xmlStringRequiresVersion("<uuid>", "3"));
    EXPECT_EQ(alerts->shown.size(), 1U);
}

TEST_F(RequiresVersionTest, answersNoAfterAnException) {
    catalogue.remove();
    alerts->onShow = [](const AlertContents&) { throw platform::Exception("Test", "raised"); };
    EXPECT_FALSE(xmlStringRequiresVersion("<uuid>", "3"));
    EXPECT_TRUE(
        log.contains("Exception in -[Document xmlString:requiresVersion:]. Test - raised."));
}

}  // namespace
}  // namespace vornic
