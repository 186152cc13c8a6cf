#include <array>
#include <cerrno>
#include <filesystem>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>

#include "platform/items/FileDates.h"
#include "tests/support/machine/PrivateMounts.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/machine/Unprivileged.h"

namespace vornic::platform {
namespace {

namespace fs = std::filesystem;
using std::chrono::nanoseconds;

constexpr FileDate kDate{nanoseconds(443'779'200'000'000'123)};

class FileDatesTest : public ::testing::Test {
  protected:
    void SetUp() override {
        if (setxattr(path.c_str(), "user.probe", "x", 1, 0) != 0) {
            GTEST_SKIP() << "the volume has no extended attributes";
        }
    }
    void store(const std::string& text) const {
        ASSERT_EQ(setxattr(path.c_str(), kCreationDateAttribute, text.data(), text.size(), 0), 0);
    }

    test::Unprivileged user;
    test::Sandbox sandbox;
    std::string path = sandbox.write("file", "x");
    ErrorSlot error;
};

TEST_F(FileDatesTest, knowNoCreationDateThatNobodyChose) {
    EXPECT_EQ(chosenCreationDate(path), std::nullopt);
    EXPECT_EQ(chosenCreationDate(sandbox.path("missing")), std::nullopt);
}

TEST_F(FileDatesTest, keepAChosenCreationDateToTheNanosecond) {
    EXPECT_TRUE(setCreationDate(path, kDate, error));
    EXPECT_EQ(chosenCreationDate(path), kDate);
    const FileDate beforeTheEpoch{nanoseconds(-1)};
    EXPECT_TRUE(setCreationDate(path, beforeTheEpoch, error));
    EXPECT_EQ(chosenCreationDate(path), beforeTheEpoch);
    EXPECT_FALSE(error);
}

TEST_F(FileDatesTest, storeACreationDateAsText) {
    EXPECT_TRUE(setCreationDate(path, kDate, error));
    std::array<char, 64> text{};
    EXPECT_EQ(getxattr(path.c_str(), kCreationDateAttribute, text.data(), text.size()), 19);
    EXPECT_STREQ(text.data(), "443779200.000000123");
}

TEST_F(FileDatesTest, readNoDateFromATextThatIsNone) {
    for (const char* text :
         {"", ".", "1", "1.0", "1.00000000", "1.0000000000", "x.000000000", "1.00000000x",
          "1.-00000001", "99999999999.000000000", "-99999999999.000000000",
          "99999999999999999999.000000000", " 1.000000000", "1.000000000 "}) {
        store(text);
        EXPECT_EQ(chosenCreationDate(path), std::nullopt) << text;
    }
    store("1.500000000");
    EXPECT_EQ(chosenCreationDate(path), FileDate(std::chrono::milliseconds(1500)));
}

TEST_F(FileDatesTest, chooseTheCreationDateOfAReadOnlyFileAndLeaveItSo) {
    fs::permissions(path, fs::perms::owner_read);
    EXPECT_TRUE(setCreationDate(path, kDate, error));
    EXPECT_EQ(chosenCreationDate(path), kDate);
    EXPECT_EQ(fs::status(path).permissions(), fs::perms::owner_read);
}

TEST_F(FileDatesTest, reportWhyACreationDateCannotBeChosen) {
    EXPECT_FALSE(setCreationDate(sandbox.path("missing"), kDate, error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, ENOENT);
}

TEST_F(FileDatesTest, setTheModificationDateAndNoOther) {
    struct stat before {};
    ASSERT_EQ(stat(path.c_str(), &before), 0);
    EXPECT_TRUE(setModificationDate(path, kDate, error));
    struct stat after {};
    ASSERT_EQ(stat(path.c_str(), &after), 0);
    EXPECT_EQ(after.st_mtim.tv_sec, 443'779'200);
    EXPECT_EQ(after.st_mtim.tv_nsec, 123);
    EXPECT_EQ(after.st_atim.tv_sec, before.st_atim.tv_sec);
    EXPECT_EQ(after.st_atim.tv_nsec, before.st_atim.tv_nsec);
    EXPECT_EQ(modificationDate(path), kDate);
}

TEST_F(FileDatesTest, setTheModificationDateThroughALinkAndReadTheLinksOwn) {
    fs::create_symlink(path, sandbox.path("link"));
    EXPECT_TRUE(setModificationDate(sandbox.path("link"), kDate, error));
    EXPECT_EQ(modificationDate(path), kDate);
    EXPECT_GT(modificationDate(sandbox.path("link")), kDate);
}

TEST_F(FileDatesTest, reportWhyTheModificationDateCannotBeSet) {
    EXPECT_FALSE(setModificationDate(sandbox.path("missing"), kDate, error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, ENOENT);
    const std::string cut = path + std::string("\0x", 2);
    EXPECT_FALSE(setModificationDate(cut, kDate, error));
    EXPECT_EQ(error->code, EINVAL);
    EXPECT_EQ(modificationDate(cut), std::nullopt);
    EXPECT_EQ(modificationDate(sandbox.path("missing")), std::nullopt);
}

TEST(FileDatesAsRoot, reportThatAVolumeKeepsNoCreationDate) {
    const test::Sandbox sandbox;
    const test::PrivateMounts mounts;
    if (!mounts.mountVolume(sandbox.folder(), "ramfs", "")) {
        GTEST_SKIP() << "may not mount";
    }
    ErrorSlot error;
    EXPECT_FALSE(setCreationDate(sandbox.write("file", "x"), kDate, error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, ENOTSUP);
}

}  // namespace
}  // namespace vornic::platform
