#include <array>
#include <random>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "tests/support/machine/Sandbox.h"
#include "tests/support/texts/SampleFiles.h"
#include "tests/xml/reader/MendedText.h"
#include "tests/xml/reader/XMLSideBySide.h"
#include "xml/reader/XMLReader.h"

// Rules that hold for every text, tried on texts damaged at random. The seeds are fixed, so that a
// failure can be had again.

namespace vornic::test {

namespace {

constexpr std::string_view kProject =
    "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone='yes'?>\n<!DOCTYPE xmeml [\n"
    "<!ELEMENT xmeml (sequence|(clip, bin?)*)+><!ATTLIST clip id ID #REQUIRED kind (a|b) 'a'>\n"
    "<!NOTATION n PUBLIC 'p'><!-- note --><?pi data?>]>\n<xmeml version=\"5\">\n"
    "\t<!-- a - comment -->\n\t<sequence id='s1' label=\"caf&#233; &amp; bar\">\n"
    "\t\t<name>Seq é 1 &lt; 2</name><empty></empty><closed/><![CDATA[raw <&> text]]>\n"
    "\t\t<mixed>one <b>two</b> three &#x1F600;</mixed> <blank> </blank>\n"
    "\t\t<keep xml:space=\"preserve\"> <x/> </keep><ref>&#32;<y/></ref>\n"
    "\t</sequence>\n</xmeml>\n<!-- end -->\n<?pi?>\n";

constexpr std::array<std::string_view, 40> kPieces = {"<",
                                                      ">",
                                                      "&",
                                                      "&amp;",
                                                      "&#1;",
                                                      "&#;",
                                                      "&nbsp;",
                                                      "\"",
                                                      "'",
                                                      "=",
                                                      " ",
                                                      "\n",
                                                      "\r",
                                                      "]]>",
                                                      "--",
                                                      "-",
                                                      "<!--",
                                                      "-->",
                                                      "<![CDATA[",
                                                      "<?xml?>",
                                                      "<?",
                                                      "?>",
                                                      "</",
                                                      "/>",
                                                      "<b>",
                                                      "</b>",
                                                      "<b c=d>",
                                                      "\x01",
                                                      "\xFF",
                                                      "\xC3",
                                                      "\xEF\xBF\xBE",
                                                      "\xEF\xBB\xBF",
                                                      "é",
                                                      "<!DOCTYPE a>",
                                                      "<!ENTITY a 'b'>",
                                                      "%p;",
                                                      "xml:space='preserve'",
                                                      "]",
                                                      "\t",
                                                      "1"};

// Changes a text in a few places.
class Damage {
  public:
    explicit Damage(unsigned seed) : random_(seed) {}

    std::string to(std::string_view text) {
        std::string damaged(text);
        for (std::size_t change = 1 + below(4); change > 0; --change) {
            damage(damaged);
        }
        return damaged;
    }

  private:
    std::size_t below(std::size_t limit) {
        return std::uniform_int_distribution<std::size_t>(0, limit - 1)(random_);
    }

    void damage(std::string& text) {
        const std::size_t place = below(text.size() + 1);
        const std::size_t length = std::min(1 + below(8), text.size() - place);
        switch (below(6)) {
            case 0:
                text.erase(place, length);
                break;
            case 1:
                text.insert(place, kPieces.at(below(kPieces.size())));
                break;
            case 2:
                text.replace(place, length, kPieces.at(below(kPieces.size())));
                break;
            case 3:
                text.insert(below(text.size() + 1), text.substr(place, length));
                break;
            case 4:
                if (place < text.size()) {
                    text[place] = static_cast<char>(below(256));
                }
                break;
            default:
                if (below(10) == 0) {
                    text.resize(place);
                } else {
                    text.insert(place, kPieces.at(below(12)));
                }
                break;
        }
    }

    std::mt19937 random_;
};

}  // namespace

TEST(XMLDamage, neverBreaksTheRulesOfMending) {
    std::size_t mended = 0;
    std::size_t refused = 0;
    for (unsigned seed = 0; seed < 40'000; ++seed) {
        const std::string text = Damage(seed).to(kProject);
        ASSERT_EQ(brokenRuleOfMending(text), "") << "seed " << seed << "\n" << text;
        const XMLReading reading = readXML(text, XMLMode::tolerant);
        mended += reading.fault || reading.edits.empty() ? 0U : 1U;
        refused += reading.fault ? 1U : 0U;
    }
    EXPECT_GT(mended, 2'000U);
    EXPECT_GT(refused, 2'000U);
}

TEST(XMLDamage, neverMakesReaderTreeAndWriterDisagree) {
    std::size_t sound = 0;
    for (unsigned seed = 100'000; seed < 110'000; ++seed) {
        const std::string damaged = Damage(seed).to(kProject);
        const XMLReading reading = readXML(damaged, XMLMode::tolerant);
        if (reading.fault) {
            continue;
        }
        const std::string text = applyXMLEdits(damaged, reading.edits);
        ASSERT_EQ(differenceOfReaderAndTree(text), "") << "seed " << seed << "\n" << text;
        ASSERT_EQ(differenceAfterWriting(text), "") << "seed " << seed << "\n" << text;
        ++sound;
    }
    EXPECT_GT(sound, 1'000U);
}

TEST(XMLDamage, toRealProjectsNeverBreaksTheRules) {
    if (!samplesFolder()) {
        GTEST_SKIP() << "VORNIC_SAMPLES is not set";
    }
    unsigned seed = 0;
    for (const char* kind : {"/xmeml", "/fcpxml"}) {
        for (const std::string& path : filesBelow(*samplesFolder() + kind)) {
            const std::string whole = readBytes(path);
            if (whole.size() > 50'000) {
                continue;
            }
            for (int turn = 0; turn < 20; ++turn, ++seed) {
                const std::string text = Damage(seed).to(whole);
                ASSERT_EQ(brokenRuleOfMending(text), "") << "seed " << seed << " " << path;
                ASSERT_EQ(differenceOfReaderAndTree(text), "") << "seed " << seed << " " << path;
            }
        }
    }
    EXPECT_GT(seed, 500U);
}

}  // namespace vornic::test
