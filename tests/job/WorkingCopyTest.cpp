#include <cerrno>
#include <filesystem>
#include <optional>
#include <thread>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "job/NamedSources.h"
#include "job/WorkingCopy.h"
#include "tests/job/JobTest.h"
#include "tests/support/fakes/FailingSystemCall.h"
#include "tests/support/machine/RightsOfRoot.h"
#include "tests/support/programs/ChildProcess.h"

namespace vornic {
namespace {

namespace fs = std::filesystem;
using Clearing = WorkingCopy::Clearing;
using test::Notes;
using test::Strings;

class WorkingCopyTest : public test::JobTest {
  protected:
    /// What another program holds a file with.
    [[nodiscard]] platform::FileDescriptor claimed(const std::string& at) const {
        platform::FileDescriptor file(open(at.c_str(), O_RDWR | O_CLOEXEC));
        EXPECT_EQ(flock(file.get(), LOCK_EX | LOCK_NB), 0) << at;
        return file;
    }
    void expectTooLarge(off_t size) {
        ASSERT_EQ(truncate(source.c_str(), size), 0);
        EXPECT_EQ(copy.create(error), Clearing::failed);
        EXPECT_EQ(error->code, EFBIG);
        EXPECT_EQ(names(), Strings{"Cut.xml"});
    }
};

TEST_F(WorkingCopyTest, goesFromTheSourceToItsPlace) {
    EXPECT_EQ(copy.path(), path);
    EXPECT_TRUE(copy.sourceExists());
    EXPECT_TRUE(copy.settleLeft());
    EXPECT_EQ(copy.clearPath(error), Clearing::done);
    EXPECT_FALSE(copy.isMade());
    EXPECT_EQ(copy.create(error), Clearing::done);
    EXPECT_TRUE(copy.isMade());
    EXPECT_EQ(copy.read(error), "the user's");
    copy.save(writes("repaired"), error);
    EXPECT_EQ(test::readBytes(path), "repaired");
    EXPECT_EQ(names(), (Strings{"Cut-backup.xml", "Cut.xml"}));
    EXPECT_EQ(copy.swap(observer).end, SwapEnd::done);
    EXPECT_EQ(error, std::nullopt);
    EXPECT_EQ(copy.takeNotes(), Notes{});
    EXPECT_EQ(copy.recycled(), Strings{});
    EXPECT_EQ(copy.lostMetadata(), "");
    EXPECT_EQ(waiting.waits, Strings{});
}

TEST_F(WorkingCopyTest, isRemovedWithoutATrace) {
    prepare(copy);
    copy.remove(error);
    EXPECT_EQ(error, std::nullopt);
    EXPECT_EQ(names(), Strings{"Cut.xml"});
    EXPECT_EQ(test::readBytes(source), "the user's");
}

TEST_F(WorkingCopyTest, thatIsNotThereCannotBeRemoved) {
    copy.remove(error);
    EXPECT_EQ(error->code, ENOENT);
}

TEST_F(WorkingCopyTest, ofAnotherProgramIsNotRemoved) {
    prepare(copy);
    replace(path, "foreign");
    copy.remove(error);
    EXPECT_EQ(error, std::nullopt);
    EXPECT_EQ(test::readBytes(path), "foreign");
    EXPECT_EQ(names(), (Strings{"Cut-backup.xml", "Cut.xml"}));
}

TEST_F(WorkingCopyTest, thatSomebodyLeftGoesToTheTrash) {
    sandbox.write("Cut-backup.xml", "old");
    EXPECT_EQ(copy.clearPath(error), Clearing::done);
    EXPECT_EQ(inTrash("Cut-backup.xml"), "old");
    EXPECT_EQ(copy.recycled(), Strings{trash() + "/Cut-backup.xml"});
}

TEST_F(WorkingCopyTest, thatCannotGoToTheTrashIsReportedWithItsReason) {
    sandbox.write("Cut-backup.xml", "old");
    blockTrash();
    EXPECT_EQ(copy.clearPath(error), Clearing::failed);
    EXPECT_TRUE(error.has_value());
    EXPECT_EQ(test::readBytes(path), "old");
}

TEST_F(WorkingCopyTest, thatTheUserHasNamedIsLeftAlone) {
    sandbox.write("Cut-backup.xml", "a project");
    const NamedSource named(path);
    EXPECT_EQ(copy.clearPath(error), Clearing::refused);
    EXPECT_EQ(error->localizedDescription(),
              "The file " + path +
                  " cannot be moved to the Trash: it is open itself, or named as a file to be "
                  "repaired.");
    EXPECT_EQ(test::readBytes(path), "a project");
    EXPECT_FALSE(test::exists(trash()));
}

TEST_F(WorkingCopyTest, ofALiveRunIsWaitedFor) {
    std::optional<WorkingCopy> first(std::in_place, source, path, waiting);
    ASSERT_EQ(first->create(error), Clearing::done);
    test::RecordingWaiting second;
    second.onWait = [&] {
        first->remove(error);
        first.reset();
    };
    WorkingCopy another(source, path, second);
    EXPECT_EQ(another.clearPath(error), Clearing::done);
    EXPECT_EQ(second.waits, Strings{path});
    EXPECT_FALSE(test::exists(trash()));
    EXPECT_EQ(error, std::nullopt);
}

TEST_F(WorkingCopyTest, ofARunThatHasSavedIsWaitedFor) {
    std::optional<WorkingCopy> first(std::in_place, source, path, waiting);
    prepare(*first);
    test::RecordingWaiting second;
    second.onPoll = [&] {
        EXPECT_EQ(first->swap(observer).end, SwapEnd::done);
        first.reset();
    };
    WorkingCopy another(source, path, second);
    EXPECT_EQ(another.clearPath(error), Clearing::done);
    EXPECT_EQ(another.create(error), Clearing::done);
    EXPECT_EQ(another.read(error), "repaired");
    EXPECT_EQ(namesInTrash(), Strings{"Cut.xml"});
}

TEST_F(WorkingCopyTest, ofTwoFilesWithOneStemIsOneAfterTheOther) {
    const std::string other = sandbox.write("Cut.xmeml", "another file");
    std::optional<WorkingCopy> first(std::in_place, source, path, waiting);
    prepare(*first);
    test::RecordingWaiting second;
    second.onPoll = [&] {
        EXPECT_EQ(first->swap(observer).end, SwapEnd::done);
        first.reset();
    };
    WorkingCopy another(other, path, second);
    EXPECT_EQ(another.clearPath(error), Clearing::done);
    prepare(another);
    EXPECT_EQ(another.swap(observer).end, SwapEnd::done);
    EXPECT_EQ(inTrash("Cut.xml"), "the user's");
    EXPECT_EQ(inTrash("Cut.xmeml"), "another file");
    EXPECT_EQ(namesInTrash(), (Strings{"Cut.xmeml", "Cut.xml"}));
}

TEST_F(WorkingCopyTest, ofALiveRunIsKnownToOtherProcesses) {
    ASSERT_EQ(copy.create(error), Clearing::done);
    EXPECT_EQ(test::ChildProcess([&] {
                  // A program of its own, which has nothing of this one's open.
                  const int status = execlp("flock", "flock", "-n", path.c_str(), "true", nullptr);
                  _exit(status);
              }).wait(),
              1 << 8);
}

TEST_F(WorkingCopyTest, isWaitedForUntilTheUserCancels) {
    ASSERT_EQ(copy.create(error), Clearing::done);
    test::RecordingWaiting second;
    second.onWait = [&] { second.cancelled = true; };
    WorkingCopy another(source, path, second);
    EXPECT_EQ(another.clearPath(error), Clearing::cancelled);
    EXPECT_EQ(another.create(error), Clearing::cancelled);
    EXPECT_EQ(error, std::nullopt);
    EXPECT_EQ(test::readBytes(path), "the user's");
}

TEST_F(WorkingCopyTest, isNotMadeOverAnotherOne) {
    ASSERT_EQ(copy.create(error), Clearing::done);
    test::RecordingWaiting second;
    second.cancelled = true;
    WorkingCopy another(source, path, second);
    EXPECT_EQ(another.create(error), Clearing::cancelled);
    EXPECT_EQ(names(), (Strings{"Cut-backup.xml", "Cut.xml"}));
}

TEST_F(WorkingCopyTest, thatCannotBeClaimedIsNotMade) {
    EXPECT_TRUE(test::passesInChild([&] {
        ASSERT_TRUE(test::failSystemCall(SYS_flock, ENOLCK));
        EXPECT_EQ(copy.create(error), Clearing::failed);
        EXPECT_EQ(error->code, ENOLCK);
        EXPECT_EQ(names(), Strings{"Cut.xml"});
    }));
}

TEST_F(WorkingCopyTest, doesNotTouchWhatMayBelongToARun) {
    sandbox.write("Cut-backup.xml", "old");
    EXPECT_TRUE(test::passesInChild([&] {
        ASSERT_TRUE(test::failSystemCall(SYS_flock, ENOLCK));
        EXPECT_EQ(copy.clearPath(error), Clearing::noTurn);
        EXPECT_EQ(error->code, ENOLCK);
    }));
    EXPECT_EQ(test::readBytes(path), "old");
}

TEST_F(WorkingCopyTest, isSavedAlthoughAnEarlierStepHasLeftItsError) {
    ASSERT_EQ(copy.create(error), Clearing::done);
    error = posixError("An earlier step failed", EIO);
    copy.save(writes("repaired"), error);
    EXPECT_EQ(error->code, EIO);
    EXPECT_EQ(test::readBytes(path), "repaired");
    copy.remove(error);
    EXPECT_EQ(names(), Strings{"Cut.xml"});
}

TEST_F(WorkingCopyTest, isMadeOnAVolumeThatKnowsNoLocks) {
    EXPECT_TRUE(test::passesInChild([&] {
        ASSERT_TRUE(test::failSystemCall(SYS_flock, EOPNOTSUPP));
        sandbox.write("Cut-backup.xml", "old");
        EXPECT_EQ(copy.clearPath(error), Clearing::done);
        prepare(copy);
        EXPECT_EQ(copy.swap(observer).end, SwapEnd::done);
    }));
}

TEST_F(WorkingCopyTest, doesNotWaitForALockOnTheFolder) {
    const platform::FileDescriptor folder(
        open(sandbox.folder().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    ASSERT_EQ(flock(folder.get(), LOCK_EX), 0);
    waiting.cancelled = true;
    EXPECT_EQ(copy.clearPath(error), Clearing::done);
    prepare(copy);
    EXPECT_EQ(copy.swap(observer).end, SwapEnd::done);
}

TEST_F(WorkingCopyTest, isReadAgainWhenReadingFailedOnce) {
    EXPECT_TRUE(test::passesInChild([&] {
        ASSERT_EQ(copy.create(error), Clearing::done);
        ASSERT_TRUE(test::failSystemCallOnce(SYS_pread64, EIO));
        EXPECT_EQ(copy.read(error), "the user's");
        EXPECT_EQ(error, std::nullopt);
    }));
}

TEST_F(WorkingCopyTest, isNotReadWhenReadingFailsTwice) {
    EXPECT_TRUE(test::passesInChild([&] {
        ASSERT_EQ(copy.create(error), Clearing::done);
        ASSERT_TRUE(test::failSystemCall(SYS_pread64, EIO));
        EXPECT_EQ(copy.read(error), std::nullopt);
        EXPECT_EQ(error->code, EIO);
    }));
}

TEST_F(WorkingCopyTest, isNotReadOnceAnotherProgramHasWrittenIntoIt) {
    ASSERT_EQ(copy.create(error), Clearing::done);
    overwrite(path, "foreign");
    EXPECT_EQ(copy.read(error), "the user's");
    copy.save(writes("repaired"), error);
    EXPECT_EQ(inTrash("Cut-backup.xml"), "foreign");
    EXPECT_EQ(copy.swap(observer).end, SwapEnd::done);
    EXPECT_EQ(inTrash("Cut.xml"), "the user's");
}

TEST_F(WorkingCopyTest, isNotRemovedOnceAnotherProgramHasWrittenIntoIt) {
    prepare(copy);
    overwrite(path, "foreign!");  // as many bytes
    copy.remove(error);
    EXPECT_EQ(copy.discard(), 0);
    EXPECT_EQ(test::readBytes(path), "foreign!");
}

TEST_F(WorkingCopyTest, isNotSwappedWhenTheSourceWasReadTwiceAndDiffered) {
    ASSERT_EQ(copy.create(error), Clearing::done);
    ASSERT_TRUE(copy.read(error));
    overwrite(source, "The user's");
    EXPECT_EQ(copy.read(error), "The user's");
    copy.save(writes("repaired"), error);
    EXPECT_EQ(copy.swap(observer).end, SwapEnd::sourceChanged);
    EXPECT_EQ(test::readBytes(source), "The user's");
}

TEST_F(WorkingCopyTest, isDiscardedWithoutMemory) {
    prepare(copy);
    EXPECT_EQ(copy.discard(), 0);
    EXPECT_EQ(names(), Strings{"Cut.xml"});
    EXPECT_EQ(copy.discard(), 0);
}

TEST_F(WorkingCopyTest, thatCannotBeDiscardedIsReported) {
    prepare(copy);
    EXPECT_TRUE(test::passesInChild([&] {
        ASSERT_TRUE(test::failSystemCall(SYS_renameat2, EROFS));
        EXPECT_EQ(copy.discard(), EROFS);
    }));
    EXPECT_EQ(test::readBytes(path), "repaired");
}

TEST_F(WorkingCopyTest, thatCannotBeLookedAtWhileItIsRemovedIsReported) {
    prepare(copy);
    EXPECT_TRUE(test::passesInChild([&] {
        ASSERT_TRUE(test::interceptSystemCall(SYS_newfstatat,
                                              [&] { return test::exists(path) ? 0 : EACCES; }));
        copy.remove(error);
        ASSERT_TRUE(error);
        EXPECT_EQ(error->code, EACCES);
    }));
    EXPECT_EQ(test::readBytes(path), "repaired");
}

TEST_F(WorkingCopyTest, isNotReadFromAForeignFileAtItsPath) {
    ASSERT_EQ(copy.create(error), Clearing::done);
    replace(path, "foreign");
    EXPECT_EQ(copy.read(error), "the user's");
}

TEST_F(WorkingCopyTest, movesAForeignFileThatStandsWhereItIsSavedToTheTrash) {
    ASSERT_EQ(copy.create(error), Clearing::done);
    ASSERT_TRUE(copy.read(error));
    replace(path, "foreign");
    copy.save(writes("repaired"), error);
    EXPECT_EQ(error, std::nullopt);
    EXPECT_EQ(test::readBytes(path), "repaired");
    EXPECT_EQ(inTrash("Cut-backup.xml"), "foreign");
    EXPECT_EQ(copy.recycled(), Strings{trash() + "/Cut-backup.xml"});
    EXPECT_EQ(names(), (Strings{"Cut-backup.xml", "Cut.xml"}));
}

TEST_F(WorkingCopyTest, leavesAForeignFileThatCannotGoToTheTrash) {
    ASSERT_EQ(copy.create(error), Clearing::done);
    replace(path, "foreign");
    blockTrash();
    copy.save(writes("repaired"), error);
    EXPECT_TRUE(error.has_value());
    EXPECT_EQ(test::readBytes(path), "foreign");
    EXPECT_EQ(names(), (Strings{"Cut-backup.xml", "Cut.xml"}));
    EXPECT_EQ(copy.swap(observer).end, SwapEnd::unsaved);
}

TEST_F(WorkingCopyTest, isNotSavedThroughALinkToTheSource) {
    ASSERT_EQ(copy.create(error), Clearing::done);
    fs::remove(path);
    fs::create_symlink(source, path);
    copy.save(writes("repaired"), error);
    EXPECT_EQ(error, std::nullopt);
    EXPECT_EQ(test::readBytes(source), "the user's");
    EXPECT_FALSE(fs::is_symlink(path));
}

TEST_F(WorkingCopyTest, isSavedAgainAfterItWasTakenAway) {
    ASSERT_EQ(copy.create(error), Clearing::done);
    ASSERT_TRUE(copy.read(error));
    fs::remove(path);
    copy.save(writes("repaired"), error);
    EXPECT_EQ(error, std::nullopt);
    EXPECT_EQ(copy.swap(observer).end, SwapEnd::done);
}

TEST_F(WorkingCopyTest, isSavedOnVolumesThatCannotExchangeNames) {
    for (const bool isForeign : {false, true}) {
        EXPECT_TRUE(test::passesInChild([&] {
            constexpr unsigned kFlagsOfRename = 4;
            ASSERT_TRUE(test::failSystemCall(SYS_renameat2, EINVAL,
                                             RENAME_EXCHANGE | RENAME_NOREPLACE, kFlagsOfRename));
            ASSERT_EQ(copy.create(error), Clearing::done);
            if (isForeign) {
                replace(path, "foreign");
            }
            copy.save(writes("repaired"), error);
            EXPECT_EQ(error, std::nullopt);
            EXPECT_EQ(test::readBytes(path), "repaired");
            EXPECT_EQ(namesInTrash(), isForeign ? Strings{"Cut-backup.xml"} : Strings{});
            copy.remove(error);
            EXPECT_EQ(names(), Strings{"Cut.xml"});
        }));
    }
}

TEST_F(WorkingCopyTest, thatWasStoppedWhileItWasWrittenIsAsItWas) {
    ASSERT_EQ(copy.create(error), Clearing::done);
    copy.save([](const WorkingCopy::Sink& sink) { return sink("half") && false; }, error);
    EXPECT_TRUE(error.has_value());
    EXPECT_EQ(test::readBytes(path), "the user's");
    EXPECT_EQ(names(), (Strings{"Cut-backup.xml", "Cut.xml"}));
}

TEST_F(WorkingCopyTest, leavesNothingWhenMemoryRunsOutWhileItIsWritten) {
    ASSERT_EQ(copy.create(error), Clearing::done);
    EXPECT_THROW(copy.save([](const WorkingCopy::Sink&) -> bool { throw std::bad_alloc(); }, error),
                 std::bad_alloc);
    EXPECT_EQ(names(), (Strings{"Cut-backup.xml", "Cut.xml"}));
}

TEST_F(WorkingCopyTest, thatWasNeverSavedDoesNotTakeTheSourcesPlace) {
    ASSERT_EQ(copy.create(error), Clearing::done);
    EXPECT_EQ(copy.swap(observer).end, SwapEnd::unsaved);
    EXPECT_EQ(names(), (Strings{"Cut-backup.xml", "Cut.xml"}));
    EXPECT_FALSE(test::exists(trash()));
}

TEST_F(WorkingCopyTest, ofASourceThatNoMemoryHoldsIsNotMade) {
    expectTooLarge(off_t{1} << 42);
}

TEST_F(WorkingCopyTest, ofASourceThatTheProcessMayNotHoldIsNotMade) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the address sanitizer takes more address space than the limit leaves";
#endif
    EXPECT_TRUE(test::passesInChild([&] {
        const struct rlimit limit { rlim_t{1} << 32, rlim_t{1} << 32 };
        ASSERT_EQ(setrlimit(RLIMIT_AS, &limit), 0);
        expectTooLarge(off_t{5} << 30);
    }));
}

TEST_F(WorkingCopyTest, reportsWhatOfTheSourcesMetadataItLost) {
    if (!test::setAttribute(source, "user.note", "kept")) {
        GTEST_SKIP() << "this volume has no extended attributes";
    }
    ASSERT_EQ(copy.create(error), Clearing::done);
    EXPECT_TRUE(test::passesInChild([&] {
        ASSERT_TRUE(test::failSystemCall(SYS_fsetxattr, EIO));
        copy.save(writes("repaired"), error);
        EXPECT_NE(copy.lostMetadata().find("The extended attributes cannot be kept"),
                  std::string::npos)
            << copy.lostMetadata();
    }));
    EXPECT_TRUE(test::passesInChild([&] {
        ASSERT_TRUE(test::failSystemCall(SYS_flistxattr, EIO));
        copy.save(writes("repaired"), error);
        EXPECT_NE(copy.lostMetadata().find("The extended attributes cannot be kept"),
                  std::string::npos)
            << copy.lostMetadata();
    }));
    EXPECT_TRUE(test::passesInChild([&] {
        ASSERT_TRUE(test::failSystemCall(SYS_fgetxattr, EIO));
        copy.save(writes("repaired"), error);
        EXPECT_NE(copy.lostMetadata().find("The extended attributes cannot be kept"),
                  std::string::npos)
            << copy.lostMetadata();
    }));
    EXPECT_TRUE(test::passesInChild([&] {
        ASSERT_TRUE(test::failSystemCall(SYS_fchmod, EIO));
        copy.save(writes("repaired"), error);
        EXPECT_NE(copy.lostMetadata().find("The mode cannot be kept"), std::string::npos)
            << copy.lostMetadata();
    }));
}

TEST_F(WorkingCopyTest, reportsThatTheOwnerWasLost) {
    const test::RightsOfRoot rights;
    constexpr uid_t kSomebody = 12345;
    if (!rights.available() || chown(source.c_str(), kSomebody, kSomebody) != 0) {
        GTEST_SKIP() << "only root gives files away";
    }
    ASSERT_EQ(copy.create(error), Clearing::done);
    EXPECT_TRUE(test::passesInChild([&] {
        ASSERT_TRUE(test::failSystemCall(SYS_fchown, EIO));
        copy.save(writes("repaired"), error);
        EXPECT_NE(copy.lostMetadata().find("The owner cannot be kept"), std::string::npos)
            << copy.lostMetadata();
    }));
}

TEST_F(WorkingCopyTest, bringsBackASourceThatAKilledRunLeftAside) {
    fs::rename(source, aside);
    EXPECT_TRUE(copy.settleLeft());
    EXPECT_EQ(test::readBytes(source), "the user's");
    EXPECT_EQ(copy.takeNotes(), (Notes{{"repair-brought-back"_rule, {{"path", source}}}}));
    EXPECT_EQ(copy.takeNotes(), Notes{});
}

TEST_F(WorkingCopyTest, movesWhatAKilledRunLeftBesideTheSourceToTheTrash) {
    std::ofstream(aside) << "left";
    EXPECT_TRUE(copy.settleLeft());
    EXPECT_EQ(inTrash("Cut.xml"), "left");
    EXPECT_EQ(test::readBytes(source), "the user's");
    EXPECT_EQ(
        copy.takeNotes(),
        (Notes{{"repair-left-in-trash"_rule, {{"path", source}, {"left", trash() + "/Cut.xml"}}}}));
}

TEST_F(WorkingCopyTest, saysWhereIsWhatAKilledRunLeftAndTheTrashDoesNotTake) {
    std::ofstream(aside) << "left";
    blockTrash();
    EXPECT_TRUE(copy.settleLeft());
    EXPECT_EQ(copy.takeNotes(),
              (Notes{{"repair-left-aside"_rule, {{"path", source}, {"left", aside}}}}));
    EXPECT_EQ(test::readBytes(aside), "left");
}

TEST_F(WorkingCopyTest, waitsForWhoeverHasClaimedTheFileAtItsPath) {
    sandbox.write("Cut-backup.xml", "old");
    std::optional<platform::FileDescriptor> holder(claimed(path));
    waiting.onPoll = [&] { holder.reset(); };
    EXPECT_EQ(copy.clearPath(error), Clearing::done);
    EXPECT_EQ(inTrash("Cut-backup.xml"), "old");
    EXPECT_EQ(waiting.waits, Strings{});
}

}  // namespace
}  // namespace vornic
