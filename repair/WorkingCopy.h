#ifndef VORNIC_REPAIR_WORKING_COPY_H
#define VORNIC_REPAIR_WORKING_COPY_H

#include <optional>
#include <string>

#include "platform/AtomicFile.h"
#include "platform/Error.h"
#include "platform/FileDescriptor.h"
#include "platform/FolderLock.h"
#include "xml/XMLDocument.h"

namespace vornic {

/// The copy of the user's file that a repair works on, beside that file. Another repair of the same
/// file may run at once, in this program or another one: it wants the same path, so that what
/// stands there is looked at before it is read, moved, removed or written, and what is not this
/// run's own is left alone or made anew. Where a look and a move belong together, the runs take
/// turns. One thread at a time; nothing is raised.
class WorkingCopy {
  public:
    enum class Swap {
        /// The source is in the Trash and the copy has its path.
        done,
        /// The copy was replaced by another run; nothing was touched.
        foreign,
        /// This run has saved nothing as the copy; nothing was touched.
        unsaved,
        /// The source could not be moved, which is in the log, or the copy could not, which is in
        /// the slot.
        failed,
    };

    WorkingCopy(std::string source, std::string path);

    [[nodiscard]] const std::string& path() const { return path_; }
    [[nodiscard]] bool sourceExists() const;
    /// Moves what stands at the path, an older working copy, to the Trash. @return false when that
    /// fails.
    [[nodiscard]] bool recycleOld() const;
    /// Copies the source, links followed, to the path. @return false with the slot filled.
    [[nodiscard]] bool create(ErrorSlot& error);
    /// The bytes of the copy, or nothing with the slot filled.
    [[nodiscard]] std::optional<std::string> read(ErrorSlot& error);
    /// Writes the document, atomically, as the copy, which keeps the source's mode, owner and
    /// attributes. Fills the slot on failure.
    void save(const XMLDocument& document, ErrorSlot& error);
    /// Removes the copy. Fills the slot on failure; another run's is left there and is no failure.
    void remove(ErrorSlot& error) const;
    /// Moves the source to the Trash and then, when that has succeeded, the copy to its path.
    [[nodiscard]] Swap swap(ErrorSlot& error) const;

  private:
    [[nodiscard]] platform::FolderLock turn() const;
    [[nodiscard]] bool moveToTrash(const std::string& path, ErrorSlot& error) const;
    [[nodiscard]] bool isOwn() const;
    // These three are called in this run's turn.
    bool copySource(ErrorSlot& error);
    // Makes the copy anew where it is not this run's own any more.
    bool ensureOwn(ErrorSlot& error);
    void hold();
    bool openToSave(platform::AtomicFile& file, ErrorSlot& error);

    std::string source_;
    std::string path_;
    std::string folder_;
    // The file that this run last put at the path. Held open, so that no file of another run can
    // come by its inode number.
    platform::FileDescriptor own_;
    // True when that file is one that this run has saved, no mere copy of the source.
    bool isSaved_ = false;
};

}  // namespace vornic

#endif
