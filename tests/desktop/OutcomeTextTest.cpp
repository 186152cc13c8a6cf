#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "desktop/OutcomeText.h"

namespace vornic {
namespace {

using Kind = OutcomeBadge::Kind;

RepairResult ended(RepairOutcome outcome, SwapResult swap = {}, std::string oldCopy = "") {
    RepairResult result;
    result.outcome = outcome;
    result.swap = std::move(swap);
    result.oldCopy = std::move(oldCopy);
    return result;
}

RepairResult notSwapped(SwapResult swap) {
    return ended(RepairOutcome::repairedNotSwapped, std::move(swap));
}

TEST(OutcomeTextTest, leadsToBothFilesAfterARepair) {
    const OutcomeText outcome =
        outcomeText(ended(RepairOutcome::repairedAndSwapped, {.end = SwapEnd::done}));
    EXPECT_EQ(outcome.kind, Kind::good);
    EXPECT_EQ(outcome.text, QStringLiteral("Repaired. The original file is in the Trash."));
    EXPECT_TRUE(outcome.showsFile);
    EXPECT_TRUE(outcome.showsTrash);
}

TEST(OutcomeTextTest, namesTheRepairedFileWhenTheTrashDoesNotTakeTheOriginal) {
    const OutcomeText outcome = outcomeText(notSwapped(
        {.end = SwapEnd::trashFailed, .original = "/a/Cut.xml", .repaired = "/a/Cut-backup.xml"}));
    EXPECT_EQ(outcome.kind, Kind::warning);
    EXPECT_EQ(outcome.text,
              QStringLiteral("Repaired, but the original file could not be moved to the Trash. It "
                             "is as it was; the repaired file is the one called Cut-backup.xml."));
    EXPECT_FALSE(outcome.showsTrash);
}

TEST(OutcomeTextTest, isNoWarningWhenThereIsNoRepairedFile) {
    for (const SwapEnd end : {SwapEnd::unsaved, SwapEnd::copyChanged}) {
        const OutcomeText outcome =
            outcomeText(notSwapped({.end = end, .original = "/a/Cut.xml", .repaired = ""}));
        EXPECT_EQ(outcome.kind, Kind::bad);
        EXPECT_TRUE(outcome.text.endsWith(QStringLiteral("The file is as it was.")));
        EXPECT_FALSE(outcome.text.contains(QStringLiteral("Repaired")));
        EXPECT_FALSE(outcome.showsTrash);
    }
}

TEST(OutcomeTextTest, reportsANewerFile) {
    const OutcomeText outcome = outcomeText(notSwapped({.end = SwapEnd::sourceChanged,
                                                        .original = "/a/Cut.xml",
                                                        .repaired = "/a/Cut-backup.xml"}));
    EXPECT_EQ(outcome.kind, Kind::warning);
    EXPECT_TRUE(outcome.text.contains(QStringLiteral("another program has changed the file")));
    EXPECT_TRUE(outcome.text.contains(QStringLiteral("Cut-backup.xml")));
}

TEST(OutcomeTextTest, leadsToTheTrashWheneverTheOriginalIsThere) {
    const OutcomeText outcome = outcomeText(notSwapped({.end = SwapEnd::sourceChanged,
                                                        .original = "/home/a/.Trash/Cut.xml",
                                                        .repaired = "/a/Cut-backup.xml",
                                                        .isInTrash = true}));
    EXPECT_TRUE(outcome.text.endsWith(QStringLiteral("The original file is in the Trash.")));
    EXPECT_TRUE(outcome.showsTrash);
}

TEST(OutcomeTextTest, namesAnOriginalThatCouldNotBeBroughtBack) {
    const OutcomeText outcome = outcomeText(notSwapped({.end = SwapEnd::failed,
                                                        .original = "/a/.Cut.xml.vornic.swap",
                                                        .repaired = "/a/Cut.xml",
                                                        .isAside = true}));
    EXPECT_TRUE(outcome.text.endsWith(
        QStringLiteral("The original file is beside it, called .Cut.xml.vornic.swap.")));
    EXPECT_FALSE(outcome.showsTrash);
}

TEST(OutcomeTextTest, reportsWhereAFileIsThatWasInTheWay) {
    const OutcomeText outcome = outcomeText(ended(RepairOutcome::sound, {}, "/t/Cut-backup 2.xml"));
    EXPECT_EQ(outcome.kind, Kind::good);
    EXPECT_EQ(outcome.text, QStringLiteral("The file is sound. A file that was in the way is in "
                                           "the Trash, called Cut-backup 2.xml."));
    EXPECT_TRUE(outcome.showsTrash);
}

}  // namespace
}  // namespace vornic
