#include <algorithm>
#include <chrono>

#include "foundation/FileBlock.h"
#include "foundation/FileCopyDestination.h"
#include "foundation/FormatString.h"
#include "foundation/QMFileManager.h"
#include "platform/Console.h"
#include "platform/FileDescriptor.h"
#include "platform/FileSystem.h"
#include "platform/FileTransfer.h"

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
        int ignored = 0;
        const platform::FileDescriptor file = platform::openForMetadata(path, true, ignored);
        return file && platform::identityOf(file.get()) == identity;
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

/// @param isWhole set to whether all of the source could be written
/// @return false when the source could not be read.
bool append(const std::string& source, FileCopyDestination& destination, bool& isWhole) {
    int errorNumber = 0;
    const platform::FileDescriptor file = platform::openRegularFile(source, true, errorNumber);
    if (!file) {
        consoleLog(formatString(
            "Error: Unable to open source file %@. Aborting combination process...", source));
        return false;
    }
    const FileBlock block = makeFileBlock();
    if (!block) {
        consoleLog(formatString("Error combining file %@ - out of memory", source));
        return false;
    }
    isWhole = true;
    for (;;) {
        errorNumber = 0;
        const std::size_t count =
            platform::readBlock(file.get(), block.get(), kFileBlockSize, errorNumber);
        if (count == 0 && errorNumber != 0) {
            consoleLog(formatString("Error reading file %@ - aborting...", source));
            return false;
        }
        if (count == 0) {
            return true;
        }
        isWhole = destination.write(block.get(), count) && isWhole;
    }
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
    for (const std::string& source : sources) {
        bool isWhole = false;
        if (!append(source, combined, isWhole)) {
            return false;
        }
        // What was not written is nowhere else.
        if (deleteSourceFiles && isWhole) {
            removeFile(source, false);
        }
    }
    combined.close();
    return true;
}

}  // namespace vornic
