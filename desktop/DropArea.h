#ifndef VORNIC_DESKTOP_DROP_AREA_H
#define VORNIC_DESKTOP_DROP_AREA_H

#include <QWidget>

namespace vornic {

/// A place with a dashed edge that asks for something to be dropped. What is dropped is up to the
/// window, which takes it anywhere.
class DropArea : public QWidget {
  public:
    using QWidget::QWidget;

    /// Shows that what is held over the window would be taken.
    void setTakesDrop(bool takesDrop);
    [[nodiscard]] bool takesDrop() const { return takesDrop_; }

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    bool takesDrop_ = false;
};

}  // namespace vornic

#endif
