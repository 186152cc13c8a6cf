#ifndef VORNIC_TESTS_DESKTOP_CONTRAST_H
#define VORNIC_TESTS_DESKTOP_CONTRAST_H

#include <QColor>
#include <algorithm>
#include <cmath>

namespace vornic::test {

/// The relative luminance of a colour, as the Web Content Accessibility Guidelines have it.
inline double luminance(const QColor& color) {
    const auto linear = [](double share) {
        return share <= 0.03928 ? share / 12.92 : std::pow((share + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
           0.0722 * linear(color.blueF());
}

/// The contrast ratio of two opaque colours, 1 to 21.
inline double contrast(const QColor& one, const QColor& other) {
    const auto [dark, light] = std::minmax({luminance(one), luminance(other)});
    return (light + 0.05) / (dark + 0.05);
}

/// What texts need to be read.
inline constexpr double kReadable = 4.5;
/// What signs and edges need to be made out.
inline constexpr double kVisible = 3;

}  // namespace vornic::test

#endif
