#ifndef VORNIC_CHECK_XMEML_TRACK_TABLE_H
#define VORNIC_CHECK_XMEML_TRACK_TABLE_H

#include <cstdint>
#include <optional>
#include <vector>

#include "formats/xmeml/View.h"

namespace vornic::xmeml {

/// A track of a sequence or of a clip.
struct Track {
    /// The sequence or the clip.
    ElementNumber timeline = kNoElement;
    ElementNumber element = kNoElement;
    /// From 1, among the tracks of its kind.
    std::uint32_t number = 0;
    bool isAudio = false;
};

/// Which place a clip item has, as links name it.
struct ItemPlace {
    Track track;
    /// From 1, among the clip items and generators of its track.
    std::uint32_t number = 0;
    /// The same with transitions counted, as some programs do.
    std::uint32_t numberWithTransitions = 0;
};

/// The tracks of a file and what they hold.
class TrackTable {
  public:
    explicit TrackTable(const View& view);

    /// In the order of the file.
    [[nodiscard]] const std::vector<Track>& tracks() const { return tracks_; }
    /// Nothing for one that lies in no track.
    [[nodiscard]] std::optional<ItemPlace> placeOf(ElementNumber clipItem) const;
    /// How many items, transitions included, the track has; 0 when there is none.
    [[nodiscard]] std::uint32_t itemCount(ElementNumber timeline, bool isAudio,
                                          std::int64_t trackNumber) const;

  private:
    struct Item {
        ElementNumber element;
        std::uint32_t track;
        std::uint32_t number;
        std::uint32_t numberWithTransitions;
    };

    void addItems(const View& view, std::uint32_t track);

    std::vector<Track> tracks_;
    std::vector<std::uint32_t> counts_;
    // By element.
    std::vector<Item> items_;
    // The tracks by timeline, kind and number.
    std::vector<std::uint32_t> byNumber_;
};

}  // namespace vornic::xmeml

#endif
