#ifndef VORNIC_JOB_CHANGE_HISTORY_H
#define VORNIC_JOB_CHANGE_HISTORY_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "job/JournalEntry.h"

namespace vornic {

/// In which order changes are taken back: those of one file newest first, and when all of them have
/// been, the last undo itself.
class ChangeHistory {
  public:
    /// Takes in the next entry of the journal. One that was not done, and one that is known
    /// already, counts for nothing.
    void add(const JournalEntry& entry);

    /// What is to be taken back next of a file; nothing when nothing was ever done to it.
    [[nodiscard]] std::optional<JournalEntry> next(const std::string& file) const;
    /// The newest change that has not been taken back, of whatever file.
    [[nodiscard]] std::optional<JournalEntry> newest() const;
    /// What is to be taken back next of each file, newest first.
    [[nodiscard]] std::vector<JournalEntry> all() const;

  private:
    struct Numbered {
        std::size_t number = 0;
        JournalEntry entry;
    };
    // Newest last.
    struct FileHistory {
        std::vector<Numbered> done;
        std::vector<Numbered> takenBack;
    };

    [[nodiscard]] static const Numbered* nextOf(const FileHistory& history);

    std::unordered_map<std::string, FileHistory> files_;
    std::unordered_set<std::uint64_t> known_;
    std::size_t count_ = 0;
};

}  // namespace vornic

#endif
