#ifndef VORNIC_APP_WINDOW_MEDIA_ACTIONS_H
#define VORNIC_APP_WINDOW_MEDIA_ACTIONS_H

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/window/FileActions.h"
#include "job/Relink.h"
#include "report/MediaRecord.h"

namespace vornic {

/// What relinking the media of a file would do, to be looked at.
struct RelinkPreview {
    /// A media file that would be looked for elsewhere.
    struct Move {
        std::string oldPath;
        std::string newPath;
        /// Whether it is there.
        MediaState state = MediaState::unknown;
    };
    /// One that would be left as it is, although it is not there.
    struct Stay {
        std::string path;
        /// As part of a sentence.
        std::string why;
        /// Files that it may be.
        std::vector<std::string> candidates;
    };

    std::vector<Move> moves;
    std::vector<Stay> stays;
    /// Folders that could not be looked through.
    std::vector<std::string> unread;
    /// Of what is moved; they would lead back, and go.
    std::uint64_t droppedBookmarks = 0;
    /// Why nothing can be done, as a sentence; "" otherwise.
    std::string refusal;
    /// What the file has, and would have.
    std::shared_ptr<const std::string> oldBytes;
    std::shared_ptr<const std::string> newBytes;
};

/// Searches a folder for the media of a file that are not there. Nothing is written. May take as
/// long as the folder is large. Any thread.
/// @param pick what decides between several files of one name; nothing leaves such a medium alone
[[nodiscard]] RelinkPreview previewSearch(const std::string& path, const std::string& folder,
                                          std::optional<Pick> pick);
/// Takes another folder for all media of a file in one folder, and in those below it. Nothing is
/// written. Any thread.
/// @param oldFolder,newFolder as a user types them: paths of macOS, Linux or Windows, or URLs
[[nodiscard]] RelinkPreview previewFolderChange(const std::string& path,
                                                const std::string& oldFolder,
                                                const std::string& newFolder);

/// Makes what was looked at, in place of the file; the original goes to the Trash and can be
/// restored. A file that has changed since is left alone. Any thread; may wait for other programs.
[[nodiscard]] FileActionResult relinkAsShown(const std::string& path, const RelinkPreview& preview,
                                             const std::string& program,
                                             const std::string& version);

}  // namespace vornic

#endif
