#include <cerrno>
#include <filesystem>
#include <string>
#include <string_view>

#include <gmock/gmock.h>
#include <sys/xattr.h>

#include "foundation/files/QMFileManager.h"
#include "platform/items/FileAttributes.h"
#include "tests/support/fakes/SubstituteMountTable.h"
#include "tests/support/machine/PrivateMounts.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/machine/Unprivileged.h"
#include "tests/support/programs/ConsoleCapture.h"
#include "tests/support/texts/LogCapture.h"

namespace vornic {
namespace {

namespace fs = std::filesystem;
using test::ConsoleCapture;
using test::SubstituteMountTable;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kProgress = "user.com.apple.progress.fractionCompleted";
constexpr const char* kNoProgress =
    "Unable to set Finder progress - this is not an Apple-formatted drive.";
/// 1984-01-24 08:00:00 +0000.
constexpr QMFileManager::Date kProgressDate{std::chrono::seconds(443779200)};

/// The raw attribute of a file, "" when there is none.
std::string attribute(const std::string& path, const std::string& name) {
    std::string value(1024, '\0');
    const ssize_t length = getxattr(path.c_str(), name.c_str(), value.data(), value.size());
    value.resize(length > 0 ? static_cast<std::size_t>(length) : 0);
    return value;
}

void setAttribute(const std::string& path, const std::string& name, std::string_view value) {
    EXPECT_EQ(setxattr(path.c_str(), name.c_str(), value.data(), value.size(), 0), 0);
}

/// As a user whose log is the test's, on a volume that is what it is.
class QMFileManagerMetadata : public ::testing::Test {
  protected:
    void SetUp() override {
        if (setxattr(path.c_str(), "user.probe", "x", 1, 0) != 0) {
            GTEST_SKIP() << "the volume has no extended attributes";
        }
    }

    test::Unprivileged user;
    test::Sandbox sandbox;
    test::LogCapture log{test::LogCapture::Printing::on};
    std::string path = sandbox.write("file", "x");
    std::string missing = sandbox.path("missing");
};

/// The same on a volume that passes for one of Apple's.
class QMFileManagerAppleMetadata : public QMFileManagerMetadata {
  protected:
    SubstituteMountTable table{{{"/", "apfs", "/dev/disk1s1"}}};
};

TEST_F(QMFileManagerMetadata, refusesToReadAttributesElsewhereThanOnAppleVolumes) {
    setAttribute(path, "user.com.apple.kind", "clip");
    ConsoleCapture console;
    EXPECT_EQ(QMFileManager::metadataValueForKey("com.apple.kind", path), std::nullopt);
    EXPECT_THAT(console.lines(), IsEmpty());
    EXPECT_THAT(log.entries(),
                ElementsAre("Unable to get Finder metadata - this is not an Apple-formatted "
                            "drive."));
}

TEST_F(QMFileManagerMetadata, refusesToSetAttributesElsewhereThanOnAppleVolumes) {
    ConsoleCapture console;
    EXPECT_FALSE(QMFileManager::setMetadataValue("clip", "com.apple.kind", path));
    EXPECT_THAT(console.lines(), IsEmpty());
    EXPECT_EQ(attribute(path, "user.com.apple.kind"), "");
    EXPECT_THAT(log.entries(),
                ElementsAre("Unable to set Finder metadata - this is not an Apple-formatted "
                            "drive."));
}

TEST_F(QMFileManagerMetadata, printsNothingWhenItRefusesAttributes) {
    ::testing::internal::CaptureStdout();
    EXPECT_FALSE(QMFileManager::setMetadataValue("clip", "com.apple.kind", path));
    EXPECT_EQ(QMFileManager::metadataValueForKey("com.apple.kind", path), std::nullopt);
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
}

TEST_F(QMFileManagerMetadata, logsAndPrintsThatItShowsNoProgressElsewhere) {
    ::testing::internal::CaptureStdout();
    QMFileManager::setFinderProgress(0.5F, path);
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), std::string(kNoProgress) + "\n");
    QMFileManager::removeFinderProgressForFile(path);
    EXPECT_THAT(log.entries(), ElementsAre(kNoProgress, kNoProgress));
    EXPECT_EQ(attribute(path, kProgress), "");
    EXPECT_EQ(platform::chosenCreationDate(path), std::nullopt);
}

TEST_F(QMFileManagerMetadata, saysNothingAboutAMissingFile) {
    ConsoleCapture console;
    EXPECT_EQ(QMFileManager::metadataValueForKey("com.apple.kind", missing), std::nullopt);
    EXPECT_FALSE(QMFileManager::setMetadataValue("clip", "com.apple.kind", missing));
    QMFileManager::setFinderProgress(0.5F, missing);
    EXPECT_THAT(console.lines(), IsEmpty());
    EXPECT_THAT(log.entries(), IsEmpty());
    EXPECT_FALSE(fs::exists(missing));
}

TEST_F(QMFileManagerAppleMetadata, saysNothingAboutAMissingFileEither) {
    ConsoleCapture console;
    EXPECT_EQ(QMFileManager::metadataValueForKey("com.apple.kind", missing), std::nullopt);
    EXPECT_FALSE(QMFileManager::setMetadataValue("clip", "com.apple.kind", missing));
    QMFileManager::setFinderProgress(0.5F, missing);
    EXPECT_THAT(console.lines(), IsEmpty());
    EXPECT_FALSE(fs::exists(missing));
}

TEST_F(QMFileManagerAppleMetadata, storesAnAttributeWithoutAZeroAtItsEnd) {
    EXPECT_TRUE(QMFileManager::setMetadataValue("Schnittfassung \xC3\xA4", "com.apple.kind", path));
    EXPECT_EQ(attribute(path, "user.com.apple.kind"), "Schnittfassung \xC3\xA4");
    EXPECT_TRUE(QMFileManager::setMetadataValue("two", "com.apple.kind", path));
    EXPECT_EQ(attribute(path, "user.com.apple.kind"), "two");
    EXPECT_THAT(log.entries(), IsEmpty());
}

TEST_F(QMFileManagerAppleMetadata, readsAnAttributeAndReportsItsSizeOnTheConsoleEachTime) {
    setAttribute(path, "user.com.apple.kind", "\xC3\xA4 clip");
    ConsoleCapture console;
    EXPECT_EQ(QMFileManager::metadataValueForKey("com.apple.kind", path), "\xC3\xA4 clip");
    EXPECT_EQ(QMFileManager::metadataValueForKey("com.apple.kind", path), "\xC3\xA4 clip");
    EXPECT_THAT(console.lines(), ElementsAre("buffer val: 7", "buffer val: 7"));
    EXPECT_THAT(log.entries(), IsEmpty());
}

TEST_F(QMFileManagerAppleMetadata, reportsTheErrorOfAnAttributeThatIsMissing) {
    ConsoleCapture console;
    EXPECT_EQ(QMFileManager::metadataValueForKey("com.apple.kind", path), std::nullopt);
    EXPECT_THAT(console.lines(), ElementsAre("buffer val: -1", "Error retrieving file attribute: " +
                                                                   std::to_string(ENODATA)));
}

TEST_F(QMFileManagerAppleMetadata, readsAnEmptyAttributeAsNothing) {
    setAttribute(path, "user.com.apple.kind", "");
    ConsoleCapture console;
    EXPECT_EQ(QMFileManager::metadataValueForKey("com.apple.kind", path), std::nullopt);
    EXPECT_THAT(console.lines(), ElementsAre("buffer val: 0"));
}

TEST_F(QMFileManagerAppleMetadata, readsValuesOfUpTo255Bytes) {
    setAttribute(path, "user.longest", std::string(255, 'a'));
    setAttribute(path, "user.longer", std::string(256, 'a'));
    ConsoleCapture console;
    EXPECT_EQ(QMFileManager::metadataValueForKey("longest", path), std::string(255, 'a'));
    EXPECT_EQ(QMFileManager::metadataValueForKey("longer", path), std::nullopt);
    EXPECT_THAT(console.lines(), ElementsAre("buffer val: 255", "buffer val: 256"));
}

TEST_F(QMFileManagerAppleMetadata, readsWhatIsNoUtf8AsNothing) {
    setAttribute(path, "user.bytes", "a\xFF");
    const ConsoleCapture console;
    EXPECT_EQ(QMFileManager::metadataValueForKey("bytes", path), std::nullopt);
}

TEST_F(QMFileManagerAppleMetadata, reportsThatAnAttributeCannotBeSet) {
    fs::permissions(path, fs::perms::owner_read);
    ConsoleCapture console;
    EXPECT_FALSE(QMFileManager::setMetadataValue("clip", "com.apple.kind", path));
    EXPECT_THAT(console.lines(),
                ElementsAre("Error setting extended attribute for file " + path + " - -1"));
    EXPECT_EQ(attribute(path, "user.com.apple.kind"), "");
    EXPECT_THAT(log.entries(), IsEmpty());
}

TEST_F(QMFileManagerAppleMetadata, setsAnAttributeOfTheFileThatALinkLeadsTo) {
    fs::create_symlink(path, sandbox.path("link"));
    EXPECT_TRUE(QMFileManager::setMetadataValue("clip", "kind", sandbox.path("link")));
    EXPECT_EQ(attribute(path, "user.kind"), "clip");
    const ConsoleCapture console;
    EXPECT_EQ(QMFileManager::metadataValueForKey("kind", sandbox.path("link")), "clip");
}

TEST_F(QMFileManagerAppleMetadata, writesAFinderProgressWithThreeDecimals) {
    QMFileManager::setFinderProgress(0.5F, path);
    EXPECT_EQ(attribute(path, kProgress), "0.500");
    QMFileManager::setFinderProgress(0.12345F, path);
    EXPECT_EQ(attribute(path, kProgress), "0.123");
    QMFileManager::setFinderProgress(1.0F, path);
    EXPECT_EQ(attribute(path, kProgress), "1.000");
    QMFileManager::setFinderProgress(0.0F, path);
    EXPECT_EQ(attribute(path, kProgress), "0.000");
    EXPECT_THAT(log.entries(), IsEmpty());
}

TEST_F(QMFileManagerAppleMetadata, givesAFileWithProgressTheDateThatTheFinderLooksFor) {
    const auto modified = platform::modificationDate(path);
    QMFileManager::setFinderProgress(0.0F, path);
    EXPECT_EQ(platform::chosenCreationDate(path), kProgressDate);
    EXPECT_EQ(platform::modificationDate(path), modified);
}

TEST_F(QMFileManagerAppleMetadata, takesTheProgressAwayAndCreatesTheFileWhenItWasChanged) {
    QMFileManager::setFinderProgress(0.5F, path);
    const QMFileManager::Date date(std::chrono::milliseconds(1'700'000'000'250));
    ASSERT_TRUE(QMFileManager::setModificationDate(date, path));
    QMFileManager::setFinderProgress(-1.0F, path);
    EXPECT_EQ(getxattr(path.c_str(), kProgress, nullptr, 0), -1);
    EXPECT_EQ(platform::chosenCreationDate(path), date);
    EXPECT_EQ(platform::modificationDate(path), date);
}

TEST_F(QMFileManagerAppleMetadata, removesAProgressThatIsNotThere) {
    QMFileManager::removeFinderProgressForFile(path);
    EXPECT_EQ(platform::chosenCreationDate(path), platform::modificationDate(path));
    EXPECT_THAT(log.entries(), IsEmpty());
}

TEST_F(QMFileManagerAppleMetadata, removesAProgressByItsShortName) {
    QMFileManager::setFinderProgress(0.5F, path);
    QMFileManager::removeFinderProgressForFile(path);
    EXPECT_EQ(getxattr(path.c_str(), kProgress, nullptr, 0), -1);
}

TEST_F(QMFileManagerMetadata, readsNoLabelWhereNoneIsStored) {
    EXPECT_EQ(QMFileManager::finderColorIndexForPath(path), 0);
    EXPECT_EQ(QMFileManager::finderColorIndexForPath(missing), 0);
}

TEST_F(QMFileManagerMetadata, readsEveryLabelThatItStored) {
    for (const int index : {1, 2, 3, 4, 5, 6, 7, 0}) {
        QMFileManager::setFinderColorIndex(index, path);
        EXPECT_EQ(QMFileManager::finderColorIndexForPath(path), index);
    }
}

TEST_F(QMFileManagerMetadata, storesALabelNextToTypeAndCreator) {
    const platform::FileAttributes codes{.hfsTypeCode = 0x584D4C20, .hfsCreatorCode = 0x4B657947};
    ErrorSlot error;
    ASSERT_TRUE(platform::writeFileAttributes(path, codes, error));
    QMFileManager::setFinderColorIndex(6, path);
    EXPECT_EQ(platform::readFileAttributes(path, error), codes);
}

TEST_F(QMFileManagerMetadata, storesNoNumberThatIsNoLabel) {
    QMFileManager::setFinderColorIndex(3, path);
    QMFileManager::setFinderColorIndex(8, path);
    QMFileManager::setFinderColorIndex(-1, path);
    EXPECT_EQ(QMFileManager::finderColorIndexForPath(path), 3);
}

TEST_F(QMFileManagerMetadata, storesNoLabelWithoutAPath) {
    QMFileManager::setFinderColorIndex(3, std::nullopt);
    QMFileManager::setFinderColorIndex(3, missing);
    EXPECT_FALSE(fs::exists(missing));
    EXPECT_THAT(log.entries(), IsEmpty());
}

TEST(QMFileManagerColors, areSevenAndNothingForOtherNumbers) {
    const auto color = QMFileManager::finderColorForColorIndex;
    EXPECT_EQ(color(1), (FinderColor{0.0, 0.0, 0.72, 1.0}));
    EXPECT_EQ(color(2), (FinderColor{0.2056, 0.5, 0.85, 1.0}));
    EXPECT_EQ(color(3), (FinderColor{0.7917, 0.26, 0.86, 1.0}));
    EXPECT_EQ(color(4), (FinderColor{0.5789, 0.56, 0.98, 1.0}));
    EXPECT_EQ(color(5), (FinderColor{0.1388, 0.54, 0.95, 1.0}));
    EXPECT_EQ(color(6), (FinderColor{0.0083, 0.54, 1.0, 1.0}));
    EXPECT_EQ(color(7), (FinderColor{0.0888, 0.52, 0.98, 1.0}));
    for (const int index : {0, 8, -1, -7, 1000}) {
        EXPECT_EQ(color(index), std::nullopt) << index;
    }
}

TEST_F(QMFileManagerMetadata, findsTheColorOfAFilesLabel) {
    EXPECT_EQ(QMFileManager::finderColorForPath(path), std::nullopt);
    QMFileManager::setFinderColorIndex(6, path);
    EXPECT_EQ(QMFileManager::finderColorForPath(path), (FinderColor{0.0083, 0.54, 1.0, 1.0}));
    EXPECT_EQ(QMFileManager::finderColorForPath(missing), std::nullopt);
}

TEST(QMFileManagerMetadataAsRoot, ignoresAVolumeWithoutAttributesWhereItReportsNothing) {
    const test::Sandbox sandbox;
    const test::PrivateMounts mounts;
    if (!mounts.mountVolume(sandbox.folder(), "ramfs", "")) {
        GTEST_SKIP() << "may not mount";
    }
    const std::string path = sandbox.write("file", "x");
    const SubstituteMountTable table({{"/", "hfs+", "/dev/disk1s1"}});
    QMFileManager::setFinderColorIndex(6, path);
    EXPECT_EQ(QMFileManager::finderColorIndexForPath(path), 0);
    QMFileManager::setFinderProgress(0.5F, path);
    QMFileManager::setFinderProgress(-1.0F, path);
    ConsoleCapture console;
    EXPECT_FALSE(QMFileManager::setMetadataValue("clip", "kind", path));
    EXPECT_EQ(QMFileManager::metadataValueForKey("kind", path), std::nullopt);
    EXPECT_THAT(
        console.lines(),
        ElementsAre("Error setting extended attribute for file " + path + " - -1", "buffer val: -1",
                    "Error retrieving file attribute: " + std::to_string(ENOTSUP)));
}

}  // namespace
}  // namespace vornic
