#ifndef VORNIC_PLATFORM_FILES_TEMPORARY_FILE_H
#define VORNIC_PLATFORM_FILES_TEMPORARY_FILE_H

#include <chrono>
#include <string>
#include <string_view>
#include <vector>

#include "base/Error.h"
#include "platform/files/FileDescriptor.h"

namespace vornic::platform {

/// What the name of an unfinished file ends with.
inline constexpr std::string_view kPartEnding = ".part";

/// New contents for a file, in a file of its own in the same folder that goes when nobody gives it
/// the target's name. Its name ends with ".part" and it is locked as long as it is being written,
/// so that one which a killed process has left behind is known. The parts of `AtomicFile` and
/// `FileReplacement`. One thread at a time.
struct TemporaryFile {
    /// As the caller named it, for messages.
    std::string path;
    /// What the path leads to, links followed.
    std::string target;
    /// Where the new contents are; "" once they have the target's name or are gone.
    std::string temporary;
    /// The file that is replaced; closed when there is none.
    FileDescriptor old;
    FileDescriptor file;

    TemporaryFile() = default;
    ~TemporaryFile() { discard(); }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    /// Finds the target and makes the file.
    [[nodiscard]] bool open(const std::string& wantedPath, ErrorSlot& error);
    /// Takes the ending off the name: what stands there from now on need not be this file, and must
    /// not be taken for what a killed process has left. @return 0 or the errno value.
    [[nodiscard]] int becomeExchangeable();
    void discard();

  private:
    [[nodiscard]] int findTarget();
    [[nodiscard]] int makeTemporary();
};

/// Removes what killed processes of this user have left in a folder while they were writing: files
/// that end with ".part", that no process has locked, and that nothing has changed for a time. Of
/// several calls in a row for one folder only the first one looks into it. Any thread.
void removeDeadTemporaries(const std::string& folder,
                           std::chrono::seconds age = std::chrono::minutes(10));

/// A file that a killed process has left under a hidden name. Locked while the object lives, so
/// that it is found once.
struct LeftFile {
    FileDescriptor file;
    std::string path;
    /// What it was called, cut where that was long.
    std::string original;
};

/// Finds what killed processes of this user have left in a folder under a hidden name without the
/// ending, while they exchanged or moved files: it may be the user's, so that nobody may remove it.
/// For locks, age and several calls in a row the same holds as for `removeDeadTemporaries`; the age
/// may be less, since nothing gets lost when it is too little.
[[nodiscard]] std::vector<LeftFile> filesLeftAside(
    const std::string& folder, std::chrono::seconds age = std::chrono::minutes(1));

}  // namespace vornic::platform

#endif
