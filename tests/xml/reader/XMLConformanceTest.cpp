#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/machine/Sandbox.h"
#include "tests/support/texts/SampleFiles.h"
#include "tests/xml/reader/CanonicalXML.h"
#include "xml/reader/XMLReader.h"
#include "xml/text/TextDecoding.h"
#include "xml/text/XMLErrorCode.h"
#include "xml/tree/XMLDocument.h"

// The documents of the XML conformance test suite, and that docs/conformance.md says what becomes
// of them.

namespace vornic::test {

namespace {

struct Case {
    std::string uri;
    std::string type;
    std::string path;
    // The canonical form of the document, or "".
    std::string canonicalPath;
};

enum class Outcome { accepted, refused, refusedForEntities, refusedForEncoding };

struct Counts {
    std::size_t documents = 0;
    std::map<Outcome, std::size_t> outcomes;
};

std::vector<Case> casesOf(const std::string& folder, const std::string& catalogue) {
    const std::string text = readBytes(folder + catalogue);
    // Some catalogues are pieces without a root element.
    const std::string whole = "<r>" + text.substr(text.find("?>") + 2) + "</r>";
    ErrorSlot error;
    const auto document = XMLDocument::parse(whole, XMLMode::strict, error);
    EXPECT_NE(document, nullptr) << catalogue;
    std::vector<Case> cases;
    for (const XMLNode& test :
         XMLDocument::nodesForXPath("//TEST", document->documentNode(), error)) {
        const std::string uri = test.attribute("URI").value_or("");
        const std::optional<std::string> output = test.attribute("OUTPUT");
        cases.push_back({uri, test.attribute("TYPE").value_or(""), folder + uri,
                         output ? folder + *output : ""});
    }
    return cases;
}

Outcome outcomeOf(const Case& test) {
    ErrorSlot error;
    const std::optional<std::string> text = decodeXMLBytes(readBytes(test.path), error);
    if (!text) {
        return error->code == static_cast<int>(XMLErrorCode::unknownEncoding)
                   ? Outcome::refusedForEncoding
                   : Outcome::refused;
    }
    const XMLReading reading = readXML(*text, XMLMode::strict);
    if (!reading.fault) {
        return Outcome::accepted;
    }
    const bool entities =
        reading.fault->code == static_cast<int>(XMLErrorCode::entityDeclaration) ||
        (test.type != "not-wf" &&
         reading.fault->code == static_cast<int>(XMLErrorCode::undefinedEntity));
    return entities ? Outcome::refusedForEntities : Outcome::refused;
}

std::string tableRow(const std::string& collection, const std::string& type, Counts counts) {
    return "| " + collection + " | " + type + " | " + std::to_string(counts.documents) + " | " +
           std::to_string(counts.outcomes[Outcome::accepted]) + " | " +
           std::to_string(counts.outcomes[Outcome::refused]) + " | " +
           std::to_string(counts.outcomes[Outcome::refusedForEntities]) + " | " +
           std::to_string(counts.outcomes[Outcome::refusedForEncoding]) + " |\n";
}

class XMLConformance : public ::testing::Test {
  protected:
    void SetUp() override {
        if (!samplesFolder()) {
            GTEST_SKIP() << "VORNIC_SAMPLES is not set";
        }
        const std::string folder = *samplesFolder() + "/xmlconf/";
        cases_["xmltest"] = casesOf(folder + "xmltest/", "xmltest.xml");
        for (const char* catalogue :
             {"sun-valid.xml", "sun-invalid.xml", "sun-not-wf.xml", "sun-error.xml"}) {
            const std::vector<Case> cases = casesOf(folder + "sun/", catalogue);
            cases_["sun"].insert(cases_["sun"].end(), cases.begin(), cases.end());
        }
        page_ = readBytes(VORNIC_SOURCE_DIR "/docs/conformance.md");
    }

    void expectOnPage(const std::string& line) const {
        EXPECT_NE(page_.find(line), std::string::npos) << "docs/conformance.md lacks: " << line;
    }

    std::map<std::string, std::vector<Case>> cases_;
    std::string page_;
};

}  // namespace

TEST_F(XMLConformance, comesOutAsThePageSays) {
    for (const auto& [collection, cases] : cases_) {
        std::map<std::string, Counts> counts;
        for (const Case& test : cases) {
            ++counts[test.type].documents;
            ++counts[test.type].outcomes[outcomeOf(test)];
        }
        for (const auto& [type, count] : counts) {
            expectOnPage(tableRow(collection, type, count));
        }
        EXPECT_GE(counts.size(), 4U);
    }
}

TEST_F(XMLConformance, refusesNoSoundDocumentButForItsEntities) {
    for (const auto& [collection, cases] : cases_) {
        for (const Case& test : cases) {
            if (test.type == "valid" || test.type == "invalid") {
                const Outcome outcome = outcomeOf(test);
                EXPECT_TRUE(outcome == Outcome::accepted || outcome == Outcome::refusedForEntities)
                    << test.uri;
            }
        }
    }
}

TEST_F(XMLConformance, acceptsNoMalformedDocumentThatThePageDoesNotName) {
    std::size_t named = 0;
    for (const auto& [collection, cases] : cases_) {
        for (const Case& test : cases) {
            if (test.type == "not-wf" && outcomeOf(test) == Outcome::accepted) {
                expectOnPage("`" + collection + "/" + test.uri + "`");
                ++named;
            }
        }
    }
    EXPECT_EQ(named, 8U);
}

TEST_F(XMLConformance, makesWellFormedTextOfWhateverItMends) {
    for (const auto& [collection, cases] : cases_) {
        for (const Case& test : cases) {
            ErrorSlot error;
            const std::optional<std::string> text = decodeXMLBytes(readBytes(test.path), error);
            if (!text) {
                continue;
            }
            const XMLReading reading = readXML(*text, XMLMode::tolerant);
            if (!reading.fault) {
                const std::string mended = applyXMLEdits(*text, reading.edits);
                EXPECT_FALSE(readXML(mended, XMLMode::strict).fault.has_value()) << test.uri;
            }
        }
    }
}

TEST_F(XMLConformance, readsTheContentThatTheSuiteSays) {
    for (const auto& [collection, cases] : cases_) {
        std::size_t same = 0;
        std::size_t different = 0;
        for (const Case& test : cases) {
            if (test.canonicalPath.empty() || outcomeOf(test) != Outcome::accepted) {
                continue;
            }
            const std::string canonical = readBytes(test.canonicalPath);
            ErrorSlot error;
            const std::optional<std::string> text = decodeXMLBytes(readBytes(test.path), error);
            // The second canonical form, which tells notations, begins with a declaration.
            const std::size_t root =
                canonical.starts_with("<!DOCTYPE") ? canonical.find("]>\n") + 3 : 0;
            if (canonicalXML(*text) == canonical.substr(root)) {
                ++same;
            } else {
                ++different;
                expectOnPage("`" + collection + "/" + test.uri + "`");
            }
        }
        expectOnPage("| " + collection + " | " + std::to_string(same) + " | " +
                     std::to_string(different) + " |");
    }
}

}  // namespace vornic::test
