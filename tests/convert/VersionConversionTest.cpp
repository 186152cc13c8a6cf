#include <string>
#include <variant>

#include "convert/VersionConversion.h"
#include "tests/support/texts/EngineTest.h"

/// Plans and removals as values; what a document asks and tells of them is tested with the
/// document.
namespace vornic {
namespace {

std::string xmeml(const std::string& version, const std::string& content) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE xmeml>\n<xmeml version=\"" +
           version + "\">\n" + content + "</xmeml>\n";
}

class VersionConversionTest : public test::EngineTest {
  protected:
    VersionConversionTest() { writeUsualCatalogue(); }

    static ConversionPlan plan(const std::string& from, const std::string& to,
                               std::int64_t lowest) {
        const auto document = test::parsed(xmeml(from, ""));
        return std::get<ConversionPlan>(planConversion(document.get(), to, lowest));
    }
    static ConversionRefusal refusalOf(const XMLDocument* document) {
        return std::get<ConversionRefusal>(planConversion(document, "5", 0));
    }
};

TEST_F(VersionConversionTest, plansADowngradeBelowTheLowestVersionAsALoss) {
    EXPECT_TRUE(plan("5", "2", 4).losesInformation);
    EXPECT_FALSE(plan("5", "4", 4).losesInformation);
    EXPECT_FALSE(plan("2", "3", 4).losesInformation) << "an upgrade";
    EXPECT_FALSE(plan("5", "2", 0).losesInformation) << "before an analysis";
    EXPECT_FALSE(plan("5", "-1", 4).losesInformation) << "compared without a sign";
    EXPECT_TRUE(plan("5", "4", -1).losesInformation) << "compared without a sign";
    EXPECT_EQ(plan(" 5.1", "4abc", 5).current, 5);
    EXPECT_EQ(plan(" 5.1", "4abc", 5).target, 4);
    EXPECT_EQ(plan(" 5.1", "4abc", 5).version, "4abc");
}

TEST_F(VersionConversionTest, refusesWhatDeclaresNoVersion) {
    EXPECT_EQ(refusalOf(nullptr), ConversionRefusal::noVersion);
    EXPECT_EQ(refusalOf(test::parsed("<xmeml/>").get()), ConversionRefusal::noVersion);
    EXPECT_EQ(refusalOf(test::parsed("<a version=\"1\"/>").get()), ConversionRefusal::noVersion);
}

TEST_F(VersionConversionTest, removesWhatHigherVersionsIntroduced) {
    const auto document =
        test::parsed(xmeml("5", "<uuid>1</uuid><color/><multiclip/><name>z</name>"));
    EXPECT_EQ(stripElementsAbove(*document, "2").outcome, StripResult::Outcome::done);
    EXPECT_EQ(document->xmlString(), xmeml("5", "    <multiclip/>\n    <name>z</name>\n"));
    EXPECT_EQ(stripElementsAbove(*test::parsed("<a/>"), "2").outcome,
              StripResult::Outcome::noVersion);
    catalogue.remove();
    EXPECT_EQ(stripElementsAbove(*document, "2").outcome, StripResult::Outcome::noCatalogue);
}

TEST_F(VersionConversionTest, reportsWhichNamesAreNoQuery) {
    catalogue.write({{"1", {"4", {}}}, {"2", {"5", {{"<", "<uuid"}}}}});
    const auto document = test::parsed(xmeml("2", "<uuid>1</uuid><name>2</name>"));
    EXPECT_EQ(stripElementsAbove(*document, "1").queryErrors.size(), 1U);
    EXPECT_EQ(document->xmlString(), xmeml("2", "    <name>2</name>\n"));
}

}  // namespace
}  // namespace vornic
