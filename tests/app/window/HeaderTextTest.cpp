#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/window/HeaderText.h"
#include "report/RuleTable.h"

namespace vornic {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::Not;
using Action = HeaderFacts::Action;

void add(Report& report, std::size_t errors, std::size_t warnings, bool isMendable = false) {
    for (std::size_t count = 0; count < errors; ++count) {
        Finding* const finding = report.findings.add("references-dangling"_rule, {count, 1});
        if (isMendable) {
            finding->mend = Mend{Confidence::safe, "mend it", {{count, 1, "x"}}};
        }
    }
    for (std::size_t count = 0; count < warnings; ++count) {
        static_cast<void>(report.findings.add("characters-control"_rule, {count, 1}));
    }
}

class HeaderTextTest : public ::testing::Test {
  protected:
    HeaderTextTest() { inspection->file.source = SourceText::of("<a/>"); }

    void repairedFrom(std::size_t errors, std::size_t warnings) {
        facts.action = Action::repair;
        facts.outcome = RepairOutcome::repairedAndSwapped;
        facts.isUndoable = true;
        inspection->original.emplace();
        inspection->original->source = SourceText::of("<a>");
        add(inspection->original->report, errors, warnings);
    }
    HeaderText header() {
        facts.inspection = inspection;
        return headerText(facts);
    }

    std::shared_ptr<Inspection> inspection = std::make_shared<Inspection>();
    HeaderFacts facts;
};

TEST_F(HeaderTextTest, saysWhatWasFoundAndRepaired) {
    repairedFrom(2, 0);
    EXPECT_EQ(header().sentence, "2 problems found, 2 repaired");
    EXPECT_EQ(header().sign, HeaderSign::good);
    EXPECT_THAT(header().offers, Contains(HeaderOffer::restoreOriginal));
}

TEST_F(HeaderTextTest, saysWhatARepairHasLeft) {
    repairedFrom(1200, 3);
    add(inspection->file.report, 20, 3);
    EXPECT_EQ(header().sentence, "1,200 problems found, 1,180 repaired; 20 problems need you");
    EXPECT_EQ(header().sign, HeaderSign::warning);
}

TEST_F(HeaderTextTest, saysThatAFileIsSoundAndHowManyWarningsItHas) {
    facts.action = Action::repair;
    facts.outcome = RepairOutcome::sound;
    EXPECT_EQ(header().sentence, "Sound");
    add(inspection->file.report, 0, 3);
    EXPECT_EQ(header().sentence, "Sound, with 3 warnings");
    EXPECT_EQ(header().sign, HeaderSign::good);
}

TEST_F(HeaderTextTest, contradictsARepairThatFindsNothing) {
    facts.action = Action::repair;
    facts.outcome = RepairOutcome::sound;
    add(inspection->file.report, 1, 0);
    EXPECT_EQ(header().sentence, "1 problem needs you");
    EXPECT_EQ(header().sign, HeaderSign::warning);
    EXPECT_THAT(header().offers, Not(Contains(HeaderOffer::mend)));
}

TEST_F(HeaderTextTest, hasNoTickWhenLegalCharactersWereRemoved) {
    repairedFrom(1, 0);
    inspection->removed = {1180, 6, true, 5};
    EXPECT_EQ(header().sentence, "1,180 legal characters were removed from 6 names");
    EXPECT_EQ(header().sign, HeaderSign::warning);
    EXPECT_THAT(header().offers, Contains(HeaderOffer::showRemoved));
    EXPECT_THAT(header().offers, Contains(HeaderOffer::bringBackAndMend));
    inspection->removed = {1, 1, false, 5};
    EXPECT_EQ(header().sentence, "1 legal character was removed from 1 line");
}

TEST_F(HeaderTextTest, offersNoWayBackThatThereIsNot) {
    repairedFrom(1, 0);
    facts.isUndoable = false;
    EXPECT_TRUE(header().offers.empty());
}

TEST_F(HeaderTextTest, hasNoTickWhenNothingWasSaved) {
    facts.action = Action::repair;
    facts.outcome = RepairOutcome::repairedNotSwapped;
    EXPECT_EQ(header().sentence, "Nothing was saved in the place of the file");
    EXPECT_EQ(header().sign, HeaderSign::bad);
}

TEST_F(HeaderTextTest, hasATickBesideNothingThatFailed) {
    using Outcome = RepairOutcome;
    for (const Outcome outcome :
         {Outcome::repairedNotSwapped, Outcome::unable, Outcome::cancelled, Outcome::stopped}) {
        facts.action = Action::repair;
        facts.outcome = outcome;
        EXPECT_NE(header().sign, HeaderSign::good) << static_cast<int>(outcome);
    }
    facts.outcome = Outcome::sound;
    EXPECT_EQ(header().sign, HeaderSign::good);
    facts.hasChangedSince = true;
    EXPECT_NE(header().sign, HeaderSign::good);
    facts.hasChangedSince = false;
    add(inspection->file.report, 1, 0);
    for (const Action action : {Action::none, Action::check, Action::repair, Action::mend,
                                Action::restore, Action::conversion, Action::relink}) {
        facts.action = action;
        EXPECT_NE(header().sign, HeaderSign::good) << static_cast<int>(action);
    }
}

TEST_F(HeaderTextTest, saysThatAFileIsGone) {
    facts.isThere = false;
    EXPECT_EQ(header().sentence, "The file is not where it was");
    EXPECT_EQ(header().sign, HeaderSign::bad);
}

TEST_F(HeaderTextTest, saysThatASoundFileIsSoundThoughTheRepairIsUnable) {
    facts.action = Action::repair;
    facts.outcome = RepairOutcome::unable;
    facts.reason = "No project node found in file";
    EXPECT_EQ(header().sentence,
              "Sound; only the repair cannot take it: No project node found in file. Nothing has "
              "to be done");
    EXPECT_EQ(header().sign, HeaderSign::warning);
}

TEST_F(HeaderTextTest, offersTheMendsThatHelpWhereARepairIsUnable) {
    facts.action = Action::repair;
    facts.outcome = RepairOutcome::unable;
    add(inspection->file.report, 2, 0, true);
    EXPECT_EQ(header().sentence, "2 problems need you");
    EXPECT_EQ(header().sign, HeaderSign::bad);
    EXPECT_THAT(header().offers, Contains(HeaderOffer::mend));
}

TEST_F(HeaderTextTest, saysThatACheckHasWrittenNothing) {
    facts.action = Action::check;
    add(inspection->file.report, 0, 1);
    EXPECT_EQ(header().sentence, "Checked, nothing was written: sound, with 1 warning");
}

TEST_F(HeaderTextTest, saysWhenAnotherProgramHasChangedTheFile) {
    repairedFrom(2, 0);
    facts.hasChangedSince = true;
    add(inspection->file.report, 1, 0);
    EXPECT_EQ(header().sentence, "Another program has changed the file: 1 problem needs you");
    EXPECT_EQ(header().sign, HeaderSign::warning);
}

TEST_F(HeaderTextTest, saysWhyAFileCannotBeRead) {
    inspection->file.source = nullptr;
    inspection->file.error = Error{"domain", 1, "Permission denied."};
    EXPECT_EQ(header().sentence, "The file cannot be read: Permission denied.");
    EXPECT_EQ(header().sign, HeaderSign::bad);
}

TEST(HeaderFactsLine, reportsVersionAndSize) {
    Report report;
    report.kind = "fcpxml";
    report.version = "1.10";
    report.bytes = 12345;
    EXPECT_EQ(factsOf(report, FileKind::fcpxml), "version 1.10 · 12.3 KB");
    report.kind = "xmeml";
    report.version = "";
    report.bytes = 999;
    EXPECT_EQ(factsOf(report, FileKind::xmeml), "no version · 999 bytes");
}

TEST(HeaderFactsLine, contradictsANameThatIsWrong) {
    Report report;
    report.kind = "fcpxml";
    report.version = "1.10";
    EXPECT_EQ(factsOf(report, FileKind::xmeml), "in fact FCPXML, version 1.10 · 0 bytes");
    report.kind = "other";
    EXPECT_EQ(factsOf(report, FileKind::xmeml), "in fact other XML · 0 bytes");
    report.kind = "none";
    EXPECT_EQ(factsOf(report, FileKind::xmeml), "no XML · 0 bytes");
}

TEST_F(HeaderTextTest, offersWhatWouldHelpWhereARepairIsUnable) {
    facts.action = Action::repair;
    facts.outcome = RepairOutcome::unable;
    inspection->file.path = "/cut.xml";
    inspection->file.report.kind = "fcpxml";
    inspection->file.report.findings.add("versions-not-declared"_rule, {0, 1});
    EXPECT_THAT(header().offers,
                ElementsAre(HeaderOffer::treatAsContents, HeaderOffer::setVersion));
    EXPECT_EQ(header().contents, FileKind::fcpxml);
    inspection->file.path = "/cut.fcpxml";
    EXPECT_THAT(header().offers, ElementsAre(HeaderOffer::setVersion));
}

TEST_F(HeaderTextTest, offersASalvageWhereTheMarkupIsBroken) {
    facts.action = Action::repair;
    facts.outcome = RepairOutcome::stopped;
    inspection->file.path = "/cut.xml";
    inspection->file.report.kind = "xmeml";
    EXPECT_THAT(header().offers, Not(Contains(HeaderOffer::saveSalvagedCopy)));
    inspection->file.report.findings.add("xml-unclosed-element"_rule, {0, 1});
    EXPECT_THAT(header().offers, Contains(HeaderOffer::saveSalvagedCopy));
}

TEST_F(HeaderTextTest, reportsHowManyMediaWereRelinked) {
    facts.action = Action::relink;
    facts.relinked = 1;
    EXPECT_EQ(header().sentence, "1 media file relinked: sound");
}

}  // namespace
}  // namespace vornic
