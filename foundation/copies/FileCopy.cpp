#include "foundation/copies/FileCopy.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "base/FormatString.h"
#include "base/PathText.h"
#include "foundation/copies/FileCopySettings.h"
#include "foundation/files/QMFileManager.h"
#include "foundation/log/QMLog.h"
#include "platform/files/FileSystem.h"
#include "platform/processes/Console.h"

namespace vornic {
namespace {

using platform::consoleLog;
using platform::Digest;
using platform::DigestKind;

/// Enough for the digests to work on what was read while the next block is written.
constexpr std::size_t kBlocksWhenVerifying = 32;

std::string checksumOf(const std::optional<Digest>& digest) {
    if (!digest) {
        return {};
    }
    switch (digest->kind()) {
        case DigestKind::md5:
            return QMFileManager::md5HashWithContext(*digest).value_or("");
        case DigestKind::sha1:
            return QMFileManager::sha1HashWithContext(*digest).value_or("");
        case DigestKind::sha256:
            return QMFileManager::sha256HashWithContext(*digest).value_or("");
        case DigestKind::sha512:
            return QMFileManager::sha512HashWithContext(*digest).value_or("");
    }
    return {};
}

}  // namespace

FileCopy::FileCopy(std::string source, const std::vector<std::string>& destinations,
                   std::optional<DigestKind> verification,
                   std::shared_ptr<FileCopyDelegate> delegate, FileCopyDelegate::Settings settings)
    : sourcePath_(std::move(source)),
      verification_(verification),
      delegate_(std::move(delegate)),
      settings_(std::move(settings)) {
    for (const std::string& path : destinations) {
        copies_.push_back({.destination = FileCopyDestination(path), .digest = std::nullopt});
    }
}

bool FileCopy::run() {
    if (!begin()) {
        return false;
    }
    const auto size = static_cast<std::uint64_t>(sourceStatus_.st_size);
    FileCopyProgress progress(size, delegate_, settings_);
    const bool wasRead = copyBlocks(progress);
    blocks_.finish();
    closeDestinations();
    if (total_ != size) {
        consoleLog(
            formatString("Error: copied file size does not match original source %@", sourcePath_));
    }
    if (delegate_ && delegate_->fileCopyBytesWritten) {
        delegate_->fileCopyBytesWritten(total_, settings_);
    }
    if (verification_) {
        compareChecksums();
    }
    copyMetadata();
    source_.close();
    if (delegate_ && delegate_->fileCopyFinished) {
        delegate_->fileCopyFinished(settings_);
    }
    return wasRead && !progress.isCancelled();
}

bool FileCopy::begin() {
    if (!platform::fileExists(sourcePath_)) {
        consoleLog(
            formatString("Error: File %@ doesn't exist. Aborting copy process...", sourcePath_));
        return false;
    }
    if (copies_.empty()) {
        consoleLog("Error: You must have at least one destination. Aborting copy process...");
        return false;
    }
    return makeFolders() && openSource() && openDestinations() && prepareBlocks();
}

bool FileCopy::makeFolders() const {
    constexpr std::chrono::seconds kTimeout{10};
    for (const Copy& copy : copies_) {
        const std::string folder = parentFolder(copy.destination.path());
        if (platform::fileExists(folder) || QMFileManager::createDirectory(folder, kTimeout)) {
            continue;
        }
        consoleLog(
            formatString("Unable to copy file %@ - destination directory %@ doesn't exist. "
                         "Aborting copy process...",
                         sourcePath_, folder));
        return false;
    }
    return true;
}

bool FileCopy::openSource() {
    ErrnoOr<platform::FileDescriptor> source = platform::openRegularFile(sourcePath_, true);
    if (source && fstat(source->get(), &sourceStatus_) == 0) {
        source_ = *std::move(source);
        return true;
    }
    consoleLog(formatString("Error: Unable to read source file %@. Aborting copy process...",
                            sourcePath_));
    return false;
}

/// All are opened before the first is emptied, so that a refusal costs no file its contents.
bool FileCopy::openDestinations() {
    auto failed = std::find_if_not(copies_.begin(), copies_.end(), [this](Copy& copy) {
        return openDestination(copy.destination);
    });
    if (failed == copies_.end()) {
        failed = std::find_if_not(copies_.begin(), copies_.end(),
                                  [](Copy& copy) { return copy.destination.truncate(); });
    }
    if (failed == copies_.end()) {
        return true;
    }
    consoleLog(formatString("Error: Unable to open destination file %@. Aborting copy process...",
                            failed->destination.path()));
    for (Copy& copy : copies_) {
        copy.destination.abandon();
    }
    return false;
}

bool FileCopy::openDestination(FileCopyDestination& destination) const {
    // Not open to more people than the source while it is written.
    constexpr mode_t kOwnerMayWrite = 0600;
    constexpr mode_t kNotToBeRun = 0666;
    return destination.open((sourceStatus_.st_mode & kNotToBeRun) | kOwnerMayWrite) &&
           destination.identity() != platform::identityOf(source_.get());
}

bool FileCopy::prepareBlocks() {
    bool prepared = blocks_.allocate(verification_ ? kBlocksWhenVerifying : 2);
    if (verification_) {
        sourceDigest_ = Digest::create(*verification_);
        prepared = prepared && sourceDigest_;
    }
    for (Copy& copy : copies_) {
        copy.digest = sourceDigest_;
    }
    if (!prepared) {
        QMLog::appendLogAndPrint("Error copying file %@ - out of memory", sourcePath_);
        return false;
    }
    if (verification_) {
        blocks_.start();
    }
    return true;
}

bool FileCopy::copyBlocks(FileCopyProgress& progress) {
    while (!progress.isCancelled()) {
        FileBlock block = blocks_.take();
        const auto [count, errorNumber] =
            platform::readBlock(source_.get(), block.get(), kFileBlockSize);
        if (count == 0 && errorNumber != 0) {
            consoleLog(formatString("Error reading file %@ - aborting...", sourcePath_));
            return false;
        }
        if (count == 0) {
            return true;
        }
        writeBlock(block.get(), count);
        blocks_.giveBack(std::move(block), count, sourceDigest_ ? &*sourceDigest_ : nullptr);
        total_ += count;
        const bool isLast =
            count < kFileBlockSize || total_ == static_cast<std::uint64_t>(sourceStatus_.st_size);
        progress.advance(total_, isLast);
    }
    return true;
}

void FileCopy::writeBlock(const char* block, std::size_t count) {
    for (Copy& copy : copies_) {
        copy.destination.write(block, count);
        if (copy.digest) {
            FileBlock written = blocks_.take();
            const std::size_t length = copy.destination.readBack(written.get(), count);
            blocks_.giveBack(std::move(written), length, &*copy.digest);
        }
    }
}

void FileCopy::closeDestinations() {
    for (Copy& copy : copies_) {
        copy.destination.close();
    }
}

void FileCopy::compareChecksums() {
    const std::string expected = checksumOf(sourceDigest_);
    settings_->setObject(expected, kFileCopyChecksum);
    std::vector<std::string> checksums;
    for (const Copy& copy : copies_) {
        checksums.push_back(checksumOf(copy.digest));
        if (!expected.empty() && checksums.back() == expected) {
            continue;
        }
        settings_->setObject(checksums.back(), kFileCopyMismatch);
        if (delegate_ && delegate_->fileCopyVerificationFailed) {
            delegate_->fileCopyVerificationFailed(settings_, copy.destination.path());
        }
    }
    settings_->setObject(std::move(checksums), kFileCopyChecksums);
}

void FileCopy::copyMetadata() {
    for (const Copy& copy : copies_) {
        ErrorSlot error;
        if (!copy.destination.copyMetadata(source_.get(), sourceStatus_, error)) {
            consoleLog(formatString("Error setting metadata for file %@ - %@",
                                    copy.destination.path(), error->localizedDescription()));
        }
    }
}

}  // namespace vornic
