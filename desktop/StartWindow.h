#ifndef VORNIC_DESKTOP_START_WINDOW_H
#define VORNIC_DESKTOP_START_WINDOW_H

#include <QLabel>
#include <QListWidget>
#include <QMainWindow>
#include <functional>
#include <string>

#include "desktop/DropArea.h"

namespace vornic {

/// What is on the screen while nothing is open: a button that opens files, a place to drop them,
/// and the files that were opened last. It is no document.
class StartWindow : public QMainWindow {
  public:
    StartWindow(std::function<void()> browse, std::function<void(const std::string&)> open);

    /// Lists the files that were opened last, and takes those off the list that turn out to have
    /// gone; without any there is no list.
    void showRecentFiles();

    /// Shows whether a drop would be taken.
    void setTakesDrop(bool takesDrop) { area_->setTakesDrop(takesDrop); }

  protected:
    void closeEvent(QCloseEvent* event) override;

  private:
    void listRecentFiles();
    void forget(const QListWidgetItem* item);
    void showMenu(const QPoint& at);
    void openItem(const QListWidgetItem* item);

    std::function<void(const std::string&)> open_;
    DropArea* area_ = nullptr;
    QLabel* recentHeading_ = nullptr;
    QListWidget* recentFiles_;
};

}  // namespace vornic

#endif
