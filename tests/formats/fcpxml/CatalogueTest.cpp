#include <algorithm>
#include <vector>

#include <gtest/gtest.h>

#include "formats/fcpxml/Catalogue.h"

namespace vornic::fcpxml {

namespace {

const CatalogueElement& elementNamed(std::string_view name) {
    return Catalogue::shared().element(Catalogue::shared().idOf(name));
}

}  // namespace

TEST(FCPXMLCatalogue, numbersEveryNameAndNoOther) {
    const Catalogue& catalogue = Catalogue::shared();
    for (std::size_t id = 0; id < catalogue.size(); ++id) {
        EXPECT_EQ(catalogue.idOf(catalogue.element(static_cast<ElementId>(id)).name), id);
    }
    EXPECT_EQ(catalogue.idOf("asset-clips"), kNoElement);
    EXPECT_EQ(catalogue.idOf("#PCDATA"), kNoElement);
    EXPECT_EQ(catalogue.idOf("PCDATA"), kNoElement);
}

TEST(FCPXMLCatalogue, reportsInWhichVersionsAnElementIs) {
    const CatalogueElement& mediaRep = elementNamed("media-rep");
    EXPECT_FALSE(mediaRep.isIn(Version(8)));
    EXPECT_TRUE(mediaRep.isIn(Version(9)));
    EXPECT_EQ(mediaRep.span()->first, Version(9));
    EXPECT_EQ(mediaRep.span()->last, Version(14));
}

TEST(FCPXMLCatalogue, reportsInWhichVersionsAnElementHasAnAttribute) {
    const auto span = elementNamed("asset").spanOfAttribute("src");
    ASSERT_TRUE(span);
    EXPECT_EQ(span->last, Version(8));
    EXPECT_FALSE(elementNamed("asset").spanOfAttribute("source"));
}

TEST(FCPXMLCatalogue, readsTheTypeOfAnEnumeratedAttributeWhole) {
    const CatalogueElement& crop = elementNamed("adjust-crop");
    for (const CatalogueAttribute& attribute : crop.attributes) {
        if (attribute.name == "mode") {
            EXPECT_EQ(attribute.type, "(trim|crop|pan)");
            EXPECT_EQ(attribute.defaultText, "#REQUIRED");
        }
    }
}

// Runs of one thing that overlap would make two declarations hold at once.
TEST(FCPXMLCatalogue, hasOneDeclarationOfAThingInAVersion) {
    const Catalogue& catalogue = Catalogue::shared();
    for (std::size_t id = 0; id < catalogue.size(); ++id) {
        const CatalogueElement& element = catalogue.element(static_cast<ElementId>(id));
        for (int minor = 0; minor <= Version::kNewestMinor; ++minor) {
            int models = 0;
            for (const CatalogueModel& model : element.models) {
                models += model.versions.holds(Version(minor)) ? 1 : 0;
            }
            EXPECT_LE(models, 1) << element.name << " 1." << minor;
            std::vector<std::string_view> names;
            for (const CatalogueAttribute& attribute : element.attributes) {
                if (attribute.versions.holds(Version(minor))) {
                    EXPECT_EQ(std::count(names.begin(), names.end(), attribute.name), 0)
                        << element.name << "@" << attribute.name << " 1." << minor;
                    EXPECT_EQ(models, 1) << element.name << "@" << attribute.name;
                    names.push_back(attribute.name);
                }
            }
        }
    }
}

}  // namespace vornic::fcpxml
