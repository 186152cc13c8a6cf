#ifndef VORNIC_JOB_BATCH_BATCH_LIST_H
#define VORNIC_JOB_BATCH_BATCH_LIST_H

#include <cstddef>
#include <map>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "job/batch/BatchRow.h"
#include "platform/files/FileSystem.h"

namespace vornic {

/// The files of a batch, each once: a file that was added by several paths or links has one row. A
/// few hundred bytes a file. One thread at a time.
class BatchList {
  public:
    /// Device and inode of a file; zeroes where there is none.
    using Identity = std::pair<std::uint64_t, std::uint64_t>;
    /// That of the file that a path leads to. Asks the file system. Any thread.
    [[nodiscard]] static Identity identityAt(const std::string& path);

    /// Adds a file, which need not be there.
    /// @param path absolute
    /// @param identity what `identityAt` tells of it
    /// @return its row.
    std::size_t add(const std::string& path, const Identity& identity);
    /// Another file may have come to the row's path; links that lead to the old one are no longer
    /// names of the row.
    void lookAgain(std::size_t row);
    void clear();

    [[nodiscard]] std::size_t size() const { return rows_.size(); }
    [[nodiscard]] const BatchRow& operator[](std::size_t row) const { return rows_[row].row; }
    [[nodiscard]] BatchRow& operator[](std::size_t row) { return rows_[row].row; }

  private:
    struct Listed {
        BatchRow row;
        Identity identity;
    };

    void addName(Listed& listed, const std::string& path);

    std::vector<Listed> rows_;
    std::unordered_map<std::string, std::size_t> byPath_;
    std::map<Identity, std::size_t> byIdentity_;
};

}  // namespace vornic

#endif
