#ifndef VORNIC_JOB_IN_PLACE_CHANGE_H
#define VORNIC_JOB_IN_PLACE_CHANGE_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/Error.h"
#include "job/SwapObserver.h"
#include "job/SwapResult.h"
#include "job/Waiting.h"
#include "job/WorkingCopy.h"
#include "platform/files/ContentDigest.h"

namespace vornic {

/// How a file was changed in its place.
struct InPlaceResult {
    /// Where the files are; nothing when it was not begun.
    std::optional<SwapResult> swap;
    /// What of the file's mode, owner and attributes the new one could not be given, in words.
    std::string lostMetadata;
    /// What else the user should know, a sentence each.
    std::vector<std::string> notes;
    /// Why the file could not be read, or was left as it is.
    ErrorSlot error;
    bool isCancelled = false;
};

/// Puts new bytes into the place of a user's file: they are written into a hidden working copy
/// beside it, which takes its path, and the original goes to the Trash. A file that another program
/// changes meanwhile stays what that program made of it. The working copy goes when it does not
/// take the file's place. Call `read`, `write`, `finish` and `takeNotes`, in this order. One
/// thread.
class InPlaceChange {
  public:
    /// What is done to the file, in words.
    struct Words {
        /// In the name of the hidden copy: "mend".
        std::string verb;
        /// In errors: "mended".
        std::string participle;
    };

    /// All must outlive this.
    InPlaceChange(const std::string& path, Words words, const Waiting& waiting,
                  InPlaceResult& result);
    ~InPlaceChange();
    InPlaceChange(const InPlaceChange&) = delete;
    InPlaceChange& operator=(const InPlaceChange&) = delete;

    /// Waits for a run that changes the file in this way, clears what a killed one has left, and
    /// reads the file.
    /// @param expected of the bytes that the change is meant for; nothing for any
    /// @return nothing, with the result filled, when it cannot be read, has other bytes, or the
    ///     wait was ended
    [[nodiscard]] std::optional<std::string> read(
        const std::optional<platform::ContentDigest::Value>& expected = std::nullopt);
    /// The same without a digest of the bytes, which `expect` takes later, while others are at
    /// work on them.
    [[nodiscard]] std::optional<std::string> readUndigested();
    /// Takes the digest of what `readUndigested` gave. Without it no file is swapped.
    void expect(std::string_view bytesRead);
    /// Waits and clears as `read` does, for a file that turned out to need no change.
    void clearLeft();
    /// Writes the new bytes and brings them to the disk; the last ones that it is given count.
    void write(const std::string& bytes);
    /// The same with bytes that are handed over piece by piece.
    void write(const WorkingCopy::Writer& bytes);
    /// Ends the change. @param isWanted false to leave the file as it is after all
    void finish(bool isWanted, SwapObserver& observer);
    void takeNotes();

  private:
    [[nodiscard]] bool isLeft() const;
    bool make();
    bool save(const WorkingCopy::Writer& bytes);
    void swap(SwapObserver& observer);
    void takeOutcome();

    const std::string& path_;
    Words words_;
    platform::ContentDigest::Value digestRead_{};
    WorkingCopy copy_;
    InPlaceResult& result_;
    bool isWritten_ = false;
    bool isRemoved_ = false;
};

}  // namespace vornic

#endif
