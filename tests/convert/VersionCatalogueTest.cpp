#include <optional>
#include <string>
#include <vector>

#include "convert/catalogue/VersionCatalogue.h"
#include "tests/support/texts/EngineTest.h"

namespace vornic {
namespace {

using platform::PropertyList;
using Strings = std::vector<std::string>;

class VersionCatalogueTest : public test::EngineTest {};

PropertyList::Dictionary rootWithKeys(const Strings& keys) {
    PropertyList::Dictionary root;
    for (const std::string& key : keys) {
        root[key] = PropertyList();
    }
    return root;
}

TEST_F(VersionCatalogueTest, sortsVersionsAsTextsWithoutRegardToCase) {
    const VersionCatalogue versions(rootWithKeys({"2", "b", "10", "A", "1", "C"}));
    EXPECT_EQ(versions.sortedKeys(), (Strings{"1", "10", "2", "A", "b", "C"}));
}

TEST_F(VersionCatalogueTest, yieldsTheVersionsThatFollowInThatOrder) {
    const VersionCatalogue versions(rootWithKeys({"2", "10", "1", "3"}));
    EXPECT_EQ(versions.versionsAbove("10"), (Strings{"2", "3"}));
    EXPECT_EQ(versions.versionsAbove("3"), Strings{});
}

TEST_F(VersionCatalogueTest, looksAVersionUpLetterForLetter) {
    const VersionCatalogue versions(rootWithKeys({"1", "2b"}));
    EXPECT_EQ(versions.versionsAbove("2B"), std::nullopt);
    EXPECT_EQ(versions.versionsAbove(" 1"), std::nullopt);
    EXPECT_EQ(versions.versionsAbove(""), std::nullopt);
    EXPECT_FALSE(versions.hasEntry("2B"));
    EXPECT_TRUE(versions.hasEntry("2b"));
}

TEST_F(VersionCatalogueTest, yieldsLabelAndElementsOfAVersion) {
    writeUsualCatalogue();
    const std::optional<VersionCatalogue> versions = VersionCatalogue::load();
    ASSERT_TRUE(versions);
    EXPECT_EQ(versions->sortedKeys(), (Strings{"1", "2", "3", "4", "5"}));
    EXPECT_EQ(versions->fcpVersion("3"), "5.1.2");
    EXPECT_EQ(versions->elements("3"), (Strings{"<metadata", "<uuid"}));
    EXPECT_EQ(versions->elements("1"), Strings{});
}

TEST_F(VersionCatalogueTest, yieldsNothingForAnAbsentVersion) {
    const VersionCatalogue versions(rootWithKeys({"1"}));
    EXPECT_EQ(versions.fcpVersion("7"), std::nullopt);
    EXPECT_EQ(versions.elements("7"), Strings{});
    EXPECT_FALSE(versions.hasEntry("7"));
}

TEST_F(VersionCatalogueTest, takesEntriesOfAnotherTypeAsAbsent) {
    PropertyList::Dictionary root;
    root["1"] = PropertyList("four");
    root["2"] = PropertyList(PropertyList::Dictionary{{"FCP Version", PropertyList(5)},
                                                      {"elements", PropertyList("<angle")}});
    root["3"] = PropertyList(PropertyList::Dictionary{
        {"elements", PropertyList(PropertyList::Array{PropertyList(3), PropertyList("<uuid")})}});
    const VersionCatalogue versions(root);
    EXPECT_FALSE(versions.hasEntry("1"));
    EXPECT_EQ(versions.fcpVersion("1"), std::nullopt);
    EXPECT_EQ(versions.fcpVersion("2"), std::nullopt);
    EXPECT_EQ(versions.elements("2"), Strings{});
    EXPECT_EQ(versions.elements("3"), Strings{"<uuid"});
}

TEST_F(VersionCatalogueTest, isReadFromTheDiskAnew) {
    EXPECT_FALSE(VersionCatalogue::load());
    catalogue.write({{"1", {"4", {}}}});
    ASSERT_TRUE(VersionCatalogue::load());
    EXPECT_EQ(VersionCatalogue::load()->sortedKeys(), Strings{"1"});
    catalogue.write({{"1", {"4", {}}}, {"2", {"5", {}}}});
    EXPECT_EQ(VersionCatalogue::load()->sortedKeys(), (Strings{"1", "2"}));
    catalogue.remove();
    EXPECT_FALSE(VersionCatalogue::load());
}

TEST_F(VersionCatalogueTest, isNotLoadedFromAFileThatHoldsNoDictionary) {
    catalogue.writeBytes(sandbox, "");
    EXPECT_FALSE(VersionCatalogue::load());
    catalogue.writeBytes(sandbox, "<plist><dict><key>1</key>");
    EXPECT_FALSE(VersionCatalogue::load());
    catalogue.write(PropertyList(PropertyList::Array{PropertyList("1")}));
    EXPECT_FALSE(VersionCatalogue::load());
}

TEST_F(VersionCatalogueTest, isLoadedWithoutAnyVersion) {
    catalogue.write(std::map<std::string, test::CatalogueBundle::Version>{});
    ASSERT_TRUE(VersionCatalogue::load());
    EXPECT_EQ(VersionCatalogue::load()->sortedKeys(), Strings{});
}

}  // namespace
}  // namespace vornic
