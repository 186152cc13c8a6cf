#ifndef VORNIC_APP_WINDOW_MEDIA_TABLE_H
#define VORNIC_APP_WINDOW_MEDIA_TABLE_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "report/MediaRecord.h"

namespace vornic {

/// A media file that a project names, as a window lists it.
struct MediaTableRow {
    /// The file's name, and where the project says that it is; either may be "".
    std::string name;
    std::string folder;
    MediaState state = MediaState::unknown;
    /// Clips, in sequences and elsewhere.
    std::uint64_t uses = 0;
    /// Where it is on this computer, or should be; "" for a path of another computer.
    std::string pathHere;
    /// Where the project names it first, from 1.
    std::size_t line = 0;
};

/// The media files of a project, in the order in which it names them.
struct MediaTable {
    std::vector<MediaTableRow> rows;
    /// Why there are none, or not all, as a sentence; "" otherwise.
    std::string failure;

    [[nodiscard]] std::size_t missing() const;
    /// "12 media files, 2 of them are not there", or the failure.
    [[nodiscard]] std::string summary() const;
    /// Folders that hold what is not there, each once, those with the most first.
    [[nodiscard]] std::vector<std::string> missingFolders() const;
};

/// Whether programs find a media file by what the project says. One whose name is spelt otherwise
/// is not where macOS and Linux look for it.
[[nodiscard]] bool isThere(MediaState state);
/// For a table: "There", "Missing", "Other spelling", "Is a folder", "Not readable",
/// "Volume not there", "No answer", "Other computer", "Not looked for".
[[nodiscard]] std::string_view wordOf(MediaState state);

/// Reads the media files of a project file and looks where they are. Nothing is written; a volume
/// that does not answer holds this up for two seconds. Any thread.
[[nodiscard]] MediaTable mediaTableOf(const std::string& path);

}  // namespace vornic

#endif
