#include <cstdlib>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/convert/fcpxml/ConvertedText.h"
#include "tests/formats/fcpxml/DocumentGenerator.h"

// Converts documents in which everything occurs that a version has.
namespace vornic::test {

namespace {

using fcpxml::Version;

std::size_t documentCount() {
    const char* const count = std::getenv("VORNIC_GENERATED_DOCUMENTS");
    return count == nullptr ? 60 : std::stoul(count);
}

}  // namespace

class GeneratedConversion : public ::testing::TestWithParam<int> {};

TEST_P(GeneratedConversion, makesValidDocumentsOfValidOnes) {
    const Version from(GetParam());
    DocumentGenerator generator(from, 7);
    std::size_t converted = 0;
    for (std::size_t count = 0; count < documentCount() || !generator.missing().empty(); ++count) {
        ASSERT_LT(count, 2000U);
        const std::string text = generator.next();
        ASSERT_EQ(faultsOf(text, from), "");
        for (int minor = fcpxml::kOldestTarget.minor(); minor <= Version::kNewestMinor; ++minor) {
            const ConvertedText result = convertedText(text, from, Version(minor));
            if (from < fcpxml::kOldestTarget && !result.conversion.refusal.empty()) {
                continue;
            }
            ASSERT_EQ(result.conversion.refusal, "");
            ASSERT_EQ(faultsOf(result.text, Version(minor)), "") << "to " << minor << "\n"
                                                                 << result.told << text << "\n\n"
                                                                 << result.text;
            ++converted;
        }
    }
    EXPECT_EQ(generator.missing(), std::vector<std::string>());
    EXPECT_GT(converted, 0U);
}

INSTANTIATE_TEST_SUITE_P(Versions, GeneratedConversion,
                         ::testing::Range(0, Version::kNewestMinor + 1));

}  // namespace vornic::test
