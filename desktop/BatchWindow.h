#ifndef VORNIC_DESKTOP_BATCH_WINDOW_H
#define VORNIC_DESKTOP_BATCH_WINDOW_H

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>
#include <QTreeView>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "desktop/BatchModel.h"
#include "desktop/ElidedLabel.h"
#include "job/batch/Batch.h"

namespace vornic {

/// The window of a batch: many files, a row each, what can be done with those that are chosen, and
/// what came of it. Files are looked for, worked on and reported on threads. Main thread.
class BatchWindow : public QMainWindow {
  public:
    struct Actions {
        /// The user wants to see a file in a window of its own.
        std::function<void(const std::string& path)> open;
        std::function<void(const std::string& path)> showFile;
        /// A run has ended, which the desktop is to be told.
        std::function<void(const QString& title, const QString& text)> notify;
    };

    explicit BatchWindow(Actions actions);
    /// What is at work is asked to end, and ended on a thread that the program waits for.
    ~BatchWindow() override;
    BatchWindow(const BatchWindow&) = delete;
    BatchWindow& operator=(const BatchWindow&) = delete;

    /// Adds files, bundles and what is in folders. During a run they are added at its end.
    void add(const std::vector<std::string>& paths);
    /// Begins an action with the chosen rows, or with all that are shown when none is chosen.
    void begin(BatchRequest request);
    void begin(BatchAction action);
    /// Ends a search for files and a run as soon as they can end.
    void stop();
    [[nodiscard]] bool isRunning() const { return isRunning_; }
    /// Whether files are looked for.
    [[nodiscard]] bool isAdding() const { return isAdding_; }

    // Commands of the menus.

    void copy();
    void selectAll();
    void beginFilter();
    /// Writes all reports as one HTML document, on a thread.
    void saveReportsTo(const std::string& path);

    [[nodiscard]] BatchModel& model() { return *model_; }
    [[nodiscard]] QTreeView& table() { return *table_; }
    /// The chosen rows of the batch, ascending; all that are shown when none is chosen.
    [[nodiscard]] std::vector<std::size_t> chosenRows() const;

  protected:
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;

  private:
    class Feed;
    struct Work;

    QWidget* makeActions();
    QWidget* makeFilter();
    QWidget* makeFoot();
    QPushButton* addButton(QWidget* bar, const char* objectName, const QString& text,
                           std::function<void()> clicked);
    void makeTable();
    void askForFiles(bool areFolders);
    void askToConvert();
    void askToRelink();
    void askWhereToSaveReports();
    void askToClose();
    void showMenu(const QPoint& at);
    void openCurrent(const QModelIndex& index);
    void clearAll();

    void search(std::vector<std::string> paths);
    void takeAdded(const std::vector<ProjectFiles::Refusal>& refused, bool isShort);
    void filter();
    void takeShown(std::vector<std::size_t> rows);
    void takeChanges(const std::vector<std::size_t>& rows);
    void takeEnd(const BatchSummary& summary);
    void takeSaved(const std::string& path, const std::string& failure);
    void writeStatus();
    void writeDetails();
    void updateControls();
    // @return false, after the user has been told, when the system has no thread to give.
    bool onThread(std::function<void()> work, std::function<void()> askToEnd);

    Actions actions_;
    std::shared_ptr<Work> work_;
    BatchModel* model_;
    QTreeView* table_;
    QLineEdit* filter_ = nullptr;
    QCheckBox* onlyFailures_ = nullptr;
    ElidedLabel* status_ = nullptr;
    QLabel* details_ = nullptr;
    QProgressBar* bar_ = nullptr;
    QPushButton* stopButton_ = nullptr;
    std::vector<QPushButton*> adders_;
    std::vector<QPushButton*> actors_;
    QTimer filterClock_;
    // What an older look through the filter brings is dropped.
    unsigned number_ = 0;
    bool isRunning_ = false;
    bool isAdding_ = false;
    bool isSaving_ = false;
    bool closesAtEnd_ = false;
    std::size_t running_ = 0;
    QString sentence_;
    std::vector<std::string> toAdd_;
};

}  // namespace vornic

#endif
