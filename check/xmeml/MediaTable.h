#ifndef VORNIC_CHECK_XMEML_MEDIA_TABLE_H
#define VORNIC_CHECK_XMEML_MEDIA_TABLE_H

#include <cstdint>
#include <optional>
#include <vector>

#include "formats/xmeml/IdTable.h"
#include "formats/xmeml/Rate.h"
#include "formats/xmeml/View.h"

namespace vornic::xmeml {

/// What the definition of a media file says about its length.
struct Media {
    ElementNumber file = kNoElement;
    /// The element that says the duration; `kNoElement` where nothing does.
    ElementNumber durationElement = kNoElement;
    std::int64_t duration = 0;
    std::optional<Rate> rate;
    /// Whether there is an end that a clip could run over: not for stills, and not for what
    /// programs make themselves.
    bool hasEnd = false;
};

/// The media files that are defined in an XMEML file, but for those that say neither their length
/// nor their rate.
class MediaTable {
  public:
    explicit MediaTable(const View& view);

    /// The definition that a `<file>` is or names; null for none.
    [[nodiscard]] const Media* mediaOf(ElementNumber file) const;

  private:
    [[nodiscard]] const Media* definition(ElementNumber file) const;

    const View* view_;
    IdTable ids_;
    // By file.
    std::vector<Media> media_;
};

}  // namespace vornic::xmeml

#endif
