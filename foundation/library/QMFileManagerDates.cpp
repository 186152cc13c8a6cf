#include <cstdint>
#include <filesystem>
#include <system_error>
#include <thread>
#include <tuple>

#include <unistd.h>

#include "foundation/files/QMFileManager.h"
#include "foundation/log/QMLog.h"
#include "foundation/rights/QMAuthorization.h"
#include "foundation/tasks/QMTaskEx.h"
#include "platform/files/FileChangeNotice.h"
#include "platform/files/FileSystem.h"

namespace vornic {
namespace {

using std::chrono::seconds;
using std::chrono::system_clock;

constexpr const char* kTouchTool = "/usr/bin/touch";
constexpr seconds kSettled(5);

/// Between two looks at a file.
void pause() {
    std::this_thread::sleep_for(std::chrono::microseconds(500));
}

bool isWritable(const std::string& path) {
    return path.find('\0') == std::string::npos && access(path.c_str(), W_OK) == 0;
}

/// A folder holds something, whatever is in it.
bool holdsSomething(const std::string& path) {
    std::error_code isNoFile;
    const std::uintmax_t size = std::filesystem::file_size(path, isNoFile);
    return platform::fileExists(path) && (isNoFile || size != 0);
}

bool runTouch(const std::string& path, bool withRights) {
    // No tool takes an absolute path for an option.
    const QMFileManager::Path absolute = platform::absolutePath(path);
    if (!absolute) {
        return false;
    }
    if (withRights) {
        return QMAuthorization::sharedController().authExecTask(kTouchTool, {"-c", *absolute},
                                                                false) == 0;
    }
    return QMTaskEx::runTask(kTouchTool, {"-c", *absolute}, QMTaskEx::Timeout(5));
}

}  // namespace

bool QMFileManager::touchFile(const Path& path) {
    return touchFile(path, false);
}

bool QMFileManager::touchFile(const Path& path, bool setCreationDate) {
    if (!path) {
        return false;
    }
    ErrorSlot ignored;
    const bool withRights = !isWritable(*path);
    if (setCreationDate && withRights) {
        std::ignore = platform::setCreationDate(*path, system_clock::now(), ignored);
    }
    const bool touched = runTouch(*path, withRights);
    if (setCreationDate && !withRights) {
        std::ignore = platform::setCreationDate(*path, system_clock::now(), ignored);
    }
    platform::noteFileSystemChanged(path);
    return touched;
}

bool QMFileManager::setModificationDate(Date date, const std::string& forFile) {
    ErrorSlot ignored;
    return platform::setModificationDate(forFile, date, ignored);
}

void QMFileManager::waitForFileCreation(const std::string& path, seconds /*timeout*/) {
    if (holdsSomething(path)) {
        return;
    }
    QMLog::appendLog("File %@ is not yet created. Waiting...", path);
    pause();
}

void QMFileManager::waitForFileWrites(const std::string& path) {
    waitForFileWrites(path, std::nullopt);
}

void QMFileManager::waitForFileWrites(const std::string& path, const Path& lockFile) {
    std::optional<Date> modified = platform::modificationDate(path);
    if (!modified || (system_clock::now() - *modified > kSettled &&
                      !(lockFile && platform::fileExists(*lockFile)))) {
        return;
    }
    QMLog::appendLog("File %@ is currently being written to. Waiting...", path);
    while (modified && system_clock::now() - *modified < kSettled) {
        pause();
        modified = platform::modificationDate(path);
    }
    QMLog::appendLog("File %@ finished writing.", path);
}

bool QMFileManager::fileIsOpenForWriting(const std::string& /*path*/) {
    return false;
}

}  // namespace vornic
