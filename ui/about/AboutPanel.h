#ifndef VORNIC_UI_ABOUT_PANEL_H
#define VORNIC_UI_ABOUT_PANEL_H

#include <optional>
#include <string_view>

namespace vornic {

/// The place and the size of a panel, in points.
struct PanelFrame {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;
    friend bool operator==(const PanelFrame&, const PanelFrame&) = default;
};

/// The about panel and what it shows (`aboutWindow`, `appNameLabel`, `verLabel`, `appIconView`,
/// `creditsScrollView`, `creditsTextView`). Drawn elsewhere; main thread only.
class AboutPanel {
  public:
    virtual ~AboutPanel() = default;
    /// Nothing where the panel itself is missing.
    [[nodiscard]] virtual std::optional<PanelFrame> frame() const = 0;
    virtual void setFrame(const PanelFrame& frame) = 0;
    virtual void setTitle(std::string_view title) = 0;
    virtual void setAppName(std::string_view name) = 0;
    /// @param text lines divided by line feeds
    virtual void setVersion(std::string_view text) = 0;
    virtual void showApplicationIcon() = 0;
    virtual void setCreditsHidden(bool hidden) = 0;
    virtual void setCreditsEditable(bool editable) = 0;
    /// Puts rich text where the credits' cursor stands. `readRichText` makes runs of it.
    /// @param rtf the bytes of a rich text file, which may be damaged
    virtual void insertCredits(std::string_view rtf) = 0;
    virtual void scrollCreditsToBeginning() = 0;
};

}  // namespace vornic

#endif
