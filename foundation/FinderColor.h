#ifndef VORNIC_FOUNDATION_FINDER_COLOR_H
#define VORNIC_FOUNDATION_FINDER_COLOR_H

namespace vornic {

/// A calibrated colour; each part lies between 0 and 1.
struct FinderColor {
    double hue = 0;
    double saturation = 0;
    double brightness = 0;
    double alpha = 1.0;
    friend bool operator==(const FinderColor&, const FinderColor&) = default;
};

}  // namespace vornic

#endif
