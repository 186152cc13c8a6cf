#include <cerrno>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <string_view>

#include <archive.h>
#include <archive_entry.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>

#include "platform/archives/Archive.h"
#include "tests/support/fakes/FailingSystemCall.h"
#include "tests/support/machine/FileState.h"
#include "tests/support/machine/PrivateMounts.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/machine/Unprivileged.h"
#include "tests/support/programs/ChildProcess.h"

namespace vornic::platform {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

/// Makes archives as anybody might, entry by entry.
class ForeignArchive {
  public:
    explicit ForeignArchive(const std::string& path) : archive_(archive_write_new()) {
        EXPECT_EQ(archive_write_set_format_zip(archive_), ARCHIVE_OK);
        EXPECT_EQ(archive_write_open_filename(archive_, path.c_str()), ARCHIVE_OK);
    }
    ~ForeignArchive() { EXPECT_EQ(archive_write_free(archive_), ARCHIVE_OK); }
    ForeignArchive(const ForeignArchive&) = delete;
    ForeignArchive& operator=(const ForeignArchive&) = delete;

    ForeignArchive& file(const std::string& name, std::string_view contents, mode_t mode = 0644) {
        return add(name, AE_IFREG | mode, contents, nullptr);
    }
    ForeignArchive& folder(const std::string& name, mode_t mode = 0755) {
        return add(name, AE_IFDIR | mode, "", nullptr);
    }
    ForeignArchive& link(const std::string& name, const char* target) {
        return add(name, AE_IFLNK | 0777U, "", target);
    }

  private:
    ForeignArchive& add(const std::string& name, mode_t mode, std::string_view contents,
                        const char* target) {
        struct archive_entry* entry = archive_entry_new();
        archive_entry_set_pathname(entry, name.c_str());
        archive_entry_set_mode(entry, mode);
        archive_entry_set_size(entry, static_cast<la_int64_t>(contents.size()));
        archive_entry_set_mtime(entry, 1000000000, 0);
        if (target != nullptr) {
            archive_entry_set_symlink(entry, target);
        }
        EXPECT_EQ(archive_write_header(archive_, entry), ARCHIVE_OK);
        EXPECT_EQ(archive_write_data(archive_, contents.data(), contents.size()),
                  static_cast<la_ssize_t>(contents.size()));
        archive_entry_free(entry);
        return *this;
    }

    struct archive* archive_;
};

class ArchiveReaderTest : public ::testing::Test {
  protected:
    bool extract(const ArchiveLimits& limits = {}) {
        return extractArchive(archive, destination, error, limits);
    }
    [[nodiscard]] std::string extracted(std::string_view name) const {
        return destination + "/" + std::string(name);
    }
    /// Neither the folder nor anything else but what stood there before.
    void expectNothingMade() const {
        EXPECT_THAT(test::namesIn(sandbox.folder()), ElementsAre("made.zip"));
        EXPECT_THAT(test::namesIn(fs::path(sandbox.folder()).parent_path().string()),
                    ElementsAre("files", "home", "tmp"));
    }

    test::Unprivileged user;
    test::Sandbox sandbox;
    std::string archive = sandbox.path("made.zip");
    std::string destination = sandbox.path("Out");
    ErrorSlot error;
};

TEST_F(ArchiveReaderTest, bringsBackWhatWasArchived) {
    fs::create_directories(sandbox.path("Project/Empty"));
    sandbox.write("Project/sch\xC3\xB6n.xml", "<xmeml/>");
    sandbox.write("Project/sch\xF6n", "bytes");
    sandbox.write("Project/empty", "");
    fs::create_symlink("sch\xC3\xB6n.xml", sandbox.path("Project/link"));
    fs::create_symlink("no/such", sandbox.path("Project/dangling"));
    fs::permissions(sandbox.path("Project/sch\xC3\xB6n.xml"), fs::perms(0751));
    fs::permissions(sandbox.path("Project/Empty"), fs::perms(0500));
    ASSERT_TRUE(compressItem(sandbox.path("Project"), archive, true, error));
    ASSERT_TRUE(extract()) << error->description;
    EXPECT_EQ(test::namesIn(extracted("Project")), test::namesIn(sandbox.path("Project")));
    for (const std::string& name : test::namesIn(sandbox.path("Project"))) {
        const auto before = test::fileState(sandbox.path("Project/" + name));
        EXPECT_EQ(test::fileState(extracted("Project/" + name)), before) << name;
    }
}

TEST_F(ArchiveReaderTest, keepsTimesOfFilesFoldersAndLinks) {
    ForeignArchive(archive).folder("d").link("d/link", "file").file("d/file", "x");
    ASSERT_TRUE(extract());
    for (const char* name : {"d", "d/file", "d/link"}) {
        struct stat status {};
        ASSERT_EQ(lstat(extracted(name).c_str(), &status), 0);
        EXPECT_EQ(status.st_mtim.tv_sec, 1000000000) << name;
    }
}

TEST_F(ArchiveReaderTest, fillsFoldersBeforeTheyAreClosed) {
    ForeignArchive(archive).folder("d", 0500).folder("d/e", 0500).file("d/e/file", "x", 0400);
    ASSERT_TRUE(extract()) << error->description;
    EXPECT_EQ(test::readBytes(extracted("d/e/file")), "x");
    EXPECT_EQ(fs::status(extracted("d")).permissions(), fs::perms(0500));
    EXPECT_EQ(fs::status(extracted("d/e")).permissions(), fs::perms(0500));
    EXPECT_EQ(fs::status(extracted("d/e/file")).permissions(), fs::perms(0400));
    fs::permissions(extracted("d"), fs::perms(0700));
    fs::permissions(extracted("d/e"), fs::perms(0700));
}

TEST_F(ArchiveReaderTest, makesFoldersThatHaveNoEntry) {
    ForeignArchive(archive).file("a/b/c", "x").file("./d", "y");
    ASSERT_TRUE(extract());
    EXPECT_EQ(test::readBytes(extracted("a/b/c")), "x");
    EXPECT_EQ(test::readBytes(extracted("d")), "y");
}

TEST_F(ArchiveReaderTest, makesTheFoldersAboveTheDestination) {
    ForeignArchive(archive).file("a", "x");
    destination = sandbox.path("new/folder/Out/");
    ASSERT_TRUE(extract());
    EXPECT_EQ(test::readBytes(extracted("a")), "x");
    EXPECT_THAT(test::namesIn(sandbox.path("new/folder")), ElementsAre("Out"));
}

TEST_F(ArchiveReaderTest, givesTheFolderTheUsualMode) {
    ForeignArchive(archive).file("a", "x");
    fs::create_directory(sandbox.path("usual"));
    ASSERT_TRUE(extract());
    EXPECT_EQ(fs::status(destination).permissions(),
              fs::status(sandbox.path("usual")).permissions());
}

TEST_F(ArchiveReaderTest, readsAnEmptyArchive) {
    fs::create_directory(sandbox.path("Empty"));
    ASSERT_TRUE(compressItem(sandbox.path("Empty"), archive, false, error));
    ASSERT_TRUE(extract()) << error->description;
    EXPECT_TRUE(fs::is_empty(destination));
}

TEST_F(ArchiveReaderTest, leavesOutTheBitsThatSpeakForAnotherUser) {
    ForeignArchive(archive).file("a", "x", 06755);
    ASSERT_TRUE(extract());
    EXPECT_EQ(fs::status(extracted("a")).permissions(), fs::perms(0755));
}

TEST_F(ArchiveReaderTest, takesTheLaterOfTwoFilesOfOneName) {
    ForeignArchive(archive).file("a", "first", 0400).file("a", "second");
    ASSERT_TRUE(extract()) << error->description;
    EXPECT_EQ(test::readBytes(extracted("a")), "second");
}

TEST_F(ArchiveReaderTest, refusesANameThatIsMarkedWrongly) {
    ForeignArchive(archive).file("sch\xF6n", "x").file("b", "y");
    std::string bytes = test::readBytes(archive);
    for (const std::string& header : {std::string("PK\x03\x04"), std::string("PK\x01\x02")}) {
        // Says that the first name is UTF-8.
        bytes[bytes.find(header) + (header[2] == '\x03' ? 7 : 9)] |= '\x08';
    }
    sandbox.write("made.zip", bytes);
    EXPECT_FALSE(extract());
    EXPECT_THAT(error->description, testing::HasSubstr("has no name that can be read"));
    expectNothingMade();
}

TEST_F(ArchiveReaderTest, refusesAnEntryWithoutAName) {
    ForeignArchive(archive).file("a", "x").file("b", "y");
    std::string bytes = test::readBytes(archive);
    for (std::size_t at = bytes.find('b'); at != std::string::npos; at = bytes.find('b', at + 1)) {
        bytes[at] = '\0';
    }
    sandbox.write("made.zip", bytes);
    EXPECT_FALSE(extract());
    expectNothingMade();
}

TEST_F(ArchiveReaderTest, refusesAnAbsoluteName) {
    ForeignArchive(archive).file("good", "x").file(sandbox.path("stolen"), "x");
    EXPECT_FALSE(extract());
    EXPECT_EQ(error->description, "The file " + archive + " cannot be extracted: its entry " +
                                      sandbox.path("stolen") + " leads out of the folder.");
    expectNothingMade();
}

TEST_F(ArchiveReaderTest, refusesDotsInAName) {
    for (const char* name : {"../stolen", "a/../../stolen", "a/../b", ".."}) {
        ForeignArchive(archive).file("good", "x").file(name, "x");
        EXPECT_FALSE(extract()) << name;
        expectNothingMade();
    }
}

TEST_F(ArchiveReaderTest, refusesLinksThatLeaveTheFolder) {
    for (const std::string& target :
         {std::string("/etc/hosts"), std::string(".."), std::string("../made.zip"),
          std::string("a/../../x"), destination + "/a"}) {
        ForeignArchive(archive).file("a", "x").link("link", target.c_str());
        EXPECT_FALSE(extract()) << target;
        EXPECT_EQ(error->description, "The file " + archive +
                                          " cannot be extracted: its entry link is a link that "
                                          "leads out of the folder.");
        expectNothingMade();
    }
}

TEST_F(ArchiveReaderTest, refusesALinkThatLeavesThroughAnEarlierOne) {
    ForeignArchive(archive)
        .folder("d")
        .folder("d/e")
        .link("d/e/up", "../..")
        .link("d/e/x", "up/../stolen");
    EXPECT_FALSE(extract());
    expectNothingMade();
}

TEST_F(ArchiveReaderTest, writesNothingThroughALink) {
    for (const char* target : {"..", "/tmp", "inside"}) {
        ForeignArchive(archive).folder("inside").link("link", target).file("link/stolen", "x");
        EXPECT_FALSE(extract()) << target;
        expectNothingMade();
    }
}

TEST_F(ArchiveReaderTest, writesNoFileOverALink) {
    ForeignArchive(archive).file("a", "x").link("link", "a").file("link", "other");
    EXPECT_FALSE(extract());
    expectNothingMade();
}

TEST_F(ArchiveReaderTest, refusesAnEntryBelowALinkInWhateverOrder) {
    const fs::path outside = sandbox.path("outside");
    ForeignArchive(archive)
        .folder("dir")
        .link("a", "dir")
        .link("a/b", "../../../outside")
        .link("a/b/new/evil", "x");
    EXPECT_FALSE(extract());
    EXPECT_EQ(error->description,
              "The file " + archive + " cannot be extracted: its entry a/b lies below a link.");
    expectNothingMade();
    ForeignArchive(archive).file("a/b", "x").folder("dir").link("a", "dir");
    EXPECT_FALSE(extract());
    expectNothingMade();
    ForeignArchive(archive).link("a", "dir").folder("a/deep/er").folder("dir");
    EXPECT_FALSE(extract());
    expectNothingMade();
    EXPECT_FALSE(fs::exists(outside));
}

TEST_F(ArchiveReaderTest, takesALinkForAFileThatOnlyBeginsLikeAnother) {
    ForeignArchive(archive).file("dir/x", "x").link("a", "dir").file("ab/c", "y").file("a.b", "z");
    ASSERT_TRUE(extract()) << error->description;
    EXPECT_EQ(test::readBytes(extracted("a/x")), "x");
}

TEST_F(ArchiveReaderTest, changesNoModeThroughALinkThatTakesAFoldersPlace) {
    // A folder and a link of one name: whoever comes last, nothing else gets the folder's mode.
    fs::create_directory(sandbox.path("other"));
    fs::permissions(sandbox.path("other"), fs::perms(0700));
    ForeignArchive(archive).folder("d", 0755).link("d", "../other");
    EXPECT_FALSE(extract());
    EXPECT_EQ(fs::status(sandbox.path("other")).permissions(), fs::perms(0700));
    fs::remove(sandbox.path("other"));
    expectNothingMade();
}

TEST_F(ArchiveReaderTest, refusesMoreThanItMayHold) {
    ForeignArchive(archive).file("a", std::string(5000, 'x')).file("b", std::string(5000, 'y'));
    EXPECT_TRUE(extract({.bytes = 10000, .timesItsSize = 1})) << error->description;
    fs::remove_all(destination);
    EXPECT_FALSE(extract({.bytes = 9999, .timesItsSize = 1}));
    EXPECT_EQ(error->description, "The file " + archive +
                                      " cannot be extracted: it holds far more than its size "
                                      "lets expect.");
    expectNothingMade();
    EXPECT_TRUE(extract({.bytes = 0, .timesItsSize = 200})) << "what its size lets expect";
}

TEST_F(ArchiveReaderTest, refusesMoreFilesFoldersAndLinksThanItMayMake) {
    ForeignArchive(archive).file("a/b/c", "x").folder("d").link("l", "d");
    EXPECT_TRUE(extract({.entries = 5})) << error->description;
    fs::remove_all(destination);
    EXPECT_FALSE(extract({.entries = 4}));
    EXPECT_EQ(error->code, EFBIG);
    EXPECT_EQ(error->description, "The file " + archive +
                                      " cannot be extracted: it makes more than 4 files and "
                                      "folders.");
    expectNothingMade();
    EXPECT_FALSE(extract({.entries = 1})) << "folders without an entry count";
    expectNothingMade();
}

TEST_F(ArchiveReaderTest, refusesTextsThatAreTooLong) {
    ForeignArchive(archive).file("abcdef", "x");
    EXPECT_FALSE(extract({.textLength = 5}));
    expectNothingMade();
    EXPECT_FALSE(extract({.allText = 5}));
    expectNothingMade();
    ForeignArchive(archive).file("a/b/c", "x");
    EXPECT_FALSE(extract({.depth = 2}));
    expectNothingMade();
    ForeignArchive(archive).link("l", std::string(4096, 'x').c_str());
    EXPECT_FALSE(extract());
    EXPECT_EQ(error->code, EINVAL);
    expectNothingMade();
}

TEST_F(ArchiveReaderTest, removesAgainWhatIsAsDeepAsItMayBe) {
    std::string name;
    for (int level = 0; level < 256; ++level) {
        name += "d/";
    }
    ForeignArchive(archive).folder(name).file("good", "x").file("bad/../x", "y");
    EXPECT_FALSE(extract());
    expectNothingMade();
}

TEST_F(ArchiveReaderTest, extractsWhereTheKernelCannotOpenInOneStep) {
    ForeignArchive(archive).folder("d", 0750).file("d/e/f", "x").link("l", "d/e");
    test::ChildProcess child([this] {
        ASSERT_TRUE(test::failSystemCall(SYS_openat2, ENOSYS));
        EXPECT_TRUE(extract()) << error->description;
    });
    EXPECT_EQ(child.wait(), 0);
    EXPECT_EQ(test::readBytes(extracted("l/f")), "x");
    EXPECT_EQ(fs::status(extracted("d")).permissions(), fs::perms(0750));
}

TEST_F(ArchiveReaderTest, refusesALinkWithoutATarget) {
    ForeignArchive(archive).link("link", "");
    EXPECT_FALSE(extract());
    expectNothingMade();
}

TEST_F(ArchiveReaderTest, refusesADestinationThatExists) {
    ForeignArchive(archive).file("a", "x");
    fs::create_directory(destination);
    EXPECT_FALSE(extract());
    EXPECT_EQ(error->code, EEXIST);
    EXPECT_TRUE(fs::is_empty(destination));
    EXPECT_FALSE(extractArchive(archive, "", error));
    EXPECT_FALSE(extractArchive(archive, std::string("a\0b", 3), error));
}

TEST_F(ArchiveReaderTest, leavesNothingOfADamagedArchive) {
    std::string noise(100000, '\0');
    std::ifstream("/dev/urandom").read(noise.data(), static_cast<std::streamsize>(noise.size()));
    ForeignArchive(archive).file("a", "x").file("b", noise);
    const std::string whole = test::readBytes(archive);
    std::string flipped = whole;
    flipped[whole.size() / 2] = static_cast<char>(flipped[whole.size() / 2] ^ 1);
    for (const std::string& damaged :
         {whole.substr(0, whole.size() / 2), flipped, std::string("no archive"), std::string()}) {
        sandbox.write("made.zip", damaged);
        error.reset();
        EXPECT_FALSE(extract()) << damaged.size();
        EXPECT_TRUE(error);
        expectNothingMade();
    }
}

TEST_F(ArchiveReaderTest, reportsAMissingArchiveAndOfWhatIsNone) {
    EXPECT_FALSE(extract());
    EXPECT_EQ(error->code, ENOENT);
    ASSERT_EQ(mkfifo(archive.c_str(), 0600), 0);
    EXPECT_FALSE(extract()) << "nobody is waited for";
    expectNothingMade();
}

TEST(ArchiveReaderVolumeTest, leavesNothingOnAFullVolume) {
    const test::PrivateMounts mounts;
    if (!mounts.isAvailable()) {
        GTEST_SKIP() << "needs root and the right to mount";
    }
    const test::Sandbox sandbox;
    fs::create_directory(sandbox.path("small"));
    ASSERT_TRUE(mounts.mountVolume(sandbox.path("small"), "tmpfs", "size=64k"));
    ForeignArchive(sandbox.path("made.zip")).file("a", "x").file("b", std::string(1 << 20, 'x'));
    ErrorSlot error;
    EXPECT_FALSE(extractArchive(sandbox.path("made.zip"), sandbox.path("small/Out"), error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, ENOSPC);
    EXPECT_THAT(test::namesIn(sandbox.path("small")), IsEmpty());
    EXPECT_TRUE(mounts.unmountVolume(sandbox.path("small")));
}

}  // namespace
}  // namespace vornic::platform
