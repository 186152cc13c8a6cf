#include <tuple>

#include "base/PathText.h"
#include "foundation/files/QMFileManager.h"
#include "foundation/places/QMLocalPaths.h"
#include "foundation/rights/SystemPathGuard.h"
#include "platform/archives/Archive.h"
#include "platform/session/Workspace.h"

namespace vornic {

bool QMFileManager::compressFile(const std::string& source, const std::string& toDestinationFile) {
    return compressFile(source, toDestinationFile, true);
}

bool QMFileManager::compressFile(const std::string& source, const std::string& toDestinationFile,
                                 bool includeParent) {
    if (fileExistsAtPath(toDestinationFile)) {
        trashFile(toDestinationFile);
    }
    ErrorSlot error;
    return platform::compressItem(source, toDestinationFile, includeParent, error) &&
           fileExistsAtPath(toDestinationFile);
}

bool QMFileManager::decompressFile(const std::string& source,
                                   const std::string& toDestinationFolder) {
    ErrorSlot error;
    if (fileExistsAtPath(toDestinationFolder) && !isGuardedSystemPath(toDestinationFolder)) {
        std::ignore = platform::recycle(parentFolder(toDestinationFolder),
                                        QMLocalPaths::trashDirectory().value_or(""),
                                        {lastComponent(toDestinationFolder)}, error);
    }
    return platform::extractArchive(source, toDestinationFolder, error) &&
           fileExistsAtPath(toDestinationFolder);
}

}  // namespace vornic
