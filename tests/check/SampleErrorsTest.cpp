// Files by other people's programs, from the folder that VORNIC_SAMPLES names: what a check calls
// an error in them is one, and stands in a list with its reason.

#include <cstdlib>
#include <filesystem>
#include <limits>
#include <map>
#include <sstream>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "base/FormatString.h"
#include "check/Check.h"
#include "platform/files/Digest.h"
#include "report/RuleTable.h"
#include "tests/support/machine/Sandbox.h"

namespace vornic::test {

namespace {

namespace fs = std::filesystem;

// How often a rule speaks as an error, by the digest of a file and the rule.
using Counts = std::map<std::pair<std::string, std::string>, std::size_t>;

constexpr const char* kList = VORNIC_SOURCE "/tests/data/check/errors-on-samples.txt";

// The first digits of its SHA-256. The files are other people's, and are not named here.
std::string digestOf(const std::string& bytes) {
    auto digest = platform::Digest::create(platform::DigestKind::sha256).value();
    digest.update(bytes.data(), bytes.size());
    std::string digits;
    for (const char byte : digest.value().value().substr(0, 8)) {
        digits += formatString("%02x", static_cast<unsigned char>(byte));
    }
    return digits;
}

void addErrorsOf(const fs::path& file, Counts& counts, std::map<std::string, fs::path>& names) {
    CheckOptions options;
    options.mostOfARule = std::numeric_limits<std::size_t>::max();
    const std::string bytes = readBytes(file);
    const std::string name = digestOf(bytes);
    if (!names.emplace(name, file).second) {
        return;
    }
    const Report report = checkFile(bytes, options);
    for (const Finding& finding : report.findings.kept()) {
        if (finding.severity == Severity::error) {
            ++counts[{name, std::string(ruleOf(finding.rule).id)}];
        }
    }
}

// Also says which file has which digest; a file that is there twice counts once.
Counts errorsOnSamples(const fs::path& samples, std::map<std::string, fs::path>& names) {
    Counts counts;
    for (const char* const folder : {"fcpxml", "xmeml", "damaged"}) {
        for (const fs::directory_entry& entry : fs::directory_iterator(samples / folder)) {
            addErrorsOf(entry.path(), counts, names);
        }
    }
    return counts;
}

// Lines of digest, rule, count and reason with tabs between them; # begins a comment.
Counts listedErrors() {
    Counts counts;
    std::istringstream lines(readBytes(kList));
    for (std::string line; std::getline(lines, line);) {
        if (line.empty() || line.front() == '#') {
            continue;
        }
        std::istringstream parts(line);
        std::string file;
        std::string rule;
        std::string count;
        std::string reason;
        std::getline(parts, file, '\t');
        std::getline(parts, rule, '\t');
        std::getline(parts, count, '\t');
        std::getline(parts, reason);
        EXPECT_FALSE(reason.empty()) << line;
        EXPECT_TRUE(
            counts.emplace(std::pair(file, rule), std::strtoul(count.c_str(), nullptr, 10)).second)
            << line;
    }
    return counts;
}

}  // namespace

TEST(SampleErrors, areThoseOfTheListAndNoOthers) {
    const char* const samples = std::getenv("VORNIC_SAMPLES");
    if (samples == nullptr || !fs::is_directory(samples)) {
        GTEST_SKIP() << "VORNIC_SAMPLES names no folder of samples";
    }
    std::map<std::string, fs::path> names;
    const Counts found = errorsOnSamples(samples, names);
    const Counts listed = listedErrors();
    for (const auto& [place, count] : found) {
        const auto known = listed.find(place);
        EXPECT_TRUE(known != listed.end() && known->second == count)
            << place.first << "\t" << place.second << "\t" << count
            << " is not in the list: " << names.at(place.first);
    }
    for (const auto& [place, count] : listed) {
        EXPECT_TRUE(found.contains(place))
            << place.first << "\t" << place.second << "\t" << count << " is found no longer";
    }
}

}  // namespace vornic::test
