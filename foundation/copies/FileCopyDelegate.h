#ifndef VORNIC_FOUNDATION_COPIES_FILE_COPY_DELEGATE_H
#define VORNIC_FOUNDATION_COPIES_FILE_COPY_DELEGATE_H

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace vornic {

class FileCopySettings;

/// Reports and questions while a file is copied. An operation that is left empty is never called.
/// Set them before the copy is begun; they may be called from any thread, at the same time as each
/// other, and must not throw. The settings are the same object in each call of one copy.
struct FileCopyDelegate {
    using Settings = std::shared_ptr<FileCopySettings>;

    /// Told how many bytes of the source are copied: on background threads while the copy goes on,
    /// hence perhaps late and out of order, and once at its end on the copy's own thread.
    std::function<void(std::uint64_t bytes, const Settings& settings)> fileCopyBytesWritten;
    /// Asked on a background thread whenever there was progress; the answer false cancels the copy,
    /// which ends one or more blocks later. An answer that comes after the end counts for nothing.
    std::function<bool(const Settings& settings)> fileCopyShouldContinue;
    /// Told, on the copy's thread, of each destination whose checksum is not the source's.
    std::function<void(const Settings& settings, const std::string& file)>
        fileCopyVerificationFailed;
    /// Told on the copy's thread when the copy ends, cancelled and failed ones included; not when
    /// it could not be begun.
    std::function<void(const Settings& settings)> fileCopyFinished;
};

}  // namespace vornic

#endif
