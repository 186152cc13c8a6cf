#include <array>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <new>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>

#include "job/FileSwap.h"
#include "tests/job/JobTest.h"
#include "tests/platform/volumes/SecondVolume.h"
#include "tests/support/fakes/FailingSystemCall.h"
#include "tests/support/programs/ChildProcess.h"

namespace vornic {
namespace {

namespace fs = std::filesystem;
using test::Strings;

constexpr unsigned kFlagsOfRename = 4;

class SwapTest : public test::JobTest {
  protected:
    /// For a child process alone.
    static void failExchange() {
        constexpr std::uint32_t kBoth = RENAME_EXCHANGE | RENAME_NOREPLACE;
        ASSERT_TRUE(test::failSystemCall(SYS_renameat2, EINVAL, kBoth, kFlagsOfRename));
    }
    SwapResult swap() {
        prepare(copy);
        return copy.swap(observer);
    }
    void expectInPlaces(const SwapResult& result) const {
        EXPECT_EQ(result.original, source);
        EXPECT_EQ(result.repaired, path);
        EXPECT_EQ(test::readBytes(source), "the user's");
        EXPECT_EQ(test::readBytes(path), "repaired");
        EXPECT_EQ(names(), (Strings{"Cut-backup.xml", "Cut.xml"}));
    }
};

/// Each test runs twice: with names that can be exchanged, and on a volume that knows neither an
/// exchange nor a rename that refuses to replace.
class FileSwapTest : public SwapTest, public ::testing::WithParamInterface<bool> {
  protected:
    void onVolume(const std::function<void()>& body) {
        if (GetParam()) {
            body();
            return;
        }
        EXPECT_TRUE(test::passesInChild([&] {
            failExchange();
            body();
        }));
    }
};

INSTANTIATE_TEST_SUITE_P(Volumes, FileSwapTest, ::testing::Bool(), [](const auto& parameter) {
    return parameter.param ? "WithExchange" : "WithoutExchange";
});

TEST_P(FileSwapTest, putsTheCopyInPlaceAndTheOriginalInTheTrash) {
    onVolume([&] {
        const SwapResult result = swap();
        EXPECT_EQ(result.end, SwapEnd::done);
        EXPECT_EQ(result.original, trash() + "/Cut.xml");
        EXPECT_EQ(result.repaired, source);
        EXPECT_EQ(result.error, std::nullopt);
        EXPECT_EQ(test::readBytes(source), "repaired");
        EXPECT_EQ(inTrash("Cut.xml"), "the user's");
        EXPECT_EQ(names(), Strings{"Cut.xml"});
    });
}

TEST_P(FileSwapTest, notifiesItsObserverBeforeAndAfter) {
    onVolume([&] {
        EXPECT_EQ(swap().end, SwapEnd::done);
        EXPECT_EQ(observer.told, (Strings{"will", "did " + trash() + "/Cut.xml"}));
        ASSERT_EQ(observer.intents.size(), 1U);
        const SwapIntent& intent = observer.intents[0];
        EXPECT_EQ(intent.source, source);
        EXPECT_EQ(intent.workingCopy, path);
        EXPECT_EQ(intent.sourceDigest, platform::ContentDigest::of("the user's"));
        EXPECT_EQ(intent.copyDigest, platform::ContentDigest::of("repaired"));
        EXPECT_EQ(intent.copyVersion.identity, platform::fileIdentity(source));
        EXPECT_EQ(intent.sourceVersion.identity, platform::fileIdentity(trash() + "/Cut.xml"));
    });
}

TEST_P(FileSwapTest, isNotMadeAgainstItsObserver) {
    onVolume([&] {
        observer.refusal = posixError("It cannot be noted", ENOSPC);
        const SwapResult result = swap();
        EXPECT_EQ(result.end, SwapEnd::failed);
        EXPECT_EQ(result.error->code, ENOSPC);
        expectInPlaces(result);
    });
}

TEST_P(FileSwapTest, leavesANewerExportInItsPlace) {
    onVolume([&] {
        prepare(copy);
        replace(source, "a newer export");
        const SwapResult result = copy.swap(observer);
        EXPECT_EQ(result.end, SwapEnd::sourceChanged);
        EXPECT_EQ(result.repaired, path);
        EXPECT_EQ(test::readBytes(source), "a newer export");
        EXPECT_EQ(test::readBytes(path), "repaired");
        EXPECT_EQ(names(), (Strings{"Cut-backup.xml", "Cut.xml"}));
        EXPECT_FALSE(test::exists(trash()));
        EXPECT_EQ(observer.told, (Strings{"will", "did not"}));
    });
}

TEST_P(FileSwapTest, leavesWhatWasWrittenIntoTheSourceInPlace) {
    onVolume([&] {
        prepare(copy);
        overwrite(source, "The user's");  // as many bytes
        EXPECT_EQ(copy.swap(observer).end, SwapEnd::sourceChanged);
        EXPECT_EQ(test::readBytes(source), "The user's");
        EXPECT_FALSE(test::exists(trash()));
    });
}

TEST_P(FileSwapTest, takesASourceThatWasOnlyTouched) {
    onVolume([&] {
        prepare(copy);
        ASSERT_EQ(utimensat(AT_FDCWD, source.c_str(), nullptr, 0), 0);
        ASSERT_EQ(chmod(source.c_str(), 0640), 0);
        EXPECT_EQ(copy.swap(observer).end, SwapEnd::done);
        EXPECT_EQ(inTrash("Cut.xml"), "the user's");
    });
}

TEST_P(FileSwapTest, leavesAnExportThatComesAtTheLastMoment) {
    onVolume([&] {
        observer.at[SwapPoint::verified] = [&] { replace(source, "a newer export"); };
        EXPECT_EQ(swap().end, SwapEnd::sourceChanged);
        EXPECT_EQ(test::readBytes(source), "a newer export");
        EXPECT_EQ(test::readBytes(path), "repaired");
    });
}

TEST_P(FileSwapTest, leavesAnExportThatComesWhileTheFilesAreCompared) {
    onVolume([&] {
        observer.at[SwapPoint::verified] = [&] { replace(source, "a newer export"); };
        observer.at[SwapPoint::differed] = [&] { replace(source, "the newest export"); };
        const SwapResult result = swap();
        EXPECT_EQ(result.end, SwapEnd::sourceChanged);
        EXPECT_EQ(test::readBytes(source), "the newest export");
        EXPECT_EQ(inTrash("Cut.xml"), "a newer export");
        EXPECT_EQ(result.original, trash() + "/Cut.xml");
        EXPECT_FALSE(test::exists(aside));
    });
}

TEST_P(FileSwapTest, doesNotBringBackASourceThatWasTakenAway) {
    onVolume([&] {
        prepare(copy);
        fs::remove(source);
        const SwapResult result = copy.swap(observer);
        EXPECT_EQ(result.end, SwapEnd::sourceChanged);
        EXPECT_EQ(result.original, "");
        EXPECT_EQ(result.repaired, path);
        EXPECT_EQ(names(), Strings{"Cut-backup.xml"});
        EXPECT_EQ(test::readBytes(path), "repaired");
    });
}

TEST_P(FileSwapTest, isTakenBackWhenTheTrashCannotBeWritten) {
    onVolume([&] {
        blockTrash();
        const SwapResult result = swap();
        EXPECT_EQ(result.end, SwapEnd::trashFailed);
        EXPECT_TRUE(result.error.has_value());
        expectInPlaces(result);
        EXPECT_EQ(observer.told, (Strings{"will", "did not"}));
    });
}

TEST_P(FileSwapTest, isTakenBackWhenTheTrashIsOnAnotherVolumeThatIsGone) {
    onVolume([&] {
        observer.at[SwapPoint::beforeTrash] = [&] { blockTrash(); };
        expectInPlaces(swap());
    });
}

TEST_P(FileSwapTest, takesNoForeignFileForTheCopy) {
    onVolume([&] {
        prepare(copy);
        replace(path, "foreign");
        const SwapResult result = copy.swap(observer);
        EXPECT_EQ(result.end, SwapEnd::copyChanged);
        EXPECT_EQ(result.repaired, "");
        EXPECT_EQ(test::readBytes(source), "the user's");
        EXPECT_EQ(test::readBytes(path), "foreign");
        EXPECT_EQ(observer.told, Strings{});
    });
}

TEST_P(FileSwapTest, takesNoCopyThatAnotherProgramHasWrittenInto) {
    onVolume([&] {
        for (const std::string bytes : {"foreign", "REPAIRED"}) {
            prepare(copy);
            overwrite(path, bytes);
            EXPECT_EQ(copy.swap(observer).end, SwapEnd::copyChanged);
            EXPECT_EQ(test::readBytes(source), "the user's");
            EXPECT_EQ(test::readBytes(path), bytes);
            fs::remove(path);
        }
    });
}

TEST_P(FileSwapTest, isTakenBackWhenTheCopyIsWrittenIntoDuringIt) {
    onVolume([&] {
        observer.at[SwapPoint::verified] = [&] { overwrite(path, "foreign"); };
        EXPECT_EQ(swap().end, SwapEnd::copyChanged);
        EXPECT_EQ(test::readBytes(source), "the user's");
        EXPECT_EQ(test::readBytes(path), "foreign");
    });
}

TEST_P(FileSwapTest, neverRemovesAForeignFileAtTheCopysPath) {
    onVolume([&] {
        observer.at[SwapPoint::beforeTrash] = [&] { sandbox.write("Cut-backup.xml", "foreign"); };
        EXPECT_EQ(swap().end, SwapEnd::done);
        EXPECT_EQ(test::readBytes(path), "foreign");
        EXPECT_EQ(test::readBytes(source), "repaired");
        EXPECT_EQ(inTrash("Cut.xml"), "the user's");
    });
}

TEST_P(FileSwapTest, saysWhereTheFilesAreWhenTheCopysNameIsTakenMeanwhile) {
    onVolume([&] {
        observer.at[SwapPoint::beforeTrash] = [&] {
            blockTrash();
            sandbox.write("Cut-backup.xml", "foreign");
        };
        const SwapResult result = swap();
        EXPECT_EQ(test::readBytes(path), "foreign");
        EXPECT_EQ(test::readBytes(result.original), "the user's");
        EXPECT_EQ(test::readBytes(result.repaired), "repaired");
    });
}

/// What another program does to the user's file.
enum class Doing { nothing, writesIntoIt, replacesIt, removesIt };

constexpr std::array kDoings{Doing::nothing, Doing::writesIntoIt, Doing::replacesIt,
                             Doing::removesIt};

/// The table in FileSwap.h: what another program has done before the names were exchanged, and what
/// it does between the exchange and the look.
class FileSwapTableTest : public SwapTest {
  protected:
    void act(Doing doing, const std::string& bytes) const {
        switch (doing) {
            case Doing::nothing:
                break;
            case Doing::writesIntoIt:
                overwrite(source, bytes);
                break;
            case Doing::replacesIt:
                replace(source, bytes);
                break;
            case Doing::removesIt:
                fs::remove(source);
                break;
        }
    }
    SwapResult swapBetween(Doing before, SwapPoint point, Doing after) {
        observer.at[SwapPoint::verified] = [this, before] { act(before, "written before"); };
        observer.at[point] = [this, after] { act(after, "written after"); };
        return swap();
    }
    /// @param kept what came out, and lies in the Trash now
    void expectGivenWay(const SwapResult& result, const std::string& kept,
                        const std::string& atPath) const {
        EXPECT_EQ(result.end, SwapEnd::sourceChanged);
        EXPECT_EQ(test::exists(source) ? test::readBytes(source) : "", atPath);
        EXPECT_EQ(result.original, trash() + "/Cut.xml");
        EXPECT_TRUE(result.isInTrash);
        EXPECT_EQ(inTrash("Cut.xml"), kept);
        EXPECT_EQ(result.repaired, test::exists(path) ? path : "");
    }
    void clean() {
        test::removeTrash(sandbox.home());
        for (const std::string& name : names()) {
            fs::remove(sandbox.path(name));
        }
        sandbox.write("Cut.xml", "the user's");
        observer.at.clear();
    }
};

TEST_F(FileSwapTableTest, leavesTheNewestAtThePath) {
    for (const Doing before : {Doing::nothing, Doing::writesIntoIt, Doing::replacesIt}) {
        const std::string out = before == Doing::nothing ? "the user's" : "written before";
        for (const Doing after : kDoings) {
            SCOPED_TRACE(std::to_string(static_cast<int>(before)) + " " +
                         std::to_string(static_cast<int>(after)));
            const SwapResult result = swapBetween(before, SwapPoint::exchanged, after);
            if (after != Doing::nothing) {
                expectGivenWay(result, out, after == Doing::removesIt ? "" : "written after");
                EXPECT_FALSE(test::exists(path));
            } else if (before == Doing::nothing) {
                EXPECT_EQ(result.end, SwapEnd::done);
            } else {
                EXPECT_EQ(result.end, SwapEnd::sourceChanged);
                EXPECT_EQ(test::readBytes(source), out);
                EXPECT_EQ(result.original, source);
                EXPECT_EQ(result.repaired, path);
                EXPECT_EQ(test::readBytes(path), "repaired");
            }
            EXPECT_FALSE(test::exists(aside));
            clean();
        }
    }
}

TEST_F(FileSwapTableTest, leavesTheNewestAtThePathWhereNamesCannotBeExchanged) {
    for (const Doing before : {Doing::nothing, Doing::writesIntoIt, Doing::replacesIt}) {
        const std::string out = before == Doing::nothing ? "the user's" : "written before";
        for (const Doing after : {Doing::writesIntoIt, Doing::replacesIt}) {
            EXPECT_TRUE(test::passesInChild([&] {
                failExchange();
                const SwapResult result = swapBetween(before, SwapPoint::exchanged, after);
                expectGivenWay(result, out, "written after");
                EXPECT_EQ(test::readBytes(path), "repaired");
                EXPECT_EQ(names(), (Strings{"Cut-backup.xml", "Cut.xml"}));
            }));
            clean();
        }
    }
    for (const Doing after : {Doing::writesIntoIt, Doing::replacesIt, Doing::removesIt}) {
        EXPECT_TRUE(test::passesInChild([&] {
            failExchange();
            const SwapResult result = swapBetween(Doing::nothing, SwapPoint::movedIn, after);
            expectGivenWay(result, "the user's", after == Doing::removesIt ? "" : "written after");
        }));
        clean();
    }
}

TEST_P(FileSwapTest, leavesWhatIsWrittenWhileItIsTakenBack) {
    onVolume([&] {
        observer.at[SwapPoint::beforeTrash] = [&] {
            blockTrash();
            overwrite(source, "newest");
        };
        const SwapResult result = swap();
        EXPECT_EQ(result.end, SwapEnd::sourceChanged);
        EXPECT_EQ(test::readBytes(source), "newest");
        EXPECT_TRUE(result.isAside);
        EXPECT_EQ(test::readBytes(result.original), "the user's");
        EXPECT_FALSE(test::exists(path));
    });
}

TEST_F(SwapTest, leavesWhatIsWrittenIntoWhatItHasPutBack) {
    observer.at[SwapPoint::beforeTrash] = [&] {
        blockTrash();
        overwrite(source, "newer");
    };
    observer.at[SwapPoint::takenBack] = [&] {
        fs::remove(trash());
        overwrite(source, "newest");
    };
    const SwapResult result = swap();
    EXPECT_EQ(result.end, SwapEnd::sourceChanged);
    EXPECT_EQ(test::readBytes(source), "newest");
    EXPECT_EQ(inTrash("Cut.xml"), "newer");
    EXPECT_EQ(names(), Strings{"Cut.xml"});
}

TEST_F(SwapTest, isTakenBackWhenWhatCameOutCannotBeRead) {
    prepare(copy);
    EXPECT_TRUE(test::passesInChild([&] {
        observer.at[SwapPoint::exchanged] = [] {
            ASSERT_TRUE(test::failSystemCall(SYS_pread64, EIO));
        };
        const SwapResult result = copy.swap(observer);
        EXPECT_EQ(result.end, SwapEnd::failed);
        EXPECT_EQ(result.error->code, EIO);
        expectInPlaces(result);
    }));
}

TEST_P(FileSwapTest, isTakenBackWhenMemoryRunsOutDuringIt) {
    for (const SwapPoint point :
         {SwapPoint::exchanged, SwapPoint::compared, SwapPoint::beforeTrash}) {
        onVolume([&] {
            observer.at[point] = [] { throw std::bad_alloc(); };
            prepare(copy);
            EXPECT_THROW(static_cast<void>(copy.swap(observer)), std::bad_alloc);
            EXPECT_EQ(test::readBytes(source), "the user's");
            EXPECT_EQ(test::readBytes(path), "repaired");
            EXPECT_EQ(names(), (Strings{"Cut-backup.xml", "Cut.xml"}));
            fs::remove(path);
        });
        fs::remove(path);
    }
}

TEST_P(FileSwapTest, replacesALinkAndLeavesItsTarget) {
    fs::rename(source, sandbox.path("target"));
    fs::create_symlink("target", source);
    onVolume([&] {
        EXPECT_EQ(swap().end, SwapEnd::done);
        EXPECT_EQ(test::readBytes(source), "repaired");
        EXPECT_FALSE(fs::is_symlink(source));
        EXPECT_EQ(fs::read_symlink(trash() + "/Cut.xml"), "target");
        EXPECT_EQ(test::readBytes(sandbox.path("target")), "the user's");
    });
}

TEST_P(FileSwapTest, leavesALinkWhoseTargetWasWrittenAnew) {
    fs::rename(source, sandbox.path("target"));
    fs::create_symlink("target", source);
    onVolume([&] {
        prepare(copy);
        replace(sandbox.path("target"), "a newer export");
        EXPECT_EQ(copy.swap(observer).end, SwapEnd::sourceChanged);
        EXPECT_EQ(fs::read_symlink(source), "target");
        EXPECT_EQ(test::readBytes(source), "a newer export");
    });
}

TEST_P(FileSwapTest, thatWasKilledLeavesWhatTheNextRunFinds) {
    for (const SwapPoint point :
         {SwapPoint::exchanged, SwapPoint::compared, SwapPoint::beforeTrash}) {
        test::ChildProcess child([&] {
            onVolume([&] {
                observer.at[point] = [] { _exit(0); };
                static_cast<void>(swap());
            });
        });
        child.wait();
        ASSERT_TRUE(test::exists(aside));
        WorkingCopy next(source, path, waiting);
        EXPECT_TRUE(next.settleLeft());
        EXPECT_FALSE(test::exists(aside));
        EXPECT_EQ(next.takeNotes().size(), 1U);
        const std::string now = test::readBytes(source);
        EXPECT_EQ(now, GetParam() || point == SwapPoint::beforeTrash ? "repaired" : "the user's");
        if (now == "repaired") {
            EXPECT_EQ(inTrash("Cut.xml"), "the user's");
        }
        test::removeTrash(sandbox.home());
        fs::remove(path);
        sandbox.write("Cut.xml", "the user's");
    }
}

TEST_P(FileSwapTest, isWaitedForByTheNextRunOfTheSource) {
    onVolume([&] {
        WorkingCopy next(source, path, waiting);
        observer.at[SwapPoint::beforeTrash] = [&] {
            waiting.cancelled = true;
            EXPECT_FALSE(next.settleLeft());
            EXPECT_EQ(next.clearPath(error), WorkingCopy::Clearing::cancelled);
            EXPECT_TRUE(test::exists(aside));
        };
        EXPECT_EQ(swap().end, SwapEnd::done);
        EXPECT_EQ(error, std::nullopt);
        EXPECT_TRUE(next.settleLeft());
    });
}

TEST(FileSwapNames, fitAFolderAndDistinguishLongNames) {
    const std::string name(240, 'n');
    EXPECT_EQ(FileSwap::asidePath("/a/Cut.xml"), "/a/.Cut.xml.vornic.swap");
    EXPECT_LT(FileSwap::asidePath("/" + name + "1").size(), 143U);
    EXPECT_NE(FileSwap::asidePath("/" + name + "1"), FileSwap::asidePath("/" + name + "2"));
}

TEST_P(FileSwapTest, movesTheOriginalToATrashOnAnotherVolume) {
    const test::SecondVolume volume;
    if (!volume.isApartFrom(sandbox.folder())) {
        GTEST_SKIP() << "there is no second volume";
    }
    fs::create_directory(volume.path("Trash"));
    chmod(volume.path("Trash").c_str(), 0700);
    fs::create_directory_symlink(volume.path("Trash"), trash());
    onVolume([&] {
        EXPECT_EQ(swap().end, SwapEnd::done);
        EXPECT_EQ(test::readBytes(source), "repaired");
        EXPECT_EQ(test::readBytes(volume.path("Trash/Cut.xml")), "the user's");
        EXPECT_EQ(names(), Strings{"Cut.xml"});
    });
}

}  // namespace
}  // namespace vornic
