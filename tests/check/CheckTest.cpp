#include <algorithm>
#include <string>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include "check/Check.h"
#include "report/RuleTable.h"

namespace vornic {

namespace {

using EditList = std::vector<Edit>;
using Strings = std::vector<std::string>;

Strings rulesOf(const Report& report) {
    Strings rules;
    for (const Finding& finding : report.findings.kept()) {
        rules.emplace_back(ruleOf(finding.rule).id);
    }
    return rules;
}

bool ran(const Report& report, RuleGroup group) {
    const auto found = std::find_if(report.groups.begin(), report.groups.end(),
                                    [group](const GroupRun& run) { return run.group == group; });
    return found != report.groups.end() && found->ran;
}

std::string whyNot(const Report& report, RuleGroup group) {
    const auto found = std::find_if(report.groups.begin(), report.groups.end(),
                                    [group](const GroupRun& run) { return run.group == group; });
    return found == report.groups.end() ? "not listed" : found->why;
}

const std::string kSound =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE fcpxml>\n<fcpxml version=\"1.10\">\n"
    "    <resources>\n        <format id=\"r1\" frameDuration=\"1/25s\"/>\n    </resources>\n"
    "</fcpxml>\n";

// The report's findings by rule and place, with their messages.
Strings toldBy(const Report& report) {
    Strings told;
    for (const Finding& finding : report.findings.kept()) {
        told.push_back(std::string(ruleOf(finding.rule).id) + " " +
                       std::to_string(finding.where.line) + ": " + finding.message());
    }
    return told;
}

// Text that is long enough for two threads.
std::string repeated(const std::string& part, const std::string& before, const std::string& after) {
    constexpr std::size_t kLength = 1'200'000;
    std::string text = before;
    while (text.size() < kLength) {
        text += part;
    }
    return text + after;
}

}  // namespace

TEST(Check, saysTheSameOnTwoThreads) {
    const std::string xmeml =
        repeated("<clipitem id=\"c\"><file id=\"f\"/><start>9</start><end>3</end></clipitem>\n",
                 "<xmeml version=\"5\"><sequence><media><video><track>\n",
                 "</track></video></media></sequence></xmeml>\n");
    const std::string fcpxml =
        repeated("<asset-clip ref=\"r9\" offset=\"x\" duration=\"-1s\" start=\"1/7s\"/>\n",
                 "<fcpxml version=\"1.10\"><resources><format id=\"r1\" "
                 "frameDuration=\"1/25s\"/></resources>"
                 "<project><sequence format=\"r1\"><spine>\n",
                 "</spine></sequence></project></fcpxml>\n");
    for (const std::string& text : {xmeml, fcpxml}) {
        const Report one = checkFile(text, {});
        const Report two = checkFile(text, {.usesThreads = true});
        EXPECT_FALSE(toldBy(one).empty());
        EXPECT_EQ(toldBy(one), toldBy(two));
        for (const Severity severity : {Severity::error, Severity::warning, Severity::info}) {
            EXPECT_EQ(one.findings.count(severity), two.findings.count(severity));
        }
    }
}

TEST(Check, findsNothingInASoundFile) {
    const Report report = checkFile(kSound, {});
    EXPECT_EQ(rulesOf(report), Strings());
    EXPECT_EQ(report.kind, "fcpxml");
    EXPECT_EQ(report.version, "1.10");
    EXPECT_EQ(report.encoding, "UTF-8");
    EXPECT_EQ(report.bytes, kSound.size());
    EXPECT_EQ(report.definition, "fcpxml 1.10");
    EXPECT_EQ(report.valid, true);
    EXPECT_TRUE(ran(report, RuleGroup::xml));
    EXPECT_TRUE(ran(report, RuleGroup::structure));
    EXPECT_EQ(whyNot(report, RuleGroup::media), "not asked for");
}

TEST(Check, namesEachGroupOnceInTheirOrder) {
    for (const std::string& text : {kSound, std::string("<xmeml version=\"5\"/>"),
                                    std::string("no XML"), std::string("\xFF\xFE\x00", 3)}) {
        const Report report = checkFile(text, {});
        ASSERT_EQ(report.groups.size(), kCheckedGroups.size());
        for (std::size_t i = 0; i < kCheckedGroups.size(); ++i) {
            EXPECT_EQ(report.groups[i].group, kCheckedGroups[i]);
            EXPECT_EQ(report.groups[i].ran, report.groups[i].why.empty());
        }
    }
}

TEST(Check, reportsThePlaceInTheFileAndWhatIsAroundIt) {
    std::string text = kSound;
    text.replace(text.find("format id"), 6, "fromat");
    const Report report = checkFile("\xEF\xBB\xBF" + text, {});
    ASSERT_EQ(rulesOf(report), Strings{"structure-unknown-element"});
    const Place& place = report.findings.kept()[0].where;
    EXPECT_EQ(place.line, 5U);
    EXPECT_EQ(place.column, 9U);
    EXPECT_EQ(place.offset, 3 + text.find("<fromat"));
    EXPECT_EQ(place.length, 7U);
    EXPECT_EQ(place.path, "/fcpxml[1]/resources[1]/fromat[1]");
    EXPECT_EQ(report.valid, false);
}

TEST(Check, judgesTheStructureBesideFaultsOfMarkup) {
    std::string text = kSound;
    text.replace(text.find("1/25s"), 5, "1/25s & more");
    text.replace(text.find("format id"), 6, "fromat");
    const Report report = checkFile(text, {});
    EXPECT_EQ(rulesOf(report), (Strings{"structure-unknown-element", "xml-stray-ampersand"}));
    EXPECT_EQ(report.valid, false);
}

TEST(Check, judgesTheStructureOfAFileThatBeginsWithALongComment) {
    std::string text = kSound;
    text.insert(text.find("<fcpxml "), "<!--" + std::string(100'000, ' ') + "-->");
    EXPECT_EQ(checkFile(text, {}).valid, true);
    text.replace(text.find("format id"), 6, "fromat");
    const Report report = checkFile(text + "&", {});
    EXPECT_EQ(report.definition, "fcpxml 1.10");
    EXPECT_EQ(report.findings.count("structure-unknown-element"_rule), 1U);
    EXPECT_EQ(report.valid, false);
}

TEST(Check, takesAFileThatHadToBeMendedForInvalid) {
    std::string text = kSound;
    text.replace(text.find("1/25s"), 5, "1/25s\x01");
    CheckOptions options;
    options.ignored = {"xml-forbidden-character"_rule};
    EXPECT_EQ(checkFile(text, options).valid, false);
}

TEST(Check, givesNoVerdictWhereNoDefinitionIsKnown) {
    std::string text = kSound;
    text.replace(text.find("1.10"), 4, "1.15");
    Report report = checkFile(text, {});
    EXPECT_EQ(report.valid, std::nullopt);
    EXPECT_EQ(whyNot(report, RuleGroup::structure), "no definition of this version is known");
    EXPECT_EQ(whyNot(checkFile("<fcpxml/>", {}), RuleGroup::structure),
              "the file declares no version");
    EXPECT_EQ(whyNot(checkFile("<html/>", {}), RuleGroup::structure),
              "the file is neither XMEML nor FCPXML");
    EXPECT_EQ(checkFile("<xmeml version=\"5\"/>", {}).valid, std::nullopt);
}

TEST(Check, givesNoVerdictOnAFileWithDeclarationsOfItsOwn) {
    std::string text = kSound;
    text.replace(text.find("<!DOCTYPE fcpxml>"), 17, "<!DOCTYPE fcpxml [<!ELEMENT fcpxml ANY>]>");
    EXPECT_EQ(checkFile(text, {}).valid, std::nullopt);
    text = kSound;
    text.replace(text.find("<!DOCTYPE fcpxml>"), 17, "<!DOCTYPE fcpxml [<!ENTITY a \"b\">]>");
    EXPECT_EQ(checkFile(text, {}).valid, std::nullopt);
}

TEST(Check, keepsTheFirstOfEachRuleAndCountsAll) {
    std::string text = "<fcpxml version=\"1.10\"><resources>";
    for (int i = 0; i < 20; ++i) {
        text += "<fromat/>";
    }
    const Report report =
        checkFile(text + "</resources></fcpxml>", {.mostOfARule = 3, .ignored = {}, .reads = {}});
    EXPECT_EQ(report.findings.kept().size(), 3U);
    EXPECT_EQ(report.findings.count("structure-unknown-element"_rule), 20U);
    EXPECT_EQ(report.findings.count(Severity::error), 20U);
}

TEST(Check, leavesRulesOutWithoutTouchingTheVerdict) {
    std::string text = kSound;
    text.replace(text.find("format id"), 6, "fromat");
    const Report report = checkFile(
        text, {.mostOfARule = 100, .ignored = {"structure-unknown-element"_rule}, .reads = {}});
    EXPECT_EQ(rulesOf(report), Strings());
    EXPECT_EQ(report.valid, false);
}

TEST(Check, saysThatAGroupWasNotAskedForWhenAllOfItsRulesAreLeftOut) {
    CheckOptions options;
    for (std::size_t index = 0; index < kRuleCount; ++index) {
        if (kRuleTable[index].group == RuleGroup::timing) {
            options.ignored.push_back({static_cast<std::uint16_t>(index)});
        }
    }
    EXPECT_EQ(whyNot(checkFile(kSound, options), RuleGroup::timing), "not asked for");
    options.ignored.pop_back();
    EXPECT_TRUE(ran(checkFile(kSound, options), RuleGroup::timing));
}

TEST(Check, readsOtherEncodings) {
    const std::string head = "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>";
    const Report report =
        checkFile(head + "<fcpxml version=\"1.10\"><event name=\"\xE9\"/><bad/></fcpxml>", {});
    EXPECT_EQ(report.encoding, "ISO-8859-1");
    ASSERT_EQ(rulesOf(report), (Strings{"values-encoding", "structure-unknown-element"}));
    EXPECT_EQ(report.findings.kept()[1].where.offset, head.size() + 40);
}

TEST(Check, reportsBytesThatAreNoText) {
    const Report report = checkFile("<fcpxml version=\"1.10\">\n\xC3\x28</fcpxml>", {});
    ASSERT_EQ(report.findings.kept().size(), 1U);
    EXPECT_EQ(report.findings.kept()[0].where.line, 2U);
    EXPECT_EQ(report.findings.kept()[0].where.offset, 24U);
    EXPECT_EQ(report.findings.kept()[0].where.length, 1U);
    EXPECT_EQ(report.kind, "none");
}

TEST(Check, callsAFileInvalidWhoseEncodingParsersRefuse) {
    const std::string behind =
        "\"?><!DOCTYPE fcpxml><fcpxml version=\"1.10\"><resources/></fcpxml>";
    const std::string before = "<?xml version=\"1.0\" encoding=\"";
    EXPECT_EQ(checkFile(before + "UTF-16" + behind, {}).valid, false);
    EXPECT_EQ(checkFile(before + "UTF-8" + behind, {}).valid, true);
}

TEST(Check, saysWhatIsOpenWhereAFileEndsAndNothingOfATornTag) {
    const std::string text =
        "<fcpxml version=\"1.10\">\n<resources/>\n<library>\n<event name=\"Day\"><pro";
    EXPECT_EQ(toldBy(checkFile(text, {})),
              Strings{"xml-unclosed-element 4: the file ends in the middle of a tag before <event> "
                      "(line 4), <library> and <fcpxml> are closed; "
                      "</event></library></fcpxml> should stand at its end"});
    EXPECT_EQ(rulesOf(checkFile("<fcpxml version=\"1.10\"><resources/></fcpxml><even", {})),
              Strings{"xml-second-root-element"});
}

TEST(Check, placesAFaultThatEndsTheReadingInTheElementsThatAreOpen) {
    const Report report = checkFile(
        "<fcpxml version=\"1.10\"><resources/><event name=\"Day\"><clip name=\"A\" duration=\"1s\" "
        "duration=\"2s\"/></event></fcpxml>",
        {});
    ASSERT_EQ(rulesOf(report), Strings{"xml-repeated-attribute"});
    EXPECT_EQ(report.findings.kept()[0].where.path, "/fcpxml[1]/event[1]/clip[1]");
    EXPECT_EQ(report.findings.kept()[0].where.name, "A");
}

TEST(Check, saysThatTheRootWasNotReachedWhereReadingStopsBeforeIt) {
    const Report report = checkFile("Dear all, <fcpxml version=\"1.10\"/>", {});
    EXPECT_EQ(whyNot(report, RuleGroup::structure),
              "the file could not be read as far as its root element");
}

TEST(Check, reportsAnIdThatIsLostOrMalformedOnce) {
    const std::string before = "<fcpxml version=\"1.10\"><resources>";
    const std::string behind =
        "<asset id=\"r2\" name=\"A\" format=\"r1\"><media-rep kind=\"original-media\" "
        "src=\"file:///A.mov\"/></asset></resources></fcpxml>";
    EXPECT_EQ(rulesOf(checkFile(before + "<fromat id=\"r1\"/>" + behind, {})),
              Strings{"structure-unknown-element"});
    EXPECT_EQ(rulesOf(checkFile(before + "<format name=\"HD\"/>" + behind, {})),
              Strings{"structure-missing-attribute"});
    EXPECT_EQ(rulesOf(checkFile(before + behind, {})), Strings{"structure-dangling-reference"});
}

TEST(Check, reportsAPathOfALaterVersionOnce) {
    const Report report = checkFile(
        "<fcpxml version=\"1.8\"><resources><asset id=\"r1\" name=\"A\"><media-rep "
        "kind=\"original-media\" src=\"file:///A.mov\"/></asset></resources></fcpxml>",
        {});
    EXPECT_EQ(rulesOf(report), Strings{"structure-element-of-other-version"});
}

TEST(Check, callsElementsByTheirNamesWhereTheStructureIsWrong) {
    const auto told = [](const std::string& content) {
        return toldBy(checkFile("<fcpxml version=\"1.10\"><resources>" + content, {}));
    };
    const std::string end = "</resources></fcpxml>";
    EXPECT_EQ(told("<asset id=\"r1\" name=\"Harbour\"/>" + end),
              Strings{"structure-missing-element 1: <asset> \"Harbour\" lacks a part; <media-rep> "
                      "should stand in it"});
    EXPECT_EQ(told("<format id=\"r1\" colour=\"red\"/>" + end),
              Strings{"structure-unknown-attribute 1: <format> \"r1\" has no attribute colour; it "
                      "should go"});
    EXPECT_EQ(
        told("<format id=\"r1\" name=\"HD\"> </format>" + end),
        Strings{"structure-content-in-empty-element 1: <format> \"HD\" has content; it should "
                "be empty, even of white space and comments"});
    EXPECT_EQ(
        told("<format id=\"r2\"/><media id=\"r1\" name=\"Angles\"><multicam "
             "format=\"r2\"><mc-angle name=\"A\" "
             "angleID=\"1\"/><mc-angle name=\"B\" angleID=\"1\"/></multicam></media>" +
             end),
        Strings{"references-repeated-angle 1: the angle id \"1\" stands twice in the multicam "
                "of <media> \"Angles\"; each angle should have an id of its own"});
}

TEST(Check, namesTheKindOfProjectThatTheVersionHas) {
    const std::string resources =
        "<resources><format id=\"r1\" name=\"HD\"/><media id=\"r2\" name=\"M\" "
        "projectRef=\"r1\"/></resources>";
    const std::string now = "<fcpxml version=\"1.10\">" + resources + "</fcpxml>";
    const std::string once =
        "<fcpxml version=\"1.3\"><project>" + resources + "</project></fcpxml>";
    const std::string message =
        "references-wrong-kind 1: projectRef of <media> \"M\" is \"r1\", "
        "which is a <format>; it should name a ";
    EXPECT_EQ(toldBy(checkFile(now, {})).back(), message + "<project>");
    EXPECT_EQ(toldBy(checkFile(once, {})).back(), message + "<projectRef>");
}

TEST(Check, placesStandaloneInTheDeclaration) {
    const Report report = checkFile(
        "<?xml version=\"1.0\" standalone=\"yes\"?>\n<fcpxml version=\"1.10\">\n<resources/>\n"
        "</fcpxml>",
        {});
    ASSERT_EQ(rulesOf(report), Strings{"values-standalone"});
    const Place& place = report.findings.kept()[0].where;
    EXPECT_EQ(place.line, 1U);
    EXPECT_EQ(place.column, 21U);
    EXPECT_EQ(place.length, std::string_view("standalone=\"yes\"").size());
}

TEST(Check, namesCharactersThatMayNotStandInAFile) {
    EXPECT_EQ(toldBy(checkFile("<xmeml version=\"5\"><bin><name>a\xEF\xBF\xBF</name><children/>"
                               "</bin></xmeml>",
                               {})),
              Strings{"xml-forbidden-character 1: the character U+FFFF stands here, which XML does "
                      "not allow; it should not be there"});
    EXPECT_EQ(toldBy(checkFile("<xmeml version=\"5\"><bin><name>a&#1;</name><children/>"
                               "</bin></xmeml>",
                               {})),
              Strings{"characters-forbidden-reference 1: &#1; stands for a character that XML does "
                      "not allow; it should go, or stand for another"});
}

TEST(Check, reportsTheTimecodeOfAnXMEMLClip) {
    const Report report = checkFile(
        "<xmeml version=\"5\"><sequence><rate><timebase>25</timebase></rate><timecode>"
        "<frame>90000</frame></timecode><media><video><track><clipitem><start>30</start>"
        "<name>a & b</name></clipitem></track></video></media></sequence></xmeml>",
        {});
    const auto& findings = report.findings.kept();
    const auto ampersand = std::find_if(
        findings.begin(), findings.end(),
        [](const Finding& finding) { return finding.rule == "xml-stray-ampersand"_rule; });
    ASSERT_NE(ampersand, findings.end());
    EXPECT_EQ(ampersand->where.timecode, "01:00:01:05");
}

// A text in which all that the reader tells can be mended where it stands.
const std::string kFaulty =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE xmeml>\n<xmeml version=\"5\">\n"
    "<clip id=\"a\"><name>Sea & sky</name><file id=\"f\"><name>x</name>"
    "<timebase>24/1</timebase></file></clip>\n<clip id=\"b\"><name>One & two</name></clip>\n"
    "</xmeml>\n";

EditList mendsOf(const FileCheck& check) {
    EditList edits;
    for (const Finding& finding : check.findings().kept()) {
        if (finding.mend && finding.mend->confidence == Confidence::safe) {
            edits.insert(edits.end(), finding.mend->edits.begin(), finding.mend->edits.end());
        }
    }
    return check.toFileOffsets(std::move(edits));
}

std::string applied(const std::string& bytes, const EditList& edits) {
    std::string result;
    std::size_t from = 0;
    for (const Edit& edit : edits) {
        result += bytes.substr(from, edit.offset - from) + edit.text;
        from = edit.offset + edit.length;
    }
    return result + bytes.substr(from);
}

TEST(FileCheck, findsWithAKnownIndexWhatItFindsByReading) {
    for (const std::string mark : {"", "\xEF\xBB\xBF"}) {
        const std::string bytes = mark + kFaulty;
        FileCheck before(bytes, {});
        const EditList edits = mendsOf(before);
        ASSERT_GE(edits.size(), 2U);
        const std::string mended = applied(bytes, edits);
        std::optional<FileCheck::Mended> known;
        before.place(edits);
        EXPECT_EQ(toldBy(std::move(before).report(mended, known)), toldBy(checkFile(bytes, {})));
        ASSERT_TRUE(known.has_value());
        const Report report = FileCheck(mended, {}, std::move(*known)).report();
        const Report anew = checkFile(mended, {});
        EXPECT_FALSE(toldBy(anew).empty());
        EXPECT_EQ(toldBy(report), toldBy(anew));
        EXPECT_EQ(report.encoding, anew.encoding);
        EXPECT_EQ(report.version, anew.version);
        EXPECT_EQ(report.bytes, anew.bytes);
        for (const RuleGroup group : kCheckedGroups) {
            EXPECT_EQ(ran(report, group), ran(anew, group));
        }
    }
}

TEST(FileCheck, readsAgainWhereTheReaderMayHaveMoreToTell) {
    const auto isKnown = [](const std::string& bytes, const CheckOptions& options,
                            std::size_t mends) {
        FileCheck before(bytes, options);
        EditList edits = mendsOf(FileCheck(bytes, {}));
        edits.resize(std::min(edits.size(), mends));
        const std::string mended = applied(bytes, edits);
        std::optional<FileCheck::Mended> known;
        before.place(edits);
        std::ignore = std::move(before).report(mended, known);
        return known.has_value();
    };
    EXPECT_TRUE(isKnown(kFaulty, {}, 100));
    // One ampersand stays, or is not told, or all but one are only counted.
    EXPECT_FALSE(isKnown(kFaulty, {}, 1));
    EXPECT_FALSE(isKnown(kFaulty, {.ignored = {"xml-stray-ampersand"_rule}}, 1));
    EXPECT_FALSE(isKnown(kFaulty, {.mostOfARule = 1}, 100));
    // A reference to a character that XML does not allow stays.
    std::string forbidden = kFaulty;
    forbidden.insert(forbidden.find("two") + 3, "&#1;");
    const std::size_t all = mendsOf(FileCheck(forbidden, {})).size();
    EXPECT_TRUE(isKnown(forbidden, {}, all));
    EXPECT_FALSE(isKnown(forbidden, {}, all - 1));
    // The reading ends in a fault; the file is FCPXML; it is in another encoding.
    EXPECT_FALSE(isKnown(kFaulty.substr(0, kFaulty.size() - 10), {}, 100));
    EXPECT_FALSE(isKnown(kSound, {}, 100));
    std::string latin = kFaulty;
    latin.replace(latin.find("UTF-8"), 5, "ISO-8859-1");
    EXPECT_FALSE(isKnown(latin, {}, 100));
}

}  // namespace vornic
