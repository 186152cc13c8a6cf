#include <atomic>
#include <cstdint>
#include <memory>
#include <string_view>

#include "foundation/copies/BlockDigester.h"
#include "foundation/files/QMFileManager.h"
#include "foundation/log/QMLog.h"
#include "platform/files/FileDescriptor.h"
#include "platform/processes/Console.h"
#include "platform/threads/BackgroundQueue.h"

namespace vornic {
namespace {

using platform::Digest;
using platform::DigestKind;

/// How much is read between two questions whether to go on.
constexpr std::uint64_t kQuestionInterval = std::uint64_t{50} * 1024 * 1024;

QMFileManager::Checksum hexadecimal(const std::optional<std::string>& bytes) {
    if (!bytes) {
        return std::nullopt;
    }
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string text;
    for (const char byte : *bytes) {
        const auto value = static_cast<unsigned char>(byte);
        text += kDigits[value >> 4U];
        text += kDigits[value & 0xFU];
    }
    return text;
}

QMFileManager::Checksum checksumOf(const Digest& context, DigestKind kind) {
    return context.kind() == kind ? hexadecimal(context.value()) : std::nullopt;
}

/// The wish to go on with one file, asked for in the background.
class Continuation {
  public:
    Continuation(const std::string& path, const std::shared_ptr<ChecksumDelegate>& delegate)
        : path_(path), delegate_(delegate) {}

    [[nodiscard]] bool isCancelled() const { return *cancelled_; }

    void ask(std::uint64_t bytesRead) const {
        if (!delegate_ || bytesRead % kQuestionInterval != 0 ||
            !delegate_->checksumShouldContinue) {
            return;
        }
        // The answer may come when the checksum is long done.
        platform::BackgroundQueue::perform(
            [path = path_, delegate = delegate_, cancelled = cancelled_] {
                if (!delegate->checksumShouldContinue(path)) {
                    *cancelled = true;
                }
            });
    }

  private:
    const std::string& path_;
    const std::shared_ptr<ChecksumDelegate>& delegate_;
    std::shared_ptr<std::atomic<bool>> cancelled_ = std::make_shared<std::atomic<bool>>(false);
};

QMFileManager::Checksum hashForFile(const std::string& path, DigestKind kind,
                                    const std::shared_ptr<ChecksumDelegate>& delegate) {
    const ErrnoOr<platform::FileDescriptor> file = platform::openRegularFile(path, true);
    if (!file) {
        platform::consoleLog(formatString(
            "Error: Unable to open destination file %@. Aborting hash verification...", path));
        return std::nullopt;
    }
    std::optional<Digest> digest = Digest::create(kind);
    const FileBlock buffer = makeFileBlock();
    if (!digest || !buffer) {
        QMLog::appendLogAndPrint("Error reading file %@ - out of memory", path);
        return std::nullopt;
    }
    const Continuation continuation(path, delegate);
    std::uint64_t total = 0;
    while (!continuation.isCancelled()) {
        const auto [count, errorNumber] =
            platform::readBlock(file->get(), buffer.get(), kFileBlockSize);
        if (count == 0 && errorNumber == 0) {
            return checksumOf(*digest, kind);
        }
        if (count == 0) {
            QMLog::appendLogAndPrint("Error reading file %@ - aborting...", path);
            return std::nullopt;
        }
        digest->update(buffer.get(), count);
        total += count;
        continuation.ask(total);
    }
    return std::nullopt;
}

}  // namespace

QMFileManager::Checksum QMFileManager::md5HashWithContext(const Digest& context) {
    return checksumOf(context, DigestKind::md5);
}

QMFileManager::Checksum QMFileManager::sha1HashWithContext(const Digest& context) {
    return checksumOf(context, DigestKind::sha1);
}

QMFileManager::Checksum QMFileManager::sha256HashWithContext(const Digest& context) {
    return checksumOf(context, DigestKind::sha256);
}

QMFileManager::Checksum QMFileManager::sha512HashWithContext(const Digest& context) {
    return checksumOf(context, DigestKind::sha512);
}

QMFileManager::Checksum QMFileManager::md5HashForFile(const std::string& path) {
    return md5HashForFile(path, nullptr);
}

QMFileManager::Checksum QMFileManager::md5HashForFile(
    const std::string& path, const std::shared_ptr<ChecksumDelegate>& delegate) {
    return hashForFile(path, DigestKind::md5, delegate);
}

QMFileManager::Checksum QMFileManager::sha1HashForFile(const std::string& path) {
    return sha1HashForFile(path, nullptr);
}

QMFileManager::Checksum QMFileManager::sha1HashForFile(
    const std::string& path, const std::shared_ptr<ChecksumDelegate>& delegate) {
    return hashForFile(path, DigestKind::sha1, delegate);
}

QMFileManager::Checksum QMFileManager::sha512HashForFile(const std::string& path) {
    return sha512HashForFile(path, nullptr);
}

QMFileManager::Checksum QMFileManager::sha512HashForFile(
    const std::string& path, const std::shared_ptr<ChecksumDelegate>& delegate) {
    return hashForFile(path, DigestKind::sha512, delegate);
}

}  // namespace vornic
