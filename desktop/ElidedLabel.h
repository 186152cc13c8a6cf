#ifndef VORNIC_DESKTOP_ELIDED_LABEL_H
#define VORNIC_DESKTOP_ELIDED_LABEL_H

#include <QLabel>

namespace vornic {

/// One line of text that is shortened in the middle where there is no room for it, so that no text
/// makes the window wider. Its name for assistive technologies is the whole text.
class ElidedLabel : public QLabel {
  public:
    explicit ElidedLabel(QWidget* parent);

    void setWholeText(const QString& text);

  protected:
    void resizeEvent(QResizeEvent* event) override;

  private:
    void elide();

    QString whole_;
};

}  // namespace vornic

#endif
