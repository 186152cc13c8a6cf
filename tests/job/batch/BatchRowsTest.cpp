// Which files a batch has, and what it says about them.

#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/job/batch/BatchTest.h"
#include "tests/support/machine/FileState.h"
#include "xml/reader/XMLReader.h"

namespace vornic::test {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::UnorderedElementsAre;

TEST_F(BatchTest, givesAFileAndItsLinksOneRow) {
    const std::string folder = files.path("cuts");
    fs::create_directories(folder + "/deep");
    writeBytes(folder + "/deep/One.xml", soundXMEML());
    fs::create_hard_link(folder + "/deep/One.xml", folder + "/Hard.xml");
    fs::create_symlink("deep/One.xml", folder + "/Also.xml");
    fs::create_directory_symlink("..", folder + "/deep/loop");
    batch.add({folder, folder + "/deep/One.xml"});
    ASSERT_EQ(batch.size(), 1U);
    const BatchRow row = batch.row(0);
    EXPECT_EQ(row.path, folder + "/Hard.xml");
    EXPECT_THAT(row.otherPaths,
                UnorderedElementsAre(folder + "/Also.xml", folder + "/deep/One.xml"));
}

TEST_F(BatchTest, namesABundleAndShowsWhatIsNotThere) {
    fs::create_directory(files.path("Cut.fcpxmld"));
    static_cast<void>(files.write("Cut.fcpxmld/Info.fcpxml", "<fcpxml version=\"1.10\"/>"));
    batch.add({files.path("Cut.fcpxmld"), files.path("gone.xml")});
    EXPECT_EQ(rows().at("Cut.fcpxmld").path, files.path("Cut.fcpxmld/Info.fcpxml"));
    EXPECT_EQ(rows().at("Cut.fcpxmld").folder, files.folder());
    EXPECT_EQ(rows().at("Cut.fcpxmld").kind, FileKind::fcpxml);
    EXPECT_THAT(run(BatchAction::check), ::testing::StartsWith("2 files checked: "));
    EXPECT_EQ(rows().at("gone.xml").result, BatchResult::failed);
    EXPECT_THAT(rows().at("gone.xml").reason, HasSubstr(files.path("gone.xml")));
}

TEST_F(BatchTest, looksThroughFoldersByTheRulesOfThePrograms) {
    for (const char* const name : {"A.xml", "b.FCPXML", "c.txt", ".hidden.xml", "A-backup.xml"}) {
        static_cast<void>(files.write(name, soundXMEML()));
    }
    fs::create_directory(files.path("closed"));
    fs::permissions(files.path("closed"), fs::perms::none);
    const auto refused = batch.add({files.folder()});
    fs::permissions(files.path("closed"), fs::perms::owner_all);
    ASSERT_EQ(refused.size(), 1U);
    EXPECT_EQ(refused[0].path, files.path("closed"));
    EXPECT_EQ(batch.size(), 2U);
}

TEST_F(BatchTest, filtersByTextAndByFailure) {
    static_cast<void>(files.write("Sound.xml", soundXMEML()));
    static_cast<void>(files.write("Broken.xml", "<xmeml version=\"5\"><bin>"));
    batch.add({files.folder(), files.path("gone.xml")});
    EXPECT_EQ(run(BatchAction::check), "3 files checked: 1 sound, 1 with problems, 1 failed.");
    EXPECT_THAT(batch.rowsShownBy({}), ElementsAre(0, 1, 2));
    EXPECT_THAT(batch.rowsShownBy({.text = "", .onlyFailures = true}), ElementsAre(0, 2));
    EXPECT_THAT(batch.rowsShownBy({.text = "sOuNd", .onlyFailures = false}), ElementsAre(1));
    EXPECT_THAT(batch.rowsShownBy({.text = "sound.xml", .onlyFailures = true}), IsEmpty());
}

TEST_F(BatchTest, writesAllReportsAsOneEscapedDocument) {
    const std::string name = "<b>&\"'\xE2\x80\xAE\x01.xml";
    static_cast<void>(
        files.write(name, "<xmeml version=\"5\"><sequence><name>&lt;script></nome></xmeml>"));
    static_cast<void>(files.write("Sound.xml", soundXMEML()));
    batch.add({files.folder(), files.path("gone <i>.xml")});
    run(BatchAction::check);
    const std::string text = html();
    const XMLReading reading = readXML(text, XMLMode::strict);
    EXPECT_FALSE(reading.fault) << reading.fault->localizedDescription() << text;
    EXPECT_THAT(text, HasSubstr("<h2>&lt;b&gt;&amp;&quot;'&lt;U+202E&gt;&lt;U+0001&gt;.xml</h2>"));
    EXPECT_THAT(text, HasSubstr("3 files checked: 1 sound, 1 with problems, 1 failed."));
    EXPECT_THAT(text, HasSubstr("gone &lt;i&gt;.xml"));
    for (const char* const raw : {"<b>", "<i>", "<script>"}) {
        EXPECT_THAT(text, Not(HasSubstr(raw)));
    }
}

TEST_F(BatchTest, endsTheReportsWhenTheRowsAreForgottenMeanwhile) {
    for (int i = 0; i < 3; ++i) {
        batch.add({files.write(std::to_string(i) + ".xml", soundXMEML())});
    }
    run(BatchAction::check);
    std::size_t pieces = 0;
    EXPECT_FALSE(batch.writeHTML([&](std::string_view) {
        if (++pieces == 2) {
            batch.clear();
        }
        return true;
    }));
    EXPECT_EQ(pieces, 2U);
    EXPECT_EQ(batch.row(7).path, "");
}

TEST(BatchSummary, isOneSentence) {
    BatchSummary summary;
    summary.files = 10;
    summary.results[static_cast<std::size_t>(BatchResult::sound)] = 7;
    summary.results[static_cast<std::size_t>(BatchResult::findings)] = 2;
    summary.results[static_cast<std::size_t>(BatchResult::failed)] = 1;
    EXPECT_EQ(summary.sentence(), "10 files checked: 7 sound, 2 with problems, 1 failed.");
    summary.results[static_cast<std::size_t>(BatchResult::failed)] = 0;
    summary.isCancelled = true;
    EXPECT_EQ(summary.sentence(), "Cancelled. 9 of 10 files checked: 7 sound, 2 with problems.");
    BatchSummary one;
    one.action = BatchAction::restore;
    one.files = 1;
    one.results[static_cast<std::size_t>(BatchResult::unable)] = 1;
    EXPECT_EQ(one.sentence(), "Restoring of 1 file: 1 left as it was.");
}

}  // namespace vornic::test
