#ifndef VORNIC_CHECK_XMEML_REPEATED_ITEMS_H
#define VORNIC_CHECK_XMEML_REPEATED_ITEMS_H

#include <map>
#include <optional>
#include <tuple>
#include <unordered_map>
#include <vector>

#include "check/FreshIds.h"
#include "check/xmeml/TrackTable.h"
#include "report/Mend.h"

namespace vornic::xmeml {

/// Gives clip items whose id an earlier one has an id of their own, where each link says by its
/// timeline or by its numbers which of them it means. First `addItem` for each such clip item, then
/// `addLink` for each link, then `mendOf`.
class RepeatedItems {
  public:
    RepeatedItems(const View& view, const TrackTable& tracks, FreshIds& freshIds)
        : view_(view), tracks_(tracks), freshIds_(freshIds) {}

    /// @param first the first clip item with the id.
    void addItem(ElementNumber first, ElementNumber item);
    /// @param link a `<link>`.
    /// @param reference its `<linkclipref>`.
    /// @param first the first clip item with the id that it names.
    void addLink(ElementNumber link, ElementNumber reference, ElementNumber first);

    /// @return nothing where a link may mean this clip item or another one.
    [[nodiscard]] std::optional<Mend> mendOf(ElementNumber first, ElementNumber item);

  private:
    // Whether audio, track, number.
    using Numbers = std::tuple<bool, std::int64_t, std::int64_t>;
    struct Timeline {
        std::vector<ElementNumber> items;
        std::map<Numbers, ElementNumber> byNumbers;
    };
    // The clip items that share an id.
    struct Group {
        std::unordered_map<ElementNumber, Timeline> timelines;
        std::unordered_map<ElementNumber, std::vector<TextSpan>> links;
        bool isUnclear = false;
    };

    void addToTimeline(Group& group, ElementNumber item);
    [[nodiscard]] ElementNumber targetOf(const Group& group, ElementNumber link) const;

    const View& view_;
    const TrackTable& tracks_;
    std::unordered_map<ElementNumber, Group> groups_;
    FreshIds& freshIds_;
};

}  // namespace vornic::xmeml

#endif
