#include "foundation/QMFileManager.h"
#include "foundation/Text.h"
#include "platform/Bundle.h"
#include "platform/FileChangeNotice.h"
#include "platform/FileSystem.h"
#include "platform/MimeDatabase.h"

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
