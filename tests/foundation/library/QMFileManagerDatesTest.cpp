#include <chrono>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <unistd.h>

#include "foundation/files/QMFileManager.h"
#include "platform/files/FileChangeNotice.h"
#include "tests/foundation/rights/AuthorizationTest.h"

namespace vornic {
namespace {

namespace fs = std::filesystem;
using std::chrono::milliseconds;
using std::chrono::seconds;
using std::chrono::steady_clock;
using std::chrono::system_clock;
using testing::ElementsAre;
using testing::IsEmpty;

using Date = QMFileManager::Date;
using Notices = std::vector<std::optional<std::string>>;

/// With rights that are asked for and never had.
class QMFileManagerDates : public test::AuthorizationTest {
  protected:
    QMFileManagerDates() {
        QMAuthorization::setSharedController(std::make_shared<QMAuthorization>(true, host));
        platform::setFileChangeObserver(
            [this](const std::optional<std::string>& changed) { notices.push_back(changed); });
    }
    ~QMFileManagerDates() override {
        platform::setFileChangeObserver({});
        QMAuthorization::setSharedController(nullptr);
    }

    [[nodiscard]] std::string fileOfAge(const std::string& name, milliseconds age) const {
        std::string path = sandbox.write(name, "x");
        EXPECT_TRUE(QMFileManager::setModificationDate(system_clock::now() - age, path));
        return path;
    }
    [[nodiscard]] static bool isNow(const std::optional<Date>& date) {
        return date && system_clock::now() - *date < seconds(20) &&
               *date <= system_clock::now() + milliseconds(100);
    }
    [[nodiscard]] std::string touchWithRights(const std::string& path) const {
        return "execute /usr/bin/touch -c " + path;
    }

    std::string missing = sandbox.path("missing");
    Notices notices;
};

TEST_F(QMFileManagerDates, touchesAFileThatTheUserMayWrite) {
    const std::string path = fileOfAge("file", std::chrono::hours(1));
    EXPECT_TRUE(QMFileManager::touchFile(path));
    EXPECT_TRUE(isNow(platform::modificationDate(path)));
    EXPECT_EQ(platform::chosenCreationDate(path), std::nullopt);
    EXPECT_THAT(runs(), IsEmpty());
    EXPECT_THAT(notices, ElementsAre(path));
}

TEST_F(QMFileManagerDates, createsATouchedFileNowWhenAsked) {
    const std::string path = fileOfAge("file", std::chrono::hours(1));
    EXPECT_TRUE(QMFileManager::touchFile(path, true));
    EXPECT_TRUE(isNow(platform::modificationDate(path)));
    EXPECT_TRUE(isNow(platform::chosenCreationDate(path)));
}

TEST_F(QMFileManagerDates, touchesNothingWithoutAPath) {
    EXPECT_FALSE(QMFileManager::touchFile(std::nullopt));
    EXPECT_FALSE(QMFileManager::touchFile(std::nullopt, true));
    EXPECT_THAT(host->runs(), IsEmpty());
    EXPECT_THAT(notices, IsEmpty());
}

TEST_F(QMFileManagerDates, touchesAFileWithAnOptionsName) {
    const std::string path = fileOfAge("-d now", std::chrono::hours(1));
    const fs::path before = fs::current_path();
    fs::current_path(sandbox.folder());
    EXPECT_TRUE(QMFileManager::touchFile("-d now"));
    fs::current_path(before);
    EXPECT_TRUE(isNow(platform::modificationDate(path)));
}

TEST_F(QMFileManagerDates, touchesAFileThatMayNotBeWrittenWithRightsAndWaits) {
    const std::string path = fileOfAge("file", std::chrono::hours(1));
    fs::permissions(path, fs::perms::owner_read);
    EXPECT_TRUE(QMFileManager::touchFile(path));
    EXPECT_THAT(runs(), ElementsAre(touchWithRights(path)));
    EXPECT_EQ(host->events.back(), "end of output");
    EXPECT_EQ(platform::chosenCreationDate(path), std::nullopt);
    EXPECT_THAT(notices, ElementsAre(path));
}

TEST_F(QMFileManagerDates, createsAFileNowBeforeItTouchesItWithRights) {
    const std::string path = fileOfAge("file", std::chrono::hours(1));
    fs::permissions(path, fs::perms::owner_read);
    std::optional<Date> createdBefore;
    host->whenExecuted = [&] { createdBefore = platform::chosenCreationDate(path); };
    EXPECT_TRUE(QMFileManager::touchFile(path, true));
    EXPECT_TRUE(isNow(createdBefore));
    EXPECT_EQ(fs::status(path).permissions(), fs::perms::owner_read);
}

TEST_F(QMFileManagerDates, makesNoFileThatIsMissing) {
    // Nobody may write what is not there.
    EXPECT_TRUE(QMFileManager::touchFile(missing, true));
    EXPECT_THAT(runs(), ElementsAre(touchWithRights(missing)));
    EXPECT_FALSE(fs::exists(missing));
}

TEST_F(QMFileManagerDates, reportsThatRightsWereNotGivenAndReportsTheDesktopAllTheSame) {
    const std::string path = fileOfAge("file", std::chrono::hours(1));
    fs::permissions(path, fs::perms::owner_read);
    host->rightsStatus = -60005;
    EXPECT_FALSE(QMFileManager::touchFile(path));
    EXPECT_THAT(runs(), IsEmpty());
    EXPECT_THAT(notices, ElementsAre(path));
}

TEST_F(QMFileManagerDates, setsAModificationDateToTheNanosecond) {
    const std::string path = sandbox.write("file", "x");
    const Date date(std::chrono::nanoseconds(1'234'567'890'123'456'789));
    EXPECT_TRUE(QMFileManager::setModificationDate(date, path));
    EXPECT_EQ(platform::modificationDate(path), date);
    EXPECT_FALSE(QMFileManager::setModificationDate(date, missing));
    EXPECT_FALSE(fs::exists(missing));
}

TEST_F(QMFileManagerDates, doesNotWaitForAFileThatWasChangedTenSecondsAgo) {
    const std::string path = fileOfAge("file", seconds(10));
    const auto start = steady_clock::now();
    QMFileManager::waitForFileWrites(path);
    QMFileManager::waitForFileWrites(path, std::nullopt);
    QMFileManager::waitForFileWrites(path, missing);
    EXPECT_LT(steady_clock::now() - start, seconds(4));
    EXPECT_THAT(log.entries(), IsEmpty());
}

TEST_F(QMFileManagerDates, waitsUntilTheLastChangeIsFiveSecondsOld) {
    const std::string path = fileOfAge("file", milliseconds(4600));
    QMFileManager::waitForFileWrites(path);
    EXPECT_GE(system_clock::now() - *platform::modificationDate(path), seconds(5));
    EXPECT_THAT(log.entries(),
                ElementsAre("File " + path + " is currently being written to. Waiting...",
                            "File " + path + " finished writing."));
}

TEST_F(QMFileManagerDates, waitsOnWhileTheFileIsChanged) {
    const std::string path = fileOfAge("file", milliseconds(4700));
    std::thread writer([&] {
        std::this_thread::sleep_for(milliseconds(150));
        EXPECT_TRUE(
            QMFileManager::setModificationDate(system_clock::now() - milliseconds(4400), path));
    });
    const auto start = steady_clock::now();
    QMFileManager::waitForFileWrites(path);
    EXPECT_GE(steady_clock::now() - start, milliseconds(700));
    writer.join();
}

TEST_F(QMFileManagerDates, waitsForADateToComeThatLiesInTheFuture) {
    const std::string path = fileOfAge("file", milliseconds(4700));
    ASSERT_TRUE(
        QMFileManager::setModificationDate(system_clock::now() + std::chrono::hours(1), path));
    std::thread clock([&] {
        std::this_thread::sleep_for(milliseconds(200));
        EXPECT_TRUE(QMFileManager::setModificationDate(system_clock::now() - seconds(6), path));
    });
    const auto start = steady_clock::now();
    QMFileManager::waitForFileWrites(path);
    EXPECT_GE(steady_clock::now() - start, milliseconds(200));
    clock.join();
}

TEST_F(QMFileManagerDates, looksAtALockFileOnceAndDoesNotWaitForIt) {
    const std::string path = fileOfAge("file", seconds(10));
    const std::string lock = sandbox.write("lock", "");
    QMFileManager::waitForFileWrites(path, lock);
    EXPECT_TRUE(fs::exists(lock));
    EXPECT_THAT(log.entries(),
                ElementsAre("File " + path + " is currently being written to. Waiting...",
                            "File " + path + " finished writing."));
}

TEST_F(QMFileManagerDates, doesNotWaitForWritesToAMissingFile) {
    QMFileManager::waitForFileWrites(missing);
    QMFileManager::waitForFileWrites(missing, sandbox.write("lock", ""));
    EXPECT_THAT(log.entries(), IsEmpty());
}

TEST_F(QMFileManagerDates, stopsWaitingWhenTheFileGoes) {
    const std::string path = fileOfAge("file", milliseconds(0));
    std::thread remover([&] {
        std::this_thread::sleep_for(milliseconds(100));
        fs::remove(path);
    });
    const auto start = steady_clock::now();
    QMFileManager::waitForFileWrites(path);
    EXPECT_LT(steady_clock::now() - start, seconds(4));
    EXPECT_EQ(log.entries().back(), "File " + path + " finished writing.");
    remover.join();
}

TEST_F(QMFileManagerDates, returnsAtOnceForAFileThatHoldsSomething) {
    QMFileManager::waitForFileCreation(sandbox.write("file", "x"), seconds(60));
    QMFileManager::waitForFileCreation(sandbox.folder(), seconds(60));
    EXPECT_THAT(log.entries(), IsEmpty());
}

TEST_F(QMFileManagerDates, looksOnceForAFileToComeWhateverTheTimeLimit) {
    const std::string empty = sandbox.write("empty", "");
    const auto start = steady_clock::now();
    QMFileManager::waitForFileCreation(missing, seconds(60));
    QMFileManager::waitForFileCreation(empty, seconds(60));
    QMFileManager::waitForFileCreation(missing, seconds(0));
    EXPECT_GE(steady_clock::now() - start, std::chrono::microseconds(1500));
    EXPECT_LT(steady_clock::now() - start, seconds(20));
    EXPECT_THAT(log.entries(), ElementsAre("File " + missing + " is not yet created. Waiting...",
                                           "File " + empty + " is not yet created. Waiting...",
                                           "File " + missing + " is not yet created. Waiting..."));
}

TEST_F(QMFileManagerDates, takesNoFileForOpen) {
    const std::string path = sandbox.path("file");
    const std::ofstream writer(path);
    EXPECT_FALSE(QMFileManager::fileIsOpenForWriting(path));
    EXPECT_FALSE(QMFileManager::fileIsOpenForWriting(missing));
}

}  // namespace
}  // namespace vornic
