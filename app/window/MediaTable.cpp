#include "app/window/MediaTable.h"

#include <algorithm>
#include <array>
#include <map>
#include <memory>
#include <optional>
#include <utility>

#include "app/window/HeaderText.h"
#include "base/FormatString.h"
#include "job/MediaLook.h"
#include "job/MediaReport.h"
#include "job/ProjectText.h"
#include "media/MediaList.h"
#include "platform/files/FileSystem.h"

namespace vornic {

namespace {

std::string folderOf(const MediaPath& path) {
    MediaPath folder = path;
    if (!folder.components.empty()) {
        folder.components.pop_back();
    }
    return folder.text();
}

MediaTableRow rowOf(const Medium& medium, MediaState state, const std::string& project) {
    const bool isPath = medium.path.style != PathStyle::none;
    return {.name = isPath ? medium.path.name() : medium.url,
            .folder = isPath ? folderOf(medium.path) : "",
            .state = state,
            .uses = medium.uses + medium.browserClips,
            .pathHere = pathHere(medium.path, project)};
}

}  // namespace

std::size_t MediaTable::missing() const {
    return static_cast<std::size_t>(std::count_if(
        rows.begin(), rows.end(), [](const MediaTableRow& row) { return !isThere(row.state); }));
}

std::string MediaTable::summary() const {
    if (!failure.empty()) {
        return failure;
    }
    const std::string all = counted(rows.size(), "media file", "media files");
    const std::size_t gone = missing();
    if (rows.empty()) {
        return "The file names no media.";
    }
    return gone == 0 ? all + ", all of them there"
                     : formatString("%@, %@ not there", all,
                                    gone == rows.size() && gone != 1 ? "all" : withThousands(gone));
}

std::vector<std::string> MediaTable::missingFolders() const {
    std::map<std::string, std::size_t> counts;
    for (const MediaTableRow& row : rows) {
        if (!isThere(row.state) && !row.folder.empty()) {
            ++counts[row.folder];
        }
    }
    std::vector<std::string> folders;
    for (const auto& [folder, count] : counts) {
        folders.push_back(folder);
    }
    std::stable_sort(folders.begin(), folders.end(),
                     [&](const std::string& left, const std::string& right) {
                         return counts[left] > counts[right];
                     });
    return folders;
}

bool isThere(MediaState state) {
    return state == MediaState::there;
}

std::string_view wordOf(MediaState state) {
    constexpr std::array<std::string_view, 9> kWords = {
        "Not looked for",   "There",       "Missing",
        "Other spelling",   "Is a folder", "Not readable",
        "Volume not there", "No answer",   "Other computer"};
    return kWords.at(static_cast<std::size_t>(state));
}

MediaTable mediaTableOf(const std::string& path) {
    MediaTable table;
    ErrorSlot error;
    std::optional<std::string> bytes = platform::readFile(path, error);
    const std::unique_ptr<ProjectText> project =
        bytes ? ProjectText::read(std::move(*bytes), error) : nullptr;
    if (!project) {
        table.failure = error ? error->localizedDescription() : "The file cannot be read.";
        return table;
    }
    const FileKind kind = project->index().kind();
    if (kind != FileKind::fcpxml && kind != FileKind::xmeml) {
        table.failure = "The file is neither XMEML nor FCPXML, so that it names no media.";
        return table;
    }
    if (project->fault()) {
        table.failure = "The file is damaged; what follows the damage is not listed. " +
                        project->fault()->localizedDescription();
    }
    const std::vector<Medium> media = mediaOf(project->index(), !project->fault());
    MediaLook look;
    const std::vector<MediaSight> sights = look.lookFor(media, path);
    const std::vector<MediaRecord> records = recordsOf(media, *project, true);
    for (std::size_t index = 0; index < media.size(); ++index) {
        table.rows.push_back(rowOf(media[index], sights[index].state, path));
        table.rows.back().line = records[index].where.line;
    }
    return table;
}

}  // namespace vornic
