#include <cerrno>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/files/FileSystem.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/machine/Unprivileged.h"
#include "tests/support/programs/ChildProcess.h"

namespace vornic::platform {
namespace {

namespace fs = std::filesystem;

class FileSystemTest : public test::SandboxTest {
  protected:
    ErrorSlot error;
};

/// As a user whom permissions hold for.
class FileSystemPermissionTest : public ::testing::Test {
  protected:
    test::Unprivileged user;
    test::Sandbox sandbox;
    ErrorSlot error;
};

TEST_F(FileSystemTest, takesALinkForItsTarget) {
    const std::string file = sandbox.write("file", "x");
    fs::create_symlink(file, sandbox.path("link"));
    fs::create_symlink(sandbox.folder(), sandbox.path("folder"));
    EXPECT_TRUE(fileExists(sandbox.path("link")));
    EXPECT_FALSE(isDirectory(sandbox.path("link")));
    EXPECT_TRUE(isDirectory(sandbox.path("folder")));
}

TEST_F(FileSystemTest, takesADanglingLinkForNothingButANode) {
    fs::create_symlink("missing", sandbox.path("link"));
    EXPECT_FALSE(fileExists(sandbox.path("link")));
    EXPECT_TRUE(nodeExists(sandbox.path("link")));
    EXPECT_FALSE(nodeExists(sandbox.path("missing")));
}

TEST_F(FileSystemTest, takesAProgramAndALinkToOneForExecutable) {
    fs::create_symlink("/bin/sh", sandbox.path("link"));
    EXPECT_TRUE(isExecutableFile("/bin/sh"));
    EXPECT_TRUE(isExecutableFile(sandbox.path("link")));
}

TEST_F(FileSystemTest, takesNothingElseForExecutable) {
    EXPECT_FALSE(isExecutableFile(sandbox.write("plain", "text")));
    EXPECT_FALSE(isExecutableFile(sandbox.path("missing")));
    EXPECT_FALSE(isExecutableFile(""));
    EXPECT_FALSE(isExecutableFile(std::string("/bin/sh\0x", 9)));
}

TEST_F(FileSystemTest, takesNoFolderThatMayBeEnteredForExecutable) {
    fs::create_directories(sandbox.path("Tool.app/Contents/MacOS"));
    EXPECT_FALSE(isExecutableFile(sandbox.path("Tool.app")));
    EXPECT_FALSE(isExecutableFile("/usr/bin"));
}

TEST_F(FileSystemTest, findsNothingAtAnEmptyPathOrOneWithANulByte) {
    EXPECT_FALSE(fileExists(""));
    const std::string path = sandbox.write("file", "x") + std::string(1, '\0') + "more";
    EXPECT_FALSE(fileExists(path));
    EXPECT_FALSE(nodeExists(path));
    EXPECT_FALSE(isDirectory(sandbox.folder() + std::string(1, '\0')));
    EXPECT_EQ(fileIdentity(path), std::nullopt);
    EXPECT_EQ(readFile(path, error), std::nullopt);
    EXPECT_FALSE(createDirectory(sandbox.folder() + std::string("/a\0b", 4), error));
    EXPECT_FALSE(synchronizeFile(path, error));
    EXPECT_FALSE(test::exists(sandbox.path("a")));
}

TEST_F(FileSystemTest, knowsTwoNamesOfOneFile) {
    const std::string file = sandbox.write("file", "x");
    fs::create_hard_link(file, sandbox.path("other"));
    sandbox.write("third", "x");
    ASSERT_NE(fileIdentity(file), std::nullopt);
    EXPECT_EQ(fileIdentity(file), fileIdentity(sandbox.path("other")));
    EXPECT_NE(fileIdentity(file), fileIdentity(sandbox.path("third")));
    EXPECT_EQ(fileIdentity(sandbox.path("missing")), std::nullopt);
}

TEST_F(FileSystemTest, distinguishesALinkFromItsTarget) {
    const std::string file = sandbox.write("file", "x");
    fs::create_symlink(file, sandbox.path("link"));
    EXPECT_NE(fileIdentity(file), fileIdentity(sandbox.path("link")));
}

TEST_F(FileSystemTest, knowsTheCurrentFolderUntilItIsRemoved) {
    EXPECT_TRUE(test::passesInChild([this] {
        const std::string folder = sandbox.path("here");
        fs::create_directory(folder);
        fs::current_path(folder);
        EXPECT_EQ(currentDirectory(), folder);
        fs::remove(folder);
        EXPECT_EQ(currentDirectory(), "");
    }));
}

TEST_F(FileSystemTest, makesPathsAbsoluteFromTheWorkingFolder) {
    EXPECT_EQ(absolutePath("/a/../b"), "/a/../b");
    EXPECT_EQ(absolutePath(""), std::nullopt);
    EXPECT_TRUE(test::passesInChild([&] {
        const std::string folder = sandbox.path("working");
        fs::create_directory(folder);
        fs::current_path(folder);
        EXPECT_EQ(absolutePath("-rf"), folder + "/-rf");
        fs::remove(folder);
        EXPECT_EQ(absolutePath("x"), std::nullopt);
        EXPECT_EQ(absolutePath("/x"), "/x");
        EXPECT_EQ(chdir("/"), 0);
        EXPECT_EQ(absolutePath("x"), "/x");
    }));
}

TEST_F(FileSystemTest, readsEveryByte) {
    std::string bytes;
    for (int count = 0; count < 100'000; ++count) {
        bytes += static_cast<char>(count * 7);
    }
    EXPECT_EQ(readFile(sandbox.write("file", bytes), error), bytes);
    EXPECT_EQ(readFile(sandbox.write("empty", ""), error), "");
    EXPECT_FALSE(error);
}

// How often this process has read (proc(5), /proc/pid/io).
long readCalls() {
    std::ifstream table("/proc/self/io");
    for (std::string line; std::getline(table, line);) {
        if (line.starts_with("syscr: ")) {
            return std::stol(line.substr(7));
        }
    }
    return -1;
}

TEST_F(FileSystemTest, readsAFileThatDoesNotTellItsSize) {
    const long before = readCalls();
    const std::optional<std::string> status = readFile("/proc/self/status", error);
    const long after = readCalls();
    ASSERT_TRUE(status);
    EXPECT_TRUE(status->starts_with("Name:"));
    EXPECT_GT(status->size(), 500U);
    ASSERT_GE(before, 0);
    EXPECT_LT(after - before, 20) << "it is read in blocks";
}

TEST_F(FileSystemTest, reportsThatAFileIsTooLargeForTheMemory) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "sanitizers end the program at such a request";
#endif
    const std::string path = sandbox.write("file", "x");
    constexpr off_t kTerabytes = off_t{15} << 40U;
    if (truncate(path.c_str(), kTerabytes) != 0) {
        GTEST_SKIP() << "the volume holds no files of that size";
    }
    EXPECT_EQ(readFile(path, error), std::nullopt);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->description, "The file " + path + " cannot be read: not enough memory.");
}

TEST_F(FileSystemTest, readsThroughALink) {
    fs::create_symlink(sandbox.write("file", "text"), sandbox.path("link"));
    EXPECT_EQ(readFile(sandbox.path("link"), error), "text");
}

TEST_F(FileSystemTest, neverHangsOnAPipe) {
    const std::string pipe = sandbox.path("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_EQ(readFile(pipe, error), std::nullopt);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, EINVAL);
}

TEST_F(FileSystemTest, refusesToReadFoldersAndDevices) {
    EXPECT_EQ(readFile(sandbox.folder(), error), std::nullopt);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->description,
              "The file " + sandbox.folder() + " cannot be opened: it is a folder.");
    EXPECT_EQ(readFile("/dev/zero", error), std::nullopt);
    EXPECT_EQ(error->code, EINVAL);
}

TEST_F(FileSystemTest, namesTheFileThatIsMissing) {
    EXPECT_EQ(readFile(sandbox.path("Cut 1.xml"), error), std::nullopt);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->description, "The file " + sandbox.path("Cut 1.xml") +
                                      " cannot be opened: no such file or folder.");
}

TEST_F(FileSystemPermissionTest, namesTheFileThatMayNotBeRead) {
    const std::string file = sandbox.write("secret", "x");
    ASSERT_EQ(chmod(file.c_str(), 0), 0);
    EXPECT_EQ(readFile(file, error), std::nullopt);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->description, "The file " + file + " cannot be opened: permission denied.");
}

TEST_F(FileSystemTest, makesAFolderWithAllAboveIt) {
    EXPECT_TRUE(createDirectory(sandbox.path("a/b/c"), error));
    EXPECT_TRUE(isDirectory(sandbox.path("a/b/c")));
    EXPECT_TRUE(createDirectory(sandbox.path("d//e/./f///"), error));
    EXPECT_TRUE(isDirectory(sandbox.path("d/e/f")));
}

TEST_F(FileSystemTest, takesAnExistingFolderForSuccess) {
    fs::create_symlink(sandbox.folder(), sandbox.path("link"));
    EXPECT_TRUE(createDirectory(sandbox.folder(), error));
    EXPECT_TRUE(createDirectory(sandbox.path("link"), error));
    EXPECT_TRUE(createDirectory("/", error));
    EXPECT_FALSE(error);
}

TEST_F(FileSystemTest, makesNoFolderWhereAFileStands) {
    const std::string file = sandbox.write("file", "x");
    EXPECT_FALSE(createDirectory(file, error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, EEXIST);
    EXPECT_FALSE(createDirectory(file + "/below", error));
    EXPECT_EQ(error->code, ENOTDIR);
    EXPECT_EQ(test::readBytes(file), "x");
}

TEST_F(FileSystemTest, makesNoFolderOfNoNameOrATooLongOne) {
    EXPECT_FALSE(createDirectory("", error));
    EXPECT_TRUE(error);
    EXPECT_FALSE(createDirectory(sandbox.path(std::string(256, 'x')), error));
    EXPECT_EQ(error->code, ENAMETOOLONG);
}

TEST_F(FileSystemPermissionTest, namesTheFolderThatCannotBeMade) {
    fs::create_directory(sandbox.path("closed"));
    ASSERT_EQ(chmod(sandbox.path("closed").c_str(), 0500), 0);
    EXPECT_FALSE(createDirectory(sandbox.path("closed/a/b"), error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->description,
              "The folder " + sandbox.path("closed/a") + " cannot be made: permission denied.");
}

TEST_F(FileSystemTest, synchronizesFilesFoldersAndTargetsOfLinks) {
    const std::string file = sandbox.write("file", "x");
    fs::create_symlink("file", sandbox.path("link"));
    EXPECT_TRUE(synchronizeFile(file, error));
    EXPECT_TRUE(synchronizeFile(sandbox.path("link"), error));
    EXPECT_TRUE(synchronizeFile(sandbox.folder(), error));
    EXPECT_FALSE(error);
}

TEST_F(FileSystemTest, reportsThatAMissingFileCannotBeSynchronized) {
    EXPECT_FALSE(synchronizeFile(sandbox.path("missing"), error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, ENOENT);
}

TEST_F(FileSystemTest, keepsAnErrorThatAnotherOperationLeft) {
    error = posixError("before", EIO);
    EXPECT_TRUE(createDirectory(sandbox.path("a"), error));
    EXPECT_EQ(readFile(sandbox.write("file", "x"), error), "x");
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, EIO);
}

TEST_F(FileSystemTest, listsAFolderByteForByte) {
    for (const char* name : {"b", "B", "a\xFF", ".hidden", "Icon\r"}) {
        sandbox.write(name, "");
    }
    fs::create_symlink(sandbox.folder(), sandbox.path("link"));
    const std::vector<std::string> names{".hidden", "B", "Icon\r", "a\xFF", "b", "link"};
    EXPECT_EQ(namesInFolder(sandbox.folder(), error), names);
    EXPECT_EQ(namesInFolder(sandbox.path("link"), error), names);
}

TEST_F(FileSystemTest, listsNothingButFolders) {
    EXPECT_EQ(namesInFolder(sandbox.write("file", ""), error), std::nullopt);
    EXPECT_EQ(error->code, ENOTDIR);
    EXPECT_EQ(namesInFolder(sandbox.path("missing"), error), std::nullopt);
    EXPECT_EQ(error->code, ENOENT);
    EXPECT_EQ(namesInFolder(sandbox.folder() + std::string("\0x", 2), error), std::nullopt);
    EXPECT_EQ(error->code, EINVAL);
}

TEST_F(FileSystemPermissionTest, reportsAFolderThatCannotBeListed) {
    fs::create_directory(sandbox.path("shut"));
    fs::permissions(sandbox.path("shut"), fs::perms::none);
    EXPECT_EQ(namesInFolder(sandbox.path("shut"), error), std::nullopt);
    EXPECT_EQ(error->code, EACCES);
    EXPECT_EQ(error->description,
              "The folder " + sandbox.path("shut") + " cannot be read: permission denied.");
}

TEST_F(FileSystemTest, setsPermissionBitsOfALinksTarget) {
    const std::string file = sandbox.write("file", "x");
    fs::create_symlink("file", sandbox.path("link"));
    EXPECT_TRUE(setPermissions(sandbox.path("link"), 0100604, error));
    EXPECT_EQ(fs::status(file).permissions(), fs::perms(0604));
    EXPECT_FALSE(setPermissions(sandbox.path("missing"), 0604, error));
    EXPECT_EQ(error->code, ENOENT);
    EXPECT_FALSE(setPermissions(std::string("a\0b", 3), 0604, error));
    EXPECT_EQ(error->code, EINVAL);
}

TEST_F(FileSystemTest, followsLinksToTheEnd) {
    const std::string file = sandbox.write("file", "");
    ASSERT_EQ(symlink("file", sandbox.path("relative").c_str()), 0);
    ASSERT_EQ(symlink(sandbox.path("relative").c_str(), sandbox.path("absolute").c_str()), 0);
    EXPECT_EQ(resolveFinalLink(sandbox.path("absolute")).value(), file);
}

TEST_F(FileSystemTest, followsADanglingLinkToWhatItNames) {
    ASSERT_EQ(symlink("missing", sandbox.path("link").c_str()), 0);
    EXPECT_EQ(resolveFinalLink(sandbox.path("link")).value(), sandbox.path("missing"));
}

TEST_F(FileSystemTest, noticesLinksThatLeadInACircle) {
    ASSERT_EQ(symlink("b", sandbox.path("a").c_str()), 0);
    ASSERT_EQ(symlink("a", sandbox.path("b").c_str()), 0);
    EXPECT_EQ(resolveFinalLink(sandbox.path("a")).errorNumber(), ELOOP);
}

}  // namespace
}  // namespace vornic::platform
