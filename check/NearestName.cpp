#include "check/NearestName.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace vornic {

namespace {

constexpr std::size_t kLongest = 64;
// Costs count half changes.
constexpr std::size_t kChange = 2;
constexpr std::size_t kChangeOfCase = 1;

char lowered(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

std::size_t costOf(char a, char b) {
    if (a == b) {
        return 0;
    }
    return lowered(a) == lowered(b) ? kChangeOfCase : kChange;
}

// The distance of Damerau and Levenshtein, in which no letter is changed twice.
std::size_t distance(std::string_view a, std::string_view b) {
    std::array<std::array<std::size_t, kLongest + 1>, 3> rows{};
    for (std::size_t j = 0; j <= b.size(); ++j) {
        rows[0][j] = j * kChange;
    }
    for (std::size_t i = 1; i <= a.size(); ++i) {
        auto& row = rows[i % 3];
        const auto& above = rows[(i + 2) % 3];
        const auto& twoAbove = rows[(i + 1) % 3];
        row[0] = i * kChange;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            row[j] = std::min({above[j] + kChange, row[j - 1] + kChange,
                               above[j - 1] + costOf(a[i - 1], b[j - 1])});
            const bool isSwap = i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1];
            if (isSwap) {
                row[j] = std::min(row[j], twoAbove[j - 2] + kChange);
            }
        }
    }
    return rows[a.size() % 3][b.size()];
}

}  // namespace

std::string_view nearestName(std::string_view name, std::span<const std::string_view> candidates) {
    std::string_view nearest;
    std::size_t nearestDistance = 0;
    for (const std::string_view candidate : candidates) {
        // A single letter is as near to every other.
        if (name.size() > kLongest || candidate.size() > kLongest || candidate.size() == 1) {
            continue;
        }
        const std::size_t found = distance(name, candidate);
        const std::size_t most = kChange * std::max<std::size_t>(1, candidate.size() / 3);
        if (found <= most && (nearest.empty() || found < nearestDistance)) {
            nearest = candidate;
            nearestDistance = found;
        }
    }
    return nearest;
}

}  // namespace vornic
