// Undo with a Trash on another volume, where the two files cannot exchange their names.

#include <cerrno>
#include <filesystem>
#include <functional>
#include <string>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/fs.h>
#include <sys/stat.h>
#include <sys/syscall.h>

#include "job/JournalRecovery.h"
#include "tests/job/UndoFixture.h"
#include "tests/support/fakes/FailingSystemCall.h"
#include "tests/support/machine/PrivateMounts.h"
#include "tests/support/programs/ChildProcess.h"

namespace vornic {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

class UndoApartTest : public test::UndoApartFixture {
  protected:
    void SetUp() override {
        test::UndoApartFixture::SetUp();
        if (!IsSkipped()) {
            sandbox.write("Cut.xml", "original");
        }
    }
    /// An undo during which a system call begins to fail.
    UndoResult undoAndFailAt(UndoStep step, const std::function<void()>& fail) {
        Undo careful = make();
        careful.setObserver([&](UndoStep reached) {
            if (reached == step) {
                fail();
            }
        });
        return careful.undo(realPath("Cut.xml"), nullptr);
    }
    static void allowNoNewFile() {
        constexpr unsigned kFlags = 2;
        EXPECT_TRUE(test::failSystemCall(SYS_openat, ENOSPC, O_CREAT, kFlags));
    }
    static void allowNoExchange(int errorNumber = EINVAL) {
        constexpr unsigned kFlags = 4;
        EXPECT_TRUE(test::failSystemCall(SYS_renameat2, errorNumber, RENAME_EXCHANGE, kFlags));
    }
};

TEST_F(UndoApartTest, changesTheTwoPlaces) {
    repair("Cut.xml", "repaired");
    for (const char* expected : {"original", "repaired", "original"}) {
        const std::string present = bytes();
        const UndoResult result = undo();
        ASSERT_EQ(result.end, UndoResult::End::undone);
        EXPECT_EQ(result.losses, "");
        EXPECT_EQ(bytes(), expected);
        EXPECT_EQ(test::readBytes(result.result), present);
        EXPECT_THAT(namesInTrash(), SizeIs(1));
        EXPECT_THAT(test::namesIn(sandbox.folder()), ElementsAre("Cut.xml"));
    }
}

TEST_F(UndoApartTest, bringsModeTimesAndAttributesBack) {
    ASSERT_EQ(chmod(realPath("Cut.xml").c_str(), 0440), 0);
    static_cast<void>(test::setAttribute(realPath("Cut.xml"), "user.note", "value"));
    const test::FileState before = test::fileState(realPath("Cut.xml"));
    const auto time = fs::last_write_time(realPath("Cut.xml"));
    repair("Cut.xml", "repaired");
    // As far as the Trash's volume keeps them.
    const test::FileState trashed = test::fileState(trash() + "/Cut.xml");
    ASSERT_EQ(trashed.mode, before.mode);
    ASSERT_EQ(undo().end, UndoResult::End::undone);
    EXPECT_EQ(test::fileState(realPath("Cut.xml")), trashed);
    EXPECT_EQ(fs::last_write_time(realPath("Cut.xml")), time);
}

TEST_F(UndoApartTest, bringsALinkBack) {
    sandbox.write("target.xml", "original");
    fs::remove(realPath("Cut.xml"));
    fs::create_symlink("target.xml", realPath("Cut.xml"));
    repair("Cut.xml", "repaired");
    ASSERT_TRUE(fs::is_symlink(trash() + "/Cut.xml"));
    ASSERT_EQ(undo().end, UndoResult::End::undone);
    EXPECT_EQ(fs::read_symlink(realPath("Cut.xml")), "target.xml");
    EXPECT_THAT(test::namesIn(sandbox.folder()), ElementsAre("Cut.xml", "target.xml"));
    ASSERT_EQ(undo().end, UndoResult::End::undone);
    EXPECT_EQ(bytes(), "repaired");
    EXPECT_FALSE(fs::is_symlink(realPath("Cut.xml")));
}

TEST_F(UndoApartTest, bringsTheOriginalBackToAnEmptyPlace) {
    ASSERT_EQ(chmod(realPath("Cut.xml").c_str(), 0640), 0);
    repair("Cut.xml", "repaired");
    fs::remove(realPath("Cut.xml"));
    const UndoResult result =
        make().undo(realPath("Cut.xml"), [](const JournalEntry&) { return true; });
    EXPECT_EQ(result.end, UndoResult::End::undone);
    EXPECT_EQ(bytes(), "original");
    EXPECT_EQ(test::fileState(realPath("Cut.xml")).mode, S_IFREG | 0640U);
    EXPECT_THAT(namesInTrash(), IsEmpty());
    EXPECT_THAT(test::namesIn(sandbox.folder()), ElementsAre("Cut.xml"));
}

TEST_F(UndoApartTest, worksWhereNamesCannotBeExchangedEither) {
    repair("Cut.xml", "repaired");
    EXPECT_TRUE(test::passesInChild([this] {
        allowNoExchange();
        EXPECT_EQ(undo().end, UndoResult::End::undone);
    }));
    EXPECT_EQ(bytes(), "original");
    EXPECT_TRUE(isInTrash("repaired"));
    EXPECT_THAT(test::namesIn(sandbox.folder()), ElementsAre("Cut.xml"));
}

TEST_F(UndoApartTest, reportsWhatTheOriginalHasLost) {
    // Another owner than a new file would have, where that can be.
    const bool isRoot = chown(realPath("Cut.xml").c_str(), 1, 1) == 0;
    const bool hasAttributes = test::setAttribute(realPath("Cut.xml"), "user.note", "value");
    ASSERT_EQ(chmod(realPath("Cut.xml").c_str(), 0640), 0);
    repair("Cut.xml", "repaired");
    struct Loss {
        long call;
        const char* sentence;
        bool isPossible;
    };
    for (const Loss& loss :
         {Loss{SYS_fchmod, "The mode cannot be kept: ", true},
          Loss{SYS_fchown, "The owner cannot be kept: ", isRoot},
          Loss{SYS_fsetxattr, "The extended attributes cannot be kept: ",
               hasAttributes && test::fileState(trash() + "/Cut.xml").attributes.size() == 1}}) {
        if (!loss.isPossible) {
            continue;
        }
        EXPECT_TRUE(test::passesInChild([&] {
            ASSERT_TRUE(test::failSystemCall(loss.call, ENOSPC));
            const UndoResult result = undo();
            EXPECT_EQ(result.end, UndoResult::End::undone);
            EXPECT_THAT(result.losses, HasSubstr(loss.sentence));
        }));
        EXPECT_EQ(bytes(), "original");
        ASSERT_EQ(undo().end, UndoResult::End::undone);
        EXPECT_EQ(bytes(), "repaired");
    }
}

TEST_F(UndoApartTest, takesAllBackWhenTheResultCannotGoToTheTrash) {
    repair("Cut.xml", "repaired");
    const auto identity = platform::fileIdentity(realPath("Cut.xml"));
    for (const bool canExchange : {true, false}) {
        EXPECT_TRUE(test::passesInChild([&] {
            if (!canExchange) {
                allowNoExchange();
            }
            const UndoResult result = undoAndFailAt(UndoStep::compared, allowNoNewFile);
            EXPECT_EQ(result.end, UndoResult::End::failed);
            EXPECT_EQ(result.result, "");
            EXPECT_EQ(result.error->description,
                      "The file " + realPath("Cut.xml") +
                          " cannot be moved to the Trash: no space left on the volume.");
        }));
        EXPECT_EQ(bytes(), "repaired");
        EXPECT_EQ(platform::fileIdentity(realPath("Cut.xml")), identity);
        EXPECT_THAT(test::namesIn(sandbox.folder()), ElementsAre("Cut.xml"));
        EXPECT_THAT(namesInTrash(), ElementsAre("Cut.xml"));
        static_cast<void>(recoverInterrupted(journal, trash()));
    }
    EXPECT_EQ(undo().end, UndoResult::End::undone);
}

TEST_F(UndoApartTest, reportsWhereAResultIsThatCouldNeitherGoToTheTrashNorBack) {
    repair("Cut.xml", "repaired");
    const std::string beside = realPath(".Cut.xml.vornic.undo");
    EXPECT_TRUE(test::passesInChild([&] {
        const UndoResult result = undoAndFailAt(UndoStep::compared, [] {
            allowNoNewFile();
            allowNoExchange(EIO);
        });
        EXPECT_EQ(result.end, UndoResult::End::undone);
        EXPECT_TRUE(result.isBeside);
        EXPECT_EQ(result.result, beside);
        EXPECT_TRUE(result.error);
    }));
    EXPECT_EQ(bytes(), "original");
    EXPECT_EQ(test::readBytes(beside), "repaired");
    EXPECT_TRUE(isInTrash("original"));
}

TEST_F(UndoApartTest, removesTheCopyThatAKilledUndoHadBegun) {
    repair("Cut.xml", "repaired");
    for (const char* begun : {"", "orig", "original"}) {
        sandbox.write(".Cut.xml.vornic.undo", begun);
        ASSERT_EQ(undo().end, UndoResult::End::undone);
        EXPECT_EQ(bytes(), "original");
        EXPECT_THAT(test::namesIn(sandbox.folder()), ElementsAre("Cut.xml"));
        EXPECT_THAT(namesInTrash(), SizeIs(1));
        ASSERT_EQ(undo().end, UndoResult::End::undone);
    }
}

TEST_F(UndoApartTest, keepsWhatStandsInThePlaceOfTheCopyAndIsNone) {
    repair("Cut.xml", "repaired");
    sandbox.write(".Cut.xml.vornic.undo", "origami");
    ASSERT_EQ(undo().end, UndoResult::End::undone);
    EXPECT_EQ(bytes(), "original");
    EXPECT_TRUE(isInTrash("origami"));
    EXPECT_THAT(test::namesIn(sandbox.folder()), ElementsAre("Cut.xml"));
}

class UndoFullTrashTest : public test::OwnMounts, public test::UndoFixture {};

TEST_F(UndoFullTrashTest, takesAllBackAndReportsEach) {
    const std::string original(40'000, 'o');
    const std::string repaired(40'000, 'r');
    fs::create_directory(trash());
    if (!mounts.mountVolume(trash(), "tmpfs", "size=64k,mode=0700")) {
        GTEST_SKIP() << "needs the right to mount";
    }
    sandbox.write("Cut.xml", original);
    repair("Cut.xml", repaired);
    const UndoResult result = undo();
    EXPECT_EQ(result.end, UndoResult::End::failed);
    EXPECT_THAT(result.error->description, HasSubstr("cannot be moved to the Trash: "));
    EXPECT_EQ(bytes(), repaired);
    EXPECT_TRUE(isInTrash(original));
    EXPECT_THAT(test::namesIn(sandbox.folder()), ElementsAre("Cut.xml"));
    EXPECT_TRUE(mounts.unmountVolume(trash()));
}

}  // namespace
}  // namespace vornic
