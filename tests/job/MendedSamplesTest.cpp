#include <filesystem>
#include <map>
#include <random>

#include <gtest/gtest.h>

#include "job/MendedBytes.h"
#include "report/RuleTable.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/texts/SampleFiles.h"
#include "xml/reader/XMLReader.h"

namespace vornic {

namespace {

namespace fs = std::filesystem;

// A fault that a mend takes back to the letter: `sound` in the file becomes `broken`.
struct SeededFault {
    std::string_view name;
    std::string_view sound;
    std::string_view broken;
};

constexpr SeededFault kFaults[] = {
    {"ampersand", "&amp; ", "& "},
    {"space between attributes", "\" ", "\""},
    {"quotation marks", "\"1/25s\"", "1/25s"},
    {"timebase", "<timebase>24</timebase>", "<timebase>24/1</timebase>"},
    {"boolean", "<ntsc>TRUE</ntsc>", "<ntsc>true</ntsc>"},
    {"blank in a path", "%20", " "},
    {"white space before the declaration", "<?xml version=\"1.0\"", "\n <?xml version=\"1.0\""},
};

// The bytes of all start tags that stand in no comment.
std::vector<bool> startTagsOf(std::string_view text) {
    std::vector<bool> isInTag(text.size(), false);
    for (std::size_t at = text.find('<'); at < text.size(); at = text.find('<', at + 1)) {
        if (text.substr(at).starts_with("<!--")) {
            at = std::min(text.find("-->", at), text.size() - 1);
        } else if (at + 1 < text.size() &&
                   std::isalpha(static_cast<unsigned char>(text[at + 1])) != 0) {
            for (; at < text.size() && text[at] != '>'; ++at) {
                isInTag[at] = true;
            }
        }
    }
    return isInTag;
}

// Whether a byte belongs to the URL of a media file.
bool isInPath(std::string_view text, std::size_t at) {
    const std::size_t start = text.find_last_of("\">", at);
    const std::string_view before = text.substr(0, start);
    const std::string_view tag = text.substr(text.rfind('<', at));
    const bool isOfMedia = tag.starts_with("<asset ") || tag.starts_with("<media-rep ") ||
                           tag.starts_with("<pathurl>");
    return isOfMedia && (before.ends_with(" src=") || before.ends_with("<pathurl")) &&
           text.substr(start + 1).starts_with("file:///");
}

bool canBeBroken(std::string_view text, std::size_t at, const SeededFault& fault, bool isInTag) {
    if (fault.broken == " ") {
        return isInPath(text, at);
    }
    if (fault.sound != "\" ") {
        return true;
    }
    return isInTag && at + 2 < text.size() &&
           std::isalpha(static_cast<unsigned char>(text[at + 2])) != 0 && text[at - 1] != '=';
}

// Breaks up to `most` places of a text.
std::string broken(const std::string& text, const SeededFault& fault, std::mt19937& random,
                   std::size_t most) {
    const std::vector<bool> tags = startTagsOf(text);
    std::vector<std::size_t> places;
    for (std::size_t at = text.find(fault.sound); at != std::string::npos;
         at = text.find(fault.sound, at + 1)) {
        if (canBeBroken(text, at, fault, tags[at])) {
            places.push_back(at);
        }
    }
    std::shuffle(places.begin(), places.end(), random);
    places.resize(std::min(places.size(), most));
    std::sort(places.begin(), places.end());
    EditList edits;
    for (const std::size_t place : places) {
        edits.push_back({place, fault.sound.size(), std::string(fault.broken)});
    }
    return applyEdits(text, edits);
}

std::vector<std::uint64_t> countsOf(const Report& report) {
    std::vector<std::uint64_t> counts;
    for (std::size_t index = 0; index < kRuleCount; ++index) {
        counts.push_back(report.findings.count({static_cast<std::uint16_t>(index)}));
    }
    return counts;
}

// All that a report says of its findings, one to a line.
std::string told(const Report& report) {
    std::string lines = report.kind + " " + report.version + " " + report.encoding + "\n";
    for (const GroupRun& run : report.groups) {
        lines += std::string(nameOf(run.group)) + (run.ran ? " ran" : " " + run.why) + "\n";
    }
    for (const Finding& finding : report.findings.kept()) {
        const Place& where = finding.where;
        lines += std::string(ruleOf(finding.rule).id) + " " + std::to_string(where.offset) + "+" +
                 std::to_string(where.length) + " " + std::to_string(where.line) + "," +
                 std::to_string(where.column) + " " + where.path + ": " + finding.message() + "\n";
    }
    return lines;
}

class MendedSamplesTest : public ::testing::Test {
  protected:
    static std::vector<std::string> samples() {
        const std::optional<std::string> folder = test::samplesFolder();
        std::vector<std::string> files;
        for (const char* kind : {"/xmeml", "/fcpxml", "/damaged"}) {
            if (folder && fs::is_directory(*folder + kind)) {
                const std::vector<std::string> more = test::filesBelow(*folder + kind);
                files.insert(files.end(), more.begin(), more.end());
            }
        }
        return files;
    }
};

// What is seeded into a real file goes away, byte for byte, and nothing else changes.
TEST_F(MendedSamplesTest, comeBackFromSeededFaults) {
    const std::vector<std::string> files = samples();
    if (files.empty()) {
        GTEST_SKIP() << "VORNIC_SAMPLES names no folder of samples";
    }
    std::mt19937 random(15);
    std::map<std::string_view, std::size_t> seeded;
    for (const std::string& file : files) {
        const std::string original = test::readBytes(file);
        const MendedBytes sound = MendedBytes::of(original, {});
        EXPECT_EQ(sound.refusal, "") << file;
        ErrorSlot error;
        const std::optional<std::string> text = textFromUTF8(sound.bytes, error);
        // Behind a fault that ends the reading nothing is found.
        const bool isWhole = text && !readXML(*text, XMLMode::strict).fault;
        for (const SeededFault& fault : kFaults) {
            const std::string damaged = broken(sound.bytes, fault, random, 20);
            if (!isWhole || damaged == sound.bytes) {
                continue;
            }
            const MendedBytes mended = MendedBytes::of(damaged, {});
            EXPECT_EQ(mended.refusal, "") << file << " " << fault.name;
            EXPECT_TRUE(mended.bytes == sound.bytes) << file << " " << fault.name;
            EXPECT_EQ(applyEdits(damaged, mended.edits), mended.bytes) << file << " " << fault.name;
            // However the mended file was checked: all of it was.
            const Report anew = checkFile(mended.bytes, {});
            EXPECT_EQ(told(mended.report), told(anew)) << file << " " << fault.name;
            EXPECT_EQ(countsOf(mended.report), countsOf(anew)) << file << " " << fault.name;
            ++seeded[fault.name];
        }
    }
    for (const SeededFault& fault : kFaults) {
        EXPECT_GT(seeded[fault.name], 0U) << fault.name;
    }
}

// Mending takes findings away and brings none; a second time there is nothing left to mend.
TEST_F(MendedSamplesTest, getBetterOnly) {
    const std::vector<std::string> files = samples();
    if (files.empty()) {
        GTEST_SKIP() << "VORNIC_SAMPLES names no folder of samples";
    }
    for (const std::string& file : files) {
        const std::string original = test::readBytes(file);
        const std::vector<std::uint64_t> before = countsOf(checkFile(original, {}));
        const MendedBytes mended = MendedBytes::of(original, {});
        EXPECT_EQ(mended.refusal, "") << file;
        const std::vector<std::uint64_t> after = countsOf(mended.report);
        for (std::size_t index = 0; index < kRuleCount; ++index) {
            EXPECT_LE(after[index], before[index])
                << file << " " << ruleOf({static_cast<std::uint16_t>(index)}).id;
        }
        EXPECT_TRUE(MendedBytes::of(mended.bytes, {}).edits.empty()) << file;
    }
}

// The same when everything is asked for. What lies at one place may have to be mended in turn.
TEST_F(MendedSamplesTest, getBetterOnlyWhenAllIsAskedFor) {
    const std::vector<std::string> files = samples();
    if (files.empty()) {
        GTEST_SKIP() << "VORNIC_SAMPLES names no folder of samples";
    }
    MendRequest request;
    for (std::size_t index = 0; index < kRuleCount; ++index) {
        request.asked.push_back({static_cast<std::uint16_t>(index)});
    }
    std::size_t mendedFiles = 0;
    for (const std::string& file : files) {
        const MendedBytes mended = MendedBytes::of(test::readBytes(file), request);
        EXPECT_EQ(mended.refusal, "") << file;
        EXPECT_TRUE(MendedBytes::of(mended.bytes, request).edits.empty()) << file;
        mendedFiles += mended.edits.empty() ? 0 : 1;
    }
    EXPECT_GT(mendedFiles, 10U);
}

}  // namespace

}  // namespace vornic
