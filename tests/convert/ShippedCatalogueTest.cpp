// What the catalogue that ships with the program says. It is found as the program finds it, in the
// bundle of the build tree.

#include <algorithm>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "convert/catalogue/VersionCatalogue.h"
#include "platform/settings/Bundle.h"

namespace vornic {
namespace {

using Strings = std::vector<std::string>;

Strings openings(const std::string& names) {
    std::istringstream stream(names);
    Strings elements;
    for (std::string name; stream >> name;) {
        elements.push_back("<" + name);
    }
    return elements;
}

VersionCatalogue shipped() {
    std::optional<VersionCatalogue> catalogue = VersionCatalogue::load();
    EXPECT_TRUE(catalogue);
    return catalogue.value_or(VersionCatalogue({}));
}

TEST(ShippedCatalogue, knowsFiveVersionsAndTheirReleases) {
    const VersionCatalogue catalogue = shipped();
    EXPECT_EQ(catalogue.sortedKeys(), (Strings{"1", "2", "3", "4", "5"}));
    EXPECT_EQ(catalogue.fcpVersion("1"), "4");
    EXPECT_EQ(catalogue.fcpVersion("2"), "5");
    EXPECT_EQ(catalogue.fcpVersion("3"), "5.1.2");
    EXPECT_EQ(catalogue.fcpVersion("4"), "6");
    EXPECT_EQ(catalogue.fcpVersion("5"), "7");
}

TEST(ShippedCatalogue, listsTheElementsThatEachVersionIntroduced) {
    const VersionCatalogue catalogue = shipped();
    EXPECT_EQ(catalogue.elements("1"), Strings{});
    EXPECT_EQ(catalogue.elements("2"),
              openings("filmdata filmslate keycode inknumber multiclip angle audiochannel "
                       "collapsed synctype activevideoangle activeaudioangle mediadelay "
                       "defaultangle channelcount layout takenote shotnote scenenote take slate "
                       "cameraroll labroll prefix feetframes perfoffset reversed dailyroll "
                       "filmstandard telecinespeed channellabel sourcechannel UUID"));
    EXPECT_EQ(catalogue.elements("3"), openings("metadata effectclass uuid updatebehavior storage "
                                                "key size type gamma"));
    EXPECT_EQ(catalogue.elements("4"), openings("itemhistory createfcpprojectatxmlfilepath "
                                                "deletethisxmlfileatimport mixedratesoffset"));
    EXPECT_EQ(catalogue.elements("5"),
              openings("subclipmasterid parameterspecifier anchoroffset color"));
}

TEST(ShippedCatalogue, listsNoElementTwice) {
    const VersionCatalogue catalogue = shipped();
    std::multiset<std::string> all;
    for (const std::string& version : catalogue.sortedKeys()) {
        const Strings elements = catalogue.elements(version);
        all.insert(elements.begin(), elements.end());
    }
    EXPECT_EQ(all.size(), 49U);
    EXPECT_EQ(std::set<std::string>(all.begin(), all.end()).size(), 49U);
}

TEST(ShippedBundle, describesTheApplication) {
    const platform::Bundle bundle = platform::Bundle::mainBundle();
    ASSERT_TRUE(bundle.exists()) << bundle.path();
    EXPECT_EQ(bundle.infoString("CFBundleIdentifier"), "com.quillmark.Vornic");
    EXPECT_EQ(bundle.infoString("CFBundleName"), "Vornic");
    EXPECT_EQ(bundle.infoString("CFBundleExecutable"), "Vornic");
    EXPECT_EQ(bundle.infoString("QMShortName"), "brindle_tools");
    EXPECT_EQ(bundle.infoString("CFBundleShortVersionString"), VORNIC_TEST_VERSION);
    EXPECT_EQ(bundle.infoString("CFBundleVersion"), VORNIC_TEST_BUILD_NUMBER);
}

}  // namespace
}  // namespace vornic
