#ifndef VORNIC_CHECK_NEAREST_NAME_H
#define VORNIC_CHECK_NEAREST_NAME_H

#include <span>
#include <string_view>

namespace vornic {

/// The candidate that a misspelt name is most likely meant to be: the one that takes the fewest
/// changed, missing, surplus or swapped letters, one for each three of its own at most. The first
/// of several; "" when none is near. Capitals count for half a change. Takes time in the product of
/// the lengths; names longer than 64 bytes are near to none.
[[nodiscard]] std::string_view nearestName(std::string_view name,
                                           std::span<const std::string_view> candidates);

}  // namespace vornic

#endif
