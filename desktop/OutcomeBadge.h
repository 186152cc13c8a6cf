#ifndef VORNIC_DESKTOP_OUTCOME_BADGE_H
#define VORNIC_DESKTOP_OUTCOME_BADGE_H

#include <QWidget>

namespace vornic {

/// The sign of how a run ended: a disc with a mark, as high as a line of text, which says nothing
/// that the text beside it does not.
class OutcomeBadge : public QWidget {
  public:
    enum class Kind { none, good, warning, bad, neutral };

    explicit OutcomeBadge(QWidget* parent);

    /// A badge of the kind `none` keeps its place and shows nothing.
    void setKind(Kind kind);
    [[nodiscard]] Kind kind() const { return kind_; }

    /// The colour of the disc on a palette's windows, and the one of the mark on the disc.
    [[nodiscard]] static QColor discColor(Kind kind, const QPalette& palette);
    [[nodiscard]] static QColor markColor(const QPalette& palette);

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    Kind kind_ = Kind::none;
};

}  // namespace vornic

#endif
