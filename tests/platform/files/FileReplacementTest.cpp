#include <cerrno>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "platform/files/FileReplacement.h"
#include "tests/support/fakes/FailingSystemCall.h"
#include "tests/support/machine/FileState.h"
#include "tests/support/machine/RightsOfRoot.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/programs/ChildProcess.h"

namespace vornic::platform {
namespace {

namespace fs = std::filesystem;
using Moment = FileReplacement::Moment;

// What another program does at the moments of a commit.
std::function<void(Moment)>& intrusion() {
    static std::function<void(Moment)> function;
    return function;
}

class FileReplacementTest : public test::SandboxTest {
  protected:
    void SetUp() override {
        FileReplacement::setHook([](Moment moment) {
            if (intrusion()) {
                intrusion()(moment);
            }
        });
        path = sandbox.write("Cut.xml", "old");
        ASSERT_EQ(read(), "old");
    }
    void TearDown() override {
        FileReplacement::setHook(nullptr);
        intrusion() = nullptr;
    }
    /// Reads the file as it is before a replacement.
    std::string read() {
        ErrorSlot ignored;
        return readFileForChange(path, snapshot, ignored).value_or("");
    }
    bool replace() {
        FileReplacement file;
        return file.open(path, error) && file.write("converted", error) &&
               file.commit(snapshot, error);
    }
    /// Another program's export, put in place as a new file.
    void exportAnew(const std::string& contents) const {
        const std::string other = sandbox.write("other program's", contents);
        fs::rename(other, path);
    }
    void expectRefused(const std::string& contents) {
        EXPECT_FALSE(replace());
        EXPECT_EQ(error.value_or(Error()).description,
                  "The file " + path +
                      " cannot be written: another program has changed it since it was read.");
        EXPECT_EQ(test::readBytes(path), contents);
        EXPECT_EQ(names(), std::vector<std::string>{"Cut.xml"});
    }
    [[nodiscard]] std::vector<std::string> names() const {
        ErrorSlot ignored;
        return namesInFolder(sandbox.folder(), ignored).value_or(std::vector<std::string>());
    }

    std::string path;
    FileSnapshot snapshot;
    ErrorSlot error;
};

TEST_F(FileReplacementTest, replacesWhatWasRead) {
    ASSERT_EQ(chmod(path.c_str(), 0640), 0);
    read();
    EXPECT_TRUE(replace());
    EXPECT_EQ(test::readBytes(path), "converted");
    EXPECT_EQ(fs::status(path).permissions(), fs::perms(0640));
    EXPECT_EQ(names(), std::vector<std::string>{"Cut.xml"});
}

TEST_F(FileReplacementTest, rewritesWhatALinkNames) {
    fs::create_symlink("Cut.xml", sandbox.path("Link.xml"));
    path = sandbox.path("Link.xml");
    read();
    EXPECT_TRUE(replace());
    EXPECT_TRUE(fs::is_symlink(path));
    EXPECT_EQ(test::readBytes(sandbox.path("Cut.xml")), "converted");
}

TEST_F(FileReplacementTest, leavesAFileThatWasReplacedSinceItWasRead) {
    exportAnew("new");
    expectRefused("new");
}

TEST_F(FileReplacementTest, leavesAFileThatWasWrittenIntoSinceItWasRead) {
    std::ofstream(path) << "new";
    expectRefused("new");
}

TEST_F(FileReplacementTest, takesAFileWithOtherTimesAndTheSameContentsForTheSame) {
    fs::last_write_time(path, fs::file_time_type::clock::now() - std::chrono::hours(1));
    EXPECT_TRUE(replace());
    EXPECT_EQ(test::readBytes(path), "converted");
}

TEST_F(FileReplacementTest, givesBackAnExportThatCameBeforeTheExchange) {
    intrusion() = [this](Moment moment) {
        if (moment == Moment::beforeExchange) {
            exportAnew("new");
        }
    };
    expectRefused("new");
}

TEST_F(FileReplacementTest, givesBackWhatWasWrittenIntoTheFileBeforeTheExchange) {
    intrusion() = [this](Moment moment) {
        if (moment == Moment::beforeExchange) {
            std::ofstream(path) << "newer and longer";
        }
    };
    expectRefused("newer and longer");
}

TEST_F(FileReplacementTest, leavesTheNewestOfTwoExportsAtThePath) {
    intrusion() = [this](Moment moment) {
        if (moment == Moment::beforeExchange) {
            exportAnew("new");
        } else if (moment == Moment::afterExchange) {
            exportAnew("newest");
        }
    };
    expectRefused("newest");
}

TEST_F(FileReplacementTest, leavesTheNewestOfManyExportsAtThePath) {
    intrusion() = [this, count = 0](Moment moment) mutable {
        if (moment != Moment::afterExchange && count < 9) {
            exportAnew("export " + std::to_string(++count));
        }
    };
    expectRefused("export 9");
}

TEST_F(FileReplacementTest, keepsWhatWasWrittenIntoTheNewFileBeforeItIsTakenBack) {
    intrusion() = [this](Moment moment) {
        if (moment == Moment::beforeExchange) {
            exportAnew("new");
        } else if (moment == Moment::afterExchange) {
            std::ofstream(path) << "written into what stood there";
        }
    };
    expectRefused("written into what stood there");
}

TEST_F(FileReplacementTest, keepsWhatWasWrittenIntoAnExportThatItHasGivenBack) {
    intrusion() = [this, returns = 0](Moment moment) mutable {
        if (moment == Moment::beforeExchange) {
            exportAnew("new");
        } else if (moment == Moment::afterExchange) {
            exportAnew("newer");
        } else if (++returns == 2) {
            std::ofstream(path) << "NEW";
        }
    };
    expectRefused("NEW");
}

TEST_F(FileReplacementTest, bringsAnExportBackWhereNothingStandsAnyMore) {
    intrusion() = [this](Moment moment) {
        if (moment == Moment::beforeExchange) {
            exportAnew("new");
        } else if (moment == Moment::beforeReturn) {
            fs::remove(path);
        }
    };
    expectRefused("new");
}

TEST_F(FileReplacementTest, leavesAFileWhoseMetadataCannotBeKept) {
    if (!test::setAttribute(path, "user.note", "kept") || chmod(path.c_str(), 0640) != 0) {
        GTEST_SKIP() << "this volume has no extended attributes";
    }
    read();
    for (const long call : {SYS_flistxattr, SYS_fgetxattr, SYS_fsetxattr, SYS_fchmod}) {
        EXPECT_TRUE(test::passesInChild([&] {
            ASSERT_TRUE(test::failSystemCall(call, EIO));
            EXPECT_FALSE(replace());
            EXPECT_EQ(error.value_or(Error()).code, EIO);
        })) << call;
        EXPECT_EQ(test::readBytes(path), "old");
        EXPECT_EQ(names(), std::vector<std::string>{"Cut.xml"});
    }
}

TEST_F(FileReplacementTest, leavesAFileWhoseOwnerCannotBeKept) {
    const test::RightsOfRoot rights;
    constexpr uid_t kSomebody = 12345;
    if (!rights.available() || chown(path.c_str(), kSomebody, kSomebody) != 0) {
        GTEST_SKIP() << "only root gives files away";
    }
    read();
    EXPECT_TRUE(test::passesInChild([&] {
        ASSERT_TRUE(test::failSystemCall(SYS_fchown, EIO));
        EXPECT_FALSE(replace());
        EXPECT_EQ(error.value_or(Error()).code, EIO);
    }));
    EXPECT_EQ(test::readBytes(path), "old");
}

class FileReplacementInSteps : public FileReplacementTest {
  protected:
    /// On a volume that cannot exchange names.
    void inSteps(const std::function<void()>& body) {
        EXPECT_TRUE(test::passesInChild([&] {
            constexpr unsigned kFlagsOfRename = 4;
            ASSERT_TRUE(
                test::failSystemCall(SYS_renameat2, EINVAL, RENAME_EXCHANGE, kFlagsOfRename));
            body();
        }));
    }
};

TEST_F(FileReplacementInSteps, replacesWhatWasRead) {
    inSteps([this] { EXPECT_TRUE(replace()); });
    EXPECT_EQ(test::readBytes(path), "converted");
    EXPECT_EQ(names(), std::vector<std::string>{"Cut.xml"});
}

TEST_F(FileReplacementInSteps, bringsBackWhatCameBefore) {
    for (const bool isReplaced : {false, true}) {
        intrusion() = [this, isReplaced](Moment moment) {
            if (moment == Moment::beforeExchange) {
                isReplaced ? exportAnew("new") : static_cast<void>(sandbox.write("Cut.xml", "new"));
            }
        };
        inSteps([this] { expectRefused("new"); });
        EXPECT_EQ(test::readBytes(path), "new");
    }
}

TEST_F(FileReplacementInSteps, leavesWhatComesWhileNothingStandsAtThePath) {
    intrusion() = [this](Moment moment) {
        if (moment == Moment::afterExchange) {
            exportAnew("new");
        }
    };
    inSteps([this] { expectRefused("new"); });
}

TEST_F(FileReplacementTest, failsForAFileThatHasGone) {
    intrusion() = [this](Moment moment) {
        if (moment == Moment::beforeExchange) {
            fs::remove(path);
        }
    };
    EXPECT_FALSE(replace());
    EXPECT_TRUE(error);
    EXPECT_EQ(names(), std::vector<std::string>{});
}

}  // namespace
}  // namespace vornic::platform
