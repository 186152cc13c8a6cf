#include <array>
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
