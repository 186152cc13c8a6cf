#include <array>
#include <cerrno>
#include <cstddef>
#include <tuple>

#include "base/FormatString.h"
#include "base/Utf8.h"
#include "foundation/files/QMFileManager.h"
#include "foundation/log/QMLog.h"
#include "platform/files/FileDescriptor.h"
#include "platform/files/FileSystem.h"
#include "platform/items/ExtendedAttributes.h"
#include "platform/items/FileAttributes.h"
#include "platform/processes/Console.h"

namespace vornic {
namespace {

using platform::FileDescriptor;

/// The date that tells the Finder to look for a progress: 1984-01-24 08:00:00 +0000.
constexpr QMFileManager::Date kProgressDate{std::chrono::seconds(443779200)};
constexpr const char* kProgressAttribute = "com.apple.progress.fractionCompleted";

std::string attributeName(const std::string& key) {
    return "user." + key;
}

bool isUtf8(std::string_view text) {
    for (std::size_t position = 0; position < text.size();) {
        const Utf8Character character = utf8CharacterAt(text, position);
        if (!character.isValid) {
            return false;
        }
        position += character.length;
    }
    return true;
}

ErrnoOr<std::string> readAttribute(const std::string& file, const std::string& key) {
    const ErrnoOr<FileDescriptor> opened = platform::openForMetadata(file, true);
    if (!opened) {
        return Errno{opened.errorNumber()};
    }
    return platform::extendedAttribute(opened->get(), attributeName(key));
}

/// @return 0, or the errno value.
int setAttribute(const std::string& file, const std::string& key, std::string_view value) {
    const ErrnoOr<FileDescriptor> opened = platform::openForMetadata(file, true);
    return opened ? platform::setExtendedAttribute(opened->get(), attributeName(key), value)
                  : opened.errorNumber();
}

void removeAttribute(const std::string& file, const std::string& key) {
    const ErrnoOr<FileDescriptor> opened = platform::openForMetadata(file, true);
    if (opened) {
        static_cast<void>(platform::removeExtendedAttribute(opened->get(), attributeName(key)));
    }
}

}  // namespace

std::optional<std::string> QMFileManager::metadataValueForKey(const std::string& key,
                                                              const std::string& file) {
    constexpr std::size_t kLongestValue = 255;
    if (!platform::fileExists(file)) {
        return std::nullopt;
    }
    if (!isMacFilesystemAtPath(file)) {
        QMLog::appendLog("Unable to get Finder metadata - this is not an Apple-formatted drive.");
        return std::nullopt;
    }
    const ErrnoOr<std::string> value = readAttribute(file, key);
    platform::consoleLog(
        formatString("buffer val: %li", value ? static_cast<std::int64_t>(value->size()) : -1));
    if (!value) {
        platform::consoleLog(
            formatString("Error retrieving file attribute: %i", value.errorNumber()));
        return std::nullopt;
    }
    if (value->empty() || value->size() > kLongestValue || !isUtf8(*value)) {
        return std::nullopt;
    }
    return value.value();
}

bool QMFileManager::setMetadataValue(std::string_view value, const std::string& forKey,
                                     const std::string& file) {
    // What the system call that sets an attribute returns when it fails.
    constexpr int kFailure = -1;
    if (!platform::fileExists(file)) {
        return false;
    }
    if (!isMacFilesystemAtPath(file)) {
        QMLog::appendLog("Unable to set Finder metadata - this is not an Apple-formatted drive.");
        return false;
    }
    if (setAttribute(file, forKey, value) != 0) {
        platform::consoleLog(
            formatString("Error setting extended attribute for file %@ - %i", file, kFailure));
        return false;
    }
    return true;
}

void QMFileManager::setFinderProgress(float fraction, const std::string& forFile) {
    if (!platform::fileExists(forFile)) {
        return;
    }
    if (!isMacFilesystemAtPath(forFile)) {
        QMLog::appendLogAndPrint(
            "Unable to set Finder progress - this is not an Apple-formatted drive.");
        return;
    }
    std::optional<Date> created = kProgressDate;
    if (fraction >= 0) {
        static_cast<void>(setAttribute(forFile, kProgressAttribute,
                                       formatString("%0.3f", static_cast<double>(fraction))));
    } else {
        removeAttribute(forFile, kProgressAttribute);
        created = platform::modificationDate(forFile);
    }
    ErrorSlot ignored;
    if (created) {
        std::ignore = platform::setCreationDate(forFile, *created, ignored);
    }
}

void QMFileManager::removeFinderProgressForFile(const std::string& path) {
    setFinderProgress(-1.0F, path);
}

int QMFileManager::finderColorIndexForPath(const std::string& path) {
    ErrorSlot ignored;
    return platform::readColorLabel(path, ignored).value_or(0);
}

void QMFileManager::setFinderColorIndex(int index, const Path& forPath) {
    ErrorSlot ignored;
    if (forPath) {
        std::ignore = platform::writeColorLabel(*forPath, index, ignored);
    }
}

std::optional<FinderColor> QMFileManager::finderColorForColorIndex(int index) {
    static constexpr std::array<FinderColor, 7> kColors{{
        {.hue = 0.0, .saturation = 0.0, .brightness = 0.72},
        {.hue = 0.2056, .saturation = 0.5, .brightness = 0.85},
        {.hue = 0.7917, .saturation = 0.26, .brightness = 0.86},
        {.hue = 0.5789, .saturation = 0.56, .brightness = 0.98},
        {.hue = 0.1388, .saturation = 0.54, .brightness = 0.95},
        {.hue = 0.0083, .saturation = 0.54, .brightness = 1.0},
        {.hue = 0.0888, .saturation = 0.52, .brightness = 0.98},
    }};
    if (index < 1 || index > static_cast<int>(kColors.size())) {
        return std::nullopt;
    }
    return kColors[static_cast<std::size_t>(index - 1)];
}

std::optional<FinderColor> QMFileManager::finderColorForPath(const std::string& path) {
    return finderColorForColorIndex(finderColorIndexForPath(path));
}

}  // namespace vornic
