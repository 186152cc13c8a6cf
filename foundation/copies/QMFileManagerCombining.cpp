#include <algorithm>
#include <chrono>
#include <cstdint>
#include <utility>

#include <sys/stat.h>

#include "base/FormatString.h"
#include "foundation/copies/BlockDigester.h"
#include "foundation/copies/FileCopyDestination.h"
#include "foundation/files/QMFileManager.h"
#include "platform/files/FileDescriptor.h"
#include "platform/files/FileSystem.h"
#include "platform/processes/Console.h"
#include "platform/volumes/FileTransfer.h"

namespace vornic {
namespace {

using platform::consoleLog;

bool checkFiles(const std::vector<std::string>& sources, const QMFileManager::Path& destination) {
    if (sources.empty()) {
        consoleLog("Error: No source file URLs specified. Aborting combination process...");
        return false;
    }
    if (!destination || destination->empty()) {
        consoleLog("Error: No destination specified. Aborting combination process...");
        return false;
    }
    const auto missing = std::find_if_not(sources.begin(), sources.end(), platform::fileExists);
    if (missing != sources.end()) {
        consoleLog(formatString("Error: File %@ doesn't exist. Aborting combination process...",
                                *missing));
        return false;
    }
    return true;
}

bool refuseDestination(const std::string& destination) {
    consoleLog(formatString(
        "Error: Unable to open destination file %@. Aborting combination process...", destination));
    return false;
}

/// True when one of the files, links followed, is the one behind the descriptor's identity.
bool isAmong(const std::vector<std::string>& files, const platform::FileIdentity& identity) {
    return std::any_of(files.begin(), files.end(), [&](const std::string& path) {
        const ErrnoOr<platform::FileDescriptor> file = platform::openForMetadata(path, true);
        return file && platform::identityOf(file->get()) == identity;
    });
}

/// True when the source's contents would go with what stands at the destination.
bool removalTakes(const std::string& destination, const std::string& source) {
    const std::optional<platform::FileIdentity> removed = platform::fileIdentity(destination);
    return removed && (removed == platform::fileIdentity(source) || isAmong({source}, *removed) ||
                       platform::liesWithin(source, destination));
}

bool moveSingleFile(const std::string& source, const std::string& destination) {
    constexpr std::chrono::seconds kRemovalTimeout{5};
    constexpr std::chrono::seconds kMoveTimeout{10};
    if (removalTakes(destination, source)) {
        return refuseDestination(destination);
    }
    if (QMFileManager::fileExistsAtPath(destination)) {
        QMFileManager::removeFile(destination, kRemovalTimeout);
    }
    return QMFileManager::moveFile(source, destination, kMoveTimeout);
}

/// What shows that a file was changed or replaced.
struct FileState {
    platform::FileIdentity identity;
    std::int64_t size = 0;
    std::int64_t seconds = 0;
    std::int64_t nanoseconds = 0;
    friend bool operator==(const FileState&, const FileState&) = default;
};

FileState stateOf(const struct stat& status) {
    return {.identity = {.device = status.st_dev, .inode = status.st_ino},
            .size = status.st_size,
            .seconds = status.st_mtim.tv_sec,
            .nanoseconds = status.st_mtim.tv_nsec};
}

/// A source that has been written whole, as it was when it was opened.
struct AppendedFile {
    std::string path;
    FileState state;
};

bool isUnchanged(const AppendedFile& file) {
    struct stat status {};
    return stat(file.path.c_str(), &status) == 0 && stateOf(status) == file.state;
}

/// @param isWhole set to whether all of the source could be written
/// @return false when the source could not be read.
bool append(AppendedFile& source, FileCopyDestination& destination, bool& isWhole) {
    const ErrnoOr<platform::FileDescriptor> file = platform::openRegularFile(source.path, true);
    struct stat status {};
    if (!file || fstat(file->get(), &status) != 0) {
        consoleLog(formatString(
            "Error: Unable to open source file %@. Aborting combination process...", source.path));
        return false;
    }
    source.state = stateOf(status);
    const FileBlock block = makeFileBlock();
    if (!block) {
        consoleLog(formatString("Error combining file %@ - out of memory", source.path));
        return false;
    }
    isWhole = true;
    for (;;) {
        const auto [count, errorNumber] =
            platform::readBlock(file->get(), block.get(), kFileBlockSize);
        if (count == 0 && errorNumber != 0) {
            consoleLog(formatString("Error reading file %@ - aborting...", source.path));
            return false;
        }
        if (count == 0) {
            return true;
        }
        isWhole = destination.write(block.get(), count) && isWhole;
    }
}

/// Appends the sources in their order. @return false when one could not be read.
/// @param appended given those of which all could be written: what was not is nowhere else
bool appendAll(const std::vector<std::string>& sources, FileCopyDestination& destination,
               std::vector<AppendedFile>& appended) {
    return std::all_of(sources.begin(), sources.end(), [&](const std::string& path) {
        AppendedFile source{.path = path, .state = {}};
        bool isWhole = false;
        if (!append(source, destination, isWhole)) {
            return false;
        }
        if (isWhole) {
            appended.push_back(std::move(source));
        }
        return true;
    });
}

}  // namespace

bool QMFileManager::combineFiles(const std::vector<std::string>& sources, const Path& destination,
                                 bool deleteSourceFiles) {
    if (!checkFiles(sources, destination)) {
        return false;
    }
    if (sources.size() == 1) {
        return moveSingleFile(sources.front(), *destination);
    }
    constexpr mode_t kUsualMode = 0666;
    FileCopyDestination combined(*destination);
    if (!combined.open(kUsualMode) || isAmong(sources, combined.identity()) ||
        !combined.truncate()) {
        return refuseDestination(*destination);
    }
    std::vector<AppendedFile> appended;
    const bool areRead = appendAll(sources, combined, appended);
    // Until the disk has it all, the sources are the only ones.
    if (combined.synchronizeAndClose() && deleteSourceFiles) {
        for (const AppendedFile& source : appended) {
            if (isUnchanged(source)) {
                removeFile(source.path, false);
            }
        }
    }
    return areRead;
}

}  // namespace vornic
