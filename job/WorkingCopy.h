#ifndef VORNIC_JOB_WORKING_COPY_H
#define VORNIC_JOB_WORKING_COPY_H

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/Error.h"
#include "job/Note.h"
#include "job/SavedCopy.h"
#include "job/SourceFile.h"
#include "job/SwapObserver.h"
#include "job/SwapResult.h"
#include "job/Waiting.h"
#include "platform/files/CarefulRemoval.h"
#include "platform/files/ContentsWatcher.h"
#include "platform/files/FileDescriptor.h"

namespace vornic {

/// The copy of the user's file that a repair works on, beside that file. The run claims it from the
/// moment at which it has its name, so that another run that wants the same path, in this process
/// or another one, waits. What another program puts at the path all the same is never read, removed
/// or taken for the run's own, but moved to the Trash when the run needs the place. One thread;
/// nothing is raised but for memory that has run out.
class WorkingCopy {
  public:
    enum class Clearing {
        done,
        /// The user has cancelled while the run waited for another one.
        cancelled,
        /// What stands at the path is a file that the user has named.
        refused,
        /// It cannot be determined whether another run uses the path.
        noTurn,
        failed,
    };
    /// When what is written goes to the disk.
    enum class Sending {
        /// When the system likes: most working copies are deleted again.
        bySystem,
        /// While it is written, for a copy that is synced next.
        atOnce,
    };
    /// Takes the pieces of a file in their order. @return false when no more must come.
    using Sink = std::function<bool(std::string_view piece)>;
    /// Hands a file over piece by piece. @return false when the sink stopped it.
    using Writer = std::function<bool(const Sink& sink)>;

    /// @param source the user's file, best absolute
    /// @param path the copy's, in the same folder
    WorkingCopy(std::string source, std::string path, Waiting waiting);

    [[nodiscard]] const std::string& path() const { return path_; }
    [[nodiscard]] bool sourceExists() const;
    /// Finds what a run that was killed while it swapped this source has left aside: gives it the
    /// source's path when nothing stands there, else moves it to the Trash. What killed runs have
    /// left besides in the folder is cleared. Waits for a run that is swapping right now.
    /// @return false when the user has cancelled the wait.
    [[nodiscard]] bool settleLeft();
    /// Moves what stands at the path, an older working copy, to the Trash, when no other run uses
    /// it any more; a note for the log says where it lies. A file that the user has named
    /// (`NamedSource`) is left alone. The slot says why it failed.
    [[nodiscard]] Clearing clearPath(ErrorSlot& error);
    /// Copies the source, links followed, to the path, and claims the copy. A source that is larger
    /// than the free memory is refused, since it could not be read.
    /// @return `done`, or the slot is filled unless the user has cancelled.
    [[nodiscard]] Clearing create(ErrorSlot& error) { return create(Contents::ofSource, error); }
    /// The same with an empty file, for a run that has its bytes and saves them at once.
    [[nodiscard]] Clearing createEmpty(ErrorSlot& error) { return create(Contents::none, error); }
    /// The bytes of the source as they are now. The copy was made of these, but other programs know
    /// its name, and what they write there is not the user's file. A reading that failed is tried
    /// once more. Bytes that are not those of an earlier reading keep the copy from being swapped.
    /// @param watcher shown what is read; null for none
    /// @return nothing with the slot filled.
    [[nodiscard]] std::optional<std::string> read(ErrorSlot& error,
                                                  platform::ContentsWatcher* watcher = nullptr);
    /// In place of `read`, for a source whose bytes were read before: with others it is not
    /// swapped.
    void expect(const platform::ContentDigest::Value& digest);
    /// Writes the file anew, atomically, with the source's mode, owner and attributes. Fills the
    /// slot on failure, after which the copy is as it was.
    void save(const Writer& write, ErrorSlot& error, Sending sending = Sending::bySystem);
    /// Brings what was saved to the disk, for which `swap` waits otherwise. A failure comes again
    /// in `swap`, which reports it.
    void synchronize() const;
    /// Removes the copy. Fills the slot on failure; another program's file is left there, which is
    /// no failure but a note for the log.
    void remove(ErrorSlot& error);
    /// The same without a need for memory, for the end of a run that came to nothing.
    /// @return 0, or the errno value when the copy is still there
    [[nodiscard]] int discard() noexcept;
    /// True once `create` has made the copy.
    [[nodiscard]] bool isMade() const { return static_cast<bool>(own_.file); }
    /// Whether another program is at work on the source: what it writes after a swap would go to
    /// the original in the Trash.
    [[nodiscard]] bool isSourceBeingWritten() const;
    /// Puts the saved copy in the place of the source, which goes to the Trash.
    [[nodiscard]] SwapResult swap(SwapObserver& observer);

    /// What of the source's mode, owner and attributes the saved copy could not be given, in words;
    /// empty when nothing is missing. An owner that this user cannot give and a volume without
    /// attributes count for nothing.
    [[nodiscard]] const std::string& lostMetadata() const { return lostMetadata_; }
    /// Where an older file at the copy's path lies in the Trash, when there was one.
    [[nodiscard]] const std::vector<std::string>& recycled() const { return recycled_; }
    /// What the report, or the log, should tell besides, since the last call.
    [[nodiscard]] std::vector<Note> takeNotes();

  private:
    enum class Contents { ofSource, none };

    [[nodiscard]] Clearing create(Contents contents, ErrorSlot& error);
    [[nodiscard]] bool recycleLeft(const std::string& at, const std::string& name,
                                   ErrorSlot& error);
    [[nodiscard]] bool isTooLarge(ErrorSlot& error) const;
    // Makes a claimed file under a name that no other program knows.
    [[nodiscard]] bool makeTemporary(SavedCopy& copy, ErrorSlot& error) const;
    [[nodiscard]] bool fill(SavedCopy& copy, Contents contents, ErrorSlot& error) const;
    [[nodiscard]] bool write(SavedCopy& copy, const Writer& writer, Sending sending,
                             ErrorSlot& error);
    [[nodiscard]] bool place(SavedCopy& copy, ErrorSlot& error);
    [[nodiscard]] int takeName(const SavedCopy& copy, ErrorSlot& error);
    [[nodiscard]] int takeNameInSteps(const SavedCopy& copy, ErrorSlot& error);
    [[nodiscard]] ErrnoOr<platform::Removal> removeOwn() const;

    std::string source_;
    std::string path_;
    Waiting waiting_;
    std::optional<SourceFile> opened_;
    // The file that this run last put at the path.
    SavedCopy own_;
    // A free name beside it, for its removal.
    std::string discardPath_;
    // True once everything has been written into it.
    bool isWhole_ = false;
    // True when that file is one that this run has saved, no mere copy of the source.
    bool isSaved_ = false;
    // True when the source was read twice and was not the same.
    bool isTorn_ = false;
    std::string lostMetadata_;
    std::vector<std::string> recycled_;
    std::vector<Note> notes_;
};

}  // namespace vornic

#endif
