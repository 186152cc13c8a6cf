#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "check/Check.h"
#include "report/RuleTable.h"

namespace vornic {

namespace {

using Strings = std::vector<std::string>;

const std::string kHead = "<fcpxml version=\"1.10\"><resources>";
const std::string kResources =
    "<format id=\"r1\" frameDuration=\"1/25s\"/>"
    "<asset id=\"r2\" name=\"Day 1\" hasVideo=\"1\" hasAudio=\"1\" format=\"r1\" duration=\"60s\">"
    "<media-rep src=\"file:///a.mov\"/></asset><effect id=\"r3\" uid=\"t\"/></resources>"
    "<project name=\"Cut\"><sequence format=\"r1\">";
const std::string kFoot = "</sequence></project></fcpxml>";

std::string withSpine(const std::string& items) {
    return kHead + kResources + "<spine>" + items + "</spine>" + kFoot;
}

std::string gap(const std::string& offset, const std::string& duration) {
    return "<gap name=\"at " + offset + "\" offset=\"" + offset + "\" duration=\"" + duration +
           "\"/>";
}

// Rules with what they name, notes left out.
Strings rulesOf(const std::string& text) {
    Strings rules;
    const Report report = checkFile(text, {});
    for (const Finding& finding : report.findings.kept()) {
        if (finding.severity != Severity::info) {
            rules.emplace_back(ruleOf(finding.rule).id);
        }
    }
    return rules;
}

Finding onlyFinding(const std::string& text, const CheckOptions& options = {}) {
    const Report report = checkFile(text, options);
    EXPECT_EQ(report.findings.kept().size(), 1U);
    return report.findings.kept().empty() ? Finding() : report.findings.kept().front();
}

// The text with the finding's mend made.
std::string mended(std::string text) {
    const Finding finding = onlyFinding(text);
    EXPECT_TRUE(finding.mend.has_value());
    if (finding.mend) {
        for (auto edit = finding.mend->edits.rbegin(); edit != finding.mend->edits.rend(); ++edit) {
            text.replace(edit->offset, edit->length, edit->text);
        }
    }
    return text;
}

}  // namespace

TEST(FCPXMLRules, runEveryGroup) {
    const Report report = checkFile(withSpine(gap("0s", "5s")), {});
    for (const GroupRun& run : report.groups) {
        const bool isLater = run.group == RuleGroup::characters || run.group == RuleGroup::media;
        EXPECT_TRUE(run.ran || isLater) << nameOf(run.group);
    }
    EXPECT_TRUE(report.findings.kept().empty());
}

TEST(FCPXMLTiming, reportsAnItemThatStandsWrongOnce) {
    EXPECT_EQ(rulesOf(withSpine(gap("0s", "5s") + gap("7s", "5s") + gap("10s", "5s"))),
              Strings{"timing-spine-hole"});
    EXPECT_EQ(rulesOf(withSpine(gap("0s", "5s") + gap("3s", "5s") + gap("10s", "5s"))),
              Strings{"timing-spine-overlap"});
    EXPECT_EQ(rulesOf(withSpine(gap("0s", "5s") + gap("7s", "5s") + gap("12s", "5s"))),
              Strings{"timing-spine-hole"});
}

TEST(FCPXMLTiming, roundsLengthsSoThatNothingElseMoves) {
    const auto item = [](const std::string& duration) {
        return withSpine(gap("0s", duration) + gap("5s", "5s"));
    };
    EXPECT_EQ(mended(item("551/110s")), item("125/25s"));
}

TEST(FCPXMLTiming, letsItemsStandInAnyOrder) {
    EXPECT_EQ(rulesOf(withSpine(gap("0s", "5s") + gap("9s", "5s") + gap("5s", "1s") +
                                gap("6s", "3s") + gap("14s", "5s"))),
              Strings());
    EXPECT_EQ(
        rulesOf(withSpine(gap("0s", "5s") + gap("9s", "5s") + gap("5s", "1s") + gap("14s", "5s"))),
        Strings{"timing-spine-hole"});
}

TEST(FCPXMLTiming, reportsALengthThatIsWrongOnce) {
    EXPECT_EQ(rulesOf(withSpine(gap("0s", "5s") + gap("5s", "50/11s") + gap("10s", "5s"))),
              Strings{"timing-off-frame-grid"});
    EXPECT_EQ(rulesOf(withSpine(gap("0s", "5s") + gap("5s", "0s") + gap("10s", "5s"))),
              Strings{"timing-no-duration"});
    EXPECT_EQ(rulesOf(withSpine(gap("0s", "5s") + gap("5s", "five") + gap("10s", "5s"))),
              Strings{"timing-malformed-time"});
    EXPECT_EQ(rulesOf(withSpine(gap("0s", "5s") + gap("551/110s", "5s") + gap("10s", "5s"))),
              Strings{"timing-off-frame-grid"});
}

TEST(FCPXMLTiming, letsItemsWithoutAnOffsetFollowEachOther) {
    EXPECT_EQ(rulesOf(withSpine("<gap duration=\"5s\"/><gap duration=\"5s\"/>" + gap("10s", "5s"))),
              Strings());
    EXPECT_EQ(rulesOf(withSpine("<gap duration=\"5s\"/><gap duration=\"5s\"/>" + gap("11s", "5s"))),
              Strings{"timing-spine-hole"});
}

TEST(FCPXMLTiming, measuresAuditionsByTheirFirstClip) {
    const std::string audition =
        "<audition offset=\"5s\"><asset-clip ref=\"r2\" duration=\"5s\"/><asset-clip ref=\"r2\" "
        "duration=\"9s\"/></audition>";
    EXPECT_EQ(rulesOf(withSpine(gap("0s", "5s") + audition + gap("10s", "5s"))), Strings());
    EXPECT_EQ(rulesOf(withSpine(gap("0s", "5s") + audition + gap("14s", "5s"))),
              Strings{"timing-spine-hole"});
}

TEST(FCPXMLTiming, measuresAssetClipsWithoutADurationByTheirAsset) {
    const std::string clip = "<asset-clip ref=\"r2\" offset=\"0s\"/>";
    EXPECT_EQ(rulesOf(withSpine(clip + gap("60s", "5s"))), Strings());
    EXPECT_EQ(rulesOf(withSpine(clip + gap("70s", "5s"))), Strings{"timing-spine-hole"});
}

TEST(FCPXMLTiming, looksIntoConnectedStorylines) {
    const auto storyline = [](const std::string& items) {
        return withSpine("<gap offset=\"0s\" duration=\"20s\"><spine lane=\"1\" offset=\"2s\">" +
                         items + "</spine></gap>");
    };
    EXPECT_EQ(rulesOf(storyline(gap("0s", "5s") + gap("5s", "5s"))), Strings());
    EXPECT_EQ(rulesOf(storyline(gap("0s", "5s") + gap("6s", "5s"))), Strings{"timing-spine-hole"});
    EXPECT_EQ(rulesOf(storyline(gap("0s", "51/11s"))), Strings{"timing-off-frame-grid"});
}

TEST(FCPXMLTiming, saysWhereAndHowLongInFrames) {
    const Finding finding = onlyFinding(withSpine(gap("0s", "5s") + gap("7s", "5s")));
    EXPECT_EQ(
        finding.message(),
        "a hole of 50 frames is in front of <gap> \"at 7s\"; its offset should be 125/25s, or "
        "a <gap> should fill the hole");
    EXPECT_EQ(finding.where.timecode, "00:00:07:00");
    EXPECT_EQ(finding.where.name, "at 7s");
}

TEST(FCPXMLTiming, measuresASequenceByAllThatIsSeenInIt) {
    const auto sequence = [](const std::string& duration) {
        std::string text = withSpine(
            "<gap offset=\"0s\" duration=\"5s\"><title ref=\"r3\" lane=\"1\" offset=\"4s\" "
            "duration=\"4s\"/></gap>");
        return text.replace(text.find("<sequence"), 9, "<sequence duration=\"" + duration + "\"");
    };
    EXPECT_EQ(rulesOf(sequence("8s")), Strings());
    EXPECT_EQ(rulesOf(sequence("201/25s")), Strings());
    EXPECT_EQ(rulesOf(sequence("202/25s")), Strings{"timing-sequence-duration"});
    EXPECT_EQ(rulesOf(sequence("5s")), Strings{"timing-sequence-duration"});
    EXPECT_EQ(rulesOf(mended(sequence("5s"))), Strings());
}

TEST(FCPXMLTiming, judgesNoSequenceThatEndsEarly) {
    std::string text = withSpine(gap("0s", "5s"));
    text.replace(text.find("<sequence"), 9, "<sequence duration=\"50s\"");
    EXPECT_EQ(rulesOf(text), Strings{"timing-sequence-duration"});
    text.resize(text.find("</spine>"));
    EXPECT_EQ(rulesOf(text), Strings{"xml-unclosed-element"});
}

TEST(FCPXMLTiming, allowsStillsAnyLength) {
    const std::string still =
        kHead +
        "<format id=\"r4\" name=\"FFVideoFormatRateUndefined\"/><asset id=\"r5\" "
        "hasVideo=\"1\" format=\"r4\" duration=\"0s\"><media-rep src=\"file:///a.png\"/>"
        "</asset>" +
        kResources + "<spine><video ref=\"r5\" offset=\"0s\" start=\"3600s\" duration=\"90s\"/>" +
        "</spine>" + kFoot;
    EXPECT_EQ(rulesOf(still), Strings());
}

TEST(FCPXMLTiming, forgivesMediaLessThanAFrame) {
    const auto clip = [](const std::string& duration) {
        return withSpine(
            "<gap offset=\"0s\" duration=\"100s\"><asset-clip ref=\"r2\" lane=\"1\" "
            "offset=\"0s\" duration=\"" +
            duration + "\"/></gap>");
    };
    EXPECT_EQ(rulesOf(clip("1500999/25000s")), Strings());
    EXPECT_EQ(rulesOf(clip("1501/25s")), Strings{"timing-clip-beyond-media"});
}

TEST(FCPXMLTiming, writesDecimalsAsFractions) {
    const auto marked = [](const std::string& start) {
        return withSpine("<gap offset=\"0s\" duration=\"5s\"><marker value=\"Beat\" start=\"" +
                         start + "\"/></gap>");
    };
    EXPECT_FALSE(onlyFinding(withSpine(gap("0s", "2.5s"))).mend.has_value());
    EXPECT_EQ(mended(marked("1.50s")), marked("15/10s"));
    EXPECT_EQ(mended(marked("-0.04s")), marked("-4/100s"));
    EXPECT_EQ(mended(marked("2.0s")), marked("2s"));
    EXPECT_FALSE(onlyFinding(marked("1.5")).mend.has_value());
    EXPECT_EQ(onlyFinding(marked("1.5s")).message(),
              "start of <marker> \"Beat\" is \"1.5s\"; it should be a time such as 5s or "
              "1001/24000s");
}

TEST(FCPXMLTiming, readsWhatIsNoTimeAsNone) {
    std::string text = withSpine(gap("0s", "5s"));
    text.replace(text.find("1.10"), 4, "1.4");
    text.replace(text.find("<gap"), 4, "<gap note=\"x\"");
    const Report report = checkFile(text, {});
    for (const Finding& finding : report.findings.kept()) {
        EXPECT_NE(ruleOf(finding.rule).group, RuleGroup::timing) << finding.message();
    }
    std::string cdl = withSpine(
        "<clip offset=\"0s\" duration=\"5s\"><info-asc-cdl "
        "offset=\"0.1 0.1 0.1\"/></clip>");
    cdl.replace(cdl.find("1.10"), 4, "1.1");
    const Report ofGrading = checkFile(cdl, {});
    for (const Finding& finding : ofGrading.findings.kept()) {
        EXPECT_NE(ruleOf(finding.rule).group, RuleGroup::timing) << finding.message();
    }
}

TEST(FCPXMLTiming, takesNoMoreMemoryForClipsThatLieDeep) {
    std::string text = withSpine("");
    std::string clips;
    constexpr int kDepth = 5000;
    for (int i = 0; i < kDepth; ++i) {
        clips += "<clip lane=\"1\" offset=\"0s\" duration=\"x\">";
    }
    for (int i = 0; i < kDepth; ++i) {
        clips += "</clip>";
    }
    text.replace(text.find("<spine>"), 7, "<spine>" + clips);
    EXPECT_EQ(checkFile(text, {}).findings.count("timing-malformed-time"_rule), kDepth);
}

TEST(FCPXMLReferences, areFollowedWhereNoDefinitionIsKnown) {
    std::string text = withSpine("<asset-clip ref=\"r9\" offset=\"0s\" duration=\"5s\"/>");
    EXPECT_EQ(rulesOf(text), Strings{"structure-dangling-reference"});
    text.replace(text.find("1.10"), 4, "1.99");
    EXPECT_EQ(rulesOf(text), (Strings{"versions-unknown", "references-dangling"}));
}

TEST(FCPXMLReferences, mayLeadToThemselves) {
    std::string text = withSpine("<asset-clip ref=\"r2\" offset=\"0s\" duration=\"5s\"/>");
    text.replace(text.find("format=\"r1\""), 11, "format=\"r2\"");
    EXPECT_EQ(rulesOf(text), Strings{"references-wrong-kind"});
}

TEST(FCPXMLValues, canBeMendedWhereNothingIsGuessed) {
    const auto withSource = [](const std::string& source) {
        std::string text = withSpine(gap("0s", "5s"));
        return text.replace(text.find("file:///a.mov"), 13, source);
    };
    EXPECT_EQ(mended(withSource("file:///a b.mov")), withSource("file:///a%20b.mov"));
    EXPECT_EQ(mended(withSource("file:///a &amp; b.mov")), withSource("file:///a%20&amp;%20b.mov"));
    // What needs no change stays as it is written.
    EXPECT_EQ(mended(withSource("file:///Anna's b.mov")), withSource("file:///Anna's%20b.mov"));
    const Report report = checkFile(withSource("file:///a b.mov"), {});
    ASSERT_EQ(report.findings.kept().size(), 1U);
    EXPECT_EQ(report.findings.kept().front().mend->edits,
              (std::vector<Edit>{{withSource("file:///a b.mov").find(" b.mov"), 1, "%20"}}));
    EXPECT_EQ(mended(withSource("/a b.mov")), withSource("file:///a%20b.mov"));
    EXPECT_EQ(mended(withSource("C:\\a\\b.mov")), withSource("file:///C:/a/b.mov"));
    EXPECT_FALSE(onlyFinding(withSource("b.mov")).mend.has_value());
    EXPECT_FALSE(onlyFinding(withSource("/a/b")).mend.has_value());
}

TEST(FCPXMLValues, weighLessWhereProgramsMayReadThem) {
    std::string text = withSpine(gap("0s", "5s"));
    text.replace(text.find("file:///a.mov"), 13, "file:///\xC3\xA9.mov");
    EXPECT_EQ(onlyFinding(text).severity, Severity::warning);
    text.replace(text.find("\xC3\xA9.mov"), 2, " ");
    EXPECT_EQ(onlyFinding(text).severity, Severity::error);
    const auto dated = [](const std::string& date) {
        std::string project = withSpine(gap("0s", "5s"));
        return project.replace(project.find("<project"), 8,
                               "<project modDate=\"2024-05-31 18:30:00 " + date + "\"");
    };
    EXPECT_EQ(onlyFinding(dated("CEST")).severity, Severity::error);
    EXPECT_EQ(onlyFinding(dated("+02:00")).severity, Severity::warning);
}

TEST(FCPXMLValues, reportDatesWithTheNamesOfZones) {
    const auto dated = [](const std::string& date) {
        std::string text = withSpine(gap("0s", "5s"));
        return text.replace(text.find("<project"), 8, "<project" + date);
    };
    EXPECT_EQ(rulesOf(dated(" modDate=\"2024-05-31 18:30:00 -0730\"")), Strings());
    for (const char* const date :
         {"2024-05-31 18:30:00", "2024-05-31T18:30:00Z", "2024-05-31 18:30:00 +02:00",
          "2024-05-31 18:30:00 CEST", "2024-05-31 24:30:00 +0200", "2024-00-31 18:30:00 +0200", "",
          "31.5.2024"}) {
        EXPECT_EQ(rulesOf(dated(" modDate=\"" + std::string(date) + "\"")),
                  Strings{"values-mod-date"})
            << date;
    }
    EXPECT_EQ(mended(dated(" modDate=\"2024-05-31 18:30:00 GMT\"")),
              dated(" modDate=\"2024-05-31 18:30:00 +0000\""));
    EXPECT_EQ(mended(dated(" modDate=\"2024-05-31 18:30:00 Nowhere\"")), dated(""));
}

TEST(FCPXMLValues, writeTheOffsetThatTheSystemsZonesTell) {
    if (!std::filesystem::exists("/usr/share/zoneinfo/America/St_Johns")) {
        GTEST_SKIP() << "the system has no zone data";
    }
    const auto dated = [](const std::string& date) {
        std::string text = withSpine(gap("0s", "5s"));
        return text.replace(text.find("<project"), 8, "<project modDate=\"" + date + "\"");
    };
    for (const auto& [zone, offset] : std::map<std::string, std::string>{
             {"2024-05-31 18:30:00 CEST", "2024-05-31 18:30:00 +0200"},
             {"2024-05-31 18:30:00 Europe/Berlin", "2024-05-31 18:30:00 +0200"},
             {"2024-01-31 18:30:00 America/St_Johns", "2024-01-31 18:30:00 -0330"}}) {
        const Report report = checkFile(dated(zone), {});
        ASSERT_EQ(report.findings.kept().size(), 1U);
        EXPECT_EQ(report.findings.kept().front().mend->confidence, Confidence::safe) << zone;
        EXPECT_EQ(mended(dated(zone)), dated(offset));
    }
    for (const char* const unclear :
         {"2024-01-31 18:30:00 CST", "2024-10-27 02:30:00 Europe/Berlin"}) {
        const Report report = checkFile(dated(unclear), {});
        EXPECT_EQ(report.findings.kept().front().mend->confidence, Confidence::ask) << unclear;
    }
}

TEST(FCPXMLVersions, reportWhatAReceiverDoesNotRead) {
    CheckOptions options;
    options.reads = "1.8";
    Strings rules;
    const Report report = checkFile(withSpine(gap("0s", "5s")), options);
    for (const Finding& finding : report.findings.kept()) {
        rules.push_back(std::string(ruleOf(finding.rule).id) + ": " + finding.message());
    }
    EXPECT_EQ(rules, (Strings{"versions-newer-than-receiver: the file declares version 1.10; for a "
                              "receiver that reads up to 1.8 it should be 1.8 or lower",
                              "versions-unread-element: <media-rep> in <asset> is not read before "
                              "FCPXML 1.9, and the receiver reads up to 1.8; it should go, or "
                              "become what that version has for it"}));
    options.reads = "1.10";
    EXPECT_TRUE(checkFile(withSpine(gap("0s", "5s")), options).findings.kept().empty());
    options.reads = "1.14";
    EXPECT_TRUE(checkFile(withSpine(gap("0s", "5s")), options).findings.kept().empty());
    options.reads = "5";
    EXPECT_TRUE(checkFile(withSpine(gap("0s", "5s")), options).findings.kept().empty());
}

}  // namespace vornic
