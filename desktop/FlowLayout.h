#ifndef VORNIC_DESKTOP_FLOW_LAYOUT_H
#define VORNIC_DESKTOP_FLOW_LAYOUT_H

#include <QLayout>
#include <memory>
#include <vector>

namespace vornic {

/// Puts widgets beside each other from the left, in as many rows as their width needs, so that no
/// number of buttons makes a window wider.
class FlowLayout : public QLayout {
  public:
    explicit FlowLayout(QWidget* parent);

    void addItem(QLayoutItem* item) override;
    [[nodiscard]] int count() const override { return static_cast<int>(items_.size()); }
    [[nodiscard]] QLayoutItem* itemAt(int index) const override;
    QLayoutItem* takeAt(int index) override;
    [[nodiscard]] Qt::Orientations expandingDirections() const override { return {}; }
    [[nodiscard]] bool hasHeightForWidth() const override { return true; }
    [[nodiscard]] int heightForWidth(int width) const override;
    /// Of the widest widget.
    [[nodiscard]] QSize minimumSize() const override;
    /// All in one row.
    [[nodiscard]] QSize sizeHint() const override;
    void setGeometry(const QRect& area) override;

  private:
    // @return the height of the rows. @param isMoved whether the widgets get their places
    int arrange(const QRect& area, bool isMoved) const;

    std::vector<std::unique_ptr<QLayoutItem>> items_;
};

}  // namespace vornic

#endif
