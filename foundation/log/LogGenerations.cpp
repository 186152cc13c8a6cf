#include "foundation/log/LogGenerations.h"

#include <utility>

#include "base/FormatString.h"
#include "base/PathText.h"
#include "foundation/places/QMLocalPaths.h"
#include "platform/files/AtomicFile.h"
#include "platform/files/FileSystem.h"
#include "platform/locks/FolderLock.h"
#include "platform/settings/Directories.h"

namespace vornic {

namespace {

constexpr int kOldestGeneration = 5;

std::string generationPath(std::string_view folder, std::string_view name, int generation) {
    return formatString("%@/%@.%li.log", folder, name, generation);
}

/// Moves every generation one place on. @return the message of a failure.
std::optional<std::string> moveGenerationsOn(std::string_view folder, std::string_view name) {
    const std::string oldest = generationPath(folder, name, kOldestGeneration);
    if (platform::fileExists(oldest)) {
        ErrorSlot ignored;
        static_cast<void>(platform::removeFile(oldest, ignored));
    }
    for (int generation = kOldestGeneration - 1; generation >= 1; --generation) {
        const std::string source = generationPath(folder, name, generation);
        const std::string destination = generationPath(folder, name, generation + 1);
        ErrorSlot error;
        // A file that is gone after a failed move was moved by another program that starts its log.
        if (platform::fileExists(source) && !platform::moveFile(source, destination, error) &&
            platform::fileExists(source)) {
            return formatString("Unable to move file %s to %s.", source, destination);
        }
    }
    return std::nullopt;
}

}  // namespace

std::optional<std::string> logFolder(bool userDomain) {
    const std::optional<std::string> library = QMLocalPaths::libraryDirectory(userDomain);
    return library ? std::optional(*library + "/Logs/Quillmark") : std::nullopt;
}

std::optional<std::string> currentLogPath(std::string_view name) {
    const std::optional<std::string> folder = logFolder(platform::realUserId() != 0);
    return folder ? std::optional(generationPath(*folder, name, 1)) : std::nullopt;
}

std::vector<std::string> existingLogPaths(std::string_view name) {
    std::vector<std::string> paths;
    const std::optional<std::string> folder = logFolder(true);
    for (int generation = 1; folder && generation <= kOldestGeneration; ++generation) {
        std::string path = generationPath(*folder, name, generation);
        if (platform::fileExists(path)) {
            paths.push_back(std::move(path));
        }
    }
    return paths;
}

StartedGeneration startGeneration(std::string_view name) {
    const std::optional<std::string> folder = logFolder(true);
    const std::optional<std::string> path = currentLogPath(name);
    ErrorSlot folderError;
    if (!folder || !path ||
        (!platform::fileExists(*folder) && !platform::createDirectory(*folder, folderError))) {
        return {.file = nullptr,
                .failure = formatString("Unable to create folder %s.",
                                        folder ? folder->c_str() : nullptr)};
    }
    if (platform::realUserId() == 0) {
        ErrorSlot ignored;
        static_cast<void>(platform::createDirectory(parentFolder(*path), ignored));
    }
    // Programs that start their logs at the same moment would move each other's generations.
    const platform::FolderLock turn(*folder);
    if (platform::fileExists(*path)) {
        if (std::optional<std::string> failure = moveGenerationsOn(*folder, name)) {
            return {.file = nullptr, .failure = std::move(failure)};
        }
    }
    ErrorSlot error;
    if (!platform::writeFileAtomically(*path, "", platform::Durability::buffered, error)) {
        return {.file = nullptr,
                .failure = formatString("Unable to create log file %s - %s", *path,
                                        error ? error->localizedDescription() : std::string())};
    }
    return {.file = LogFile::open(*path), .failure = std::nullopt};
}

}  // namespace vornic
