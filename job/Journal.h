#ifndef VORNIC_JOB_JOURNAL_H
#define VORNIC_JOB_JOURNAL_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/Error.h"
#include "job/JournalEntry.h"
#include "job/JournalText.h"
#include "platform/files/FileDescriptor.h"
#include "platform/locks/ByteLock.h"

namespace vornic {

/// What was changed in its place, and where the old files are: a text file of the user's alone that
/// only grows, but for entries older than 90 days and all but the newest 100,000, which are taken
/// out now and then. Several programs write it at once. A journal that belongs to somebody else is
/// neither believed nor written: what it says would be done with the caller's rights. Any thread;
/// an object may be used by several.
class Journal {
  public:
    /// A change that has been announced. While it lives nobody takes it for interrupted.
    class Run {
      public:
        [[nodiscard]] const JournalEntry& entry() const { return entry_; }

      private:
        friend class Journal;
        Run(JournalEntry entry, platform::ByteLock lock)
            : entry_(std::move(entry)), lock_(std::move(lock)) {}

        JournalEntry entry_;
        platform::ByteLock lock_;
    };

    /// How many entries are kept, for how many seconds.
    struct Limits {
        std::size_t entries = 100'000;
        std::int64_t age = std::int64_t{90} * 24 * 60 * 60;
    };

    /// How far somebody has read.
    struct Position {
        std::uint64_t inode = 0;
        std::size_t offset = 0;
    };

    /// What was written since.
    struct News {
        /// Oldest first, those within the limits. One that others were still open before may be
        /// told more than once.
        std::vector<JournalEntry> entries;
        /// Whether the journal was written anew, so that these are all that there are.
        bool isAnew = false;
    };

    /// The journal of the user: "Journal/Vornic.journal" in the Library folder.
    /// @return nothing without a home folder.
    [[nodiscard]] static std::optional<Journal> ofUser();
    explicit Journal(std::string path) : path_(std::move(path)) {}
    Journal(std::string path, const Limits& limits) : path_(std::move(path)), limits_(limits) {}

    [[nodiscard]] const std::string& path() const { return path_; }

    /// Announces a change; it is on the disk when this returns. Number, date and state are set
    /// here.
    /// @return nothing, with the slot filled, when it could not be written.
    [[nodiscard]] std::optional<Run> begin(JournalEntry entry, ErrorSlot& error) const;
    /// The change was made; that is on the disk when this returns.
    /// @param original where the old file lies in the Trash
    [[nodiscard]] bool finish(Run run, const std::string& original, ErrorSlot& error) const;
    /// The change was not made, or has been taken back.
    [[nodiscard]] bool takeBack(Run run, ErrorSlot& error) const;

    /// All entries within the limits, oldest first.
    /// @return nothing, with the slot filled, when the file is there and cannot be read, or is not
    ///     the user's own.
    [[nodiscard]] std::optional<std::vector<JournalEntry>> entries(ErrorSlot& error) const;
    /// The entries behind a position, which moves on. Fails like `entries`.
    [[nodiscard]] std::optional<News> entriesSince(Position& position, ErrorSlot& error) const;

    /// Claims a user's file for a run that changes names by what the journal says, as long as the
    /// object lives. It binds those alone who ask for it.
    /// @param file as the journal names it
    /// @param limit how long another run is waited for
    /// @return nothing, with the slot filled, while another run has it (EAGAIN), or when the lock
    ///     file cannot be used.
    [[nodiscard]] std::optional<platform::ByteLock> claim(const std::string& file,
                                                          std::chrono::milliseconds limit,
                                                          ErrorSlot& error) const;

    /// Takes over the changes that no living program will end: whoever gets them ends them. Costs
    /// next to nothing when nothing was written since the last call. Keeps the limits.
    [[nodiscard]] std::vector<Run> takeInterrupted() const;

  private:
    [[nodiscard]] std::string lockPath() const;
    [[nodiscard]] std::string settledPath() const;
    [[nodiscard]] bool append(std::string_view line, ErrorSlot& error) const;
    [[nodiscard]] bool end(Run run, ErrorSlot& error) const;
    [[nodiscard]] platform::FileDescriptor open(int flags, ErrorSlot& error) const;
    [[nodiscard]] std::optional<JournalContents> read(std::size_t offset, ErrorSlot& error) const;
    [[nodiscard]] std::vector<Run> takeOver(const JournalContents& contents) const;
    void keepLimits(std::vector<JournalEntry>& entries) const;
    void dropEnded(std::vector<Run>& runs, std::size_t offset) const;
    void trim() const;
    [[nodiscard]] bool isWithinLimits(const JournalEntry& entry) const;

    std::string path_;
    Limits limits_;
};

}  // namespace vornic

#endif
