#ifndef VORNIC_DESKTOP_FIND_BAR_H
#define VORNIC_DESKTOP_FIND_BAR_H

#include <QLabel>
#include <QLineEdit>
#include <QWidget>
#include <functional>
#include <utility>

#include "desktop/ReportView.h"

namespace vornic {

/// Searches a report: hidden until it is wanted, closed with Escape.
class FindBar : public QWidget {
  public:
    FindBar(ReportView* report, QWidget* parent);

    /// Searches something else while it is in view. @param find returns false when it is nowhere
    void setFinder(std::function<bool(const QString& text, bool backwards)> find) {
        finder_ = std::move(find);
    }
    /// Shows the bar, ready to be typed into.
    void begin();
    void findNext() { find(false); }
    void findPrevious() { find(true); }

  protected:
    void keyPressEvent(QKeyEvent* event) override;

  private:
    void find(bool backwards);
    void end();

    ReportView* report_;
    std::function<bool(const QString&, bool)> finder_;
    QLineEdit* text_;
    QLabel* notFound_;
};

}  // namespace vornic

#endif
