#ifndef VORNIC_UI_ABOUT_STYLED_RUN_H
#define VORNIC_UI_ABOUT_STYLED_RUN_H

#include <string>

namespace vornic {

/// A piece of text in one style. Lines end with a line feed.
struct StyledRun {
    /// UTF-8, never empty in what a reader yields.
    std::string text;
    bool isBold = false;
    /// In points; 12 unless the text says otherwise.
    double pointSize = 12;
    friend bool operator==(const StyledRun&, const StyledRun&) = default;
};

}  // namespace vornic

#endif
