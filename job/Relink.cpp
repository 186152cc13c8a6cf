#include "job/Relink.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <utility>

#include "base/CanonicalText.h"
#include "base/FormatString.h"
#include "foundation/places/NameSearch.h"
#include "job/MediaReport.h"
#include "mend/EditList.h"

namespace vornic {

namespace {

constexpr std::string_view kAmbiguous =
    "more than one file may be meant; --pick newest or --pick longest-tail decides";
constexpr std::string_view kTied = "more than one file may be meant, and none stands out";
constexpr std::string_view kNotFound = "no file of this name was found";
constexpr std::string_view kShared =
    "the file that was found would be that of another media file of the project, too";

// The path of each place where a medium is named, in the order of the text.
std::map<std::size_t, MediaPath> pathsOf(const std::vector<Medium>& media) {
    std::map<std::size_t, MediaPath> paths;
    for (const Medium& medium : media) {
        for (const MediaPlace& place : medium.places) {
            paths[place.value.offset] = medium.path;
        }
    }
    return paths;
}

// Whether the places of the new text lead where they should.
bool leadsWhereMeant(const std::vector<Medium>& old, const std::vector<MediumTarget>& targets,
                     const std::string& bytes) {
    ErrorSlot error;
    const std::unique_ptr<ProjectText> project = ProjectText::read(bytes, error);
    if (!project || project->fault()) {
        return false;
    }
    std::vector<Medium> meant = old;
    for (std::size_t index = 0; index < meant.size(); ++index) {
        meant[index].path = targets[index].path.value_or(meant[index].path);
    }
    const auto isSame = [](const auto& left, const auto& right) {
        return left.second == right.second;
    };
    const auto wanted = pathsOf(meant);
    const auto made = pathsOf(mediaOf(project->index(), true));
    return std::equal(wanted.begin(), wanted.end(), made.begin(), made.end(), isSame);
}

}  // namespace

std::vector<Relinker::Decision> Relinker::mapped(const std::vector<Medium>& media) const {
    const bool changesFormAlone = request_.map.isEmpty() && request_.folders.empty();
    std::vector<Decision> decisions(media.size());
    for (std::size_t index = 0; index < media.size(); ++index) {
        MediumTarget& target = decisions[index].target;
        target.form = request_.form;
        target.path = request_.map.apply(media[index].path);
        const bool isAbsolute = media[index].path.style != PathStyle::relative &&
                                media[index].path.style != PathStyle::none;
        if (changesFormAlone && isAbsolute) {
            target.path = media[index].path;
        }
    }
    return decisions;
}

// Where the media will be after the map.
void Relinker::look(const std::vector<Medium>& media, const std::string& path,
                    std::vector<Decision>& decisions) {
    std::vector<Medium> targets(media.size());
    for (std::size_t index = 0; index < media.size(); ++index) {
        targets[index].path = decisions[index].target.path.value_or(media[index].path);
    }
    std::vector<MediaSight> sights = look_.lookFor(targets, path);
    for (std::size_t index = 0; index < media.size(); ++index) {
        decisions[index].sight = std::move(sights[index]);
    }
}

bool Relinker::isToBeSearched(const Medium& medium, const Decision& decision) {
    const MediaState state = decision.sight.state;
    return state != MediaState::there && state != MediaState::otherName &&
           !medium.path.name().empty();
}

void Relinker::prepare(const ProjectText& project, const std::string& path) {
    if (request_.folders.empty()) {
        return;
    }
    const std::vector<Medium> media = mediaOf(project.index(), !project.fault());
    std::vector<Decision> decisions = mapped(media);
    look(media, path, decisions);
    for (std::size_t index = 0; index < media.size(); ++index) {
        if (isToBeSearched(media[index], decisions[index])) {
            wanted_.insert(foldedName(media[index].path.name()));
        }
    }
}

std::vector<std::string> Relinker::search(const StopToken& stop) {
    std::vector<std::string> unread;
    if (wanted_.empty()) {
        return unread;
    }
    std::unordered_set<std::string> seen;
    for (const std::string& folder : request_.folders) {
        if (stop.stopRequested()) {
            break;
        }
        NameSearchResult result = findNames(folder, wanted_, std::chrono::seconds(2), stop);
        unread.insert(unread.end(), result.unread.begin(), result.unread.end());
        const std::size_t depth = localPath(folder).components.size();
        for (NamedFile& file : result.files) {
            // Folders that are searched may lie in each other.
            if (seen.insert(file.path).second) {
                const std::string name = foldedName(localPath(file.path).name());
                found_[name].push_back({std::move(file.path), depth, file.modified});
            }
        }
    }
    return unread;
}

void Relinker::takeFound(const std::vector<Medium>& media, std::vector<Decision>& decisions) const {
    std::unordered_map<std::string, std::size_t> users;
    for (std::size_t index = 0; index < media.size(); ++index) {
        Decision& decision = decisions[index];
        if (decision.sight.state == MediaState::otherName) {
            decision.target.path = localPath(decision.sight.path);
            continue;
        }
        if (!isToBeSearched(media[index], decision)) {
            continue;
        }
        const auto files = found_.find(foldedName(media[index].path.name()));
        if (files == found_.end()) {
            decision.why = kNotFound;
            continue;
        }
        const MediaMatch match = matchOf(media[index].path, files->second, request_.pick);
        for (const std::size_t candidate : match.candidates) {
            decision.candidates.push_back(files->second[candidate].path);
        }
        if (match.file) {
            decision.found = files->second[*match.file].path;
            ++users[decision.found];
        } else {
            decision.why = request_.pick ? kTied : kAmbiguous;
        }
    }
    // Two different files of one name became one: that would be wrong for one of them.
    for (Decision& decision : decisions) {
        if (decision.found.empty()) {
            continue;
        }
        if (users[decision.found] > 1 && !request_.pick) {
            decision.why = kShared;
            decision.candidates.push_back(decision.found);
        } else {
            decision.target.path = localPath(decision.found);
        }
    }
}

RelinkedBytes Relinker::relink(const ProjectText& project, const std::string& bytes,
                               const std::string& path) {
    RelinkedBytes result;
    result.bytes = bytes;
    result.report = headOf(project, bytes.size());
    result.report.path = path;
    const std::vector<Medium> media = mediaOf(project.index(), !project.fault());
    std::vector<Decision> decisions = mapped(media);
    if (!request_.folders.empty()) {
        look(media, path, decisions);
        takeFound(media, decisions);
    }
    std::vector<MediumTarget> targets;
    for (const Decision& decision : decisions) {
        targets.push_back(decision.target);
    }
    const MediaEdits edits = editsFor(project.index(), media, targets);
    std::vector<MediaRecord> records = recordsOf(media, project, true);
    for (std::size_t index = 0; index < media.size(); ++index) {
        records[index].state = decisions[index].sight.state;
        records[index].why = decisions[index].why;
        records[index].candidates = std::move(decisions[index].candidates);
        if (!edits.urls[index].empty()) {
            records[index].newPath = targets[index].path->text();
            records[index].newURL = edits.urls[index];
            records[index].droppedBookmarks = edits.droppedBookmarks[index];
            ++result.relinked;
        }
        result.left += records[index].why.empty() ? 0 : 1;
    }
    std::erase_if(records, [](const MediaRecord& record) {
        return record.newURL.empty() && record.why.empty();
    });
    result.report.media = std::move(records);
    if (edits.edits.empty()) {
        return result;
    }
    const std::optional<EditList> inFile = editsOfFile(edits.edits, project.source());
    std::string made = inFile ? applyEdits(bytes, *inFile) : "";
    if (!inFile) {
        result.refusal =
            formatString("a path cannot be written in %@", project.source().decoding.encoding);
    } else if (!leadsWhereMeant(media, targets, made)) {
        result.refusal = "what would be written does not lead where it should";
    } else {
        result.bytes = std::move(made);
    }
    return result;
}

}  // namespace vornic
