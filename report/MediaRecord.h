#ifndef VORNIC_REPORT_MEDIA_RECORD_H
#define VORNIC_REPORT_MEDIA_RECORD_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "report/Place.h"

namespace vornic {

/// Whether a media file is where the project says.
enum class MediaState {
    /// Nobody has looked.
    unknown,
    there,
    missing,
    /// There is nothing of that name, but something whose name differs by the case of letters or by
    /// Unicode normalisation only.
    otherName,
    /// A folder stands there.
    folder,
    /// It may not be read.
    unreadable,
    /// It is on a volume that is not mounted.
    notMounted,
    /// Its volume did not answer in time.
    noAnswer,
    /// The path is one of another computer.
    elsewhere,
};

/// In reports: "unknown", "there", "missing", "other-name", "folder", "unreadable", "not-mounted",
/// "no-answer", "elsewhere".
[[nodiscard]] constexpr std::string_view nameOf(MediaState state) {
    constexpr std::string_view kNames[] = {"unknown",     "there",     "missing",
                                           "other-name",  "folder",    "unreadable",
                                           "not-mounted", "no-answer", "elsewhere"};
    return kNames[static_cast<std::size_t>(state)];
}

/// A media file that a project names, as reports describe it.
struct MediaRecord {
    /// A time: exact, as FCPXML writes it ("1001/24000s"), and in seconds ("0.042"); both "" where
    /// it is not known.
    struct Time {
        std::string exact;
        std::string seconds;
    };
    struct Clip {
        std::string name;
        std::uint64_t count = 0;
    };

    /// Decoded, with forward slashes.
    std::string path;
    /// As the project has it.
    std::string url;
    /// How that is written: "localhost", "triple-slash" and so on.
    std::string form;
    /// What the project calls it, "" for nothing.
    std::string name;
    /// "" for the media themselves, else what the project says, such as "proxy-media".
    std::string kind;
    /// Where it is named first, and how often it is named.
    Place where;
    std::uint64_t places = 0;
    std::vector<Clip> clips;
    /// Clips in sequences.
    std::uint64_t uses = 0;
    /// Clips that only lie in bins or events.
    std::uint64_t browserClips = 0;
    Time usedStart;
    Time usedEnd;
    Time start;
    Time duration;
    /// Frames a second, "" where the project does not say.
    std::string rate;
    std::optional<std::uint64_t> videoTracks;
    std::optional<std::uint64_t> audioTracks;

    MediaState state = MediaState::unknown;
    /// Where it is, for `otherName`.
    std::string found;

    /// Where it was relinked to; "" when it was not.
    std::string newPath;
    std::string newURL;
    /// Why it was not, though it is missing or a file was found; "" otherwise.
    std::string why;
    /// Files that it may be, where more than one was found.
    std::vector<std::string> candidates;
    /// Bookmarks that were dropped, since they would lead back.
    std::uint64_t droppedBookmarks = 0;
};

}  // namespace vornic

#endif
