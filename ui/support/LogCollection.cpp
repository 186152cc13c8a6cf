#include "ui/support/LogCollection.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <utility>

#include "base/FormatString.h"
#include "base/PathText.h"
#include "base/Text.h"
#include "foundation/files/FolderEntries.h"
#include "foundation/files/QMFileManager.h"
#include "foundation/log/ConsoleFailure.h"
#include "foundation/log/LogGenerations.h"
#include "foundation/places/QMLocalPaths.h"
#include "platform/files/FileSystem.h"
#include "ui/support/CrashReports.h"

namespace vornic {

namespace {

bool isLogOf(const std::string& entry, const std::string& appName) {
    return entry.starts_with(appName) && entry.ends_with(".log");
}

bool isCrashReportOf(const std::string& entry, const std::string& appName) {
    return entry.starts_with(appName + "_") &&
           (entry.ends_with(".crash") || entry.ends_with(".ips"));
}

std::optional<std::string> preferenceFileOf(const std::string& folder, const std::string& appName) {
    const std::string name = replacingOccurrences(appName, " ", "");
    for (const std::string& spelling : {name, lowercasedLetters(name)}) {
        std::string path = joinPath(folder, formatString("com.quillmark.%@.plist", spelling));
        if (platform::fileExists(path)) {
            return path;
        }
    }
    return std::nullopt;
}

/// What a link leads to in the end; a dangling link and what is no link as they are.
std::string resolved(const std::string& path) {
    return platform::fileExists(path) ? platform::resolveFinalLink(path).value().value_or(path)
                                      : path;
}

}  // namespace

LogCollection::LogCollection(std::string folder, Names appNames)
    : folder_(std::move(folder)), appNames_(std::move(appNames)) {
    std::erase(appNames_, "");
}

bool LogCollection::addLogs() {
    return addLogsOfDomain(true) && addLogsOfDomain(false);
}

bool LogCollection::addLogsOfDomain(bool userDomain) {
    const std::optional<std::string> family = logFolder(userDomain);
    const std::optional<std::string> logs = QMLocalPaths::logDirectory(userDomain);
    const std::optional<std::string> preferences = QMLocalPaths::prefsDirectory(userDomain);
    if (!family || !logs || !preferences) {
        return true;
    }
    return addMatches(*family, &isLogOf) &&
           addMatches(joinPath(*logs, kCrashReporterFolder), &isCrashReportOf) &&
           addMatches(joinPath(*logs, kDiagnosticReportsFolder), &isCrashReportOf) &&
           addPreferences(*preferences);
}

bool LogCollection::addMatches(const std::string& folder,
                               bool (*matches)(const std::string& entry,
                                               const std::string& appName)) {
    const std::vector<std::string> entries = folderEntries(folder);
    return std::all_of(entries.begin(), entries.end(), [&](const std::string& entry) {
        const bool isTaken =
            std::any_of(appNames_.begin(), appNames_.end(),
                        [&](const std::string& appName) { return matches(entry, appName); });
        return !isTaken || addLog(joinPath(folder, entry));
    });
}

bool LogCollection::addPreferences(const std::string& folder) {
    return std::all_of(appNames_.begin(), appNames_.end(), [&](const std::string& appName) {
        const std::optional<std::string> path = preferenceFileOf(folder, appName);
        return !path || addLog(*path);
    });
}

bool LogCollection::addLog(const std::string& path) {
    const std::string copy = placeOf(path);
    if (platform::nodeExists(copy)) {
        return true;
    }
    ErrorSlot error;
    if (!platform::createDirectory(parentFolder(copy), error) ||
        !platform::copyItem(resolved(path), copy, error)) {
        return failOnConsole("Unable to copy log: %@", error);
    }
    ++count_;
    return true;
}

bool LogCollection::addFiles(const Paths& paths) {
    return std::all_of(paths.begin(), paths.end(),
                       [this](const std::string& path) { return addFile(path); });
}

bool LogCollection::addFile(const std::string& path) {
    const std::string copy = placeOf(path);
    const std::string folder = parentFolder(copy);
    if (!platform::fileExists(folder)) {
        QMFileManager::createDirectory(folder);
    }
    ErrorSlot error;
    if (!platform::copyItem(path, copy, error)) {
        return failOnConsole("Unable to copy file: %@", error);
    }
    ++count_;
    return true;
}

/// Where the copy of a file goes. A ".." in a path does not lead out of the folder.
std::string LogCollection::placeOf(const std::string& path) const {
    const std::string absolute = platform::absolutePath(path).value_or(path);
    const std::filesystem::path plain("/" + absolute);
    return joinPath(folder_, plain.lexically_normal().string());
}

}  // namespace vornic
