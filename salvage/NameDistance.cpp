#include "salvage/NameDistance.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace vornic::salvage {

namespace {

constexpr std::size_t kLongest = 64;

}  // namespace

float nameDistance(std::string_view left, std::string_view right) {
    if (left == right) {
        return 0;
    }
    if (left.size() > kLongest || right.size() > kLongest || left.empty() || right.empty()) {
        return 1;
    }
    // Damerau and Levenshtein's, in which no letter is changed twice.
    std::array<std::array<std::size_t, kLongest + 1>, 3> rows{};
    for (std::size_t j = 0; j <= right.size(); ++j) {
        rows[0][j] = j;
    }
    for (std::size_t i = 1; i <= left.size(); ++i) {
        auto& row = rows[i % 3];
        const auto& above = rows[(i + 2) % 3];
        row[0] = i;
        for (std::size_t j = 1; j <= right.size(); ++j) {
            const std::size_t change = left[i - 1] == right[j - 1] ? 0 : 1;
            row[j] = std::min({above[j] + 1, row[j - 1] + 1, above[j - 1] + change});
            if (i > 1 && j > 1 && left[i - 1] == right[j - 2] && left[i - 2] == right[j - 1]) {
                row[j] = std::min(row[j], rows[(i + 1) % 3][j - 2] + 1);
            }
        }
    }
    return static_cast<float>(rows[left.size() % 3][right.size()]) /
           static_cast<float>(std::max(left.size(), right.size()));
}

}  // namespace vornic::salvage
