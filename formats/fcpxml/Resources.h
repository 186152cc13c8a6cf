#ifndef VORNIC_FORMATS_FCPXML_RESOURCES_H
#define VORNIC_FORMATS_FCPXML_RESOURCES_H

#include <cstddef>
#include <string_view>
#include <vector>

#include "formats/ElementIndex.h"
#include "formats/fcpxml/Time.h"

namespace vornic::fcpxml {

/// Something with an id that other elements refer to, and what rules ask of it again and again.
struct Resource {
    ElementNumber element = vornic::kNoElement;
    /// The element's name: "asset", "format", "media".
    std::string_view kind;
    /// Of an asset: where its media begin (0 when it does not say so) and how long they are.
    Time start;
    Time duration;
    /// Of a format: the length of a frame. Of an asset: that of its format.
    Time frameDuration;
    /// Of an asset: that it has a picture and no sound, and a format without a frame duration. A
    /// clip may show it as long as it likes.
    bool isStill = false;
};

/// What the ids of a file lead to. Those that are asked for again and again are not looked up each
/// time. One thread; the index must outlive this.
class Resources {
  public:
    explicit Resources(const ElementIndex& index) : index_(index), known_(kSlots) {}

    /// What the raw value of a reference leads to; null when nothing has the id. Valid until the
    /// next call.
    [[nodiscard]] const Resource* find(std::string_view reference);
    /// The same when it is of that kind, else null.
    [[nodiscard]] const Resource* find(std::string_view reference, std::string_view kind);
    /// The frame duration of the format that a reference leads to; unknown when there is none.
    [[nodiscard]] Time frameDurationOf(std::string_view formatReference);

    /// What such an element says.
    [[nodiscard]] Resource read(ElementNumber element) const;

  private:
    [[nodiscard]] Time frameOf(ElementNumber format) const;

    struct Slot {
        std::string_view id;
        Resource resource;
    };
    // The references of a file go to few things, mostly.
    static constexpr std::size_t kSlots = 4096;

    const ElementIndex& index_;
    // The one that was asked for last, by the hash of its id.
    std::vector<Slot> known_;
};

/// The resources of that name, such as all assets, in document order. They stand in the root
/// element, or in projects up to version 1.3.
[[nodiscard]] std::vector<ElementNumber> resourcesNamed(const ElementIndex& index,
                                                        std::string_view name);

}  // namespace vornic::fcpxml

#endif
