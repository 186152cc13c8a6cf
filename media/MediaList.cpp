#include "media/MediaList.h"

#include <algorithm>
#include <utility>

namespace vornic {

Medium& MediaGatherer::at(std::string_view url, const MediaPlace& place) {
    WrittenPath written = readMediaPath(url);
    const char style = static_cast<char>('0' + static_cast<int>(written.path.style));
    const auto [known, isNew] = byPath_.try_emplace(style + written.path.text(), media_.size());
    if (isNew) {
        Medium medium;
        medium.path = std::move(written.path);
        medium.form = written.form;
        medium.url = url;
        media_.push_back(std::move(medium));
        names_.emplace_back();
    }
    Medium& medium = media_[known->second];
    medium.places.push_back(place);
    return medium;
}

void MediaGatherer::addClip(std::size_t medium, const std::string& name, bool isInSequence) {
    Medium& used = media_[medium];
    const auto [known, isNew] = names_[medium].places.try_emplace(name, used.clips.size());
    if (isNew) {
        used.clips.push_back({name, 0});
    }
    ++used.clips[known->second].count;
    ++(isInSequence ? used.uses : used.browserClips);
}

void MediaGatherer::addRange(std::size_t medium, fcpxml::Time start, fcpxml::Time end) {
    Medium& used = media_[medium];
    if (!start.isKnown() || !end.isKnown()) {
        names_[medium].hasUnknownRange = true;
        return;
    }
    used.usedStart = used.usedStart.isKnown() && used.usedStart < start ? used.usedStart : start;
    used.usedEnd = used.usedEnd.isKnown() && used.usedEnd > end ? used.usedEnd : end;
}

std::vector<Medium> MediaGatherer::take() && {
    for (std::size_t index = 0; index < media_.size(); ++index) {
        if (names_[index].hasUnknownRange) {
            media_[index].usedStart = {};
            media_[index].usedEnd = {};
        }
    }
    return std::move(media_);
}

InsideOf::InsideOf(const ElementIndex& index, std::vector<ElementNumber> around)
    : index_(index), around_(std::move(around)) {}

bool InsideOf::contains(ElementNumber element) {
    while (next_ < around_.size() && around_[next_] < element) {
        end_ = std::max(end_, index_.endOf(around_[next_]));
        ++next_;
    }
    return element < end_;
}

std::vector<Medium> mediaOf(const ElementIndex& index, bool isComplete) {
    MediaGatherer media;
    if (index.kind() == FileKind::fcpxml) {
        gatherFCPXMLMedia(index, media);
    } else if (index.kind() == FileKind::xmeml) {
        gatherXMEMLMedia(index, isComplete, media);
    }
    return std::move(media).take();
}

}  // namespace vornic
