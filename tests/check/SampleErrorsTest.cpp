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

#include "check/Check.h"
#include "report/RuleTable.h"
#include "tests/support/Sandbox.h"

namespace vornic::test {

namespace {

namespace fs = std::filesystem;

// How often a rule speaks as an error, by file and rule.
using Counts = std::map<std::pair<std::string, std::string>, std::size_t>;

constexpr const char* kList = VORNIC_SOURCE "/tests/data/check/errors-on-samples.txt";

void addErrorsOf(const fs::path& file, const std::string& name, Counts& counts) {
    CheckOptions options;
    options.mostOfARule = std::numeric_limits<std::size_t>::max();
    const Report report = checkFile(readBytes(file), options);
    for (const Finding& finding : report.findings.kept()) {
        if (finding.severity == Severity::error) {
            ++counts[{name, std::string(ruleOf(finding.rule).id)}];
        }
    }
}

Counts errorsOnSamples(const fs::path& samples) {
    Counts counts;
    for (const char* const folder : {"fcpxml", "xmeml", "damaged"}) {
        for (const fs::directory_entry& entry : fs::directory_iterator(samples / folder)) {
            addErrorsOf(entry.path(), std::string(folder) + "/" + entry.path().filename().string(),
                        counts);
        }
    }
    return counts;
}

// Lines of file, rule, count and reason with tabs between them; # begins a comment.
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
    const Counts found = errorsOnSamples(samples);
    const Counts listed = listedErrors();
    for (const auto& [place, count] : found) {
        const auto known = listed.find(place);
        EXPECT_TRUE(known != listed.end() && known->second == count)
            << place.first << "\t" << place.second << "\t" << count << " is not in the list";
    }
    for (const auto& [place, count] : listed) {
        EXPECT_TRUE(found.contains(place))
            << place.first << "\t" << place.second << "\t" << count << " is found no longer";
    }
}

}  // namespace vornic::test
