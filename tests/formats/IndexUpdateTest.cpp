#include <algorithm>
#include <array>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "formats/ElementIndexBuilder.h"
#include "formats/IndexUpdate.h"
#include "formats/fcpxml/IndexedNames.h"
#include "formats/xmeml/IndexedNames.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/texts/SampleFiles.h"
#include "xml/text/TextDecoding.h"

namespace vornic {
namespace {

std::optional<ElementIndex> readIndex(std::string_view text) {
    ElementIndexBuilder builder(text);
    const bool isRead = !readXML(text, XMLMode::strict, &builder).fault;
    ElementIndex index = std::move(builder).finish();
    return isRead ? std::optional(std::move(index)) : std::nullopt;
}

std::string changed(std::string_view text, const std::vector<Edit>& edits) {
    std::string result;
    std::size_t from = 0;
    for (const Edit& edit : edits) {
        result.append(text, from, edit.offset - from);
        result += edit.text;
        from = edit.offset + edit.length;
    }
    return result.append(text, from);
}

// What differs between two indexes of one text; "" for nothing.
std::string difference(const ElementIndex& one, const ElementIndex& other) {
    if (one.size() != other.size() || one.unclosed() != other.unclosed() ||
        one.nameCount() != other.nameCount() || one.text() != other.text()) {
        return "sizes";
    }
    for (ElementNumber element = 0; element < one.size(); ++element) {
        if (one.nameNumberOf(element) != other.nameNumberOf(element) ||
            one.nameOf(element) != other.nameOf(element) ||
            one.parentOf(element) != other.parentOf(element) ||
            one.endOf(element) != other.endOf(element) ||
            one.spanOf(element) != other.spanOf(element) ||
            one.startTagOf(element) != other.startTagOf(element) ||
            one.contentOf(element) != other.contentOf(element)) {
            return "element " + std::to_string(element);
        }
    }
    for (const IndexedNames& names : {xmeml::kIndexedNames, fcpxml::kIndexedNames}) {
        for (const std::string_view name : names.attributes) {
            if (one.elementsWithAttribute(name) != other.elementsWithAttribute(name)) {
                return "attribute " + std::string(name);
            }
        }
        for (const std::string_view name : names.elements) {
            if (one.elementsNamed(name) != other.elementsNamed(name)) {
                return "name " + std::string(name);
            }
        }
    }
    if (one.idCount() != other.idCount()) {
        return "ids";
    }
    for (std::size_t id = 0; id < one.idCount(); ++id) {
        if (one.idOwner(id) != other.idOwner(id)) {
            return "id " + std::to_string(id);
        }
    }
    return "";
}

// The index that the edits lead to, which is that of a reading; nothing where that is needed.
std::optional<ElementIndex> updated(const std::string& before, const std::vector<Edit>& edits,
                                    const std::string& after) {
    std::optional<ElementIndex> index = indexAfterEdits(*readIndex(before), after, edits);
    if (index) {
        const std::optional<ElementIndex> read = readIndex(after);
        EXPECT_TRUE(read.has_value()) << after.substr(0, 1000);
        EXPECT_EQ(read ? difference(*index, *read) : "", "") << after.substr(0, 1000);
    }
    return index;
}

bool isUpdated(const std::string& before, const std::vector<Edit>& edits) {
    const std::string after = changed(before, edits);
    return updated(before, edits, after).has_value();
}

constexpr std::string_view kText =
    "<?xml version=\"1.0\"?>\n<xmeml version=\"5\">\n<clip id=\"a\"><name>One</name>"
    "<file id=\"f\"><pathurl>p</pathurl></file></clip>\n<clip id=\"b\"><name>Two</name>"
    "<file id=\"f\"/></clip>\n</xmeml>\n";

std::size_t placeOf(std::string_view piece) {
    return kText.find(piece);
}

TEST(IndexUpdate, movesWhatStandsBehindAnEdit) {
    const std::string text(kText);
    EXPECT_TRUE(isUpdated(text, {}));
    EXPECT_TRUE(isUpdated(text, {{placeOf("One"), 0, "and &amp; "}}));
    EXPECT_TRUE(isUpdated(text, {{placeOf("One"), 3, ""}}));
    EXPECT_TRUE(
        isUpdated(text, {{placeOf("ne</name>"), 1, "n"}, {placeOf("Two"), 1, "<!-- -->w"}}));
    EXPECT_TRUE(isUpdated(text, {{placeOf("<pathurl>"), 0, "text"}, {placeOf("p</"), 1, ""}}));
}

TEST(IndexUpdate, leavesItToAReadingWhatElementsAndTagsThereAre) {
    const std::string text(kText);
    EXPECT_FALSE(isUpdated(text, {{placeOf("One"), 0, "<b/>"}}));
    EXPECT_FALSE(isUpdated(text, {{placeOf("One"), 0, "<b>"}}));
    EXPECT_FALSE(isUpdated(text, {{placeOf("One"), 0, "&"}}));
    EXPECT_FALSE(isUpdated(text, {{placeOf("One"), 0, "\x01"}}));
    EXPECT_FALSE(isUpdated(text, {{placeOf("One"), 0, "\xFF"}}));
    EXPECT_FALSE(isUpdated(text, {{placeOf("a\"><name>"), 1, "c"}}));
    EXPECT_FALSE(isUpdated(text, {{placeOf("<name>One"), 15, ""}}));
    EXPECT_FALSE(isUpdated(text, {{placeOf("</name><file id=\"f\"/>"), 7, ""}}));
    // Beside the elements of the root, and outside of it.
    EXPECT_FALSE(isUpdated(text, {{placeOf("<clip id=\"b\""), 0, " "}}));
    EXPECT_FALSE(isUpdated(text, {{placeOf("\n<xmeml"), 0, " "}}));
    EXPECT_FALSE(isUpdated(text, {{text.size(), 0, " "}}));
    // What was not read to its end.
    ElementIndexBuilder builder("<a><b>x");
    EXPECT_TRUE(readXML("<a><b>x", XMLMode::tolerant, &builder).fault.has_value());
    EXPECT_FALSE(
        indexAfterEdits(std::move(builder).finish(), "<a><b>xy", {{7, 0, "y"}}).has_value());
}

// Edits of all kinds at places of all kinds: what comes of them is what a reading gives.
TEST(IndexUpdate, ofRealProjectsGivesWhatAReadingGives) {
    const std::optional<std::string> samples = test::samplesFolder();
    if (!samples) {
        GTEST_SKIP() << "no samples";
    }
    constexpr std::array<std::string_view, 8> kPieces = {"x",          "",     "&amp;", "&",
                                                         "<!-- c -->", "<e/>", "\n ",   "</name>"};
    std::mt19937 random(20);
    const auto below = [&random](std::size_t limit) { return random() % limit; };
    std::size_t updates = 0;
    std::size_t readings = 0;
    std::vector<std::string> files = test::filesBelow(*samples + "/xmeml");
    const std::vector<std::string> others = test::filesBelow(*samples + "/fcpxml");
    files.insert(files.end(), others.begin(), others.end());
    for (const std::string& file : files) {
        ErrorSlot error;
        const auto text = decodeXMLBytes(test::readBytes(file), error);
        if (!text || text->size() > 2'000'000 || !readIndex(*text)) {
            continue;
        }
        for (int round = 0; round < 40; ++round) {
            std::vector<Edit> edits;
            std::size_t at = 0;
            const std::size_t step = text->size() / (1 + below(6)) + 2;
            while ((at += 1 + below(step)) < text->size()) {
                // Half of them in texts and values.
                at = below(2) == 0 ? std::min(text->find("</", at), text->size()) : at;
                const std::size_t length = std::min(below(3), text->size() - at);
                edits.push_back({at, round % 4 == 0 ? 0 : length,
                                 std::string(kPieces[below(round < 20 ? 2 : kPieces.size())])});
                at += length;
            }
            (isUpdated(*text, edits) ? updates : readings) += 1;
        }
    }
    EXPECT_GT(updates, 100U);
    EXPECT_GT(readings, 100U);
}

}  // namespace
}  // namespace vornic
