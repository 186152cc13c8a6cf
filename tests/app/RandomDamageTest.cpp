// Whatever bytes come in: nothing crashes, the user's file is untouched or in the Trash with its
// repaired copy in place, and nothing of its content is lost but what a repair is meant to take
// out.

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/app/ContentOf.h"
#include "tests/app/ProgramTest.h"
#include "tests/support/machine/FileState.h"

namespace vornic::test {

namespace fs = std::filesystem;
using ::testing::HasSubstr;

namespace {

constexpr std::string_view kXMEML =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<!DOCTYPE xmeml>\n"
    "<xmeml version=\"4\">\n"
    "    <!-- morning reels -->\n"
    "    <sequence id=\"harbour\">\n"
    "        <name>Sand &amp; Sea, caf\u00e9 &lt;3&gt;</name>\n"
    "        <duration>250</duration>\n"
    "        <rate>\n"
    "            <ntsc>TRUE</ntsc>\n"
    "            <timebase>30</timebase>\n"
    "        </rate>\n"
    "        <media>\n"
    "            <video>\n"
    "                <track>\n"
    "                    <clipitem id=\"tide 1\">\n"
    "                        <name>Ebb \"long\" &apos;take&apos; &#233;</name>\n"
    "                        <lognote></lognote>\n"
    "                        <comments/>\n"
    "                        <file id=\"file-1\"/>\n"
    "                    </clipitem>\n"
    "                </track>\n"
    "            </video>\n"
    "        </media>\n"
    "    </sequence>\n"
    "</xmeml>\n";

constexpr std::string_view kFCPXML =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<!DOCTYPE fcpxml>\n"
    "<fcpxml version=\"1.10\">\n"
    "    <resources>\n"
    "        <asset id=\"r1\" name=\"Quay &amp; pier\"/>\n"
    "    </resources>\n"
    "    <library>\n"
    "        <event name=\"Morning\">\n"
    "            <project name=\"Harbour\">\n"
    "                <spine>\n"
    "                    <video name=\"Ebb\"/>\n"
    "                    <note>caf\u00e9 \u2013 two</note>\n"
    "                </spine>\n"
    "            </project>\n"
    "        </event>\n"
    "    </library>\n"
    "</fcpxml>\n";

/// Damages texts; the same seed gives the same damage everywhere.
class Damage {
  public:
    explicit Damage(std::uint32_t seed) : random_(seed) {}

    std::string apply(std::string text) {
        const std::size_t faults = 1 + below(3);
        for (std::size_t fault = 0; fault < faults; ++fault) {
            damageOnce(text);
        }
        return text;
    }

  private:
    // The standard's distributions differ between libraries; this does not.
    std::size_t below(std::size_t limit) { return random_() % std::max<std::size_t>(limit, 1); }

    void damageOnce(std::string& text) {
        const std::size_t place = below(text.size());
        const std::size_t length = below(std::min<std::size_t>(text.size() - place, 12));
        static const std::vector<std::string> kPieces{
            "&",          "<",     ">",       "]]>",      "\"",     "'",
            "\v",         "\x01",  "\x7F",    "é",        "\uFEFF", "\uE000",
            "\U0001F6A2", "&amp;", "&nbsp;",  "&eacute;", "<b>",    "</b>",
            "<!--",       "-->",   "<?x?>",   "\r\n",     "\t",     " = ",
            "a & b",      "a < b", "&#8211;", "\xFF",     "\xC3",   "\xED\xA0\x80"};
        switch (below(6)) {
            case 0:
                text.insert(place, kPieces[below(kPieces.size())]);
                break;
            case 1:
                text.erase(place, length);
                break;
            case 2:
                text.insert(below(text.size()), text.substr(place, length));
                break;
            case 3:
                text[place] = static_cast<char>(below(128));
                break;
            case 4:
                text.insert(place, kPieces[below(16)]);
                break;
            default:
                damageBadly(text, place);
                break;
        }
    }

    void damageBadly(std::string& text, std::size_t place) {
        switch (below(4)) {
            case 0:
                text.resize(place);
                break;
            case 1:
                text[place] = static_cast<char>(below(256));
                break;
            case 2:
                std::erase(text, '\n');
                break;
            default:
                text.erase(0, below(60));
                break;
        }
    }

    std::mt19937 random_;
};

}  // namespace

class RandomDamageTest : public ProgramTest {
  protected:
    /// @return true when the file was repaired.
    bool repairAndJudge(const std::string& name, const std::string& before) const {
        fs::remove_all(files.folder());
        removeTrash(files.home());
        fs::create_directory(files.folder());
        const std::string path = files.write(name, before);
        const ProgramResult result = files.repair({path});
        EXPECT_EQ(result.signal, 0);
        EXPECT_TRUE(result.status == 0 || result.status == 1) << result.status;
        EXPECT_EQ(namesIn(files.folder()).size(), 1U) << result.output;
        const std::string after = readBytes(path);
        const std::vector<std::string> trashed = namesIn(files.trash());
        if (trashed.empty()) {
            EXPECT_EQ(after, before);
            return false;
        }
        EXPECT_EQ(trashed, std::vector<std::string>{name});
        EXPECT_EQ(readBytes(files.trash() + "/" + name), before);
        EXPECT_EQ(result.status, 0);
        EXPECT_THAT(result.output, HasSubstr("The file was repaired successfully."));
        EXPECT_EQ(contentOf(after), contentOf(before)) << after;
        const ProgramResult again = files.repair({path});
        EXPECT_THAT(again.output, HasSubstr("No repair was necessary."));
        EXPECT_EQ(readBytes(path), after);
        return true;
    }

    void repairDamaged(const std::string& name, std::string_view text, std::uint32_t seed) const {
        constexpr int kRounds = 250;
        Damage damage(seed);
        int repaired = 0;
        for (int round = 0; round < kRounds && !HasFailure(); ++round) {
            SCOPED_TRACE("seed " + std::to_string(seed) + ", round " + std::to_string(round));
            const std::string damaged = damage.apply(std::string(text));
            repaired += repairAndJudge(name, damaged) ? 1 : 0;
            EXPECT_TRUE(!HasFailure()) << damaged;
        }
        // A damage that is always or never mended would make a poor test.
        EXPECT_GT(repaired, kRounds / 20);
        EXPECT_LT(repaired, kRounds * 19 / 20);
    }
};

TEST_F(RandomDamageTest, neverLosesAnXMEMLFile) {
    repairDamaged("cut.xml", kXMEML, 1);
}

TEST_F(RandomDamageTest, neverLosesAnFCPXMLFile) {
    repairDamaged("cut.fcpxml", kFCPXML, 2);
}

TEST_F(RandomDamageTest, neverHarmsAFileByAConversion) {
    constexpr int kRounds = 150;
    Damage damage(3);
    int converted = 0;
    for (int round = 0; round < kRounds && !HasFailure(); ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        const std::string before = damage.apply(std::string(kXMEML));
        const std::string path = files.write("cut.xml", before);
        const ProgramResult result = files.convert({"-convertxmeml", "4", path});
        EXPECT_EQ(result.status, 0);
        const std::string after = readBytes(path);
        if (!result.errors.empty() || !result.output.empty()) {
            EXPECT_EQ(after, before);
            continue;
        }
        ++converted;
        EXPECT_EQ(files.convert({"-convertxmeml", "4", path}).errors, "");
        EXPECT_EQ(readBytes(path), after) << before;
    }
    EXPECT_GT(converted, kRounds / 10);
}

TEST_F(RandomDamageTest, neverLosesAFileOfRandomBytes) {
    constexpr int kRounds = 60;
    constexpr std::size_t kLongest = 400;
    std::mt19937 random(4);
    for (int round = 0; round < kRounds && !HasFailure(); ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        std::string bytes(random() % kLongest, '\0');
        std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<char>(random()); });
        EXPECT_FALSE(repairAndJudge("cut.xml", bytes));
    }
}

}  // namespace vornic::test
