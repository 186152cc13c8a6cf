#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "job/JournaledSwap.h"
#include "job/MendFile.h"
#include "job/Undo.h"
#include "platform/files/FileDescriptor.h"
#include "platform/locks/FileClaim.h"
#include "report/RuleTable.h"
#include "tests/job/JobTest.h"
#include "tests/support/fakes/RecordingSwapObserver.h"
#include "tests/support/machine/AccessList.h"
#include "tests/support/machine/FileState.h"

namespace vornic {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kDamaged =
    "<?xml version=\"1.0\"?>\n<xmeml version=\"5\">\n\t<name>a & b</name>\n</xmeml>\n";
constexpr std::string_view kMended =
    "<?xml version=\"1.0\"?>\n<xmeml version=\"5\">\n\t<name>a &amp; b</name>\n</xmeml>\n";

class MendFileTest : public test::SandboxTest {
  protected:
    MendedFile mend(const std::string& file) { return mendFile(file, {}, waiting, observer); }
    std::vector<std::string> namesInFolder() const { return test::namesIn(sandbox.folder()); }

    test::RecordingWaiting waiting;
    test::RecordingSwapObserver observer;
    std::string path = sandbox.write("Cut.xml", kDamaged);
};

TEST_F(MendFileTest, putsTheOriginalIntoTheTrash) {
    ASSERT_EQ(chmod(path.c_str(), 0640), 0);
    const bool hasAttributes = setxattr(path.c_str(), "user.label", "blue", 4, 0) == 0;
    const MendedFile result = mend(path);
    ASSERT_TRUE(result.swap);
    EXPECT_EQ(result.swap->end, SwapEnd::done);
    EXPECT_FALSE(result.error);
    EXPECT_EQ(test::readBytes(path), kMended);
    EXPECT_EQ(test::readBytes(result.swap->original), kDamaged);
    EXPECT_TRUE(result.swap->isInTrash);
    EXPECT_EQ(fs::status(path).permissions(), fs::perms(0640));
    std::array<char, 4> label{};
    EXPECT_EQ(getxattr(path.c_str(), "user.label", label.data(), label.size()),
              hasAttributes ? 4 : -1);
    EXPECT_THAT(namesInFolder(), ::testing::ElementsAre("Cut.xml"));
}

TEST_F(MendFileTest, keepsAccessControlListAndExtendedAttributes) {
    const std::string list = test::accessListFor1234();
    if (setxattr(path.c_str(), test::kAccessList, list.data(), list.size(), 0) != 0) {
        GTEST_SKIP() << "the volume has no access control lists: " << std::strerror(errno);
    }
    const std::string value("\0\xFFvalue", 7);
    ASSERT_EQ(setxattr(path.c_str(), "user.com.apple.FinderInfo", value.data(), value.size(), 0),
              0);
    ASSERT_EQ(setxattr(path.c_str(), "user.empty", "", 0, 0), 0);
    // What the folder gives to new files is not the old one's.
    ASSERT_EQ(
        setxattr(sandbox.folder().c_str(), test::kDefaultAccessList, list.data(), list.size(), 0),
        0);
    const test::FileState before = test::fileState(path);
    const MendedFile result = mend(path);
    ASSERT_TRUE(result.swap);
    EXPECT_EQ(result.lostMetadata, "");
    test::FileState expected = before;
    expected.bytes = kMended;
    EXPECT_EQ(test::fileState(path), expected);
    for (const std::string& file : {path, result.swap->original}) {
        std::string got(list.size() + 1, '\0');
        ASSERT_EQ(getxattr(file.c_str(), test::kAccessList, got.data(), got.size()),
                  static_cast<ssize_t>(list.size()))
            << file;
        EXPECT_EQ(got.substr(0, list.size()), list) << file;
    }
}

TEST_F(MendFileTest, givesNoFileAnAccessControlListThatItHadNot) {
    const std::string list = test::accessListFor1234();
    ASSERT_EQ(chmod(path.c_str(), 0640), 0);
    if (setxattr(sandbox.folder().c_str(), test::kDefaultAccessList, list.data(), list.size(), 0) !=
        0) {
        GTEST_SKIP() << "the volume has no access control lists: " << std::strerror(errno);
    }
    ASSERT_TRUE(mend(path).swap);
    EXPECT_EQ(getxattr(path.c_str(), test::kAccessList, nullptr, 0), -1);
    EXPECT_EQ(fs::status(path).permissions(), fs::perms(0640));
}

TEST_F(MendFileTest, leavesAFileAloneWhoseMendLeavesItsFinding) {
    // Large enough for a result that is written while it is checked.
    std::string large(kDamaged);
    large.insert(large.find("\t<name>"), std::string(std::size_t{2} << 20U, ' '));
    for (const std::string& bytes : {std::string(kDamaged), large}) {
        sandbox.write("Cut.xml", bytes);
        const test::FileState before = test::fileState(path);
        MendRequest request;
        request.check.usesThreads = true;
        request.check.media = [](const ElementIndex& index, bool, Findings& findings) {
            const TextSpan name = *index.textOf(index.childOf(0, "name"));
            Finding* const finding = findings.add("media-folder"_rule, name);
            finding->mend = Mend{Confidence::safe, "write another name", {{name.end(), 0, "x"}}};
        };
        const MendedFile result = mendFile(path, request, waiting, observer);
        EXPECT_FALSE(result.swap);
        EXPECT_FALSE(result.error);
        EXPECT_EQ(result.mended.refusal,
                  "the mends would leave or bring what the rule media-folder tells");
        EXPECT_EQ(test::fileState(path), before);
        EXPECT_THAT(namesInFolder(), ::testing::ElementsAre("Cut.xml"));
        EXPECT_TRUE(test::namesIn(sandbox.home() + "/.Trash").empty());
    }
}

TEST_F(MendFileTest, makesTheChosenMendAlone) {
    sandbox.write("Cut.xml", "<xmeml version=\"5\"><a>x & y</a><b>x & z</b></xmeml>");
    MendRequest request;
    request.chosen = {{"xml-stray-ampersand"_rule, 36}};
    const MendedFile result = mendFile(path, request, waiting, observer);
    ASSERT_TRUE(result.swap);
    EXPECT_EQ(test::readBytes(path), "<xmeml version=\"5\"><a>x & y</a><b>x &amp; z</b></xmeml>");
}

TEST_F(MendFileTest, leavesAFileThatIsNotWhatTheUserHasSeen) {
    MendRequest request;
    request.expected = platform::ContentDigest::of("something else");
    const test::FileState before = test::fileState(path);
    const MendedFile result = mendFile(path, request, waiting, observer);
    EXPECT_FALSE(result.swap);
    EXPECT_TRUE(result.error);
    EXPECT_EQ(test::fileState(path), before);
    request.expected = platform::ContentDigest::of(kDamaged);
    EXPECT_TRUE(mendFile(path, request, waiting, observer).swap);
}

TEST_F(MendFileTest, leavesASoundFileAlone) {
    sandbox.write("Cut.xml", kMended);
    const test::FileState before = test::fileState(path);
    const MendedFile result = mend(path);
    EXPECT_FALSE(result.swap);
    EXPECT_FALSE(result.error);
    EXPECT_EQ(test::fileState(path), before);
}

TEST_F(MendFileTest, canBeUndone) {
    JournaledSwap journaled("vornic-check", "1", JournalEntry::Action::mend);
    ASSERT_TRUE(mendFile(path, {}, waiting, journaled).swap);
    ASSERT_TRUE(journaled.isWrittenDown());
    std::optional<Journal> journal = Journal::ofUser();
    ASSERT_TRUE(journal);
    Undo undo(*journal, sandbox.home() + "/.Trash", "test", "1");
    EXPECT_EQ(undo.undo(path, [](const JournalEntry&) { return false; }).end,
              UndoResult::End::undone);
    EXPECT_EQ(test::readBytes(path), kDamaged);
}

TEST_F(MendFileTest, leavesANewerFileAlone) {
    observer.at[SwapPoint::verified] = [this] { sandbox.write("Cut.xml", "newer"); };
    const MendedFile result = mend(path);
    EXPECT_TRUE(result.error);
    EXPECT_EQ(test::readBytes(path), "newer");
    EXPECT_THAT(namesInFolder(), ::testing::ElementsAre("Cut.xml"));
}

TEST_F(MendFileTest, waitsForAnotherRunAndMendsWhatThatLeaves) {
    const std::string copy = sandbox.write(".Cut.xml.vornic-mend", "of another run");
    platform::FileDescriptor other(open(copy.c_str(), O_RDWR | O_CLOEXEC));
    ASSERT_EQ(platform::claimFile(other.get()).value(), platform::Claim::held);
    waiting.onPoll = [&] {
        sandbox.write("Cut.xml", std::string(kDamaged) + "<!-- newer -->");
        other = platform::FileDescriptor();
    };
    ASSERT_TRUE(mend(path).swap);
    EXPECT_EQ(test::readBytes(path), std::string(kMended) + "<!-- newer -->");
    EXPECT_THAT(namesInFolder(), ::testing::ElementsAre("Cut.xml"));
}

TEST_F(MendFileTest, clearsWhatAKilledRunHasLeft) {
    sandbox.write(".Cut.xml.vornic-mend", "of a killed run");
    sandbox.write("Cut.xml", kMended);
    EXPECT_FALSE(mend(path).swap);
    EXPECT_THAT(namesInFolder(), ::testing::ElementsAre("Cut.xml"));
}

// Half of it may be there by now.
TEST_F(MendFileTest, leavesAFileAloneThatAnotherProgramIsWriting) {
    platform::FileDescriptor other(open(path.c_str(), O_WRONLY | O_CLOEXEC));
    const MendedFile result = mend(path);
    ASSERT_TRUE(result.error);
    EXPECT_NE(result.error->localizedDescription().find("another program has it open to write it"),
              std::string::npos);
    EXPECT_EQ(test::readBytes(path), kDamaged);
    EXPECT_THAT(namesInFolder(), ::testing::ElementsAre("Cut.xml"));
    other = platform::FileDescriptor();
    EXPECT_TRUE(mend(path).swap);
}

TEST_F(MendFileTest, reportsThatAFileCannotBeRead) {
    const MendedFile result = mend(sandbox.path("none.xml"));
    ASSERT_TRUE(result.error);
    EXPECT_NE(result.error->localizedDescription().find("none.xml"), std::string::npos);
}

TEST_F(MendFileTest, leavesTheFileAloneWithoutATrash) {
    sandbox.write("../home/.Trash", "no folder");
    const MendedFile result = mend(path);
    ASSERT_TRUE(result.error);
    EXPECT_EQ(test::readBytes(path), kDamaged);
    EXPECT_THAT(namesInFolder(), ::testing::ElementsAre("Cut.xml"));
}

}  // namespace

}  // namespace vornic
