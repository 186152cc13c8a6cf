#include "ui/support/QMBugReporter.h"

#include <algorithm>
#include <chrono>
#include <string_view>
#include <tuple>
#include <utility>
#include <variant>
#include <vector>

#include "base/PathText.h"
#include "base/Text.h"
#include "foundation/log/QMLog.h"
#include "foundation/places/GlobalPreferences.h"
#include "foundation/places/QMLocalPaths.h"
#include "foundation/tasks/QMTaskEx.h"
#include "platform/files/DamagedFile.h"
#include "platform/files/FileSystem.h"
#include "platform/items/FileDates.h"
#include "platform/processes/Console.h"
#include "platform/processes/SystemTool.h"
#include "platform/session/WorkspaceOpener.h"
#include "platform/settings/Bundle.h"
#include "platform/settings/PropertyList.h"
#include "platform/settings/UserPreferences.h"
#include "platform/threads/MainThread.h"
#include "ui/support/CrashReports.h"

namespace vornic {

namespace {

using platform::Bundle;
using platform::PropertyList;

constexpr const char* kLaunchKey = "launch";
constexpr const char* kExitKey = "exit";
constexpr const char* kDisableKey = "disable-crash-reporter";
constexpr const char* kReporterName = "Bug Reporter";
constexpr const char* kReporterApplication = "Bug Reporter.app";
constexpr const char* kReporterIdentifier = "com.quillmark.BugReporter";
constexpr const char* kDisabled = "Crash reporter disabled";

// The two dates ----------------------------------------------------------------------------------

double secondsSince1970(platform::FileDate date) {
    return std::chrono::duration<double>(date.time_since_epoch()).count();
}

PropertyList::Dictionary entriesOf(const std::string& plistPath) {
    ErrorSlot ignored;
    const std::optional<PropertyList> list = PropertyList::readFile(plistPath, ignored);
    const PropertyList::Dictionary* entries = list ? list->dictionary() : nullptr;
    return entries != nullptr ? *entries : PropertyList::Dictionary{};
}

/// Whether there is something in the file, and no dictionary.
bool isDamaged(const std::string& plistPath) {
    ErrorSlot ignored;
    const std::optional<std::string> bytes =
        platform::fileExists(plistPath) ? platform::readFile(plistPath, ignored) : std::nullopt;
    const std::optional<PropertyList> list = bytes ? PropertyList::parse(*bytes) : std::nullopt;
    return bytes && !bytes->empty() && (!list || list->dictionary() == nullptr);
}

std::optional<double> readStamp(const char* key, const QMBugReporter::Text& plistPath) {
    std::optional<PropertyList> stored;
    if (!plistPath) {
        stored = platform::UserPreferences().value(key);
    } else if (const PropertyList list(entriesOf(*plistPath)); list.find(key) != nullptr) {
        stored = *list.find(key);
    }
    const auto* date = stored ? std::get_if<PropertyList::Date>(&stored->value()) : nullptr;
    return date != nullptr ? std::optional(date->secondsSince1970) : std::nullopt;
}

void recordStamp(const char* key, const QMBugReporter::Text& plistPath) {
    const PropertyList now(PropertyList::Date{secondsSince1970(std::chrono::system_clock::now())});
    ErrorSlot ignored;
    if (!plistPath) {
        std::ignore = platform::UserPreferences().setValue(key, now, ignored);
        return;
    }
    // A damaged file is kept aside; without a copy of it nothing is written in its place.
    if (isDamaged(*plistPath) && !platform::keepDamagedList(*plistPath, ignored)) {
        return;
    }
    PropertyList::Dictionary entries = entriesOf(*plistPath);
    entries.insert_or_assign(key, now);
    std::ignore = PropertyList(std::move(entries)).writeFile(*plistPath, ignored);
    QMBugReporter::chownPlist(*plistPath);
}

// Crash reports ----------------------------------------------------------------------------------

std::vector<std::string> reportFolders() {
    std::vector<std::string> folders;
    for (const bool userDomain : {true, false}) {
        if (const QMLocalPaths::Path logs = QMLocalPaths::logDirectory(userDomain)) {
            folders.push_back(joinPath(*logs, kCrashReporterFolder));
            folders.push_back(joinPath(*logs, kDiagnosticReportsFolder));
        }
    }
    return folders;
}

/// The last file of the folder whose name begins with `beginning`, which is in lower case.
std::optional<std::string> lastReport(const std::string& folder, const std::string& beginning) {
    ErrorSlot ignored;
    const std::vector<std::string> names =
        platform::namesInFolder(folder, ignored).value_or(std::vector<std::string>());
    const auto last = std::find_if(names.rbegin(), names.rend(), [&](const std::string& name) {
        return lowercasedLetters(name).starts_with(beginning);
    });
    return last != names.rend() ? std::optional(joinPath(folder, *last)) : std::nullopt;
}

std::optional<std::string> findReport(const std::string& applicationName, double launch) {
    const std::string beginning = lowercasedLetters(applicationName) + "_";
    for (const std::string& folder : reportFolders()) {
        std::optional<std::string> report = lastReport(folder, beginning);
        const std::optional<platform::FileDate> changed =
            report ? platform::modificationDate(*report) : std::nullopt;
        if (changed && secondsSince1970(*changed) > launch) {
            return report;
        }
    }
    return std::nullopt;
}

// The bug reporting application ------------------------------------------------------------------

/// Where the bug reporting application may lie in the application's bundle, best first.
std::vector<std::string> reporterCandidates(const Bundle& bundle) {
    std::vector<std::string> candidates;
    if (const auto resource = bundle.pathForResource(kReporterName, "app")) {
        candidates.push_back(*resource);
    }
    if (const auto executable = bundle.executablePath()) {
        candidates.push_back(joinPath(*executable, kReporterApplication));
    }
    candidates.push_back(joinPath(joinPath(bundle.path(), "Contents/MacOS"), kReporterApplication));
    return candidates;
}

void openReport(const std::string& report) {
    const std::vector<std::string> candidates = reporterCandidates(Bundle::mainBundle());
    const auto reporter = std::find_if(candidates.begin(), candidates.end(), platform::fileExists);
    const auto opener = platform::WorkspaceOpener::shared();
    ErrorSlot ignored;
    if (reporter != candidates.end()) {
        std::ignore = opener->openFiles({report}, *reporter, ignored);
    } else {
        std::ignore = opener->openFilesWithIdentifier({report}, kReporterIdentifier, ignored);
    }
}

std::vector<std::string_view> componentsOf(std::string_view path) {
    std::vector<std::string_view> components;
    while (!path.empty()) {
        const std::size_t end = std::min(path.find('/'), path.size());
        if (end > 0) {
            components.push_back(path.substr(0, end));
        }
        path.remove_prefix(std::min(end + 1, path.size()));
    }
    return components;
}

}  // namespace

void QMBugReporter::startBugReporter() {
    startBugReporter(std::nullopt, std::nullopt, nullptr);
}

void QMBugReporter::startBugReporterWithDelegate(const Delegate& delegate) {
    startBugReporter(std::nullopt, std::nullopt, delegate);
}

void QMBugReporter::startBugReporter(const Text& applicationName, const Text& plistPath) {
    startBugReporter(applicationName, plistPath, nullptr);
}

void QMBugReporter::startBugReporter(const Text& applicationName, const Text& plistPath,
                                     const Delegate& delegate) {
    const Text report = checkForCrashes(applicationName, plistPath);
    if (delegate && report) {
        platform::MainThread::perform(
            [delegate, path = *report] { delegate->applicationDidCrashWithLog(path); });
    }
    recordStamp(kLaunchKey, plistPath);
}

void QMBugReporter::stopBugReporter() {
    stopBugReporter(std::nullopt);
}

void QMBugReporter::stopBugReporter(const Text& plistPath) {
    recordStamp(kExitKey, plistPath);
}

QMBugReporter::Text QMBugReporter::checkForCrashes() {
    return checkForCrashes(std::nullopt, std::nullopt);
}

QMBugReporter::Text QMBugReporter::checkForCrashes(const Text& applicationName,
                                                   const Text& plistPath) {
    const std::optional<double> launch = readStamp(kLaunchKey, plistPath);
    if (!launch) {
        return std::nullopt;
    }
    const Text name =
        applicationName ? applicationName : Bundle::mainBundle().infoString("CFBundleName");
    const std::optional<double> exit = readStamp(kExitKey, plistPath);
    if (!name || (exit && *exit >= *launch)) {
        return std::nullopt;
    }
    Text report = findReport(*name, *launch);
    if (!report) {
        return std::nullopt;
    }
    QMLog::appendLog("Application crashed on last launch");
    if (isGlobalSwitchOn(kDisableKey)) {
        platform::consoleLog(kDisabled);
        QMLog::appendLog(kDisabled);
    } else {
        openReport(*report);
    }
    return report;
}

void QMBugReporter::chownPlist(const std::string& path) {
    // A limit in name only: this form of `runTask` waits for the tool, however long it takes.
    constexpr QMTaskEx::Timeout kLongestRun{5.0};
    const std::vector<std::string_view> components = componentsOf(path);
    const auto users = std::find(components.begin(), components.end(), "Users");
    if (users == components.end() || users + 1 == components.end()) {
        return;
    }
    QMTaskEx::runTask(platform::systemToolPath("/usr/sbin/chown"), {std::string(users[1]), path},
                      kLongestRun);
}

}  // namespace vornic
