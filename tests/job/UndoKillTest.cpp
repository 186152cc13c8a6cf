// An undo that is killed before or after any of its system calls.

#include <chrono>
#include <csignal>
#include <filesystem>
#include <functional>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/fs.h>
#include <sys/ptrace.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "job/JournalRecovery.h"
#include "job/Undo.h"
#include "platform/files/TemporaryFile.h"
#include "tests/job/JournaledRepair.h"
#include "tests/platform/volumes/SecondVolume.h"
#include "tests/support/fakes/FailingSystemCall.h"

namespace vornic {
namespace {

namespace fs = std::filesystem;

enum class Killed { yes, no, impossible };

/// Runs the body in a child that is killed at its `stop`th entry into or exit from a system call.
Killed runUntil(long stop, const std::function<void()>& body) {
    const pid_t child = fork();
    if (child == 0) {
        if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) {
            _exit(2);
        }
        raise(SIGSTOP);
        body();
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    if (child < 0 || !WIFSTOPPED(status)) {
        return Killed::impossible;
    }
    for (long count = 0; count < stop; ++count) {
        ptrace(PTRACE_SYSCALL, child, nullptr, nullptr);
        waitpid(child, &status, 0);
        if (WIFEXITED(status)) {
            return Killed::no;
        }
    }
    kill(child, SIGKILL);
    waitpid(child, &status, 0);
    return Killed::yes;
}

class UndoKillTest : public test::JournaledRepairTest {
  protected:
    void startAnew() {
        test::removeTrash(sandbox.home());
        fs::remove_all(sandbox.folder());
        fs::create_directory(sandbox.folder());
        fs::remove_all(fs::path(journal.path()).parent_path());
        if (!trashElsewhere.empty()) {
            fs::remove_all(trashElsewhere);
            fs::create_directory(trashElsewhere);
            ASSERT_EQ(chmod(trashElsewhere.c_str(), 0700), 0);
            fs::create_directory_symlink(trashElsewhere, trash());
        }
        sandbox.write("Cut.xml", "original");
        repair("Cut.xml", "repaired");
    }

    /// How many files below a folder hold these bytes, hidden ones too.
    static int countOf(const std::string& bytes, const std::string& folder) {
        int count = 0;
        for (const std::string& name : test::namesIn(folder)) {
            count += test::readBytes(folder + "/" + name) == bytes ? 1 : 0;
        }
        return count;
    }

    /// What a later run takes for left is gone ten minutes later.
    void expectNothingHiddenInTheTrash(long stop) const {
        platform::removeDeadTemporaries(sandbox.home());  // the next one looks anew
        platform::removeDeadTemporaries(trash(), std::chrono::seconds(0));
        for (const std::string& name : test::namesIn(trash())) {
            ASSERT_FALSE(name.starts_with('.')) << stop << ": " << name;
        }
    }

    void undo() {
        Undo undo(journal, trash(), "test", "1");
        static_cast<void>(undo.undo(realPath("Cut.xml"), nullptr));
    }

    /// After the next start both files are there, one in its place and one in the Trash.
    void expectBothFiles(long stop) {
        ASSERT_TRUE(!isPathNeverEmpty || test::exists(realPath("Cut.xml"))) << stop;
        static_cast<void>(recoverInterrupted(journal, trash()));
        ASSERT_EQ(test::namesIn(sandbox.folder()), std::vector<std::string>{"Cut.xml"}) << stop;
        expectNothingHiddenInTheTrash(stop);
        const std::string present = test::readBytes(realPath("Cut.xml"));
        ASSERT_TRUE(present == "original" || present == "repaired") << stop;
        const std::string other = present == "original" ? "repaired" : "original";
        ASSERT_GE(countOf(other, trash()), 1) << stop << ": " << present << " is there";
        const std::vector<JournalEntry> entries =
            journal.entries(error).value_or(std::vector<JournalEntry>());
        for (const JournalEntry& entry : entries) {
            ASSERT_NE(entry.state, JournalEntry::State::begun) << stop;
        }
        Undo again(journal, trash(), "test", "1");
        ASSERT_EQ(again.undo(realPath("Cut.xml"), nullptr).end, UndoResult::End::undone) << stop;
        ASSERT_EQ(test::readBytes(realPath("Cut.xml")), other) << stop;
    }

    void killEverywhere(const std::function<void()>& body) {
        long stop = 1;
        for (Killed killed = Killed::yes; killed == Killed::yes; ++stop) {
            startAnew();
            killed = runUntil(stop, body);
            if (killed == Killed::impossible) {
                GTEST_SKIP() << "a process may not be traced here";
            }
            expectBothFiles(stop);
            if (HasFatalFailure()) {
                return;
            }
        }
        EXPECT_GT(stop, 50);
        RecordProperty("kills", static_cast<int>(stop));
    }

    std::string trashElsewhere;
    bool isPathNeverEmpty = true;
};

TEST_F(UndoKillTest, losesNothingWhereNamesAreExchanged) {
    killEverywhere([this] { undo(); });
}

TEST_F(UndoKillTest, losesNothingWhereNamesCannotBeExchanged) {
    isPathNeverEmpty = false;
    killEverywhere([this] {
        constexpr unsigned kFlags = 4;
        if (test::failSystemCall(SYS_renameat2, EINVAL, RENAME_EXCHANGE, kFlags)) {
            undo();
        }
    });
}

TEST_F(UndoKillTest, losesNothingWithATrashOnAnotherVolume) {
    const test::SecondVolume other;
    if (!other.isApartFrom(sandbox.folder())) {
        GTEST_SKIP() << "/dev/shm is no volume of its own";
    }
    trashElsewhere = other.path("Trash");
    killEverywhere([this] { undo(); });
}

}  // namespace
}  // namespace vornic
