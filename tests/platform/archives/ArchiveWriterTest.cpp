#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/archives/Archive.h"
#include "tests/platform/volumes/SecondVolume.h"
#include "tests/support/machine/FileState.h"
#include "tests/support/machine/PrivateMounts.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/machine/Unprivileged.h"

namespace vornic::platform {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

/// One entry as the archive's own list tells it.
struct ListedEntry {
    std::string name;
    mode_t mode = 0;
    bool isMarkedUTF8 = false;
};

std::uint32_t numberAt(const std::string& bytes, std::size_t at, std::size_t length) {
    std::uint32_t number = 0;
    for (std::size_t i = length; i-- > 0;) {
        number = number << 8U | static_cast<unsigned char>(bytes.at(at + i));
    }
    return number;
}

/// Reads the list at the archive's end by the format's own rules.
std::vector<ListedEntry> entriesOf(const std::string& path) {
    const std::string bytes = test::readBytes(path);
    std::vector<ListedEntry> entries;
    for (std::size_t at = bytes.find("PK\x01\x02"); at != std::string::npos;) {
        const std::size_t nameLength = numberAt(bytes, at + 28, 2);
        entries.push_back({.name = bytes.substr(at + 46, nameLength),
                           .mode = numberAt(bytes, at + 38, 4) >> 16U,
                           .isMarkedUTF8 = (numberAt(bytes, at + 8, 2) & 0x800U) != 0});
        at += 46 + nameLength + numberAt(bytes, at + 30, 2) + numberAt(bytes, at + 32, 2);
        at = bytes.compare(at, 4, "PK\x01\x02") == 0 ? at : std::string::npos;
    }
    return entries;
}

std::vector<std::string> listedNames(const std::string& path) {
    std::vector<std::string> names;
    for (const ListedEntry& entry : entriesOf(path)) {
        names.push_back(entry.name);
    }
    return names;
}

class ArchiveWriterTest : public ::testing::Test {
  protected:
    void makeProject() const {
        fs::create_directories(sandbox.path("Project/Media/Empty"));
        sandbox.write("Project/Media/clip.mov", "pictures");
        sandbox.write("Project/Cut.xml", "<xmeml/>");
        fs::create_symlink("Media/clip.mov", sandbox.path("Project/clip"));
    }
    bool compress(const std::string& source, bool includeParent) {
        return compressItem(source, archive, includeParent, error);
    }

    test::Unprivileged user;
    test::Sandbox sandbox;
    std::string archive = sandbox.path("made.zip");
    ErrorSlot error;
};

TEST_F(ArchiveWriterTest, keepsTheFolderAsTheTopEntry) {
    makeProject();
    ASSERT_TRUE(compress(sandbox.path("Project"), true)) << error->description;
    EXPECT_THAT(listedNames(archive),
                ElementsAre("Project/", "Project/Cut.xml", "Project/Media/", "Project/Media/Empty/",
                            "Project/Media/clip.mov", "Project/clip"));
}

TEST_F(ArchiveWriterTest, leavesTheFolderOutWhenOnlyItsContentsAreAskedFor) {
    makeProject();
    ASSERT_TRUE(compress(sandbox.path("Project/"), false));
    EXPECT_THAT(listedNames(archive),
                ElementsAre("Cut.xml", "Media/", "Media/Empty/", "Media/clip.mov", "clip"));
}

TEST_F(ArchiveWriterTest, putsAFileAtTheTopInBothForms) {
    sandbox.write("Cut.xml", "x");
    ASSERT_TRUE(compress(sandbox.path("Cut.xml"), true));
    EXPECT_THAT(listedNames(archive), ElementsAre("Cut.xml"));
    archive = sandbox.path("other.zip");
    ASSERT_TRUE(compress(sandbox.path("Cut.xml"), false));
    EXPECT_THAT(listedNames(archive), ElementsAre("Cut.xml"));
}

TEST_F(ArchiveWriterTest, archivesTheTargetOfALinkUnderTheLinksName) {
    makeProject();
    fs::create_symlink("Project", sandbox.path("Current"));
    ASSERT_TRUE(compress(sandbox.path("Current"), true));
    EXPECT_THAT(listedNames(archive), testing::Contains("Current/Cut.xml"));
}

TEST_F(ArchiveWriterTest, namesAFolderThatIsGivenByDotsByItsOwnName) {
    makeProject();
    ASSERT_TRUE(compress(sandbox.path("Project/Media/.."), true));
    EXPECT_THAT(listedNames(archive), testing::Contains("Project/Cut.xml"));
}

TEST_F(ArchiveWriterTest, keepsModesAndKinds) {
    makeProject();
    fs::permissions(sandbox.path("Project/Cut.xml"), fs::perms(0640));
    fs::permissions(sandbox.path("Project/Media/Empty"), fs::perms(0750));
    ASSERT_TRUE(compress(sandbox.path("Project"), false));
    std::map<std::string, mode_t> modes;
    for (const ListedEntry& entry : entriesOf(archive)) {
        modes[entry.name] = entry.mode;
    }
    EXPECT_EQ(modes["Cut.xml"], S_IFREG | 0640U);
    EXPECT_EQ(modes["Media/Empty/"], S_IFDIR | 0750U);
    EXPECT_EQ(modes["clip"] & S_IFMT, unsigned{S_IFLNK});
}

TEST_F(ArchiveWriterTest, marksNamesThatAreUTF8AndOnlyThose) {
    fs::create_directory(sandbox.path("Names"));
    sandbox.write("Names/plain", "");
    sandbox.write("Names/sch\xC3\xB6n \xF0\x9F\x8E\xAC", "");
    sandbox.write("Names/sch\xF6n", "");
    ASSERT_TRUE(compress(sandbox.path("Names"), false)) << error->description;
    std::map<std::string, bool> marks;
    for (const ListedEntry& entry : entriesOf(archive)) {
        marks[entry.name] = entry.isMarkedUTF8;
    }
    EXPECT_EQ(marks,
              (std::map<std::string, bool>{
                  {"plain", false}, {"sch\xC3\xB6n \xF0\x9F\x8E\xAC", true}, {"sch\xF6n", false}}));
}

TEST_F(ArchiveWriterTest, makesAnArchiveOfAnEmptyFolder) {
    fs::create_directory(sandbox.path("Empty"));
    ASSERT_TRUE(compress(sandbox.path("Empty"), false));
    EXPECT_THAT(listedNames(archive), IsEmpty());
    EXPECT_TRUE(test::readBytes(archive).starts_with("PK\x05\x06"));
}

TEST_F(ArchiveWriterTest, leavesItselfOutWhenItIsMadeInTheFolder) {
    makeProject();
    archive = sandbox.path("Project/made.zip");
    ASSERT_TRUE(compress(sandbox.path("Project"), false));
    EXPECT_THAT(listedNames(archive),
                ElementsAre("Cut.xml", "Media/", "Media/Empty/", "Media/clip.mov", "clip"));
}

TEST_F(ArchiveWriterTest, neverReplacesAFile) {
    sandbox.write("Cut.xml", "x");
    sandbox.write("made.zip", "other");
    EXPECT_FALSE(compress(sandbox.path("Cut.xml"), true));
    EXPECT_EQ(error->code, EEXIST);
    EXPECT_EQ(test::readBytes(archive), "other");
}

TEST_F(ArchiveWriterTest, leavesNothingWhenAnItemCannotBeRead) {
    makeProject();
    ASSERT_EQ(chmod(sandbox.path("Project/Media/clip.mov").c_str(), 0), 0);
    EXPECT_FALSE(compress(sandbox.path("Project"), true));
    EXPECT_EQ(error->code, EACCES);
    EXPECT_THAT(test::namesIn(sandbox.folder()), ElementsAre("Project"));
}

TEST_F(ArchiveWriterTest, refusesWhatIsNeitherFileNorFolderNorLink) {
    makeProject();
    ASSERT_EQ(mkfifo(sandbox.path("Project/pipe").c_str(), 0600), 0);
    EXPECT_FALSE(compress(sandbox.path("Project"), true));
    EXPECT_EQ(error->description, "The file " + sandbox.path("Project/pipe") +
                                      " cannot be archived: it is neither a file, nor a folder, "
                                      "nor a link.");
    EXPECT_THAT(test::namesIn(sandbox.folder()), ElementsAre("Project"));
}

TEST_F(ArchiveWriterTest, reportsAMissingSourceAndAMissingFolder) {
    EXPECT_FALSE(compress(sandbox.path("missing"), true));
    EXPECT_EQ(error->code, ENOENT);
    sandbox.write("Cut.xml", "x");
    archive = sandbox.path("missing/made.zip");
    error.reset();
    EXPECT_FALSE(compress(sandbox.path("Cut.xml"), true));
    EXPECT_EQ(error->code, ENOENT);
    EXPECT_FALSE(compressItem(std::string("a\0b", 3), archive, true, error));
    EXPECT_EQ(error->code, EINVAL);
}

TEST_F(ArchiveWriterTest, keepsMoreEntriesThanTheOldFormatCounts) {
    constexpr int kFiles = 70000;
    const test::SecondVolume volume;
    ASSERT_FALSE(volume.folder().empty());
    fs::create_directory(volume.path("many"));
    for (int number = 0; number < kFiles; ++number) {
        const int file = open(volume.path("many/" + std::to_string(number)).c_str(),
                              O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
        ASSERT_GE(file, 0);
        close(file);
    }
    ASSERT_TRUE(compress(volume.path("many"), true)) << error->description;
    ASSERT_TRUE(extractArchive(archive, volume.path("back"), error)) << error->description;
    EXPECT_EQ(test::namesIn(volume.path("back/many")).size(), std::size_t{kFiles});
}

TEST_F(ArchiveWriterTest, keepsAFileOfMoreThanFourGigabytes) {
    constexpr std::int64_t kSize = (std::int64_t{4} << 30) + 5;
    sandbox.write("large", "begin");
    ASSERT_EQ(truncate(sandbox.path("large").c_str(), kSize - 3), 0);
    std::ofstream(sandbox.path("large"), std::ios::app) << "end";
    ASSERT_TRUE(compress(sandbox.path("large"), true)) << error->description;
    ASSERT_TRUE(extractArchive(archive, sandbox.path("back"), error)) << error->description;
    const std::string back = sandbox.path("back/large");
    ASSERT_EQ(fs::file_size(back), std::uintmax_t{kSize});
    std::ifstream stream(back, std::ios::binary);
    std::string bytes(5, '\0');
    stream.read(bytes.data(), 5);
    EXPECT_EQ(bytes, "begin");
    stream.seekg(-4, std::ios::end);
    stream.read(bytes.data(), 4);
    EXPECT_EQ(bytes.substr(0, 4), std::string("\0end", 4));
}

TEST(ArchiveWriterVolumeTest, leavesNothingOnAFullVolume) {
    const test::PrivateMounts mounts;
    if (!mounts.isAvailable()) {
        GTEST_SKIP() << "needs root and the right to mount";
    }
    const test::Sandbox sandbox;
    fs::create_directory(sandbox.path("small"));
    ASSERT_TRUE(mounts.mountVolume(sandbox.path("small"), "tmpfs", "size=64k"));
    std::string noise(1 << 20, '\0');
    std::ifstream("/dev/urandom").read(noise.data(), static_cast<std::streamsize>(noise.size()));
    sandbox.write("noise", noise);
    ErrorSlot error;
    EXPECT_FALSE(compressItem(sandbox.path("noise"), sandbox.path("small/made.zip"), true, error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, ENOSPC);
    EXPECT_THAT(test::namesIn(sandbox.path("small")), IsEmpty());
    EXPECT_TRUE(mounts.unmountVolume(sandbox.path("small")));
}

}  // namespace
}  // namespace vornic::platform
