#ifndef VORNIC_SALVAGE_NAME_DISTANCE_H
#define VORNIC_SALVAGE_NAME_DISTANCE_H

#include <string_view>

namespace vornic::salvage {

/// How far two names are from each other: letters changed, missing, surplus or swapped, as a share
/// of the longer one; 0 for equal ones, at most 1. Names of more than 64 bytes are far from all
/// others.
[[nodiscard]] float nameDistance(std::string_view left, std::string_view right);

}  // namespace vornic::salvage

#endif
