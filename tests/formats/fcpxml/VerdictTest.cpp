#include <algorithm>
#include <optional>
#include <random>

#include <gtest/gtest.h>

#include "formats/fcpxml/Validator.h"
#include "tests/formats/fcpxml/DocumentGenerator.h"
#include "tests/formats/fcpxml/DocumentMutator.h"
#include "tests/formats/fcpxml/OtherParser.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/texts/SampleFiles.h"
#include "xml/text/TextDecoding.h"

// Holds the catalogue's verdict against that of a validating parser of other people's, which reads
// definitions written from the catalogue.
namespace vornic::test {

namespace {

using fcpxml::Version;

using Document = VersionedText;

bool saysStandalone(std::string_view text) {
    const std::string_view declaration = text.substr(0, std::min(text.find("?>"), text.size()));
    return declaration.starts_with("<?xml") &&
           (declaration.find("standalone=\"yes\"") != std::string_view::npos ||
            declaration.find("standalone='yes'") != std::string_view::npos);
}

bool isValid(const Document& document) {
    const std::string text = withDefinition(document);
    fcpxml::Validator validator(fcpxml::Definition::of(document.version), saysStandalone(text),
                                nullptr);
    const XMLReading reading = readXML(text, XMLMode::strict, &validator);
    validator.finish();
    return !reading.fault && validator.isValid();
}

class FCPXMLVerdict : public SandboxTest {
  protected:
    void SetUp() override {
        if (!OtherParser::isThere()) {
            GTEST_SKIP() << "there is no xmllint";
        }
        parser_.emplace(sandbox);
    }

    // Compares the verdicts on all documents, which are judged in one run of the other program.
    void compare(const std::vector<Document>& documents) {
        const auto refused = parser_->refusals(documents);
        for (std::size_t i = 0; i < documents.size(); ++i) {
            const bool isAccepted = !refused.contains(i);
            valid_ += isAccepted ? 1 : 0;
            ++judged_;
            if (isValid(documents[i]) != isAccepted) {
                ADD_FAILURE() << "accepted by xmllint: " << isAccepted << "\n"
                              << (isAccepted ? "" : refused.at(i))
                              << documents[i].text.substr(0, 3000);
                return;
            }
        }
    }

    std::size_t judged_ = 0;
    std::size_t valid_ = 0;
    std::optional<OtherParser> parser_;
};

// The root's version, when the catalogue knows it.
std::optional<Version> versionOf(const std::string& text) {
    const std::size_t root = text.find("<fcpxml");
    const std::size_t at = root == std::string::npos ? root : text.find("version=\"", root);
    if (at == std::string::npos || at > text.find('>', root)) {
        return std::nullopt;
    }
    const std::size_t value = at + std::string_view("version=\"").size();
    return Version::parse(std::string_view(text).substr(value, text.find('"', value) - value));
}

std::vector<Document> sampleDocuments(std::size_t largest) {
    std::vector<Document> documents;
    for (const std::string& path : filesBelow(*samplesFolder() + "/fcpxml")) {
        std::string text = readBytes(path);
        if (text.starts_with(kByteOrderMark)) {
            text.erase(0, kByteOrderMark.size());
        }
        const std::optional<Version> version = versionOf(text);
        if (version && text.size() <= largest) {
            documents.push_back({*version, std::move(text)});
        }
    }
    return documents;
}

void mutate(std::vector<Document>& documents, std::uint32_t seed, std::size_t count) {
    const std::vector<Document> originals = std::move(documents);
    documents.clear();
    std::minstd_rand random(seed);
    while (documents.size() < count) {
        const Document& original = originals[random() % originals.size()];
        std::string text = mutatedDocument(original.text, random);
        if (random() % 3 == 0) {
            text = mutatedDocument(text, random);
        }
        const std::optional<Version> version = versionOf(text);
        documents.push_back({version.value_or(original.version), std::move(text)});
    }
}

constexpr std::size_t kBatch = 250;

}  // namespace

TEST_F(FCPXMLVerdict, isThatOfAnotherParserOnRealFiles) {
    if (!samplesFolder()) {
        GTEST_SKIP() << "VORNIC_SAMPLES is not set";
    }
    compare(sampleDocuments(100'000'000));
    EXPECT_GT(judged_, 0U);
    EXPECT_GT(valid_, 0U);
}

class FCPXMLGeneratedVerdict : public FCPXMLVerdict, public ::testing::WithParamInterface<int> {};

// Every element, attribute and enumerated value of a version occurs.
TEST_P(FCPXMLGeneratedVerdict, isThatOfAnotherParserOnWhatTheCatalogueAllows) {
    DocumentGenerator generator(Version(GetParam()), 20);
    std::vector<Document> documents;
    while (documents.size() < 40 || (!generator.missing().empty() && documents.size() < 400)) {
        documents.push_back({Version(GetParam()), generator.next()});
    }
    EXPECT_EQ(generator.missing(), std::vector<std::string>());
    compare(documents);
    EXPECT_EQ(valid_, judged_);
}

INSTANTIATE_TEST_SUITE_P(Versions, FCPXMLGeneratedVerdict,
                         ::testing::Range(0, Version::kNewestMinor + 1));

class FCPXMLMutantVerdict : public FCPXMLVerdict, public ::testing::WithParamInterface<int> {};

// 20,000 in all.
TEST_P(FCPXMLMutantVerdict, isThatOfAnotherParser) {
    const auto seed = static_cast<std::uint32_t>(GetParam());
    std::vector<Document> originals;
    for (int minor = 0; minor <= Version::kNewestMinor; ++minor) {
        DocumentGenerator generator(Version(minor), seed);
        for (int i = 0; i < 6; ++i) {
            originals.push_back({Version(minor), generator.next()});
        }
    }
    if (samplesFolder()) {
        const std::vector<Document> samples = sampleDocuments(8'000);
        originals.insert(originals.end(), samples.begin(), samples.end());
    }
    for (std::size_t done = 0; done < 2'500; done += kBatch) {
        std::vector<Document> documents = originals;
        mutate(documents, seed * 1000 + static_cast<std::uint32_t>(done), kBatch);
        compare(documents);
        ASSERT_FALSE(HasFailure());
    }
    // Both verdicts occur often enough to mean something.
    EXPECT_GT(valid_, judged_ / 20);
    EXPECT_LT(valid_, judged_ - judged_ / 20);
}

INSTANTIATE_TEST_SUITE_P(Seeds, FCPXMLMutantVerdict, ::testing::Range(1, 9));

// XML 1.0, section 3, Element Valid: white space that is written as a reference is no white space
// between elements. The other parser takes it for some; this is the only such difference.
TEST_F(FCPXMLVerdict, differsWhereWhiteSpaceIsWrittenAsAReference) {
    const Document document{Version(10),
                            "<fcpxml version=\"1.10\"><resources>&#32;</resources></fcpxml>"};
    EXPECT_TRUE(parser_->refusals({document}).empty());
    EXPECT_FALSE(isValid(document));
}

}  // namespace vornic::test
