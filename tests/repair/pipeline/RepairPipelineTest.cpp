#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <filesystem>
#include <iterator>
#include <new>
#include <ranges>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <sys/syscall.h>

#include "base/Exception.h"
#include "platform/settings/UserPreferences.h"
#include "repair/pipeline/RepairPipeline.h"
#include "tests/repair/pipeline/PipelineTest.h"
#include "tests/support/fakes/FailingSystemCall.h"
#include "tests/support/programs/ChildProcess.h"

namespace vornic {
namespace {

using test::joined;
using test::kRepairedClosing;
using test::kRepairedLine;
using test::kSoundClosing;
using test::kSoundFCPXML;
using test::kSoundLine;
using test::kSoundXMEML;
using test::kUnableClosing;
using test::kUnableLine;
using test::openingCalls;
using test::openingSteps;
using test::Strings;

class RepairPipelineTest : public test::PipelineTest {
  protected:
    static Strings withoutOpening(const Strings& lines) {
        EXPECT_GE(lines.size(), 3U);
        return {lines.begin() + std::min<std::ptrdiff_t>(3, std::ssize(lines)), lines.end()};
    }
    /// The rules of the report's lines, behind those that every run begins with, of a run on a file
    /// of this text.
    Strings rulesOn(std::string_view name, std::string_view text) {
        outcome = runOn(name, text);
        const Strings opening = {"repair-start", "repair-making-copy", "repair-checking-file"};
        EXPECT_TRUE(std::ranges::equal(opening, events.rules | std::views::take(3)));
        return withoutOpening(events.rules);
    }
    /// The same lines in their words, for what is in them.
    Strings reportOn(std::string_view name, std::string_view text) {
        outcome = runOn(name, text);
        return withoutOpening(events.report());
    }
    /// How many lines tell this.
    [[nodiscard]] std::ptrdiff_t linesWith(const std::string& words) const {
        return std::ranges::count_if(events.report(), [&](const std::string& line) {
            return line.find(words) != std::string::npos;
        });
    }

    RepairOutcome outcome = RepairOutcome::stopped;
};

const std::string kXMEMLHead = "<!DOCTYPE xmeml><xmeml version=\"5\">";

std::string withName(std::string_view name) {
    return kXMEMLHead + "<sequence><name>" + std::string(name) + "</name></sequence></xmeml>";
}

TEST_F(RepairPipelineTest, reportsEveryStepOfASoundXMEMLFileInOrder) {
    const std::string path = sandbox.path("Cut.xml");
    EXPECT_EQ(runOn("Cut.xml", kSoundXMEML), RepairOutcome::sound);
    EXPECT_EQ(events.steps,
              joined({openingSteps(),
                      {"repair-checking-file", "label repair-checking-file", "repair-loaded",
                       "repair-filtering", "label repair-filtering", "indeterminate",
                       "repair-checking-header", "label repair-checking-header",
                       "repair-checking-version", "label repair-checking-version",
                       "repair-updating-codes", "label repair-updating-codes",
                       "label repair-finishing", "repair-sound"}}));
    EXPECT_EQ(closing(), kSoundClosing);
    expectFlags(false, true);
    EXPECT_EQ(result.kind, FileKind::xmeml);
    EXPECT_EQ(names(), Strings{"Cut.xml"});
    EXPECT_EQ(test::readBytes(path), kSoundXMEML);
    EXPECT_FALSE(test::exists(trash()));
}

TEST_F(RepairPipelineTest, reportsEveryStepOfASoundFCPXMLFileInOrder) {
    const std::string path = sandbox.path("Cut.fcpxml");
    EXPECT_EQ(runOn("Cut.fcpxml", kSoundFCPXML), RepairOutcome::sound);
    EXPECT_EQ(events.steps,
              joined({openingSteps(),
                      {"repair-checking-file", "label repair-checking-file", "repair-loaded",
                       "repair-filtering", "label repair-filtering", "indeterminate",
                       "repair-checking-header", "label repair-checking-header",
                       "repair-checking-events", "label repair-finishing", "repair-sound"}}));
    EXPECT_EQ(closing(), kSoundClosing);
    expectFlags(false, true);
    EXPECT_EQ(result.kind, FileKind::fcpxml);
    EXPECT_EQ(names(), Strings{"Cut.fcpxml"});
}

TEST_F(RepairPipelineTest, logsWhatItDoesBesideTheReport) {
    EXPECT_EQ(runOn("Cut.xml", kSoundXMEML), RepairOutcome::sound);
    EXPECT_EQ(log.entries(),
              (Strings{"Beginning repair for file " + sandbox.path("Cut.xml") + "...",
                       "Filtering invalid characters from string...", "Checking header tags...",
                       "Checking version tags..."}));
}

TEST_F(RepairPipelineTest, decidesTheKindOfFileByItsExtensionAlone) {
    for (const std::string name : {"a.xml", "b", "c.xmeml", "d.fcpxml.xml", "fcpxml"}) {
        static_cast<void>(runOn(name, kSoundFCPXML));
        EXPECT_EQ(result.kind, FileKind::xmeml) << name;
    }
    for (const std::string name : {"a.fcpxml", "B.FCPXML", "c.FcpXml"}) {
        static_cast<void>(runOn(name, kSoundXMEML));
        EXPECT_EQ(result.kind, FileKind::fcpxml) << name;
    }
}

TEST_F(RepairPipelineTest, namesTheWorkingCopyAfterTheFileAndItsKind) {
    EXPECT_EQ(RepairPipeline::workingCopyPath("/a/Cut.xml", FileKind::xmeml), "/a/Cut-backup.xml");
    EXPECT_EQ(RepairPipeline::workingCopyPath("/a/Cut.FCPXML", FileKind::fcpxml),
              "/a/Cut-backup.fcpxml");
    EXPECT_EQ(RepairPipeline::workingCopyPath("/a/Cut", FileKind::xmeml), "/a/Cut-backup.xml");
    EXPECT_EQ(RepairPipeline::workingCopyPath("/a/Cut.xmeml", FileKind::xmeml),
              "/a/Cut-backup.xml");
    EXPECT_EQ(RepairPipeline::workingCopyPath("/a.b/Cut", FileKind::xmeml), "/a.b/Cut-backup.xml");
    EXPECT_EQ(RepairPipeline::workingCopyPath("/a/Cut.1.xml", FileKind::xmeml),
              "/a/Cut.1-backup.xml");
    EXPECT_EQ(RepairPipeline::workingCopyPath("/a/.xml", FileKind::xmeml), "/a/.xml-backup.xml");
    EXPECT_EQ(RepairPipeline::workingCopyPath("Cut.xml", FileKind::xmeml), "Cut-backup.xml");
}

TEST_F(RepairPipelineTest, reportsThatThereIsNoFile) {
    const std::string path = sandbox.path("None.xml");
    EXPECT_EQ(run(path), RepairOutcome::stopped);
    const std::string info = "The file " + path + " cannot be found.";
    EXPECT_EQ(events.calls, Strings{});
    EXPECT_EQ(closing(), "Unable to locate file | " + info);
    EXPECT_EQ(result.verdict, Verdict{});
    EXPECT_EQ(log.entries(), (Strings{"Beginning repair for file " + path + "...", info}));
    EXPECT_EQ(platform::UserPreferences().value("filepath"), std::nullopt);
    EXPECT_EQ(names(), Strings{});
}

TEST_F(RepairPipelineTest, reportsThatThereIsNoFileAtTheEndOfALink) {
    std::filesystem::create_symlink(sandbox.path("None.xml"), sandbox.path("Link.xml"));
    EXPECT_EQ(run(sandbox.path("Link.xml")), RepairOutcome::stopped);
    EXPECT_EQ(events.report(), Strings{});
}

TEST_F(RepairPipelineTest, storesThePathOfTheFileInThePreferences) {
    static_cast<void>(runOn("Cut.xml", kSoundXMEML));
    const auto stored = platform::UserPreferences().value("filepath");
    ASSERT_TRUE(stored.has_value());
    EXPECT_EQ(*stored, platform::PropertyList(sandbox.path("Cut.xml")));
}

TEST_F(RepairPipelineTest, storesAPathThatIsNoTextAsTextAndRepairsTheFile) {
    EXPECT_EQ(runOn("Caf\xE9.xml", kSoundXMEML), RepairOutcome::sound);
    const auto stored = platform::UserPreferences().value("filepath");
    ASSERT_TRUE(stored.has_value());
    EXPECT_EQ(*stored, platform::PropertyList(sandbox.path("Caf\uFFFD.xml")));
}

TEST_F(RepairPipelineTest, repairsAFileWhenThePreferencesCannotBeWritten) {
    sandbox.write("../home/.local/share/quillmark/Preferences",
                  "a file where the folder should be");
    EXPECT_EQ(runOn("Cut.xml", kSoundXMEML), RepairOutcome::sound);
}

TEST_F(RepairPipelineTest, repairsAMissingDeclaration) {
    const std::string text = "<xmeml version=\"5\"><sequence/></xmeml>";
    EXPECT_EQ(rulesOn("Cut.xml", text),
              (Strings{"repair-loaded", "repair-filtering", "repair-checking-header",
                       "repair-document-type", "repair-checking-version", "repair-updating-codes",
                       "repair-done"}));
    EXPECT_EQ(outcome, RepairOutcome::repairedAndSwapped);
    expectFlags(true, true);
    EXPECT_EQ(test::readBytes(sandbox.path("Cut.xml")),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE xmeml>\n"
              "<xmeml version=\"5\">\n    <sequence/>\n</xmeml>\n");
    EXPECT_EQ(names(), Strings{"Cut.xml"});
    EXPECT_EQ(namesInTrash(), Strings{"Cut.xml"});
    EXPECT_EQ(test::readBytes(trash() + "/Cut.xml"), text);
    EXPECT_EQ(closing(), kRepairedClosing);
}

TEST_F(RepairPipelineTest, cannotRepairAWrongRootElement) {
    const std::string text = "<!DOCTYPE xmeml><other><sequence/></other>";
    EXPECT_EQ(rulesOn("Cut.xml", text),
              (Strings{"repair-loaded", "repair-filtering", "repair-checking-header",
                       "repair-root-element", "repair-checking-version", "repair-version-missing",
                       "repair-updating-codes", "repair-unable"}));
    EXPECT_EQ(outcome, RepairOutcome::unable);
    expectFlags(true, false);
    EXPECT_EQ(names(), Strings{"Cut.xml"});
    EXPECT_EQ(test::readBytes(sandbox.path("Cut.xml")), text);
    EXPECT_EQ(closing(), kUnableClosing);
}

TEST_F(RepairPipelineTest, mendsTheAudioReferencesOfAnFCPXMLFile) {
    const std::string text =
        "<!DOCTYPE fcpxml><fcpxml><resources/><library><event><project/>"
        "<video><audio ref=\"r1\"/><audio/></video></event></library></fcpxml>";
    EXPECT_EQ(rulesOn("Cut.fcpxml", text),
              (Strings{"repair-loaded", "repair-filtering", "repair-checking-header",
                       "repair-checking-events", "repair-done"}));
    EXPECT_EQ(outcome, RepairOutcome::repairedAndSwapped);
    EXPECT_NE(test::readBytes(sandbox.path("Cut.fcpxml"))
                  .find("<audio ref=\"r1\"/>\n                <audio ref=\"r1\"/>"),
              std::string::npos);
}

TEST_F(RepairPipelineTest, reportsAMendThatTheFilterWouldMakeAsWell) {
    EXPECT_EQ(rulesOn("Cut.xml", withName("Q & A")),
              (Strings{"repair-loaded", "xml-stray-ampersand", "repair-filtering",
                       "repair-checking-header", "repair-checking-version", "repair-updating-codes",
                       "repair-done"}));
    EXPECT_EQ(outcome, RepairOutcome::repairedAndSwapped);
    EXPECT_NE(test::readBytes(sandbox.path("Cut.xml")).find("<name>Q &amp; A</name>"),
              std::string::npos);
}

TEST_F(RepairPipelineTest, endsAsRepairedForEachFaultThatTheFilterWritesCorrectly) {
    for (const std::string& text : {withName("a & b & c"), withName("a ]]> b"),
                                    kXMEMLHead + "<sequence id=\"a<b\"/></xmeml>"}) {
        events = {};
        const Strings report = reportOn("Cut.xml", text);
        EXPECT_EQ(outcome, RepairOutcome::repairedAndSwapped) << text;
        EXPECT_EQ(report.at(1).substr(0, 14), "error: Line 1,") << text;
        EXPECT_EQ(report.back(), kRepairedLine);
    }
}

TEST_F(RepairPipelineTest, writesWhatTheReaderMends) {
    const std::vector<std::pair<std::string, std::string>> mends = {
        {"<name>a < b</name>", "<name>a &lt; b</name>"},
        {"<name>a &nbsp; b</name>", "<name>a &amp;nbsp; b</name>"},
        {"<name id=a/>", "<name id=\"a\"/>"},
        {"<name on/>", "<name on=\"\"/>"},
        {"<name a=\"1\"b=\"2\"/>", "<name a=\"1\" b=\"2\"/>"},
        {"<name a=\"b & c\"/>", "<name a=\"b &amp; c\"/>"},
        {"<!-- a -- b -->", "<!-- a - - b -->"},
    };
    for (const auto& [damaged, mended] : mends) {
        events = {};
        EXPECT_EQ(runOn("Cut.xml", kXMEMLHead + "<sequence>" + damaged + "</sequence></xmeml>"),
                  RepairOutcome::repairedAndSwapped)
            << damaged;
        EXPECT_TRUE(events.report().at(4).starts_with("error: Line 1, column ")) << damaged;
        EXPECT_NE(test::readBytes(sandbox.path("Cut.xml")).find(mended), std::string::npos)
            << test::readBytes(sandbox.path("Cut.xml"));
    }
}

TEST_F(RepairPipelineTest, countsRemovedCharactersInTheTextOfTheFileBesideMends) {
    const Strings report = reportOn("Cut.xml", withName("a < \U0001F600 & \x01 b"));
    EXPECT_EQ(outcome, RepairOutcome::repairedAndSwapped);
    EXPECT_EQ(Strings(report.begin() + 4, report.begin() + 7),
              (Strings{"error: Invalid character at byte 55 removed.",
                       "error: Invalid character at byte 56 removed.",
                       "error: Invalid character at byte 60 removed."}));
}

TEST_F(RepairPipelineTest, leavesToTheFilterWhatItRemovesAndReports) {
    const Strings report = reportOn("Cut.xml",
                                    "<?xml version=\"1.0\"?>\n\uFEFF<!DOCTYPE xmeml><xmeml "
                                    "version=\"5\"><sequence/></xmeml>");
    EXPECT_EQ(outcome, RepairOutcome::repairedAndSwapped);
    EXPECT_EQ(report.at(1),
              "error: Line 2, column 1: a byte order mark before the root element was passed over");
    EXPECT_EQ(report.at(3), "error: Invalid character at byte 22 removed.");
}

TEST_F(RepairPipelineTest, reportsAFaultThatTheFilterMakesAndEndsAsUnable) {
    // The filter takes the sign inside the value for the end of the tag.
    const std::string text = kXMEMLHead + "<sequence id=\"a>b\"/></xmeml>";
    const std::string fault =
        faultOf(kXMEMLHead + "<sequence id=\"a>b&quot;/&gt;</xmeml>", XMLMode::strict);
    EXPECT_EQ(rulesOn("Cut.xml", text),
              (Strings{"repair-loaded", "repair-filtering", "repair-checking-header",
                       "repair-document-type", "repair-root-element", "repair-no-sequence",
                       "repair-checking-version", "repair-version-missing", "repair-save-failed",
                       "repair-updating-codes", "repair-codes-unread", "repair-unable",
                       "repair-copy-unremoved"}));
    EXPECT_EQ(linesWith(fault), 3);
    EXPECT_EQ(outcome, RepairOutcome::unable);
    expectFlags(true, false);
    EXPECT_EQ(names(), Strings{"Cut.xml"});
    EXPECT_EQ(test::readBytes(sandbox.path("Cut.xml")), text);
}

TEST_F(RepairPipelineTest, runsTheFCPXMLStepsWithoutADocumentToo) {
    const std::string text = "<!DOCTYPE fcpxml><fcpxml><a b=\"c>d\"/></fcpxml>";
    const std::string fault =
        faultOf("<!DOCTYPE fcpxml><fcpxml><a b=\"c>d&quot;/&gt;</fcpxml>", XMLMode::strict);
    EXPECT_EQ(rulesOn("Cut.fcpxml", text),
              (Strings{"repair-loaded", "repair-filtering", "repair-checking-header",
                       "repair-document-type", "repair-root-element", "repair-no-project",
                       "repair-checking-events", "repair-save-failed", "repair-unable",
                       "repair-copy-unremoved"}));
    EXPECT_EQ(linesWith(fault), 2);
    EXPECT_EQ(outcome, RepairOutcome::unable);
    EXPECT_EQ(names(), Strings{"Cut.fcpxml"});
}

TEST_F(RepairPipelineTest, namesWhatCouldNotBeMended) {
    EXPECT_EQ(runOn("Cut.xml", "<xmeml version=\"1.0\"><sequence/></xmeml>"),
              RepairOutcome::unable);
    EXPECT_EQ(result.obstacle, "Unrecognized XML Interchange version 1.0.");
    EXPECT_EQ(runOn("Old.xml", "<xmeml version=\"5\"><sequence/></xmeml>"),
              RepairOutcome::repairedAndSwapped);
    EXPECT_EQ(result.obstacle, "") << "a document type was written";
}

TEST_F(RepairPipelineTest, givesUpAFileThatNeitherParses) {
    const std::string text = kXMEMLHead + "<sequence></xmeml>";
    const std::string fault = faultOf(text, XMLMode::tolerant);
    EXPECT_EQ(
        rulesOn("Cut.xml", text),
        (Strings{"repair-reason", "repair-beginning-repair", "repair-filtering", "repair-reason",
                 "repair-not-loaded", "repair-unable", "repair-copy-unremoved"}));
    EXPECT_EQ(linesWith(fault), 3);
    EXPECT_EQ(outcome, RepairOutcome::unable);
    expectFlags(true, false);
    EXPECT_EQ(names(), Strings{"Cut.xml"});
    EXPECT_EQ(test::readBytes(sandbox.path("Cut.xml")), text);
}

TEST_F(RepairPipelineTest, labelsTheStepsOfAFileThatDoesNotLoad) {
    static_cast<void>(runOn("Cut.xml", "<xmeml>"));
    Strings labels;
    for (const std::string& call : events.calls) {
        if (call.starts_with("label: ") || call == "indeterminate") {
            labels.push_back(call);
        }
    }
    EXPECT_EQ(Strings(labels.begin() + 3, labels.end()),
              (Strings{"label: File did not load successfully - beginning repair...",
                       "label: Filtering invalid characters...", "indeterminate",
                       "label: Finishing..."}));
}

// A character that no name may hold and that the filter takes out.
const std::string kTextThatTheFilterMends =
    "<!DOCTYPE xmeml><xmeml version=\"5\"><sequence><na\uE000me>a</na\uE000me></sequence></xmeml>";

TEST_F(RepairPipelineTest, keepsTheErrorOfTheFirstParseAlthoughTheSecondSucceeds) {
    const std::string fault = faultOf(kTextThatTheFilterMends, XMLMode::tolerant);
    EXPECT_EQ(rulesOn("Cut.xml", kTextThatTheFilterMends),
              (Strings{"repair-reason", "repair-beginning-repair", "repair-filtering",
                       "repair-character-removed", "repair-character-removed", "repair-reason",
                       "repair-not-loaded", "repair-filtering", "repair-checking-header",
                       "repair-checking-version", "repair-save-failed", "repair-updating-codes",
                       "repair-codes-unread", "repair-unable", "repair-copy-unremoved"}));
    EXPECT_EQ(linesWith(fault), 5);
    EXPECT_EQ(outcome, RepairOutcome::unable);
    expectFlags(true, false);
    EXPECT_EQ(names(), Strings{"Cut.xml"});
    EXPECT_EQ(test::readBytes(sandbox.path("Cut.xml")), kTextThatTheFilterMends);
}

TEST_F(RepairPipelineTest, savesTheWorkingCopyBeforeAnOldErrorMakesItAFailure) {
    std::string saved;
    events.onCall = [&](const std::string& call) {
        if (call.starts_with("bold error: Unable to save file")) {
            saved = test::readBytes(sandbox.path("Cut-backup.xml"));
        }
    };
    EXPECT_EQ(runOn("Cut.xml", kTextThatTheFilterMends), RepairOutcome::unable);
    EXPECT_EQ(saved, test::parsed("<!DOCTYPE xmeml><xmeml version=\"5\"><sequence>"
                                  "<name>a</name></sequence></xmeml>")
                         ->xmlString());
}

TEST_F(RepairPipelineTest, removesForbiddenCharactersAndEndsAsRepaired) {
    EXPECT_EQ(rulesOn("Cut.xml", withName("a\x0C"
                                          "b\x0B"
                                          "c\U0001F600")),
              (Strings{"repair-loaded", "repair-filtering", "repair-character-removed",
                       "repair-character-removed", "repair-character-removed",
                       "repair-character-removed", "repair-checking-header",
                       "repair-checking-version", "repair-updating-codes", "repair-done"}));
    EXPECT_EQ(outcome, RepairOutcome::repairedAndSwapped);
    EXPECT_NE(test::readBytes(sandbox.path("Cut.xml")).find("<name>abc</name>"), std::string::npos);
}

TEST_F(RepairPipelineTest, takesAByteOrderMarkAtTheBeginningAsTheEncodingsSignature) {
    EXPECT_EQ(runOn("Cut.xml", "\uFEFF" + std::string(kSoundXMEML)), RepairOutcome::sound);
    events = {};
    // The index counts from the character behind the mark.
    EXPECT_EQ(runOn("Cut.xml", "\uFEFF<a\x01/>"), RepairOutcome::unable);
    EXPECT_EQ(events.report().at(5), "error: Invalid character at byte 2 removed.");
}

TEST_F(RepairPipelineTest, removesAByteOrderMarkInTheMiddle) {
    const Strings report = reportOn("Cut.xml", withName("a\uFEFFb"));
    EXPECT_EQ(outcome, RepairOutcome::repairedAndSwapped);
    EXPECT_EQ(report.at(2), "error: Invalid character at byte 52 removed.");
    EXPECT_NE(test::readBytes(sandbox.path("Cut.xml")).find("<name>ab</name>"), std::string::npos);
}

TEST_F(RepairPipelineTest, ignoresTheEncodingThatTheTextDeclares) {
    const std::string text = "<?xml version=\"1.0\" encoding=\"UTF-16\"?>" + withName("\u00E9");
    EXPECT_EQ(runOn("Cut.xml", text), RepairOutcome::sound);
}

TEST_F(RepairPipelineTest, strikesAllButPrintableASCIIOutOfAFileThatIsNotUTF8) {
    const std::string text =
        "<!DOCTYPE xmeml>\n<xmeml version=\"5\">\n\t<sequence>\n"
        "<name>Caf\xE9 \u00FC\tb</name></sequence></xmeml>";
    EXPECT_EQ(rulesOn("Cut.xml", text),
              (Strings{"repair-loaded", "repair-filtering", "repair-checking-header",
                       "repair-checking-version", "repair-updating-codes", "repair-done"}));
    EXPECT_EQ(outcome, RepairOutcome::repairedAndSwapped);
    EXPECT_NE(test::readBytes(sandbox.path("Cut.xml")).find("<name>Caf b</name>"),
              std::string::npos);
    EXPECT_TRUE(log.contains("Stripping invalid characters from data..."));
    EXPECT_EQ(test::readBytes(trash() + "/Cut.xml"), text);
}

TEST_F(RepairPipelineTest, readsAUTF16FileByItsASCIIBytes) {
    std::string text = "\xFF\xFE";
    for (const char byte :
         std::string("<?xml version=\"1.0\" encoding=\"UTF-16\"?>") + withName("a")) {
        text.append({byte, '\0'});
    }
    EXPECT_EQ(runOn("Cut.xml", text), RepairOutcome::repairedAndSwapped);
    EXPECT_NE(test::readBytes(sandbox.path("Cut.xml")).find("<name>a</name>"), std::string::npos);
}

TEST_F(RepairPipelineTest, readsAFileAgainThatCouldNotBeReadOnce) {
    EXPECT_TRUE(test::passesInChild([&] {
        events.onCall = [&](const std::string& call) {
            if (call == "label: Checking file...") {
                ASSERT_TRUE(test::failSystemCallOnce(SYS_pread64, EIO));
            }
        };
        EXPECT_EQ(runOn("Cut.xml", withName("caf\u00e9 & bar")), RepairOutcome::repairedAndSwapped);
    }));
    EXPECT_NE(test::readBytes(sandbox.path("Cut.xml")).find("<name>caf\u00e9 &amp; bar</name>"),
              std::string::npos);
}

TEST_F(RepairPipelineTest, endsCriticallyWhenTheFileCannotBeRead) {
    EXPECT_TRUE(test::passesInChild([&] {
        events.onCall = [&](const std::string& call) {
            if (call == "label: Checking file...") {
                ASSERT_TRUE(test::failSystemCall(SYS_pread64, EIO));
            }
        };
        const Strings report = reportOn("Cut.xml", kSoundXMEML);
        ASSERT_EQ(report.size(), 3U);
        EXPECT_EQ(report.at(0), "error: The file " + sandbox.path("Cut.xml") +
                                    " cannot be read: the disk or network reported an error.");
        EXPECT_EQ(report.at(1), "error: Unable to load XML data");
        EXPECT_EQ(report.at(2), "bold error: Critical error - repair canceled.");
        EXPECT_EQ(outcome, RepairOutcome::stopped);
        expectFlags(true, false);
        EXPECT_EQ(closing(), "Unable to load XML data | Repair has been canceled.");
        EXPECT_EQ(names(), Strings{"Cut.xml"});
    }));
    EXPECT_EQ(test::readBytes(sandbox.path("Cut.xml")), kSoundXMEML);
}

TEST_F(RepairPipelineTest, leavesNoWorkingCopyWhenMemoryRunsOut) {
    events.onCall = [&](const std::string& call) {
        if (call == "label: Checking header tags...") {
            throw std::bad_alloc();
        }
    };
    EXPECT_THROW(runOn("Cut.xml", kSoundXMEML), std::bad_alloc);
    EXPECT_EQ(names(), Strings{"Cut.xml"});
}

TEST_F(RepairPipelineTest, reportsAnEmptyFileAsUnable) {
    EXPECT_EQ(runOn("Cut.xml", ""), RepairOutcome::unable);
    EXPECT_EQ(runOn("One.xml", "<"), RepairOutcome::unable);
    EXPECT_EQ(names(), (Strings{"Cut.xml", "One.xml"}));
}

TEST_F(RepairPipelineTest, logsTheRangeExceptionOfAFileThatBeginsWithAnEmptyTag) {
    const std::string fault = faultOf("<>", XMLMode::tolerant);
    EXPECT_EQ(rulesOn("Cut.xml", "<>"),
              (Strings{"repair-reason", "repair-beginning-repair", "repair-filtering"}));
    EXPECT_EQ(linesWith(fault), 1);
    EXPECT_EQ(outcome, RepairOutcome::stopped);
    const std::string last = log.entries().back();
    EXPECT_TRUE(last.starts_with("Exception in -[Document startRepair:]. NSRangeException - "))
        << last;
    EXPECT_EQ(test::readBytes(sandbox.path("Cut.xml")), "<>");
    EXPECT_EQ(names(), Strings{"Cut.xml"});
}

TEST_F(RepairPipelineTest, endsAfterAnExceptionOfItsOwnKindWithoutAClosingMessage) {
    events.raiseAtStep = "repair-checking-version";
    EXPECT_EQ(runOn("Cut.xml", kSoundXMEML), RepairOutcome::stopped);
    EXPECT_EQ(closing(), "");
    EXPECT_EQ(log.entries().back(), "Exception in -[Document startRepair:]. Test - raised.");
    EXPECT_EQ(names(), Strings{"Cut.xml"});
}

TEST_F(RepairPipelineTest, passesAnotherExceptionOnAndLeavesNoWorkingCopy) {
    events.onCall = [](const std::string& call) {
        if (call == "info: Checking version tags...") {
            throw std::runtime_error("other");
        }
    };
    EXPECT_THROW(static_cast<void>(runOn("Cut.xml", kSoundXMEML)), std::runtime_error);
    EXPECT_EQ(names(), Strings{"Cut.xml"});
}

TEST_F(RepairPipelineTest, goesOnWithoutADocumentWhenAHeaderCheckRaises) {
    events.raiseAtStep = "repair-document-type";
    EXPECT_EQ(rulesOn("Cut.xml", "<xmeml version=\"5\"><sequence/></xmeml>"),
              (Strings{"repair-loaded", "repair-filtering", "repair-checking-header",
                       "repair-document-type", "repair-checking-version", "repair-version-missing",
                       "repair-updating-codes", "repair-unable"}));
    EXPECT_EQ(outcome, RepairOutcome::unable);
    EXPECT_TRUE(log.contains("Exception in -[Document checkXMEMLHeaderTags:]. Test - raised."));
}

TEST_F(RepairPipelineTest, leavesTheFileWhenAHeaderCheckRaisesAndNothingIsSaved) {
    events.raiseAtStep = "repair-document-type";
    const std::string text = "<fcpxml><resources/><project/></fcpxml>";
    const std::string path = sandbox.path("Cut.fcpxml");
    const std::string copy = sandbox.path("Cut-backup.fcpxml");
    EXPECT_EQ(rulesOn("Cut.fcpxml", text),
              (Strings{"repair-loaded", "repair-filtering", "repair-checking-header",
                       "repair-document-type", "repair-checking-events", "repair-done",
                       "repair-copy-unsaved"}));
    EXPECT_EQ(outcome, RepairOutcome::repairedNotSwapped);
    EXPECT_EQ(closing(), kRepairedClosing);
    EXPECT_EQ(test::readBytes(path), text);
    EXPECT_FALSE(test::exists(trash()));
}

TEST_F(RepairPipelineTest, reportsVersionWarningsAndStillNeedsNoRepair) {
    EXPECT_EQ(
        rulesOn(
            "Cut.xml",
            "<!DOCTYPE xmeml><xmeml version=\"4\"><sequence><color>a</color></sequence></xmeml>"),
        (Strings{"repair-loaded", "repair-filtering", "repair-checking-header",
                 "repair-checking-version", "repair-newer-element", "repair-updating-codes",
                 "repair-sound"}));
    EXPECT_EQ(outcome, RepairOutcome::sound);
}

}  // namespace
}  // namespace vornic
