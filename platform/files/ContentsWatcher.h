#ifndef VORNIC_PLATFORM_FILES_CONTENTS_WATCHER_H
#define VORNIC_PLATFORM_FILES_CONTENTS_WATCHER_H

#include <optional>
#include <string>
#include <string_view>

#include "base/Error.h"
#include "platform/files/ContentDigest.h"

namespace vornic::platform {

/// Is shown the contents of a file piece by piece while they are read and still in the processor's
/// cache, where a look at them costs least. Called on the thread that reads.
class ContentsWatcher {
  public:
    virtual ~ContentsWatcher() = default;
    /// A reading begins, perhaps after one that failed: what came before counts no more.
    virtual void begin() = 0;
    /// The next bytes, which live during the call only.
    virtual void take(std::string_view piece) = 0;
};

/// Digests what is read, and shows it to another one.
class DigestedContents final : public ContentsWatcher {
  public:
    /// @param next null for none
    explicit DigestedContents(ContentsWatcher* next) : next_(next) {}

    void begin() override;
    void take(std::string_view piece) override;
    /// Of all pieces since the last beginning.
    [[nodiscard]] ContentDigest::Value digest() const { return digest_.value(); }

  private:
    ContentsWatcher* next_;
    ContentDigest digest_;
};

/// `readContents` of `FileDescriptor.h` that shows what it reads.
[[nodiscard]] int readContents(int descriptor, std::string& bytes, ContentsWatcher& watcher);

/// `readFile` of `FileSystem.h` that shows what it reads.
[[nodiscard]] std::optional<std::string> readFile(const std::string& path, ContentsWatcher& watcher,
                                                  ErrorSlot& error);

}  // namespace vornic::platform

#endif
