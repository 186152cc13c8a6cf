#include <filesystem>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>

#include "tests/job/UndoFixture.h"
#include "tests/support/fakes/FailingSystemCall.h"
#include "tests/support/programs/ChildProcess.h"

namespace vornic {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

using UndoTest = test::UndoFixture;

TEST_F(UndoTest, bringsTheOriginalBackAndPutsTheResultIntoTheTrash) {
    const std::string file = sandbox.write("Cut.xml", "original");
    ASSERT_EQ(chmod(file.c_str(), 0640), 0);
    static_cast<void>(test::setAttribute(file, "user.note", "value"));
    const test::FileState before = test::fileState(file);
    const auto identity = platform::fileIdentity(file);
    repair("Cut.xml", "repaired");
    const UndoResult result = undo();
    ASSERT_EQ(result.end, UndoResult::End::undone);
    EXPECT_FALSE(result.hadChanged);
    EXPECT_EQ(test::fileState(file), before);
    EXPECT_EQ(platform::fileIdentity(file), identity);
    EXPECT_EQ(test::readBytes(result.result), "repaired");
    EXPECT_THAT(namesInTrash(), ElementsAre("Cut.xml"));
    EXPECT_THAT(notes(), ElementsAre("Cut.xml.trashinfo"));
    EXPECT_THAT(test::namesIn(sandbox.folder()), ElementsAre("Cut.xml"));
}

TEST_F(UndoTest, knowsNothingOfOtherFiles) {
    sandbox.write("Cut.xml", "original");
    sandbox.write("Other.xml", "other");
    repair("Cut.xml", "repaired");
    EXPECT_EQ(undo("Other.xml").end, UndoResult::End::nothingToUndo);
    EXPECT_EQ(bytes("Other.xml"), "other");
    EXPECT_EQ(bytes(), "repaired");
}

TEST_F(UndoTest, takesAFileByAnyPathThatLeadsToIt) {
    sandbox.write("Cut.xml", "original");
    repair("Cut.xml", "repaired");
    fs::create_directory_symlink(sandbox.folder(), sandbox.home() + "/alias");
    EXPECT_EQ(make().undo(sandbox.home() + "/alias/Cut.xml", nullptr).end, UndoResult::End::undone);
    EXPECT_EQ(bytes(), "original");
}

TEST_F(UndoTest, goesBackOneByOneNewestFirst) {
    sandbox.write("Cut.xml", "1");
    repair("Cut.xml", "2");
    repair("Cut.xml", "3");
    repair("Cut.xml", "4");
    for (const char* expected : {"3", "2", "1"}) {
        EXPECT_EQ(undo().end, UndoResult::End::undone);
        EXPECT_EQ(bytes(), expected);
    }
}

TEST_F(UndoTest, takesBackAnUndo) {
    sandbox.write("Cut.xml", "original");
    repair("Cut.xml", "repaired");
    for (const char* expected : {"original", "repaired", "original", "repaired"}) {
        EXPECT_EQ(undo().end, UndoResult::End::undone);
        EXPECT_EQ(bytes(), expected);
    }
    EXPECT_THAT(namesInTrash(), ElementsAre("Cut.xml"));
}

TEST_F(UndoTest, goesOnFromARepairAfterAnUndo) {
    sandbox.write("Cut.xml", "1");
    repair("Cut.xml", "2");
    EXPECT_EQ(undo().end, UndoResult::End::undone);
    repair("Cut.xml", "3");
    EXPECT_EQ(undo().end, UndoResult::End::undone);
    EXPECT_EQ(bytes(), "1");
}

TEST_F(UndoTest, takesTheNewestOfAllFilesWhenNoneIsNamed) {
    for (const char* name : {"a", "b"}) {
        sandbox.write(name, "original");
        repair(name, "repaired");
    }
    EXPECT_EQ(make().undoNewest(nullptr).file, realPath("b"));
    EXPECT_EQ(make().undoNewest(nullptr).file, realPath("a"));
    EXPECT_EQ(make().undoNewest(nullptr).end, UndoResult::End::nothingToUndo);
    EXPECT_EQ(bytes("a"), "original");
    EXPECT_EQ(bytes("b"), "original");
}

TEST_F(UndoTest, listsTheNextChangeOfEachFile) {
    sandbox.write("a", "1");
    sandbox.write("b", "1");
    repair("a", "2");
    repair("b", "2");
    repair("a", "3");
    fs::remove(trash() + "/b");
    const auto changes = make().changes(error);
    ASSERT_TRUE(changes);
    ASSERT_EQ(changes->size(), 2U);
    EXPECT_EQ((*changes)[0].entry.file, realPath("a"));
    EXPECT_EQ(test::readBytes((*changes)[0].original), "2");
    EXPECT_EQ((*changes)[1].entry.file, realPath("b"));
    EXPECT_EQ((*changes)[1].original, "");
    EXPECT_EQ(bytes("a"), "3");
}

TEST_F(UndoTest, leavesAFileThatHasChangedSince) {
    sandbox.write("Cut.xml", "original");
    repair("Cut.xml", "repaired");
    sandbox.write("Cut.xml", "edited!!");
    EXPECT_EQ(undo().end, UndoResult::End::changed);
    EXPECT_EQ(bytes(), "edited!!");
    EXPECT_EQ(test::readBytes(trash() + "/Cut.xml"), "original");
}

TEST_F(UndoTest, keepsAChangedFileWhenToldToGoOn) {
    sandbox.write("Cut.xml", "original");
    repair("Cut.xml", "repaired");
    sandbox.write("Cut.xml", "edited!!");
    int asked = 0;
    const UndoResult result = make().undo(realPath("Cut.xml"), [&asked](const JournalEntry&) {
        ++asked;
        return true;
    });
    EXPECT_EQ(asked, 1);
    EXPECT_EQ(result.end, UndoResult::End::undone);
    EXPECT_TRUE(result.hadChanged);
    EXPECT_EQ(bytes(), "original");
    EXPECT_EQ(test::readBytes(result.result), "edited!!");
}

TEST_F(UndoTest, takesAFileWithTheSameBytesForUnchanged) {
    sandbox.write("Cut.xml", "original");
    repair("Cut.xml", "repaired");
    fs::copy_file(realPath("Cut.xml"), realPath("again"));
    fs::rename(realPath("again"), realPath("Cut.xml"));
    EXPECT_EQ(undo().end, UndoResult::End::undone);
}

TEST_F(UndoTest, asksAboutAFileThatIsGone) {
    sandbox.write("Cut.xml", "original");
    repair("Cut.xml", "repaired");
    fs::remove(realPath("Cut.xml"));
    EXPECT_EQ(undo().end, UndoResult::End::changed);
    const UndoResult result =
        make().undo(realPath("Cut.xml"), [](const JournalEntry&) { return true; });
    EXPECT_EQ(result.end, UndoResult::End::undone);
    EXPECT_EQ(result.result, "");
    EXPECT_EQ(bytes(), "original");
    EXPECT_THAT(namesInTrash(), IsEmpty());
    EXPECT_THAT(notes(), IsEmpty());
}

TEST_F(UndoTest, reportsAnEmptiedTrash) {
    sandbox.write("Cut.xml", "original");
    repair("Cut.xml", "repaired");
    fs::remove(trash() + "/Cut.xml");
    fs::remove(sandbox.home() + "/.local/share/Trash/info/Cut.xml.trashinfo");
    EXPECT_EQ(undo().end, UndoResult::End::emptied);
    sandbox.write("Cut 2.xml", "another");
    static_cast<void>(recycle(realPath("Cut 2.xml"), "Cut.xml"));
    EXPECT_EQ(undo().end, UndoResult::End::emptied) << "another item has that name";
    EXPECT_EQ(bytes(), "repaired");
    EXPECT_EQ(test::readBytes(trash() + "/Cut.xml"), "another");
}

TEST_F(UndoTest, bringsBackOneOfTwoNamesOfAFile) {
    sandbox.write("Cut.xml", "original");
    fs::create_hard_link(realPath("Cut.xml"), realPath("Second.xml"));
    repair("Cut.xml", "repaired");
    ASSERT_EQ(undo().end, UndoResult::End::undone);
    EXPECT_EQ(platform::fileIdentity(realPath("Cut.xml")),
              platform::fileIdentity(realPath("Second.xml")));
}

TEST_F(UndoTest, leavesTheFileWhenTheTrashIsALinkToElsewhere) {
    sandbox.write("Cut.xml", "original");
    repair("Cut.xml", "repaired");
    fs::create_directory(sandbox.path("open"));
    fs::permissions(sandbox.path("open"), static_cast<fs::perms>(0755));
    fs::copy_file(trash() + "/Cut.xml", sandbox.path("open/Cut.xml"));
    fs::remove(trash());
    fs::create_directory_symlink(sandbox.path("open"), trash());
    const UndoResult result = undo();
    EXPECT_EQ(result.end, UndoResult::End::failed);
    EXPECT_THAT(result.error->description, HasSubstr("cannot be used as the Trash: "));
    EXPECT_EQ(bytes(), "repaired");
    EXPECT_EQ(test::readBytes(sandbox.path("open/Cut.xml")), "original");
}

TEST_F(UndoTest, staysInTheTrashThatItHasLookedAt) {
    sandbox.write("Cut.xml", "original");
    repair("Cut.xml", "repaired");
    const std::string desktops = sandbox.home() + "/.local/share/Trash";
    fs::create_directory(sandbox.path("elsewhere"));
    Undo careful = make();
    careful.setObserver([&](UndoStep step) {
        if (step == UndoStep::looked) {
            fs::rename(desktops + "/files", desktops + "/moved");
            fs::create_directory_symlink(sandbox.path("elsewhere"), desktops + "/files");
        }
    });
    EXPECT_EQ(careful.undo(realPath("Cut.xml"), nullptr).end, UndoResult::End::undone);
    EXPECT_EQ(bytes(), "original");
    EXPECT_EQ(test::readBytes(desktops + "/moved/Cut.xml"), "repaired");
    EXPECT_THAT(test::namesIn(sandbox.path("elsewhere")), IsEmpty());
}

TEST_F(UndoTest, reportsAnUndoThatCouldNotBeWrittenDown) {
    sandbox.write("Cut.xml", "original");
    repair("Cut.xml", "repaired");
    EXPECT_TRUE(test::passesInChild([this] {
        Undo careful = make();
        careful.setObserver([](UndoStep step) {
            if (step == UndoStep::compared) {
                EXPECT_TRUE(test::failSystemCall(SYS_fsync, EIO));
            }
        });
        const UndoResult result = careful.undo(realPath("Cut.xml"), nullptr);
        EXPECT_EQ(result.end, UndoResult::End::undone);
        ASSERT_TRUE(result.error);
        EXPECT_THAT(result.error->description, HasSubstr("The journal "));
    }));
    EXPECT_EQ(bytes(), "original");
}

TEST_F(UndoTest, bringsALinkBackAsALink) {
    sandbox.write("target.xml", "original");
    fs::create_symlink("target.xml", realPath("Cut.xml"));
    repair("Cut.xml", "repaired");
    ASSERT_EQ(undo().end, UndoResult::End::undone);
    EXPECT_EQ(fs::read_symlink(realPath("Cut.xml")), "target.xml");
    EXPECT_EQ(bytes("target.xml"), "original");
    EXPECT_EQ(undo().end, UndoResult::End::undone);
    EXPECT_FALSE(fs::is_symlink(realPath("Cut.xml")));
    EXPECT_EQ(bytes(), "repaired");
}

TEST_F(UndoTest, keepsAFileThatComesBetween) {
    sandbox.write("Cut.xml", "original");
    repair("Cut.xml", "repaired");
    Undo careful = make();
    careful.setObserver([this](UndoStep step) {
        if (step == UndoStep::looked) {
            sandbox.write("new", "newer export");
            fs::rename(realPath("new"), realPath("Cut.xml"));
        }
    });
    const UndoResult result = careful.undo(realPath("Cut.xml"), nullptr);
    EXPECT_EQ(result.end, UndoResult::End::failed);
    EXPECT_THAT(result.error->description, HasSubstr("it was changed in the meantime."));
    EXPECT_EQ(bytes(), "newer export");
    EXPECT_EQ(test::readBytes(trash() + "/Cut.xml"), "original");
    EXPECT_EQ(journal.entries(error)->back().state, JournalEntry::State::takenBack);
}

TEST_F(UndoTest, staysInTheFolderThatItHasLookedAt) {
    fs::create_directory(sandbox.path("folder"));
    sandbox.write("folder/Cut.xml", "original");
    const std::string name = "folder/Cut.xml";
    // Where `repair` puts the new file.
    fs::create_directory(sandbox.path("copy of folder"));
    repair(name, "repaired");
    Undo careful = make();
    careful.setObserver([this](UndoStep step) {
        if (step == UndoStep::looked) {
            fs::rename(sandbox.path("folder"), sandbox.path("moved"));
            fs::create_directory(sandbox.path("folder"));
            sandbox.write("folder/Cut.xml", "another");
        }
    });
    EXPECT_EQ(careful.undo(realPath(name), nullptr).end, UndoResult::End::undone);
    EXPECT_EQ(bytes("moved/Cut.xml"), "original");
    EXPECT_EQ(bytes("folder/Cut.xml"), "another");
}

TEST_F(UndoTest, worksWhereNamesCannotBeExchanged) {
    sandbox.write("Cut.xml", "original");
    repair("Cut.xml", "repaired");
    EXPECT_TRUE(test::passesInChild([this] {
        constexpr unsigned kFlags = 4;
        ASSERT_TRUE(test::failSystemCall(SYS_renameat2, EINVAL, RENAME_EXCHANGE, kFlags));
        const UndoResult result = undo();
        EXPECT_EQ(result.end, UndoResult::End::undone);
        EXPECT_EQ(test::readBytes(result.result), "repaired");
    }));
    EXPECT_EQ(bytes(), "original");
    ASSERT_EQ(namesInTrash().size(), 1U);
    EXPECT_THAT(notes(), ElementsAre(namesInTrash().front() + ".trashinfo"));
    EXPECT_THAT(test::namesIn(sandbox.folder()), ElementsAre("Cut.xml"));
}

TEST_F(UndoTest, movesNothingThatCannotBeWrittenDown) {
    sandbox.write("Cut.xml", "original");
    repair("Cut.xml", "repaired");
    EXPECT_TRUE(test::passesInChild([this] {
        ASSERT_TRUE(test::failSystemCall(SYS_fsync, EIO));
        const UndoResult result = undo();
        EXPECT_EQ(result.end, UndoResult::End::failed);
        EXPECT_THAT(result.error->description, HasSubstr("The journal "));
    }));
    EXPECT_EQ(bytes(), "repaired");
}

TEST_F(UndoTest, takesBackAThousandFiles) {
    constexpr int kFiles = 1000;
    for (int count = 0; count < kFiles; ++count) {
        const std::string name = "Cut " + std::to_string(count) + ".xml";
        sandbox.write(name, "original " + name);
        repair(name, "repaired " + name);
    }
    Undo all = make();
    for (int count = 0; count < kFiles; ++count) {
        const std::string name = "Cut " + std::to_string(count) + ".xml";
        ASSERT_EQ(all.undo(realPath(name), nullptr).end, UndoResult::End::undone);
        ASSERT_EQ(bytes(name), "original " + name);
    }
}

}  // namespace
}  // namespace vornic
