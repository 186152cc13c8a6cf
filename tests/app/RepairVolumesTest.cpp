// Volumes that are full, far away, simple or read-only.

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/app/ProgramTest.h"
#include "tests/support/machine/FileState.h"
#include "tests/support/machine/PrivateMounts.h"

namespace vornic::test {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

namespace {

constexpr const char* kRepaired =
    "The file was repaired successfully. Errors were found in the file and were successfully "
    "repaired.\n";

/// The XMEML file with a long text in it, so that the file has about this size.
std::string ofSize(std::string text, std::size_t size) {
    const std::string begin = "        <note>";
    const std::string end = "</note>\n";
    return text.insert(text.find("    </sequence>"), begin + std::string(size, 'n') + end);
}

}  // namespace

/// A home without a Trash that anything could be moved into.
class NoTrashTest : public ProgramTest {
  protected:
    /// The repair ends with its success, but everything stays where it is.
    void expectNotSwapped() const {
        const std::string path = files.writeDamaged("cut.xml");
        const FileState before = fileState(path);
        const ProgramResult result = files.repair({path});
        EXPECT_EQ(result.output, repairedReport(path));
        EXPECT_EQ(result.errors,
                  "vornic-repair: The repaired file " + files.path("cut-backup.xml") +
                      " could not take the place of the file " + path + "; the log says why.\n");
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(fileState(path), before);
        FileState copy = before;
        copy.bytes = repairedXMEML();
        copy.attributes[kFinderInfo] = xmemlFinderInfo();
        EXPECT_EQ(fileState(files.path("cut-backup.xml")), copy);
        EXPECT_THAT(namesIn(files.folder()), ElementsAre("cut-backup.xml", "cut.xml"));
        const std::vector<std::string> log = files.log();
        EXPECT_THAT(log, ::testing::Contains(::testing::StartsWith(
                             "The file " + path + " could not be moved to the Trash. ")));
        // The alert is that of a success.
        EXPECT_EQ(log.back() + "\n", kRepaired);
    }

    /// A working copy of before stands in the way and stays there.
    void expectOldCopyStays() const {
        const std::string path = files.writeDamaged("cut.xml");
        const std::string copy = files.write("cut-backup.xml", "from before");
        const ProgramResult result = files.repair({path});
        EXPECT_EQ(result.output,
                  "Starting repair for file " + path +
                      "...\nCreating temporary file...\nError: unable to remove temporary file. "
                      "Please remove " +
                      copy + " manually.\n");
        EXPECT_EQ(result.errors, "vornic-repair: Unable to remove temporary file. Please remove " +
                                     copy + " manually.\n");
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(readBytes(path), damagedXMEML());
        EXPECT_EQ(readBytes(copy), "from before");
    }

    void makeHomeReadOnly() const {
        fs::create_directories(files.library(""));
        fs::permissions(files.home(), fs::perms::owner_read | fs::perms::owner_exec);
    }

    void TearDown() override { fs::permissions(files.home(), fs::perms::owner_all); }
};

TEST_F(NoTrashTest, aRepairedFileStaysBesideTheUsersWhenTheHomeIsReadOnly) {
    makeHomeReadOnly();
    expectNotSwapped();
}

TEST_F(NoTrashTest, aRepairedFileStaysBesideTheUsersWhenTheTrashIsAFile) {
    writeBytes(files.trash(), "no folder");
    expectNotSwapped();
    EXPECT_EQ(readBytes(files.trash()), "no folder");
}

TEST_F(NoTrashTest, aRepairedFileStaysBesideTheUsersWhenTheTrashIsReadOnly) {
    fs::create_directory(files.trash());
    fs::permissions(files.trash(), fs::perms::owner_read | fs::perms::owner_exec);
    expectNotSwapped();
    EXPECT_THAT(namesIn(files.trash()), IsEmpty());
}

TEST_F(NoTrashTest, aWorkingCopyOfBeforeStaysWhenTheHomeIsReadOnly) {
    makeHomeReadOnly();
    expectOldCopyStays();
}

TEST_F(NoTrashTest, aWorkingCopyOfBeforeStaysWhenTheTrashIsAFile) {
    writeBytes(files.trash(), "no folder");
    expectOldCopyStays();
}

TEST_F(NoTrashTest, aHomeThatIsNotThereIsNotMade) {
    const std::string path = files.writeDamaged("cut.xml");
    const std::string home = files.path("no home");
    ProgramSettings settings = files.repairer({path});
    settings.environment.front() = "HOME=" + home;
    const ProgramResult result = runProgram(settings);
    EXPECT_EQ(result.output, repairedReport(path));
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(readBytes(path), damagedXMEML());
    EXPECT_FALSE(exists(home));
}

TEST_F(NoTrashTest, aSoundFileNeedsNoTrash) {
    makeHomeReadOnly();
    const std::string path = files.writeSound("cut.xml");
    const ProgramResult result = files.repair({path});
    EXPECT_EQ(result.output, soundReport(path));
    EXPECT_EQ(result.status, 0);
}

/// A home on another volume than the files, in the machine's shared memory.
class TrashOnAnotherVolumeTest : public ProgramTest {
  protected:
    void SetUp() override {
        std::string pattern = "/dev/shm/vornic-test-XXXXXX";
        struct stat here {};
        struct stat there {};
        if (mkdtemp(pattern.data()) == nullptr) {
            GTEST_SKIP() << "there is no shared memory to put a home in";
        }
        home_ = pattern;
        ASSERT_EQ(stat(home_.c_str(), &there), 0);
        ASSERT_EQ(stat(files.folder().c_str(), &here), 0);
        if (here.st_dev == there.st_dev) {
            GTEST_SKIP() << "the shared memory is no volume of its own";
        }
    }

    void TearDown() override {
        std::error_code ignored;
        fs::remove_all(home_, ignored);
    }

    ProgramResult repairWithHomeThere(const std::string& path) const {
        ProgramSettings settings = files.repairer({path});
        settings.environment.front() = "HOME=" + home_;
        return runProgram(settings);
    }

    std::string home_;
};

TEST_F(TrashOnAnotherVolumeTest, getsACopyOfTheFileWithItsMode) {
    const std::string path = files.writeDamaged("cut.xml");
    ASSERT_EQ(chmod(path.c_str(), 0640), 0);
    const FileState before = fileState(path);
    const ProgramResult result = repairWithHomeThere(path);
    EXPECT_EQ(result.output, repairedReport(path));
    EXPECT_TRUE(tellsOriginal(result.errors, home_ + "/.Trash")) << result.errors;
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(readBytes(path), repairedXMEML());
    EXPECT_EQ(fileState(home_ + "/.Trash/cut.xml"), before);
    EXPECT_THAT(namesIn(files.folder()), ElementsAre("cut.xml"));
    EXPECT_THAT(namesIn(home_ + "/.Trash"), ElementsAre("cut.xml"));
}

TEST_F(TrashOnAnotherVolumeTest, numbersANameThatIsTaken) {
    const std::string path = files.writeDamaged("cut.xml");
    EXPECT_EQ(repairWithHomeThere(path).status, 0);
    EXPECT_EQ(files.writeDamaged("cut.xml"), path);
    EXPECT_EQ(repairWithHomeThere(path).status, 0);
    EXPECT_THAT(namesIn(home_ + "/.Trash"), ElementsAre("cut 2.xml", "cut.xml"));
    EXPECT_EQ(readBytes(home_ + "/.Trash/cut 2.xml"), damagedXMEML());
}

TEST_F(TrashOnAnotherVolumeTest, getsALinkAsALink) {
    const std::string target = files.writeDamaged("target.xml");
    const std::string path = files.path("cut.xml");
    fs::create_symlink("target.xml", path);
    EXPECT_EQ(repairWithHomeThere(path).status, 0);
    EXPECT_EQ(fs::read_symlink(home_ + "/.Trash/cut.xml"), "target.xml");
    EXPECT_EQ(readBytes(path), repairedXMEML());
    EXPECT_EQ(readBytes(target), damagedXMEML());
}

/// The programs under a limit for every file that they write: 32 KB, or 64 KB where the shell
/// counts larger blocks.
class FileSizeLimitTest : public ProgramTest {
  protected:
    static ProgramResult runLimited(ProgramSettings settings) {
        const std::vector<std::string> shell{"-c", "ulimit -f 64; exec \"$@\"", "sh",
                                             settings.program};
        settings.arguments.insert(settings.arguments.begin(), shell.begin(), shell.end());
        settings.program = "/bin/sh";
        return runProgram(settings);
    }
};

TEST_F(FileSizeLimitTest, withoutRoomForAWorkingCopyTheFileStays) {
    const std::string text = ofSize(damagedXMEML(), 100'000);
    const std::string path = files.write("cut.xml", text);
    const ProgramResult result = runLimited(files.repairer({path}));
    EXPECT_THAT(result.errors, HasSubstr("vornic-repair: Unable to create temporary file. "));
    EXPECT_THAT(result.errors, HasSubstr("the file would be too large.\n"));
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(readBytes(path), text);
    EXPECT_THAT(namesIn(files.folder()), ElementsAre("cut.xml"));
}

TEST_F(FileSizeLimitTest, aFileThatWouldGrowTooLargeIsNotConverted) {
    const std::string text = ofSize(soundXMEML(), 100'000);
    const std::string path = files.write("cut.xml", text);
    const ProgramResult result = runLimited(files.converter({"-convertxmeml", "3", path}));
    EXPECT_THAT(result.output, HasSubstr("Unable to save file " + path + " - "));
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(readBytes(path), text);
    EXPECT_THAT(namesIn(files.folder()), ElementsAre("cut.xml"));
}

/// A volume of the test's own, which only root can mount. The programs run unprivileged.
class SpecialVolumeTest : public ::testing::Test {
  protected:
    void SetUp() override {
        if (!mounts_.isAvailable()) {
            GTEST_SKIP() << "volumes can be mounted by root only";
        }
        std::string pattern = (fs::temp_directory_path() / "vornic-volume-XXXXXX").string();
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        volume_ = pattern;
    }

    void TearDown() override {
        files_.reset();
        unprivileged_.reset();
        if (!volume_.empty()) {
            static_cast<void>(unmountAndRemove());
        }
    }

    /// Mounts the volume, gives root's rights up and makes a home.
    void mount(const std::string& type, const std::string& options) {
        ASSERT_TRUE(mounts_.mountVolume(volume_, type, options));
        ASSERT_EQ(chmod(volume_.c_str(), 01777), 0);
        unprivileged_ = std::make_unique<Unprivileged>();
        files_ = std::make_unique<ProgramFiles>(material_);
    }

    [[nodiscard]] std::string onVolume(const std::string& name, const std::string& bytes) const {
        writeBytes(volume_ + "/" + name, bytes);
        return volume_ + "/" + name;
    }

    [[nodiscard]] static std::size_t pagesOf(const std::string& bytes) {
        constexpr std::size_t kPage = 4096;
        return (bytes.size() + kPage - 1) / kPage;
    }
    [[nodiscard]] static std::string cutOff(const std::string& text) {
        return text.substr(0, text.rfind("</sequence>"));
    }
    [[nodiscard]] ProgramResult salvage(const std::string& path) const {
        return files_->repair({"--salvage", path});
    }
    // Nothing is new on the volume, and it is said why.
    void expectNotSalvaged(const std::string& path) const {
        const std::vector<std::string> names = namesIn(volume_);
        const ProgramResult result = salvage(path);
        EXPECT_EQ(result.status, 3);
        EXPECT_EQ(result.errors, "vornic-repair: The file " + volume_ +
                                     "/cut-salvaged.xml cannot be written: no space left on the "
                                     "volume.\n");
        EXPECT_EQ(namesIn(volume_), names);
    }

    TestMaterial material_;
    PrivateMounts mounts_;
    std::unique_ptr<Unprivileged> unprivileged_;
    std::unique_ptr<ProgramFiles> files_;
    std::string volume_;

  private:
    [[nodiscard]] bool unmountAndRemove() const {
        std::error_code ignored;
        return mounts_.unmountVolume(volume_) && fs::remove(volume_, ignored);
    }
};

TEST_F(SpecialVolumeTest, withoutRoomForAWorkingCopyTheFileStays) {
    mount("tmpfs", "size=64k");
    const std::string text = ofSize(damagedXMEML(), 40'000);
    const std::string path = onVolume("cut.xml", text);
    const ProgramResult result = files_->repair({path});
    EXPECT_THAT(result.output, HasSubstr("Error: unable to create temporary file. "));
    EXPECT_THAT(result.output, HasSubstr("no space left on the volume.\n"));
    EXPECT_THAT(result.errors, HasSubstr("vornic-repair: Unable to create temporary file. "));
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(readBytes(path), text);
    EXPECT_THAT(namesIn(volume_), ElementsAre("cut.xml"));
}

TEST_F(SpecialVolumeTest, withoutRoomForTheResultTheFileStays) {
    mount("tmpfs", "size=128k");
    const std::string text = ofSize(damagedXMEML(), 45'000);
    const std::string path = onVolume("cut.xml", text);
    const ProgramResult result = files_->repair({path});
    EXPECT_THAT(result.output, HasSubstr("\nUnable to save file: "));
    EXPECT_THAT(result.output, HasSubstr("\nUnable to load file attributes. "));
    EXPECT_THAT(result.output, HasSubstr("\nUnable to repair file. "));
    EXPECT_THAT(result.output, ::testing::EndsWith("no space left on the volume..\n"));
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(readBytes(path), text);
    EXPECT_THAT(namesIn(volume_), ElementsAre("cut.xml"));
}

TEST_F(SpecialVolumeTest, withoutRoomForTheResultAConvertedFileStaysAsItWas) {
    mount("tmpfs", "size=64k");
    const std::string text = ofSize(soundXMEML(), 40'000);
    const std::string path = onVolume("cut.xml", text);
    const ProgramResult result = files_->convert({"-convertxmeml", "3", path});
    const std::string reason = " cannot be written: no space left on the volume.\n";
    EXPECT_EQ(result.output, "Unable to save file " + path + " - The file " + path + reason +
                                 "Unable to load attributes for file " + path + " - The file " +
                                 path + reason);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(readBytes(path), text);
    EXPECT_THAT(namesIn(volume_), ElementsAre("cut.xml"));
}

TEST_F(SpecialVolumeTest, withoutRoomInTheTrashTheFileStaysAndItsRepairedCopyBesideIt) {
    mount("tmpfs", "size=64k");
    const std::string text = ofSize(damagedXMEML(), 80'000);
    const std::string path = files_->write("cut.xml", text);
    ProgramSettings settings = files_->repairer({path});
    settings.environment.front() = "HOME=" + volume_;
    const ProgramResult result = runProgram(settings);
    EXPECT_THAT(result.output, ::testing::EndsWith(kRepaired));
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(readBytes(path), text);
    EXPECT_EQ(readBytes(files_->path("cut-backup.xml")), ofSize(repairedXMEML(), 80'000));
    EXPECT_THAT(namesIn(volume_ + "/.Trash"), IsEmpty());
}

TEST_F(SpecialVolumeTest, withoutRoomForTheLogAFileIsRepairedAllTheSame) {
    mount("tmpfs", "size=8k");
    const std::string path = files_->writeDamaged("cut.xml");
    ProgramSettings settings = files_->repairer({path});
    settings.environment[2] = "XDG_DATA_HOME=" + volume_;
    fs::create_directory(files_->trash());
    writeBytes(volume_ + "/filler", std::string(8192, 'f'));
    const ProgramResult result = runProgram(settings);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(readBytes(path), repairedXMEML());
    EXPECT_EQ(readBytes(files_->trash() + "/cut.xml"), damagedXMEML());
}

// With room for less than the copy, page by page, and for one name fewer than it takes.
TEST_F(SpecialVolumeTest, withoutRoomForASalvagedCopyNothingIsLeftOfIt) {
    constexpr std::size_t kPage = 4096;
    constexpr std::size_t kPages = 16;
    mount("tmpfs", "size=64k,nr_inodes=6");
    const std::string text = cutOff(ofSize(soundXMEML(), 20'000));
    const std::string path = onVolume("cut.xml", text);
    const FileState before = fileState(path);
    const std::size_t taken = pagesOf(text);
    for (std::size_t room = 0; room < pagesOf(text); ++room) {
        const std::string filler =
            onVolume("filler", std::string((kPages - taken - room) * kPage, 'f'));
        expectNotSalvaged(path);
        ASSERT_EQ(unlink(filler.c_str()), 0);
    }
    for (const char* const name : {"1", "2", "3", "4"}) {
        static_cast<void>(onVolume(name, ""));
    }
    expectNotSalvaged(path);
    EXPECT_EQ(fileState(path), before);
    ASSERT_EQ(unlink((volume_ + "/1").c_str()), 0);
    EXPECT_EQ(salvage(path).status, 1);
    EXPECT_THAT(readBytes(volume_ + "/cut-salvaged.xml"), HasSubstr("</xmeml>"));
}

// The first copy is whole; the second is told as not written.
TEST_F(SpecialVolumeTest, withRoomForOneOfTwoSalvagedCopiesKeepsThatOne) {
    mount("tmpfs", "size=72k");
    const std::string one = ofSize(soundXMEML(), 20'000);
    const std::string path = onVolume("two.xml", one + one.substr(one.find("<xmeml")));
    const ProgramResult result = salvage(path);
    EXPECT_EQ(result.status, 3);
    EXPECT_THAT(result.errors, HasSubstr("The salvaged copy is " + volume_ + "/two-salvaged.xml"));
    EXPECT_THAT(result.errors, HasSubstr("no space left on the volume"));
    EXPECT_THAT(namesIn(volume_), ElementsAre("two-salvaged.xml", "two.xml"));
    EXPECT_EQ(readBytes(volume_ + "/two-salvaged.xml"), one.substr(0, one.size() - 1));
}

TEST_F(SpecialVolumeTest, thatIsReadOnlyGetsNoSalvagedCopy) {
    mount("tmpfs", "size=64k");
    const std::string path = onVolume("cut.xml", cutOff(soundXMEML()));
    unprivileged_.reset();
    ASSERT_TRUE(mounts_.makeReadOnly(volume_));
    unprivileged_ = std::make_unique<Unprivileged>();
    const ProgramResult result = salvage(path);
    EXPECT_EQ(result.status, 3);
    EXPECT_THAT(result.errors, HasSubstr("The file " + volume_ +
                                         "/cut-salvaged.xml cannot be "
                                         "written: the volume is read-only.\n"));
    EXPECT_THAT(namesIn(volume_), ElementsAre("cut.xml"));
}

TEST_F(SpecialVolumeTest, withoutExtendedAttributesTheCodesAreLeftOut) {
    mount("ramfs", "");
    const std::string path = onVolume("cut.xml", damagedXMEML());
    if (setAttribute(path, "user.note", "x")) {
        GTEST_SKIP() << "this volume has extended attributes after all";
    }
    const ProgramResult result = files_->repair({path});
    EXPECT_EQ(result.output, repairedReport(path));
    EXPECT_TRUE(tellsOriginal(result.errors, files_->trash())) << result.errors;
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(readBytes(path), repairedXMEML());
    EXPECT_THAT(fileState(path).attributes, IsEmpty());
    EXPECT_EQ(readBytes(files_->trash() + "/cut.xml"), damagedXMEML());
}

TEST_F(SpecialVolumeTest, withoutExtendedAttributesAFileIsConvertedWithoutAWord) {
    mount("ramfs", "");
    const std::string path = onVolume("cut.xml", soundXMEML());
    const ProgramResult result = files_->convert({"-convertxmeml", "3", path});
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(readBytes(path), soundXMEML("3"));
}

TEST_F(SpecialVolumeTest, thatIsReadOnlyKeepsItsFile) {
    mount("tmpfs", "size=64k");
    const std::string path = onVolume("cut.xml", damagedXMEML());
    unprivileged_.reset();
    ASSERT_TRUE(mounts_.makeReadOnly(volume_));
    unprivileged_ = std::make_unique<Unprivileged>();
    const ProgramResult result = files_->repair({path});
    EXPECT_THAT(result.output, ::testing::EndsWith(": the volume is read-only.\n"));
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(readBytes(path), damagedXMEML());
    EXPECT_THAT(namesIn(volume_), ElementsAre("cut.xml"));
}

}  // namespace vornic::test
