#ifndef VORNIC_FOUNDATION_COPIES_FILE_COPY_H
#define VORNIC_FOUNDATION_COPIES_FILE_COPY_H

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "foundation/copies/BlockDigester.h"
#include "foundation/copies/FileCopyDelegate.h"
#include "foundation/copies/FileCopyDestination.h"
#include "foundation/copies/FileCopyProgress.h"
#include "platform/files/Digest.h"
#include "platform/files/FileDescriptor.h"

namespace vornic {

/// One run of `QMFileManager::copyFileWithProgress`.
class FileCopy {
  public:
    /// @param verification the kind of checksum; nothing: the copies are not read back
    /// @param delegate may be null
    FileCopy(std::string source, const std::vector<std::string>& destinations,
             std::optional<platform::DigestKind> verification,
             std::shared_ptr<FileCopyDelegate> delegate, FileCopyDelegate::Settings settings);

    /// Once. @return what `copyFileWithProgress` returns.
    [[nodiscard]] bool run();

  private:
    /// A destination with the digest of what was read back from it.
    struct Copy {
        FileCopyDestination destination;
        std::optional<platform::Digest> digest;
    };

    [[nodiscard]] bool begin();
    [[nodiscard]] bool makeFolders() const;
    [[nodiscard]] bool openSource();
    [[nodiscard]] bool openDestinations();
    [[nodiscard]] bool openDestination(FileCopyDestination& destination) const;
    [[nodiscard]] bool prepareBlocks();
    /// @return false when the source could not be read to its end.
    [[nodiscard]] bool copyBlocks(FileCopyProgress& progress);
    void writeBlock(const char* block, std::size_t count);
    void closeDestinations();
    void compareChecksums();
    void copyMetadata();

    std::string sourcePath_;
    std::vector<Copy> copies_;
    std::optional<platform::DigestKind> verification_;
    std::shared_ptr<FileCopyDelegate> delegate_;
    FileCopyDelegate::Settings settings_;

    platform::FileDescriptor source_;
    struct stat sourceStatus_ {};
    std::optional<platform::Digest> sourceDigest_;
    std::uint64_t total_ = 0;
    BlockDigester blocks_;
};

}  // namespace vornic

#endif
