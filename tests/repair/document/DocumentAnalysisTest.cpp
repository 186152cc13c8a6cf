#include <algorithm>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "base/Exception.h"
#include "tests/repair/document/DocumentTest.h"

/// The analysis of a document's file, and what it shows in the conversion dialog.
namespace vornic {
namespace {

using test::Strings;

/// An entry of the version menu: its title and its key.
using MenuItem = std::pair<std::string, std::string>;
using Menu = std::vector<MenuItem>;

constexpr const char* kNotRecognized =
    "The file has not been recognized as a Final Cut Pro XML file. Please try repairing it before "
    "attempting conversion.";

std::string downgradeText(const std::string& title) {
    return "Can be downgraded without changes to version: " + title;
}

class DocumentAnalysisTest : public test::DocumentTest {
  protected:
    void analyseFile(const std::optional<std::string>& path) {
        document->populateConversionDataForFile(path);
        waitForThreads();
    }
    /// Analyses a file with this content.
    void analyse(std::string_view content) {
        file = sandbox.write("Cut.xml", content);
        analyseFile(file);
    }
    /// Analyses an XMEML file of the version with this in its root element.
    void analyse(std::string_view version, std::string_view content) {
        analyse("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE xmeml>\n<xmeml version=\"" +
                std::string(version) + "\">" + std::string(content) + "</xmeml>\n");
    }
    [[nodiscard]] Menu menu() const {
        Menu items;
        for (const ConversionOffer::Version& version : window->offers.back().versions) {
            items.insert(items.end(), static_cast<std::size_t>(version.menuItems),
                         {version.title, version.key});
        }
        return items;
    }
    [[nodiscard]] Strings menuKeys() const {
        Strings keys;
        for (const auto& [title, key] : menu()) {
            keys.push_back(key);
        }
        return keys;
    }
    [[nodiscard]] std::string curVersion() const { return window->callsOf("current: ").back(); }
    [[nodiscard]] std::string downgradeVersion() const { return window->callsOf("offer: ").back(); }
    void expectNothingShown() const {
        EXPECT_EQ(window->calls, (Strings{"start spinner", "stop spinner"}));
        EXPECT_EQ(document->minDowngradeVersion(), 0);
    }

    std::string file;
};

TEST_F(DocumentAnalysisTest, onlyStopsTheSpinnerWithoutAFile) {
    analyseFile(std::nullopt);
    EXPECT_EQ(window->calls, Strings{"stop spinner"});
    EXPECT_EQ(log.entries(), Strings{});
}

TEST_F(DocumentAnalysisTest, walksTheVersionsFromTheHighestDown) {
    analyse("2", "<sequence><multiclip id=\"1\"/></sequence>");
    EXPECT_EQ(window->calls,
              (Strings{"start spinner", "current: Current XML version: 2 (Final Cut Pro 5+)",
                       "offer: " + downgradeText("2 (Final Cut Pro 5+)"), "stop spinner"}));
    EXPECT_EQ(menu(), (Menu{{"5 (Final Cut Pro 7+)", "5"},
                            {"5 (Final Cut Pro 7+)", "5"},
                            {"4 (Final Cut Pro 6+)", "4"},
                            {"4 (Final Cut Pro 6+)", "4"},
                            {"3 (Final Cut Pro 5.1.2+)", "3"},
                            {"3 (Final Cut Pro 5.1.2+)", "3"},
                            {"2 (Final Cut Pro 5+)", "2"},
                            {"1 (Final Cut Pro 4+)", "1"},
                            {"1 (Final Cut Pro 4+)", "1"}}));
    EXPECT_EQ(log.entries(), (Strings{"Generating conversion data for file " + file + "...",
                                      "XMEML version: 2", "Final Cut Pro version: 5",
                                      "Found tag: <multiclip", "Minimum downgrade version: 2"}));
    EXPECT_TRUE(alerts->shown.empty());
}

TEST_F(DocumentAnalysisTest, listsTheCurrentVersionOnceAndEveryOtherTwice) {
    analyse("4", "");
    EXPECT_EQ(menuKeys(), (Strings{"5", "5", "4", "3", "3", "2", "2", "1", "1"}));
    EXPECT_EQ(menu().at(2), (MenuItem{"4 (Final Cut Pro 6+)", "4"}));
    EXPECT_EQ(menu().at(7), (MenuItem{"1 (Final Cut Pro 4+)", "1"}));
}

TEST_F(DocumentAnalysisTest, takesTheHighestVersionWhoseElementsOccurAsTheMinimum) {
    analyse("5", "<multiclip>1</multiclip><metadata>1</metadata>");
    EXPECT_EQ(document->minDowngradeVersion(), 3);
    EXPECT_EQ(downgradeVersion(), downgradeText("3 (Final Cut Pro 5.1.2+)"));
}

TEST_F(DocumentAnalysisTest, goesOnTestingAfterTheMinimumIsFound) {
    analyse("5", "<multiclip>1</multiclip><metadata>1</metadata>");
    const Strings entries = log.entries();
    EXPECT_EQ(
        Strings(entries.begin() + 3, entries.end()),
        (Strings{"Found tag: <metadata", "Minimum downgrade version: 3", "Found tag: <multiclip"}));
    EXPECT_EQ(window->callsOf("offer: ").size(), 1U);
}

TEST_F(DocumentAnalysisTest, findsMinimumOneForAFileWithoutListedElements) {
    analyse("5", "<sequence><name>multiclip</name></sequence>");
    EXPECT_EQ(document->minDowngradeVersion(), 1);
    EXPECT_EQ(downgradeVersion(), downgradeText("1 (Final Cut Pro 4+)"));
    EXPECT_TRUE(log.contains("Minimum downgrade version: 1"));
}

TEST_F(DocumentAnalysisTest, fallsBackToOneWhenTheCatalogueHasNoVersionOne) {
    catalogue.write({{"2", {"5", {{"<multiclip"}}}}});
    analyse("2", "");
    EXPECT_EQ(document->minDowngradeVersion(), 1);
    EXPECT_EQ(downgradeVersion(), downgradeText("1 (Final Cut Pro 4+)"));
    EXPECT_EQ(menuKeys(), Strings{"2"});
    EXPECT_FALSE(log.contains("Minimum downgrade version: 1"));
}

TEST_F(DocumentAnalysisTest, fallsBackToOneForAnEmptyCatalogue) {
    catalogue.write(std::map<std::string, test::CatalogueBundle::Version>{});
    analyse("2", "");
    EXPECT_EQ(window->calls,
              (Strings{"start spinner",
                       "current: Current XML version: 2 (Final Cut Pro Unknown Version+)",
                       "offer: " + downgradeText("1 (Final Cut Pro 4+)"), "stop spinner"}));
    EXPECT_TRUE(menu().empty());
}

TEST_F(DocumentAnalysisTest, namesAnUncataloguedVersionUnknown) {
    analyse("7", "");
    EXPECT_EQ(curVersion(), "Current XML version: 7 (Final Cut Pro Unknown Version+)");
    EXPECT_TRUE(log.contains("XMEML version: 7"));
    EXPECT_TRUE(log.contains("Final Cut Pro version: Unknown Version"));
    EXPECT_EQ(menu().size(), 10U);
}

TEST_F(DocumentAnalysisTest, namesACurrentVersionWithoutLabelUnknownAndShowsNullElsewhere) {
    catalogue.write({{"1", {std::nullopt, {}}}});
    analyse("1", "");
    EXPECT_EQ(curVersion(), "Current XML version: 1 (Final Cut Pro Unknown Version+)");
    EXPECT_EQ(downgradeVersion(), downgradeText("1 (Final Cut Pro (null)+)"));
    EXPECT_EQ(menu(), (Menu{{"1 (Final Cut Pro (null)+)", "1"}}));
}

TEST_F(DocumentAnalysisTest, takesAnEmptyVersionForOneThatIsNotCatalogued) {
    analyse("", "");
    EXPECT_EQ(curVersion(), "Current XML version:  (Final Cut Pro Unknown Version+)");
    EXPECT_EQ(menu().size(), 10U);
}

TEST_F(DocumentAnalysisTest, sortsVersionsAsTexts) {
    catalogue.write({{"1", {"4", {}}}, {"2", {"5", {{"<b"}}}}, {"10", {"9", {{"<a"}}}}});
    analyse("1", "<a>1</a><b>1</b>");
    EXPECT_EQ(menuKeys(), (Strings{"2", "2", "10", "10", "1"}));
    EXPECT_EQ(document->minDowngradeVersion(), 2);
}

TEST_F(DocumentAnalysisTest, searchesTheDocumentAsItIsWritten) {
    // In the file the tag ends after a line break; written again it ends at once.
    analyse("5", "<itemhistory\n>1</itemhistory>");
    EXPECT_EQ(document->minDowngradeVersion(), 4);
}

TEST_F(DocumentAnalysisTest, loadsStrictly) {
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

TEST_F(DocumentAnalysisTest, reportsThatAFileCannotBeLoaded) {
    analyseFile(sandbox.path("none.xml"));
    expectNothingShown();
    ASSERT_EQ(alerts->shown.size(), 1U);
    EXPECT_EQ(alerts->shown[0].contents.messageText, "Error loading XML file");
}

TEST_F(DocumentAnalysisTest, reportsThatTheCatalogueIsMissing) {
    catalogue.remove();
    analyse("5", "");
    expectNothingShown();
    EXPECT_EQ(alerts->texts(),
              Strings{"Unable to load XML version information | Please reinstall Brindle Tools."});
    EXPECT_EQ(log.entries().at(1),
              "Unable to load XML version information. Please reinstall Brindle Tools.");
}

TEST_F(DocumentAnalysisTest, refusesARootWithoutVersion) {
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

TEST_F(DocumentAnalysisTest, refusesAnotherRoot) {
    analyse("<fcpxml version=\"1.8\"/>");
    expectNothingShown();
    EXPECT_EQ(alerts->shown.size(), 1U);
}

TEST_F(DocumentAnalysisTest, showsAlertsWithoutParentEvenWhenThereIsAWindow) {
    analyse("<fcpxml/>");
    EXPECT_EQ(alerts->shown.at(0).parentWindow, nullptr);
}

TEST_F(DocumentAnalysisTest, leavesWhatAnEarlierRunShowedWhenItFails) {
    analyse("2", "<multiclip>1</multiclip>");
    const Menu before = menu();
    const std::string label = curVersion();
    analyse("<xmeml/>");
    EXPECT_EQ(menu(), before);
    EXPECT_EQ(curVersion(), label);
    EXPECT_EQ(document->minDowngradeVersion(), 2);
}

TEST_F(DocumentAnalysisTest, readsTheCatalogueAgainForEachVersion) {
    window->onCall = [this](const std::string& call) {
        if (call.starts_with("current: ")) {
            catalogue.remove();
        }
    };
    analyse("5", "<multiclip>1</multiclip>");
    // One failure for each version but "1", which needs no catalogue.
    EXPECT_EQ(alerts->shown.size(), 4U);
    EXPECT_EQ(document->minDowngradeVersion(), 1);
    EXPECT_EQ(menuKeys().size(), 9U);
}

TEST_F(DocumentAnalysisTest, logsAnExceptionAndStopsTheSpinner) {
    window->onCall = [](const std::string& call) {
        if (call.starts_with("offer: ")) {
            throw platform::Exception("Test", "raised");
        }
    };
    analyse("2", "");
    EXPECT_EQ(window->calls.back(), "stop spinner");
    EXPECT_TRUE(
        log.contains("Exception in -[Document populateConversionDataForFile:]. Test - raised."));
}

class RequiresVersionTest : public test::DocumentTest {};

TEST_F(RequiresVersionTest, requiresVersionOneWithoutLookingAtTheCatalogue) {
    catalogue.remove();
    EXPECT_TRUE(document->xmlStringRequiresVersion("", "1"));
    EXPECT_EQ(log.entries(), Strings{});
}

TEST_F(RequiresVersionTest, findsATagWithAndWithoutAttributes) {
    EXPECT_TRUE(document->xmlStringRequiresVersion("<uuid>", "3"));
    EXPECT_TRUE(document->xmlStringRequiresVersion("<uuid id=\"1\">", "3"));
    EXPECT_FALSE(document->xmlStringRequiresVersion("<uuids>", "3"));
    EXPECT_FALSE(document->xmlStringRequiresVersion("<uuid/>", "3"));
    EXPECT_FALSE(document->xmlStringRequiresVersion("<UUID>", "3"));
}

TEST_F(RequiresVersionTest, logsTheFirstElementOfTheListAndNotOfTheText) {
    EXPECT_TRUE(document->xmlStringRequiresVersion("<uuid><metadata>", "3"));
    EXPECT_EQ(log.entries(), Strings{"Found tag: <metadata"});
}

TEST_F(RequiresVersionTest, doesNotRequireAVersionWithoutElements) {
    catalogue.write({{"2", {"5", {}}}, {"3", {"6", Strings{}}}});
    EXPECT_FALSE(document->xmlStringRequiresVersion("<name> <a>", "2"));
    EXPECT_FALSE(document->xmlStringRequiresVersion("<name> <a>", "3"));
    EXPECT_TRUE(alerts->shown.empty());
    EXPECT_EQ(log.entries(), Strings{});
}

TEST_F(RequiresVersionTest, reportsAMissingEntryLikeAMissingCatalogue) {
    EXPECT_FALSE(document->xmlStringRequiresVersion("<name>", "7"));
    EXPECT_EQ(alerts->texts(),
              Strings{"Unable to load XML version information | Please reinstall Brindle Tools."});
    EXPECT_EQ(log.entries(),
              Strings{"Unable to load XML version information. Please reinstall Brindle Tools."});
}

TEST_F(RequiresVersionTest, reportsAMissingCatalogue) {
    catalogue.remove();
    EXPECT_FALSE(document->xmlStringRequiresVersion("<uuid>", "3"));
    EXPECT_EQ(alerts->shown.size(), 1U);
}

TEST_F(RequiresVersionTest, answersNoAfterAnException) {
    catalogue.remove();
    alerts->onShow = [](const AlertContents&) { throw platform::Exception("Test", "raised"); };
    EXPECT_FALSE(document->xmlStringRequiresVersion("<uuid>", "3"));
    EXPECT_TRUE(
        log.contains("Exception in -[Document xmlString:requiresVersion:]. Test - raised."));
}

}  // namespace
}  // namespace vornic
