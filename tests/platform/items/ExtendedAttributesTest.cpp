#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "platform/files/FileDescriptor.h"
#include "platform/items/ExtendedAttributes.h"
#include "tests/support/fakes/FailingSystemCall.h"
#include "tests/support/machine/PrivateMounts.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/programs/ChildProcess.h"

namespace vornic::platform {
namespace {

class ExtendedAttributesTest : public test::SandboxTest {
  protected:
    void SetUp() override {
        path = sandbox.write("file", "x");
        if (setxattr(path.c_str(), "user.first", "one", 3, 0) != 0) {
            GTEST_SKIP() << "the volume has no extended attributes";
        }
        file = FileDescriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    }

    std::string path;
    FileDescriptor file;
};

std::vector<std::string> namesOf(int fileDescriptor) {
    return extendedAttributeNames(fileDescriptor).value().value_or(std::vector<std::string>());
}

bool contains(const std::vector<std::string>& names, const std::string& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

TEST_F(ExtendedAttributesTest, readsWhatWasSet) {
    EXPECT_EQ(extendedAttribute(file.get(), "user.first").value(), "one");
    const std::string value("\0\xFF\n", 3);
    EXPECT_EQ(setExtendedAttribute(file.get(), "user.second", value), 0);
    EXPECT_EQ(extendedAttribute(file.get(), "user.second").value(), value);
}

TEST_F(ExtendedAttributesTest, reportsThatTheNamesCannotBeListed) {
    const FileDescriptor to(::open(sandbox.write("copy", "x").c_str(), O_RDWR | O_CLOEXEC));
    EXPECT_TRUE(test::passesInChild([&] {
        ASSERT_TRUE(test::failSystemCall(SYS_flistxattr, EIO));
        EXPECT_EQ(extendedAttributeNames(file.get()).errorNumber(), EIO);
        EXPECT_EQ(copyExtendedAttributes(file.get(), to.get()), EIO);
    }));
}

TEST_F(ExtendedAttributesTest, countAsNoneOnAVolumeWithoutThem) {
    EXPECT_TRUE(test::passesInChild([&] {
        ASSERT_TRUE(test::failSystemCall(SYS_flistxattr, ENOTSUP));
        EXPECT_EQ(extendedAttributeNames(file.get()).value(), std::vector<std::string>());
        EXPECT_EQ(copyExtendedAttributes(file.get(), file.get()), 0);
    }));
}

TEST_F(ExtendedAttributesTest, replacesAnOlderValue) {
    EXPECT_EQ(setExtendedAttribute(file.get(), "user.first", "a longer value"), 0);
    EXPECT_EQ(extendedAttribute(file.get(), "user.first").value(), "a longer value");
}

TEST_F(ExtendedAttributesTest, removesOneAttribute) {
    EXPECT_EQ(setExtendedAttribute(file.get(), "user.second", "two"), 0);
    EXPECT_EQ(removeExtendedAttribute(file.get(), "user.first"), 0);
    EXPECT_FALSE(contains(namesOf(file.get()), "user.first"));
    EXPECT_TRUE(contains(namesOf(file.get()), "user.second"));
    EXPECT_EQ(removeExtendedAttribute(file.get(), "user.first"), ENODATA);
}

TEST_F(ExtendedAttributesTest, removesThroughADescriptorForThePathAlone) {
    const FileDescriptor pathAlone(::open(path.c_str(), O_PATH | O_CLOEXEC));
    EXPECT_EQ(removeExtendedAttribute(pathAlone.get(), "user.first"), 0);
    EXPECT_FALSE(contains(namesOf(file.get()), "user.first"));
}

TEST_F(ExtendedAttributesTest, keepsAnEmptyValueApartFromNone) {
    EXPECT_EQ(setExtendedAttribute(file.get(), "user.empty", ""), 0);
    EXPECT_EQ(extendedAttribute(file.get(), "user.empty").value(), "");
    EXPECT_EQ(extendedAttribute(file.get(), "user.none").errorNumber(), ENODATA);
}

TEST_F(ExtendedAttributesTest, listsEveryName) {
    EXPECT_EQ(setExtendedAttribute(file.get(), "user.second", "two"), 0);
    const std::vector<std::string> names = namesOf(file.get());
    EXPECT_TRUE(contains(names, "user.first"));
    EXPECT_TRUE(contains(names, "user.second"));
}

TEST_F(ExtendedAttributesTest, worksThroughADescriptorOfThePathAlone) {
    const FileDescriptor byPath(::open(path.c_str(), O_PATH | O_CLOEXEC));
    ASSERT_TRUE(byPath);
    EXPECT_TRUE(contains(namesOf(byPath.get()), "user.first"));
    EXPECT_EQ(extendedAttribute(byPath.get(), "user.first").value(), "one");
    EXPECT_EQ(setExtendedAttribute(byPath.get(), "user.first", "new"), 0);
    EXPECT_EQ(extendedAttribute(file.get(), "user.first").value(), "new");
}

TEST_F(ExtendedAttributesTest, copiesEveryAttribute) {
    EXPECT_EQ(setExtendedAttribute(file.get(), "user.second", "two"), 0);
    const FileDescriptor copy(::open(sandbox.write("copy", "x").c_str(), O_RDONLY | O_CLOEXEC));
    EXPECT_EQ(setExtendedAttribute(copy.get(), "user.own", "kept"), 0);
    copyExtendedAttributes(file.get(), copy.get());
    EXPECT_EQ(extendedAttribute(copy.get(), "user.first").value(), "one");
    EXPECT_EQ(extendedAttribute(copy.get(), "user.second").value(), "two");
    EXPECT_EQ(extendedAttribute(copy.get(), "user.own").value(), "kept");
}

TEST_F(ExtendedAttributesTest, distinguishesAVolumeWithoutAttributes) {
    const test::PrivateMounts mounts;
    if (!mounts.isAvailable() || !mounts.mountVolume(sandbox.folder(), "ramfs", "")) {
        GTEST_SKIP() << "needs the right to mount a volume";
    }
    const FileDescriptor plain(::open(sandbox.write("plain", "x").c_str(), O_RDONLY | O_CLOEXEC));
    EXPECT_EQ(setExtendedAttribute(plain.get(), "user.first", "x"), ENOTSUP);
    EXPECT_EQ(extendedAttribute(plain.get(), "user.first").errorNumber(), ENOTSUP);
    EXPECT_FALSE(contains(namesOf(plain.get()), "user.first"));
    copyExtendedAttributes(file.get(), plain.get());
    EXPECT_EQ(test::readBytes(sandbox.path("plain")), "x");
}

}  // namespace
}  // namespace vornic::platform
