#ifndef VORNIC_MEDIA_MEDIA_LIST_H
#define VORNIC_MEDIA_MEDIA_LIST_H

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "formats/ElementIndex.h"
#include "formats/fcpxml/Time.h"
#include "media/MediaPath.h"

namespace vornic {

/// A place of a project where a media file is named.
struct MediaPlace {
    /// The element that says it: `<pathurl>`, `<asset>` or `<media-rep>`.
    ElementNumber element = kNoElement;
    /// The value, as it stands in the text: between the quotes or the tags.
    TextSpan value;
};

/// Clips of one name that use a media file.
struct ClipUse {
    std::string name;
    std::uint64_t count = 0;
};

/// A media file that a project names, and what the project says about it.
struct Medium {
    MediaPath path;
    /// As the first place says it, references replaced.
    std::string url;
    PathForm form = PathForm::other;
    /// What the project calls it; "" for nothing.
    std::string name;
    /// FCPXML's kind of representation, such as "proxy-media"; "" for the media themselves.
    std::string kind;
    /// In the order of the text; at least one.
    std::vector<MediaPlace> places;
    /// In the order in which their names come first.
    std::vector<ClipUse> clips;
    /// Clips in sequences, compound clips and multicam clips.
    std::uint64_t uses = 0;
    /// Clips that only lie in a bin or an event.
    std::uint64_t browserClips = 0;
    /// From the first to the last moment that a clip in a sequence shows, in the file's own time;
    /// unknown when there is none, or when one of them runs at a speed of its own.
    fcpxml::Time usedStart;
    fcpxml::Time usedEnd;
    /// Where the file's own time begins, and how long it is said to be.
    fcpxml::Time start;
    fcpxml::Time duration;
    fcpxml::Time frameDuration;
    /// Nothing where the project does not say.
    std::optional<std::uint64_t> videoTracks;
    /// Tracks in XMEML, channels in FCPXML.
    std::optional<std::uint64_t> audioTracks;
};

/// The media files that a project names, each once, in the order in which they are first named.
/// Which ones are the same is decided by the decoded path. Linear in the project.
/// @param isComplete false when a fault ended the reading
[[nodiscard]] std::vector<Medium> mediaOf(const ElementIndex& index, bool isComplete);

/// Gathers media: for the two formats.
class MediaGatherer {
  public:
    /// The medium of the path; a new one when it was not named before. Valid until the next call.
    Medium& at(std::string_view url, const MediaPlace& place);
    [[nodiscard]] std::size_t indexOf(const Medium& medium) const {
        return static_cast<std::size_t>(&medium - media_.data());
    }
    [[nodiscard]] Medium& operator[](std::size_t index) { return media_[index]; }
    /// Counts a clip. @param isInSequence false for one that only lies in a bin.
    void addClip(std::size_t medium, const std::string& name, bool isInSequence);
    /// Counts what a clip in a sequence shows; unknown times make the whole range unknown.
    void addRange(std::size_t medium, fcpxml::Time start, fcpxml::Time end);
    [[nodiscard]] std::vector<Medium> take() &&;

  private:
    struct Names {
        std::unordered_map<std::string, std::size_t> places;
        bool hasUnknownRange = false;
    };

    std::vector<Medium> media_;
    std::vector<Names> names_;
    std::unordered_map<std::string, std::size_t> byPath_;
};

void gatherFCPXMLMedia(const ElementIndex& index, MediaGatherer& media);
void gatherXMEMLMedia(const ElementIndex& index, bool isComplete, MediaGatherer& media);

/// Tells of elements that are asked for in the order of the text whether they stand in one of some
/// others. Linear in both.
class InsideOf {
  public:
    /// @param around in the order of the text.
    InsideOf(const ElementIndex& index, std::vector<ElementNumber> around);
    /// @param element not before the one that was asked for last.
    [[nodiscard]] bool contains(ElementNumber element);

  private:
    const ElementIndex& index_;
    std::vector<ElementNumber> around_;
    std::size_t next_ = 0;
    ElementNumber end_ = 0;
};

}  // namespace vornic

#endif
