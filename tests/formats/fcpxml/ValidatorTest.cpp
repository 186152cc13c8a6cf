#include <gtest/gtest.h>

#include "formats/fcpxml/Validator.h"

namespace vornic::fcpxml {

namespace {

struct Found {
    ValidityFaultKind kind;
    std::string where;
    std::string element;
    std::string parent;
    std::string attribute;
    std::string value;
    std::vector<std::string> expected;
};

std::vector<Found> faultsOf(const std::string& text, int minor = 10, bool standalone = false) {
    std::vector<Found> found;
    Validator validator(Definition::of(Version(minor)), standalone,
                        [&](const ValidityFault& fault) {
                            Found entry{fault.kind,
                                        std::string(fault.where.of(text)),
                                        std::string(fault.element),
                                        std::string(fault.parent),
                                        std::string(fault.attribute),
                                        std::string(fault.value),
                                        {}};
                            for (const ElementId id : fault.expected()) {
                                entry.expected.emplace_back(Catalogue::shared().element(id).name);
                            }
                            found.push_back(entry);
                        });
    const XMLReading reading = readXML(text, XMLMode::strict, &validator);
    EXPECT_FALSE(reading.fault) << reading.fault->localizedDescription();
    validator.finish();
    EXPECT_EQ(validator.isValid(), found.empty());
    return found;
}

// A document of version 1.10 around the resources.
std::string withResources(const std::string& resources) {
    return "<fcpxml version=\"1.10\"><resources>" + resources + "</resources></fcpxml>";
}

using Kind = ValidityFaultKind;

// The one fault of a document.
Found onlyFault(const std::string& text, int minor = 10, bool standalone = false) {
    const std::vector<Found> found = faultsOf(text, minor, standalone);
    EXPECT_EQ(found.size(), 1U);
    return found.size() == 1 ? found[0] : Found{};
}

}  // namespace

TEST(FCPXMLValidator, findsNothingInAValidDocument) {
    EXPECT_TRUE(
        faultsOf("<?xml version=\"1.0\"?>\n<!DOCTYPE fcpxml>\n" +
                 withResources("\n<format id=\"r1\" frameDuration=\"1/25s\"/>\n"
                               "<asset id=\"r2\" format=\"r1\"><media-rep src=\"file:///a\"/>"
                               "</asset>"))
            .empty());
}

TEST(FCPXMLValidator, reportsAnUnknownElementAndWhatMayStandThere) {
    const Found fault = onlyFault(withResources("<fromat id=\"r1\"><colour/></fromat>"));
    EXPECT_EQ(fault.kind, Kind::unknownElement);
    EXPECT_EQ(fault.where, "<fromat");
    EXPECT_EQ(fault.parent, "resources");
    EXPECT_NE(std::find(fault.expected.begin(), fault.expected.end(), "format"),
              fault.expected.end());
}

TEST(FCPXMLValidator, distinguishesAnElementOfAnotherVersionFromAnUnknownOne) {
    const std::string text =
        "<fcpxml version=\"1.8\"><resources><asset id=\"r1\" src=\"file:///a\">"
        "<media-rep src=\"file:///a\"/></asset></resources></fcpxml>";
    const Found fault = onlyFault(text, 8);
    EXPECT_EQ(fault.kind, Kind::elementOfOtherVersion);
    EXPECT_EQ(fault.element, "media-rep");
    EXPECT_EQ(fault.parent, "asset");
}

TEST(FCPXMLValidator, distinguishesAMisplacedElementFromOneOutOfOrder) {
    EXPECT_EQ(onlyFault(withResources("<spine/>")).kind, Kind::misplacedElement);
    const Found fault =
        onlyFault("<fcpxml version=\"1.10\"><event name=\"a\"/><resources/></fcpxml>");
    EXPECT_EQ(fault.kind, Kind::elementOutOfOrder);
    EXPECT_EQ(fault.where, "<resources");
}

TEST(FCPXMLValidator, reportsWhatStandsOnceTooOften) {
    const Found fault = onlyFault(
        withResources("<media id=\"r1\"><sequence format=\"r2\"><note>a</note><note>b</note>"
                      "<spine/></sequence></media><format id=\"r2\"/>"));
    EXPECT_EQ(fault.kind, Kind::surplusElement);
    EXPECT_EQ(fault.where, "<note");
    EXPECT_EQ(fault.parent, "sequence");
}

TEST(FCPXMLValidator, reportsWhatIsMissingBeforeAnElement) {
    const Found fault = onlyFault(withResources("<asset id=\"r1\"><metadata/></asset>"));
    EXPECT_EQ(fault.kind, Kind::missingElement);
    EXPECT_EQ(fault.element, "asset");
    EXPECT_EQ(fault.where, "<metadata");
    EXPECT_EQ(fault.expected, std::vector<std::string>{"media-rep"});
}

TEST(FCPXMLValidator, reportsWhatAnElementLacks) {
    const Found fault = onlyFault(withResources("<asset id=\"r1\"/>"));
    EXPECT_EQ(fault.kind, Kind::missingElement);
    EXPECT_EQ(fault.where, "<asset");
    EXPECT_EQ(fault.expected, std::vector<std::string>{"media-rep"});
}

// One fault is reported once: the element that is misspelt is the one that is missing.
TEST(FCPXMLValidator, reportsNoLackBesideAMisspeltElement) {
    EXPECT_EQ(
        onlyFault(withResources("<asset id=\"r1\"><media-rip src=\"file:///a\"/></asset>")).kind,
        Kind::unknownElement);
}

TEST(FCPXMLValidator, reportsTextWhereElementsStand) {
    EXPECT_EQ(onlyFault(withResources("stray")).kind, Kind::misplacedText);
    EXPECT_EQ(onlyFault(withResources("<![CDATA[ ]]>")).kind, Kind::misplacedText);
    // White space that is written as a reference is text (XML 1.0, section 3, Element Valid).
    EXPECT_EQ(onlyFault(withResources("&#32;")).kind, Kind::misplacedText);
}

TEST(FCPXMLValidator, wantsAnEmptyElementEmpty) {
    for (const char* content : {" ", "a", "<!-- -->", "<?a b?>", "<![CDATA[]]>"}) {
        EXPECT_EQ(
            onlyFault(withResources("<format id=\"r1\">" + std::string(content) + "</format>"))
                .kind,
            Kind::contentInEmptyElement)
            << content;
    }
    EXPECT_TRUE(faultsOf(withResources("<format id=\"r1\"></format>")).empty());
}

TEST(FCPXMLValidator, reportsAChildOfAnEmptyElementAndNotTheBlanksAroundIt) {
    const Found fault = onlyFault(withResources("<format id=\"r1\"> <note/> <!-- --></format>"));
    EXPECT_EQ(fault.kind, Kind::misplacedElement);
    EXPECT_EQ(fault.element, "note");
    EXPECT_EQ(fault.parent, "format");
    EXPECT_TRUE(fault.expected.empty());
}

TEST(FCPXMLValidator, reportsAttributes) {
    Found fault = onlyFault(withResources("<format id=\"r1\" colour=\"red\"/>"));
    EXPECT_EQ(fault.kind, Kind::unknownAttribute);
    EXPECT_EQ(fault.attribute, "colour");
    fault = onlyFault(
        withResources("<asset id=\"r1\" src=\"file:///a\"><media-rep src=\"file:///a\"/></asset>"));
    EXPECT_EQ(fault.kind, Kind::attributeOfOtherVersion);
    EXPECT_EQ(fault.attribute, "src");
    fault = onlyFault(withResources("<format/>"));
    EXPECT_EQ(fault.kind, Kind::missingAttribute);
    EXPECT_EQ(fault.attribute, "id");
    EXPECT_EQ(fault.where, "<format");
}

TEST(FCPXMLValidator, reportsValues) {
    const Found listed = onlyFault(withResources(
        "<media id=\"r1\"><sequence format=\"r1\" tcFormat=\"XDF\"><spine/></sequence></media>"));
    EXPECT_EQ(listed.kind, Kind::valueNotListed);
    EXPECT_EQ(listed.where, "XDF");
    EXPECT_EQ(onlyFault("<fcpxml version=\"1.9\"/>").kind, Kind::valueNotFixed);
}

TEST(FCPXMLValidator, normalisesTokens) {
    EXPECT_TRUE(faultsOf(withResources("<format id=\" r1\n\"/><media id=\"r2\">"
                                       "<sequence format=\"&#32;r1\" tcFormat=\"D&#70; \">"
                                       "<spine/></sequence></media>"))
                    .empty());
}

TEST(FCPXMLValidator, reportsIdsThatAreDoubleOrNoNames) {
    EXPECT_EQ(onlyFault(withResources("<format id=\"r1\"/><format id=\"r1\"/>")).kind,
              Kind::repeatedId);
    EXPECT_EQ(onlyFault(withResources("<format id=\"1\"/>")).kind, Kind::malformedId);
    EXPECT_EQ(onlyFault(withResources("<format id=\"\"/>")).kind, Kind::malformedId);
}

TEST(FCPXMLValidator, reportsReferencesToNothingInTheOrderOfTheText) {
    const std::vector<Found> faults = faultsOf(
        withResources("<media id=\"r1\"><sequence format=\"r8\"><spine/></sequence></media>"
                      "<media id=\"r2\"><sequence format=\"r9\"><spine/></sequence></media>"
                      "<media id=\"r3\"><sequence format=\"r4\"><spine/></sequence></media>"
                      "<format id=\"r4\"/>"));
    ASSERT_EQ(faults.size(), 2U);
    EXPECT_EQ(faults[0].kind, Kind::danglingReference);
    EXPECT_EQ(faults[0].where, "r8");
    EXPECT_EQ(faults[0].element, "sequence");
    EXPECT_EQ(faults[1].where, "r9");
}

TEST(FCPXMLValidator, comparesTheRootWithTheDocumentType) {
    EXPECT_EQ(onlyFault("<!DOCTYPE xmeml><fcpxml version=\"1.10\"/>").kind, Kind::rootElementType);
}

TEST(FCPXMLValidator, reportsOnceThatADocumentIsNotStandalone) {
    const std::string text = withResources("\n<format id=\"r1\"/>\n");
    EXPECT_TRUE(faultsOf(text).empty());
    EXPECT_EQ(onlyFault(text, 10, true).kind, Kind::notStandalone);
}

// More attributes than bits would be confused with each other.
TEST(FCPXMLValidator, canCountTheAttributesOfEveryElement) {
    for (int minor = 0; minor <= Version::kNewestMinor; ++minor) {
        for (std::size_t id = 0; id < Catalogue::shared().size(); ++id) {
            const auto* element =
                Definition::of(Version(minor)).element(static_cast<ElementId>(id));
            EXPECT_TRUE(element == nullptr || element->attributes.size() <= 64);
        }
    }
}

}  // namespace vornic::fcpxml
