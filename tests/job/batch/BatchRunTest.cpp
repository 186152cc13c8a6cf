// What a batch does with files: what the command-line programs do with them.

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/job/batch/BatchTest.h"
#include "tests/support/fakes/CatalogueBundle.h"
#include "tests/support/machine/FileState.h"

namespace vornic::test {

namespace fs = std::filesystem;
using ::testing::AnyOf;
using ::testing::ElementsAre;
using ::testing::Eq;
using ::testing::HasSubstr;
using ::testing::StartsWith;

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kMemoryIsMeasurable = false;
#else
constexpr bool kMemoryIsMeasurable = true;
#endif

// The most memory that this process has had, in bytes.
std::size_t peakMemory() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("VmHWM:")) {
            return std::stoul(line.substr(6)) * 1024;
        }
    }
    ADD_FAILURE() << "the system does not tell";
    return 0;
}

std::string ampersandXMEML() {
    std::string text = soundXMEML();
    return text.insert(text.find("Harbour"), "Pier & ");
}

}  // namespace

/// The same files in two folders, one for the batch and one for the programs.
class BatchAndProgramsTest : public BatchTest {
  protected:
    void SetUp() override {
        fs::create_directories(batchFolder);
        fs::create_directories(programFolder);
        write("Sound.xml", soundXMEML());
        write("Damaged.xml", damagedXMEML());
        write("Ampersand.xml", ampersandXMEML());
        write("Cut.xml", soundXMEML().substr(0, 150));
        write("Empty.xml", "");
        write("Other.fcpxml",
              "<?xml version=\"1.0\"?>\n<!DOCTYPE fcpxml>\n<fcpxml version=\"1.9\">\n<resources>"
              "<format id=\"r1\"/><format id=\"r1\"/></resources></fcpxml>\n");
        batch.add({batchFolder});
    }
    void write(const std::string& name, const std::string& bytes) const {
        writeBytes(batchFolder + "/" + name, bytes);
        writeBytes(programFolder + "/" + name, bytes);
    }
    void expectEqualFolders() const {
        ASSERT_EQ(namesIn(batchFolder), namesIn(programFolder));
        for (const std::string& name : namesIn(batchFolder)) {
            EXPECT_EQ(readBytes(batchFolder + "/" + name), readBytes(programFolder + "/" + name))
                << name;
        }
    }
    ProgramResult program(const char* path, std::vector<std::string> arguments) const {
        ProgramSettings settings = files.repairer(std::move(arguments));
        settings.program = path;
        return runProgram(settings);
    }

    std::string batchFolder = files.path("batch");
    std::string programFolder = files.path("programs");
};

TEST_F(BatchAndProgramsTest, findTheSame) {
    run(BatchAction::check);
    const nlohmann::json report = nlohmann::json::parse(
        program(VORNIC_CHECK_PROGRAM, {"-r", "--format", "json", programFolder}).output);
    ASSERT_EQ(report["files"].size(), batch.size());
    for (const nlohmann::json& file : report["files"]) {
        const BatchRow row = rows().at(fs::path(std::string(file["path"])).filename());
        EXPECT_EQ(row.errors, file["counts"]["error"]) << row.name;
        EXPECT_EQ(row.warnings, file["counts"]["warning"]) << row.name;
        EXPECT_EQ(row.notes, file["counts"]["info"]) << row.name;
        EXPECT_EQ(nameOf(row.kind), file["kind"]) << row.name;
    }
    EXPECT_EQ(observer.told.size(), batch.size());
    EXPECT_EQ(rows().at("Sound.xml").result, BatchResult::sound);
    BatchRequest strict;
    strict.failOn = Severity::warning;
    run(strict);
    ASSERT_NE(rows().at("Sound.xml").warnings, 0U);
    EXPECT_EQ(rows().at("Sound.xml").result, BatchResult::findings);
}

// Real files, of which some are the same one by several names.
TEST_F(BatchTest, findsInRealFilesWhatTheProgramFinds) {
    const char* const samples = std::getenv("VORNIC_SAMPLES");
    if (samples == nullptr || !fs::is_directory(samples)) {
        GTEST_SKIP() << "VORNIC_SAMPLES names no folder";
    }
    batch.add({samples});
    ASSERT_NE(batch.size(), 0U);
    run(BatchAction::check);
    ProgramSettings settings = files.repairer({"-r", "--format", "json", "--max", "1", samples});
    settings.program = VORNIC_CHECK_PROGRAM;
    const nlohmann::json report = nlohmann::json::parse(runProgram(settings).output);
    std::map<std::string, nlohmann::json> found;
    for (const nlohmann::json& file : report["files"]) {
        found[file["path"]] = file["counts"];
    }
    std::size_t names = 0;
    for (std::size_t row = 0; row < batch.size(); ++row) {
        const BatchRow checked = batch.row(row);
        const nlohmann::json counts{
            {"error", checked.errors}, {"warning", checked.warnings}, {"info", checked.notes}};
        EXPECT_EQ(counts, found[checked.path]) << checked.path;
        names += 1 + checked.otherPaths.size();
    }
    EXPECT_EQ(names, found.size());
}

TEST_F(BatchAndProgramsTest, repairTheSame) {
    run(BatchAction::repair);
    for (const std::string& name : namesIn(programFolder)) {
        const bool isRepaired = program(VORNIC_REPAIR_PROGRAM, {programFolder + "/" + name})
                                    .errors.starts_with("The original is");
        EXPECT_EQ(rows().at(name).result == BatchResult::repaired, isRepaired) << name;
    }
    expectEqualFolders();
    EXPECT_EQ(rows().at("Damaged.xml").result, BatchResult::repaired);
    EXPECT_EQ(readBytes(rows().at("Damaged.xml").replaced), damagedXMEML());
    EXPECT_EQ(rows().at("Sound.xml").result, BatchResult::sound);
    EXPECT_EQ(rows().at("Cut.xml").result, BatchResult::unable) << rows().at("Cut.xml").reason;
    EXPECT_THAT(html(), HasSubstr("<li>Starting repair for file "));
}

TEST_F(BatchAndProgramsTest, mendTheSame) {
    run(BatchAction::mend);
    for (const std::string& name : namesIn(programFolder)) {
        static_cast<void>(program(VORNIC_CHECK_PROGRAM, {"--fix", programFolder + "/" + name}));
    }
    expectEqualFolders();
    EXPECT_EQ(rows().at("Ampersand.xml").result, BatchResult::mended);
    EXPECT_THAT(readBytes(batchFolder + "/Ampersand.xml"), HasSubstr("Pier &amp; "));
}

TEST_F(BatchAndProgramsTest, convertTheSame) {
    BatchRequest request;
    request.action = BatchAction::convert;
    request.version = "1.10";
    run(request);
    for (const std::string& name : namesIn(programFolder)) {
        static_cast<void>(
            program(VORNIC_CONVERT_PROGRAM, {"--to", "1.10", "--", programFolder + "/" + name}));
    }
    expectEqualFolders();
    EXPECT_EQ(rows().at("Other.fcpxml").result, BatchResult::converted);
    EXPECT_EQ(rows().at("Other.fcpxml").written, batchFolder + "/Other (1.10).fcpxml");
    EXPECT_EQ(rows().at("Sound.xml").result, BatchResult::unable) << "it is of the other format";
    EXPECT_EQ(rows().at("Cut.xml").result, BatchResult::failed) << "it cannot be read";
}

TEST_F(BatchAndProgramsTest, bringBackWhatARepairReplaced) {
    run(BatchAction::repair);
    EXPECT_THAT(run(BatchAction::restore), HasSubstr(" restored"));
    EXPECT_EQ(rows().at("Damaged.xml").result, BatchResult::restored);
    EXPECT_EQ(rows().at("Sound.xml").result, BatchResult::unable);
    EXPECT_EQ(readBytes(batchFolder + "/Damaged.xml"), damagedXMEML());
}

TEST_F(BatchTest, relinksByASearchThatWalksOnce) {
    std::string text = soundXMEML();
    text.insert(text.find("    </sequence>"),
                "<file id=\"f\"><name>a.mov</name><pathurl>file://localhost/gone/a.mov</pathurl>"
                "</file>");
    const std::string one = files.write("One.xml", text);
    const std::string two = files.write("Two.xml", text);
    fs::create_directory(files.path("media"));
    static_cast<void>(files.write("media/a.mov", "film"));
    batch.add({one, two});
    BatchRequest request;
    request.action = BatchAction::relink;
    request.relink.folders = {files.path("media")};
    request.isInPlace = true;
    EXPECT_EQ(run(request), "Relinking of 2 files: 2 relinked.");
    EXPECT_THAT(readBytes(one), HasSubstr(files.path("media/a.mov") + "</pathurl>"));
    EXPECT_EQ(readBytes(two), readBytes(one));
    EXPECT_EQ(readBytes(rows().at("One.xml").replaced), text);

    static_cast<void>(files.write(".One.xml.vornic-relink", "half"));
    EXPECT_EQ(run(request), "Relinking of 2 files: 2 sound.");
    EXPECT_FALSE(fs::exists(files.path(".One.xml.vornic-relink")));
}

TEST_F(BatchTest, endsASearchForMediaThatIsCancelled) {
    std::string text = soundXMEML();
    text.insert(text.find("    </sequence>"),
                "<file id=\"f\"><name>a.mov</name><pathurl>file://localhost/gone/a.mov</pathurl>"
                "</file>");
    RelinkRequest request;
    request.folders = {files.folder()};
    Relinker relinker(request);
    ErrorSlot error;
    const auto project = ProjectText::read(text, error);
    ASSERT_TRUE(project);
    relinker.prepare(*project, files.path("One.xml"));
    fs::create_directory(files.path("media"));
    static_cast<void>(files.write("media/a.mov", "film"));
    EXPECT_TRUE(relinker.search(StopToken([] { return true; })).empty());
    EXPECT_EQ(relinker.relink(*project, text, files.path("One.xml")).relinked, 0U);
    EXPECT_TRUE(relinker.search().empty());
    EXPECT_EQ(relinker.relink(*project, text, files.path("One.xml")).relinked, 1U);
}

TEST_F(BatchTest, repairsTheFileAndNotTheLinkThatItWasFoundBy) {
    fs::create_directory(files.path("cuts"));
    const std::string path = files.write("cuts/Z.xml", damagedXMEML());
    fs::create_symlink("Z.xml", files.path("cuts/A.xml"));
    batch.add({files.path("cuts")});
    EXPECT_EQ(run(BatchAction::repair), "Repair of 1 file: 1 repaired.");
    EXPECT_EQ(readBytes(path), repairedXMEML());
    EXPECT_TRUE(fs::is_symlink(files.path("cuts/A.xml")));
}

TEST_F(BatchTest, saysWhichFilesCannotBeRead) {
    const std::string path = files.write("Closed.xml", soundXMEML());
    fs::permissions(path, fs::perms::none);
    batch.add({path, files.write("Sound.xml", soundXMEML())});
    EXPECT_EQ(run(BatchAction::check), "2 files checked: 1 sound, 1 failed.");
    EXPECT_THAT(rows().at("Closed.xml").reason, HasSubstr(path));
    EXPECT_EQ(run(BatchAction::repair), "Repair of 2 files: 1 sound, 1 failed.");
}

TEST_F(BatchTest, canBeCancelledBetweenFilesAndGoOnLater) {
    constexpr std::size_t kFiles = 60;
    fs::create_directory(files.path("cuts"));
    for (std::size_t i = 0; i < kFiles; ++i) {
        static_cast<void>(files.write("cuts/" + std::to_string(i) + ".xml", damagedXMEML()));
    }
    RecordingBatchObserver watching;
    Batch slow({"vornic-test", "1"}, watching, 1);
    slow.add({files.path("cuts")});
    watching.onChange = [&slow] {
        if (slow.row(0).result != BatchResult::none) {
            slow.cancel();
        }
    };
    BatchRequest request;
    request.action = BatchAction::repair;
    ASSERT_TRUE(slow.startAll(request));
    EXPECT_FALSE(slow.startAll(request));
    slow.wait();
    ASSERT_EQ(watching.summaries.size(), 1U);
    EXPECT_THAT(watching.summaries[0].sentence(), StartsWith("Cancelled. Repair of "));
    EXPECT_LT(watching.summaries[0].count(BatchResult::repaired), kFiles);
    EXPECT_EQ(slow.row(kFiles - 1).state, BatchState::idle);
    EXPECT_EQ(slow.row(kFiles - 1).result, BatchResult::none);
    // A run that was cancelled leaves its working copy, as a window's does.
    for (const std::string& name : namesIn(files.path("cuts"))) {
        EXPECT_THAT(readBytes(files.path("cuts/" + name)),
                    AnyOf(Eq(damagedXMEML()), Eq(repairedXMEML())))
            << name;
    }
    watching.onChange = nullptr;
    ASSERT_TRUE(slow.startAll(request));
    slow.wait();
    EXPECT_EQ(watching.summaries[1].count(BatchResult::repaired) +
                  watching.summaries[1].count(BatchResult::sound),
              kFiles);
}

TEST_F(BatchTest, endsWithItsObserverWhenItIsDestroyed) {
    for (int i = 0; i < 20; ++i) {
        static_cast<void>(files.write(std::to_string(i) + ".xml", damagedXMEML()));
    }
    RecordingBatchObserver watching;
    {
        Batch gone({"vornic-test", "1"}, watching, 2);
        gone.add({files.folder()});
        ASSERT_TRUE(gone.startAll({}));
    }
    EXPECT_EQ(watching.summaries.size(), 1U);
}

// Of all reports together nothing stays in memory.
TEST_F(BatchTest, checksTenThousandFilesInBoundedMemory) {
    constexpr std::size_t kFiles = 10'000;
    constexpr std::size_t kMostMemory = std::size_t{48} << 20U;
    const std::string broken = ampersandXMEML();
    for (std::size_t i = 0; i < kFiles; ++i) {
        const std::string folder = "cuts/" + std::to_string(i / 100);
        if (i % 100 == 0) {
            fs::create_directories(files.path(folder));
        }
        static_cast<void>(files.write(folder + "/" + std::to_string(i) + ".xml", broken));
    }
    const std::size_t before = peakMemory();
    batch.add({files.path("cuts")});
    ASSERT_EQ(batch.size(), kFiles);
    EXPECT_EQ(run(BatchAction::check), "10000 files checked: 10000 with problems.");
    std::size_t length = 0;
    EXPECT_TRUE(batch.writeHTML([&length](std::string_view piece) {
        length += piece.size();
        return true;
    }));
    EXPECT_GT(length, kFiles * 500);
    if (kMemoryIsMeasurable) {
        EXPECT_LT(peakMemory() - before, kMostMemory);
    }
    EXPECT_EQ(observer.told.size(), kFiles);
    // Told in batches, not one by one.
    EXPECT_LT(observer.calls, kFiles / 5);
}

}  // namespace vornic::test
