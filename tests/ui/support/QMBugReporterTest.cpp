#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/items/FileDates.h"
#include "platform/settings/PropertyList.h"
#include "platform/settings/UserPreferences.h"
#include "platform/threads/MainThread.h"
#include "tests/support/fakes/CatalogueBundle.h"
#include "tests/support/fakes/RecordingWorkspaceOpener.h"
#include "tests/support/machine/FileState.h"
#include "tests/support/machine/PrivateMounts.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/machine/Unprivileged.h"
#include "tests/support/programs/ConsoleCapture.h"
#include "tests/support/programs/StandInProgram.h"
#include "tests/support/texts/LogCapture.h"
#include "ui/support/QMBugReporter.h"

namespace vornic {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using platform::MainThread;
using platform::PropertyList;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr double kLaunch = 1'700'000'000;

PropertyList dateAt(double seconds) {
    return PropertyList(PropertyList::Value(PropertyList::Date{seconds}));
}

double now() {
    return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch())
        .count();
}

class QMBugReporterTest : public ::testing::Test {
  protected:
    QMBugReporterTest() {
        // What other tests handed over belongs to them.
        while (MainThread::dispatchOne(0ms)) {
        }
        fs::create_directories(bundle);
        sandbox.write("Vornic.app/Contents/Info.plist",
                      "<plist><dict><key>CFBundleName</key><string>Vornic</string></dict></plist>");
    }

    /// Stores a date in the user's preferences.
    void stamp(const char* key, double seconds) {
        ErrorSlot error;
        ASSERT_TRUE(platform::UserPreferences().setValue(key, dateAt(seconds), error));
    }
    [[nodiscard]] static std::optional<double> stamped(const std::optional<PropertyList>& value) {
        const auto* date = value ? std::get_if<PropertyList::Date>(&value->value()) : nullptr;
        return date != nullptr ? std::optional(date->secondsSince1970) : std::nullopt;
    }
    [[nodiscard]] static std::optional<double> stamped(const char* key) {
        return stamped(platform::UserPreferences().value(key));
    }
    [[nodiscard]] static std::optional<double> stamped(const std::string& plist, const char* key) {
        ErrorSlot error;
        const auto list = PropertyList::readFile(plist, error);
        EXPECT_TRUE(list) << error->description;
        const PropertyList* value = list ? list->find(key) : nullptr;
        return value != nullptr ? stamped(*value) : std::nullopt;
    }

    /// Makes a crash report in a folder of the user's log folder, changed so many seconds after the
    /// launch.
    std::string makeReport(const std::string& folder, const std::string& name,
                           double afterLaunch = 1) {
        fs::create_directories(logs + "/" + folder);
        const std::string path = logs + "/" + folder + "/" + name;
        test::writeBytes(path, "report");
        changeAt(path, kLaunch + afterLaunch);
        return path;
    }
    static void changeAt(const std::string& path, double seconds) {
        ErrorSlot error;
        const auto sinceEpoch = std::chrono::duration_cast<std::chrono::system_clock::duration>(
            std::chrono::duration<double>(seconds));
        ASSERT_TRUE(platform::setModificationDate(path, platform::FileDate(sinceEpoch), error));
    }
    /// Sets a key of the preference file that the programs of the family share.
    void setGlobal(const char* key, const PropertyList& value) {
        ErrorSlot error;
        PropertyList::Dictionary entries;
        entries[key] = value;
        ASSERT_TRUE(PropertyList(entries).writeFile(
            library + "/Preferences/com.quillmark.global.plist", error));
    }

    test::Unprivileged user;
    test::Sandbox sandbox;
    test::CatalogueBundle mainBundle{sandbox};
    test::LogCapture log;
    test::InstalledWorkspaceOpener opener;
    std::string library = sandbox.home() + "/.local/share/quillmark";
    std::string logs = library + "/Logs";
    std::string bundle = sandbox.path("Vornic.app");
};

// Whether the last run crashed

TEST_F(QMBugReporterTest, checksNothingBeforeTheFirstLaunch) {
    makeReport("DiagnosticReports", "Vornic_1.crash");
    EXPECT_EQ(QMBugReporter::checkForCrashes(), std::nullopt);
    stamp("exit", kLaunch - 1);
    EXPECT_EQ(QMBugReporter::checkForCrashes(), std::nullopt);
    EXPECT_THAT(log.entries(), IsEmpty());
    EXPECT_THAT(opener->opened, IsEmpty());
}

TEST_F(QMBugReporterTest, findsACrashWhenThereWasNoExit) {
    stamp("launch", kLaunch);
    const std::string report = makeReport("DiagnosticReports", "Vornic_1.crash");
    EXPECT_EQ(QMBugReporter::checkForCrashes(), report);
    EXPECT_THAT(log.entries(), ElementsAre("Application crashed on last launch"));
}

TEST_F(QMBugReporterTest, findsACrashWhenTheLastExitWasBeforeTheLaunch) {
    stamp("launch", kLaunch);
    stamp("exit", kLaunch - 0.5);
    const std::string report = makeReport("DiagnosticReports", "Vornic_1.crash");
    EXPECT_EQ(QMBugReporter::checkForCrashes(), report);
}

TEST_F(QMBugReporterTest, takesAnExitAtOrAfterTheLaunchForAClean) {
    makeReport("DiagnosticReports", "Vornic_1.crash");
    stamp("launch", kLaunch);
    for (const double after : {0.0, 0.5, 1000.0}) {
        stamp("exit", kLaunch + after);
        EXPECT_EQ(QMBugReporter::checkForCrashes(), std::nullopt) << after;
    }
    EXPECT_THAT(log.entries(), IsEmpty());
}

TEST_F(QMBugReporterTest, takesNothingButDatesForDates) {
    makeReport("DiagnosticReports", "Vornic_1.crash");
    ErrorSlot error;
    ASSERT_TRUE(platform::UserPreferences().setValue("launch", "yesterday", error));
    EXPECT_EQ(QMBugReporter::checkForCrashes(), std::nullopt);
    stamp("launch", kLaunch);
    ASSERT_TRUE(platform::UserPreferences().setValue("exit", 2'000'000'000, error));
    EXPECT_NE(QMBugReporter::checkForCrashes(), std::nullopt);
}

// Which report

TEST_F(QMBugReporterTest, looksForNothingWhereThereAreNoFolders) {
    stamp("launch", kLaunch);
    EXPECT_EQ(QMBugReporter::checkForCrashes(), std::nullopt);
    EXPECT_THAT(log.entries(), IsEmpty());
    EXPECT_THAT(opener->opened, IsEmpty());
}

TEST_F(QMBugReporterTest, searchesTheUsersCrashReporterFolderFirst) {
    stamp("launch", kLaunch);
    const std::string second = makeReport("DiagnosticReports", "Vornic_2.crash", 2);
    const std::string first = makeReport("CrashReporter", "Vornic_1.crash", 1);
    EXPECT_EQ(QMBugReporter::checkForCrashes(), first);
    fs::remove(first);
    EXPECT_EQ(QMBugReporter::checkForCrashes(), second);
}

TEST_F(QMBugReporterTest, takesTheLastNameOfTheListing) {
    stamp("launch", kLaunch);
    makeReport("DiagnosticReports", "Vornic_1.crash", 5);
    const std::string last = makeReport("DiagnosticReports", "Vornic_3.crash", 1);
    makeReport("DiagnosticReports", "Vornic_2.crash", 9);
    makeReport("DiagnosticReports", "Yet Another_1.crash");
    EXPECT_EQ(QMBugReporter::checkForCrashes(), last);
}

TEST_F(QMBugReporterTest, ignoresAReportThatIsNoNewerThanTheLaunch) {
    stamp("launch", kLaunch);
    const std::string report = makeReport("DiagnosticReports", "Vornic_1.crash", -1);
    EXPECT_EQ(QMBugReporter::checkForCrashes(), std::nullopt);
    changeAt(report, kLaunch);
    EXPECT_EQ(QMBugReporter::checkForCrashes(), std::nullopt);
    changeAt(report, kLaunch + 0.25);
    EXPECT_EQ(QMBugReporter::checkForCrashes(), report);
}

TEST_F(QMBugReporterTest, looksAtTheLastNameOfAFolderAloneAndGoesOnToTheNextFolder) {
    stamp("launch", kLaunch);
    makeReport("CrashReporter", "Vornic_1.crash", 1);
    makeReport("CrashReporter", "Vornic_2.crash", -1);
    EXPECT_EQ(QMBugReporter::checkForCrashes(), std::nullopt);
    const std::string report = makeReport("DiagnosticReports", "Vornic_0.crash", 1);
    EXPECT_EQ(QMBugReporter::checkForCrashes(), report);
}

TEST_F(QMBugReporterTest, findsTheNameInAnyCaseWithAnUnderscoreBehindIt) {
    stamp("launch", kLaunch);
    for (const char* name :
         {"Vornic-1.crash", "Vornic", "Vornic 1_1.crash", "vornic-repair_1.crash",
          "vornic-convert_1.crash", "xVornic_1.crash"}) {
        makeReport("DiagnosticReports", name);
    }
    EXPECT_EQ(QMBugReporter::checkForCrashes(), std::nullopt);
    const std::string report = makeReport("DiagnosticReports", "vORNIC_1.crash");
    EXPECT_EQ(QMBugReporter::checkForCrashes(), report);
    const std::string barest = makeReport("DiagnosticReports", "vornic_");
    EXPECT_EQ(QMBugReporter::checkForCrashes(), barest);
}

TEST_F(QMBugReporterTest, looksForTheNameThatItIsGiven) {
    stamp("launch", kLaunch);
    makeReport("DiagnosticReports", "Vornic_1.crash");
    const std::string report = makeReport("DiagnosticReports", "Other Tool_1.crash");
    EXPECT_EQ(QMBugReporter::checkForCrashes("other tool", std::nullopt), report);
    EXPECT_EQ(QMBugReporter::checkForCrashes("Third Tool", std::nullopt), std::nullopt);
}

TEST_F(QMBugReporterTest, knowsTheCaseOfEveryLetter) {
    stamp("launch", kLaunch);
    const std::string report = makeReport("DiagnosticReports", "ÜBUNG_1.crash");
    EXPECT_EQ(QMBugReporter::checkForCrashes("Übung", std::nullopt), report);
}

TEST_F(QMBugReporterTest, findsNothingWithoutAName) {
    stamp("launch", kLaunch);
    makeReport("DiagnosticReports", "Vornic_1.crash");
    makeReport("DiagnosticReports", "_1.crash");
    fs::remove(bundle + "/Contents/Info.plist");
    EXPECT_EQ(QMBugReporter::checkForCrashes(), std::nullopt);
}

TEST_F(QMBugReporterTest, takesAFolderThatCannotBeReadForAnEmptyOne) {
    stamp("launch", kLaunch);
    makeReport("CrashReporter", "Vornic_1.crash");
    const std::string report = makeReport("DiagnosticReports", "Vornic_1.crash");
    ASSERT_EQ(chmod((logs + "/CrashReporter").c_str(), 0), 0);
    EXPECT_EQ(QMBugReporter::checkForCrashes(), report);
    ASSERT_EQ(chmod((logs + "/CrashReporter").c_str(), 0700), 0);
}

// The bug reporting application

class BugReportingApplicationTest : public QMBugReporterTest {
  protected:
    BugReportingApplicationTest() {
        stamp("launch", kLaunch);
        report = makeReport("DiagnosticReports", "Vornic_1.crash");
    }
    /// Makes a folder that stands for the application.
    std::string makeApplication(const std::string& folder) const {
        std::string path = bundle + "/Contents/" + folder + "/Bug Reporter.app";
        fs::create_directories(path);
        return path;
    }
    std::string report;
};

TEST_F(BugReportingApplicationTest, isTheResourceFirst) {
    makeApplication("MacOS");
    const std::string resource = makeApplication("Resources");
    QMBugReporter::checkForCrashes();
    EXPECT_THAT(opener->opened, ElementsAre("files " + report + " with " + resource));
}

TEST_F(BugReportingApplicationTest, isTheOneBesideTheExecutableNext) {
    const std::string beside = makeApplication("MacOS");
    QMBugReporter::checkForCrashes();
    EXPECT_THAT(opener->opened, ElementsAre("files " + report + " with " + beside));
}

TEST_F(BugReportingApplicationTest, isLookedForBelowTheExecutableItselfAsIfItWereAFolder) {
    const std::string beside = makeApplication("MacOS");
    test::writeBytes(bundle + "/Contents/MacOS/Vornic", "#!/bin/sh\n");
    fs::permissions(bundle + "/Contents/MacOS/Vornic", fs::perms::owner_all);
    QMBugReporter::checkForCrashes();
    EXPECT_THAT(opener->opened, ElementsAre("files " + report + " with " + beside));
}

TEST_F(BugReportingApplicationTest, isTheInstalledOneOfItsIdentifierOtherwise) {
    QMBugReporter::checkForCrashes();
    EXPECT_THAT(opener->opened,
                ElementsAre("files " + report + " with identifier com.quillmark.BugReporter"));
}

TEST_F(BugReportingApplicationTest, makesNoDifferenceToTheAnswerWhenItCannotBeStarted) {
    opener->answer = false;
    EXPECT_EQ(QMBugReporter::checkForCrashes(), report);
    EXPECT_THAT(log.entries(), ElementsAre("Application crashed on last launch"));
}

TEST_F(BugReportingApplicationTest, isNotStartedWhereTheFamilysPreferencesSwitchItOff) {
    for (const PropertyList& on :
         {PropertyList("1"), PropertyList(1), PropertyList(PropertyList::Value(true))}) {
        log.start(test::LogCapture::Printing::off);
        setGlobal("disable-crash-reporter", on);
        test::ConsoleCapture console;
        EXPECT_EQ(QMBugReporter::checkForCrashes(), report);
        EXPECT_THAT(console.lines(), ElementsAre("Crash reporter disabled"));
        EXPECT_THAT(log.entries(),
                    ElementsAre("Application crashed on last launch", "Crash reporter disabled"));
    }
    EXPECT_THAT(opener->opened, IsEmpty());
}

TEST_F(BugReportingApplicationTest, isStartedWithAnyOtherValueOfTheSwitch) {
    std::size_t starts = 0;
    for (const PropertyList& off : {PropertyList("YES"), PropertyList("0"), PropertyList(0),
                                    PropertyList(PropertyList::Value(false)), PropertyList(2)}) {
        setGlobal("disable-crash-reporter", off);
        QMBugReporter::checkForCrashes();
        EXPECT_EQ(opener->opened.size(), ++starts);
    }
}

// Start and end

class Delegate : public BugReporterDelegate {
  public:
    void applicationDidCrashWithLog(const std::string& path) override {
        EXPECT_TRUE(MainThread::isCurrent());
        told.push_back(path);
    }
    std::vector<std::string> told;
};

/// A delegate that implements nothing.
class SilentDelegate : public BugReporterDelegate {};

TEST_F(QMBugReporterTest, recordsTheLaunchAtTheFirstStart) {
    const double before = now();
    QMBugReporter::startBugReporter();
    ASSERT_TRUE(stamped("launch"));
    EXPECT_GE(*stamped("launch"), before - 1e-5);
    EXPECT_LE(*stamped("launch"), now() + 1e-5);
    EXPECT_EQ(stamped("exit"), std::nullopt);
    EXPECT_THAT(opener->opened, IsEmpty());
}

TEST_F(QMBugReporterTest, recordsTheExitAtTheEnd) {
    const double before = now();
    QMBugReporter::stopBugReporter();
    ASSERT_TRUE(stamped("exit"));
    EXPECT_GE(*stamped("exit"), before - 1e-5);
    EXPECT_EQ(stamped("launch"), std::nullopt);
}

TEST_F(QMBugReporterTest, comparesWithTheLaunchOfTheRunBeforeAndReportsACrashOnce) {
    stamp("launch", kLaunch);
    const std::string report = makeReport("DiagnosticReports", "Vornic_1.crash");
    QMBugReporter::startBugReporter();
    EXPECT_EQ(opener->opened.size(), 1U);
    EXPECT_GT(*stamped("launch"), kLaunch + 1);
    QMBugReporter::startBugReporter();
    EXPECT_EQ(opener->opened.size(), 1U);
}

TEST_F(QMBugReporterTest, notifiesTheDelegateOnTheMainThreadWithoutWaiting) {
    stamp("launch", kLaunch);
    const std::string report = makeReport("DiagnosticReports", "Vornic_1.crash");
    auto delegate = std::make_shared<Delegate>();
    std::thread([&] { QMBugReporter::startBugReporterWithDelegate(delegate); }).join();
    EXPECT_TRUE(stamped("launch") > kLaunch);
    EXPECT_THAT(delegate->told, IsEmpty());
    EXPECT_TRUE(MainThread::dispatchOne(0ms));
    EXPECT_THAT(delegate->told, ElementsAre(report));
}

TEST_F(QMBugReporterTest, notifiesTheDelegateAfterTheStartOnTheMainThreadToo) {
    stamp("launch", kLaunch);
    const std::string report = makeReport("DiagnosticReports", "Other_1.crash");
    auto delegate = std::make_shared<Delegate>();
    QMBugReporter::startBugReporter("Other", std::nullopt, delegate);
    EXPECT_THAT(delegate->told, IsEmpty());
    EXPECT_TRUE(MainThread::dispatchOne(0ms));
    EXPECT_THAT(delegate->told, ElementsAre(report));
}

TEST_F(QMBugReporterTest, notifiesTheDelegateThoughTheReporterIsSwitchedOff) {
    stamp("launch", kLaunch);
    const std::string report = makeReport("DiagnosticReports", "Vornic_1.crash");
    setGlobal("disable-crash-reporter", "1");
    test::ConsoleCapture console;
    auto delegate = std::make_shared<Delegate>();
    QMBugReporter::startBugReporterWithDelegate(delegate);
    MainThread::dispatchOne(0ms);
    EXPECT_THAT(delegate->told, ElementsAre(report));
}

TEST_F(QMBugReporterTest, notifiesNobodyWhenNothingWasFound) {
    auto delegate = std::make_shared<Delegate>();
    QMBugReporter::startBugReporterWithDelegate(delegate);
    EXPECT_FALSE(MainThread::dispatchOne(0ms));
    EXPECT_THAT(delegate->told, IsEmpty());
}

TEST_F(QMBugReporterTest, bearsADelegateThatImplementsNothing) {
    stamp("launch", kLaunch);
    makeReport("DiagnosticReports", "Vornic_1.crash");
    QMBugReporter::startBugReporterWithDelegate(std::make_shared<SilentDelegate>());
    MainThread::dispatchOne(0ms);
    EXPECT_THAT(log.entries(), ElementsAre("Application crashed on last launch"));
}

// A preference file of its own

TEST_F(QMBugReporterTest, makesThePreferenceFileThatIsMissing) {
    const std::string plist = sandbox.path("Preferences/tool.plist");
    const double before = now();
    QMBugReporter::startBugReporter("Tool", plist);
    ASSERT_TRUE(stamped(plist, "launch"));
    EXPECT_GE(*stamped(plist, "launch"), before - 1e-5);
    EXPECT_EQ(stamped(plist, "exit"), std::nullopt);
    QMBugReporter::stopBugReporter(plist);
    EXPECT_GE(*stamped(plist, "exit"), *stamped(plist, "launch"));
    EXPECT_EQ(stamped("launch"), std::nullopt);
    EXPECT_EQ(stamped("exit"), std::nullopt);
}

TEST_F(QMBugReporterTest, keepsTheOtherKeysOfAPreferenceFile) {
    const std::string plist = sandbox.path("tool.plist");
    ErrorSlot error;
    PropertyList::Dictionary entries;
    entries["other"] = "value";
    ASSERT_TRUE(PropertyList(entries).writeFile(plist, error));
    QMBugReporter::startBugReporter("Tool", plist);
    const auto list = PropertyList::readFile(plist, error);
    ASSERT_TRUE(list);
    EXPECT_EQ(*list->find("other"), PropertyList("value"));
    EXPECT_TRUE(list->find("launch"));
}

TEST_F(QMBugReporterTest, startsOverWithAPreferenceFileThatHoldsNoDictionary) {
    for (const char* bytes : {"", "no list", "<plist><array/></plist>"}) {
        const std::string plist = sandbox.write("tool.plist", bytes);
        QMBugReporter::stopBugReporter(plist);
        EXPECT_TRUE(stamped(plist, "exit")) << bytes;
    }
}

TEST_F(QMBugReporterTest, readsTheDatesOfAPreferenceFileInsteadOfThePreferences) {
    const std::string plist = sandbox.path("tool.plist");
    const std::string report = makeReport("DiagnosticReports", "Tool_1.crash");
    stamp("launch", kLaunch);
    EXPECT_EQ(QMBugReporter::checkForCrashes("Tool", plist), std::nullopt);
    ErrorSlot error;
    PropertyList::Dictionary entries;
    entries["launch"] = dateAt(kLaunch);
    ASSERT_TRUE(PropertyList(entries).writeFile(plist, error));
    stamp("exit", kLaunch + 1);
    EXPECT_EQ(QMBugReporter::checkForCrashes("Tool", plist), report);
    entries["exit"] = dateAt(kLaunch);
    ASSERT_TRUE(PropertyList(entries).writeFile(plist, error));
    EXPECT_EQ(QMBugReporter::checkForCrashes("Tool", plist), std::nullopt);
}

TEST_F(QMBugReporterTest, keepsACopyOfADamagedPreferenceFile) {
    const std::string plist = sandbox.write("tool.plist", "<plist><dict><key>a");
    QMBugReporter::startBugReporter("Tool", plist);
    EXPECT_EQ(test::readBytes(sandbox.path("tool-damaged.plist")), "<plist><dict><key>a");
    EXPECT_NE(test::readBytes(plist).find("launch"), std::string::npos);
    QMBugReporter::stopBugReporter(plist);
    EXPECT_FALSE(test::exists(sandbox.path("tool-damaged-2.plist")));
}

TEST_F(QMBugReporterTest, isSilentWhenNothingCanBeRecorded) {
    fs::create_directories(sandbox.path("tool.plist"));
    test::ConsoleCapture console;
    QMBugReporter::startBugReporter("Tool", sandbox.path("tool.plist"));
    EXPECT_THAT(console.lines(), IsEmpty());
    EXPECT_THAT(log.entries(), IsEmpty());
}

// Giving a file back to its user

/// With a stand-in for the system's tool, in a view of the machine's volumes of the test's own.
class ChownPlistTest : public ::testing::Test {
  protected:
    void SetUp() override {
        if (!mounts.isAvailable() || !mounts.mountVolume("/usr/sbin", "tmpfs", "size=1m")) {
            GTEST_SKIP() << "the process may not mount";
        }
        tool.emplace("/usr/sbin/chown", sandbox.path("chowned"));
    }

    test::PrivateMounts mounts;
    test::Sandbox sandbox;
    std::optional<test::StandInProgram> tool;
};

TEST_F(ChownPlistTest, namesTheComponentBehindUsersAsTheOwner) {
    QMBugReporter::chownPlist("/Users/editor/Library/Preferences/a b.plist");
    ASSERT_TRUE(tool->wasRun()) << "it is waited for";
    EXPECT_THAT(tool->takeArguments(),
                ElementsAre("editor", "/Users/editor/Library/Preferences/a b.plist"));
    QMBugReporter::chownPlist("/Volumes/Disk/Users/other/x.plist");
    EXPECT_THAT(tool->takeArguments(), ElementsAre("other", "/Volumes/Disk/Users/other/x.plist"));
    QMBugReporter::chownPlist("/Users/Users/x");
    EXPECT_THAT(tool->takeArguments(), ElementsAre("Users", "/Users/Users/x"));
}

TEST_F(ChownPlistTest, runsTheToolWhereThisSystemHasIt) {
    ASSERT_TRUE(fs::remove("/usr/sbin/chown"));
    fs::create_directories(sandbox.path("Users/65534"));
    const std::string plist = sandbox.write("Users/65534/tool.plist", "x");
    ASSERT_EQ(test::fileState(plist).owner, 0U);
    QMBugReporter::chownPlist(plist);
    EXPECT_EQ(test::fileState(plist).owner, 65534U);
}

TEST_F(ChownPlistTest, leavesOtherPathsAlone) {
    for (const char* path : {"", "/", "/a/b.plist", "/Users", "/Users/", "/a/Users", "/users/e/x",
                             "/UsersX/e/x", "/My Users/e/x"}) {
        QMBugReporter::chownPlist(path);
        EXPECT_FALSE(tool->wasRun()) << path;
    }
}

TEST_F(ChownPlistTest, isRunForAPreferenceFileThatWasWritten) {
    const std::string plist = sandbox.path("Users/editor/tool.plist");
    QMBugReporter::startBugReporter("Tool", plist);
    EXPECT_THAT(tool->takeArguments(), ElementsAre("editor", plist));
    QMBugReporter::stopBugReporter(plist);
    EXPECT_THAT(tool->takeArguments(), ElementsAre("editor", plist));
    const std::string elsewhere = sandbox.path("tool.plist");
    QMBugReporter::startBugReporter("Tool", elsewhere);
    EXPECT_FALSE(tool->wasRun());
}

/// The machine's log folder, which only root may write.
class MachineReportsTest : public ::testing::Test {
  protected:
    void SetUp() override {
        if (!mounts.isAvailable() || !mounts.mountVolume("/var/lib", "tmpfs", "size=1m,mode=755")) {
            GTEST_SKIP() << "the process may not mount";
        }
        ErrorSlot error;
        ASSERT_TRUE(platform::UserPreferences().setValue("launch", dateAt(kLaunch), error));
    }
    static std::string makeReport(const std::string& folder, const std::string& name) {
        fs::create_directories(folder);
        test::writeBytes(folder + "/" + name, "report");
        return folder + "/" + name;
    }

    test::PrivateMounts mounts;
    test::Sandbox sandbox;
    test::InstalledWorkspaceOpener opener;
};

TEST_F(MachineReportsTest, areSearchedAfterTheUsersOwn) {
    const std::string machine = "/var/lib/quillmark/Logs";
    const std::string own = sandbox.home() + "/.local/share/quillmark/Logs";
    const auto found = [] { return QMBugReporter::checkForCrashes("Tool", std::nullopt); };
    EXPECT_EQ(found(), std::nullopt);
    const std::string fourth = makeReport(machine + "/DiagnosticReports", "Tool_1.crash");
    EXPECT_EQ(found(), fourth);
    const std::string third = makeReport(machine + "/CrashReporter", "Tool_1.crash");
    EXPECT_EQ(found(), third);
    const std::string second = makeReport(own + "/DiagnosticReports", "Tool_1.crash");
    EXPECT_EQ(found(), second);
    const std::string first = makeReport(own + "/CrashReporter", "Tool_1.crash");
    EXPECT_EQ(found(), first);
}

}  // namespace
}  // namespace vornic
