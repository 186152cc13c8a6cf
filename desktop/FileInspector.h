#ifndef VORNIC_DESKTOP_FILE_INSPECTOR_H
#define VORNIC_DESKTOP_FILE_INSPECTOR_H

#include <QObject>
#include <QSocketNotifier>
#include <QTimer>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "app/window/FindingsTable.h"
#include "platform/files/FileVersion.h"
#include "platform/files/FolderWatch.h"

namespace vornic {

/// Reads and checks the file of a window, on threads, and watches it: whatever is done to it, by
/// this program or by another one, is told. Main thread; what it calls, too.
class FileInspector : public QObject {
  public:
    struct Listener {
        /// The text can be shown; it is still to be checked.
        std::function<void(std::shared_ptr<const SourceText>)> read;
        std::function<void(std::shared_ptr<const FindingsTable>)> inspected;
        /// The file is not what was inspected last, or is not there.
        std::function<void(bool isThere)> changed;
    };

    /// @param path absolute
    FileInspector(std::string path, Listener listener, QObject* parent);
    ~FileInspector() override;
    FileInspector(const FileInspector&) = delete;
    FileInspector& operator=(const FileInspector&) = delete;

    /// Looks at the file anew, and forgets what an earlier call has begun.
    /// @param original what it was before; "" for nothing. It may change its place meanwhile; then
    ///     the file is shown without it.
    void inspect(const std::string& original);
    /// Asks whether the file is still what was inspected; reports when it is not.
    void look();
    /// Whether an answer is still to come.
    [[nodiscard]] bool isBusy() const { return isBusy_; }

  private:
    // What was inspected.
    struct Seen {
        std::optional<platform::FileVersion> version;
        platform::ContentDigest::Value digest{};
    };
    struct Look {
        bool isThere = false;
        bool isSame = false;
        Seen seen;
    };

    [[nodiscard]] static Seen seenAt(const std::string& path);
    [[nodiscard]] static Look lookAt(const std::string& path, const Seen& seen);
    void start();
    void watch();
    void takeChanges();
    void finish(unsigned number, std::shared_ptr<const FindingsTable> table, const Seen& seen);
    void finishLook(unsigned number, const Look& look);

    std::string path_;
    Listener listener_;
    std::string original_;
    Seen seen_;
    // Each inspection has a number; the result of an older one is dropped.
    unsigned number_ = 0;
    bool isBusy_ = false;
    bool isToBeginAgain_ = false;
    bool isLooking_ = false;
    bool isToLookAgain_ = false;
    QTimer clock_;
    std::optional<platform::FolderWatch> watch_;
    std::unique_ptr<QSocketNotifier> notifier_;
};

}  // namespace vornic

#endif
