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

    /// Adds a file, which need not be there. Without memory for it the list is as it was.
    /// @param path absolute
    /// @param identity what `identityAt` returned for it
    /// @return its row.
    std::size_t add(const std::string& path, const Identity& identity);
    /// What the file system says about a row's paths.
    struct Look {
        Identity identity;
        /// Other paths that lead to another file now.
        std::vector<std::string> gone;
    };
    /// Looks whether another file has come to a row's path, and which other paths still lead there.
    /// Asks the file system. Any thread.
    [[nodiscard]] static Look look(const std::string& path,
                                   const std::vector<std::string>& otherPaths);
    /// Takes what `look` has told: paths that lead elsewhere are no longer names of the row.
    void take(std::size_t row, const Look& look);
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
    void addRow(const std::string& path, const Identity& identity);

    std::vector<Listed> rows_;
    std::unordered_map<std::string, std::size_t> byPath_;
    std::map<Identity, std::size_t> byIdentity_;
};

}  // namespace vornic

#endif
