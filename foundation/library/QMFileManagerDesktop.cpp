#include "base/PathText.h"
#include "foundation/files/QMFileManager.h"
#include "platform/files/FileChangeNotice.h"
#include "platform/files/FileSystem.h"
#include "platform/session/MimeDatabase.h"
#include "platform/settings/Bundle.h"

namespace vornic {

std::optional<std::string> QMFileManager::mimeTypeForFileAtPath(const std::string& path) {
    if (!platform::fileExists(path)) {
        return std::nullopt;
    }
    return mimeTypeForFileExtension(pathExtension(path));
}

std::string QMFileManager::mimeTypeForFileExtension(std::string_view extension) {
    return platform::mimeTypeForExtension(extension).value_or("application/octet-stream");
}

void QMFileManager::notifyFileSystemChanged(const Path& path) {
    platform::noteFileSystemChanged(path);
}

bool QMFileManager::registerApplicationWithLaunchServices(const std::string& path) {
    return platform::Bundle(path).infoString("CFBundleIdentifier").has_value();
}

}  // namespace vornic
