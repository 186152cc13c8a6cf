#ifndef VORNIC_DESKTOP_FIND_BAR_H
#define VORNIC_DESKTOP_FIND_BAR_H

#include <QLabel>
#include <QLineEdit>
#include <QTimer>
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
    void setFinder(std::function<bool(const QString& text, FindStep step)> find) {
        finder_ = std::move(find);
    }
    /// Shows the bar, ready to be typed into.
    void begin();
    void findNext() { find(FindStep::next); }
    void findPrevious() { find(FindStep::previous); }

  protected:
    void keyPressEvent(QKeyEvent* event) override;

  private:
    void find(FindStep step);
    void end();

    ReportView* report_;
    std::function<bool(const QString&, FindStep)> finder_;
    // Runs while the user types on.
    QTimer typing_;
    QLineEdit* text_;
    QLabel* notFound_;
};

}  // namespace vornic

#endif
