#ifndef VORNIC_CHECK_LISTING_H
#define VORNIC_CHECK_LISTING_H

#include <string>
#include <vector>

namespace vornic {

/// "a", "a or b", "a, b or c"; longer lists end with how many more there are.
[[nodiscard]] std::string listed(const std::vector<std::string>& names);

}  // namespace vornic

#endif
