#include "job/MediaLook.h"

#include <optional>
#include <utility>

#include "base/FormatString.h"
#include "base/PathText.h"
#include "platform/files/FileSystem.h"
#include "xml/text/TextPlace.h"

namespace vornic {

namespace {

MediaState stateOf(const PathSight& sight) {
    switch (sight.kind) {
        case PathSight::Kind::file:
            return sight.hasOtherName ? MediaState::otherName : MediaState::there;
        case PathSight::Kind::folder:
            return MediaState::folder;
        case PathSight::Kind::missing:
            return MediaState::missing;
        case PathSight::Kind::special:
        case PathSight::Kind::unreadable:
            return MediaState::unreadable;
        case PathSight::Kind::notMounted:
            return MediaState::notMounted;
        default:
            return MediaState::noAnswer;
    }
}

std::optional<RuleId> ruleFor(MediaState state) {
    switch (state) {
        case MediaState::missing:
            return "media-missing"_rule;
        case MediaState::otherName:
            return "media-other-name"_rule;
        case MediaState::folder:
            return "media-folder"_rule;
        case MediaState::unreadable:
            return "media-unreadable"_rule;
        case MediaState::notMounted:
            return "media-not-mounted"_rule;
        case MediaState::noAnswer:
            return "media-no-answer"_rule;
        case MediaState::elsewhere:
            return "media-elsewhere"_rule;
        default:
            return std::nullopt;
    }
}

std::string usesOf(const Medium& medium) {
    const std::uint64_t clips = medium.uses + medium.browserClips;
    return clips == 0 ? "no clip uses"
                      : formatString("%llu %@", clips, clips == 1 ? "clip uses" : "clips use");
}

}  // namespace

std::string pathHere(const MediaPath& path, const std::string& project) {
    if (path.style == PathStyle::posix) {
        return path.text();
    }
    if (path.style != PathStyle::relative) {
        return "";
    }
    const std::string folder = project == "-" ? "." : parentFolder(project);
    return joinPath(platform::absolutePath(folder).value_or("/"), path.text());
}

std::vector<MediaSight> MediaLook::lookFor(const std::vector<Medium>& media,
                                           const std::string& project) {
    const std::lock_guard<std::mutex> lock(mutex_);
    std::vector<std::string> paths;
    std::vector<std::string> unknown;
    for (const Medium& medium : media) {
        paths.push_back(pathHere(medium.path, project));
        if (!paths.back().empty() && known_.try_emplace(paths.back()).second) {
            unknown.push_back(paths.back());
        }
    }
    std::vector<PathSight> seen = look_.lookAt(unknown);
    for (std::size_t index = 0; index < unknown.size(); ++index) {
        known_[unknown[index]] = {stateOf(seen[index]), std::move(seen[index].path)};
    }
    std::vector<MediaSight> sights;
    sights.reserve(paths.size());
    for (const std::string& path : paths) {
        sights.push_back(path.empty() ? MediaSight{MediaState::elsewhere, ""} : known_[path]);
    }
    return sights;
}

std::function<void(const ElementIndex&, bool, Findings&)> MediaLook::checkOf(std::string project) {
    return [this, project = std::move(project)](const ElementIndex& index, bool isComplete,
                                                Findings& findings) {
        const std::vector<Medium> media = mediaOf(index, isComplete);
        addMediaFindings(media, lookFor(media, project), findings);
    };
}

void addMediaFindings(const std::vector<Medium>& media, const std::vector<MediaSight>& sights,
                      Findings& findings) {
    for (std::size_t index = 0; index < media.size(); ++index) {
        const Medium& medium = media[index];
        if (const std::optional<RuleId> rule = ruleFor(sights[index].state)) {
            const std::string path = medium.path.text();
            const std::string uses = usesOf(medium);
            findings.add(*rule, medium.places.front().value,
                         {{"path", path.empty() ? std::string_view("\"\"") : path},
                          {"found", sights[index].path},
                          {"uses", uses}});
        }
    }
}

}  // namespace vornic
