#include "app/window/MediaActions.h"

#include <utility>

#include "app/window/LoggedWaiting.h"
#include "base/FormatString.h"
#include "job/JournaledSwap.h"
#include "job/MediaLook.h"
#include "job/ProjectText.h"
#include "job/RelinkFile.h"
#include "media/MediaPath.h"
#include "platform/files/FileSystem.h"

namespace vornic {

namespace {

// What follows a semicolon names options of the command line.
std::string withoutOptions(const std::string& why) {
    return why.substr(0, why.find("; --"));
}

void takeRecords(std::vector<MediaRecord>& records, RelinkPreview& preview) {
    for (MediaRecord& record : records) {
        if (!record.newURL.empty()) {
            preview.moves.push_back({record.path, record.newPath, MediaState::unknown});
            preview.droppedBookmarks += record.droppedBookmarks;
        } else if (!record.why.empty()) {
            preview.stays.push_back(
                {record.path, withoutOptions(record.why), std::move(record.candidates)});
        }
    }
}

void lookForMoved(const std::string& path, RelinkPreview& preview) {
    std::vector<Medium> moved(preview.moves.size());
    for (std::size_t index = 0; index < moved.size(); ++index) {
        moved[index].path = readTypedPath(preview.moves[index].newPath);
    }
    MediaLook look;
    const std::vector<MediaSight> sights = look.lookFor(moved, path);
    for (std::size_t index = 0; index < moved.size(); ++index) {
        preview.moves[index].state = sights[index].state;
    }
}

RelinkPreview previewOf(const std::string& path, const RelinkRequest& request) {
    RelinkPreview preview;
    ErrorSlot error;
    std::optional<std::string> bytes = platform::readFile(path, error);
    const std::unique_ptr<ProjectText> project = bytes ? ProjectText::read(*bytes, error) : nullptr;
    if (!project) {
        preview.refusal = error ? error->localizedDescription() : "The file cannot be read.";
        return preview;
    }
    if (project->fault()) {
        preview.refusal =
            "The file is damaged; repair it first. " + project->fault()->localizedDescription();
        return preview;
    }
    Relinker relinker(request);
    relinker.prepare(*project, path);
    preview.unread = relinker.search();
    RelinkedBytes relinked = relinker.relink(*project, *bytes, path);
    if (!relinked.refusal.empty()) {
        preview.refusal = formatString("Nothing can be relinked: %@.", relinked.refusal);
        return preview;
    }
    takeRecords(*relinked.report.media, preview);
    lookForMoved(path, preview);
    preview.oldBytes = std::make_shared<const std::string>(std::move(*bytes));
    preview.newBytes = std::make_shared<const std::string>(std::move(relinked.bytes));
    return preview;
}

}  // namespace

RelinkPreview previewSearch(const std::string& path, const std::string& folder,
                            std::optional<Pick> pick) {
    RelinkRequest request;
    request.folders.push_back(folder);
    request.pick = pick;
    return previewOf(path, request);
}

RelinkPreview previewFolderChange(const std::string& path, const std::string& oldFolder,
                                  const std::string& newFolder) {
    RelinkRequest request;
    if (!request.map.add(readTypedPath(oldFolder), readTypedPath(newFolder))) {
        RelinkPreview preview;
        preview.refusal = "Two whole paths are needed, such as /Volumes/Old and /Volumes/New.";
        return preview;
    }
    return previewOf(path, request);
}

FileActionResult relinkAsShown(const std::string& path, const RelinkPreview& preview,
                               const std::string& program, const std::string& version) {
    FileActionResult action;
    const Waiting waiting = loggedWaiting();
    JournaledSwap journaled(program, version, JournalEntry::Action::relink);
    InPlaceResult result =
        relinkInPlace(path, *preview.oldBytes, *preview.newBytes, waiting, journaled);
    action.isUndoable = journaled.isWrittenDown();
    takeResult(path, result, action);
    return action;
}

}  // namespace vornic
