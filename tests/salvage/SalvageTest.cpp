#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "salvage/Salvage.h"
#include "xml/reader/XMLReader.h"

namespace vornic::salvage {

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr std::string_view kSound =
    "<?xml version=\"1.0\"?>\n"
    "<xmeml version=\"5\">\n"
    "    <sequence id=\"s1\">\n"
    "        <name>Day 1</name>\n"
    "        <rate>\n"
    "            <timebase>25</timebase>\n"
    "            <ntsc>FALSE</ntsc>\n"
    "        </rate>\n"
    "        <media>\n"
    "            <video>\n"
    "                <track>\n"
    "                    <clipitem id=\"c1\">\n"
    "                        <name>Boat</name>\n"
    "                        <start>0</start>\n"
    "                    </clipitem>\n"
    "                    <clipitem id=\"c2\">\n"
    "                        <name>Lake</name>\n"
    "                        <start>9</start>\n"
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
    "        <format id=\"r1\" frameDuration=\"1/25s\"/>\n"
    "        <asset id=\"r2\" name=\"Boat\" start=\"0s\" duration=\"9s\" format=\"r1\">\n"
    "            <media-rep src=\"file:///Boat.mov\"/>\n"
    "        </asset>\n"
    "    </resources>\n"
    "    <project name=\"Day 1\">\n"
    "        <sequence format=\"r1\">\n"
    "            <spine>\n"
    "                <asset-clip ref=\"r2\" offset=\"0s\" duration=\"9s\">\n"
    "                    <note>Wind</note>\n"
    "                    <marker start=\"1s\" value=\"Here\"/>\n"
    "                </asset-clip>\n"
    "                <asset-clip ref=\"r2\" offset=\"9s\" duration=\"9s\"/>\n"
    "            </spine>\n"
    "        </sequence>\n"
    "    </project>\n"
    "</fcpxml>\n";

// The text with the first occurrence of a part replaced.
std::string with(std::string_view text, std::string_view part, std::string_view other) {
    std::string changed(text);
    const std::size_t at = changed.find(part);
    EXPECT_NE(at, std::string::npos) << part;
    return changed.replace(at, part.size(), other);
}

std::string copyOf(const std::string& text) {
    const Salvage result = salvage(text);
    EXPECT_EQ(result.refusal, "");
    EXPECT_THAT(result.copies, SizeIs(1));
    return result.copies.empty() ? "" : result.copies[0];
}

std::vector<std::string_view> rulesOf(const Salvage& result) {
    std::vector<std::string_view> rules;
    for (const Finding& finding : result.report.findings.kept()) {
        rules.push_back(ruleOf(finding.rule).id);
    }
    return rules;
}

}  // namespace

// The copy would not load, or show other letters, if it named the encoding of the file.
TEST(Salvage, declaresTheEncodingThatItsCopyHas) {
    const std::string text =
        with("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>" + std::string(kSound.substr(21)),
             "Boat</name>", "B\xE9");
    const Salvage result = salvage(text);
    ASSERT_THAT(result.copies, SizeIs(1));
    EXPECT_THAT(result.copies[0],
                ::testing::StartsWith("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<xmeml"));
    EXPECT_THAT(result.copies[0], HasSubstr("<name>B\u00E9</name>"));
    const Finding& finding = result.report.findings.kept()[0];
    EXPECT_EQ(result.copies[0].substr(finding.inCopy->offset, 7), "</name>");
}

TEST(Salvage, reportsAnUnknownEncodingAtItsNameBehindBytesThatAreNoText) {
    const std::string text =
        "<?xml version=\"\x91\x91\x91\x91"
        "1.0\" encoding=\"U.TF-8\"?>\n<xmeml>\x01";
    const Salvage result = salvage(text);
    ASSERT_EQ(result.report.findings.count("salvage-encoding-unknown"_rule), 1U);
    for (const Finding& finding : result.report.findings.kept()) {
        EXPECT_LE(finding.where.offset + finding.where.length, text.size());
        if (finding.rule == "salvage-encoding-unknown"_rule) {
            EXPECT_EQ(text.substr(finding.where.offset, finding.where.length), "U.TF-8");
            EXPECT_EQ(finding.where.column, 31U);
        }
    }
}

TEST(Salvage, leavesASoundFileAlone) {
    const Salvage result = salvage(std::string(kSound));
    EXPECT_TRUE(result.isSound);
    EXPECT_THAT(result.copies, IsEmpty());
    EXPECT_THAT(rulesOf(result), IsEmpty());
}

TEST(Salvage, putsALostEndTagInFrontOfWhatIsIndentedLikeItsElement) {
    EXPECT_EQ(copyOf(with(kSound, "        </rate>\n", "")), kSound);
}

TEST(Salvage, closesTextInFrontOfTheNextElement) {
    EXPECT_EQ(copyOf(with(kSound, "Day 1</name>", "Day 1")), kSound);
}

TEST(Salvage, endsAClipInFrontOfTheNextOne) {
    EXPECT_EQ(copyOf(with(kSound, "                    </clipitem>\n", "")), kSound);
}

TEST(Salvage, putsALostStartTagInFrontOfWhatItHeld) {
    EXPECT_EQ(copyOf(with(kSound, "        <rate>\n", "")), kSound);
    EXPECT_EQ(copyOf(with(kFCPXML, "            <spine>\n", "")), kFCPXML);
}

TEST(Salvage, reportsWhichAttributesWentWithAStartTag) {
    const Salvage result =
        salvage(with(kFCPXML, "<asset-clip ref=\"r2\" offset=\"0s\" duration=\"9s\">\n", "\n"));
    EXPECT_THAT(rulesOf(result), ElementsAre("salvage-start-tag-lost", "salvage-attributes-lost"));
    EXPECT_THAT(result.report.findings.kept()[1].message(), HasSubstr("<asset-clip> needs ref"));
}

TEST(Salvage, uncrossesTags) {
    EXPECT_EQ(copyOf(with(kSound, "</video>\n        </media>", "</media>\n        </video>")),
              with(kSound, "        </media>", "            </media>"));
}

TEST(Salvage, readsAMisspeltEndTagAsTheOneThatIsMissing) {
    EXPECT_EQ(copyOf(with(kSound, "</timebase>", "</timbease>")), kSound);
}

TEST(Salvage, readsAMisspeltStartTagAsTheOneThatIsClosed) {
    EXPECT_EQ(copyOf(with(kSound, "<timebase>", "<tinebase>")), kSound);
}

TEST(Salvage, takesOutTagsThatStandTwice) {
    EXPECT_EQ(copyOf(with(kSound, "</track>", "</track></track>")), kSound);
    EXPECT_EQ(
        copyOf(with(kSound, "            <video>\n", "            <video>\n            <video>\n")),
        kSound);
}

TEST(Salvage, endsATagWithoutItsGreaterThanInFrontOfTheNextOneOrOfText) {
    EXPECT_EQ(copyOf(with(kSound, "<rate>", "<rate")), kSound);
    EXPECT_EQ(copyOf(with(kSound, "<timebase>", "<timebase")), kSound);
    EXPECT_EQ(copyOf(with(kSound, "</rate>", "</rate")), kSound);
    EXPECT_EQ(copyOf(with(kFCPXML, "frameDuration=\"1/25s\"/>", "frameDuration=\"1/25s\"/")),
              kFCPXML);
}

TEST(Salvage, keepsOneOfTwoEqualAttributes) {
    EXPECT_EQ(copyOf(with(kSound, "id=\"c1\"", "id=\"c1\" id=\"c1\"")), kSound);
}

TEST(Salvage, keepsTheValueThatFitsItsAttributeAndReportsBoth) {
    const Salvage result = salvage(with(kFCPXML, "start=\"0s\"", "start=\"soon\" start=\"0s\""));
    ASSERT_THAT(result.copies, ElementsAre(std::string(kFCPXML)));
    EXPECT_THAT(rulesOf(result), ElementsAre("salvage-attribute-conflict"));
    EXPECT_THAT(result.report.findings.kept()[0].message(),
                HasSubstr("\"0s\" was kept and \"soon\" taken out"));
    EXPECT_EQ(copyOf(with(kSound, "id=\"c1\"", "id=\"c1\" id=\"x\"")), kSound);
}

TEST(Salvage, closesAValueInFrontOfTheNextAttribute) {
    EXPECT_EQ(copyOf(with(kFCPXML, "name=\"Boat\" start", "name=\"Boat start")), kFCPXML);
    EXPECT_EQ(copyOf(with(kFCPXML, "version=\"1.10\">", "version=\"1.10>")), kFCPXML);
    EXPECT_EQ(copyOf(with(kFCPXML, "name=\"Boat\"", "name=Boat\"")), kFCPXML);
}

TEST(Salvage, closesACommentWithItsLine) {
    EXPECT_EQ(copyOf(with(kSound, "    <sequence", "    <!-- cut 3\n    <sequence")),
              with(kSound, "    <sequence", "    <!-- cut 3-->\n    <sequence"));
}

TEST(Salvage, takesOutAStrayEndTagBehindTheRootAndKeepsTextAsAComment) {
    EXPECT_EQ(copyOf(std::string(kSound) + "</track>\n"), kSound);
    EXPECT_EQ(copyOf(std::string(kSound) + "by -- hand"),
              std::string(kSound) + "<!-- by - - hand -->");
}

TEST(Salvage, makesASecondRootACopyOfItsOwn) {
    const Salvage result = salvage(std::string(kSound) + std::string(kSound));
    ASSERT_THAT(result.copies, SizeIs(2));
    for (const std::string& copy : result.copies) {
        EXPECT_FALSE(readXML(copy, XMLMode::strict).fault);
        EXPECT_THAT(copy, HasSubstr("Lake"));
    }
}

TEST(Salvage, closesWhatIsOpenWhereAFileWasCutOff) {
    const std::string text(kSound);
    const Salvage result = salvage(text.substr(0, text.find("<start>9") + 3));
    ASSERT_THAT(result.copies, SizeIs(1));
    EXPECT_THAT(result.copies[0],
                HasSubstr("<name>Lake</name>\n                    <rate>\n            "
                          "<timebase>25</timebase>\n            "
                          "<ntsc>FALSE</ntsc>\n        </rate></clipitem>\n"
                          "                </track>\n            </video>\n"));
    EXPECT_THAT(rulesOf(result), ::testing::UnorderedElementsAre(
                                     "salvage-cut-tag", "salvage-cut-off", "salvage-part-added"));
}

TEST(Salvage, putsASpineIntoASequenceThatWasCutOffInFrontOfIt) {
    const std::string text(kFCPXML);
    const Salvage result = salvage(text.substr(0, text.find("            <spine>")));
    ASSERT_THAT(result.copies, SizeIs(1));
    EXPECT_THAT(result.copies[0], HasSubstr("<spine/></sequence>"));
    EXPECT_EQ(result.report.findings.count("salvage-part-added"_rule), 1U);
}

TEST(Salvage, putsASequenceOfTheOnlyFormatIntoAProjectThatWasCutOffInFrontOfIt) {
    const std::string text(kFCPXML);
    const std::size_t cut = text.find("        <sequence");
    EXPECT_THAT(copyOf(text.substr(0, cut)),
                HasSubstr("<sequence format=\"r1\"><spine/></sequence></project>"));
    const std::string two = with(kFCPXML, "    </resources>", "<format id=\"r3\"/></resources>");
    EXPECT_THAT(copyOf(two.substr(0, two.find("        <sequence"))),
                HasSubstr("<project name=\"Day 1\"></project>"));
}

TEST(Salvage, derivesNameLengthAndOutOfAClipItemFromItsFileAndItsPlace) {
    const std::string text = with(kSound, "<name>Boat</name>",
                                  "<file id=\"f1\"><name>Boat</name><duration>80</duration></file>"
                                  "<end>9</end><in>3</in><ou");
    const std::string copy = copyOf(text.substr(0, text.find("<ou") + 3));
    EXPECT_THAT(copy, HasSubstr("<name>Boat</name><duration>80</duration></clipitem>"));
    const std::string other =
        with(kSound, "<start>9</start>", "<start>9</start><end>12</end><in>3</in><file id=\"f1\">");
    EXPECT_THAT(copyOf(other.substr(0, other.find("<in>3</in>") + 11)),
                HasSubstr("<out>6</out></clipitem>"));
}

TEST(Salvage, givesARateThatWasCutOffTheTimebaseAroundIt) {
    const std::string text = with(kSound, "<start>9</start>", "<rate>");
    EXPECT_THAT(copyOf(text.substr(0, text.rfind("<rate>") + 6)),
                HasSubstr("<rate><timebase>25</timebase></rate>\n                    </clipitem>"));
}

TEST(Salvage, derivesTheLengthOfASequenceFromItsLastClipItem) {
    const std::string text = with(with(kSound, "<start>0</start>", "<start>0</start><end>9</end>"),
                                  "<start>9</start>", "<start>9</start><end>20</end>");
    EXPECT_THAT(copyOf(text.substr(0, text.find("                </track>"))),
                HasSubstr("<duration>20</duration></sequence>"));
}

TEST(Salvage, derivesTheRateAndTheEndOfAClipItemThatWasCutOff) {
    const Salvage result =
        salvage(with(kSound, "<start>9</start>", "<start>9</start><in>2</in><out>7</out><fi")
                    .substr(0, kSound.find("<start>9") + 40));
    ASSERT_THAT(result.copies, SizeIs(1));
    EXPECT_THAT(result.copies[0], HasSubstr("<end>14</end></clipitem>"));
    EXPECT_THAT(result.copies[0], HasSubstr("<timebase>25</timebase>\n            "
                                            "<ntsc>FALSE</ntsc>\n        </rate><end>"));
}

TEST(Salvage, reportsReferencesThatLostTheirTargetAndKeepsThem) {
    const Salvage result = salvage(with(
        kFCPXML, "<asset id=\"r2\" name=\"Boat\" start=\"0s\" duration=\"9s\" format=\"r1\">", ""));
    ASSERT_THAT(result.copies, SizeIs(1));
    EXPECT_THAT(result.copies[0], HasSubstr("<asset-clip ref=\"r2\" offset=\"9s\""));
    EXPECT_EQ(result.report.findings.count("salvage-reference-lost"_rule), 2U);
}

TEST(Salvage, reportsReferencesToAFileWhoseStartTagIsLost) {
    const std::string text =
        with(with(kSound, "<start>9</start>", "<file id=\"f1\"/>"), "<start>0</start>",
             "<file id=\"f1\"><name>Boat</name>\n<pathurl>file:///Boat</pathurl></file>");
    const Salvage result = salvage(with(text, "<file id=\"f1\"><name>", "<name>"));
    ASSERT_THAT(result.copies, SizeIs(1));
    EXPECT_THAT(result.copies[0], HasSubstr("<file id=\"f1\"/>"));
    ASSERT_EQ(result.report.findings.count("salvage-reference-lost"_rule), 1U);
    const Finding& finding = result.report.findings.kept().back();
    EXPECT_EQ(result.copies[0].substr(finding.inCopy->offset, 6), "<file ");
    EXPECT_EQ(finding.where.line, 19U);
}

TEST(Salvage, opensARootWhoseTagASlashEndedTooEarly) {
    for (const std::string_view whole : {kSound, kFCPXML}) {
        const std::size_t from = whole.find("ml version=\"", 20);
        const std::size_t name = whole.rfind('<', from) + 1;
        const std::size_t end = whole.find('>', from);
        for (const std::string_view other : {"/", " /", "/>", " />"}) {
            EXPECT_EQ(copyOf(std::string(whole).replace(end, 1, other)),
                      std::string(whole).insert(end, other.substr(0, other.find('/'))));
        }
        EXPECT_EQ(copyOf(std::string(whole).insert(name, "/")), whole);
    }
}

TEST(Salvage, takesAnEmptyRootInFrontOfAnotherOneForADocumentOfItsOwn) {
    for (const char* const root : {"<xmeml version=\"5\"/>", "<xmeml version=\"5\"/"}) {
        const Salvage result = salvage(root + std::string(kSound.substr(22)));
        ASSERT_THAT(result.copies, SizeIs(2)) << result.refusal;
        EXPECT_EQ(result.copies[0], "<xmeml version=\"5\"/>");
        EXPECT_THAT(result.copies[1], HasSubstr("Lake"));
    }
    EXPECT_THAT(salvage("<xmeml/<xmeml/" + std::string(kSound.substr(42))).copies, SizeIs(2));
}

TEST(Salvage, makesACopyWhateverIsWrongInFrontOfTheRoot) {
    for (const std::string_view whole : {kSound, kFCPXML}) {
        const std::size_t head = whole.find('>', whole.find("ml version=\"", 20)) + 1;
        for (std::size_t at = 0; at < head; ++at) {
            for (const char* const other : {"", "<", ">", "\"", "x", " ", "?", "--", "&"}) {
                for (const std::size_t length : {0U, 1U, 5U}) {
                    const std::string text = std::string(whole).replace(at, length, other);
                    const Salvage result = salvage(text);
                    EXPECT_EQ(result.refusal, "") << text.substr(0, head + 10);
                    EXPECT_TRUE(result.isSound || !result.copies.empty())
                        << text.substr(0, head + 10);
                }
            }
        }
    }
}

TEST(Salvage, makesACopyWhereverAFileIsCutOff) {
    for (const std::string_view whole : {kSound, kFCPXML}) {
        const std::size_t root = whole.find('>', whole.find("ml version=\"", 20)) + 1;
        for (std::size_t length = root; length < whole.size() - 2; ++length) {
            const Salvage result = salvage(std::string(whole.substr(0, length)));
            ASSERT_THAT(result.copies, SizeIs(1)) << length << " " << result.refusal;
            ASSERT_FALSE(readXML(result.copies[0], XMLMode::strict).fault) << length;
        }
    }
}

TEST(Salvage, makesAWellFormedCopyWithoutAnySingleByteOfTheRootsContent) {
    for (const std::string_view whole : {kSound, kFCPXML}) {
        for (std::size_t at = whole.find('>', whole.find("ml version=\"", 20)) + 1;
             at < whole.size(); ++at) {
            const std::string text = std::string(whole).erase(at, 1);
            const Salvage result = salvage(text);
            if (result.isSound) {
                continue;
            }
            ASSERT_EQ(result.refusal, "") << at << text;
            for (const std::string& copy : result.copies) {
                ASSERT_FALSE(readXML(copy, XMLMode::strict).fault) << at;
            }
        }
    }
}

TEST(Salvage, reportsPlacesInTheFileAndInTheCopy) {
    const Salvage result = salvage(with(kSound, "        </rate>\n", ""));
    ASSERT_THAT(rulesOf(result), ElementsAre("salvage-end-tag-lost"));
    const Finding& finding = result.report.findings.kept()[0];
    EXPECT_EQ(finding.message(), "<rate> was never closed; </rate> was put here");
    EXPECT_EQ(finding.where.line, 7U);
    EXPECT_EQ(finding.where.column, 31U);
    EXPECT_EQ(finding.where.path, "/xmeml[1]/sequence[1]/rate[1]");
    ASSERT_TRUE(finding.inCopy);
    EXPECT_EQ(result.copies[0].substr(finding.inCopy->offset, 16), "\n        </rate>");
}

TEST(Salvage, mendsFaultsInsideALineAsWellWithTheirPlaces) {
    const std::string text = with(with(kSound, "</rate>", ""), "Lake", "Lake & Sea");
    const Salvage result = salvage(text);
    ASSERT_THAT(rulesOf(result), ElementsAre("salvage-end-tag-lost", "xml-stray-ampersand"));
    const Finding& finding = result.report.findings.kept()[1];
    EXPECT_EQ(finding.where.offset, text.find('&'));
    EXPECT_EQ(result.copies[0].substr(finding.inCopy->offset, 5), "&amp;");
}

TEST(Salvage, refusesWhatIsNoProject) {
    for (const char* text : {"", "hello", "<html><body>",
                             "\x7F"
                             "ELF\x02\x01",
                             "<<<<"}) {
        const Salvage result = salvage(text);
        EXPECT_THAT(result.refusal, HasSubstr("looks like a Final Cut Pro project")) << text;
        EXPECT_THAT(result.copies, IsEmpty());
    }
}

TEST(Salvage, countsEveryGuessAndKeepsTheFirstOnes) {
    std::string text(kSound);
    for (int i = 0; i < 5000; ++i) {
        text += "</track>\n";
    }
    const Salvage result = salvage(std::move(text));
    EXPECT_EQ(result.report.findings.count("salvage-end-tag-stray"_rule), 5000U);
    EXPECT_THAT(result.report.findings.kept(), SizeIs(100));
    EXPECT_THAT(result.copies, ElementsAre(std::string(kSound)));
}

// Each of these took minutes or more memory than there is, were anything but linear.
TEST(Salvage, takesHostileTextsInLinearTime) {
    constexpr int kMany = 100000;
    for (const std::string part : {"</a>", "<bin>", "<bin></clip>", "<!--", "<![CDATA[", "<?a ",
                                   "<a b=\"", "<a ", "<bin></bin></bin>", "<", "&", "]]>"}) {
        std::string text = "<xmeml version=\"5\">";
        for (int i = 0; i < kMany; ++i) {
            text += part;
        }
        const Salvage result = salvage(std::move(text));
        EXPECT_TRUE(!result.refusal.empty() || result.copies.size() == 1) << part;
    }
}

}  // namespace vornic::salvage
