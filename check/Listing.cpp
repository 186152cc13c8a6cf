#include "check/Listing.h"

#include <cstddef>

namespace vornic {

std::string listed(const std::vector<std::string>& names) {
    constexpr std::size_t kMostNames = 6;
    std::string text;
    const std::size_t shown = names.size() > kMostNames + 1 ? kMostNames : names.size();
    for (std::size_t i = 0; i < shown; ++i) {
        const bool isLast = i + 1 == names.size();
        text += i == 0 ? "" : isLast ? " or " : ", ";
        text += names[i];
    }
    if (shown < names.size()) {
        text += " or one of " + std::to_string(names.size() - shown) + " others";
    }
    return text;
}

}  // namespace vornic
