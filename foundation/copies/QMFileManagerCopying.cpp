#include <utility>

#include "foundation/copies/FileCopy.h"
#include "foundation/copies/FileCopySettings.h"
#include "foundation/files/QMFileManager.h"

namespace vornic {
namespace {

using platform::DigestKind;

std::optional<DigestKind> digestKind(std::int32_t verificationType) {
    switch (verificationType) {
        case QMFileManager::kVerifyMD5:
            return DigestKind::md5;
        case QMFileManager::kVerifySHA1:
            return DigestKind::sha1;
        case QMFileManager::kVerifySHA256:
            return DigestKind::sha256;
        case QMFileManager::kVerifySHA512:
            return DigestKind::sha512;
        default:
            return std::nullopt;
    }
}

FileCopyDelegate::Settings settingsOf(const std::string& source,
                                      const std::vector<std::string>& destinations,
                                      const std::shared_ptr<FileCopyDelegate>& delegate) {
    auto settings = std::make_shared<FileCopySettings>();
    settings->setObject(source, kFileCopySource);
    settings->setObject(destinations, kFileCopyDestinations);
    settings->setObject(std::string("copy"), kFileCopyOperation);
    if (delegate) {
        // Not owned, for a delegate may keep the settings.
        settings->setObject(std::weak_ptr<FileCopyDelegate>(delegate), kFileCopyDelegate);
    }
    return settings;
}

}  // namespace

bool QMFileManager::copyFileWithProgress(const std::string& source,
                                         const std::vector<std::string>& destinations,
                                         std::int32_t verificationType,
                                         const std::shared_ptr<FileCopyDelegate>& delegate,
                                         std::any object, std::any object2) {
    const FileCopyDelegate::Settings settings = settingsOf(source, destinations, delegate);
    if (object.has_value()) {
        settings->setObject(std::move(object), kFileCopyObject);
    }
    if (object2.has_value()) {
        settings->setObject(std::move(object2), kFileCopyObject2);
    }
    return FileCopy(source, destinations, digestKind(verificationType), delegate, settings).run();
}

bool QMFileManager::copyFileWithProgress(const std::string& source, const std::string& destination,
                                         const std::shared_ptr<FileCopyDelegate>& delegate,
                                         std::any object, std::any object2) {
    return copyFileWithProgress(source, std::vector<std::string>{destination}, kVerifyNothing,
                                delegate, std::move(object), std::move(object2));
}

bool QMFileManager::copyFileWithProgress(const std::string& source, const std::string& destination,
                                         const std::shared_ptr<FileCopyDelegate>& delegate,
                                         std::any object) {
    return copyFileWithProgress(source, destination, delegate, std::move(object), std::any());
}

}  // namespace vornic
