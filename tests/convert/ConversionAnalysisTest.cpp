#include <string>
#include <vector>

#include "convert/ConversionAnalysis.h"
#include "tests/support/texts/EngineTest.h"

/// What an analysis tells as values; what a document shows of it is tested with the document.
namespace vornic {
namespace {

using Strings = std::vector<std::string>;

class ConversionAnalysisTest : public test::EngineTest {
  protected:
    ConversionAnalysisTest() { writeUsualCatalogue(); }

    [[nodiscard]] ConvertibleFile readFile(const std::string& version,
                                           const std::string& content) const {
        auto read = readForConversion(
            sandbox.write("Cut.xml", "<xmeml version=\"" + version + "\">" + content + "</xmeml>"));
        return std::get<ConvertibleFile>(std::move(read));
    }
    [[nodiscard]] AnalysisFailure failureOf(const std::string& path) const {
        return std::get<AnalysisFailure>(readForConversion(path));
    }
    [[nodiscard]] static ConversionOffer offerOf(const ConvertibleFile& file) {
        return makeConversionOffer(file, StopToken()).value();
    }
};

TEST_F(ConversionAnalysisTest, reportsTheVersionOfTheFileAndItsRelease) {
    const ConvertibleFile file = readFile("3", "");
    EXPECT_EQ(file.version, "3");
    EXPECT_EQ(file.release, "5.1.2");
    EXPECT_EQ(readFile("7", "").release, "Unknown Version");
    EXPECT_EQ(log.entries(), Strings{}) << "telling is the document's";
}

TEST_F(ConversionAnalysisTest, reportsWhyAFileCannotBeConverted) {
    using Kind = AnalysisFailure::Kind;
    const AnalysisFailure failure = failureOf(sandbox.path("None.xml"));
    EXPECT_EQ(failure.kind, Kind::notLoaded);
    EXPECT_NE(failure.description, "");
    EXPECT_EQ(failureOf(sandbox.write("Cut.xml", "<xmeml/>")).kind, Kind::noVersion);
    EXPECT_EQ(failureOf(sandbox.write("Cut.xml", "<a version=\"5\"/>")).kind, Kind::noVersion);
    catalogue.remove();
    EXPECT_EQ(failureOf(sandbox.write("Cut.xml", "<xmeml/>")).kind, Kind::noCatalogue);
    EXPECT_TRUE(alerts->shown.empty()) << "asking and telling is the document's";
}

TEST_F(ConversionAnalysisTest, offersTheVersionsFromTheHighestDown) {
    const ConversionOffer offer = offerOf(readFile("4", "<multiclip>1</multiclip>"));
    ASSERT_EQ(offer.versions.size(), 5U);
    EXPECT_EQ(offer.versions[0].key, "5");
    EXPECT_EQ(offer.versions[0].title, "5 (Final Cut Pro 7+)");
    EXPECT_EQ(offer.versions[0].menuItems, 2);
    EXPECT_EQ(offer.versions[1].menuItems, 1) << "the current version";
    EXPECT_EQ(offer.versions[3].test.foundElement, "<multiclip");
    EXPECT_EQ(offer.versions[4].test.foundElement, std::nullopt);
    EXPECT_TRUE(offer.versions[4].test.isRequired);
    EXPECT_EQ(offer.lowest, 3U);
    EXPECT_EQ(offer.lowestVersion(), 2);
    EXPECT_EQ(offer.lowestText(),
              "Can be downgraded without changes to version: 2 (Final Cut Pro 5+)");
}

TEST_F(ConversionAnalysisTest, offersVersionOneWhereNoneIsNeeded) {
    catalogue.write({{"2", {"5", {{"<multiclip"}}}}});
    const ConversionOffer offer = offerOf(readFile("2", ""));
    EXPECT_EQ(offer.lowest, std::nullopt);
    EXPECT_EQ(offer.lowestVersion(), 1);
    EXPECT_EQ(offer.lowestText(),
              "Can be downgraded without changes to version: 1 (Final Cut Pro 4+)");
}

TEST_F(ConversionAnalysisTest, endsBetweenVersionsWhenItIsStopped) {
    const ConvertibleFile file = readFile("4", "");
    int asked = 0;
    EXPECT_FALSE(makeConversionOffer(file, StopToken([&asked] { return ++asked == 3; })));
    EXPECT_EQ(asked, 3);
}

class VersionTestTest : public test::EngineTest {
  protected:
    VersionTestTest() { writeUsualCatalogue(); }
};

TEST_F(VersionTestTest, findsAnElementOfTheVersion) {
    const VersionTest test = testVersion("<uuid><metadata>", "3");
    EXPECT_TRUE(test.isRequired);
    EXPECT_EQ(test.foundElement, "<metadata");
    EXPECT_FALSE(testVersion("<uuids>", "3").isRequired);
    EXPECT_EQ(log.entries(), Strings{});
}

TEST_F(VersionTestTest, saysThatTheCatalogueDoesNotKnow) {
    EXPECT_TRUE(testVersion("<uuid>", "7").lacksCatalogue);
    catalogue.remove();
    EXPECT_TRUE(testVersion("<uuid>", "3").lacksCatalogue);
    EXPECT_FALSE(testVersion("<uuid>", "3").isRequired);
    EXPECT_FALSE(testVersion("", "1").lacksCatalogue);
    EXPECT_TRUE(alerts->shown.empty());
}

}  // namespace
}  // namespace vornic
