#include <cstddef>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "repair/pipeline/MarkupMends.h"
#include "repair/pipeline/SourcePlaces.h"

namespace vornic {
namespace {

const std::string kSource = "<a b=c>\n d & é \x01 < e</a>";

class SourcePlacesTest : public ::testing::Test {
  protected:
    std::vector<XMLEdit> edits =
        editsBeforeFilter(kSource, readXML(kSource, XMLMode::tolerant).edits);
    std::string text = applyXMLEdits(kSource, edits);
    SourcePlaces places{text, 3, kSource, edits};
};

TEST_F(SourcePlacesTest, areThoseOfTheSourceAndOfItsFile) {
    ASSERT_EQ(text, "<a b=\"c\">\n d &amp; é \x01 &lt; e</a>");
    for (const char* what : {"<a", "\n", " d", "é", "\x01", "e<"}) {
        const Place place = places.of({text.find(what), 1});
        EXPECT_EQ(place.offset, kSource.find(what) + 3) << what;
    }
}

TEST_F(SourcePlacesTest, reportLineAndColumnOfTheSource) {
    const Place place = places.of({text.find('\x01'), 1});
    EXPECT_EQ(place.line, 2U);
    EXPECT_EQ(place.column, 8U);
}

TEST_F(SourcePlacesTest, countTheUnitsOfTheSource) {
    // Two bytes of one unit lie before it, and six characters that mends have added.
    const auto offset = text.find('\x01');
    EXPECT_EQ(places.sourceIndex(static_cast<std::int64_t>(offset) - 1, offset),
              static_cast<std::int64_t>(kSource.find('\x01')) - 1);
}

TEST_F(SourcePlacesTest, ofWhatAnEditHasPutThereAreThoseOfTheEdit) {
    EXPECT_EQ(places.sourceOffset(text.find("mp; é")), kSource.find('&'));
}

TEST(EditsBeforeFilter, leaveWhatTheFilterRemoves) {
    const std::string text = "<a b=c>\x01</a>";
    const std::vector<XMLEdit> edits = readXML(text, XMLMode::tolerant).edits;
    ASSERT_EQ(edits.size(), 3U);
    EXPECT_EQ(applyXMLEdits(text, editsBeforeFilter(text, edits)), "<a b=\"c\">\x01</a>");
}

}  // namespace
}  // namespace vornic
